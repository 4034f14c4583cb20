include(CMakePackageConfigHelpers)

install(TARGETS tesskit2d tesskit2d_extras treisoma tesskit tesskit1d EXPORT tesskit2dTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/tesskit2d DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_BINARY_DIR}/include/tesskit2d/export.h extras/include/tesskit2d/extras.h
              ${PROJECT_BINARY_DIR}/include/tesskit2d/extras_export.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tesskit2d)
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

# pkg-config, for builds that do not use CMake. LAPACK is private: a shared
# tesskit2d brings it along, a static one needs it on the link line
# (pkg-config --static).
set(pc_static_define "")
if(NOT BUILD_SHARED_LIBS)
  set(pc_static_define " -DTESSKIT2D_STATIC_DEFINE -DTESSKIT2D_EXTRAS_STATIC_DEFINE")
endif()
set(pc_lapack "")
foreach(lib IN LISTS LAPACK_LIBRARIES)
  string(APPEND pc_lapack " ${lib}")
endforeach()
string(STRIP "${pc_lapack}" pc_lapack)
# The prefix is found from the file's own place, so that the package can be
# installed anywhere (--prefix) and moved.
file(RELATIVE_PATH pc_up ${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" pc_up "${pc_up}")
configure_file(cmake/tesskit2d.pc.in ${PROJECT_BINARY_DIR}/tesskit2d.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tesskit2d.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
