#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "harness/random.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "limits/limits_memory.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr std::int64_t nowSeconds = 1'790'000'000;
constexpr Instant now = instantFromUnixSeconds(nowSeconds);
constexpr std::int64_t live = nowSeconds + 7200;
constexpr std::int64_t past = nowSeconds - 7200;

LimitsFile limitsFile(const std::string& provider, const std::string& account,
                      double usedPercentage, std::int64_t updatedAt = nowSeconds - 60) {
    return {.version = 1,
            .provider = provider,
            .account = account,
            .windows = {{"five_hour", {usedPercentage, live}}},
            .updatedAt = updatedAt,
            .planTier = std::nullopt};
}

// What a loader is given, and what it learnt.
class LimitsFolder : public testing::Test {
  protected:
    void write(const std::string& name, const LimitsFile& file) { write(name, file.encode()); }
    void write(const std::string& name, const std::string& bytes) {
        test::writeFile(folder.file(name), bytes);
    }

    std::vector<SubscriptionLimits> load() {
        return memory.load(scripted, folder.path(), wanted, now);
    }

    std::vector<std::string> loadIds() {
        std::vector<std::string> ids;
        for (const SubscriptionLimits& record : load())
            ids.push_back(record.id());
        return ids;
    }

    using Ids = std::vector<std::string>;

    test::TemporaryFolder folder;
    PosixFileSystem files;
    test::ScriptedFileSystem scripted{files};
    LimitsMemory memory;
    SubscriptionIds wanted = {"claude-work", "claude-home", "codex-work"};
};

TEST_F(LimitsFolder, GivesARecordOfEachWantedFileAndRemembersIt) {
    LimitsFile file = limitsFile("claude", "work", 41.5);
    file.windows["seven_day"] = {7, std::nullopt};
    file.windows["seven_day_opus"] = {8, live};
    file.planTier = "Pro";
    write("claude-work.json", file);
    const auto records = load();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0], SubscriptionLimits::fromFileData(file.encode()));
    EXPECT_EQ(memory.files.at("claude-work"), file);
}

TEST_F(LimitsFolder, RecordsAreSortedByProviderThenAccount) {
    write("1.json", limitsFile("codex", "work", 1));
    write("2.json", limitsFile("claude", "work", 2));
    write("3.json", limitsFile("claude", "home", 3));
    EXPECT_EQ(loadIds(), (Ids{"claude-home", "claude-work", "codex-work"}));
}

TEST_F(LimitsFolder, AFolderThatCannotBeListedIsEmptyAndTheMemoryStays) {
    write("claude-work.json", limitsFile("claude", "work", 40));
    load();
    const LimitsMemory before = memory;
    std::filesystem::remove_all(folder.path());
    EXPECT_TRUE(load().empty());
    EXPECT_EQ(memory, before);
}

TEST_F(LimitsFolder, AFailureOfTheListingIsAnEmptyFolder) {
    write("claude-work.json", limitsFile("claude", "work", 40));
    scripted.failAtStep(0, std::errc::permission_denied);
    EXPECT_TRUE(load().empty());
    EXPECT_TRUE(memory.files.empty());
    EXPECT_EQ(loadIds(), (Ids{"claude-work"}));
}

TEST_F(LimitsFolder, OnlyNamesThatEndInJsonAndAreNotHiddenCount) {
    const std::string bytes = limitsFile("claude", "work", 40).encode();
    for (const char* name : {".lock", ".claude-work.json", ".json", "claude-work.json.tmp",
                             "claude-work", "claude-work.JSON", "claude-workjson"}) {
        write(name, bytes);
    }
    EXPECT_TRUE(load().empty());
    EXPECT_EQ(scripted.steps(), (std::vector<std::string>{"entries " + folder.path()}));
}

TEST_F(LimitsFolder, ARenamedFileFeedsTheAccountThatItsContentNames) {
    write("anything.json", limitsFile("codex", "work", 40));
    EXPECT_EQ(loadIds(), (Ids{"codex-work"}));
}

TEST_F(LimitsFolder, ANameThatIsNotUtf8IsANameLikeAnyOther) {
    write("\xFF\xFE.json", limitsFile("claude", "work", 40));
    EXPECT_EQ(loadIds(), (Ids{"claude-work"}));
}

TEST_F(LimitsFolder, EachFileIsReadOnceAndNothingElseIsAskedOfTheDisk) {
    write("a.json", limitsFile("claude", "work", 40));
    write("b.json", limitsFile("codex", "work", 40));
    load();
    EXPECT_EQ(scripted.steps(),
              (std::vector<std::string>{"entries " + folder.path(), "read " + folder.file("a.json"),
                                        "read " + folder.file("b.json")}));
}

