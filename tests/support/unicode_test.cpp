#include "support/unicode.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace brimwatch {
namespace {

TEST(Unicode, AlphanumericIsGeneralCategoryLetterMarkOrNumber) {
    for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        const bool expected = (U_GET_GC_MASK(static_cast<UChar32>(scalar)) &
                               (U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)) != 0;
        ASSERT_EQ(isUnicodeAlphanumeric(scalar), expected)
            << std::hex << static_cast<std::uint32_t>(scalar);
    }
}

TEST(Unicode, EveryScalarSurvivesUtf8) {
    for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
        std::string text;
        appendUtf8(text, scalar);
        const DecodedScalar decoded = decodeUtf8(text + "x");
        const bool isSurrogate = scalar >= 0xD800 && scalar <= 0xDFFF;
        ASSERT_EQ(decoded.valid, !isSurrogate) << std::hex << static_cast<std::uint32_t>(scalar);
        if (isSurrogate) continue;
        ASSERT_TRUE(decoded.scalar == scalar);
        ASSERT_EQ(decoded.length, text.size());
    }
}

TEST(Unicode, RefusesOverlongAndTruncatedSequences) {
    for (const char* text :
         {"\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
          "\xED\xA0\x80", "\xE2\x82", "\xC3", "\xFF", "\xC3(", "a\x80"}) {
        EXPECT_FALSE(isValidUtf8(text));
    }
    EXPECT_TRUE(isValidUtf8(""));
    EXPECT_TRUE(isValidUtf8("주간 · \xF0\x9F\x9A\x80"));
}

TEST(Unicode, AccountKeysHoldLettersMarksDigitsAndThreeSigns) {
    EXPECT_TRUE(holdsOnlyAccountKeyCharacters("work.2_a-b"));
    EXPECT_TRUE(holdsOnlyAccountKeyCharacters("한글"));
    EXPECT_TRUE(holdsOnlyAccountKeyCharacters("e\u0301"));
    EXPECT_TRUE(holdsOnlyAccountKeyCharacters(""));
    for (const char* text : {"a b", "a/b", "a'b", "a\nb", "\xFF", "a·b", "🚀"}) {
        EXPECT_FALSE(holdsOnlyAccountKeyCharacters(text)) << text;
    }
}

}  // namespace
}  // namespace brimwatch
