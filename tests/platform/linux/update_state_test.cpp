#include "platform/linux/update_state.h"

#include <gtest/gtest.h>

#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

class UpdateStateTest : public ::testing::Test {
  protected:
    std::string path() const { return folder_.file("updates.json"); }

    PosixFileSystem files_;
    test::TemporaryFolder folder_;
};

TEST_F(UpdateStateTest, AtFirstChecksAreOnAndDownloadsAreOff) {
    UpdateState state(files_, folder_.path());
    EXPECT_TRUE(state.automaticallyChecks());
    EXPECT_FALSE(state.automaticallyDownloads());
    EXPECT_EQ(state.lastCheck(), std::nullopt);
    EXPECT_EQ(state.skippedVersion(), std::nullopt);
}

TEST_F(UpdateStateTest, IsThereAgainInTheNextRun) {
    std::uint32_t group = 0;
    {
        UpdateState state(files_, folder_.path());
        state.setAutomaticallyChecks(false);
        state.setAutomaticallyDownloads(true);
        state.setLastCheck(instantFromUnixSeconds(1'790'000'000.7));
        state.setSkippedVersion("57");
        group = state.rolloutGroup();
    }
    UpdateState state(files_, folder_.path());
    EXPECT_FALSE(state.automaticallyChecks());
    EXPECT_TRUE(state.automaticallyDownloads());
    EXPECT_EQ(state.lastCheck(), instantFromUnixSeconds(1'790'000'000));
    EXPECT_EQ(state.skippedVersion(), "57");
    EXPECT_EQ(state.rolloutGroup(), group);
}

TEST_F(UpdateStateTest, EachInstallationHasAGroupOfItsOwn) {
    std::set<std::uint32_t> groups;
    for (int count = 0; count < 5; ++count)
        groups.insert(UpdateState(files_, folder_.file(std::to_string(count))).rolloutGroup());
    EXPECT_GT(groups.size(), 1U);
}

TEST_F(UpdateStateTest, WhatIsDamagedOrOfAnotherTypeCountsAsAbsent) {
    for (const char* text : {"", "{", "[]", "null",
                             R"({"automaticallyChecksForUpdates":1,"skippedVersion":2,)"
                             R"("automaticallyDownloadsUpdates":"x","lastCheckTime":"now",)"
                             R"("updateGroupIdentifier":null})"}) {
        test::writeFile(path(), text);
        UpdateState state(files_, folder_.path());
        EXPECT_TRUE(state.automaticallyChecks()) << text;
        EXPECT_FALSE(state.automaticallyDownloads()) << text;
        EXPECT_EQ(state.lastCheck(), std::nullopt) << text;
        EXPECT_EQ(state.skippedVersion(), std::nullopt) << text;
    }
}

TEST_F(UpdateStateTest, TakesAnyNumberForATime) {
    for (const char* number : {"-9223372036854775808", "9223372036854775807", "0"}) {
        test::writeFile(path(), "{\"lastCheckTime\":" + std::string(number) + "}");
        EXPECT_TRUE(UpdateState(files_, folder_.path()).lastCheck()) << number;
    }
}

}  // namespace
}  // namespace brimwatch
