#include "platform/linux/update_choice.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

AppcastItem itemOf(const std::string& version) {
    return {.update = {.version = version, .displayVersion = version, .fileURL = "https://a/b"}};
}

class UpdateChoice : public ::testing::Test {
  protected:
    // Its version, or nothing.
    std::string chosen() const {
        const auto item = chooseUpdate(items_, conditions_);
        return item ? item->update.version : "";
    }

    std::vector<AppcastItem> items_ = {itemOf("57")};
    UpdateConditions conditions_ = {.runningVersion = "50",
                                    .processor = "x86_64",
                                    .now = instantFromUnixSeconds(1'790'000'000)};
};

TEST_F(UpdateChoice, IsTheNewestWhereverItStands) {
    items_ = {itemOf("56"), itemOf("58"), itemOf("57")};
    EXPECT_EQ(chosen(), "58");
    items_ = {};
    EXPECT_EQ(chosen(), "");
}

TEST_F(UpdateChoice, OfTwoOfOneVersionIsTheFirst) {
    items_.push_back(itemOf("57.0"));
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsNeverTheRunningVersionOrAnOlderOne) {
    for (const char* running : {"57", "57.0", "58", "100"}) {
        conditions_.runningVersion = running;
        EXPECT_EQ(chosen(), "") << running;
        conditions_.check = UpdateCheck::byUser;
        EXPECT_EQ(chosen(), "") << running;
    }
    conditions_.runningVersion = "56.9";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsNewerThanWhatIsReady) {
    conditions_.readyVersion = "57";
    EXPECT_EQ(chosen(), "");
    conditions_.readyVersion = "56";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsForThisSystem) {
    for (const char* system : {"macos", "windows", "Linux"}) {
        items_[0].operatingSystem = system;
        EXPECT_EQ(chosen(), "") << system;
    }
    items_[0].operatingSystem = "linux";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsForThisProcessor) {
    items_[0].processor = "arm64";
    EXPECT_EQ(chosen(), "");
    items_[0].processor = "x86_64";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsOnNoOtherChannel) {
    items_[0].channel = "beta_1.2-x";
    EXPECT_EQ(chosen(), "");
    items_[0].channel = "not a channel";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsNoDeltaAndNoPackage) {
    items_[0].update.isDeltaUpdate = true;
    EXPECT_EQ(chosen(), "");
    items_[0].update.isDeltaUpdate = false;
    items_[0].installationType = "package";
    EXPECT_EQ(chosen(), "");
    items_[0].installationType = "application";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsNotSeenBelowItsMinimumVersion) {
    items_[0].minimumUpdateVersion = "51";
    EXPECT_EQ(chosen(), "");
    items_[0].minimumUpdateVersion = "50";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, IsAMajorUpgradeOnlyWhereThereIsNothingElse) {
    items_ = {itemOf("60"), itemOf("57")};
    items_[0].minimumAutoupdateVersion = "55";
    EXPECT_EQ(chosen(), "57");
    conditions_.runningVersion = "55";
    EXPECT_EQ(chosen(), "60");
    conditions_.runningVersion = "50";
    items_.pop_back();
    EXPECT_EQ(chosen(), "60");
    EXPECT_FALSE(isSilentFor(items_[0], "50"));
    EXPECT_TRUE(isSilentFor(items_[0], "55"));
}

TEST_F(UpdateChoice, PassesOverWhatWasSkippedUnlessTheUserAsks) {
    conditions_.skippedVersion = "57";
    EXPECT_EQ(chosen(), "");
    conditions_.check = UpdateCheck::byUser;
    EXPECT_EQ(chosen(), "57");
    conditions_.check = UpdateCheck::inBackground;
    conditions_.skippedVersion = "56";
    EXPECT_EQ(chosen(), "57");
    conditions_.skippedVersion = "58";
    EXPECT_EQ(chosen(), "");
}

TEST_F(UpdateChoice, MayUndoTheSkipping) {
    conditions_.skippedVersion = "57";
    items_[0].ignoreSkippedUpgradesBelowVersion = "57";
    EXPECT_EQ(chosen(), "");
    items_[0].ignoreSkippedUpgradesBelowVersion = "57.1";
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, ComesToEachGroupInItsTurn) {
    items_[0].published = conditions_.now;
    items_[0].phasedRolloutIntervalSeconds = 100;
    const auto after = [&](std::uint32_t group, double secondsPassed) {
        conditions_.rolloutGroup = group;
        conditions_.now = *items_[0].published + std::chrono::duration<double>(secondsPassed);
        return chosen() == "57";
    };
    EXPECT_TRUE(after(0, 0));
    EXPECT_TRUE(after(7, 0));
    EXPECT_FALSE(after(0, -1));
    EXPECT_FALSE(after(1, 99));
    EXPECT_TRUE(after(1, 100));
    EXPECT_FALSE(after(13, 599));
    EXPECT_TRUE(after(13, 600));
    EXPECT_FALSE(after(4'294'967'295, 299));
    EXPECT_TRUE(after(4'294'967'295, 300));
}

TEST_F(UpdateChoice, ARolloutDoesNotHoldBackWhoAsksNorWhatIsCritical) {
    items_[0].published = conditions_.now;
    items_[0].phasedRolloutIntervalSeconds = 100;
    conditions_.rolloutGroup = 6;
    EXPECT_EQ(chosen(), "");
    conditions_.check = UpdateCheck::byUser;
    EXPECT_EQ(chosen(), "57");
    conditions_.check = UpdateCheck::inBackground;
    items_[0].isCritical = true;
    EXPECT_EQ(chosen(), "57");
    items_[0].criticalBelowVersion = "50";
    EXPECT_EQ(chosen(), "");
}

TEST_F(UpdateChoice, ARolloutTakesADateAndAnInterval) {
    conditions_.rolloutGroup = 6;
    items_[0].published = conditions_.now;
    EXPECT_EQ(chosen(), "57");
    items_[0] = itemOf("57");
    items_[0].phasedRolloutIntervalSeconds = 100;
    EXPECT_EQ(chosen(), "57");
}

TEST_F(UpdateChoice, WhatIsCriticalIsCriticalBelowAVersion) {
    AppcastItem item = itemOf("57");
    EXPECT_FALSE(isCriticalFor(item, "50"));
    EXPECT_TRUE(isSilentFor(item, "50"));
    item.isCritical = true;
    EXPECT_TRUE(isCriticalFor(item, "50"));
    EXPECT_FALSE(isSilentFor(item, "50"));
    item.criticalBelowVersion = "50";
    EXPECT_FALSE(isCriticalFor(item, "50"));
    EXPECT_TRUE(isCriticalFor(item, "49"));
}

TEST_F(UpdateChoice, WhatIsInformationalIsSoForSomeVersions) {
    AppcastItem item = itemOf("57");
    EXPECT_FALSE(isInformationalFor(item, "50"));
    item.informationalVersions = {"50"};
    EXPECT_FALSE(isInformationalFor(item, "50"));
    item.isInformational = true;
    EXPECT_TRUE(isInformationalFor(item, "50.0"));
    EXPECT_FALSE(isSilentFor(item, "50"));
    EXPECT_FALSE(isInformationalFor(item, "51"));
    item.informationalBelowVersions = {"40"};
    EXPECT_TRUE(isInformationalFor(item, "39"));
    EXPECT_FALSE(isInformationalFor(item, "40"));
    item.informationalVersions = {};
    item.informationalBelowVersions = {};
    EXPECT_TRUE(isInformationalFor(item, "99"));
}

}  // namespace
}  // namespace brimwatch
