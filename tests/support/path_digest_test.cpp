#include "support/path_digest.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

// Known answers from sha256sum(1).
TEST(PathDigest, IsTheBeginningOfTheSha256OfThePath) {
    EXPECT_EQ(pathDigest(""), "e3b0c44298fc");
    EXPECT_EQ(pathDigest("abc"), "ba7816bf8f01");
    EXPECT_EQ(pathDigest("/x/y/.claude"), "64b2321fd9f8");
}

}  // namespace
}  // namespace brimwatch
