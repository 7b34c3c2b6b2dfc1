#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "harness/random.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "limits/limits_file.h"
#include "limits/limits_memory.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr std::int64_t now = 1'790'000'000;

class LimitsFileWriter : public ::testing::Test {
  protected:
    LimitsFile::WriteRequest request(LimitsFile::Windows windows,
                                     std::int64_t seconds = now) const {
        return {.provider = "claude",
                .account = "work",
                .windows = std::move(windows),
                .planTier = std::nullopt,
                .minimumIntervalSeconds = 300,
                .mergingExisting = true,
                .now = instantFromUnixSeconds(static_cast<double>(seconds) + 0.9),
                .folder = limits_,
                .lockWait = LockWait::untilFree};
    }

    bool write(const LimitsFile::WriteRequest& request) {
        const FileResult<bool> result = LimitsFile::write(files_, request);
        EXPECT_TRUE(result) << result.error().message();
        return result.value_or(false);
    }

    LimitsFile stored() const {
        const auto file = LimitsFile::decode(test::readFile(path_));
        EXPECT_TRUE(file);
        return file.value_or(LimitsFile{});
    }

    std::vector<std::string> names() {
        std::vector<std::string> names =
            files_.entries(limits_).value_or(std::vector<std::string>{});
        std::sort(names.begin(), names.end());
        return names;
    }

    test::TemporaryFolder folder_;
    std::string limits_ = folder_.file("home/.brimwatch/limits");
    std::string path_ = limits_ + "/claude-work.json";
    PosixFileSystem files_;
};

LimitsFile::Windows fiveHour(double used, std::int64_t resetsAt = now + 7200) {
    return {{"five_hour", {used, resetsAt}}};
}

TEST_F(LimitsFileWriter, MakesTheFolderTheLockAndTheFile) {
    EXPECT_TRUE(write(request(fiveHour(40))));
    EXPECT_EQ(names(), (std::vector<std::string>{".lock", "claude-work.json"}));
    EXPECT_EQ(test::readFile(limits_ + "/.lock"), "");
    EXPECT_EQ(stored(), (LimitsFile{.version = 1,
                                    .provider = "claude",
                                    .account = "work",
                                    .windows = fiveHour(40),
                                    .updatedAt = now,
                                    .planTier = std::nullopt}));
}

TEST_F(LimitsFileWriter, MakesTheLockWithModeReadableByAll) {
    const mode_t mask = ::umask(0);
    write(request(fiveHour(40)));
    ::umask(mask);
    EXPECT_EQ(files_.status(limits_ + "/.lock")->permissions, 0644U);
}

TEST_F(LimitsFileWriter, EqualFiguresAreWrittenAgainAfterTheIntervalOnly) {
    write(request(fiveHour(40)));
    EXPECT_FALSE(write(request(fiveHour(40), now + 299)));
    EXPECT_EQ(stored().updatedAt, now);
    EXPECT_TRUE(write(request(fiveHour(40), now + 300)));
    EXPECT_EQ(stored().updatedAt, now + 300);
}

TEST_F(LimitsFileWriter, WithoutAnIntervalEqualFiguresAreAlwaysWritten) {
    LimitsFile::WriteRequest codex = request(fiveHour(40));
    codex.minimumIntervalSeconds = 0;
    codex.mergingExisting = false;
    EXPECT_TRUE(write(codex));
    EXPECT_TRUE(write(codex));
}

TEST_F(LimitsFileWriter, AStoredTimeOfTheFutureCountsAsFresh) {
    write(request(fiveHour(40), now + 5000));
    EXPECT_FALSE(write(request(fiveHour(40), now)));
    EXPECT_TRUE(write(request(fiveHour(41), now)));
    EXPECT_EQ(stored().updatedAt, now);
}

TEST_F(LimitsFileWriter, APlanChangeIsWrittenAtOnce) {
    LimitsFile::WriteRequest codex = request(fiveHour(40));
    codex.mergingExisting = false;
    write(codex);
    EXPECT_FALSE(write(codex));
    codex.planTier = "Plus";
    EXPECT_TRUE(write(codex));
    codex.planTier.reset();
    EXPECT_TRUE(write(codex));
    EXPECT_EQ(stored().planTier, std::nullopt);
}

TEST_F(LimitsFileWriter, ALowerFigureOfTheSameCycleIsNotWritten) {
    write(request(fiveHour(40)));
    EXPECT_FALSE(write(request(fiveHour(30, now + 7210), now + 1000)));
    EXPECT_EQ(stored().windows, fiveHour(40));
}

TEST_F(LimitsFileWriter, AReportPastItsResetIsNotWrittenOverALiveOne) {
    write(request(fiveHour(40)));
    EXPECT_FALSE(write(request(fiveHour(90, now - 10), now + 1000)));
    EXPECT_EQ(stored().windows, fiveHour(40));
}

