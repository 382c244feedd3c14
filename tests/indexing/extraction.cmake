tarnwick_test(extraction_tests extraction_test.cpp golden_test.cpp languages_test.cpp LIBRARIES tarnwick_extraction
              tarnwick_text)
target_compile_definitions(extraction_tests PRIVATE GOLDEN_DIRECTORY="${CMAKE_CURRENT_SOURCE_DIR}/golden")
