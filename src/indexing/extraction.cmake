include(${PROJECT_SOURCE_DIR}/cmake/grammars.cmake)

# The languages' query files become string literals of the library.
file(GLOB query_files CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/queries/*.scm)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${query_files})
set(query_texts "")
foreach(file ${query_files})
  cmake_path(GET file STEM name)
  file(READ ${file} content)
  string(APPEND query_texts "    {\"${name}\", R\"scm(${content})scm\"},\n")
endforeach()
string(SHA256 query_fingerprint "${query_texts}")
string(SUBSTRING ${query_fingerprint} 0 16 query_fingerprint)
configure_file(query_texts.cpp.in query_texts.cpp @ONLY)

find_package(PkgConfig REQUIRED)
find_package(nlohmann_json REQUIRED)
pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET libxxhash)

add_library(
  tarnwick_extraction STATIC
  assembly.cpp
  attribute_macros.cpp
  documentation.cpp
  extraction.cpp
  fallback.cpp
  guards.cpp
  languages.cpp
  merging.cpp
  module_path.cpp
  own_languages.cpp
  query.cpp
  query_patterns.cpp
  scoped_names.cpp
  signature.cpp
  source_extractor.cpp
  syntax_tree.cpp
  test_paths.cpp
  ${CMAKE_CURRENT_BINARY_DIR}/query_texts.cpp)
target_include_directories(tarnwick_extraction PUBLIC ${PROJECT_SOURCE_DIR}/src PRIVATE ${PROJECT_SOURCE_DIR}/include)
target_link_libraries(tarnwick_extraction PUBLIC tarnwick_grammars PRIVATE tarnwick_text tarnwick_warnings nlohmann_json::nlohmann_json PkgConfig::XXHASH ${CMAKE_DL_LIBS})
