#include "codex/decimal.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

// The shortest spelling, or "none".
std::string spelled(std::string_view text) {
    const std::optional<Decimal> number = Decimal::fromDigits(text);
    return number ? number->digits() : "none";
}

std::string roundedDown(std::string_view text, std::size_t fractionDigits) {
    return Decimal::fromDigits(text).value().roundedDown(fractionDigits).digits();
}

TEST(Decimal, KeepsEveryDigit) {
    EXPECT_EQ(spelled("12.34"), "12.34");
    EXPECT_EQ(spelled("0.1"), "0.1");
    EXPECT_EQ(spelled("9007199254740993"), "9007199254740993");
    EXPECT_EQ(spelled("123456789012345678901234567890.123456789012345678901234567891"),
              "123456789012345678901234567890.123456789012345678901234567891");
}

TEST(Decimal, DropsZerosThatSayNothing) {
    EXPECT_EQ(spelled("007"), "7");
    EXPECT_EQ(spelled("100"), "100");
    EXPECT_EQ(spelled("12.50"), "12.5");
    EXPECT_EQ(spelled("12.00"), "12");
    EXPECT_EQ(spelled("0.050"), "0.05");
    EXPECT_EQ(spelled("000.000"), "0");
}

TEST(Decimal, IsEqualToTheSameNumberSpelledOtherwise) {
    EXPECT_EQ(Decimal::fromDigits("012.340"), Decimal::fromDigits("12.34"));
    EXPECT_NE(Decimal::fromDigits("12.34"), Decimal::fromDigits("12.3400001"));
}

TEST(Decimal, IsZeroOnlyWithoutAnyOtherDigit) {
    EXPECT_TRUE(Decimal::fromDigits("0").value().isZero());
    EXPECT_TRUE(Decimal::fromDigits("00.00").value().isZero());
    EXPECT_FALSE(Decimal::fromDigits("0.0001").value().isZero());
    EXPECT_FALSE(Decimal::fromDigits("10").value().isZero());
}

TEST(Decimal, RoundsDownByCuttingDigits) {
    EXPECT_EQ(roundedDown("12.349", 2), "12.34");
    EXPECT_EQ(roundedDown("12.999", 2), "12.99");
    EXPECT_EQ(roundedDown("12.3", 2), "12.3");
    EXPECT_EQ(roundedDown("12", 2), "12");
    EXPECT_EQ(roundedDown("12.009", 2), "12");
    EXPECT_EQ(roundedDown("0.009", 2), "0");
    EXPECT_EQ(roundedDown("0.99", 0), "0");
    EXPECT_EQ(roundedDown("99999999999999999999.995", 2), "99999999999999999999.99");
}

TEST(Decimal, IsOnlyOfDigitsAroundAtMostOnePoint) {
    for (const char* text : {"", ".", "1.", ".5", "1..2", "1.2.3", "-1", "+1", "1e3", "1,000", " 1",
                             "1 ", "0x10", "inf", "nan", "\xEF\xBC\x91", "\xD9\xA1"}) {
        EXPECT_EQ(spelled(text), "none") << text;
    }
    EXPECT_EQ(spelled(std::string_view("1\0002", 3)), "none");
}

}  // namespace
}  // namespace brimwatch
