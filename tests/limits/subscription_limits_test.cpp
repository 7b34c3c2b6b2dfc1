#include "limits/subscription_limits.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace brimwatch {
namespace {

using Provider = SubscriptionLimits::Provider;

// A file with these members in place of the usual ones.
std::string fileWith(const std::string& windows, const std::string& version = "1",
                     const std::string& provider = R"("claude")",
                     const std::string& updatedAt = "1790000000", const std::string& more = "") {
    return R"({"version":)" + version + R"(,"provider":)" + provider +
           R"(,"account":"work","windows":)" + windows + R"(,"updated_at":)" + updatedAt + more +
           "}";
}

std::string fileWithUsed(const std::string& used) {
    return fileWith(R"({"five_hour":{"used_percentage":)" + used + "}}");
}

constexpr const char* oneWindow =
    R"({"seven_day":{"used_percentage":62.5,"resets_at":1790001000}})";

std::optional<SubscriptionLimits> read(const std::string& file) {
    return SubscriptionLimits::fromFileData(file);
}

TEST(LimitsReader, ReadsARecord) {
    const auto limits = read(fileWith(
        R"({"five_hour":{"used_percentage":41.3,"resets_at":1790000100.5},"seven_day":{"used_percentage":7}})",
        "1", R"("codex")", "1790000000.25", R"(,"plan_tier":"Plus")"));
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->provider, Provider::codex);
    EXPECT_EQ(limits->account, "work");
    EXPECT_EQ(limits->fiveHour, (UsageWindow{41.3, instantFromUnixSeconds(1790000100.5)}));
    EXPECT_EQ(limits->sevenDay, (UsageWindow{7, std::nullopt}));
    EXPECT_EQ(unixSeconds(limits->updatedAt), 1790000000.25);
    EXPECT_EQ(limits->planTier, "Plus");
    EXPECT_EQ(limits->displayName, std::nullopt);
    EXPECT_EQ(limits->recentUsageHistory, std::nullopt);
}

TEST(LimitsReader, OneWindowIsEnough) {
    const auto limits = read(fileWith(oneWindow));
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->fiveHour, std::nullopt);
    EXPECT_EQ(limits->sevenDay, (UsageWindow{62.5, instantFromUnixSeconds(1790001000)}));
}

TEST(LimitsReader, WhatIsNotJsonOrLacksAKeyIsNothing) {
    EXPECT_FALSE(read(""));
    EXPECT_FALSE(read("not json"));
    EXPECT_FALSE(read("[]"));
    EXPECT_FALSE(read(R"({"provider":"claude","account":"a","windows":{},"updated_at":1})"));
    EXPECT_FALSE(read(
        R"({"version":1,"account":"a","windows":{"five_hour":{"used_percentage":1}},"updated_at":1})"));
    EXPECT_FALSE(read(
        R"({"version":1,"provider":"claude","windows":{"five_hour":{"used_percentage":1}},"updated_at":1})"));
    EXPECT_FALSE(read(R"({"version":1,"provider":"claude","account":"a","updated_at":1})"));
    EXPECT_FALSE(read(
        R"({"version":1,"provider":"claude","account":"a","windows":{"five_hour":{"used_percentage":1}}})"));
}

TEST(LimitsReader, AWrongTypeIsNothing) {
    EXPECT_TRUE(read(fileWith(oneWindow)));
    EXPECT_FALSE(read(fileWith(oneWindow, R"("1")")));
    EXPECT_FALSE(read(fileWith(oneWindow, "true")));
    EXPECT_FALSE(read(fileWith(oneWindow, "1", "1")));
    EXPECT_FALSE(read(fileWith(oneWindow, "1", R"("claude")", R"("1790000000")")));
    EXPECT_FALSE(read(fileWith(oneWindow, "1", R"("claude")", "null")));
    EXPECT_FALSE(read(fileWith(oneWindow, "1", R"("claude")", "1", R"(,"plan_tier":1)")));
    EXPECT_FALSE(read(fileWith("null")));
    EXPECT_FALSE(read(fileWith("[]")));
    EXPECT_FALSE(read(fileWith(R"({"five_hour":{"used_percentage":1},"x":null})")));
    EXPECT_FALSE(
        read(fileWith(R"({"five_hour":{"used_percentage":1},"x":{"used_percentage":"1"}})")));
    EXPECT_FALSE(read(fileWith(R"({"five_hour":{"used_percentage":true}})")));
    EXPECT_FALSE(read(fileWith(R"({"five_hour":{"resets_at":1}})")));
    EXPECT_FALSE(read(fileWith(R"({"five_hour":{"used_percentage":1,"resets_at":"1"}})")));
}

