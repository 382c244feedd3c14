# The rooms of the house: each folder of src/ is one target, with an include root of its own. A file can include what
# its room or the rooms that it links declare, as "room/header.h", and nothing else: a wrong include does not compile.

# tarnwick_room(NAME SOURCES files... [PUBLIC targets...] [PRIVATE targets...]): the library tarnwick_NAME of the folder
# at hand. PUBLIC: what its headers include; PRIVATE: what its sources include besides.
function(tarnwick_room name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PUBLIC;PRIVATE")
  set(root ${PROJECT_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${name} SYMBOLIC)
  if(arg_SOURCES)
    add_library(tarnwick_${name} STATIC ${arg_SOURCES})
    target_include_directories(tarnwick_${name} PUBLIC $<BUILD_INTERFACE:${root}>)
    target_link_libraries(tarnwick_${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE} $<BUILD_INTERFACE:tarnwick_warnings>)
  else()
    add_library(tarnwick_${name} INTERFACE)
    target_include_directories(tarnwick_${name} INTERFACE ${root})
    target_link_libraries(tarnwick_${name} INTERFACE ${arg_PUBLIC})
  endif()
endfunction()
