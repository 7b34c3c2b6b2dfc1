#include "presentation/time_texts.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include "card_examples.h"
#include "harness/time_zone.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::after;
using test::before;
using test::cardTime;
using test::daySeconds;
using test::infinity;
using test::notANumber;
using test::utc;

QString ago(double seconds, const std::string& locale = "ko_KR") {
    return agoText(before(seconds), cardTime, locale);
}

QString countdown(double seconds, const std::string& locale = "ko_KR") {
    return countdownText(after(seconds), cardTime, locale);
}

TEST(AgoText, IsJustNowBelowAMinute) {
    EXPECT_EQ(ago(0), "방금");
    EXPECT_EQ(ago(59.9), "방금");
    EXPECT_EQ(ago(60), "1분 전");
}

TEST(AgoText, IsJustNowForWhatIsStillToCome) {
    EXPECT_EQ(ago(-0.1), "방금");
    EXPECT_EQ(ago(-daySeconds), "방금");
    EXPECT_EQ(ago(-infinity), "방금");
}

TEST(AgoText, IsInTheLargestUnitRoundedDown) {
    EXPECT_EQ(ago(119.9), "1분 전");
    EXPECT_EQ(ago(3599), "59분 전");
    EXPECT_EQ(ago(3600), "1시간 전");
    EXPECT_EQ(ago(daySeconds - 1), "23시간 전");
    EXPECT_EQ(ago(daySeconds), "1일 전");
    EXPECT_EQ(ago(7 * daySeconds - 1), "6일 전");
    EXPECT_EQ(ago(7 * daySeconds), "1주 전");
    EXPECT_EQ(ago(30 * daySeconds), "4주 전");
    EXPECT_EQ(ago(31 * daySeconds), "1개월 전");
    EXPECT_EQ(ago(364 * daySeconds), "11개월 전");
    EXPECT_EQ(ago(365 * daySeconds), "1년 전");
}

TEST(AgoText, IsNumericAndInFullWordsOfTheLocale) {
    EXPECT_EQ(ago(daySeconds, "en_US"), "1 day ago");
    EXPECT_EQ(ago(300, "en_US.UTF-8"), "5 minutes ago");
    EXPECT_EQ(ago(7200, "de_DE"), "vor 2 Stunden");
    EXPECT_EQ(ago(300, "ar_EG"), "قبل ٥ دقائق");
}

TEST(AgoText, IsKoreanWhereNobodyKnowsTheLocale) {
    for (const char* locale : {"", "C", "POSIX", "xx_XX", "\xFF\xFE"})
        EXPECT_EQ(ago(300, locale), "5분 전") << locale;
}

TEST(AgoText, SurvivesEveryTimeOfAFile) {
    EXPECT_TRUE(ago(infinity).endsWith("년 전"));
    EXPECT_TRUE(ago(1e300).endsWith("년 전"));
    EXPECT_FALSE(ago(notANumber).isEmpty());
}

TEST(Countdown, IsLiveWithinADay) {
    EXPECT_TRUE(isLiveCountdown(after(0.001), cardTime));
    EXPECT_TRUE(isLiveCountdown(after(86399.9), cardTime));
    EXPECT_FALSE(isLiveCountdown(after(86400), cardTime));
    EXPECT_FALSE(isLiveCountdown(cardTime, cardTime));
    EXPECT_FALSE(isLiveCountdown(before(1), cardTime));
    for (const double seconds : {infinity, -infinity, notANumber, 1e300})
        EXPECT_FALSE(isLiveCountdown(after(seconds), cardTime)) << seconds;
}

TEST(Countdown, WithinADayHasHoursWhereThereAreSome) {
    EXPECT_EQ(countdown(86399), "23:59:59");
    EXPECT_EQ(countdown(5025), "1:23:45");
    EXPECT_EQ(countdown(3600), "1:00:00");
    EXPECT_EQ(countdown(3599), "59:59");
    EXPECT_EQ(countdown(309), "5:09");
    EXPECT_EQ(countdown(9), "0:09");
}

