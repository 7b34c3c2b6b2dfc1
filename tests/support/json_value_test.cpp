#include "support/json_value.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "harness/random.h"

namespace brimwatch {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

double toDouble(const std::string& spelling) {
    return JsonNumber{spelling}.toDouble();
}

TEST(JsonNumber, IsTheNearestDouble) {
    EXPECT_EQ(toDouble("41.260000000000005"), 41.260000000000005);
    EXPECT_EQ(toDouble("-0.5"), -0.5);
    EXPECT_EQ(toDouble("1e3"), 1000);
    EXPECT_EQ(toDouble("12345678901234567890"), 12345678901234567890.0);
    EXPECT_TRUE(std::signbit(toDouble("-0")));
}

TEST(JsonNumber, BeyondADoubleIsAnInfinityOrAZero) {
    EXPECT_EQ(toDouble("1e400"), infinity);
    EXPECT_EQ(toDouble("-1e400"), -infinity);
    EXPECT_EQ(toDouble("1E+400"), infinity);
    EXPECT_EQ(toDouble("1e-400"), 0);
    EXPECT_EQ(toDouble("-1e-400"), 0);
    EXPECT_TRUE(std::signbit(toDouble("-1e-400")));
    EXPECT_EQ(toDouble("1e99999999999999999999"), infinity);
    EXPECT_EQ(toDouble("1e-99999999999999999999"), 0);
    EXPECT_EQ(toDouble("0e99999999999999999999"), 0);
    EXPECT_EQ(toDouble("0.0e400"), 0);
    EXPECT_EQ(toDouble(std::string(400, '9')), infinity);
    EXPECT_EQ(toDouble("0." + std::string(400, '0') + "1"), 0);
    EXPECT_EQ(toDouble("0." + std::string(400, '0') + "1e800"), infinity);
    EXPECT_EQ(toDouble("1" + std::string(400, '0') + "e-800"), 0);
    EXPECT_EQ(toDouble("1" + std::string(400, '0') + "e-400"), 1);
}

TEST(JsonNumber, IsAnIntegerHoweverItIsSpelled) {
    EXPECT_EQ(JsonNumber{"1"}.toInteger(), 1);
    EXPECT_EQ(JsonNumber{"1.0"}.toInteger(), 1);
    EXPECT_EQ(JsonNumber{"1e3"}.toInteger(), 1000);
    EXPECT_EQ(JsonNumber{"-0"}.toInteger(), 0);
    EXPECT_EQ(JsonNumber{"9007199254740993"}.toInteger(), 9007199254740993);
    EXPECT_EQ(JsonNumber{"9223372036854775807"}.toInteger(), INT64_MAX);
    EXPECT_EQ(JsonNumber{"-9223372036854775808"}.toInteger(), INT64_MIN);
    EXPECT_EQ(JsonNumber{"1.5"}.toInteger(), std::nullopt);
    EXPECT_EQ(JsonNumber{"9223372036854775808"}.toInteger(), std::nullopt);
    EXPECT_EQ(JsonNumber{"1e400"}.toInteger(), std::nullopt);
}

TEST(JsonNumber, DropsItsFraction) {
    EXPECT_EQ(JsonNumber{"1790000000.9"}.truncated(), 1790000000);
    EXPECT_EQ(JsonNumber{"-1.9"}.truncated(), -1);
    EXPECT_EQ(JsonNumber{"0.9e1"}.truncated(), 9);
    EXPECT_EQ(JsonNumber{"-9223372036854775808"}.truncated(), INT64_MIN);
    EXPECT_EQ(JsonNumber{"-9.3e18"}.truncated(), std::nullopt);
    EXPECT_EQ(JsonNumber{"9223372036854775808"}.truncated(), std::nullopt);
    EXPECT_EQ(JsonNumber{"9.3e18"}.truncated(), std::nullopt);
    EXPECT_EQ(JsonNumber{"1e400"}.truncated(), std::nullopt);
}

TEST(JsonNumber, FromDoubleReadsBackAsItself) {
    EXPECT_EQ(JsonNumber::fromDouble(41.3).spelling, "41.3");
    EXPECT_EQ(JsonNumber::fromDouble(100).spelling, "100");
    EXPECT_EQ(JsonNumber::fromDouble(0).spelling, "0");
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 100'000; ++round) {
        const auto value = std::bit_cast<double>(random.bits());
        if (std::isfinite(value)) {
            ASSERT_EQ(JsonNumber::fromDouble(value).toDouble(), value);
        }
    }
}

TEST(JsonObject, KeepsItsMembersSortedAndOnce) {
    JsonObject object;
    object.set("b", true);
    object.set("a", "x");
    object.set("b", "y");
    ASSERT_EQ(object.members().size(), 2U);
    EXPECT_EQ(object.members()[0].key, "a");
    EXPECT_EQ(*object.find("b")->string(), "y");
}

TEST(JsonObject, GivesWhatItRemoves) {
    JsonObject object({{"a", "x"}, {"b", nullptr}});
    EXPECT_EQ(object.remove("a"), JsonValue("x"));
    EXPECT_EQ(object.remove("a"), std::nullopt);
    EXPECT_EQ(object.find("a"), nullptr);
    EXPECT_FALSE(object.empty());
}

}  // namespace
}  // namespace brimwatch
