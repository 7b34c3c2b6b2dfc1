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

// The sanitizers want every form that is used to be of one kind; the others lead to these.
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    ++brimwatch::test::count;
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
    if (void* memory = operator new(size, std::nothrow)) return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    std::free(memory);
}
