#include "app/app_setup_updates.h"

#include <gmock/gmock.h>

#include "core/virtual_time.h"
#include "platform/linux/scripted_key_store.h"
#include "updates/private_update_info.h"
#include "updates/scripted_update_engine.h"
#include "updates/update_texts.h"

namespace brimwatch {
namespace {

using Phase = UpdateStatus::Phase;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* notes = "https://updates.example.net/notes.html";
constexpr const char* info = "https://updates.example.net/info.html";

class AppSetupUpdatesTest : public ::testing::Test {
  protected:
    AppSetupUpdates& make(std::optional<UpdateUnavailability> unavailability = std::nullopt) {
        record_.unavailability = unavailability;
        updater_.emplace(AppUpdater::Surroundings{
            .keys = keys_,
            .info = test::privateUpdateInfo(),
            .makeEngine =
                [this](UpdateDelegate&) {
                    auto engine = std::make_unique<test::ScriptedUpdateEngine>(record_);
                    engine_ = engine.get();
                    return engine;
                },
            .sleep = time_.sleeper(),
            .activateApplication = [this] { ++activations_; }});
        updates_.emplace(*updater_, [this](const QUrl& page) {
            pages_.push_back(page.toString().toStdString());
        });
        return *updates_;
    }
    // With the engine in that status.
    AppSetupUpdates& makeIn(const UpdateStatus& status) {
        AppSetupUpdates& updates = make();
        engine_->become(status);
        return updates;
    }

