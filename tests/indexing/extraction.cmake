tarnwick_test(extraction_tests extraction_test.cpp golden_test.cpp languages_test.cpp own_languages_test.cpp LIBRARIES tarnwick_extraction
              tarnwick_text)
target_compile_definitions(extraction_tests PRIVATE GOLDEN_DIRECTORY="${CMAKE_CURRENT_SOURCE_DIR}/golden")
# A grammar library as a user would build it, from one of the grammars that are there.
add_library(own_grammar MODULE $<TARGET_OBJECTS:grammar__tree_sitter_grammars_tree_sitter_lua>)
set_target_properties(own_grammar PROPERTIES LINKER_LANGUAGE C)
add_dependencies(extraction_tests own_grammar)
target_compile_definitions(extraction_tests PRIVATE OWN_GRAMMAR="$<TARGET_FILE:own_grammar>")