TEST_F(LimitsFileWriter, WithoutMergingALowerFigureReplacesTheStoredOnes) {
    write(request({{"five_hour", {40, now + 7200}}, {"seven_day", {50, now + 7200}}}));
    LimitsFile::WriteRequest codex = request(fiveHour(30));
    codex.mergingExisting = false;
    EXPECT_TRUE(write(codex));
    EXPECT_EQ(stored().windows, fiveHour(30));
}

TEST_F(LimitsFileWriter, AWindowThatIsNoLongerReportedStays) {
    write(request({{"five_hour", {40, now + 7200}}, {"seven_day", {50, now + 7200}}}));
    EXPECT_TRUE(write(request(fiveHour(41))));
    EXPECT_EQ(stored().windows.at("seven_day").usedPercentage, 50);
}

TEST_F(LimitsFileWriter, AnExtraWindowKeySurvivesARewrite) {
    test::writeFile(path_, R"({"version":1,"provider":"claude","account":"work","updated_at":5,
        "windows":{"seven_day_opus":{"used_percentage":33.25,"resets_at":7}}})");
    EXPECT_TRUE(write(request(fiveHour(41))));
    EXPECT_EQ(stored().windows.at("seven_day_opus"), (LimitsFile::Window{33.25, 7}));
}

TEST_F(LimitsFileWriter, WhatCantBeDecodedCountsAsNoFileAndIsReplaced) {
    for (const char* bytes : {"", "{", "[]", "\xFF",
                              R"({"version":1,"provider":"claude","account":"work","windows":
                                 {"five_hour":{"used_percentage":99,"resets_at":1790007200}},
                                 "updated_at":1790000000.5})"}) {
        test::writeFile(path_, bytes);
        EXPECT_TRUE(write(request(fiveHour(40))));
        EXPECT_EQ(stored().windows, fiveHour(40));
    }
}

TEST_F(LimitsFileWriter, AFolderInPlaceOfTheFileMakesTheWriteFail) {
    std::filesystem::create_directories(path_);
    EXPECT_FALSE(LimitsFile::write(files_, request(fiveHour(40))));
    EXPECT_EQ(names(), (std::vector<std::string>{".lock", "claude-work.json"}));
}

TEST_F(LimitsFileWriter, AFileInPlaceOfTheFolderMakesTheWriteFail) {
    test::writeFile(limits_, "x");
    EXPECT_FALSE(LimitsFile::write(files_, request(fiveHour(40))));
    EXPECT_EQ(test::readFile(limits_), "x");
}

TEST_F(LimitsFileWriter, AFolderThatCantBeMadeMakesTheWriteFail) {
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(0, std::errc::permission_denied);
    const FileResult<bool> result = LimitsFile::write(failing, request(fiveHour(40)));
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), std::errc::permission_denied);
    EXPECT_FALSE(test::exists(limits_));
}

TEST_F(LimitsFileWriter, ALockThatCantBeOpenedDoesNotLoseTheFigures) {
    std::filesystem::create_directories(limits_ + "/.lock");
    EXPECT_TRUE(write(request(fiveHour(40))));
    EXPECT_EQ(stored().windows, fiveHour(40));
}

TEST_F(LimitsFileWriter, WithoutTheLockNothingIsTidiedUpSinceNobodyElseIsKeptOut) {
    std::filesystem::create_directories(limits_ + "/.lock");
    test::ScriptedFileSystem recording(files_);
    ASSERT_TRUE(LimitsFile::write(recording, request(fiveHour(40))));
    for (const std::string& step : recording.steps()) {
        EXPECT_FALSE(step.starts_with("removeAbandoned")) << step;
    }
}

TEST_F(LimitsFileWriter, AFileBeyondAMebibyteCountsAsNoFile) {
    write(request(fiveHour(90)));
    test::writeFile(path_, stored().encode() + std::string(1U << 20U, ' '));
    EXPECT_TRUE(write(request(fiveHour(40))));
    EXPECT_EQ(stored().windows, fiveHour(40));
}

TEST_F(LimitsFileWriter, APipeInPlaceOfTheFileOrTheLockIsNotWaitedFor) {
    std::filesystem::create_directories(limits_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo((limits_ + "/.lock").c_str(), 0600), 0);
    EXPECT_TRUE(write(request(fiveHour(40))));
    EXPECT_EQ(stored().windows, fiveHour(40));
}

TEST_F(LimitsFileWriter, TheApplicationWaitsTwoSecondsForAStoppedWriter) {
    std::filesystem::create_directories(limits_);
    const auto held = files_.lock(limits_ + "/.lock", LockWait::untilFree);
    LimitsFile::WriteRequest codex = request(fiveHour(40));
    codex.lockWait = LockWait::atMostTwoSeconds;
    EXPECT_TRUE(write(codex));
    EXPECT_EQ(stored().windows, fiveHour(40));
}

