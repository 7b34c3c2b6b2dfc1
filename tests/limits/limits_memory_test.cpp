#include "limits/limits_memory.h"

#include <gtest/gtest.h>

#include <limits>

#include "harness/random.h"

namespace brimwatch {
namespace {

using Window = LimitsFile::Window;
using Windows = LimitsFile::Windows;

constexpr std::int64_t now = 1'790'000'000;
constexpr std::int64_t live = now + 7200;
constexpr std::int64_t past = now - 7200;

struct Outcome {
    std::optional<Window> window;
    bool changed;

    bool operator==(const Outcome&) const = default;
};

Outcome merged(std::optional<Window> old, std::optional<Window> next) {
    Windows oldWindows;
    Windows nextWindows;
    if (old) oldWindows.emplace("w", *old);
    if (next) nextWindows.emplace("w", *next);
    const LimitsMemory::Merged result = LimitsMemory::merge(oldWindows, nextWindows, now);
    const auto found = result.windows.find("w");
    if (found == result.windows.end()) return {std::nullopt, result.changed};
    return {found->second, result.changed};
}

TEST(WindowMerge, AWindowThatIsNoLongerReportedStays) {
    EXPECT_EQ(merged(Window{40, live}, std::nullopt), (Outcome{Window{40, live}, false}));
    EXPECT_EQ(merged(Window{40, past}, std::nullopt), (Outcome{Window{40, past}, false}));
}

TEST(WindowMerge, AWindowReportedForTheFirstTimeIsTaken) {
    EXPECT_EQ(merged(std::nullopt, Window{40, live}), (Outcome{Window{40, live}, true}));
    EXPECT_EQ(merged(std::nullopt, Window{40, {}}), (Outcome{Window{40, {}}, true}));
    EXPECT_EQ(merged(std::nullopt, Window{40, past}), (Outcome{Window{40, past}, false}));
}

TEST(WindowMerge, WhereOneHasNoResetTheNewOneIsTaken) {
    EXPECT_EQ(merged(Window{40, {}}, Window{30, live}), (Outcome{Window{30, live}, true}));
    EXPECT_EQ(merged(Window{40, {}}, Window{30, past}), (Outcome{Window{30, past}, false}));
    EXPECT_EQ(merged(Window{40, live}, Window{30, {}}), (Outcome{Window{30, {}}, true}));
    EXPECT_EQ(merged(Window{40, past}, Window{30, {}}), (Outcome{Window{30, {}}, true}));
    EXPECT_EQ(merged(Window{40, {}}, Window{30, {}}), (Outcome{Window{30, {}}, true}));
}

TEST(WindowMerge, AReportPastItsResetNeverDisplacesALiveOne) {
    EXPECT_EQ(merged(Window{40, live}, Window{90, past}), (Outcome{Window{40, live}, false}));
    EXPECT_EQ(merged(Window{40, now + 1}, Window{90, now}), (Outcome{Window{40, now + 1}, false}));
}

TEST(WindowMerge, ALiveReportReplacesOnePastItsReset) {
    EXPECT_EQ(merged(Window{90, past}, Window{10, live}), (Outcome{Window{10, live}, true}));
    EXPECT_EQ(merged(Window{90, now}, Window{10, now + 1}), (Outcome{Window{10, now + 1}, true}));
}

TEST(WindowMerge, ResetAtNoonReportAtFivePastForFiveWinsWhateverThePercentages) {
    const Window old{95, now - 300};
    for (const double used : {0.0, 50.0, 100.0}) {
        EXPECT_EQ(merged(old, Window{used, now + 17'700}),
                  (Outcome{Window{used, now + 17'700}, true}));
    }
}

TEST(WindowMerge, WithinACycleTheFigureOnlyRises) {
    EXPECT_EQ(merged(Window{40, live}, Window{41, live + 10}),
              (Outcome{Window{41, live + 10}, true}));
    EXPECT_EQ(merged(Window{40, live}, Window{30, live + 10}),
              (Outcome{Window{40, live + 10}, false}));
    EXPECT_EQ(merged(Window{40, live}, Window{30, live - 10}),
              (Outcome{Window{40, live - 10}, false}));
}

TEST(WindowMerge, AnEqualFigureInALiveWindowCountsAsChanged) {
    EXPECT_EQ(merged(Window{40, live}, Window{40, live}), (Outcome{Window{40, live}, true}));
}

TEST(WindowMerge, AFigureOfACycleThatIsOverIsTakenButIsNoNews) {
    EXPECT_EQ(merged(Window{40, past}, Window{60, past + 10}),
              (Outcome{Window{60, past + 10}, false}));
    EXPECT_EQ(merged(Window{40, past}, Window{40, past}), (Outcome{Window{40, past}, false}));
}

TEST(WindowMerge, ResetTimesUpToAnHourApartAreOneCycleEitherWay) {
    EXPECT_EQ(merged(Window{40, live}, Window{30, live + 3600}),
              (Outcome{Window{40, live + 3600}, false}));
    EXPECT_EQ(merged(Window{40, live}, Window{30, live - 3600}),
              (Outcome{Window{40, live - 3600}, false}));
}

TEST(WindowMerge, ALaterCycleReplacesAnEarlierOne) {
    EXPECT_EQ(merged(Window{90, live}, Window{5, live + 3601}),
              (Outcome{Window{5, live + 3601}, true}));
    EXPECT_EQ(merged(Window{90, past - 3601}, Window{5, past}), (Outcome{Window{5, past}, false}));
}

TEST(WindowMerge, AnEarlierCycleIsNotBelieved) {
    EXPECT_EQ(merged(Window{5, live + 3601}, Window{90, live}),
              (Outcome{Window{5, live + 3601}, false}));
    EXPECT_EQ(merged(Window{5, past}, Window{90, past - 3601}), (Outcome{Window{5, past}, false}));
}

TEST(WindowMerge, EveryKeyIsMergedByItself) {
    const Windows old = {{"five_hour", {40, live}}, {"seven_day", {70, live}}};
    const Windows next = {{"five_hour", {30, live}}, {"seven_day_opus", {10, live}}};
    const LimitsMemory::Merged result = LimitsMemory::merge(old, next, now);
    EXPECT_EQ(result.windows, (Windows{{"five_hour", {40, live}},
                                       {"seven_day", {70, live}},
                                       {"seven_day_opus", {10, live}}}));
    EXPECT_TRUE(result.changed);
}

TEST(WindowMerge, HoldsForTimesAsFarApartAsTheyCanBe) {
    constexpr std::int64_t first = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(merged(Window{40, first}, Window{30, last}), (Outcome{Window{30, last}, true}));
    EXPECT_EQ(merged(Window{40, last}, Window{30, first}), (Outcome{Window{40, last}, false}));
    EXPECT_EQ(merged(Window{40, first}, Window{30, first}), (Outcome{Window{40, first}, false}));
}

// The rules once more, as plainly as they can be told.
Outcome plainMerge(const Window& old, const Window& next) {
    const auto isLive = [](const Window& window) {
        return window.resetsAt && now < *window.resetsAt;
    };
    if (!old.resetsAt || !next.resetsAt) return {next, !next.resetsAt || isLive(next)};
    if (isLive(old) && !isLive(next)) return {old, false};
    if (!isLive(old) && isLive(next)) return {next, true};
    const std::int64_t distance = *next.resetsAt - *old.resetsAt;
    if (distance > 3600) return {next, isLive(next)};
    if (distance < -3600) return {old, false};
    if (old.usedPercentage > next.usedPercentage) {
        return {Window{old.usedPercentage, next.resetsAt}, false};
    }
    return {next, isLive(next)};
}

std::optional<Window> randomWindow(test::Random& random) {
    if (random.oneIn(6)) return std::nullopt;
    Window window{static_cast<double>(random.below(5)) * 25, std::nullopt};
    if (!random.oneIn(5)) {
        window.resetsAt = now + random.between(-6, 6) * 1800 + random.between(-1, 1);
    }
    return window;
}

TEST(WindowMerge, AgreesWithThePlainRulesOverRandomHistories) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 200'000; ++round) {
        Windows old;
        Windows next;
        LimitsMemory::Merged expected;
        for (const char* key : {"five_hour", "seven_day", "x"}) {
            const std::optional<Window> before = randomWindow(random);
            const std::optional<Window> after = randomWindow(random);
            if (before) old.emplace(key, *before);
            if (after) next.emplace(key, *after);
            if (before && after) {
                const Outcome outcome = plainMerge(*before, *after);
                expected.windows.emplace(key, *outcome.window);
                expected.changed |= outcome.changed;
            } else if (after) {
                expected.windows.emplace(key, *after);
                expected.changed |= !after->resetsAt || now < *after->resetsAt;
            } else if (before) {
                expected.windows.emplace(key, *before);
            }
        }
        ASSERT_EQ(LimitsMemory::merge(old, next, now), expected);
    }
}

}  // namespace
}  // namespace brimwatch
