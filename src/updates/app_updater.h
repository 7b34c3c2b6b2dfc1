// The updater of the application. It owns the engine, tells it how to behave in a program that has
// no main window, and holds a ready update back until the user has no window of the program before
// him.
//
// Where the key store holds credentials, updates are private: they come from a feed of their own,
// the credentials go to that feed and to downloads of one form of address, and an item of any other
// form is refused. A change of the credentials counts from the next start on. Main thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/bundle_info.h"
#include "platform/key_store.h"
#include "platform/sleep.h"
#include "platform/update_engine.h"
#include "updates/mac_private_update_credentials.h"

namespace brimwatch {

class AppUpdater final : public QObject, private UpdateDelegate {
    Q_OBJECT

  public:
    struct Surroundings {
        KeyStore& keys;  // asked once
        BundleInfo info;
        // Called once, unless the credentials could not be read. The delegate outlives the engine.
        std::function<std::unique_ptr<UpdateEngine>(UpdateDelegate& delegate)> makeEngine;
        Sleep sleep;
        std::function<void()> activateApplication;  // brings forward where updates are shown
    };

    explicit AppUpdater(Surroundings surroundings);
    AppUpdater(const AppUpdater&) = delete;
    AppUpdater& operator=(const AppUpdater&) = delete;
    ~AppUpdater() override;

    // Whether the user is at work in the program. Asked before an update is put in place.
    std::function<bool()> isBusy = [] { return false; };

    // Not where the credentials can't be read, nor where the engine has nothing to update.
    bool isAvailable() const;
    // Why the engine has nothing to update.
    std::optional<UpdateUnavailability> unavailability() const;

    bool automaticallyUpdates() const { return automaticallyUpdates_; }
    // Looking for updates goes on when it is off; only downloading stops.
    void setAutomaticallyUpdates(bool value);

    void checkForUpdates();
    void install();
    void skip();
    // Idle where there is no engine.
    const UpdateStatus& status() const;

  signals:
    void automaticallyUpdatesChanged();
    void statusChanged();

  private:
    std::optional<std::string> feedURL() override;
    tl::expected<void, std::string> shouldProceed(const UpdateItem& item,
                                                  UpdateCheck check) override;
    bool shouldDownloadReleaseNotes(const UpdateItem& item) override;
    void willDownload(const UpdateItem& item, UpdateRequest& request) override;
    bool willInstallOnQuit(const UpdateItem& item, std::function<void()> installNow) override;
    bool supportsGentleScheduledUpdateReminders() override;
    bool shouldHandleShowingScheduledUpdate(const UpdateItem& item, bool inImmediateFocus) override;
    void willHandleShowingUpdate(bool handledByEngine, const UpdateItem& item,
                                 UpdateStage stage) override;

    void startEngine();
    void tryPendingInstall();
    // While its number is the latest.
    static QCoro::Task<> retry(QPointer<AppUpdater> updater, Sleep sleep, int number);
    bool passesItemCheck(const UpdateItem& item) const;

    Surroundings surroundings_;
    std::optional<MacPrivateUpdateCredentials> privateUpdates_;
    bool automaticallyUpdates_ = true;
    std::function<void()> pendingInstall_;
    bool isRetrying_ = false;
    int retryNumber_ = 0;
    std::unique_ptr<UpdateEngine> controller_;
};

}  // namespace brimwatch
