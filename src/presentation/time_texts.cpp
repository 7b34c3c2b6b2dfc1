#include "presentation/time_texts.h"

#include <unicode/datefmt.h>
#include <unicode/gregocal.h>
#include <unicode/measfmt.h>
#include <unicode/measunit.h>
#include <unicode/measure.h>
#include <unicode/reldatefmt.h>

#include <array>
#include <cmath>
#include <memory>
#include <vector>

#include "limits/local_time.h"
#include "limits/number_locale.h"
#include "limits/short_time_text.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

constexpr int millisecondsPerSecond = 1000;
constexpr int secondsPerMinute = 60;
constexpr int secondsPerHour = 3600;
constexpr int secondsPerDay = 86400;

struct Unit {
    UCalendarDateFields field;
    URelativeDateTimeUnit relative;
    icu::MeasureUnit* (*measure)(UErrorCode&);
};

constexpr Unit year = {UCAL_YEAR, UDAT_REL_UNIT_YEAR, icu::MeasureUnit::createYear};
constexpr Unit month = {UCAL_MONTH, UDAT_REL_UNIT_MONTH, icu::MeasureUnit::createMonth};
constexpr Unit week = {UCAL_WEEK_OF_YEAR, UDAT_REL_UNIT_WEEK, icu::MeasureUnit::createWeek};
constexpr Unit day = {UCAL_DATE, UDAT_REL_UNIT_DAY, icu::MeasureUnit::createDay};
constexpr Unit hour = {UCAL_HOUR, UDAT_REL_UNIT_HOUR, icu::MeasureUnit::createHour};
constexpr Unit minute = {UCAL_MINUTE, UDAT_REL_UNIT_MINUTE, icu::MeasureUnit::createMinute};
constexpr Unit second = {UCAL_SECOND, UDAT_REL_UNIT_SECOND, icu::MeasureUnit::createSecond};

// Of texts that are words: where nobody knows the locale, in the language that they stand among.
icu::Locale wordLocale(const std::string& identifier) {
    const icu::Locale locale = numberLocale(identifier);
    return locale == icu::Locale::getRoot() ? icu::Locale::getKorean() : locale;
}

struct Amount {
    Unit unit;
    std::int32_t count;
};

double secondsBetween(Instant from, Instant to) {
    return unixSeconds(onCalendar(to)) - unixSeconds(onCalendar(from));
}

// The whole seconds after `from` in units of a calendar, the largest first.
template <std::size_t count>
std::vector<Amount> inUnits(Instant from, double wholeSeconds,
                            const std::array<Unit, count>& units) {
    UErrorCode error = U_ZERO_ERROR;
    icu::GregorianCalendar calendar(*icu::TimeZone::getGMT(), error);
    const double start = std::floor(unixSeconds(onCalendar(from)));
    calendar.setTime(start * millisecondsPerSecond, error);
    const double end = (start + wholeSeconds) * millisecondsPerSecond;
    std::vector<Amount> amounts;
    amounts.reserve(units.size());
    for (const Unit& unit : units)
        amounts.push_back({unit, calendar.fieldDifference(end, unit.field, error)});
    return amounts;
}

QString fromIcu(const icu::UnicodeString& text) {
    return QString::fromUtf16(text.getBuffer(), text.length());
}

QString measuresText(const std::vector<Amount>& amounts, UMeasureFormatWidth width,
                     const std::string& locale) {
    UErrorCode error = U_ZERO_ERROR;
    std::vector<icu::Measure> measures;
    measures.reserve(amounts.size());
    for (const auto& [unit, count] : amounts)
        measures.emplace_back(icu::Formattable(count), unit.measure(error), error);
    const icu::MeasureFormat format(wordLocale(locale), width, error);
    icu::UnicodeString text;
    icu::FieldPosition position(icu::FieldPosition::DONT_CARE);
    format.formatMeasures(measures.data(), static_cast<std::int32_t>(measures.size()), text,
                          position, error);
    return fromIcu(text);
}

QString liveCountdownText(int seconds, const std::string& locale) {
    std::vector<Amount> amounts = {{minute, seconds % secondsPerHour / secondsPerMinute},
                                   {second, seconds % secondsPerMinute}};
    if (seconds >= secondsPerHour)
        amounts.insert(amounts.begin(), {hour, seconds / secondsPerHour});
    return measuresText(amounts, UMEASFMT_WIDTH_NUMERIC, locale);
}

// The largest unit of which there is one, and the next smaller one if there is one of it too.
std::vector<Amount> twoLargest(const std::vector<Amount>& amounts) {
    auto largest = amounts.begin();
    while (largest->count == 0 && largest + 1 != amounts.end())
        ++largest;
    std::vector<Amount> result = {*largest};
    const auto next = largest + 1;
    if (next != amounts.end() && next->count != 0) result.push_back(*next);
    return result;
}

}  // namespace

QString agoText(Instant instant, Instant now, const std::string& locale) {
    const double age = secondsBetween(instant, now);
    if (age < secondsPerMinute) return translated("방금");
    static constexpr std::array units = {year, month, week, day, hour, minute};
    const Amount largest = twoLargest(inUnits(instant, std::floor(age), units)).front();
    UErrorCode error = U_ZERO_ERROR;
    const icu::RelativeDateTimeFormatter format(wordLocale(locale), error);
    icu::UnicodeString text;
    format.formatNumeric(-static_cast<double>(largest.count), largest.unit.relative, text, error);
    return fromIcu(text);
}

bool isLiveCountdown(Instant end, Instant now) {
    return end > now && secondsBetween(now, end) < secondsPerDay;
}

QString countdownText(Instant end, Instant now, const std::string& locale) {
    const double seconds = secondsBetween(now, end);
    if (seconds < secondsPerDay)
        return liveCountdownText(static_cast<int>(std::ceil(seconds)), locale);
    static constexpr std::array units = {year, month, day, hour};
    return measuresText(twoLargest(inUnits(now, std::floor(seconds), units)), UMEASFMT_WIDTH_WIDE,
                        locale);
}

QString longResetTime(Instant instant, const std::string& locale) {
    const Instant shown = onCalendar(instant);
    const bool isFullHour = localTime(shown).tm_min == 0;
    UErrorCode error = U_ZERO_ERROR;
    icu::Locale gregorian = wordLocale(locale);
    gregorian.setKeywordValue("calendar", "gregorian", error);
    const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createInstanceForSkeleton(
        isFullHour ? u"MMMEdj" : u"MMMEdjm", gregorian, error));
    if (!format) return {};
    format->adoptTimeZone(localZone(shown).release());
    icu::UnicodeString text;
    format->format(unixSeconds(shown) * millisecondsPerSecond, text);
    return fromIcu(text);
}

QString shortResetTime(Instant instant, const std::string& locale) {
    return QString::fromStdString(shortTimeText(onCalendar(instant), locale));
}

bool isSameDay(Instant a, Instant b) {
    const std::tm first = localTime(onCalendar(a));
    const std::tm second = localTime(onCalendar(b));
    return first.tm_year == second.tm_year && first.tm_yday == second.tm_yday;
}

}  // namespace brimwatch
