#include "limits/limits_file.h"

#include <gtest/gtest.h>

#include "harness/random.h"
#include "limits/subscription_limits.h"

namespace brimwatch {
namespace {

constexpr const char* plainFile =
    R"({"version":1,"provider":"claude","account":"a","windows":{},"updated_at":5})";

LimitsFile exampleFile() {
    return {.version = 1,
            .provider = "claude",
            .account = "work",
            .windows = {{"seven_day", {62.5, 1790535089}}, {"five_hour", {41.3, std::nullopt}}},
            .updatedAt = 1790000000,
            .planTier = "Max 20배"};
}

std::string withMember(const std::string& key, const std::string& value) {
    const std::string members[][2] = {{"version", "1"},     {"provider", "\"claude\""},
                                      {"account", "\"a\""}, {"windows", "{}"},
                                      {"updated_at", "5"},  {"plan_tier", "\"Pro\""}};
    std::string text;
    for (const auto& [name, usual] : members) {
        const std::string& chosen = name == key ? value : usual;
        if (chosen.empty()) continue;
        text += (text.empty() ? "{\"" : ",\"") + name + "\":" + chosen;
    }
    return text + "}";
}

TEST(LimitsFile, IsPrettyPrintedWithSortedKeys) {
    EXPECT_EQ(exampleFile().encode(),
              "{\n"
              "  \"account\": \"work\",\n"
              "  \"plan_tier\": \"Max 20배\",\n"
              "  \"provider\": \"claude\",\n"
              "  \"updated_at\": 1790000000,\n"
              "  \"version\": 1,\n"
              "  \"windows\": {\n"
              "    \"five_hour\": {\n"
              "      \"used_percentage\": 41.3\n"
              "    },\n"
              "    \"seven_day\": {\n"
              "      \"resets_at\": 1790535089,\n"
              "      \"used_percentage\": 62.5\n"
              "    }\n"
              "  }\n"
              "}");
}

TEST(LimitsFile, LeavesOutThePlanWhereThereIsNone) {
    LimitsFile file = exampleFile();
    file.planTier.reset();
    EXPECT_EQ(file.encode().find("plan_tier"), std::string::npos);
    EXPECT_EQ(LimitsFile::decode(file.encode()), file);
}

TEST(LimitsFile, DecodesWhatItEncodes) {
    EXPECT_EQ(LimitsFile::decode(exampleFile().encode()), exampleFile());
}

TEST(LimitsFile, DecodesAnyOrderAndAnyWhiteSpaceAndIgnoresUnknownKeys) {
    const auto file = LimitsFile::decode(
        "\n{ \"x\":[1], \"updated_at\" : "
        "5,\t\"windows\":{\"five_hour\":{\"y\":{},\"used_percentage\":1}},"
        "\"account\":\"a\",\"provider\":\"other\",\"version\":7 }\n");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->version, 7);
    EXPECT_EQ(file->provider, "other");
    EXPECT_EQ(file->windows, (LimitsFile::Windows{{"five_hour", {1, std::nullopt}}}));
}

TEST(LimitsFile, NeedsEveryRequiredKeyWithItsType) {
    EXPECT_TRUE(LimitsFile::decode(withMember("", "")));
    EXPECT_TRUE(LimitsFile::decode(withMember("plan_tier", "")));
    EXPECT_TRUE(LimitsFile::decode(withMember("plan_tier", "null")));
    for (const char* key : {"version", "provider", "account", "windows", "updated_at"}) {
        for (const char* value : {"", "null", "true", "[]", "1.5"}) {
            EXPECT_FALSE(LimitsFile::decode(withMember(key, value))) << key << ' ' << value;
        }
    }
    EXPECT_FALSE(LimitsFile::decode(withMember("plan_tier", "1")));
    EXPECT_FALSE(LimitsFile::decode(withMember("version", "\"1\"")));
}

TEST(LimitsFile, AFractionalTimeIsNotDecodedThoughTheReaderTakesIt) {
    const std::string fractionalUpdate =
        R"({"version":1,"provider":"claude","account":"a","windows":{"five_hour":{"used_percentage":1}},"updated_at":5.5})";
    const std::string fractionalReset =
        R"({"version":1,"provider":"claude","account":"a","windows":{"five_hour":{"used_percentage":1,"resets_at":7.5}},"updated_at":5})";
    for (const std::string& text : {fractionalUpdate, fractionalReset}) {
        EXPECT_FALSE(LimitsFile::decode(text));
        EXPECT_TRUE(SubscriptionLimits::fromFileData(text));
    }
}

TEST(LimitsFile, AWholeNumberIsWholeHoweverItIsSpelled) {
    EXPECT_EQ(LimitsFile::decode(withMember("updated_at", "5.0"))->updatedAt, 5);
    EXPECT_EQ(LimitsFile::decode(withMember("updated_at", "5e3"))->updatedAt, 5000);
    EXPECT_FALSE(LimitsFile::decode(withMember("updated_at", "9223372036854775808")));
}

TEST(LimitsFile, AFigureThatIsNotFiniteIsNotDecoded) {
    EXPECT_FALSE(LimitsFile::decode(withMember("windows", R"({"x":{"used_percentage":1e999}})")));
    EXPECT_TRUE(LimitsFile::decode(withMember("windows", R"({"x":{"used_percentage":1e99}})")));
}

TEST(LimitsFile, EmptyWindowsAreDecodedAndRejectedByTheReader) {
    EXPECT_TRUE(LimitsFile::decode(plainFile));
    EXPECT_FALSE(SubscriptionLimits::fromFileData(plainFile));
}

TEST(LimitsFile, AnEmptyOrCutFileIsNoFile) {
    const std::string whole = exampleFile().encode();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        ASSERT_FALSE(LimitsFile::decode(whole.substr(0, length))) << length;
    }
}

TEST(LimitsFile, RandomFilesSurviveARoundTrip) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 10'000; ++round) {
        LimitsFile file = exampleFile();
        file.updatedAt = static_cast<std::int64_t>(random.bits());
        file.account = "한\"\\\n" + std::to_string(random.bits());
        for (std::size_t count = random.below(4); count > 0; --count) {
            LimitsFile::Window window{static_cast<double>(random.bits()) / 1e17, std::nullopt};
            if (random.oneIn(2)) window.resetsAt = static_cast<std::int64_t>(random.bits());
            file.windows[std::to_string(random.below(10))] = window;
        }
        ASSERT_EQ(LimitsFile::decode(file.encode()), file);
    }
}

}  // namespace
}  // namespace brimwatch
