// Whole replies: those that a real server wrote, and random ones.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "codex/codex_poller.h"
#include "harness/random.h"
#include "harness/temporary_folder.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

using Reading = CodexPoller::Reading;
using Windows = LimitsFile::Windows;

// Of a reply as the server wrote it.
Reading readingOf(const JsonValue& reply) {
    const JsonValue* result = reply.member("result");
    if (result == nullptr || result->object() == nullptr) return {};
    return Reading::fromResult(*result->object());
}

Reading readingOfSample(const std::string& name) {
    return readingOf(parseJson(test::testData("codex-" + name + ".reply.json")).value());
}

const JsonValue* replyInRecord(const JsonValue& record) {
    if (*record.member("dir") != JsonValue("server")) return nullptr;
    const JsonValue* line = record.member("line");
    const JsonValue* id = line->member("id");
    return id != nullptr && *id == JsonValue(JsonNumber::fromInteger(2)) ? line : nullptr;
}

// The reply with `id` 2 in a recorded conversation, one record a line.
JsonValue replyInConversation(const std::string& name) {
    const std::string records = test::testData("codex-" + name + ".jsonl");
    std::string_view rest = records;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        const JsonValue record = parseJson(line).value();
        if (const JsonValue* reply = replyInRecord(record)) return *reply;
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    ADD_FAILURE() << "no reply in " << name;
    return nullptr;
}

Reading expected(Windows windows, const char* plan) {
    return {.windows = std::move(windows), .credits = CodexCredits{}, .planType = plan};
}

TEST(CodexReadingOfARealReply, HoldsBothWindows) {
    EXPECT_EQ(readingOfSample("plus-both"),
              expected({{"five_hour", {37, 1795242568}}, {"seven_day", {62, 1795533568}}}, "plus"));
}

TEST(CodexReadingOfARealReply, IsTheSameOutOfTheConversation) {
    EXPECT_EQ(readingOf(replyInConversation("plus-both")), readingOfSample("plus-both"));
}

TEST(CodexReadingOfARealReply, LeavesOutTheLimitsOfOtherFeatures) {
    EXPECT_EQ(readingOfSample("additional-limits"),
              expected({{"five_hour", {37, 1795242653}}, {"seven_day", {62, 1795533653}}}, "pro"));
}

TEST(CodexReadingOfARealReply, HoldsTheBalanceToTheLastDigit) {
    Reading reading =
        expected({{"five_hour", {37, 1795242584}}, {"seven_day", {62, 1795533584}}}, "pro");
    reading.credits = CodexCredits{
        .hasCredits = true, .unlimited = false, .balance = Decimal::fromDigits("12.349")};
    EXPECT_EQ(readingOfSample("credits-balance"), reading);
}

TEST(CodexReadingOfARealReply, HoldsUnlimitedCredits) {
    Reading reading =
        expected({{"five_hour", {37, 1795242594}}, {"seven_day", {62, 1795533594}}}, "enterprise");
    reading.credits = CodexCredits{.hasCredits = true, .unlimited = true, .balance = std::nullopt};
    EXPECT_EQ(readingOfSample("credits-unlimited"), reading);
}

TEST(CodexReadingOfARealReply, HoldsNoWindowWithoutLimits) {
    EXPECT_EQ(readingOfSample("no-rate-limit"), expected({}, "free"));
}

TEST(CodexReadingOfARealReply, HoldsAHundredPercentWhereTheServerSaysMore) {
    EXPECT_EQ(
        readingOfSample("over-100"),
        expected({{"five_hour", {100, 1795234815}}, {"seven_day", {62, 1795533615}}}, "plus"));
}

TEST(CodexReadingOfARealReply, HoldsAPlanThatTheServerDoesNotKnow) {
    EXPECT_EQ(
        readingOfSample("unknown-plan"),
        expected({{"five_hour", {37, 1795242665}}, {"seven_day", {62, 1795533665}}}, "unknown"));
}

TEST(CodexReadingOfARealReply, HoldsTheWeeklyWindowAloneWhereverItStands) {
    EXPECT_EQ(readingOfSample("weekly-only-primary"),
              expected({{"seven_day", {12, 1795733573}}}, "plus"));
    EXPECT_EQ(readingOfSample("weekly-only-secondary"),
              expected({{"seven_day", {62, 1795533578}}}, "plus"));
}

TEST(CodexReadingOfARealReply, IsEmptyForAnError) {
    EXPECT_EQ(readingOfSample("http-401"), Reading());
    EXPECT_EQ(readingOf(replyInConversation("not-logged-in")), Reading());
}

// Results of the real form in which any value may be another one than it should.
class RandomReply {
  public:
    explicit RandomReply(test::Random& random) : random_(random) {}

    JsonObject result() {
        JsonObject result;
        if (random_.oneIn(2)) {
            result.set("rateLimitsByLimitId", mostly(JsonObject({{"codex", mostly(block())}})));
        }
        result.set("rateLimits", mostly(block()));
        return result;
    }

  private:
    JsonObject block() {
        return JsonObject({{"primary", mostly(window())},
                           {"secondary", mostly(window())},
                           {"credits", mostly(credits())},
                           {"planType", mostly("plus")}});
    }
    JsonObject window() {
        return JsonObject({{"usedPercent", mostly(number())},
                           {"windowDurationMins", mostly(minutes())},
                           {"resetsAt", mostly(number())}});
    }
    JsonObject credits() {
        return JsonObject({{"hasCredits", mostly(random_.oneIn(2))},
                           {"unlimited", mostly(random_.oneIn(2))},
                           {"balance", mostly(balance())}});
    }
    std::string balance() {
        static const std::vector<std::string> balances = {"12.349", " 0.00\t", "-1", "1e3", ""};
        return balances[random_.below(balances.size())];
    }
    JsonValue mostly(JsonValue value) {
        static const std::vector<JsonValue> others = {
            nullptr, true, "x", JsonArray{nullptr}, JsonObject(), JsonNumber{"7"}};
        return random_.oneIn(10) ? others[random_.below(others.size())] : std::move(value);
    }
    JsonNumber minutes() { return pick({"300", "10080", "300.5", "1.008e4", "60", "1e400"}); }
    // Within 64 bits: beyond them a reset time ends the process.
    JsonNumber number() {
        if (random_.oneIn(2)) return JsonNumber::fromInteger(random_.between(-5, 120));
        if (random_.oneIn(2)) return pick({"-0", "0.004", "33.333", "100.4", "1e-400", "-1e18"});
        return JsonNumber::fromInteger(static_cast<std::int64_t>(random_.bits()));
    }
    JsonNumber pick(const std::vector<std::string>& spellings) {
        return {spellings[random_.below(spellings.size())]};
    }

    test::Random& random_;
};

TEST(CodexReading, HoldsOnlyWindowsThatCanBeShownOverRandomReplies) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    std::size_t windowsSeen = 0;
    for (int round = 0; round < 30'000; ++round) {
        const Reading reading = Reading::fromResult(RandomReply(random).result());
        for (const auto& [key, window] : reading.windows) {
            ASSERT_TRUE(key == "five_hour" || key == "seven_day") << key;
            ASSERT_GE(window.usedPercentage, 0);
            ASSERT_LE(window.usedPercentage, 100);
            ++windowsSeen;
        }
    }
    EXPECT_GT(windowsSeen, 5000U);
}

}  // namespace
}  // namespace brimwatch
