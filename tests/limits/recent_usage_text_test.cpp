#include "limits/recent_usage_text.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

namespace brimwatch {
namespace {

using Status = RecentUsageResult::Status;

RecentUsageResult available(std::optional<double> percentagePoints,
                            std::string_view basisName = "주간") {
    return {.status = Status::available,
            .percentagePoints = percentagePoints,
            .basisName = basisName,
            .updatedAt = std::nullopt};
}

TEST(RecentUsageText, TellsTheBasisAndTheFigureWithOneDecimal) {
    EXPECT_EQ(text(available(12.34), "ko_KR"), "주간 약 12.3%");
    EXPECT_EQ(text(available(12, "5시간"), "ko_KR"), "5시간 약 12.0%");
    EXPECT_EQ(text(available(100), "ko"), "주간 약 100.0%");
}

TEST(RecentUsageText, NothingSpentIsAFigureWithoutASign) {
    EXPECT_EQ(text(available(0), "ko_KR"), "주간 약 0.0%");
    EXPECT_EQ(text(available(-0.0), "ko_KR"), "주간 약 0.0%");
    EXPECT_EQ(text(available(0.04), "ko_KR"), "주간 약 0.0%");
    EXPECT_EQ(text(available(0.06), "ko_KR"), "주간 약 0.1%");
}

TEST(RecentUsageText, TheFigureIsWrittenAsTheLocaleWritesIt) {
    EXPECT_EQ(text(available(12.34), "de_DE"), "주간 약 12,3%");
    EXPECT_EQ(text(available(12.34), "de-DE"), "주간 약 12,3%");
    EXPECT_EQ(text(available(12.34), "de_DE.UTF-8"), "주간 약 12,3%");
    EXPECT_EQ(text(available(12.34), "ar_EG"), "주간 약 ١٢٫٣%");
}

TEST(RecentUsageText, ALocaleThatNobodyKnowsStillGivesAFigure) {
    const icu::Locale former;
    for (const char* ofProcess : {"en_US", "de_DE", "ar_EG"}) {
        UErrorCode error = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(ofProcess), error);
        for (const char* locale : {"", "C", "POSIX", "xx_XX", "not a locale", "\xFF\xFE"}) {
            EXPECT_EQ(text(available(12.34), locale), "주간 약 12.3%") << ofProcess << locale;
        }
        icu::Locale::setDefault(former, error);
    }
    EXPECT_EQ(text(available(12.34), std::string(100'000, 'x')), "주간 약 12.3%");
}

TEST(RecentUsageText, AStateWithoutAFigureHasItsOwnText) {
    const auto textOf = [](Status status) {
        RecentUsageResult result = available(std::nullopt);
        result.status = status;
        return text(result, "ko_KR");
    };
    EXPECT_EQ(textOf(Status::collecting), "기록 모으는 중");
    EXPECT_EQ(textOf(Status::stale), "새 기록 대기");
    EXPECT_EQ(textOf(Status::reset), "초기화 후 기록 중");
    EXPECT_EQ(textOf(Status::unavailable), "사용 기록 없음");
}

TEST(RecentUsageText, AnAvailableResultWithoutANumberReadsLikeOneBeingCollected) {
    EXPECT_EQ(text(available(std::nullopt), "ko_KR"), "기록 모으는 중");
}

TEST(RecentUsageText, ANumberInAnotherStateIsNotShown) {
    RecentUsageResult result = available(5);
    result.status = Status::stale;
    EXPECT_EQ(text(result, "ko_KR"), "새 기록 대기");
}

}  // namespace
}  // namespace brimwatch
