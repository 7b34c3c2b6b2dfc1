#include "platform/linux/appcast_update_engine.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <QThread>
#include <filesystem>

#include "core/virtual_time.h"
#include "platform/linux/application_test.h"
#include "platform/linux/update_maker.h"
#include "platform/linux/update_server.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using test::UpdateServer;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using Delivery = UpdateServer::Delivery;
using Phase = UpdateStatus::Phase;

constexpr seconds hour{3600};
constexpr seconds day{86'400};
constexpr const char* feedPath = "/feed.xml";
constexpr const char* filePath = "/Brimwatch-2-2.dmg";

// Agrees to everything, as a test says.
class Delegate final : public UpdateDelegate {
  public:
    std::optional<std::string> feedURL() override { return feed; }
    tl::expected<void, std::string> shouldProceed(const UpdateItem& item,
                                                  UpdateCheck check) override {
        calls.push_back("proceed " + item.version +
                        (check == UpdateCheck::byUser ? " by user" : ""));
        if (refusal.empty()) return {};
        return tl::unexpected(refusal);
    }
    bool shouldDownloadReleaseNotes(const UpdateItem&) override { return showsReleaseNotes; }
    void willDownload(const UpdateItem&, UpdateRequest& request) override {
        calls.push_back("download " + request.url.substr(request.url.rfind('/')));
        if (change) change(request);
    }
    bool willInstallOnQuit(const UpdateItem& item, std::function<void()> installNow) override {
        calls.push_back("ready " + item.version);
        install = std::move(installNow);
        return keeps;
    }
    bool supportsGentleScheduledUpdateReminders() override { return true; }
    bool shouldHandleShowingScheduledUpdate(const UpdateItem& item, bool) override {
        calls.push_back("may show " + item.version);
        return true;
    }
    void willHandleShowingUpdate(bool, const UpdateItem& item, UpdateStage stage) override {
        calls.push_back((stage == UpdateStage::downloaded ? "shows downloaded " : "shows ") +
                        item.version);
    }

    std::optional<std::string> feed;
    std::string refusal;
    bool showsReleaseNotes = true;
    bool keeps = true;
    std::function<void(UpdateRequest&)> change;
    std::function<void()> install;
    std::vector<std::string> calls;
};

class AppcastUpdateEngineTest : public test::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        server_.emplace();
        info_ = {.bundleIdentifier = "net.example.test.mac",
                 .version = "1",
                 .shortVersion = "0.1",
                 .publicUpdateFeed = server_->origin() + feedPath,
                 .publicUpdateSigningKey = key_.publicKey()};
        offer("2");
    }
    void TearDown() override {
        engine_.reset();
        server_.reset();
        settle();
        application_.reset();
        ApplicationTest::TearDown();
    }

    void make() {
        // What it knows reaches the disk with its end.
        engine_.reset();
        engine_ = std::make_unique<AppcastUpdateEngine>(
            delegate_,
            AppcastUpdateEngine::Setup{
                .files = files_,
                .stateFolder = stateFolder_.path(),
                .info = info_,
                .folders = hasFolders_ ? std::optional(installation_.folders()) : std::nullopt,
                .language = "ko",
                .unpack = &unpackUpdate,
                .sleep = time_.sleeper(),
                .now = [this] { return time_.now(); },
                .relaunch =
                    [this] {
                        ++relaunches_;
                        return canRelaunch_;
                    }});
        phases_.clear();
        QObject::connect(engine_.get(), &UpdateEngine::statusChanged, [this] {
            if (phases_.empty() || phases_.back() != phase()) phases_.push_back(phase());
        });
    }

    // Puts the version into the feed, with whatever else its item holds.
    void offer(const std::string& version, const std::string& extras = {}) {
        const std::string archive = test::makeArchive(test::entriesOf(version));
        const std::string path = "/Brimwatch-" + version + "-2.dmg";
        server_->serve(path, {.body = archive});
        offerFile(version, path, archive.size(), key_.sign(archive), extras);
    }
    void offerFile(const std::string& version, const std::string& url, std::size_t length,
                   const std::string& signature, const std::string& extras = {}) {
        serveFeed("<item><sparkle:version>" + version +
                  "</sparkle:version><sparkle:shortVersionString>v" + version +
                  "</sparkle:shortVersionString>" + extras + "<enclosure url=\"" + url +
                  "\" length=\"" + std::to_string(length) + "\" sparkle:edSignature=\"" +
                  signature + "\"/></item>");
    }
    void serveFeed(const std::string& items) {
        server_->serve(
            feedPath,
            {.body = R"(<rss xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">)"
                     "<channel>" +
                     items + "</channel></rss>"});
    }

    Phase phase() const { return engine_->status().phase; }
    bool becomes(Phase wanted) {
        return eventually([&] { return phase() == wanted; });
    }
    // Nothing is under way any more.
    Phase outcome() {
        const auto isUnderWay = [this] {
            return phase() == Phase::checking || phase() == Phase::downloading ||
                   phase() == Phase::preparing;
        };
        EXPECT_TRUE(eventually([&] { return !isUnderWay(); }));
        return phase();
    }
    Phase check() {
        engine_->checkForUpdates();
        EXPECT_EQ(phase(), Phase::checking);
        return outcome();
    }
    Phase install() {
        engine_->install();
        return outcome();
    }
    // A look at the feed that nobody asked for, now.
    Phase checkInBackground() {
        const std::size_t before = server_->countOf(feedPath);
        make();
        engine_->start();
        time_.settle();
        EXPECT_TRUE(eventually([&] { return server_->countOf(feedPath) > before; }));
        return outcome();
    }
    std::optional<UpdateFailure> failure() const { return engine_->status().failure; }
    std::size_t feedRequests() const { return server_->countOf(feedPath); }

    PosixFileSystem files_;
    test::TemporaryFolder stateFolder_;
    test::Installation installation_;
    test::SigningKey key_;
    test::VirtualTime time_{instantFromUnixSeconds(1'790'000'000)};
    std::optional<UpdateServer> server_;
    BundleInfo info_;
    bool hasFolders_ = true;
    bool canRelaunch_ = true;
    int relaunches_ = 0;
    Delegate delegate_;
    std::unique_ptr<AppcastUpdateEngine> engine_;
    std::vector<Phase> phases_;
};

TEST_F(AppcastUpdateEngineTest, ACheckByTheUserFindsANewerVersion) {
    make();
    EXPECT_EQ(check(), Phase::found);
    EXPECT_EQ(engine_->status().displayVersion, "v2");
    EXPECT_THAT(delegate_.calls, ElementsAre("proceed 2 by user", "shows 2"));
    EXPECT_EQ(server_->requests()[0].headers.at("user-agent"), "Brimwatch/0.1");
    EXPECT_EQ(server_->countOf(filePath), 0U);
}

TEST_F(AppcastUpdateEngineTest, ACheckByTheUserFindsThatThereIsNone) {
    make();
    for (const char* version : {"1", "1.0", "0.9"}) {
        offer(version);
        EXPECT_EQ(check(), Phase::upToDate) << version;
    }
    serveFeed("");
    EXPECT_EQ(check(), Phase::upToDate);
}

TEST_F(AppcastUpdateEngineTest, ACheckByTheUserTellsWhatWentWrong) {
    make();
    server_->serve(feedPath, {.status = 500});
    EXPECT_EQ(check(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::network);
    server_->serve(feedPath, {.body = "<html>sign in first</html>"});
    EXPECT_EQ(check(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::feed);
    server_->serve(feedPath, {.body = std::string(1'100'000, ' ')});
    EXPECT_EQ(check(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::feed);
    delegate_.refusal = "not this one";
    offer("2");
    EXPECT_EQ(check(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::refused);
    EXPECT_EQ(engine_->status().refusal, "not this one");
    delegate_.refusal = "";
    EXPECT_EQ(check(), Phase::found);
    EXPECT_EQ(failure(), std::nullopt);
}

TEST_F(AppcastUpdateEngineTest, WhatTheUserAgreesToIsPutInPlaceAndStarted) {
    make();
    ASSERT_EQ(check(), Phase::found);
    EXPECT_EQ(install(), Phase::installing);
    EXPECT_EQ(relaunches_, 1);
    EXPECT_EQ(installation_.current(), "2");
    EXPECT_THAT(installation_.versions(), ElementsAre("1", "2"));
    EXPECT_THAT(phases_, ElementsAre(Phase::checking, Phase::found, Phase::downloading,
                                     Phase::preparing, Phase::ready, Phase::installing));
    EXPECT_THAT(delegate_.calls,
                ElementsAre("proceed 2 by user", "shows 2", "download /Brimwatch-2-2.dmg"));
}

TEST_F(AppcastUpdateEngineTest, TheProgressOfADownloadIsTold) {
    make();
    ASSERT_EQ(check(), Phase::found);
    double highest = 0;
    QObject::connect(engine_.get(), &UpdateEngine::statusChanged, [&] {
        if (phase() != Phase::downloading) return;
        EXPECT_GE(engine_->status().downloadedFraction, highest);
        EXPECT_EQ(engine_->status().displayVersion, "v2");
        highest = engine_->status().downloadedFraction;
    });
    install();
    EXPECT_EQ(highest, 1.0);
}

TEST_F(AppcastUpdateEngineTest, ANewVersionThatCantBeStartedIsToldAndStays) {
    canRelaunch_ = false;
    make();
    check();
    EXPECT_EQ(install(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::relaunch);
    EXPECT_EQ(installation_.current(), "2");
}

TEST_F(AppcastUpdateEngineTest, AnotherSignatureIsRefusedAndLeavesNothing) {
    make();
    const std::string archive = test::makeArchive(test::entriesOf("2"));
    for (const std::string& signature :
         {std::string(), key_.sign("other bytes"), test::SigningKey().sign(archive)}) {
        offerFile("2", filePath, archive.size(), signature);
        ASSERT_EQ(check(), Phase::found);
        EXPECT_EQ(install(), Phase::failed);
        EXPECT_EQ(failure(), UpdateFailure::signature);
        EXPECT_EQ(engine_->status().displayVersion, "v2");
    }
    EXPECT_THAT(installation_.versions(), ElementsAre("1"));
    EXPECT_EQ(installation_.current(), "1");
    EXPECT_EQ(relaunches_, 0);
}

TEST_F(AppcastUpdateEngineTest, AFileOfAnotherLengthIsRefused) {
    make();
    const std::string archive = test::makeArchive(test::entriesOf("2"));
    for (const std::size_t length :
         {archive.size() - 1, archive.size() + 1, std::size_t{0}, std::size_t{2'000'000'000}}) {
        offerFile("2", filePath, length, key_.sign(archive));
        ASSERT_EQ(check(), Phase::found);
        EXPECT_EQ(install(), Phase::failed) << length;
        EXPECT_EQ(failure(), UpdateFailure::download) << length;
    }
    EXPECT_THAT(installation_.versions(), ElementsAre("1"));
}

TEST_F(AppcastUpdateEngineTest, ADownloadThatBreaksOffIsRefusedAndCanBeTriedAgain) {
    make();
    const std::string archive = test::makeArchive(test::entriesOf("2"));
    server_->serve(filePath, {.body = archive, .delivery = Delivery::half});
    check();
    EXPECT_EQ(install(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::download);
    server_->serve(filePath, {.status = 404});
    check();
    EXPECT_EQ(install(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::download);
    server_->serve(filePath, {.body = archive});
    check();
    EXPECT_EQ(install(), Phase::installing);
    EXPECT_EQ(installation_.current(), "2");
}

TEST_F(AppcastUpdateEngineTest, AnOldArchiveThatTheFeedCallsNewIsRefused) {
    make();
    const std::string old = test::makeArchive(test::entriesOf("1"));
    server_->serve("/old", {.body = old});
    offerFile("2", "/old", old.size(), key_.sign(old));
    check();
    EXPECT_EQ(install(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::archive);
    EXPECT_EQ(installation_.current(), "1");
}

TEST_F(AppcastUpdateEngineTest, AFolderThatCantBeWrittenIsToldAsTheDisk) {
    make();
    check();
    fs::remove_all(installation_.versionsFolder());
    EXPECT_EQ(install(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::disk);
}

TEST_F(AppcastUpdateEngineTest, InTheBackgroundWithDownloadsOffWhatIsFoundIsShown) {
    EXPECT_EQ(checkInBackground(), Phase::found);
    EXPECT_THAT(delegate_.calls, ElementsAre("proceed 2", "may show 2", "shows 2"));
    EXPECT_EQ(server_->countOf(filePath), 0U);
}

TEST_F(AppcastUpdateEngineTest, InTheBackgroundWithDownloadsOnWhatIsFoundIsMadeReady) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    EXPECT_EQ(checkInBackground(), Phase::ready);
    EXPECT_THAT(delegate_.calls,
                ElementsAre("proceed 2", "download /Brimwatch-2-2.dmg", "ready 2"));
    EXPECT_EQ(installation_.current(), "1");
    EXPECT_EQ(relaunches_, 0);
    ASSERT_TRUE(delegate_.install);
    delegate_.install();
    EXPECT_EQ(installation_.current(), "2");
    EXPECT_EQ(relaunches_, 1);
    delegate_.install();
    EXPECT_EQ(relaunches_, 1);
}

TEST_F(AppcastUpdateEngineTest, WhatTheUserAskedForIsShownEvenWhereDownloadsAreOn) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    EXPECT_EQ(check(), Phase::found);
    EXPECT_EQ(server_->countOf(filePath), 0U);
}

TEST_F(AppcastUpdateEngineTest, WhatTheDelegateDoesNotKeepIsShown) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    delegate_.keeps = false;
    EXPECT_EQ(checkInBackground(), Phase::ready);
    EXPECT_THAT(delegate_.calls, Contains("shows downloaded 2"));
}

TEST_F(AppcastUpdateEngineTest, AReadyUpdateIsPutInPlaceWhenTheProgramQuits) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    ASSERT_EQ(checkInBackground(), Phase::ready);
    QTimer::singleShot(0, application_.operator->(), &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_EQ(installation_.current(), "2");
    EXPECT_EQ(relaunches_, 0);
}

TEST_F(AppcastUpdateEngineTest, WithoutAReadyUpdateQuittingChangesNothing) {
    ASSERT_EQ(checkInBackground(), Phase::found);
    QTimer::singleShot(0, application_.operator->(), &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_EQ(installation_.current(), "1");
}

TEST_F(AppcastUpdateEngineTest, AReadyUpdateIsInstalledWhenTheUserAsks) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    ASSERT_EQ(checkInBackground(), Phase::ready);
    EXPECT_EQ(check(), Phase::ready);
    EXPECT_EQ(server_->countOf(filePath), 1U);
    engine_->install();
    EXPECT_EQ(installation_.current(), "2");
    EXPECT_EQ(relaunches_, 1);
}

TEST_F(AppcastUpdateEngineTest, AnotherReadyUpdateReplacesTheFirst) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    ASSERT_EQ(checkInBackground(), Phase::ready);
    offer("3");
    time_.advance(day);
    ASSERT_TRUE(eventually([&] { return delegate_.calls.back() == "ready 3"; }));
    EXPECT_EQ(phase(), Phase::ready);
    delegate_.install();
    EXPECT_EQ(installation_.current(), "3");
}

TEST_F(AppcastUpdateEngineTest, AReadyUpdateSurvivesAFailureOfTheNextOne) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    ASSERT_EQ(checkInBackground(), Phase::ready);
    const std::string other = test::makeArchive(test::entriesOf("1"));
    server_->serve("/three", {.body = other});
    std::size_t downloads = 0;
    // The one fails before anything is unpacked, the other after it.
    for (const std::string& signature : {key_.sign("other bytes"), key_.sign(other)}) {
        offerFile("3", "/three", other.size(), signature);
        time_.advance(day);
        ++downloads;
        ASSERT_TRUE(eventually([&] { return server_->countOf("/three") == downloads; }));
        EXPECT_EQ(outcome(), Phase::ready);
        EXPECT_EQ(engine_->status().displayVersion, "v2");
    }
    engine_->install();
    EXPECT_EQ(installation_.current(), "2");
}

TEST_F(AppcastUpdateEngineTest, InTheBackgroundFailuresAreSilent) {
    server_->serve(feedPath, {.status = 500});
    EXPECT_EQ(checkInBackground(), Phase::idle);
    offer("2");
    delegate_.refusal = "no";
    EXPECT_EQ(checkInBackground(), Phase::idle);
    delegate_.refusal = "";
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    server_->serve(filePath, {.status = 500});
    time_.setWallClock(time_.now() + 2 * day);
    EXPECT_EQ(checkInBackground(), Phase::idle);
}

TEST_F(AppcastUpdateEngineTest, WhoAsksDuringACheckInTheBackgroundGetsAnAnswer) {
    offer("1");
    make();
    engine_->start();
    time_.settle();
    ASSERT_EQ(phase(), Phase::checking);
    engine_->checkForUpdates();
    EXPECT_EQ(outcome(), Phase::upToDate);
    EXPECT_EQ(feedRequests(), 1U);
}

TEST_F(AppcastUpdateEngineTest, ItemsOfConcernAreNeverInstalledInSilence) {
    make();
    engine_->setAutomaticallyDownloadsUpdates(true);
    for (const char* extras :
         {"<sparkle:criticalUpdate/>",
          "<sparkle:minimumAutoupdateVersion>2</sparkle:minimumAutoupdateVersion>",
          "<link>https://example.net/</link><sparkle:informationalUpdate/>"}) {
        offer("2", extras);
        time_.setWallClock(time_.now() + 2 * day);
        EXPECT_EQ(checkInBackground(), Phase::found) << extras;
    }
    EXPECT_EQ(server_->countOf(filePath), 0U);
}

TEST_F(AppcastUpdateEngineTest, WhatIsInformationalHasAPageAndNothingToInstall) {
    offer("2", "<link>https://example.net/</link><sparkle:informationalUpdate/>");
    make();
    EXPECT_EQ(check(), Phase::found);
    EXPECT_TRUE(engine_->status().isInformational);
    EXPECT_EQ(engine_->status().infoURL, "https://example.net/");
    engine_->install();
    EXPECT_EQ(phase(), Phase::found);
}

TEST_F(AppcastUpdateEngineTest, ReleaseNotesAreOfferedIfTheDelegateAllows) {
    offer("2", "<sparkle:releaseNotesLink>https://example.net/n</sparkle:releaseNotesLink>");
    make();
    check();
    EXPECT_EQ(engine_->status().releaseNotesURL, "https://example.net/n");
    delegate_.showsReleaseNotes = false;
    check();
    EXPECT_EQ(engine_->status().releaseNotesURL, std::nullopt);
}

TEST_F(AppcastUpdateEngineTest, ASkippedVersionIsNotShownAgainUnlessTheUserAsks) {
    ASSERT_EQ(checkInBackground(), Phase::found);
    engine_->skip();
    EXPECT_EQ(phase(), Phase::idle);
    time_.setWallClock(time_.now() + 2 * day);
    EXPECT_EQ(checkInBackground(), Phase::idle);
    EXPECT_EQ(check(), Phase::found);
    offer("3");
    time_.setWallClock(time_.now() + 2 * day);
    EXPECT_EQ(checkInBackground(), Phase::found);
}

TEST_F(AppcastUpdateEngineTest, HeadersGoWithTheFeedAndTheFile) {
    make();
    engine_->setHttpHeaders({{"Authorization", "Basic secret"}});
    check();
    install();
    ASSERT_EQ(server_->requests().size(), 2U);
    for (const UpdateServer::Request& request : server_->requests())
        EXPECT_EQ(request.headers.at("authorization"), "Basic secret") << request.path;
}

TEST_F(AppcastUpdateEngineTest, ARedirectedFeedLosesTheHeaders) {
    make();
    engine_->setHttpHeaders({{"Authorization", "Basic secret"}});
    server_->serve(feedPath, {.status = 302, .headers = {"Location: /moved.xml"}});
    server_->serve("/moved.xml", {.status = 404});
    EXPECT_EQ(check(), Phase::failed);
    ASSERT_EQ(server_->requests().size(), 2U);
    EXPECT_EQ(server_->requests()[1].headers.count("authorization"), 0U);
}

TEST_F(AppcastUpdateEngineTest, ARedirectedFileIsTheDelegatesToPermit) {
    make();
    engine_->setHttpHeaders({{"Authorization", "Basic secret"}});
    server_->serve("/moved", {.body = test::makeArchive(test::entriesOf("2"))});
    server_->serve(filePath, {.status = 302, .headers = {"Location: /moved"}});
    check();
    EXPECT_EQ(install(), Phase::installing);
    EXPECT_THAT(delegate_.calls, Contains("download /moved"));
    EXPECT_EQ(server_->requests().back().headers.count("authorization"), 0U);
}

TEST_F(AppcastUpdateEngineTest, ADownloadThatTheDelegateLeadsElsewhereFailsWithoutARequest) {
    make();
    delegate_.change = [&](UpdateRequest& request) { request.url = info_.publicUpdateFeed; };
    check();
    EXPECT_EQ(install(), Phase::failed);
    EXPECT_EQ(failure(), UpdateFailure::refused);
    EXPECT_EQ(server_->requests().size(), 1U);
}

TEST_F(AppcastUpdateEngineTest, TheFeedOfTheDelegateComesFirst) {
    delegate_.feed = server_->origin() + "/private.xml";
    make();
    EXPECT_EQ(check(), Phase::failed);
    EXPECT_EQ(server_->countOf("/private.xml"), 1U);
    EXPECT_EQ(feedRequests(), 0U);
}

TEST_F(AppcastUpdateEngineTest, WithoutFoldersOfItsOwnThereAreNoUpdates) {
    hasFolders_ = false;
    make();
    EXPECT_EQ(engine_->unavailability(), UpdateUnavailability::managedElsewhere);
    engine_->start();
    engine_->checkForUpdates();
    EXPECT_EQ(phase(), Phase::idle);
    EXPECT_EQ(time_.sleeperCount(), 0U);
}

TEST_F(AppcastUpdateEngineTest, WithoutAKeyOrAFeedThereAreNoUpdates) {
    const std::string key = std::exchange(info_.publicUpdateSigningKey, "");
    make();
    EXPECT_EQ(engine_->unavailability(), UpdateUnavailability::noSigningKey);
    info_.publicUpdateSigningKey = "AAAA";
    make();
    EXPECT_EQ(engine_->unavailability(), UpdateUnavailability::noSigningKey);
    info_.publicUpdateSigningKey = key;
    info_.publicUpdateFeed = "";
    make();
    EXPECT_EQ(engine_->unavailability(), UpdateUnavailability::noFeed);
    delegate_.feed = server_->origin() + "/private.xml";
    EXPECT_EQ(engine_->unavailability(), std::nullopt);
}

// What the schedule does over a time, seen by the requests that it makes.
class UpdateSchedule : public AppcastUpdateEngineTest {
  protected:
    void SetUp() override {
        AppcastUpdateEngineTest::SetUp();
        offer("1");
    }
    // Lets the time pass, and whatever begins in it end.
    std::size_t checksWithin(seconds duration) {
        const std::size_t before = feedRequests();
        constexpr seconds step{600};
        for (seconds passed{0}; passed < duration; passed += step) {
            time_.advance(std::min(step, duration - passed));
            outcome();
        }
        return feedRequests() - before;
    }
    void start() {
        make();
        engine_->start();
        time_.settle();
        outcome();
    }
};

TEST_F(UpdateSchedule, ChecksAtTheFirstStartAndThenOnceADay) {
    start();
    EXPECT_EQ(feedRequests(), 1U);
    EXPECT_EQ(checksWithin(day - seconds(60)), 0U);
    EXPECT_EQ(checksWithin(seconds(120)), 1U);
    EXPECT_EQ(checksWithin(5 * day), 5U);
}

TEST_F(UpdateSchedule, GoesOnWhereTheRunBeforeStopped) {
    start();
    checksWithin(day / 2);
    start();
    EXPECT_EQ(feedRequests(), 1U);
    EXPECT_EQ(checksWithin(day / 2 + seconds(60)), 1U);
}

TEST_F(UpdateSchedule, ChecksOnceAnHourWhereItIsSoSet) {
    make();
    engine_->setUpdateCheckInterval(hour);
    engine_->start();
    time_.settle();
    outcome();
    EXPECT_EQ(checksWithin(10 * hour + seconds(60)), 10U);
}

TEST_F(UpdateSchedule, NeverChecksMoreOftenThanOnceAnHour) {
    make();
    engine_->setUpdateCheckInterval(seconds(1));
    engine_->start();
    time_.settle();
    outcome();
    EXPECT_EQ(checksWithin(5 * hour + seconds(60)), 5U);
}

TEST_F(UpdateSchedule, TriesAgainAfterAnHourWhereTheNetworkWasDown) {
    server_->serve(feedPath, {.status = 500});
    start();
    EXPECT_EQ(checksWithin(hour - seconds(60)), 0U);
    EXPECT_EQ(checksWithin(seconds(120)), 1U);
    offer("1");
    EXPECT_EQ(checksWithin(hour), 1U);
    EXPECT_EQ(checksWithin(10 * hour), 0U);
}

TEST_F(UpdateSchedule, ACheckByTheUserCounts) {
    start();
    checksWithin(day / 2);
    check();
    EXPECT_EQ(checksWithin(day - seconds(600)), 0U);
    EXPECT_EQ(checksWithin(seconds(1200)), 1U);
}

TEST_F(UpdateSchedule, DoesNotCheckWhereThatIsSwitchedOff) {
    make();
    engine_->setAutomaticallyChecksForUpdates(false);
    engine_->start();
    time_.settle();
    EXPECT_EQ(checksWithin(3 * day), 0U);
    engine_->setAutomaticallyChecksForUpdates(true);
    EXPECT_EQ(checksWithin(hour + seconds(60)), 1U);
    make();
    EXPECT_TRUE(engine_->automaticallyChecksForUpdates());
}

TEST_F(UpdateSchedule, AClockThatWasAheadDoesNotStopIt) {
    start();
    time_.setWallClock(time_.now() - 400 * day);
    EXPECT_EQ(checksWithin(2 * day + 2 * hour), 2U);
}

TEST_F(UpdateSchedule, AnyTimeInTheFileIsBorne) {
    for (const char* number : {"-9223372036854775808", "9223372036854775807"}) {
        engine_.reset();
        test::writeFile(stateFolder_.file("updates.json"),
                        "{\"lastCheckTime\":" + std::string(number) + "}");
        const std::size_t before = feedRequests();
        start();
        checksWithin(day + seconds(60));
        EXPECT_GE(feedRequests(), before + 1) << number;
        EXPECT_LE(feedRequests(), before + 2) << number;
    }
}

TEST_F(UpdateSchedule, EndsWithTheEngineAndWithTheProgram) {
    start();
    engine_.reset();
    time_.advance(day);
    EXPECT_EQ(time_.sleeperCount(), 0U);
    start();
    time_.cancelSleeps();
    EXPECT_EQ(time_.sleeperCount(), 0U);
}

TEST_F(AppcastUpdateEngineTest, GoneInTheMiddleOfAnythingItLeavesNothing) {
    make();
    engine_->checkForUpdates();
    engine_.reset();
    settle();
    make();
    check();
    engine_->install();
    ASSERT_TRUE(eventually([&] { return phase() != Phase::found; }));
    engine_.reset();
    settle();
    make();
    check();
    engine_->install();
    ASSERT_TRUE(eventually([&] { return phase() == Phase::preparing || relaunches_ > 0; }));
    engine_.reset();
    settle();
    EXPECT_THAT(installation_.versions(), Not(Contains(::testing::StartsWith(".staging"))));
}

}  // namespace
}  // namespace brimwatch