// Whichever step fails, and however: the stored file is the old one or the new one, what counts
// as failed was not written, and nothing is left lying about.
TEST_F(LimitsFileWriter, AFailureAtAnyStepLeavesTheOldFileOrTheNewOne) {
    write(request(fiveHour(40)));
    const LimitsFile old = stored();
    test::ScriptedFileSystem counting(files_);
    ASSERT_TRUE(LimitsFile::write(counting, request(fiveHour(41))));
    const std::size_t steps = counting.steps().size();
    ASSERT_GE(steps, 6U);
    for (const std::errc error : {std::errc::no_space_on_device, std::errc::permission_denied,
                                  std::errc::read_only_file_system, std::errc::io_error,
                                  std::errc::too_many_files_open, std::errc::file_too_large}) {
        for (std::size_t step = 0; step < steps; ++step) {
            test::writeFile(path_, old.encode());
            test::ScriptedFileSystem failing(files_);
            failing.failAtStep(step, error);
            const FileResult<bool> result = LimitsFile::write(failing, request(fiveHour(41)));
            const LimitsFile after = stored();
            EXPECT_EQ(after.windows, result ? fiveHour(41) : old.windows) << failing.steps().back();
            EXPECT_EQ(names(), (std::vector<std::string>{".lock", "claude-work.json"}));
        }
    }
}

TEST_F(LimitsFileWriter, AProcessThatDiesAtAnyStepLeavesTheOldFileOrTheNewOneAndNoLock) {
    write(request(fiveHour(40)));
    const LimitsFile old = stored();
    bool died = true;
    for (std::size_t step = 0; died; ++step) {
        test::writeFile(path_, old.encode());
        died = test::isStopped([&] {
            test::ScriptedFileSystem stopping(files_);
            stopping.stopAtStep(step);
            static_cast<void>(LimitsFile::write(stopping, request(fiveHour(41))));
        });
        const LimitsFile after = stored();
        EXPECT_TRUE(after == old || after.windows == fiveHour(41)) << step;
        EXPECT_TRUE(write(request(fiveHour(42), now + 1000)));
        EXPECT_EQ(names(), (std::vector<std::string>{".lock", "claude-work.json"})) << step;
    }
}

TEST_F(LimitsFileWriter, TheTemporaryFileOfALivingWriterIsLeftAlone) {
    write(request(fiveHour(40)));
    const auto other = files_.makeTemporary(limits_, 0644);
    ASSERT_TRUE(other);
    write(request(fiveHour(41)));
    EXPECT_EQ(names().size(), 3U);
    EXPECT_TRUE((*other)->replace(limits_ + "/other.json"));
}

TEST_F(LimitsFileWriter, TheUnchangedCaseReadsOneFileAndWritesNone) {
    write(request(fiveHour(40)));
    test::ScriptedFileSystem recording(files_);
    ASSERT_FALSE(*LimitsFile::write(recording, request(fiveHour(40), now + 10)));
    EXPECT_EQ(recording.steps(),
              (std::vector<std::string>{"makeFolders " + limits_,
                                        "lock until free " + limits_ + "/.lock", "read " + path_}));
}

// A history of reports, told to the writer and to a plain model of it.
TEST_F(LimitsFileWriter, AgreesWithAPlainModelOverRandomHistories) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    std::optional<LimitsFile> model;
    std::int64_t time = now;
    for (int round = 0; round < 5'000; ++round) {
        time += random.between(0, 399);
        const std::int64_t resetsAt = time - 2000 + random.between(0, 3) * 3000;
        LimitsFile::WriteRequest next =
            request(fiveHour(static_cast<double>(random.below(4)) * 10, resetsAt), time);
        next.mergingExisting = !random.oneIn(4);
        next.minimumIntervalSeconds = random.oneIn(3) ? 0 : 300;
        if (random.oneIn(5)) next.planTier = "Pro";

        bool expected = true;
        LimitsFile::Windows windows = next.windows;
        if (model && next.mergingExisting) {
            const auto merged = LimitsMemory::merge(model->windows, next.windows, time);
            expected = merged.changed;
            windows = merged.windows;
        }
        if (model && windows == model->windows && next.planTier == model->planTier &&
            time - model->updatedAt < next.minimumIntervalSeconds) {
            expected = false;
        }
        if (expected) {
            model = LimitsFile{1, next.provider, next.account, windows, time, next.planTier};
        }
        ASSERT_EQ(write(next), expected) << round;
        ASSERT_EQ(stored(), *model) << round;
    }
}

}  // namespace
}  // namespace brimwatch
