# What every target of ours is compiled with.
add_library(brimwatch_compiler INTERFACE)
target_compile_options(brimwatch_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_include_directories(brimwatch_compiler INTERFACE ${PROJECT_SOURCE_DIR}/src)

if(BRIMWATCH_SANITIZERS)
  # Without vptr: it probes memory through a pipe, and takes every object for a broken one where no
  # descriptor is left. AddressSanitizer sees the objects that are gone.
  add_compile_options(-fsanitize=${BRIMWATCH_SANITIZERS} -fno-sanitize=vptr
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${BRIMWATCH_SANITIZERS})
endif()

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()
