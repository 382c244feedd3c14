# The rooms of the house: each folder of src/ is one target, with an include root of its own. A file can include what
# its room or the rooms that it links declare, as "room/header.h", and nothing else: a wrong include does not compile.

# tarnwick_room(NAME SOURCES files... [HEADERS files...] [PUBLIC targets...] [PRIVATE targets...]): the library
# tarnwick_NAME of the folder at hand. HEADERS: those that others may include; without it, all. The others are for the
# room's own sources, and for tests that link tarnwick_NAME_inside. PUBLIC: what its headers include; PRIVATE: what its
# sources include besides.
function(tarnwick_room name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS;PUBLIC;PRIVATE")
  set(inside ${PROJECT_BINARY_DIR}/rooms/${name})
  file(MAKE_DIRECTORY ${inside})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${inside}/${name} SYMBOLIC)
  set(root ${inside})
  if(arg_HEADERS)
    set(root ${inside}.public)
    file(REMOVE_RECURSE ${root})
    file(MAKE_DIRECTORY ${root}/${name})
    foreach(header ${arg_HEADERS})
      file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${root}/${name}/${header} SYMBOLIC)
    endforeach()
    add_library(tarnwick_${name}_inside INTERFACE)
    target_include_directories(tarnwick_${name}_inside BEFORE INTERFACE ${inside})
    target_link_libraries(tarnwick_${name}_inside INTERFACE tarnwick_${name} ${arg_PUBLIC} ${arg_PRIVATE})
  endif()
  if(arg_SOURCES)
    add_library(tarnwick_${name} STATIC ${arg_SOURCES})
    target_include_directories(
      tarnwick_${name}
      PUBLIC $<BUILD_INTERFACE:${root}>
      PRIVATE ${inside})
    target_link_libraries(tarnwick_${name} PUBLIC ${arg_PUBLIC} PRIVATE ${arg_PRIVATE} $<BUILD_INTERFACE:tarnwick_warnings>)
  else()
    add_library(tarnwick_${name} INTERFACE)
    target_include_directories(tarnwick_${name} INTERFACE ${root})
    target_link_libraries(tarnwick_${name} INTERFACE ${arg_PUBLIC})
  endif()
endfunction()