TEST_F(LimitsFolder, AFileThatCannotBeReadIsPassedOverForThisTimeAlone) {
    write("a.json", limitsFile("claude", "work", 40));
    write("b.json", limitsFile("claude", "home", 40));
    scripted.failAtStep(1, std::errc::io_error);
    EXPECT_EQ(loadIds(), (Ids{"claude-home"}));
    EXPECT_EQ(memory.files.count("claude-work"), 0U);
    EXPECT_EQ(loadIds(), (Ids{"claude-home", "claude-work"}));
}

TEST_F(LimitsFolder, AFileThatIsNotWantedNeitherGivesARecordNorTouchesTheMemory) {
    write("a.json", limitsFile("claude", "work", 40));
    load();
    const LimitsMemory before = memory;
    wanted = {"codex-work"};
    write("a.json", limitsFile("claude", "work", 60));
    EXPECT_TRUE(load().empty());
    EXPECT_EQ(memory, before);
    wanted = {"claude-work"};
    EXPECT_EQ(load().at(0).fiveHour->usedPercentage, 60);
}

TEST_F(LimitsFolder, AnAccountThatComesBackHasItsFiguresAgain) {
    write("a.json", limitsFile("claude", "work", 60));
    load();
    std::filesystem::remove(folder.file("a.json"));
    EXPECT_TRUE(load().empty());
    write("a.json", limitsFile("claude", "work", 20));
    EXPECT_EQ(load().at(0).fiveHour->usedPercentage, 60);
}

TEST_F(LimitsFolder, AStaleFigureInTheFileIsNotShown) {
    write("a.json", limitsFile("claude", "work", 60, nowSeconds - 600));
    load();
    write("a.json", limitsFile("claude", "work", 40, nowSeconds - 10));
    const auto records = load();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].fiveHour->usedPercentage, 60);
    EXPECT_EQ(unixSeconds(records[0].updatedAt), nowSeconds - 600);
}

TEST_F(LimitsFolder, AnOlderCodexFileShowsTheStoredFigures) {
    write("a.json", limitsFile("codex", "work", 60, nowSeconds - 10));
    load();
    write("a.json", limitsFile("codex", "work", 90, nowSeconds - 20));
    EXPECT_EQ(load().at(0).fiveHour->usedPercentage, 60);
    write("a.json", limitsFile("codex", "work", 10, nowSeconds - 10));
    EXPECT_EQ(load().at(0).fiveHour->usedPercentage, 10);
}

TEST_F(LimitsFolder, AWindowPastItsResetIsStillShown) {
    LimitsFile file = limitsFile("claude", "work", 60);
    file.windows["five_hour"].resetsAt = past;
    write("a.json", file);
    EXPECT_EQ(load().at(0).fiveHour,
              (UsageWindow{60, instantFromUnixSeconds(static_cast<double>(past))}));
}

TEST_F(LimitsFolder, AFileWithAFractionalTimeIsPassedOverAndItsStoredEntryNotShown) {
    write("a.json", limitsFile("claude", "work", 60));
    load();
    const LimitsMemory before = memory;
    for (
        const char* bytes :
        {R"({"version":1,"provider":"claude","account":"work","windows":{"five_hour":{"used_percentage":90}},"updated_at":5.5})",
         R"({"version":1,"provider":"claude","account":"work","windows":{"five_hour":{"used_percentage":90,"resets_at":7.5}},"updated_at":5})"}) {
        ASSERT_TRUE(SubscriptionLimits::fromFileData(bytes));
        write("a.json", bytes);
        EXPECT_TRUE(load().empty());
        EXPECT_EQ(memory, before);
    }
}

TEST_F(LimitsFolder, AFileThatCannotBeShownNeverReachesTheMemory) {
    LimitsFile otherVersion = limitsFile("claude", "work", 60);
    otherVersion.version = 2;
    write("a.json", otherVersion);
    write("b.json", limitsFile("claude", "work", 101));
    write("c.json", limitsFile("gemini", "work", 1));
    write("d.json", std::string("not json"));
    write("e.json", std::string());
    wanted.insert("gemini-work");
    EXPECT_TRUE(load().empty());
    EXPECT_TRUE(memory.files.empty());
}

