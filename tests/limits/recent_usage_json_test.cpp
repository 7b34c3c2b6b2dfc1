#include "limits/recent_usage_json.h"

#include <gtest/gtest.h>

#include "support/json_reader.h"
#include "support/json_writer.h"
#include "usage_examples.h"

namespace brimwatch {
namespace {

std::optional<UsageWindow> readWindow(const std::string& text,
                                      JsonEpoch epoch = JsonEpoch::year1970) {
    return decodeWindow(parseJsonObject(text).value(), epoch);
}

std::optional<RecentUsageSample> readSample(const std::string& text,
                                            JsonEpoch epoch = JsonEpoch::year1970) {
    return decodeSample(parseJsonObject(text).value(), epoch);
}

RecentUsageSample exampleSample() {
    return {.updatedAt = instantFromUnixSeconds(978'307'200.5),
            .fiveHour = UsageWindow{41.3, instantFromUnixSeconds(978'310'800)},
            .sevenDay = UsageWindow{7, std::nullopt},
            .planTier = "Max 20배",
            .fiveHourReset = true,
            .sevenDayReset = false};
}

TEST(UsageJson, CountsTimesFrom1970OrFrom2001) {
    EXPECT_EQ(writeJson(encodeSample(exampleSample(), JsonEpoch::year2001), JsonLayout::compact),
              R"({"fiveHour":{"resetsAt":3600,"usedPercentage":41.3},"fiveHourReset":true,)"
              R"("planTier":"Max 20배","sevenDay":{"usedPercentage":7},"sevenDayReset":false,)"
              R"("updatedAt":0.5})");
    const JsonObject since1970 = encodeSample(exampleSample(), JsonEpoch::year1970);
    EXPECT_EQ(since1970.find("updatedAt")->number()->spelling, "978307200.5");
    EXPECT_EQ(since1970.find("fiveHour")->member("resetsAt")->number()->toDouble(), 978'310'800);
}

TEST(UsageJson, ReadsBackWhatItWrote) {
    for (const JsonEpoch epoch : {JsonEpoch::year1970, JsonEpoch::year2001}) {
        EXPECT_EQ(decodeSample(encodeSample(exampleSample(), epoch), epoch), exampleSample());
        EXPECT_EQ(decodeWindow(encodeWindow({12.5, test::now}, epoch), epoch),
                  (UsageWindow{12.5, test::now}));
    }
}

TEST(UsageJson, WhatIsAbsentIsLeftOutAndReadsAsAbsentAlsoWhereItIsNull) {
    RecentUsageSample sample;
    sample.updatedAt = instantFromUnixSeconds(5);
    EXPECT_EQ(writeJson(encodeSample(sample, JsonEpoch::year1970), JsonLayout::compact),
              R"({"fiveHourReset":false,"sevenDayReset":false,"updatedAt":5})");
    EXPECT_EQ(readSample(R"({"fiveHourReset":false,"sevenDayReset":false,"updatedAt":5,)"
                         R"("fiveHour":null,"sevenDay":null,"planTier":null})"),
              sample);
    EXPECT_EQ(readWindow(R"({"usedPercentage":1,"resetsAt":null})"),
              (UsageWindow{1, std::nullopt}));
}

TEST(UsageJson, ASampleNeedsEveryRequiredKeyWithItsType) {
    const std::string rest = R"("sevenDayReset":false,"x":[])";
    EXPECT_TRUE(readSample(R"({"updatedAt":5,"fiveHourReset":false,)" + rest + "}"));
    for (const char* members : {
             R"("fiveHourReset":false)",
             R"("updatedAt":5)",
             R"("updatedAt":"5","fiveHourReset":false)",
             R"("updatedAt":null,"fiveHourReset":false)",
             R"("updatedAt":1e999,"fiveHourReset":false)",
             R"("updatedAt":5,"fiveHourReset":0)",
             R"("updatedAt":5,"fiveHourReset":null)",
             R"("updatedAt":5,"fiveHourReset":false,"planTier":7)",
             R"("updatedAt":5,"fiveHourReset":false,"fiveHour":7)",
             R"("updatedAt":5,"fiveHourReset":false,"sevenDay":[])",
             R"("updatedAt":5,"fiveHourReset":false,"sevenDay":{})",
         }) {
        EXPECT_FALSE(readSample("{" + std::string(members) + "," + rest + "}")) << members;
    }
}

TEST(UsageJson, AWindowNeedsAFiniteFigureAndAFiniteTimeOrNone) {
    EXPECT_TRUE(readWindow(R"({"usedPercentage":1e99,"resetsAt":-5.5,"x":1})"));
    for (const char* text :
         {"{}", R"({"usedPercentage":null})", R"({"usedPercentage":"1"})",
          R"({"usedPercentage":1e999})", R"({"usedPercentage":1,"resetsAt":"1"})",
          R"({"usedPercentage":1,"resetsAt":-1e999})", R"({"resetsAt":1})"}) {
        EXPECT_FALSE(readWindow(text)) << text;
    }
}

TEST(UsageJson, TimesOfOurDaysSurviveBothEpochsToTheBit) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 50'000; ++round) {
        const double seconds =
            static_cast<double>(random.between(1'000'000'000, 4'000'000'000)) +
            static_cast<double>(random.below(1U << 30U)) / static_cast<double>(1U << 30U);
        const UsageWindow window{1, instantFromUnixSeconds(seconds)};
        for (const JsonEpoch epoch : {JsonEpoch::year1970, JsonEpoch::year2001}) {
            ASSERT_EQ(decodeWindow(encodeWindow(window, epoch), epoch), window);
        }
    }
}

}  // namespace
}  // namespace brimwatch
