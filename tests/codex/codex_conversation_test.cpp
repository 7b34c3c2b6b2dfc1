#include "codex/codex_conversation.h"

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

#include "harness/random.h"
#include "harness/temporary_folder.h"
#include "support/json_reader.h"
#include "support/json_writer.h"

namespace brimwatch {
namespace {

using Failure = CodexPoller::Failure;

constexpr std::size_t eightMegabytes = std::size_t{8} << 20U;
constexpr const char* greeting =
    R"({"id":1,"method":"initialize","params":{"clientInfo":{"name":"brimwatch","title":"Brimwatch?","version":"1.0"}}})"
    "\n";
constexpr const char* question =
    R"({"method":"initialized"})"
    "\n"
    R"({"id":2,"method":"account/rateLimits/read","params":{"excludeResetCreditDetails":true}})"
    "\n";
constexpr const char* greeted = "{\"id\":1,\"result\":{}}\n";
constexpr const char* answer =
    R"({"id":2,"result":{"rateLimits":{"primary":{"usedPercent":37,"windowDurationMins":300}}}})"
    "\n";

Failure failureOf(const CodexConversation& conversation) {
    EXPECT_TRUE(conversation.outcome() && !conversation.outcome()->has_value());
    return conversation.outcome() && !conversation.outcome()->has_value()
               ? conversation.outcome()->error()
               : Failure{Failure::Kind::notFound, "(no failure)"};
}

Failure failureAfter(std::string_view output) {
    CodexConversation conversation;
    static_cast<void>(conversation.receive(output));
    return failureOf(conversation);
}

bool isReading(const CodexConversation& conversation) {
    return conversation.outcome() && conversation.outcome()->has_value();
}

TEST(CodexConversation, GreetsFirst) {
    EXPECT_EQ(CodexConversation::greeting(), greeting);
}

TEST(CodexConversation, AsksBackToBackOnceItIsGreeted) {
    CodexConversation conversation;
    EXPECT_EQ(conversation.receive(greeted), question);
    EXPECT_FALSE(conversation.outcome());
}

TEST(CodexConversation, EndsWithTheReading) {
    CodexConversation conversation;
    static_cast<void>(conversation.receive(greeted));
    EXPECT_EQ(conversation.receive(answer), "");
    ASSERT_TRUE(isReading(conversation));
    EXPECT_EQ((*conversation.outcome())->windows,
              (LimitsFile::Windows{{"five_hour", {37, std::nullopt}}}));
}

TEST(CodexConversation, PassesOverLogLinesAndNotifications) {
    CodexConversation conversation;
    const std::string before =
        "\nlog line\n[]\n7\n{}\n{\"id\":null}\n"
        R"({"method":"note","params":{},"error":{"message":"not an answer"}})"
        "\n\xFF\n";
    EXPECT_EQ(conversation.receive(before + greeted), question);
    EXPECT_EQ(conversation.receive(before + answer), "");
    EXPECT_TRUE(isReading(conversation));
}

TEST(CodexConversation, AsksOnlyOnceHoweverOftenItIsGreeted) {
    CodexConversation conversation;
    EXPECT_EQ(conversation.receive(std::string(greeted) + greeted), question);
    EXPECT_EQ(conversation.receive(greeted), "");
}

TEST(CodexConversation, AnErrorInTheAnswerIsAFailureOfTheServer) {
    EXPECT_EQ(failureAfter(R"({"id":2,"error":{"code":-32600,"message":"log in"}})"
                           "\n"),
              (Failure{Failure::Kind::server, "log in"}));
    EXPECT_EQ(failureAfter(R"({"id":2,"error":{"message":"x"},"result":{"rateLimits":{}}})"
                           "\n"),
              (Failure{Failure::Kind::server, "x"}));
}

TEST(CodexConversation, AnErrorUnderAnyIdIsAFailureOfTheServer) {
    for (const char* id : {"1", "7", "-1", "0"}) {
        EXPECT_EQ(failureAfter("{\"error\":{\"message\":\"x\"},\"id\":" + std::string(id) + "}\n"),
                  (Failure{Failure::Kind::server, "x"}));
    }
}

TEST(CodexConversation, AnErrorWithoutATextHasOneOfOurs) {
    for (const char* message : {"{}", R"({"message":7})", R"({"message":null})"}) {
        EXPECT_EQ(failureAfter("{\"id\":2,\"error\":" + std::string(message) + "}\n"),
                  (Failure{Failure::Kind::server, "codex app-server 오류"}));
    }
}

TEST(CodexConversation, AnErrorThatIsNoObjectIsNone) {
    CodexConversation conversation;
    EXPECT_EQ(conversation.receive("{\"id\":1,\"error\":null}\n"), question);
    static_cast<void>(conversation.receive(
        R"({"id":2,"error":"x","result":{"rateLimits":{"primary":{"usedPercent":1,"windowDurationMins":300}}}})"
        "\n"));
    EXPECT_TRUE(isReading(conversation));
}

TEST(CodexConversation, AnIdThatIsNoIntegerIsPassedOver) {
    for (const char* id : {"1.5", "\"1\"", "true", "[1]", "1e99"}) {
        CodexConversation conversation;
        EXPECT_EQ(conversation.receive("{\"id\":" + std::string(id) + ",\"error\":{}}\n"), "");
        EXPECT_FALSE(conversation.outcome()) << id;
    }
}

TEST(CodexConversation, AnotherIdIsPassedOver) {
    CodexConversation conversation;
    EXPECT_EQ(conversation.receive("{\"id\":3,\"result\":{}}\n"), "");
    EXPECT_FALSE(conversation.outcome());
}

TEST(CodexConversation, AnAnswerWithoutAWindowMeansNoLimits) {
    for (
        const char* result :
        {"", ",\"result\":null", ",\"result\":[]", ",\"result\":{}",
         R"(,"result":{"rateLimits":{"planType":"plus","credits":{"unlimited":true},"primary":null}})",
         R"(,"result":{"rateLimits":{"primary":{"usedPercent":1,"windowDurationMins":60}}})"}) {
        EXPECT_EQ(failureAfter("{\"id\":2" + std::string(result) + "}\n"),
                  (Failure{Failure::Kind::noLimits, ""}));
    }
}

TEST(CodexConversation, TheEndOfTheOutputIsAFailureOfTheServer) {
    CodexConversation conversation;
    static_cast<void>(conversation.receive(greeted));
    conversation.receiveEnd();
    EXPECT_EQ(failureOf(conversation),
              (Failure{Failure::Kind::server, "codex app-server가 끝났어요"}));
}

TEST(CodexConversation, ALastLineWithoutALineFeedCounts) {
    CodexConversation conversation;
    static_cast<void>(conversation.receive(greeted));
    static_cast<void>(conversation.receive(
        std::string_view(answer).substr(0, std::string_view(answer).size() - 1)));
    EXPECT_FALSE(conversation.outcome());
    conversation.receiveEnd();
    EXPECT_TRUE(isReading(conversation));
}

TEST(CodexConversation, TheOutcomeStays) {
    CodexConversation conversation;
    static_cast<void>(conversation.receive(answer));
    EXPECT_EQ(conversation.receive("{\"id\":2,\"error\":{}}\n"), "");
    conversation.receiveEnd();
    EXPECT_TRUE(isReading(conversation));
}

TEST(CodexConversation, ALineWithoutEndIsBounded) {
    CodexConversation conversation;
    const std::string piece(1U << 20U, 'x');
    for (std::size_t taken = 0; taken < eightMegabytes; taken += piece.size()) {
        static_cast<void>(conversation.receive(piece));
        EXPECT_FALSE(conversation.outcome());
    }
    static_cast<void>(conversation.receive("x"));
    EXPECT_EQ(failureOf(conversation), (Failure{Failure::Kind::server, "codex app-server 오류"}));
}

TEST(CodexConversation, AnAnswerIsTakenUpToTheBoundAndNotBeyond) {
    std::string longest(answer);
    longest.insert(longest.size() - 1, eightMegabytes - (longest.size() - 1), ' ');
    CodexConversation conversation;
    static_cast<void>(conversation.receive(longest));
    EXPECT_TRUE(isReading(conversation));
    longest.insert(longest.size() - 1, 1, ' ');
    EXPECT_EQ(failureAfter(longest), (Failure{Failure::Kind::server, "codex app-server 오류"}));
}

TEST(CodexConversation, ManyShortLinesAreNoLongLine) {
    CodexConversation conversation;
    std::string lines;
    for (int count = 0; count < 1000; ++count)
        lines += std::string(10'000, 'x') + '\n';
    static_cast<void>(conversation.receive(lines));
    EXPECT_FALSE(conversation.outcome());
    EXPECT_EQ(conversation.receive(greeted), question);
}

TEST(CodexConversationDeathTest, AResetTimeBeyondSixtyFourBitsAborts) {
    EXPECT_EXIT(
        failureAfter(
            R"({"id":2,"result":{"rateLimits":{"primary":{"usedPercent":1,"windowDurationMins":300,"resetsAt":1e19}}}})"
            "\n"),
        ::testing::KilledBySignal(SIGABRT), "");
}

struct CapturedConversation {
    std::vector<JsonValue> client;
    std::string server;
};

CapturedConversation captured(const char* name) {
    CapturedConversation conversation;
    std::string text = test::testData(name);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::optional<JsonObject> record = parseJsonObject(text.substr(0, end));
        EXPECT_TRUE(record);
        const JsonValue& line = *record->find("line");
        if (*record->find("dir") == JsonValue("client")) {
            conversation.client.push_back(line);
        } else {
            conversation.server += writeJson(line, JsonLayout::compact) + '\n';
        }
        text.erase(0, end + 1);
    }
    return conversation;
}

std::vector<JsonValue> messagesIn(std::string text) {
    std::vector<JsonValue> messages;
    while (!text.empty()) {
        const std::size_t end = text.find('\n');
        const std::optional<JsonValue> message = parseJson(text.substr(0, end));
        EXPECT_TRUE(message);
        messages.push_back(*message);
        text.erase(0, end + 1);
    }
    return messages;
}

// In pieces of any size, as a pipe gives them.
TEST(CodexConversation, HoldsTheCapturedConversations) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (const char* name : {"codex-plus-both.jsonl", "codex-not-logged-in.jsonl"}) {
        const CapturedConversation expected = captured(name);
        for (int round = 0; round < 200; ++round) {
            CodexConversation conversation;
            std::string sent = CodexConversation::greeting();
            std::string_view rest = expected.server;
            while (!rest.empty()) {
                const std::size_t size = std::min(random.below(400) + 1, rest.size());
                sent += conversation.receive(rest.substr(0, size));
                rest.remove_prefix(size);
            }
            ASSERT_EQ(messagesIn(sent), expected.client) << name;
            ASSERT_TRUE(conversation.outcome()) << name;
        }
    }
}

TEST(CodexConversation, TellsTheCapturedReadingFromTheCapturedRefusal) {
    CodexConversation plus;
    static_cast<void>(plus.receive(captured("codex-plus-both.jsonl").server));
    ASSERT_TRUE(isReading(plus));
    EXPECT_EQ((*plus.outcome())->windows.size(), 2U);
    EXPECT_EQ((*plus.outcome())->planType, "plus");
    EXPECT_EQ(failureAfter(captured("codex-not-logged-in.jsonl").server),
              (Failure{Failure::Kind::server,
                       "codex account authentication required to read rate limits"}));
}

}  // namespace
}  // namespace brimwatch