TEST(Countdown, RoundsSecondsUpAndNeverShowsNone) {
    EXPECT_EQ(countdown(1), "0:01");
    EXPECT_EQ(countdown(0.25), "0:01");
    EXPECT_EQ(countdown(1.25), "0:02");
    EXPECT_EQ(countdown(3599.5), "1:00:00");
}

TEST(Countdown, FromADayOnIsInTheTwoLargestUnits) {
    EXPECT_EQ(countdown(86400), "1일");
    EXPECT_EQ(countdown(86400 + 3599), "1일");
    EXPECT_EQ(countdown(86400 + 3600), "1일 1시간");
    EXPECT_EQ(countdown(3 * daySeconds + 4 * 3600 + 59 * 60), "3일 4시간");
    EXPECT_EQ(countdown(7 * daySeconds), "7일");
    EXPECT_EQ(countdown(40 * daySeconds), "1개월 10일");
    EXPECT_EQ(countdown(366 * daySeconds), "1년");
    EXPECT_EQ(countdown(400 * daySeconds), "1년 1개월");
}

TEST(Countdown, DoesNotFallBelowADayThroughFractionsOfASecond) {
    for (int step = 0; step < 1000; ++step) {
        const Instant now = after(step * 0.0137);
        const Instant end = now + std::chrono::duration<double>(86400);
        if (isLiveCountdown(end, now)) continue;
        EXPECT_EQ(countdownText(end, now, "ko_KR"), "1일") << step;
    }
}

TEST(Countdown, IsWrittenAsTheLocaleWritesIt) {
    EXPECT_EQ(countdown(5025, "ar_EG"), "١:٢٣:٤٥");
    EXPECT_EQ(countdown(5025, "da_DK"), "1.23.45");
    EXPECT_EQ(countdown(3 * daySeconds + 4 * 3600, "en_US"), "3 days, 4 hours");
    EXPECT_EQ(countdown(3 * daySeconds + 4 * 3600, "de_DE.UTF-8"), "3 Tage, 4 Stunden");
    EXPECT_EQ(countdown(3 * daySeconds + 4 * 3600, "C"), "3일 4시간");
}

TEST(Countdown, SurvivesEveryTimeOfAFile) {
    EXPECT_FALSE(countdown(1e300).isEmpty());
    EXPECT_EQ(countdown(infinity), countdown(1e300));
}

TEST(Countdown, CountsTheHoursThatReallyPassInTheNightOfAClockChange) {
    const test::TimeZone zone("America/New_York");
    // From 20:00 to 20:00 of the next day.
    EXPECT_EQ(countdownText(utc(2026y / 11 / 2, 1, 0), utc(2026y / 11 / 1, 0, 0), "ko_KR"),
              "1일 1시간");
    EXPECT_EQ(countdownText(utc(2026y / 3 / 9, 0, 0), utc(2026y / 3 / 8, 1, 0), "ko_KR"),
              "23:00:00");
}

TEST(ResetTime, HasMinutesOnlyWhereThereAreSome) {
    const test::TimeZone zone("Asia/Seoul");
    const Instant reset = utc(2026y / 9 / 25, 6, 0);
    EXPECT_EQ(longResetTime(reset, "ko_KR"), "9월 25일 (금) 오후 3시");
    EXPECT_EQ(longResetTime(reset + 59s, "ko_KR"), "9월 25일 (금) 오후 3시");
    EXPECT_EQ(longResetTime(reset + 1min, "ko_KR"), "9월 25일 (금) 오후 3:01");
    EXPECT_EQ(shortResetTime(reset, "ko_KR"), "오후 3:00");
}

TEST(ResetTime, IsWrittenAsTheLocaleWritesIt) {
    const test::TimeZone zone("Asia/Seoul");
    const Instant full = utc(2026y / 9 / 25, 6, 0);
    EXPECT_EQ(longResetTime(full, "en_US"), "Fri, Sep 25, 3\u202FPM");
    EXPECT_EQ(longResetTime(full, "de_DE.UTF-8"), "Fr., 25. Sept., 15 Uhr");
    EXPECT_EQ(longResetTime(full, "ar_EG"), "الجمعة، ٢٥ سبتمبر، ٣ م");
    EXPECT_EQ(longResetTime(full + 5min, "de_DE"), "Fr., 25. Sept., 15:05");
    EXPECT_EQ(longResetTime(full, ""), "9월 25일 (금) 오후 3시");
}

