#include "limits/limits_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>

#include "harness/random.h"
#include "harness/stored_json.h"

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

LimitsFile claudeFile(double usedPercentage, std::int64_t updatedAt) {
    return {.version = 1,
            .provider = "claude",
            .account = "work",
            .windows = {{"five_hour", {usedPercentage, live}}},
            .updatedAt = updatedAt,
            .planTier = std::nullopt};
}

LimitsFile codexFile(double usedPercentage, std::int64_t updatedAt) {
    LimitsFile file = claudeFile(usedPercentage, updatedAt);
    file.provider = "codex";
    return file;
}

TEST(LimitsMemory, TheFirstFileOfAnAccountIsBelievedAsItIs) {
    LimitsMemory memory;
    LimitsFile file = claudeFile(40, 100);
    file.windows["seven_day"] = {7, past};
    EXPECT_EQ(memory.remember(file, now), file);
    EXPECT_EQ(memory.files,
              (std::map<std::string, LimitsFile, std::less<>>{{"claude-work", file}}));
}

TEST(LimitsMemory, AccountsAndProvidersAreKeptApart) {
    LimitsMemory memory;
    LimitsFile other = claudeFile(1, 100);
    other.account = "home";
    memory.remember(claudeFile(40, 100), now);
    memory.remember(codexFile(20, 100), now);
    memory.remember(other, now);
    ASSERT_EQ(memory.files.size(), 3U);
    EXPECT_EQ(memory.files.at("claude-work"), claudeFile(40, 100));
    EXPECT_EQ(memory.files.at("codex-work"), codexFile(20, 100));
    EXPECT_EQ(memory.files.at("claude-home"), other);
}

TEST(LimitsMemory, AnOlderCodexFileDoesNotMoveTheFiguresBack) {
    LimitsMemory memory;
    memory.remember(codexFile(40, 100), now);
    EXPECT_EQ(memory.remember(codexFile(90, 99), now), codexFile(40, 100));
    EXPECT_EQ(memory.files.at("codex-work"), codexFile(40, 100));
}

TEST(LimitsMemory, ACodexFileOfTheSameTimeOrLaterReplacesTheStoredOneAsAWhole) {
    for (const std::int64_t updatedAt : {100, 101}) {
        LimitsMemory memory;
        LimitsFile first = codexFile(40, 100);
        first.windows["seven_day"] = {70, live};
        memory.remember(first, now);
        EXPECT_EQ(memory.remember(codexFile(10, updatedAt), now), codexFile(10, updatedAt));
        EXPECT_EQ(memory.files.at("codex-work"), codexFile(10, updatedAt));
    }
}

TEST(LimitsMemory, AClaudeFileIsMergedSoThatAStaleFigureChangesNothing) {
    LimitsMemory memory;
    memory.remember(claudeFile(40, 100), now);
    EXPECT_EQ(memory.remember(claudeFile(30, 200), now), claudeFile(40, 100));
    EXPECT_EQ(memory.remember(claudeFile(50, 300), now), claudeFile(50, 300));
}

TEST(LimitsMemory, TheTimeMarksTheLastFigureThatCountedAndNeverRunsBack) {
    LimitsMemory memory;
    memory.remember(claudeFile(40, 100), now);
    EXPECT_EQ(memory.remember(claudeFile(40, 100), now).updatedAt, 100);
    EXPECT_EQ(memory.remember(claudeFile(40, 150), now).updatedAt, 150);
    EXPECT_EQ(memory.remember(claudeFile(30, 200), now).updatedAt, 150);
    EXPECT_EQ(memory.remember(claudeFile(45, 120), now), claudeFile(45, 150));
}

TEST(LimitsMemory, VersionAndPlanFollowTheFileEvenWhereItsFiguresDoNotCount) {
    LimitsMemory memory;
    LimitsFile first = claudeFile(40, 100);
    first.planTier = "Pro";
    memory.remember(first, now);
    LimitsFile next = claudeFile(30, 200);
    next.version = 3;
    next.planTier = "Max 5배";
    LimitsFile expected = next;
    expected.windows = first.windows;
    expected.updatedAt = 100;
    EXPECT_EQ(memory.remember(next, now), expected);
    next.planTier = std::nullopt;
    EXPECT_EQ(memory.remember(next, now).planTier, std::nullopt);
}

TEST(LimitsMemory, AWindowWhoseResetHasPassedStaysUntilALaterReportReplacesIt) {
    LimitsMemory memory;
    LimitsFile first = claudeFile(40, 100);
    first.windows["seven_day"] = {70, past};
    memory.remember(first, now);
    EXPECT_EQ(memory.remember(claudeFile(41, 200), now).windows.at("seven_day"),
              (Window{70, past}));
    LimitsFile later = claudeFile(42, 300);
    later.windows["seven_day"] = {2, live};
    EXPECT_EQ(memory.remember(later, now).windows.at("seven_day"), (Window{2, live}));
}

