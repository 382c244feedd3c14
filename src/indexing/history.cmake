# The history of a repository, from git into the index.
add_library(tarnwick_history STATIC history.cpp history_store.cpp)
target_include_directories(tarnwick_history PUBLIC ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(
  tarnwick_history
  PUBLIC tarnwick_git tarnwick_storage
  PRIVATE tarnwick_text tarnwick_words tarnwick_warnings)