TEST_F(LimitsFolder, WhereNoMergedWindowCanBeShownThereIsNoRecordAndTheEntryStays) {
    LimitsFile stored = limitsFile("claude", "work", 900);
    memory.remember(stored, nowSeconds);
    write("a.json", limitsFile("claude", "work", 40));
    EXPECT_TRUE(load().empty());
    ASSERT_EQ(memory.files.size(), 1U);
    EXPECT_EQ(memory.files.at("claude-work").windows.at("five_hour"),
              (LimitsFile::Window{900, live}));
}

TEST_F(LimitsFolder, AMergedWindowThatCannotBeShownIsDroppedAlone) {
    memory.remember(limitsFile("claude", "work", 900), nowSeconds);
    LimitsFile file = limitsFile("claude", "work", 40);
    file.windows["seven_day"] = {70, live};
    write("a.json", file);
    const auto records = load();
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].fiveHour, std::nullopt);
    EXPECT_EQ(records[0].sevenDay->usedPercentage, 70);
}

TEST_F(LimitsFolder, AStoredCodexEntryOfAnotherVersionIsNotShownWhileItIsTheNewer) {
    LimitsFile stored = limitsFile("codex", "work", 40, nowSeconds);
    stored.version = 7;
    memory.remember(stored, nowSeconds);
    write("a.json", limitsFile("codex", "work", 50, nowSeconds - 1));
    EXPECT_TRUE(load().empty());
    write("a.json", limitsFile("codex", "work", 50, nowSeconds));
    EXPECT_EQ(loadIds(), (Ids{"codex-work"}));
}

TEST_F(LimitsFolder, TwoFilesOfOneAccountBothFeedTheMemoryAndBothGiveARecordInTheOrderOfNames) {
    write("a.json", limitsFile("claude", "work", 40));
    write("b.json", limitsFile("claude", "work", 60));
    const auto rising = load();
    ASSERT_EQ(rising.size(), 2U);
    EXPECT_EQ(rising[0].fiveHour->usedPercentage, 40);
    EXPECT_EQ(rising[1].fiveHour->usedPercentage, 60);
    EXPECT_EQ(memory.files.at("claude-work").windows.at("five_hour").usedPercentage, 60);

    memory = {};
    write("a.json", limitsFile("claude", "work", 60));
    write("b.json", limitsFile("claude", "work", 40));
    const auto falling = load();
    ASSERT_EQ(falling.size(), 2U);
    EXPECT_EQ(falling[0].fiveHour->usedPercentage, 60);
    EXPECT_EQ(falling[1].fiveHour->usedPercentage, 60);
}

TEST_F(LimitsFolder, TheOrderInWhichTheDiskListsNamesChangesNothing) {
    std::vector<std::string> names = {"a.json", "b.json", "c.json", "d.json"};
    write("a.json", limitsFile("claude", "work", 60));
    write("b.json", limitsFile("claude", "work", 40));
    write("c.json", limitsFile("codex", "work", 10));
    write("d.json", limitsFile("claude", "work", 80));
    const auto expected = load();
    const LimitsMemory expectedMemory = memory;
    do {
        memory = {};
        scripted.answerEntries(names);
        EXPECT_EQ(load(), expected);
        EXPECT_EQ(memory, expectedMemory);
    } while (std::next_permutation(names.begin(), names.end()));
}

TEST_F(LimitsFolder, FoldersPipesAndBrokenLinksAreNoFilesAndALinkToAFileIs) {
    std::filesystem::create_directories(folder.file("folder.json"));
    ASSERT_EQ(::mkfifo(folder.file("pipe.json").c_str(), 0600), 0);
    ASSERT_EQ(::symlink("nowhere", folder.file("broken.json").c_str()), 0);
    ASSERT_EQ(::symlink("circle.json", folder.file("circle.json").c_str()), 0);
    ASSERT_EQ(::symlink("/dev/zero", folder.file("device.json").c_str()), 0);
    EXPECT_TRUE(load().empty());
    write("real", limitsFile("claude", "work", 40));
    ASSERT_EQ(::symlink("real", folder.file("link.json").c_str()), 0);
    EXPECT_EQ(loadIds(), (Ids{"claude-work"}));
}

TEST_F(LimitsFolder, AFileOfGigabytesIsPassedOverUnread) {
    write("huge.json", limitsFile("claude", "work", 40));
    std::filesystem::resize_file(folder.file("huge.json"), std::uintmax_t{1} << 33U);
    write("small.json", limitsFile("claude", "home", 40));
    EXPECT_EQ(loadIds(), (Ids{"claude-home"}));
}