TEST(LimitsReader, NullIsAbsentWhereAKeyMayBeMissing) {
    const auto limits = read(fileWith(R"({"five_hour":{"used_percentage":1,"resets_at":null}})",
                                      "1", R"("claude")", "1", R"(,"plan_tier":null)"));
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->fiveHour->resetsAt, std::nullopt);
    EXPECT_EQ(limits->planTier, std::nullopt);
}

TEST(LimitsReader, AVersionOtherThanOneIsNothing) {
    for (const char* version : {"0", "2", "-1", "1.5", "9223372036854775808"}) {
        EXPECT_FALSE(read(fileWith(oneWindow, version))) << version;
    }
}

TEST(LimitsReader, AnUnknownProviderIsNothing) {
    for (const char* provider : {R"("Claude")", R"("gemini")", R"("")", R"("claude ")"}) {
        EXPECT_FALSE(read(fileWith(oneWindow, "1", provider))) << provider;
    }
}

TEST(LimitsReader, PercentagesFromZeroToAHundredAreValid) {
    for (const char* used : {"0", "100", "-0", "0.0", "100.0", "99.9999"}) {
        EXPECT_TRUE(read(fileWithUsed(used))) << used;
    }
}

TEST(LimitsReader, APercentageOutOfRangeOrNotFiniteDropsItsWindowAlone) {
    for (const char* used : {"100.0001", "-0.0001", "1e999", "-1e999", "150"}) {
        EXPECT_FALSE(read(fileWithUsed(used))) << used;
        const auto limits =
            read(fileWith(R"({"five_hour":{"used_percentage":)" + std::string(used) +
                          R"(},"seven_day":{"used_percentage":5}})"));
        ASSERT_TRUE(limits) << used;
        EXPECT_EQ(limits->fiveHour, std::nullopt);
        EXPECT_EQ(limits->sevenDay->usedPercentage, 5);
    }
}

TEST(LimitsReader, AResetTimeThatIsNotFiniteDropsItsWindowAlone) {
    const auto limits = read(fileWith(
        R"({"five_hour":{"used_percentage":1,"resets_at":1e999},"seven_day":{"used_percentage":5}})"));
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->fiveHour, std::nullopt);
    EXPECT_TRUE(limits->sevenDay);
}

TEST(LimitsReader, WithoutAWindowIsNothing) {
    EXPECT_FALSE(read(fileWith("{}")));
    EXPECT_FALSE(read(fileWith(R"({"seven_day_opus":{"used_percentage":1}})")));
    EXPECT_FALSE(read(
        fileWith(R"({"five_hour":{"used_percentage":101},"seven_day":{"used_percentage":-1}})")));
}

TEST(LimitsReader, IgnoresOtherWindowsAndUnknownKeys) {
    const auto limits = read(fileWith(
        R"({"seven_day_opus":{"used_percentage":99},"five_hour":{"used_percentage":1,"x":[]}})",
        "1", R"("claude")", "1", R"(,"unknown":{"a":1})"));
    ASSERT_TRUE(limits);
    EXPECT_EQ(limits->fiveHour->usedPercentage, 1);
    EXPECT_EQ(limits->sevenDay, std::nullopt);
}

TEST(LimitsReader, AcceptsFractionalAndInfiniteTimesOfTheFile) {
    EXPECT_EQ(unixSeconds(read(fileWith(oneWindow, "1", R"("claude")", "1.5"))->updatedAt), 1.5);
    EXPECT_TRUE(
        std::isinf(unixSeconds(read(fileWith(oneWindow, "1", R"("claude")", "1e999"))->updatedAt)));
}

TEST(SubscriptionLimits, IdIsProviderHyphenAccount) {
    SubscriptionLimits limits;
    limits.account = "abc123";
    EXPECT_EQ(limits.id(), "claude-abc123");
    limits.provider = Provider::codex;
    EXPECT_EQ(limits.id(), "codex-abc123");
}

TEST(SubscriptionLimits, ProvidersHaveRawStringsAndDisplayNames) {
    EXPECT_EQ(rawString(Provider::claude), "claude");
    EXPECT_EQ(rawString(Provider::codex), "codex");
    EXPECT_EQ(displayName(Provider::claude), "Claude");
    EXPECT_EQ(displayName(Provider::codex), "Codex");
}

TEST(SubscriptionLimits, SortsByProviderThenByAccountAsBytes) {
    std::vector<SubscriptionLimits> records(5);
    records[0].provider = Provider::codex;
    records[0].account = "a";
    records[1].account = "한글";
    records[2].account = "b";
    records[3].account = "B";
    records[4].account = "a-1";
    std::sort(records.begin(), records.end(), precedes);
    std::vector<std::string> ids;
    for (const SubscriptionLimits& record : records)
        ids.push_back(record.id());
    EXPECT_EQ(ids, (std::vector<std::string>{"claude-B", "claude-a-1", "claude-b", "claude-한글",
                                             "codex-a"}));
}

}  // namespace
}  // namespace brimwatch
