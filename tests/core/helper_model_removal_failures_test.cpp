// A removal in which each step fails, alone and together with every other, and the press after it.

#include <gmock/gmock.h>

#include <array>

#include "harness/temporary_folder.h"
#include "publish/key_items.h"
#include "removal_world.h"

namespace brimwatch {
namespace {

using test::RemovalWorld;
using Calls = test::ScriptedRecordDatabase::Kind;

constexpr const char* partly = "일부를 해제하지 못했어요. 다시 눌러 주세요.";
constexpr const char* loginFailure = "로그인할 때 열기를 바꾸지 못했어요: ";
constexpr int noNetwork = 3;
constexpr int noService = 6;

struct Faults {
    unsigned folders = 0;  // a bit for each of the three
    std::optional<Calls> cloud = {};
    std::optional<Calls> phone = {};
    bool login = false;
};

class FailingRemoval : public RemovalWorld {
  public:
    void fail(const Faults& faults) {
        for (std::size_t i = 0; i < connectedNames().size(); ++i) {
            if (isFailing(faults, i)) lockSettings(path(connectedNames()[i]));
        }
        if (faults.cloud) cloudRecords_.errors[*faults.cloud] = {test::cloudError(noNetwork)};
        if (faults.phone) phoneRecords_.errors[*faults.phone] = {test::cloudError(noService)};
        if (faults.login) {
            services_.login.error = std::make_error_code(std::errc::permission_denied);
        }
    }
    void heal() {
        files_.failNothing();
        services_.login.error.reset();
    }

    void expectOutcome(const Faults& faults) {
        std::string lines;
        for (std::size_t i = 0; i < connectedNames().size(); ++i) {
            EXPECT_EQ(isRegistered(path(connectedNames()[i])), isFailing(faults, i)) << i;
            if (!isFailing(faults, i)) continue;
            lines += std::string("\n") + connectedNames()[i].back() + ": " +
                     test::messageOf(std::errc::no_space_on_device);
        }
        if (faults.cloud) lines += "\niPhone으로 보낸 값: 설명 3";
        if (faults.phone) lines += "\n안드로이드로 보낸 값: 설명 6";
        std::optional<std::string> text;
        if (faults.login) text = loginFailure + test::messageOf(std::errc::permission_denied);
        if (!lines.empty()) text = partly + lines;
        EXPECT_EQ(model().failure(), text);
        EXPECT_EQ(model().removedEverything(), lines.empty());
        EXPECT_EQ(hasCloudShare(), faults.cloud.has_value());
        EXPECT_EQ(hasPhoneShare(), faults.phone.has_value());
        EXPECT_EQ(services_.login.enabled, faults.login);
        EXPECT_EQ(model().launchAtLogin(), faults.login);
        EXPECT_TRUE(model().claudeUsagePaused());
        EXPECT_FALSE(model().cloud().isEnabled());
        EXPECT_TRUE(model().phone().isPaused());
        EXPECT_EQ(statusLine(path(".claude-own")), "~/bin/mine");
        expectAllDown();
    }

