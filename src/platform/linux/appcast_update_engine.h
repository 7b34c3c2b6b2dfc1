// Updates for an installation that updates itself: a feed over HTTPS, signed archives, and a folder
// for each version (`VersionFolders`).
//
// Nothing is kept of a download whose signature by the makers does not hold, no version goes
// backwards, and whenever the program is killed a whole version starts next. A ready update is put
// in place when the program quits, if not before. Main thread, while there is an application; what
// takes long runs on a thread of its own.
#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QPointer>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/bundle_info.h"
#include "platform/linux/appcast.h"
#include "platform/linux/update_archive.h"
#include "platform/linux/update_fetch.h"
#include "platform/linux/update_state.h"
#include "platform/linux/version_folders.h"
#include "platform/posix/file_descriptor.h"
#include "platform/sleep.h"
#include "platform/update_engine.h"
#include "support/file_system.h"
#include "support/instant.h"

class QThread;

namespace brimwatch {

class AppcastUpdateEngine final : public UpdateEngine {
  public:
    struct Setup {
        FileSystem& files;
        std::string stateFolder;
        BundleInfo info;
        std::optional<VersionFolders> folders;  // nothing: it is somebody else's to update
        std::string language;                   // of the user, as in "ko"
        UnpackUpdate* unpack;                   // called on a thread of its own
        Sleep sleep;
        std::function<Instant()> now;
        // Ends the program and starts what lies in its place then.
        std::function<bool()> relaunch;
    };

    // The delegate must outlive it.
    AppcastUpdateEngine(UpdateDelegate& delegate, Setup setup);
    AppcastUpdateEngine(const AppcastUpdateEngine&) = delete;
    AppcastUpdateEngine& operator=(const AppcastUpdateEngine&) = delete;
    ~AppcastUpdateEngine() override;

    std::optional<UpdateUnavailability> unavailability() const override;
    void setHttpHeaders(std::map<std::string, std::string> headers) override;
    void setUpdateCheckInterval(std::chrono::seconds interval) override;
    bool automaticallyChecksForUpdates() const override { return state_.automaticallyChecks(); }
    void setAutomaticallyChecksForUpdates(bool value) override;
    bool automaticallyDownloadsUpdates() const override { return state_.automaticallyDownloads(); }
    void setAutomaticallyDownloadsUpdates(bool value) override;
    void start() override;
    void checkForUpdates() override;
    void install() override;
    void skip() override;
    const UpdateStatus& status() const override { return status_; }

  private:
    class Preparation;
    enum class Consent { none, given };

    static QCoro::Task<> keepSchedule(QPointer<AppcastUpdateEngine> engine, Sleep sleep);
    std::chrono::milliseconds untilNextCheck();

    bool isUnderWay() const;
    std::string feedURL() const;
    void beginCheck(UpdateCheck check);
    void feedFetched(UpdateFetch::End end);
    void considerItem(AppcastItem item);
    void showItem();
    void beginDownload(Consent consent);
    bool permitDownload(UpdateRequest& request);
    bool takeDownload(const QByteArray& bytes);
    void downloadFetched(UpdateFetch::End end);
    void beginPreparation();
    void preparationFinished();
    void installReady();
    void putInPlaceAtQuit();

    void become(UpdateStatus status);
    UpdateStatus statusOfItem(UpdateStatus::Phase phase) const;
    void fail(UpdateFailure failure, const std::string& refusal = {});
    void settle();

    UpdateDelegate& delegate_;
    Setup setup_;
    UpdateState state_;
    std::map<std::string, std::string> headers_;
    std::chrono::seconds interval_;
    UpdateStatus status_;

    UpdateCheck check_ = UpdateCheck::inBackground;
    Instant checkBegan_{};
    Consent consent_ = Consent::none;
    std::unique_ptr<QNetworkAccessManager> network_;  // only while something is fetched
    std::unique_ptr<UpdateFetch> fetch_;
    QByteArray feed_;
    std::optional<AppcastItem> item_;  // that the status tells of
    FileDescriptor download_;
    std::int64_t downloadedBytes_ = 0;
    std::unique_ptr<Preparation> preparation_;
    std::optional<AppcastItem> ready_;
    bool isInPlace_ = false;
};

}  // namespace brimwatch
