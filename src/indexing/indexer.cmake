# Walking trees and keeping indexes; extraction, which knows nothing of the store, is a library of its own.
find_package(PkgConfig REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(XXHASH REQUIRED IMPORTED_TARGET libxxhash)

# The git program, for the walk and for the history.
add_library(tarnwick_git STATIC git_process.cpp)
target_include_directories(tarnwick_git PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(tarnwick_git PRIVATE tarnwick_warnings)

add_library(
  tarnwick_indexer STATIC
  git_files.cpp
  indexer.cpp
  indexer_components.cpp
  indexer_skips.cpp
  tree_directories.cpp
  tree_walk.cpp)
target_include_directories(tarnwick_indexer PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(
  tarnwick_indexer
  PUBLIC tarnwick_storage tarnwick_extraction
  PRIVATE tarnwick_git tarnwick_text tarnwick_warnings nlohmann_json::nlohmann_json PkgConfig::XXHASH Threads::Threads)