  private:
    static bool isFailing(const Faults& faults, std::size_t folder) {
        return (faults.folders >> folder & 1U) != 0;
    }
};

void run(const Faults& faults) {
    FailingRemoval world;
    world.startSent();
    world.fail(faults);
    world.removeAll();
    world.expectOutcome(faults);
    world.heal();
    world.removeAll();
    world.expectOutcome({});
    world.restart();
    world.drain(RemovalWorld::Order::cloudFirst);
    EXPECT_EQ(world.model().failure(), std::nullopt);
    EXPECT_FALSE(world.hasCloudShare());
    EXPECT_FALSE(world.hasPhoneShare());
    EXPECT_TRUE(world.model().claudeUsagePaused());
    EXPECT_FALSE(world.model().launchAtLogin());
    world.expectAllDown();
}

constexpr std::array<std::optional<Calls>, 4> faultsOfChannels = {
    std::nullopt, Calls::accountStatus, Calls::fetch, Calls::save};

class HelperModelRemovalFailures : public ::testing::TestWithParam<int> {
    const test::FoldersInMemory inMemory_;
};

TEST_P(HelperModelRemovalFailures, AreNamedOneByOneAndMendedByTheNextPress) {
    const std::optional<Calls> cloud = faultsOfChannels.at(static_cast<std::size_t>(GetParam()));
    for (const std::optional<Calls>& phone : faultsOfChannels) {
        for (unsigned folders = 0; folders < 8 && !HasFailure(); ++folders) {
            for (const bool login : {false, true}) {
                SCOPED_TRACE(::testing::Message()
                             << "folders " << folders << ", phone "
                             << (phone ? static_cast<int>(*phone) : -1) << ", login " << login);
                run({.folders = folders, .cloud = cloud, .phone = phone, .login = login});
            }
        }
    }
}

constexpr std::array nameOfFault = {"ThatWorks", "ThatKnowsNobody", "ThatGivesNothing",
                                    "ThatTakesNothing"};

INSTANTIATE_TEST_SUITE_P(WithACloud, HelperModelRemovalFailures, ::testing::Range(0, 4),
                         [](const auto& fault) {
                             return nameOfFault.at(static_cast<std::size_t>(fault.param));
                         });

class HelperModelFailingRemoval : public FailingRemoval {};

TEST_F(HelperModelFailingRemoval, AfterOneThatSucceededIsNoSuccess) {
    startSent();
    removeAll();
    ASSERT_TRUE(model().removedEverything());
    fail({.phone = Calls::accountStatus});
    removeAll();
    EXPECT_FALSE(model().removedEverything());
    EXPECT_EQ(model().failure(), partly + std::string("\n안드로이드로 보낸 값: 설명 6"));
}

TEST_F(HelperModelFailingRemoval, TakesALockedKeyForNoneAndTakesBackAtTheNextPress) {
    startSent();
    keys_.answer = [](const std::string& /*call*/) { return key_status::interactionNotAllowed; };
    removeAll();
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_TRUE(hasCloudShare());
    EXPECT_FALSE(hasPhoneShare()) << "that key was read before";
    keys_.answer = nullptr;
    removeAll();
    expectOutcome({});
}

TEST_F(HelperModelFailingRemoval, NeverOverwritesARecordThatCanNotBeRead) {
    startSent();
    const std::string name = LimitsCloud::recordName(cloudKey_);
    cloudRecords_.put(name, "not a record");
    removeAll();
    EXPECT_FALSE(model().removedEverything());
    EXPECT_EQ(cloudRecords_.records.at(name).payload, "not a record");
    EXPECT_FALSE(hasPhoneShare());
}

TEST_F(HelperModelFailingRemoval, WithoutAnyKeyHasNothingToTakeBack) {
    keys_.values.clear();
    defaults_.put("cloudEnabled", "false");
    restart();
    settle();
    removeAll();
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_EQ(cloudRecords_.calls().size() + phoneRecords_.calls().size(), 0U);
    EXPECT_TRUE(keys_.values.empty());
}

TEST_F(HelperModelFailingRemoval, OfAFullDiskForSettingsStillGoesThroughEverything) {
    startSent();
    defaults_.error = std::make_error_code(std::errc::no_space_on_device);
    removeAll();
    expectOutcome({});
}

TEST_F(HelperModelFailingRemoval, GoesOnWhileTheProgramEnds) {
    startSent();
    holdCalls();
    removeEverything();
    time_.cancelSleeps();
    drain(Order::cloudFirst);
    expectOutcome({});
}

TEST_F(HelperModelFailingRemoval, IsUndoneByConnectingAgain) {
    startSent();
    removeAll();
    model().connectClaude();
    drain(Order::cloudFirst);
    EXPECT_FALSE(model().removedEverything());
    EXPECT_TRUE(isRegistered(path(".claude-a")));
    EXPECT_TRUE(model().cloud().isEnabled());
    EXPECT_TRUE(hasCloudShare());
    EXPECT_FALSE(hasPhoneShare()) << "the link goes on when it is shown";
    removeAll();
    EXPECT_TRUE(model().removedEverything());
    EXPECT_FALSE(hasCloudShare());
}

TEST_F(HelperModelFailingRemoval, LeavesTheCloudOffWhereNothingCouldBeConnected) {
    startSent();
    removeAll();
    for (const char* name : {".claude-a", ".claude-b", ".claude-c", ".claude-own"})
        lockSettings(path(name));
    model().connectClaude();
    drain(Order::cloudFirst);
    EXPECT_TRUE(model().removedEverything());
    EXPECT_FALSE(model().cloud().isEnabled());
    EXPECT_FALSE(hasCloudShare());
}

}  // namespace
}  // namespace brimwatch
