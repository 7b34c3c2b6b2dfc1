#include "updates/update_texts.h"

#include <gmock/gmock.h>

#include <set>

namespace brimwatch {
namespace {

using Phase = UpdateStatus::Phase;

std::string textOf(Phase phase) {
    return updateStatusText(
        {.phase = phase, .displayVersion = "1.4.2", .downloadedFraction = 0.57});
}

TEST(UpdateTexts, TellEachStatus) {
    EXPECT_EQ(textOf(Phase::idle), "");
    EXPECT_EQ(textOf(Phase::checking), "업데이트를 확인하고 있어요.");
    EXPECT_EQ(textOf(Phase::upToDate), "최신 버전이에요.");
    EXPECT_EQ(textOf(Phase::found), "새 버전 1.4.2 설치할 수 있어요.");
    EXPECT_EQ(textOf(Phase::downloading), "새 버전 1.4.2 받는 중 57%");
    EXPECT_EQ(textOf(Phase::preparing), "새 버전 1.4.2 확인하는 중");
    EXPECT_EQ(textOf(Phase::ready), "새 버전 1.4.2 준비됐어요. 앱을 끄거나 다시 켜면 바뀌어요.");
    EXPECT_EQ(textOf(Phase::installing), "새 버전 1.4.2 설치하고 다시 켜는 중");
    EXPECT_EQ(updateStatusText(
                  {.phase = Phase::found, .displayVersion = "1.4.2", .isInformational = true}),
              "새 버전 1.4.2 소식이 있어요.");
}

TEST(UpdateTexts, TellEachFailureInItsOwnWords) {
    std::set<std::string> texts;
    for (const UpdateFailure failure :
         {UpdateFailure::network, UpdateFailure::feed, UpdateFailure::refused,
          UpdateFailure::download, UpdateFailure::signature, UpdateFailure::archive,
          UpdateFailure::disk, UpdateFailure::relaunch}) {
        const std::string text = updateStatusText({.phase = Phase::failed, .failure = failure});
        EXPECT_THAT(text, ::testing::EndsWith("요."));
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 8U);
}

TEST(UpdateTexts, TellARefusalInTheWordsOfWhoRefused) {
    EXPECT_EQ(updateStatusText(
                  {.phase = Phase::failed, .failure = UpdateFailure::refused, .refusal = "No."}),
              "No.");
}

TEST(UpdateTexts, TellWhyThereAreNone) {
    EXPECT_EQ(updateUnavailabilityText(UpdateUnavailability::managedElsewhere),
              "이 설치는 시스템의 패키지 관리자가 업데이트해요.");
    const std::string_view build = "이 빌드에는 업데이트 설정이 없어 업데이트하지 않아요.";
    EXPECT_EQ(updateUnavailabilityText(UpdateUnavailability::noFeed), build);
    EXPECT_EQ(updateUnavailabilityText(UpdateUnavailability::noSigningKey), build);
}

}  // namespace
}  // namespace brimwatch
