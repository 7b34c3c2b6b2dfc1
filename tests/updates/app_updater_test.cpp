#include "updates/app_updater.h"

#include <gmock/gmock.h>

#include <memory>

#include "core/virtual_time.h"
#include "platform/linux/scripted_key_store.h"
#include "updates/mac_private_update_keychain_store.h"
#include "updates/private_update_info.h"
#include "updates/scripted_update_engine.h"

namespace brimwatch {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* feed = "https://updates.example.net/brimwatch/mac/testing/appcast.xml";
constexpr const char* download = "https://updates.example.net/brimwatch/mac/Brimwatch-1.4.2-57.dmg";
constexpr const char* refusal = "Private update contains an unsupported URL or delta.";

UpdateItem goodItem() {
    return {.version = "57", .displayVersion = "1.4.2", .fileURL = download};
}

class AppUpdaterTest : public ::testing::Test {
  protected:
    void SetUp() override { info_.updateHost = "updates.example.net"; }

    void storeCredentials() {
        MacPrivateUpdateKeychainStore(keys_, info_)
            .save({.username = "me", .password = SecretBytes("secret")});
    }
    void make() {
        updater_.emplace(AppUpdater::Surroundings{
            .keys = keys_,
            .info = info_,
            .makeEngine =
                [this](UpdateDelegate& delegate) {
                    delegate_ = &delegate;
                    auto engine = std::make_unique<test::ScriptedUpdateEngine>(record_);
                    engine_ = engine.get();
                    return engine;
                },
            .sleep = time_.sleeper(),
            .activateApplication = [this] { record_.calls.emplace_back("activate"); }});
    }
    void makePrivate() {
        storeCredentials();
        make();
    }
    bool proceeds(const UpdateItem& item) {
        const auto answer = delegate_->shouldProceed(item, UpdateCheck::inBackground);
        if (!answer) {
            EXPECT_EQ(answer.error(), refusal);
        }
        EXPECT_EQ(delegate_->shouldProceed(item, UpdateCheck::byUser).has_value(),
                  answer.has_value());
        return answer.has_value();
    }
    UpdateRequest prepared(const UpdateItem& item, const std::string& url) {
        UpdateRequest request{.url = url, .headers = {{"Authorization", "old"}, {"X", "y"}}};
        delegate_->willDownload(item, request);
        return request;
    }
    void handOver(const std::string& name) {
        EXPECT_TRUE(
            delegate_->willInstallOnQuit(goodItem(), [this, name] { installed_.push_back(name); }));
    }