TEST_F(LimitsFolder, AFileIsReadUpToItsLimitAndNotBeyond) {
    std::string bytes = limitsFile("claude", "work", 40).encode();
    bytes.append(limitsFileSizeLimit - bytes.size(), ' ');
    write("a.json", bytes);
    EXPECT_EQ(loadIds(), (Ids{"claude-work"}));
    write("a.json", bytes + ' ');
    EXPECT_TRUE(load().empty());
}

TEST_F(LimitsFolder, AMillionOtherEntriesCostLittle) {
    std::vector<std::string> names(1'000'000, "some-other-file.txt");
    names.emplace_back("a.json");
    write("a.json", limitsFile("claude", "work", 40));
    scripted.answerEntries(std::move(names));
    EXPECT_EQ(loadIds(), (Ids{"claude-work"}));
    EXPECT_EQ(scripted.steps().size(), 2U);
}

// The way round by the bytes: what is remembered is encoded and read again.
std::vector<SubscriptionLimits> loadByBytes(LimitsMemory& memory,
                                            const std::vector<std::string>& texts,
                                            const SubscriptionIds& wanted) {
    std::vector<SubscriptionLimits> records;
    for (const std::string& text : texts) {
        const auto read = SubscriptionLimits::fromFileData(text);
        if (!read || wanted.count(read->id()) == 0) continue;
        const auto strict = LimitsFile::decode(text);
        if (!strict) continue;
        const std::string believed = memory.remember(*strict, nowSeconds).encode();
        if (const auto record = SubscriptionLimits::fromFileData(believed)) {
            records.push_back(*record);
        }
    }
    std::stable_sort(records.begin(), records.end(), precedes);
    return records;
}

std::string oneOf(test::Random& random, const std::vector<std::string>& choices) {
    return choices[random.below(choices.size())];
}

// A limits file as text, now and then with something that one of the two readers does not take.
std::string randomText(test::Random& random) {
    const auto number = [&](std::initializer_list<std::string> odd) {
        if (random.oneIn(5)) return oneOf(random, odd);
        return std::to_string(nowSeconds + random.between(-9000, 9000));
    };
    const auto window = [&] {
        const std::string used =
            oneOf(random, {"0", "-0", "12.25", "40", "41.26000000000001", "100", "100.0001", "-1",
                           "1e2", "1e99", "1e999", "5e-324", "null"});
        const std::string reset =
            number({"null", "7.5", "1790000000.0", "179e7", "9223372036854775807",
                    "9007199254740993", "1e999", "9223372036854775808", "-9223372036854775808"});
        return R"({"used_percentage":)" + used +
               (random.oneIn(4) ? "" : R"(,"resets_at":)" + reset) + "}";
    };
    std::string windows;
    for (const char* key : {"five_hour", "seven_day", "other"}) {
        if (random.oneIn(4)) continue;
        windows += (windows.empty() ? "\"" : ",\"") + std::string(key) + "\":" + window();
    }
    return R"({"version":)" + oneOf(random, {"1", "1", "1", "1", "1.0", "2"}) + R"(,"provider":)" +
           oneOf(random, {R"("claude")", R"("codex")", R"("x")"}) + R"(,"account":)" +
           oneOf(random, {R"("work")", R"("home")", R"("\ud800")"}) + R"(,"windows":{)" + windows +
           R"(},"updated_at":)" +
           number({"5.5", "1e999", "9223372036854775807", "9007199254740993", "-0"}) +
           oneOf(random, {"", R"(,"plan_tier":"Plus")", R"(,"plan_tier":null)"}) + "}";
}

TEST_F(LimitsFolder, LoadingEqualsEncodingWhatIsRememberedAndReadingItAgain) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    wanted.insert("claude-\xED\xA0\x80");
    LimitsMemory plainMemory;
    std::size_t recordCount = 0;
    for (int round = 0; round < 500; ++round) {
        if (random.oneIn(10)) memory = plainMemory = {};
        std::vector<std::string> texts;
        for (const char* name : {"1.json", "2.json", "3.json"}) {
            texts.push_back(randomText(random));
            write(name, texts.back());
        }
        const auto records = load();
        recordCount += records.size();
        ASSERT_EQ(records, loadByBytes(plainMemory, texts, wanted)) << texts[0] << '\n'
                                                                    << texts[1] << '\n'
                                                                    << texts[2];
        ASSERT_EQ(memory, plainMemory);
    }
    EXPECT_GT(recordCount, 50U);
}

}  // namespace
}  // namespace brimwatch
