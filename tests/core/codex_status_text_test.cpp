#include "core/codex_status_text.h"

#include <gtest/gtest.h>

#include "harness/time_zone.h"

namespace brimwatch {
namespace {

using Failure = CodexPoller::Failure;
using Kind = Failure::Kind;

// 2026-09-21 06:04:00 UTC
const Instant afternoon = instantFromUnixSeconds(1'789'970'640);

TEST(CodexStatusText, AReadingIsToldByItsTimeOfDay) {
    const test::TimeZone zone("Asia/Seoul");
    EXPECT_EQ(codexReceivedText(afternoon, "ko_KR"), "오후 3:04에 받음");
    EXPECT_EQ(codexReceivedText(afternoon, "de_DE.UTF-8"), "15:04에 받음");
}

TEST(CodexStatusText, AnAnswerWithoutLimitsAsksForTheLogin) {
    EXPECT_EQ(codexFailureText(Failure{Kind::noLimits, ""}),
              "한도가 없어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.");
}

TEST(CodexStatusText, AFailureOfTheServerAsksForTheLoginAndHidesTheMessage) {
    EXPECT_EQ(codexFailureText(Failure{Kind::server, "secret"}),
              "조회하지 못했어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.");
}

TEST(CodexStatusText, EveryOtherFailureIsSilence) {
    const std::string_view silence = "codex가 답하지 않았어요";
    EXPECT_EQ(codexFailureText(Failure{Kind::notFound, ""}), silence);
    EXPECT_EQ(codexFailureText(Failure{Kind::timedOut, ""}), silence);
    EXPECT_EQ(codexFailureText(std::make_error_code(std::errc::no_such_file_or_directory)),
              silence);
    EXPECT_EQ(codexFailureText(std::error_code()), silence);
}

TEST(CodexStatusText, AMissingExecutableIsToldForCodexAsAWhole) {
    EXPECT_EQ(codexNotFoundText, "codex를 못 찾았어요. ChatGPT 앱이나 codex CLI를 설치해 주세요.");
}

}  // namespace
}  // namespace brimwatch
