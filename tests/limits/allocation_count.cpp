#include "allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace brimwatch::test {
namespace {

std::atomic<std::size_t> count = 0;

}  // namespace

std::size_t allocationCount() {
    return count;
}

}  // namespace brimwatch::test

void* operator new(std::size_t size) {
    ++brimwatch::test::count;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
