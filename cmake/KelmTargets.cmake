# Flags of every target built here, set per target rather than globally.
function(kelm_target_defaults target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF CXX_VISIBILITY_PRESET default)
  target_compile_options(${target} PRIVATE -Wall -Wextra $<$<BOOL:${KELM_WARNINGS_AS_ERRORS}>:-Werror>)
  if(KELM_FUZZ)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
  if(KELM_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=address,undefined -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=address,undefined)
  endif()
endfunction()