TEST(StoredLimitsMemory, IsOneObjectWithTheKeyFiles) {
    LimitsMemory memory;
    EXPECT_EQ(test::encode(memory), R"({"files":{}})");
    LimitsFile file = claudeFile(41.5, 1'790'000'000);
    file.windows = {{"five_hour", {41.5, 1'790'007'200}}, {"x", {1, std::nullopt}}};
    file.planTier = "Max 20배";
    memory.remember(file, now);
    EXPECT_EQ(test::encode(memory),
              R"({"files":{"claude-work":{"account":"work","plan_tier":"Max 20배",)"
              R"("provider":"claude","updated_at":1790000000,"version":1,"windows":{)"
              R"("five_hour":{"resets_at":1790007200,"used_percentage":41.5},)"
              R"("x":{"used_percentage":1}}}}})");
    EXPECT_EQ(test::decode<LimitsMemory>(test::encode(memory)), memory);
}

constexpr const char* storedFile =
    R"({"account":"work","provider":"claude","updated_at":5,"version":1,"windows":{}})";

std::string storedMemory(const std::string& members) {
    return R"({"files":{)" + members + "}}";
}

TEST(StoredLimitsMemory, UnknownKeysAndAnyOrderAreFine) {
    const auto memory = test::decode<LimitsMemory>(
        "\n{\"x\":[1],\"files\":{\"codex-b\":" + std::string(storedFile) + ",\"a\":" + storedFile +
        "},\"version\":2}\n");
    ASSERT_TRUE(memory);
    EXPECT_EQ(memory->files.size(), 2U);
    EXPECT_EQ(memory->files.at("a").account, "work");
}

TEST(StoredLimitsMemory, DamageAnywhereGivesNothing) {
    const std::string good = std::string(R"("claude-work":)") + storedFile;
    ASSERT_TRUE(test::decode<LimitsMemory>(storedMemory(good)));
    for (const char* text : {"", "null", "[]", "{}", "1", R"({"files":null})", R"({"files":[]})",
                             R"({"files":"x"})", R"({"Files":{}})"}) {
        EXPECT_FALSE(test::decode<LimitsMemory>(text)) << text;
    }
    for (const char* entry :
         {"null", "[]", "{}", "7", R"("x")",
          R"({"account":"a","provider":"claude","updated_at":5.5,"version":1,"windows":{}})",
          R"({"account":"a","provider":"claude","updated_at":5,"version":1,"windows":{"x":1}})",
          R"({"account":"a","provider":"claude","updated_at":5,"version":1})"}) {
        EXPECT_FALSE(test::decode<LimitsMemory>(storedMemory(good + R"(,"x":)" + entry))) << entry;
    }
    EXPECT_FALSE(test::decode<LimitsMemory>(storedMemory("\"\xFF\":" + std::string(storedFile))));
}

TEST(StoredLimitsMemory, ATextThatWasCutAnywhereGivesNothing) {
    LimitsMemory memory;
    memory.remember(claudeFile(40, 100), now);
    memory.remember(codexFile(40, 100), now);
    const std::string whole = test::encode(memory);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        ASSERT_FALSE(test::decode<LimitsMemory>(whole.substr(0, length))) << length;
    }
}

TEST(StoredLimitsMemory, RandomMemoriesSurviveARoundTrip) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 3000; ++round) {
        LimitsMemory memory;
        for (std::size_t count = random.below(5); count > 0; --count) {
            LimitsFile file = claudeFile(static_cast<double>(random.bits()) / 1e17,
                                         static_cast<std::int64_t>(random.bits()));
            file.account = "한\"\\/\n" + std::to_string(random.below(100));
            if (const auto window = randomWindow(random)) file.windows["seven_day"] = *window;
            memory.remember(file, now);
        }
        ASSERT_EQ(test::decode<LimitsMemory>(test::encode(memory)), memory);
    }
}

// The steps once more, one after the other.
LimitsFile plainRemember(std::map<std::string, LimitsFile>& files, const LimitsFile& file) {
    const std::string id = file.provider + "-" + file.account;
    if (files.count(id) == 0) return files[id] = file;
    const LimitsFile stored = files[id];
    if (file.provider == "codex") {
        if (stored.updatedAt > file.updatedAt) return stored;
        return files[id] = file;
    }
    const LimitsMemory::Merged result = LimitsMemory::merge(stored.windows, file.windows, now);
    LimitsFile next = file;
    next.windows = result.windows;
    next.updatedAt =
        result.changed && !(stored.updatedAt > file.updatedAt) ? file.updatedAt : stored.updatedAt;
    return files[id] = next;
}

TEST(LimitsMemory, AgreesWithThePlainStepsOverRandomReports) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 2000; ++round) {
        LimitsMemory memory;
        std::map<std::string, LimitsFile> expected;
        for (int report = 0; report < 20; ++report) {
            LimitsFile file = random.oneIn(2) ? claudeFile(0, 0) : codexFile(0, 0);
            file.updatedAt = now + random.between(-3, 3);
            file.windows.clear();
            for (const char* key : {"five_hour", "seven_day"}) {
                if (const auto window = randomWindow(random)) file.windows[key] = *window;
            }
            ASSERT_EQ(memory.remember(file, now), plainRemember(expected, file));
        }
        ASSERT_TRUE(
            std::equal(expected.begin(), expected.end(), memory.files.begin(), memory.files.end()));
    }
}

}  // namespace
}  // namespace brimwatch
