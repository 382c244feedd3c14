# The tree-sitter grammars: fetched from the npm registry as cmake/grammars/package-lock.json pins them (version and
# integrity hash; npm refuses a tarball that differs), without running any install script, and compiled into one static
# library. Fetched once for all presets, again only when the lock file changes.
set(TARNWICK_GRAMMARS_DIR ${PROJECT_SOURCE_DIR}/build/grammars CACHE PATH "Where the fetched grammars are kept")

find_path(TREE_SITTER_INCLUDE_DIR tree_sitter/api.h REQUIRED)
find_library(TREE_SITTER_LIBRARY tree-sitter REQUIRED)
file(STRINGS ${TREE_SITTER_INCLUDE_DIR}/tree_sitter/api.h abi_lines
     REGEX "#define TREE_SITTER_(LANGUAGE_VERSION|MIN_COMPATIBLE_LANGUAGE_VERSION)")
string(REGEX MATCH "_LANGUAGE_VERSION ([0-9]+)" ignored "${abi_lines}")
set(newest_abi ${CMAKE_MATCH_1})
string(REGEX MATCH "MIN_COMPATIBLE_LANGUAGE_VERSION ([0-9]+)" ignored "${abi_lines}")
set(oldest_abi ${CMAKE_MATCH_1})

function(tarnwick_fetch_grammars)
  set(pins ${PROJECT_SOURCE_DIR}/cmake/grammars)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${pins}/package.json ${pins}/package-lock.json)
  file(SHA256 ${pins}/package-lock.json wanted)
  set(stamp ${TARNWICK_GRAMMARS_DIR}/fetched)
  file(MAKE_DIRECTORY ${TARNWICK_GRAMMARS_DIR})
  file(LOCK ${TARNWICK_GRAMMARS_DIR} DIRECTORY GUARD FUNCTION)  # two presets may be configured at once
  if(EXISTS ${stamp})
    file(READ ${stamp} fetched)
    if(fetched STREQUAL wanted)
      return()
    endif()
  endif()
  find_program(NPM npm REQUIRED)
  message(STATUS "Fetching the tree-sitter grammars")
  file(REMOVE ${stamp})
  file(COPY ${pins}/package.json ${pins}/package-lock.json DESTINATION ${TARNWICK_GRAMMARS_DIR})
  execute_process(COMMAND ${NPM} ci --ignore-scripts --legacy-peer-deps --no-bin-links --no-audit --no-fund --loglevel=error
                  WORKING_DIRECTORY ${TARNWICK_GRAMMARS_DIR} RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "npm could not fetch the grammars pinned in ${pins}/package-lock.json")
  endif()
  # Binaries for other programs, nine tenths of what was fetched.
  file(GLOB_RECURSE prebuilt ${TARNWICK_GRAMMARS_DIR}/node_modules/*.node ${TARNWICK_GRAMMARS_DIR}/node_modules/*.wasm)
  if(prebuilt)
    file(REMOVE ${prebuilt})
  endif()
  file(WRITE ${stamp} ${wanted})
endfunction()

# tarnwick_grammar(DIRECTORY): adds the parser in node_modules/DIRECTORY/src to the library.
function(tarnwick_grammar directory)
  set(src ${TARNWICK_GRAMMARS_DIR}/node_modules/${directory}/src)
  file(STRINGS ${src}/parser.c abi REGEX "^#define LANGUAGE_VERSION " LIMIT_COUNT 1)
  string(REGEX REPLACE "[^0-9]" "" abi "${abi}")
  if(NOT abi OR abi LESS oldest_abi OR abi GREATER newest_abi)
    message(FATAL_ERROR "The grammar ${directory} has language ABI '${abi}'; "
                        "the installed tree-sitter takes ${oldest_abi} to ${newest_abi}")
  endif()
  string(MAKE_C_IDENTIFIER ${directory} target)
  # An object library each: every grammar brings headers of the same names.
  add_library(grammar_${target} OBJECT ${src}/parser.c)
  if(EXISTS ${src}/scanner.c)
    target_sources(grammar_${target} PRIVATE ${src}/scanner.c)
  endif()
  target_include_directories(grammar_${target} PRIVATE ${src})
  # Optimised in every preset and without sanitizers: third-party code that debug builds, too, run all the time.
  target_compile_options(grammar_${target} PRIVATE -w -O2 -fno-sanitize=all)
  set_target_properties(grammar_${target} PROPERTIES C_STANDARD 11 C_EXTENSIONS ON)
  target_sources(tarnwick_grammars PRIVATE $<TARGET_OBJECTS:grammar_${target}>)
endfunction()

tarnwick_fetch_grammars()
add_library(tarnwick_grammars STATIC)
set_target_properties(tarnwick_grammars PROPERTIES LINKER_LANGUAGE C)
target_include_directories(tarnwick_grammars SYSTEM PUBLIC ${TREE_SITTER_INCLUDE_DIR})
target_link_libraries(tarnwick_grammars PUBLIC ${TREE_SITTER_LIBRARY})
foreach(
  directory
  @tree-sitter-grammars/tree-sitter-lua
  @tree-sitter-grammars/tree-sitter-markdown/tree-sitter-markdown
  @tree-sitter-grammars/tree-sitter-toml
  @tree-sitter-grammars/tree-sitter-yaml
  tree-sitter-bash
  tree-sitter-c
  tree-sitter-c-sharp
  tree-sitter-cpp
  tree-sitter-go
  tree-sitter-java
  tree-sitter-javascript
  tree-sitter-json
  tree-sitter-kotlin
  tree-sitter-php/php
  tree-sitter-python
  tree-sitter-ruby
  tree-sitter-rust
  tree-sitter-scala
  tree-sitter-swift
  tree-sitter-typescript/tsx
  tree-sitter-typescript/typescript)
  tarnwick_grammar(${directory})
endforeach()
