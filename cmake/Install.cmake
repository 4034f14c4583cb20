include(CMakePackageConfigHelpers)

install(TARGETS tesskit2d treisoma tesskit tesskit1d EXPORT tesskit2dTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/tesskit2d DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/tesskit2d/export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tesskit2d)
install(DIRECTORY platform/treisoma/include/treisoma platform/tesskit/include/tesskit
                  platform/tesskit1d/include/tesskit1d
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tesskit2d)
install(EXPORT tesskit2dTargets NAMESPACE tesskit2d:: DESTINATION ${config_dir})
configure_package_config_file(cmake/tesskit2dConfig.cmake.in ${PROJECT_BINARY_DIR}/tesskit2dConfig.cmake
                              INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tesskit2dConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tesskit2dConfig.cmake ${PROJECT_BINARY_DIR}/tesskit2dConfigVersion.cmake
        DESTINATION ${config_dir})
