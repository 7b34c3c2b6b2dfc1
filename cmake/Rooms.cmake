# brimwatch_room(NAME SOURCES ... LINKS ... [SYSTEM_LINKS ...])
#
# One room of the house: a static library `brimwatch_NAME` of the listed sources. LINKS are the rooms
# and libraries that its headers need, SYSTEM_LINKS those that only its sources need.
function(brimwatch_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINKS;SYSTEM_LINKS" ${ARGN})
  add_library(brimwatch_${name} STATIC ${ROOM_SOURCES})
  target_link_libraries(brimwatch_${name}
    PUBLIC ${ROOM_LINKS}
    PRIVATE brimwatch_compiler ${ROOM_SYSTEM_LINKS})
endfunction()
