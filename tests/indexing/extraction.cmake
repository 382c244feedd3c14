tarnwick_test(extraction_tests extraction_test.cpp golden_test.cpp languages_test.cpp own_languages_test.cpp LIBRARIES tarnwick_extraction
              tarnwick_text)
target_compile_definitions(extraction_tests PRIVATE GOLDEN_DIRECTORY="${CMAKE_CURRENT_SOURCE_DIR}/golden")
# A grammar library as a user would build it, from one of the grammars that are there; it links nothing and takes its
# memory from the program.
set(lua grammar__tree_sitter_grammars_tree_sitter_lua)
add_library(own_grammar MODULE $<TARGET_PROPERTY:${lua},SOURCES>)
target_include_directories(own_grammar PRIVATE $<TARGET_PROPERTY:${lua},INCLUDE_DIRECTORIES>)
target_compile_definitions(own_grammar PRIVATE TREE_SITTER_REUSE_ALLOCATOR)
tarnwick_third_party(own_grammar)
add_dependencies(extraction_tests own_grammar)
target_compile_definitions(extraction_tests PRIVATE OWN_GRAMMAR="$<TARGET_FILE:own_grammar>")
