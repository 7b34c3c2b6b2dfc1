// How often the program asked for memory.
#pragma once

#include <cstddef>

namespace brimwatch::test {

// Calls of `operator new` so far, on every thread.
std::size_t allocationCount();

}  // namespace brimwatch::test