    BundleInfo info_ = test::privateUpdateInfo();
    test::ScriptedKeyStore keys_;
    test::VirtualTime time_{instantFromUnixSeconds(1'790'000'000)};
    test::ScriptedUpdateEngine::Record record_;
    std::vector<std::string> installed_;
    UpdateDelegate* delegate_ = nullptr;
    test::ScriptedUpdateEngine* engine_ = nullptr;
    std::optional<AppUpdater> updater_;
};

// The items that private mode refuses for more than their address.
std::vector<UpdateItem> itemsWithExtras() {
    std::vector<UpdateItem> items(5, goodItem());
    items[0].infoURL = "https://updates.example.net/";
    items[1].releaseNotesURL = "https://updates.example.net/notes.html";
    items[2].fullReleaseNotesURL = "https://updates.example.net/all.html";
    items[3].isDeltaUpdate = true;
    items[4].deltaUpdates = {"56"};
    return items;
}

TEST_F(AppUpdaterTest, StartsTheEngineAfterItsHeadersAndSettings) {
    makePrivate();
    EXPECT_THAT(record_.calls,
                ElementsAre("headers", "interval 3600", "checks", "downloads not", "start"));
    EXPECT_THAT(record_.headers, ElementsAre(std::pair("Authorization", "Basic bWU6c2VjcmV0")));
}

TEST_F(AppUpdaterTest, WithoutCredentialsStartsTheEngineAsItIs) {
    make();
    EXPECT_TRUE(updater_->isAvailable());
    EXPECT_THAT(record_.calls, ElementsAre("checks", "downloads not", "start"));
    EXPECT_THAT(record_.headers, IsEmpty());
}

TEST_F(AppUpdaterTest, IsNotAvailableWithoutAGroup) {
    info_.privateUpdatesKeychainGroup = "";
    make();
    EXPECT_FALSE(updater_->isAvailable());
    EXPECT_EQ(updater_->unavailability(), std::nullopt);
    EXPECT_TRUE(updater_->automaticallyUpdates());
    EXPECT_EQ(engine_, nullptr);
}

TEST_F(AppUpdaterTest, IsNotAvailableWhereTheCredentialsCantBeRead) {
    keys_.answer = [](const std::string&) { return key_status::interactionNotAllowed; };
    make();
    EXPECT_FALSE(updater_->isAvailable());
    EXPECT_EQ(engine_, nullptr);
    updater_->setAutomaticallyUpdates(false);
    updater_->checkForUpdates();
    updater_->install();
    updater_->skip();
    EXPECT_EQ(updater_->status(), UpdateStatus());
    EXPECT_THAT(record_.calls, ElementsAre("activate"));
}

TEST_F(AppUpdaterTest, IsNotAvailableWhereTheCredentialsAreDamaged) {
    storeCredentials();
    keys_.values.begin()->second = SecretBytes("{");
    make();
    EXPECT_FALSE(updater_->isAvailable());
}

TEST_F(AppUpdaterTest, IsNotAvailableWhereTheEngineHasNothingToUpdate) {
    record_.unavailability = UpdateUnavailability::managedElsewhere;
    makePrivate();
    EXPECT_FALSE(updater_->isAvailable());
    EXPECT_EQ(updater_->unavailability(), UpdateUnavailability::managedElsewhere);
    updater_->setAutomaticallyUpdates(false);
    updater_->checkForUpdates();
    EXPECT_THAT(record_.calls, ElementsAre("activate"));
}

TEST_F(AppUpdaterTest, ReadsTheCredentialsOnceAtItsStart) {
    make();
    storeCredentials();
    EXPECT_EQ(delegate_->feedURL(), std::nullopt);
    EXPECT_EQ(std::count(keys_.calls.begin(), keys_.calls.end(), "copy"), 1);
}

TEST_F(AppUpdaterTest, TakesTheSettingFromTheEngineThatKeepsIt) {
    record_.automaticallyDownloads = true;
    make();
    EXPECT_TRUE(updater_->automaticallyUpdates());
    record_.automaticallyDownloads = false;
    make();
    EXPECT_FALSE(updater_->automaticallyUpdates());
}

TEST_F(AppUpdaterTest, SwitchedOffItGoesOnLookingForUpdates) {
    record_.automaticallyDownloads = true;
    make();
    int changes = 0;
    QObject::connect(&*updater_, &AppUpdater::automaticallyUpdatesChanged, [&] { ++changes; });
    record_.automaticallyChecks = false;
    updater_->setAutomaticallyUpdates(false);
    EXPECT_TRUE(record_.automaticallyChecks);
    EXPECT_FALSE(record_.automaticallyDownloads);
    updater_->setAutomaticallyUpdates(false);
    EXPECT_EQ(changes, 1);
    updater_->setAutomaticallyUpdates(true);
    EXPECT_TRUE(record_.automaticallyDownloads);
    EXPECT_EQ(changes, 2);
}

TEST_F(AppUpdaterTest, ACheckByTheUserActivatesTheApplicationFirst) {
    make();
    record_.calls.clear();
    updater_->checkForUpdates();
    EXPECT_THAT(record_.calls, ElementsAre("activate", "check"));
}

TEST_F(AppUpdaterTest, HandsOnWhatTheUserDecidesAndWhatTheEngineTells) {
    make();
    record_.calls.clear();
    int changes = 0;
    QObject::connect(&*updater_, &AppUpdater::statusChanged, [&] { ++changes; });
    engine_->become({.phase = UpdateStatus::Phase::found, .displayVersion = "1.4.2"});
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(updater_->status().displayVersion, "1.4.2");
    updater_->install();
    updater_->skip();
    EXPECT_THAT(record_.calls, ElementsAre("install", "skip"));
}

TEST_F(AppUpdaterTest, OnlyPrivateUpdatesHaveAFeedOfTheirOwn) {
    make();
    EXPECT_EQ(delegate_->feedURL(), std::nullopt);
    makePrivate();
    EXPECT_EQ(delegate_->feedURL(), feed);
}

TEST_F(AppUpdaterTest, APrivateItemIsAPlainFileOnTheHost) {
    makePrivate();
    EXPECT_TRUE(proceeds(goodItem()));
    UpdateItem item = goodItem();
    item.fileURL = "https://other.example.net/brimwatch/mac/Brimwatch-1.4.2-57.dmg";
    EXPECT_FALSE(proceeds(item));
    item.fileURL = feed;
    EXPECT_FALSE(proceeds(item));
    item.fileURL = std::nullopt;
    EXPECT_FALSE(proceeds(item));
}

TEST_F(AppUpdaterTest, AnItemWithPagesOrDeltasIsRefusedInPrivateModeAlone) {
    makePrivate();
    for (const UpdateItem& item : itemsWithExtras())
        EXPECT_FALSE(proceeds(item));
    keys_.values.clear();
    make();
    for (const UpdateItem& item : itemsWithExtras())
        EXPECT_TRUE(proceeds(item));
    UpdateItem elsewhere = goodItem();
    elsewhere.fileURL = "https://example.org/anything";
    EXPECT_TRUE(proceeds(elsewhere));
}

TEST_F(AppUpdaterTest, ReleaseNotesAreNotDownloadedInPrivateMode) {
    make();
    EXPECT_TRUE(delegate_->shouldDownloadReleaseNotes(goodItem()));
    makePrivate();
    EXPECT_FALSE(delegate_->shouldDownloadReleaseNotes(goodItem()));
}

TEST_F(AppUpdaterTest, ADownloadFromTheRightAddressCarriesTheCredentials) {
    makePrivate();
    EXPECT_EQ(prepared(goodItem(), download),
              (UpdateRequest{.url = download,
                             .headers = {{"Authorization", "Basic bWU6c2VjcmV0"}, {"X", "y"}}}));
}

TEST_F(AppUpdaterTest, ADownloadFromAnotherAddressLosesTheHeaderAndLeadsToTheFeed) {
    makePrivate();
    const UpdateRequest stripped{.url = feed, .headers = {{"X", "y"}}};
    EXPECT_EQ(prepared(goodItem(), "https://updates.example.net/other"), stripped);
    EXPECT_EQ(
        prepared(goodItem(), "https://other.example.net/brimwatch/mac/Brimwatch-1.4.2-57.dmg"),
        stripped);
    UpdateItem elsewhere = goodItem();
    elsewhere.fileURL = "https://other.example.net/brimwatch/mac/Brimwatch-1.4.2-57.dmg";
    EXPECT_EQ(prepared(elsewhere, download), stripped);
    for (const UpdateItem& item : itemsWithExtras())
        EXPECT_EQ(prepared(item, download), stripped);
}

TEST_F(AppUpdaterTest, APublicDownloadIsLeftAsItIs) {
    make();
    EXPECT_EQ(prepared(goodItem(), "https://example.org/a"),
              (UpdateRequest{.url = "https://example.org/a",
                             .headers = {{"Authorization", "old"}, {"X", "y"}}}));
}

TEST_F(AppUpdaterTest, AReadyUpdateIsInstalledAtOnceWhereNobodyIsBusy) {
    make();
    handOver("first");
    EXPECT_THAT(installed_, ElementsAre("first"));
    EXPECT_EQ(time_.sleeperCount(), 0U);
    time_.advance(seconds(600));
    EXPECT_EQ(installed_.size(), 1U);
}

TEST_F(AppUpdaterTest, ABlockIsLetGoBeforeItRuns) {
    make();
    auto held = std::make_shared<int>();
    const std::weak_ptr<int> isHeld = held;
    EXPECT_TRUE(delegate_->willInstallOnQuit(goodItem(), [this, held = std::move(held)] {
        handOver("next");
        installed_.push_back("first " + std::to_string(held.use_count()));
    }));
    EXPECT_THAT(installed_, ElementsAre("next", "first 1"));
    EXPECT_TRUE(isHeld.expired());
}

TEST_F(AppUpdaterTest, AReadyUpdateWaitsForTheFirstTickAtWhichNobodyIsBusy) {
    make();
    bool busy = true;
    updater_->isBusy = [&] { return busy; };
    handOver("first");
    time_.advance(seconds(60 * 24 * 3600));
    EXPECT_THAT(installed_, IsEmpty());
    busy = false;
    time_.advance(seconds(59));
    EXPECT_THAT(installed_, IsEmpty());
    time_.advance(seconds(1));
    EXPECT_THAT(installed_, ElementsAre("first"));
    EXPECT_EQ(time_.sleeperCount(), 0U);
}

TEST_F(AppUpdaterTest, AskedOnceForEachTick) {
    make();
    int questions = 0;
    updater_->isBusy = [&] {
        ++questions;
        return true;
    };
    handOver("first");
    handOver("second");
    EXPECT_EQ(questions, 2);
    EXPECT_EQ(time_.sleeperCount(), 1U);
    time_.advance(seconds(180));
    EXPECT_EQ(questions, 5);
}

TEST_F(AppUpdaterTest, AnotherReadyUpdateReplacesTheOneThatWaits) {
    make();
    bool busy = true;
    updater_->isBusy = [&] { return busy; };
    handOver("first");
    handOver("second");
    busy = false;
    time_.advance(seconds(60));
    EXPECT_THAT(installed_, ElementsAre("second"));
}

TEST_F(AppUpdaterTest, AnUpdateThatIsHandedOverInAQuietMomentEndsTheWait) {
    make();
    bool busy = true;
    updater_->isBusy = [&] { return busy; };
    handOver("first");
    busy = false;
    handOver("second");
    EXPECT_THAT(installed_, ElementsAre("second"));
    busy = true;
    time_.advance(seconds(30));
    handOver("third");
    busy = false;
    time_.advance(seconds(59));
    EXPECT_EQ(installed_.size(), 1U);
    time_.advance(seconds(1));
    EXPECT_THAT(installed_, ElementsAre("second", "third"));
}

TEST_F(AppUpdaterTest, AWaitEndsWithTheUpdater) {
    make();
    updater_->isBusy = [] { return true; };
    handOver("first");
    updater_.reset();
    time_.advance(seconds(60));
    EXPECT_EQ(time_.sleeperCount(), 0U);
    EXPECT_THAT(installed_, IsEmpty());
}

TEST_F(AppUpdaterTest, AWaitEndsWithTheProgram) {
    make();
    updater_->isBusy = [] { return true; };
    handOver("first");
    time_.cancelSleeps();
    EXPECT_EQ(time_.sleeperCount(), 0U);
    EXPECT_THAT(installed_, IsEmpty());
}

TEST_F(AppUpdaterTest, WhatTheEngineShowsActivatesTheApplication) {
    make();
    record_.calls.clear();
    EXPECT_TRUE(delegate_->supportsGentleScheduledUpdateReminders());
    EXPECT_TRUE(delegate_->shouldHandleShowingScheduledUpdate(goodItem(), false));
    EXPECT_TRUE(delegate_->shouldHandleShowingScheduledUpdate(goodItem(), true));
    delegate_->willHandleShowingUpdate(false, goodItem(), UpdateStage::notDownloaded);
    EXPECT_THAT(record_.calls, IsEmpty());
    delegate_->willHandleShowingUpdate(true, goodItem(), UpdateStage::notDownloaded);
    EXPECT_THAT(record_.calls, ElementsAre("activate"));
}

}  // namespace
}  // namespace brimwatch
