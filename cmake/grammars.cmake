# The tree-sitter library and its grammars: fetched from the npm registry as cmake/grammars/package-lock.json pins them
# (version and integrity hash; npm refuses a tarball that differs), without running any install script, and compiled into
# static libraries. Fetched once for all presets, again only when the lock file changes. The grammar of JavaScript stays at
# 0.23.1: the next one, 0.25.0, takes JSX attributes such as `class` for errors and `await (f())` for a call.
set(TARNWICK_GRAMMARS_DIR ${PROJECT_SOURCE_DIR}/build/grammars CACHE PATH "Where the fetched grammars are kept")

# tarnwick_third_party(TARGET): C optimised in every preset and without sanitizers, since debug builds, too, run it all the
# time; its warnings are its authors'.
function(tarnwick_third_party target)
  target_compile_options(${target} PRIVATE -w -O2 -fno-sanitize=all)
  set_target_properties(${target} PROPERTIES C_STANDARD 11 C_EXTENSIONS ON)
endfunction()

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
  message(STATUS "Fetching tree-sitter and its grammars")
  file(REMOVE ${stamp})
  file(COPY ${pins}/package.json ${pins}/package-lock.json DESTINATION ${TARNWICK_GRAMMARS_DIR})
  execute_process(COMMAND ${NPM} ci --ignore-scripts --legacy-peer-deps --no-bin-links --no-audit --no-fund --loglevel=error
                  WORKING_DIRECTORY ${TARNWICK_GRAMMARS_DIR} RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "npm could not fetch the packages pinned in ${pins}/package-lock.json")
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
                        "the pinned tree-sitter takes ${oldest_abi} to ${newest_abi}")
  endif()
  string(MAKE_C_IDENTIFIER ${directory} target)
  # An object library each: every grammar brings headers of the same names.
  add_library(grammar_${target} OBJECT ${src}/parser.c)
  if(EXISTS ${src}/scanner.c)
    target_sources(grammar_${target} PRIVATE ${src}/scanner.c)
  endif()
  target_include_directories(grammar_${target} PRIVATE ${src})
  tarnwick_third_party(grammar_${target})
  target_sources(tarnwick_grammars PRIVATE $<TARGET_OBJECTS:grammar_${target}>)
endfunction()

tarnwick_fetch_grammars()

set(tree_sitter ${TARNWICK_GRAMMARS_DIR}/node_modules/tree-sitter/vendor/tree-sitter/lib)
file(STRINGS ${tree_sitter}/include/tree_sitter/api.h abi_lines
     REGEX "#define TREE_SITTER_(LANGUAGE_VERSION|MIN_COMPATIBLE_LANGUAGE_VERSION)")
string(REGEX MATCH "_LANGUAGE_VERSION ([0-9]+)" ignored "${abi_lines}")
set(newest_abi ${CMAKE_MATCH_1})
string(REGEX MATCH "MIN_COMPATIBLE_LANGUAGE_VERSION ([0-9]+)" ignored "${abi_lines}")
set(oldest_abi ${CMAKE_MATCH_1})

add_library(tree_sitter STATIC ${tree_sitter}/src/lib.c)  # which includes all the others
target_include_directories(tree_sitter SYSTEM PUBLIC ${tree_sitter}/include PRIVATE ${tree_sitter}/src)
target_compile_definitions(tree_sitter PRIVATE _POSIX_C_SOURCE=200112L _DEFAULT_SOURCE)
tarnwick_third_party(tree_sitter)
# A grammar that a user adds may be built to take its memory from here.
target_link_options(tree_sitter INTERFACE LINKER:--export-dynamic-symbol=ts_current_*)

add_library(tarnwick_grammars STATIC)
set_target_properties(tarnwick_grammars PROPERTIES LINKER_LANGUAGE C)
target_link_libraries(tarnwick_grammars PUBLIC tree_sitter)
