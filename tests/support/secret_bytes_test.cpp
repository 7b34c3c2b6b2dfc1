#include "support/secret_bytes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace brimwatch {
namespace {

using namespace std::string_view_literals;

TEST(SecretBytes, HoldAnyBytes) {
    const SecretBytes bytes("a\0b"sv);
    EXPECT_EQ(bytes.size(), 3U);
    EXPECT_EQ(bytes.view(), "a\0b"sv);
}

TEST(SecretBytes, StartAsZeros) {
    EXPECT_EQ(SecretBytes(3).view(), "\0\0\0"sv);
}

TEST(SecretBytes, MayBeEmpty) {
    EXPECT_TRUE(SecretBytes().empty());
    EXPECT_EQ(SecretBytes(""sv), SecretBytes());
    EXPECT_EQ(SecretBytes().view(), ""sv);
}

TEST(SecretBytes, AreEqualIfEachByteIs) {
    EXPECT_EQ(SecretBytes("abc"sv), SecretBytes("abc"sv));
    EXPECT_FALSE(SecretBytes("abc"sv) == SecretBytes("abd"sv));
    EXPECT_FALSE(SecretBytes("abc"sv) == SecretBytes("bbc"sv));
    EXPECT_FALSE(SecretBytes("abc"sv) == SecretBytes("ab"sv));
}

TEST(SecretBytes, AreCopiedWhole) {
    const SecretBytes first("abc"sv);
    SecretBytes second = first;
    second.data()[0] = 'x';
    EXPECT_EQ(first.view(), "abc"sv);
    EXPECT_EQ(second.view(), "xbc"sv);
}

TEST(SecretBytes, MayBeAssignedToThemselves) {
    SecretBytes bytes("abc"sv);
    const SecretBytes& same = bytes;
    bytes = same;
    EXPECT_EQ(bytes.view(), "abc"sv);
}

TEST(SecretBytes, LeaveNothingWhereTheyWereMovedFrom) {
    SecretBytes first("abc"sv);
    const SecretBytes second = std::move(first);
    EXPECT_EQ(second.view(), "abc"sv);
    EXPECT_TRUE(first.empty());  // NOLINT(bugprone-use-after-move): that is the question
}

// Whether the text stands in the memory that was given back last.
class FreedMemory {
  public:
    static inline const void* watched = nullptr;
    static inline std::string content;
};

}  // namespace
}  // namespace brimwatch

// All memory of this program comes back here.
void operator delete(void* memory) noexcept {
    using brimwatch::FreedMemory;
    if (memory != nullptr && memory == FreedMemory::watched) {
        FreedMemory::watched = nullptr;
        FreedMemory::content.assign(static_cast<const char*>(memory), 6);
    }
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    ::operator delete(memory);
}

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept {
    ::operator delete(memory);
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
    if (void* memory = operator new(size, std::nothrow)) return memory;
    throw std::bad_alloc();
}

namespace brimwatch {
namespace {

TEST(SecretBytes, AreWipedBeforeTheyAreGivenBack) {
    {
        const SecretBytes bytes("secret"sv);
        FreedMemory::watched = bytes.data();
    }
    EXPECT_EQ(FreedMemory::content, std::string(6, '\0'));
}

TEST(SecretBytes, AreWipedWhenTheyAreReplaced) {
    FreedMemory::content = "unseen";
    SecretBytes bytes("secret"sv);
    FreedMemory::watched = bytes.data();
    bytes = SecretBytes("other"sv);
    EXPECT_EQ(FreedMemory::content, std::string(6, '\0'));
    EXPECT_EQ(bytes.view(), "other"sv);
}

}  // namespace
}  // namespace brimwatch
