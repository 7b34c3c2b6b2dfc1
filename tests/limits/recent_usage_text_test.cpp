#include "limits/recent_usage_text.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

namespace brimwatch {
namespace {

using Status = RecentUsageResult::Status;

RecentUsageResult available(std::optional<double> percentagePoints) {
    return {.status = Status::available,
            .percentagePoints = percentagePoints,
            .basisName = "주간",
            .updatedAt = std::nullopt};
}

TEST(RecentUsageText, TheFigureHasOneDecimal) {
    EXPECT_EQ(figureText(available(12.34), "ko_KR"), "12.3");
    EXPECT_EQ(figureText(available(12), "ko_KR"), "12.0");
    EXPECT_EQ(figureText(available(100), "ko"), "100.0");
}

TEST(RecentUsageText, NothingSpentIsAFigureWithoutASign) {
    EXPECT_EQ(figureText(available(0), "ko_KR"), "0.0");
    EXPECT_EQ(figureText(available(-0.0), "ko_KR"), "0.0");
    EXPECT_EQ(figureText(available(0.04), "ko_KR"), "0.0");
    EXPECT_EQ(figureText(available(0.06), "ko_KR"), "0.1");
}

TEST(RecentUsageText, TheFigureIsWrittenAsTheLocaleWritesIt) {
    EXPECT_EQ(figureText(available(12.34), "de_DE"), "12,3");
    EXPECT_EQ(figureText(available(12.34), "de-DE"), "12,3");
    EXPECT_EQ(figureText(available(12.34), "de_DE.UTF-8"), "12,3");
    EXPECT_EQ(figureText(available(12.34), "ar_EG"), "١٢٫٣");
}

TEST(RecentUsageText, ALocaleThatNobodyKnowsStillGivesAFigure) {
    const icu::Locale former;
    for (const char* ofProcess : {"en_US", "de_DE", "ar_EG"}) {
        UErrorCode error = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(ofProcess), error);
        for (const char* locale : {"", "C", "POSIX", "xx_XX", "not a locale", "\xFF\xFE"}) {
            EXPECT_EQ(figureText(available(12.34), locale), "12.3") << ofProcess << locale;
        }
        icu::Locale::setDefault(former, error);
    }
    EXPECT_EQ(figureText(available(12.34), std::string(100'000, 'x')), "12.3");
}

TEST(RecentUsageText, AStateWithoutAFigureHasItsOwnText) {
    EXPECT_EQ(textWithoutFigure(Status::collecting), "기록 모으는 중");
    EXPECT_EQ(textWithoutFigure(Status::stale), "새 기록 대기");
    EXPECT_EQ(textWithoutFigure(Status::reset), "초기화 후 기록 중");
    EXPECT_EQ(textWithoutFigure(Status::unavailable), "사용 기록 없음");
}

TEST(RecentUsageText, AnAvailableResultWithoutANumberReadsLikeOneBeingCollected) {
    EXPECT_EQ(figureText(available(std::nullopt), "ko_KR"), std::nullopt);
    EXPECT_EQ(textWithoutFigure(Status::available), "기록 모으는 중");
}

TEST(RecentUsageText, ANumberInAnotherStateIsNotShown) {
    RecentUsageResult result = available(5);
    result.status = Status::stale;
    EXPECT_EQ(figureText(result, "ko_KR"), std::nullopt);
}

}  // namespace
}  // namespace brimwatch
