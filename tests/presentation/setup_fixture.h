// The settings over a model in the hands of a test.
#pragma once

#include <QCoreApplication>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "accounts_fixture.h"
#include "log_capture.h"
#include "presentation/setup/setup_view_model.h"
#include "publish/memory_key_store.h"
#include "publish/publish_examples.h"
#include "publish/publishers/scripted_record_database.h"
#include "publishing_model.h"

namespace brimwatch::test {

class NotedFileManager final : public FileManager {
  public:
    void reveal(const std::string& path) override { revealed.push_back(path); }

    std::vector<std::string> revealed;
};

class ScriptedFolderPicker final : public FolderPicker {
  public:
    void pick(QWindow& parent, const QString& title, Picked picked) override {
        parents.push_back(&parent);
        titles.push_back(title.toStdString());
        answer = std::move(picked);
    }

    std::vector<QWindow*> parents;
    std::vector<std::string> titles;
    Picked answer;
};

class ScriptedUpdates final : public SetupUpdates {
  public:
    bool isAvailable() const override { return available; }
    QString unavailabilityText() const override { return unavailability; }
    bool automaticallyUpdates() const override { return automatic; }
    void setAutomaticallyUpdates(bool value) override {
        automatic = value;
        emit automaticallyUpdatesChanged();
    }
    QString statusText() const override { return status; }
    bool needsAttention() const override { return attention; }
    bool canInstall() const override { return installable; }
    bool canSkip() const override { return skippable; }
    bool hasPage() const override { return page; }

    void checkNow() override { calls.emplace_back("checkNow"); }
    void install() override { calls.emplace_back("install"); }
    void skip() override { calls.emplace_back("skip"); }
    void showPage() override { calls.emplace_back("showPage"); }

    bool available = true;
    QString unavailability;
    bool automatic = true;
    QString status;
    bool attention = false;
    bool installable = false;
    bool skippable = false;
    bool page = false;
    std::vector<std::string> calls;
};

class SetupFixture : public AccountsFixture {
  protected:
    SetupFixture() { defaults_.put("macID", "\"" + thisMac.text + "\""); }
    ~SetupFixture() override {
        settings_.reset();
        model_.reset();
    }

    // Over the model as it is now.
    SetupViewModel& makeSettings() {
        settings_.reset();
        settings_ = std::make_unique<SetupViewModel>(SetupViewModel::Surroundings{
            .model = model(),
            .fileManager = fileManager_,
            .folderPicker = folderPicker_,
            .updates = updates_,
            .window = [this] { return parentWindow_; },
            .canSignIn = [this] { return canSignIn_; },
            .signIn = [this] { calls_.emplace_back("signIn"); },
            .showPhoneLink = [this] { calls_.emplace_back("showPhoneLink"); }});
        return *settings_;
    }
    SetupViewModel& makeShownSettings() {
        makeSettings().setShown(true);
        return *settings_;
    }
    // A model that sends to phones.
    HelperModel& startWithPhones() {
        return start(withPublishers(surroundings(), database_, keys_, defaults_, time_));
    }
    // Lets the model and what follows it come to rest.
    void settleAll() {
        settle();
        while (database_.isAsked() || time_.wakeNext()) {
            if (database_.isAsked()) database_.answer();
        }
        QCoreApplication::processEvents();
    }
    // Three cards, in this order: claude-a, claude-b, codex-c.
    void startWithThreeCards() {
        makeRegisteredFolder(".claude-a");
        makeRegisteredFolder(".claude-b");
        makeCodexFolder(".codex-c");
        writeLimits("claude-a", 10, 20);
        writeLimits("claude-b", 30, 40);
        writeLimits("codex-c", 50, 60);
        start();
    }

    const LogCapture quiet_;
    NotedFileManager fileManager_;
    ScriptedFolderPicker folderPicker_;
    ScriptedUpdates updates_;
    MemoryKeyStore keys_;
    ScriptedRecordDatabase database_;
    QWindow* parentWindow_ = nullptr;
    bool canSignIn_ = true;
    std::vector<std::string> calls_;
    std::unique_ptr<SetupViewModel> settings_;
};

}  // namespace brimwatch::test
