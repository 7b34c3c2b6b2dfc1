#include "support/path_text.h"

#include <gtest/gtest.h>

#include "harness/random.h"
#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

std::string written(std::string_view path) {
    return writeJson(textFromPath(path), JsonLayout::compact);
}

std::optional<std::string> readBack(std::string_view json) {
    const std::optional<JsonValue> value = parseJson(json);
    if (!value || value->string() == nullptr) return std::nullopt;
    return pathFromText(*value->string());
}

std::string randomBytes(test::Random& random) {
    // Mostly the bytes that begin or end a sequence of several, so that such sequences come up.
    constexpr std::string_view frequent = "/a\xED\xB2\xB3\xA0\x80\xBF\xC3\xE2\xF0\x9F\xFF";
    std::string bytes;
    for (std::size_t count = random.below(12); count > 0; --count) {
        bytes += random.oneIn(4) ? static_cast<char>(random.between(1, 255))
                                 : frequent[random.below(frequent.size())];
    }
    return bytes;
}

TEST(PathText, OfAValidPathIsThePath) {
    EXPECT_EQ(textFromPath("/home/a/.codex-한글"), "/home/a/.codex-한글");
    EXPECT_EQ(textFromPath(""), "");
    EXPECT_EQ(pathFromText("/home/a/.codex-한글"), "/home/a/.codex-한글");
    EXPECT_EQ(pathFromText(""), "");
}

TEST(PathText, WritesBytesThatAreNotUtf8AsLoneSurrogates) {
    EXPECT_EQ(written("/a\xFF/b\x80"), R"("/a\udcff/b\udc80")");
    EXPECT_EQ(readBack(R"("/a\udcff/b\udc80")"), "/a\xFF/b\x80");
}

TEST(PathText, WritesTheBytesOfASurrogateOneByOne) {
    EXPECT_EQ(written("\xED\xB2\x80"), R"("\udced\udcb2\udc80")");
    EXPECT_EQ(readBack(R"("\udced\udcb2\udc80")"), "\xED\xB2\x80");
}

TEST(PathText, LeavesOtherSurrogatesAlone) {
    // U+D83D, U+DC00, which stands for no byte that needs it, U+DC7F and U+DFFF.
    constexpr std::string_view others = "\xED\xA0\xBD\xED\xB0\x80\xED\xB1\xBF\xED\xBF\xBF";
    EXPECT_EQ(pathFromText(others), others);
}

TEST(PathText, OfABrokenSurrogateIsItsBytes) {
    EXPECT_EQ(pathFromText("\xED"), "\xED");
    EXPECT_EQ(pathFromText("\xED\xB2"), "\xED\xB2");
    EXPECT_EQ(pathFromText("\xED\xB2x"), "\xED\xB2x");
}

TEST(PathText, WithANulIsNoPath) {
    EXPECT_EQ(readBack(R"("/home/a\u0000b")"), std::nullopt);
}

TEST(PathText, BringsEveryPathBackByteForByteThroughAReadableDocument) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 100'000; ++round) {
        const std::string path = randomBytes(random);
        const std::string json = written(path);
        ASSERT_TRUE(isValidUtf8(json));
        ASSERT_EQ(readBack(json), path);
        if (isValidUtf8(path)) {
            ASSERT_EQ(textFromPath(path), path);
        }
    }
}

}  // namespace
}  // namespace brimwatch
