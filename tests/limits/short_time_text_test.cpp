#include "limits/short_time_text.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include "harness/time_zone.h"

namespace brimwatch {
namespace {

// 2026-09-21 06:04:59.9 UTC, in the summer of the northern half.
const Instant summer = instantFromUnixSeconds(1'789'970'699.9);
// 2026-01-15 06:04:00 UTC
const Instant winter = instantFromUnixSeconds(1'768'457'040);
constexpr double day = 86400;

TEST(ShortTimeText, IsTheTimeOfDayAsTheLocaleWritesIt) {
    const test::TimeZone zone("Asia/Seoul");
    EXPECT_EQ(shortTimeText(summer, "ko_KR"), "오후 3:04");
    EXPECT_EQ(shortTimeText(summer, "ko"), "오후 3:04");
    EXPECT_EQ(shortTimeText(summer, "ko-KR"), "오후 3:04");
    EXPECT_EQ(shortTimeText(summer, "ko_KR.UTF-8"), "오후 3:04");
    EXPECT_EQ(shortTimeText(summer, "de_DE.UTF-8"), "15:04");
    EXPECT_EQ(shortTimeText(summer, "ja_JP"), "15:04");
    EXPECT_EQ(shortTimeText(summer, "en_GB"), "15:04");
    EXPECT_EQ(shortTimeText(summer, "en_US"), "3:04\u202FPM");
    EXPECT_EQ(shortTimeText(summer, "da_DK"), "15.04");
    EXPECT_EQ(shortTimeText(summer, "ar_EG"), "٣:٠٤ م");
    EXPECT_EQ(shortTimeText(summer, "zh_TW"), "下午3:04");
}

TEST(ShortTimeText, HasNeitherDateNorSeconds) {
    const test::TimeZone zone("Asia/Seoul");
    const std::string text = shortTimeText(summer, "ko_KR");
    EXPECT_EQ(shortTimeText(summer + std::chrono::duration<double>(-59), "ko_KR"), text);
    EXPECT_EQ(shortTimeText(summer + std::chrono::duration<double>(40 * day), "ko_KR"), text);
    EXPECT_NE(shortTimeText(summer + std::chrono::duration<double>(0.2), "ko_KR"), text);
}

TEST(ShortTimeText, TellsTheHalvesOfTheDayApart) {
    const test::TimeZone zone("Asia/Seoul");
    EXPECT_EQ(shortTimeText(summer + std::chrono::duration<double>(day / 2), "ko_KR"), "오전 3:04");
    EXPECT_EQ(shortTimeText(summer + std::chrono::duration<double>(9 * 3600), "ko_KR"),
              "오전 12:04");
    EXPECT_EQ(shortTimeText(summer + std::chrono::duration<double>(21 * 3600), "ko_KR"),
              "오후 12:04");
}

TEST(ShortTimeText, FollowsTheTimeZoneWhileTheProgramRuns) {
    test::TimeZone zone("Asia/Seoul");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "15:04");
    zone.move("America/New_York");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "02:04");
    zone.move("Asia/Kathmandu");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "11:49");
    zone.move("UTC");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "06:04");
    zone.move("Asia/Seoul");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "15:04");
}

TEST(ShortTimeText, KnowsTheSummerTimeOfTheZone) {
    const test::TimeZone zone("America/New_York");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "02:04");
    EXPECT_EQ(shortTimeText(winter, "de_DE"), "01:04");
}

TEST(ShortTimeText, TakesAZoneInEachFormThatTheSystemTakes) {
    test::TimeZone zone(":Asia/Seoul");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "15:04");
    zone.move("EST5EDT");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "02:04");
    zone.move("KST-9");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "15:04");
    zone.move("<+0330>-3:30");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "09:34");
    zone.move("");
    EXPECT_EQ(shortTimeText(summer, "de_DE"), "06:04");
}

TEST(ShortTimeText, IsStillATimeInALocaleThatNobodyKnows) {
    const test::TimeZone zone("Asia/Seoul");
    const icu::Locale former;
    for (const char* ofProcess : {"ko_KR", "en_US", "ar_EG"}) {
        UErrorCode error = U_ZERO_ERROR;
        icu::Locale::setDefault(icu::Locale(ofProcess), error);
        for (const char* locale : {"", "C", "POSIX", "xx_XX", "not a locale", "\xFF\xFE"})
            EXPECT_EQ(shortTimeText(summer, locale), "15:04") << ofProcess << ' ' << locale;
        icu::Locale::setDefault(former, error);
    }
}

TEST(ShortTimeText, TakesAnyTimeOfAClock) {
    const test::TimeZone zone("UTC");
    EXPECT_EQ(shortTimeText(instantFromUnixSeconds(0), "de_DE"), "00:00");
    EXPECT_EQ(shortTimeText(instantFromUnixSeconds(-60), "de_DE"), "23:59");
    EXPECT_EQ(shortTimeText(instantFromUnixSeconds(4'102'444'800), "de_DE"), "00:00");
}

}  // namespace
}  // namespace brimwatch
