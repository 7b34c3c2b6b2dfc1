#include "publish/limits_wire.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "harness/random.h"
#include "publish_examples.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

using test::accountOf;
using test::now;

std::string encoded(const SubscriptionLimits& limits) {
    std::string json;
    appendLimits(json, limits);
    return json;
}

std::optional<SubscriptionLimits> decoded(const std::string& json) {
    return decodeLimits(parseJson(json).value());
}

std::string spelled(double number) {
    std::string json;
    appendWireNumber(json, number);
    return json;
}

std::string textOf(std::string_view text) {
    std::string json;
    appendWireText(json, text);
    return json;
}

SubscriptionLimits fullAccount() {
    SubscriptionLimits limits = accountOf("work", 10, {});
    limits.provider = SubscriptionLimits::Provider::codex;
    limits.updatedAt = instantFromUnixSeconds(1'790'000'100.25);
    limits.fiveHour = UsageWindow{41.3, std::nullopt};
    limits.sevenDay = UsageWindow{7, instantFromUnixSeconds(1'790'090'100)};
    limits.planTier = "Max 20배";
    limits.displayName = R"(a "b")";
    RecentUsageSample whole{.updatedAt = instantFromUnixSeconds(1'789'999'800),
                            .fiveHour = UsageWindow{41, instantFromUnixSeconds(1'790'000'500)},
                            .sevenDay = UsageWindow{6.5, std::nullopt},
                            .planTier = "Max 20배",
                            .fiveHourReset = true,
                            .sevenDayReset = false};
    RecentUsageSample bare{.updatedAt = instantFromUnixSeconds(1'789'999'500),
                           .fiveHour = std::nullopt,
                           .sevenDay = std::nullopt,
                           .planTier = std::nullopt,
                           .fiveHourReset = false,
                           .sevenDayReset = true};
    limits.recentUsageHistory = RecentUsageSamples{bare, whole};
    return limits;
}

constexpr const char* fullAccountJson =
    R"({"account":"work","displayName":"a \"b\"","fiveHour":{"usedPercentage":41.3},)"
    R"("planTier":"Max 20배","provider":"codex","recentUsageHistory":[)"
    R"({"fiveHourReset":false,"sevenDayReset":true,"updatedAt":1789999500},)"
    R"({"fiveHour":{"resetsAt":1790000500,"usedPercentage":41},"fiveHourReset":true,)"
    R"("planTier":"Max 20배","sevenDay":{"usedPercentage":6.5},"sevenDayReset":false,)"
    R"("updatedAt":1789999800}],"sevenDay":{"resetsAt":1790090100,"usedPercentage":7},)"
    R"("updatedAt":1790000100.25})";

TEST(LimitsWire, HasEveryFieldUnderItsNameInSortedOrder) {
    EXPECT_EQ(encoded(fullAccount()), fullAccountJson);
}

TEST(LimitsWire, LeavesOutWhatIsAbsentAndNeverWritesNull) {
    SubscriptionLimits limits;
    limits.account = "a";
    limits.updatedAt = instantFromUnixSeconds(5);
    EXPECT_EQ(encoded(limits), R"({"account":"a","provider":"claude","updatedAt":5})");
    limits.recentUsageHistory.emplace();
    EXPECT_EQ(encoded(limits),
              R"({"account":"a","provider":"claude","recentUsageHistory":[],"updatedAt":5})");
}

TEST(LimitsWire, ReadsBackWhatItWrote) {
    SubscriptionLimits empty;
    SubscriptionLimits withoutSamples = fullAccount();
    withoutSamples.recentUsageHistory.emplace();
    for (const SubscriptionLimits& limits : {fullAccount(), empty, withoutSamples})
        EXPECT_EQ(decoded(encoded(limits)), limits);
}

TEST(LimitsWire, ReadsKeysInAnyOrderAndIgnoresUnknownOnes) {
    EXPECT_EQ(decoded(R"( {"updatedAt" : 5.0, "x": {"y": [null]}, "provider": "codex",
                           "sevenDay": {"z": 1, "usedPercentage": 1e1}, "account": "a"} )"),
              (SubscriptionLimits{.provider = SubscriptionLimits::Provider::codex,
                                  .account = "a",
                                  .fiveHour = std::nullopt,
                                  .sevenDay = UsageWindow{10, std::nullopt},
                                  .updatedAt = instantFromUnixSeconds(5),
                                  .planTier = std::nullopt,
                                  .displayName = std::nullopt,
                                  .recentUsageHistory = std::nullopt}));
}

TEST(LimitsWire, ReadsNullAsAbsentWhereAFieldMayBeAbsent) {
    SubscriptionLimits limits;
    limits.account = "a";
    EXPECT_EQ(decoded(R"({"account":"a","provider":"claude","updatedAt":0,"fiveHour":null,)"
                      R"("sevenDay":null,"planTier":null,"displayName":null,)"
                      R"("recentUsageHistory":null})"),
              limits);
}

TEST(LimitsWire, ReadsPercentagesAsTheyCome) {
    const auto limits = decoded(
        R"({"account":"a","provider":"claude","updatedAt":0,"fiveHour":{"usedPercentage":-250.5}})");
    EXPECT_EQ(limits.value().fiveHour->usedPercentage, -250.5);
}

TEST(LimitsWire, ReadsNothingFromAnElementThatIsNotWhole) {
    const nlohmann::json whole = nlohmann::json::parse(fullAccountJson);
    ASSERT_TRUE(decoded(whole.dump()));
    std::vector<nlohmann::json> flawed(21, whole);
    flawed[0].erase("provider");
    flawed[1]["provider"] = "gemini";
    flawed[2]["provider"] = nullptr;
    flawed[3]["provider"] = 1;
    flawed[4].erase("account");
    flawed[5]["account"] = 7;
    flawed[6].erase("updatedAt");
    flawed[7]["updatedAt"] = "1790000100";
    flawed[8]["updatedAt"] = nullptr;
    flawed[9]["fiveHour"] = nlohmann::json::object();
    flawed[10]["fiveHour"]["usedPercentage"] = "41";
    flawed[11]["fiveHour"]["resetsAt"] = "soon";
    flawed[12]["sevenDay"] = nlohmann::json::array();
    flawed[13]["planTier"] = 20;
    flawed[14]["displayName"] = false;
    flawed[15]["recentUsageHistory"] = nlohmann::json::object();
    flawed[16]["recentUsageHistory"].push_back(nullptr);
    flawed[17]["recentUsageHistory"][0].erase("updatedAt");
    flawed[18]["recentUsageHistory"][1].erase("fiveHourReset");
    flawed[19]["recentUsageHistory"][1]["sevenDayReset"] = 0;
    flawed[20]["recentUsageHistory"][1]["fiveHour"] = 41;
    for (std::size_t index = 0; index < flawed.size(); ++index)
        EXPECT_FALSE(decoded(flawed[index].dump())) << index << flawed[index].dump();
    for (const char* value : {"null", "true", "1", R"("claude")", "[]", "{}"})
        EXPECT_FALSE(decoded(value)) << value;
}

TEST(LimitsWire, ReadsNothingFromAnElementWithANumberBeyondAllDoubles) {
    EXPECT_FALSE(decoded(R"({"account":"a","provider":"claude","updatedAt":1e999})"));
    EXPECT_FALSE(decoded(R"({"account":"a","provider":"claude","updatedAt":1,)"
                         R"("fiveHour":{"usedPercentage":1e999}})"));
    EXPECT_FALSE(decoded(R"({"account":"a","provider":"claude","updatedAt":1,)"
                         R"("sevenDay":{"usedPercentage":1,"resetsAt":-1e999}})"));
    EXPECT_FALSE(decoded(R"({"account":"a","provider":"claude","updatedAt":1,)"
                         R"("recentUsageHistory":[{"updatedAt":1e999,"fiveHourReset":false,)"
                         R"("sevenDayReset":false}]})"));
}

TEST(LimitsWire, SpellsWholeNumbersWithoutAFractionOrAnExponent) {
    EXPECT_EQ(spelled(0), "0");
    EXPECT_EQ(spelled(-0.0), "-0");
    EXPECT_EQ(spelled(100), "100");
    EXPECT_EQ(spelled(-7), "-7");
    EXPECT_EQ(spelled(1'790'000'000), "1790000000");
    EXPECT_EQ(spelled(9'007'199'254'740'991), "9007199254740991");
    EXPECT_EQ(spelled(-9'007'199'254'740'991), "-9007199254740991");
    EXPECT_EQ(spelled(9'007'199'254'740'992), "9007199254740992");
    EXPECT_EQ(spelled(1e18), "1e+18");
    EXPECT_EQ(spelled(-1e18), "-1e+18");
    EXPECT_EQ(spelled(-1e300), "-1e+300");
    EXPECT_EQ(spelled(37.5), "37.5");
    EXPECT_EQ(spelled(0.1), "0.1");
}

TEST(LimitsWire, NumbersReadBackAsTheSameDouble) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    std::vector<double> numbers = {0.0,
                                   -0.0,
                                   0x1p53,
                                   -0x1p53,
                                   0x1p53 - 1,
                                   0x1p53 + 2,
                                   0x1p63,
                                   0x1p64,
                                   1e22,
                                   1e23,
                                   5e-324,
                                   2.2250738585072014e-308,
                                   std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::lowest(),
                                   1'790'000'000.123456,
                                   99.99999999999999};
    for (int round = 0; round < 20'000; ++round) {
        numbers.push_back(std::bit_cast<double>(random.bits()));
        numbers.push_back(static_cast<double>(random.bits()) / 0x1p40);
        numbers.push_back(static_cast<double>(random.between(0, 1'000'000)) / 10'000);
    }
    for (const double number : numbers) {
        if (!std::isfinite(number)) continue;
        const std::string json = spelled(number);
        const std::uint64_t bits = std::bit_cast<std::uint64_t>(number);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(parseJson(json).value().number()->toDouble()), bits)
            << json;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(std::strtod(json.c_str(), nullptr)), bits) << json;
        EXPECT_EQ(nlohmann::json::parse(json).get<double>(), number) << json;
    }
}

TEST(LimitsWire, RefusesEveryNumberThatIsNotFinite) {
    for (const double number :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        std::vector<SubscriptionLimits> flawed(6, fullAccount());
        flawed[0].updatedAt = instantFromUnixSeconds(number);
        flawed[1].fiveHour->usedPercentage = number;
        flawed[2].sevenDay->resetsAt = instantFromUnixSeconds(number);
        flawed[3].recentUsageHistory->front().updatedAt = instantFromUnixSeconds(number);
        flawed[4].recentUsageHistory->back().fiveHour->usedPercentage = number;
        flawed[5].recentUsageHistory->back().fiveHour->resetsAt = instantFromUnixSeconds(number);
        for (const SubscriptionLimits& limits : flawed)
            EXPECT_THROW(encoded(limits), LimitsCloud::EncodingError);
        EXPECT_THROW(spelled(number), LimitsCloud::EncodingError);
    }
}

TEST(LimitsWire, EscapesWhatJsonWantsEscaped) {
    EXPECT_EQ(textOf("a\"\\/\n\t\x01 한🚀\x7F"), "\"a\\\"\\\\/\\n\\t\\u0001 한🚀\x7F\"");
    EXPECT_EQ(textOf(std::string_view("\0", 1)), R"("\u0000")");
    EXPECT_EQ(textOf(""), R"("")");
}

// A reader that meets one byte that is not Unicode refuses the whole document, shares of others
// included.
TEST(LimitsWire, WritesNothingThatIsNotUnicode) {
    EXPECT_EQ(textOf("a\xFF z"), "\"a\uFFFD z\"");
    EXPECT_EQ(textOf("\xED\xA0\xBD"), "\"\uFFFD\uFFFD\uFFFD\"");  // a surrogate without its partner
    EXPECT_EQ(textOf("한\xE1\x84"), "\"한\uFFFD\uFFFD\"");
    SubscriptionLimits limits = fullAccount();
    limits.displayName = "\xC3(";
    limits.recentUsageHistory->front().planTier = "\x80";
    EXPECT_TRUE(nlohmann::json::accept(encoded(limits)));
    EXPECT_TRUE(decoded(encoded(limits)));
}

TEST(LimitsWire, ReadsBackAnyAccountWhoseNumbersAreFinite) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    test::RandomUsage usage(random, 6);
    int encodedCount = 0;
    for (int round = 0; round < 500; ++round) {
        SubscriptionLimits limits;
        limits.provider = random.oneIn(2) ? SubscriptionLimits::Provider::codex
                                          : SubscriptionLimits::Provider::claude;
        limits.account = std::to_string(random.bits());
        limits.updatedAt = test::secondsAgo(static_cast<double>(random.below(100'000)) / 7);
        limits.fiveHour = usage.nextWindow();
        limits.sevenDay = usage.nextWindow();
        limits.planTier = usage.nextPlan();
        limits.displayName = usage.nextPlan();
        if (!random.oneIn(4)) limits.recentUsageHistory = usage.samples(random.below(12), 1000);
        try {
            const std::string json = encoded(limits);
            ++encodedCount;
            EXPECT_EQ(decoded(json), limits) << json;
        } catch (const LimitsCloud::EncodingError&) {
            continue;
        }
    }
    EXPECT_GT(encodedCount, 20);
}

}  // namespace
}  // namespace brimwatch