    test::ScriptedKeyStore keys_;
    test::VirtualTime time_{instantFromUnixSeconds(1'790'000'000)};
    test::ScriptedUpdateEngine::Record record_;
    test::ScriptedUpdateEngine* engine_ = nullptr;
    int activations_ = 0;
    std::vector<std::string> pages_;
    std::optional<AppUpdater> updater_;
    std::optional<AppSetupUpdates> updates_;
};

TEST_F(AppSetupUpdatesTest, AreThereWhereTheEngineHasSomethingToUpdate) {
    EXPECT_TRUE(make().isAvailable());
    EXPECT_EQ(updates_->unavailabilityText(), "");
    EXPECT_EQ(updates_->statusText(), "");
}

TEST_F(AppSetupUpdatesTest, TellWhyThereAreNone) {
    EXPECT_FALSE(make(UpdateUnavailability::managedElsewhere).isAvailable());
    EXPECT_EQ(updates_->unavailabilityText(), "이 설치는 시스템의 패키지 관리자가 업데이트해요.");
}

TEST_F(AppSetupUpdatesTest, AreRevealedUntilTheyAreShown) {
    AppSetupUpdates& updates = make();
    int changes = 0;
    QObject::connect(&updates, &SetupUpdates::isRevealedChanged, &updates,
                     [&changes] { ++changes; });
    EXPECT_FALSE(updates.isRevealed());
    updates.setRevealed(true);
    updates.setRevealed(true);
    EXPECT_TRUE(updates.isRevealed());
    updates.setRevealed(false);
    EXPECT_FALSE(updates.isRevealed());
    EXPECT_EQ(changes, 2);
}

TEST_F(AppSetupUpdatesTest, SayNothingWhereTheCredentialsCannotBeRead) {
    keys_.answer = [](const std::string&) { return key_status::interactionNotAllowed; };
    EXPECT_FALSE(make().isAvailable());
    EXPECT_EQ(updates_->unavailabilityText(), "");
    EXPECT_EQ(updates_->statusText(), "");
    updates_->checkNow();
    updates_->install();
    updates_->skip();
    updates_->showPage();
    EXPECT_THAT(pages_, IsEmpty());
}

TEST_F(AppSetupUpdatesTest, PassTheChoiceOn) {
    AppSetupUpdates& updates = make();
    int changes = 0;
    QObject::connect(&updates, &SetupUpdates::automaticallyUpdatesChanged, &updates,
                     [&changes] { ++changes; });
    const bool before = updates.automaticallyUpdates();
    updates.setAutomaticallyUpdates(!before);
    EXPECT_EQ(updater_->automaticallyUpdates(), !before);
    EXPECT_EQ(updates.automaticallyUpdates(), !before);
    EXPECT_EQ(changes, 1);
}

TEST_F(AppSetupUpdatesTest, CarryOutWhatIsPressed) {
    AppSetupUpdates& updates = make();
    record_.calls.clear();
    updates.checkNow();
    updates.install();
    updates.skip();
    EXPECT_EQ(activations_, 1);
    EXPECT_THAT(record_.calls, ElementsAre("check", "install", "skip"));
}

struct Answer {
    UpdateStatus status;
    bool canInstall;
    bool canSkip;
    bool hasPage;
    bool needsAttention;
};

TEST_F(AppSetupUpdatesTest, AnswerEachStatus) {
    const Answer answers[] = {
        {{.phase = Phase::checking}, false, false, false, false},
        {{.phase = Phase::upToDate}, false, false, false, false},
        {{.phase = Phase::found, .displayVersion = "2"}, true, true, false, false},
        {{.phase = Phase::found, .displayVersion = "2", .releaseNotesURL = notes},
         true,
         true,
         true,
         false},
        {{.phase = Phase::found, .displayVersion = "2", .infoURL = info, .isInformational = true},
         false,
         true,
         true,
         false},
        {{.phase = Phase::downloading, .displayVersion = "2", .releaseNotesURL = notes},
         false,
         false,
         false,
         false},
        {{.phase = Phase::preparing, .displayVersion = "2"}, false, false, false, false},
        {{.phase = Phase::ready, .displayVersion = "2", .releaseNotesURL = notes},
         true,
         false,
         true,
         false},
        {{.phase = Phase::installing, .displayVersion = "2"}, false, false, false, false},
        {{.phase = Phase::failed, .failure = UpdateFailure::network}, false, false, false, true}};
    AppSetupUpdates& updates = make();
    int changes = 0;
    QObject::connect(&updates, &SetupUpdates::statusChanged, &updates, [&changes] { ++changes; });
    for (const Answer& answer : answers) {
        SCOPED_TRACE(static_cast<int>(answer.status.phase));
        engine_->become(answer.status);
        EXPECT_EQ(std::exchange(changes, 0), 1);
        EXPECT_EQ(updates.statusText().toStdString(), updateStatusText(answer.status));
        EXPECT_NE(updates.statusText(), "");
        EXPECT_EQ(updates.canInstall(), answer.canInstall);
        EXPECT_EQ(updates.canSkip(), answer.canSkip);
        EXPECT_EQ(updates.hasPage(), answer.hasPage);
        EXPECT_EQ(updates.needsAttention(), answer.needsAttention);
    }
}

TEST_F(AppSetupUpdatesTest, ShowThePageOfWhatIsNew) {
    makeIn({.phase = Phase::found, .releaseNotesURL = notes, .infoURL = info}).showPage();
    EXPECT_THAT(pages_, ElementsAre(notes));
}

TEST_F(AppSetupUpdatesTest, ShowThePageThatIsAllThereIs) {
    makeIn(
        {.phase = Phase::found, .releaseNotesURL = notes, .infoURL = info, .isInformational = true})
        .showPage();
    makeIn({.phase = Phase::ready, .infoURL = info}).showPage();
    EXPECT_THAT(pages_, ElementsAre(info, info));
}

TEST_F(AppSetupUpdatesTest, ShowNothingButPagesOfTheWeb) {
    for (const char* address : {"file:///etc/passwd", "http://updates.example.net/", "javascript:1",
                                "notes.html", "", "https://exa mple/%zz"}) {
        AppSetupUpdates& updates =
            makeIn({.phase = Phase::found, .releaseNotesURL = std::string(address)});
        EXPECT_FALSE(updates.hasPage()) << address;
        updates.showPage();
    }
    EXPECT_THAT(pages_, IsEmpty());
}

}  // namespace
}  // namespace brimwatch
