if(TARNWICK_SANITIZE)
  # Instrumented, the regular expressions of the standard library look uninitialised to GCC 12.
  add_compile_options(-fsanitize=${TARNWICK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
                      $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${TARNWICK_SANITIZE})
endif()