TEST(ResetTime, IsGregorianInEveryLocale) {
    const test::TimeZone zone("Asia/Seoul");
    const Instant reset = utc(2026y / 9 / 25, 6, 5);
    for (const char* locale : {"ar_SA", "fa_IR", "en_US@calendar=islamic", "th_TH", "ckb_IR"}) {
        const QString shown = longResetTime(reset, locale);
        EXPECT_TRUE(shown.contains("25") || shown.contains("٢٥") || shown.contains("۲۵"))
            << locale << ' ' << shown.toStdString();
    }
    EXPECT_EQ(longResetTime(reset, "en_US@calendar=islamic"), "Fri, Sep 25, 3:05\u202FPM");
}

TEST(ResetTime, FollowsTheTimeZoneWhileTheProgramRuns) {
    const Instant reset = utc(2026y / 9 / 25, 18, 15);
    test::TimeZone zone("Asia/Seoul");
    EXPECT_EQ(longResetTime(reset, "ko_KR"), "9월 26일 (토) 오전 3:15");
    zone.move("America/New_York");
    EXPECT_EQ(longResetTime(reset, "ko_KR"), "9월 25일 (금) 오후 2:15");
    // The minutes are those of the zone.
    zone.move("Asia/Kathmandu");
    EXPECT_EQ(longResetTime(reset, "ko_KR"), "9월 26일 (토) 오전 12시");
}

TEST(ResetTime, IsInTheTimeOfItsOwnSideOfAClockChange) {
    const test::TimeZone zone("America/New_York");
    EXPECT_EQ(longResetTime(utc(2026y / 11 / 1, 5, 30), "ko_KR"), "11월 1일 (일) 오전 1:30");
    EXPECT_EQ(longResetTime(utc(2026y / 11 / 1, 6, 30), "ko_KR"), "11월 1일 (일) 오전 1:30");
    EXPECT_EQ(longResetTime(utc(2026y / 11 / 1, 7, 30), "ko_KR"), "11월 1일 (일) 오전 2:30");
    EXPECT_EQ(longResetTime(utc(2026y / 3 / 8, 7, 0), "ko_KR"), "3월 8일 (일) 오전 3시");
}

TEST(ResetTime, SurvivesEveryTimeOfAFile) {
    const test::TimeZone zone("Asia/Seoul");
    for (const double seconds : {infinity, -infinity, notANumber, 1e300, -1e300}) {
        EXPECT_FALSE(longResetTime(instantFromUnixSeconds(seconds), "ko_KR").isEmpty());
        EXPECT_FALSE(shortResetTime(instantFromUnixSeconds(seconds), "ko_KR").isEmpty());
    }
}

TEST(SameDay, EndsAtMidnightOfTheZone) {
    test::TimeZone zone("Asia/Seoul");
    const Instant midnight = utc(2026y / 9 / 20, 15, 0);
    EXPECT_TRUE(isSameDay(midnight, midnight + 24h - 1s));
    EXPECT_FALSE(isSameDay(midnight, midnight + 24h));
    EXPECT_FALSE(isSameDay(midnight - 1s, midnight));
    zone.move("UTC");
    EXPECT_TRUE(isSameDay(midnight - 1s, midnight));
}

TEST(SameDay, HasTwentyFiveHoursWhereTheClockGoesBack) {
    const test::TimeZone zone("America/New_York");
    const Instant midnight = utc(2026y / 11 / 1, 4, 0);
    EXPECT_TRUE(isSameDay(midnight, midnight + 25h - 1s));
    EXPECT_FALSE(isSameDay(midnight, midnight + 25h));
}

TEST(SameDay, IsNotThatOfAnotherYear) {
    const test::TimeZone zone("UTC");
    EXPECT_FALSE(isSameDay(utc(2026y / 9 / 21, 12, 0), utc(2027y / 9 / 21, 12, 0)));
    EXPECT_FALSE(isSameDay(cardTime, instantFromUnixSeconds(infinity)));
}

}  // namespace
}  // namespace brimwatch
