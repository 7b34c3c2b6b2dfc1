# Makes the desktop entry and the service of the session bus, for the prefix of this installation.

# CMake says nothing for "/".
get_filename_component(prefix "${CMAKE_INSTALL_PREFIX}/" ABSOLUTE)
get_filename_component(command "${BRIMWATCH_BINDIR}/brimwatch" ABSOLUTE BASE_DIR "${prefix}")
# What is more than that means something in one of the two files, quoted or not.
if(NOT command MATCHES "^[A-Za-z0-9/ ._+,:@~-]+$")
  message(FATAL_ERROR "A desktop can't start a program in ${command}")
endif()
if(command MATCHES "[ ~]")
  set(command "\"${command}\"")
endif()
foreach(name desktop service)
  configure_file(${BRIMWATCH_PACKAGING}/net.quillmoor.brimwatch.${name}.in
    ${BRIMWATCH_MADE}/net.quillmoor.brimwatch.${name} @ONLY)
endforeach()
