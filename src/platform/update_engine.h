// What updates the program: it looks at a feed now and then, downloads what is newer, makes it
// ready, and puts it in place of the running version.
//
// Nothing that it downloads is kept before its signature has been checked. It asks its delegate
// at the points where another way is possible. A check by the user always ends in a status that
// tells the result. Main thread.
#pragma once

#include <QObject>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tl/expected.hpp>
#include <vector>

namespace brimwatch {

// An update as the feed tells of it. Addresses are texts as they stand there, only made absolute.
struct UpdateItem {
    std::string version;         // by which versions are compared
    std::string displayVersion;  // for the user
    std::optional<std::string> fileURL = {};
    std::optional<std::string> infoURL = {};
    std::optional<std::string> releaseNotesURL = {};
    std::optional<std::string> fullReleaseNotesURL = {};
    bool isDeltaUpdate = false;
    std::vector<std::string> deltaUpdates = {};  // the versions that they start from

    bool operator==(const UpdateItem&) const = default;
};

enum class UpdateCheck { byUser, inBackground };

// A download that is about to begin. The delegate may change it.
struct UpdateRequest {
    std::string url;
    std::map<std::string, std::string> headers;

    bool operator==(const UpdateRequest&) const = default;
};

enum class UpdateStage { notDownloaded, downloaded };

class UpdateDelegate {
  public:
    UpdateDelegate() = default;
    UpdateDelegate(const UpdateDelegate&) = delete;
    UpdateDelegate& operator=(const UpdateDelegate&) = delete;
    virtual ~UpdateDelegate() = default;

    // Nothing: the feed that the build names.
    virtual std::optional<std::string> feedURL() = 0;
    // Before anything of the item is shown or downloaded. The error is why not, for the user.
    virtual tl::expected<void, std::string> shouldProceed(const UpdateItem& item,
                                                          UpdateCheck check) = 0;
    virtual bool shouldDownloadReleaseNotes(const UpdateItem& item) = 0;
    // Before each request for the item's file, those that a redirect asks for included.
    virtual void willDownload(const UpdateItem& item, UpdateRequest& request) = 0;
    // The item is ready, and nobody was asked. True: the delegate keeps the block, which puts the
    // update in place and starts it. It is put in place when the program quits, whether or not.
    virtual bool willInstallOnQuit(const UpdateItem& item, std::function<void()> installNow) = 0;
    virtual bool supportsGentleScheduledUpdateReminders() = 0;
    // Whether the engine shows by itself what a check in the background found.
    virtual bool shouldHandleShowingScheduledUpdate(const UpdateItem& item,
                                                    bool inImmediateFocus) = 0;
    virtual void willHandleShowingUpdate(bool handledByEngine, const UpdateItem& item,
                                         UpdateStage stage) = 0;
};

// Why there are no updates in this installation.
enum class UpdateUnavailability {
    managedElsewhere,  // as by a package manager; or the folders can't be written
    noFeed,
    noSigningKey,
};

enum class UpdateFailure {
    network,    // the server could not be reached, or did not answer as it should
    feed,       // what came is no feed
    refused,    // by the delegate, which says why
    download,   // broke off, or has another length than the feed says
    signature,  // the file is not the maker's
    archive,    // or it is no installation of that version
    disk,
    relaunch,  // the new version is in place, and starts with the next start
};

struct UpdateStatus {
    enum class Phase {
        idle,
        checking,
        upToDate,
        found,  // waits for `install` or `skip`
        downloading,
        preparing,
        ready,  // waits for `install`, or for the program to quit
        installing,
        failed,
    };

    Phase phase = Phase::idle;
    std::string displayVersion = {};  // from `found` on
    // What the user may look at, from `found` on.
    std::optional<std::string> releaseNotesURL = {};
    std::optional<std::string> infoURL = {};
    bool isInformational = false;   // there is a page to look at and nothing to install
    double downloadedFraction = 0;  // 0 to 1
    std::optional<UpdateFailure> failure = {};
    std::string refusal = {};  // of the delegate

    bool operator==(const UpdateStatus&) const = default;
};

class UpdateEngine : public QObject {
    Q_OBJECT

  public:
    virtual std::optional<UpdateUnavailability> unavailability() const = 0;

    // For every request but those to which a redirect leads.
    virtual void setHttpHeaders(std::map<std::string, std::string> headers) = 0;
    virtual void setUpdateCheckInterval(std::chrono::seconds interval) = 0;  // an hour at least
    // Both are kept for later runs.
    virtual bool automaticallyChecksForUpdates() const = 0;
    virtual void setAutomaticallyChecksForUpdates(bool value) = 0;
    virtual bool automaticallyDownloadsUpdates() const = 0;
    virtual void setAutomaticallyDownloadsUpdates(bool value) = 0;

    // Begins to look at the feed by itself. Once; not if there are no updates here.
    virtual void start() = 0;
    // By the user. While something is under way, its status is the answer.
    virtual void checkForUpdates() = 0;
    // The user agrees to what was found or is ready.
    virtual void install() = 0;
    // The user does not want this version.
    virtual void skip() = 0;

    virtual const UpdateStatus& status() const = 0;

  signals:
    void statusChanged();
};

}  // namespace brimwatch
