# Sanitized builds are made anew again and again, on machines that have never seen the sources: what
# most sources include is compiled once there. Other builds go without, and so find out which include
# is missing.
set(BRIMWATCH_PRECOMPILES OFF)
if(BRIMWATCH_SANITIZERS AND NOT BRIMWATCH_FUZZING)
  set(BRIMWATCH_PRECOMPILES ON)
endif()
# Which headers the rooms of a folder have in common: standard, or qt as well.
set(BRIMWATCH_HEADERS standard)
# The compiler takes the latter only with the very macros that they were compiled with.
set(BRIMWATCH_QT_MACROS QT_CORE_LIB QT_DBUS_LIB QT_GUI_LIB)

# brimwatch_precompiled_headers(NAME SOURCE [LINKS ...] [OPTIONS ...] HEADERS ...)
function(brimwatch_precompiled_headers name source)
  cmake_parse_arguments(PRECOMPILED "" "" "LINKS;OPTIONS;HEADERS" ${ARGN})
  add_library(brimwatch_${name}_headers OBJECT ${source})
  target_link_libraries(brimwatch_${name}_headers PRIVATE brimwatch_compiler ${PRECOMPILED_LINKS})
  target_compile_options(brimwatch_${name}_headers PRIVATE -fPIC ${PRECOMPILED_OPTIONS})
  target_precompile_headers(brimwatch_${name}_headers PRIVATE ${PRECOMPILED_HEADERS})
endfunction()

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
  if(BRIMWATCH_PRECOMPILES)
    target_precompile_headers(brimwatch_${name} REUSE_FROM brimwatch_${BRIMWATCH_HEADERS}_headers)
    if(BRIMWATCH_HEADERS STREQUAL qt)
      target_compile_definitions(brimwatch_${name} PRIVATE ${BRIMWATCH_QT_MACROS})
      # The rules, which tests run millions of times, are the others.
      target_compile_options(brimwatch_${name} PRIVATE -O0)
    endif()
  endif()
endfunction()
