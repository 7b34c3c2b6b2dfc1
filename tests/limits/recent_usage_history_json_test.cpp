#include <gtest/gtest.h>

#include "harness/stored_json.h"
#include "limits/recent_usage_history.h"
#include "usage_examples.h"

namespace brimwatch {
namespace {

using test::now;

TEST(StoredRecentUsage, IsOneObjectWithTheKeyAccountsAndTimesSince2001) {
    RecentUsageHistory history;
    EXPECT_EQ(test::encode(history), R"({"accounts":{}})");
    RecentUsageSample sample = test::weeklySample(0, 40);
    sample.sevenDayReset = true;
    sample.planTier = "Pro";
    history.accounts["claude-work"] = {sample};
    EXPECT_EQ(test::encode(history),
              R"({"accounts":{"claude-work":[{"fiveHourReset":false,"planTier":"Pro",)"
              R"("sevenDay":{"resetsAt":811782900,"usedPercentage":40},"sevenDayReset":true,)"
              R"("updatedAt":811692900}]}})");
    EXPECT_EQ(test::decode<RecentUsageHistory>(test::encode(history)), history);
}

TEST(StoredRecentUsage, UnknownKeysAndAnyOrderAreFine) {
    const auto history = test::decode<RecentUsageHistory>(
        "\n{\"x\":[1],\"accounts\":{\"b\":[],\"a\":[{\"sevenDayReset\":true,\"y\":0,"
        "\"fiveHourReset\":false,\"updatedAt\":1.5}]}}\n");
    ASSERT_TRUE(history);
    EXPECT_TRUE(history->accounts.at("b").empty());
    EXPECT_EQ(unixSeconds(history->accounts.at("a").at(0).updatedAt), 978'307'201.5);
    EXPECT_TRUE(history->accounts.at("a").at(0).sevenDayReset);
}

TEST(StoredRecentUsage, DamageAnywhereGivesNothing) {
    for (const char* text : {"", "null", "[]", "{}", R"({"accounts":null})", R"({"accounts":[]})",
                             R"({"accounts":{"a":{}}})", R"({"accounts":{"a":null}})",
                             R"({"accounts":{"a":[1]}})", R"({"accounts":{"a":[{}]}})",
                             R"({"accounts":{"a":[{"updatedAt":1,"fiveHourReset":false}]}})"}) {
        EXPECT_FALSE(test::decode<RecentUsageHistory>(text)) << text;
    }
}

TEST(StoredRecentUsage, ATextThatWasCutAnywhereGivesNothing) {
    RecentUsageHistory history;
    history.accounts["claude-work"] = {test::weeklySample(1000, 40), test::weeklySample(0, 41)};
    const std::string whole = test::encode(history);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        ASSERT_FALSE(test::decode<RecentUsageHistory>(whole.substr(0, length))) << length;
    }
}

TEST(StoredRecentUsage, WhatIsInvalidButWellFormedIsDroppedWhenItIsRecordedNext) {
    auto history = test::decode<RecentUsageHistory>(
        R"({"accounts":{"a":[{"updatedAt":1,"fiveHourReset":false,"sevenDayReset":false}],)"
        R"("b":[{"updatedAt":811692900,"fiveHourReset":false,"sevenDayReset":false,)"
        R"("fiveHour":{"usedPercentage":101}}]}})");
    ASSERT_TRUE(history);
    history->record({}, {}, now);
    EXPECT_TRUE(history->accounts.empty());
}

TEST(StoredRecentUsage, ARecordedHistorySurvivesARoundTrip) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 300; ++round) {
        test::RandomUsage usage(random, 2 + random.below(10));
        RecentUsageHistory history;
        for (const char* id : {"claude-work", "codex-한\"\\"})
            history.accounts[id] = usage.samples(random.below(310), 300);
        history.record({}, {}, now);
        ASSERT_EQ(test::decode<RecentUsageHistory>(test::encode(history)), history);
    }
}

TEST(StoredRecentUsage, AHugeHistoryIsReadAndCutDown) {
    RecentUsageHistory history;
    for (int age = 50'000; age > 0; --age)
        history.accounts["claude-work"].push_back(test::weeklySample(age, 1));
    auto decoded = test::decode<RecentUsageHistory>(test::encode(history));
    ASSERT_EQ(decoded, history);
    decoded->record({}, {}, now);
    EXPECT_EQ(decoded->accounts.at("claude-work").size(), 300U);
}

}  // namespace
}  // namespace brimwatch
