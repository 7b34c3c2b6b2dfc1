#include "updates/app_updater.h"

#include <chrono>
#include <utility>

#include "platform/spawn.h"
#include "updates/mac_private_update_keychain_store.h"
#include "updates/private_update_url.h"

namespace brimwatch {
namespace {

constexpr std::chrono::seconds privateCheckInterval{3600};
constexpr std::chrono::seconds retryInterval{60};
constexpr const char* authorizationHeader = "Authorization";

}  // namespace

AppUpdater::AppUpdater(Surroundings surroundings) : surroundings_(std::move(surroundings)) {
    auto credentials = MacPrivateUpdateKeychainStore(surroundings_.keys, surroundings_.info).load();
    if (!credentials) return;
    privateUpdates_ = *std::move(credentials);
    controller_ = surroundings_.makeEngine(*this);
    connect(controller_.get(), &UpdateEngine::statusChanged, this, &AppUpdater::statusChanged);
    if (isAvailable()) startEngine();
}

AppUpdater::~AppUpdater() = default;

void AppUpdater::startEngine() {
    if (privateUpdates_) {
        controller_->setHttpHeaders({{authorizationHeader, authorizationValue(*privateUpdates_)}});
        controller_->setUpdateCheckInterval(privateCheckInterval);
    }
    setAutomaticallyUpdates(controller_->automaticallyDownloadsUpdates());
    controller_->start();
}

bool AppUpdater::isAvailable() const {
    return controller_ != nullptr && !controller_->unavailability();
}

std::optional<UpdateUnavailability> AppUpdater::unavailability() const {
    return controller_ != nullptr ? controller_->unavailability() : std::nullopt;
}

void AppUpdater::setAutomaticallyUpdates(bool value) {
    const bool isChange = automaticallyUpdates_ != value;
    automaticallyUpdates_ = value;
    if (isAvailable()) {
        controller_->setAutomaticallyChecksForUpdates(true);
        controller_->setAutomaticallyDownloadsUpdates(value);
    }
    if (isChange) emit automaticallyUpdatesChanged();
}

void AppUpdater::checkForUpdates() {
    surroundings_.activateApplication();
    if (isAvailable()) controller_->checkForUpdates();
}

void AppUpdater::install() {
    if (isAvailable()) controller_->install();
}

void AppUpdater::skip() {
    if (isAvailable()) controller_->skip();
}

const UpdateStatus& AppUpdater::status() const {
    static const UpdateStatus none;
    return controller_ != nullptr ? controller_->status() : none;
}

std::optional<std::string> AppUpdater::feedURL() {
    if (!privateUpdates_) return std::nullopt;
    return privateUpdateFeed(surroundings_.info.updateHost);
}

tl::expected<void, std::string> AppUpdater::shouldProceed(const UpdateItem& item,
                                                          UpdateCheck /*check*/) {
    if (!privateUpdates_ || passesItemCheck(item)) return {};
    using Failure = MacPrivateUpdateFailure;
    return tl::unexpected(
        std::string(Failure{.reason = Failure::Reason::disallowedUpdate}.message()));
}

bool AppUpdater::shouldDownloadReleaseNotes(const UpdateItem& /*item*/) {
    return !privateUpdates_;
}

// Whatever a feed says, the credentials go to no other address.
void AppUpdater::willDownload(const UpdateItem& item, UpdateRequest& request) {
    if (!privateUpdates_) return;
    if (passesItemCheck(item) && isAllowedUpdateURL(request.url, surroundings_.info.updateHost)) {
        request.headers[authorizationHeader] = authorizationValue(*privateUpdates_);
    } else {
        request.headers.erase(authorizationHeader);
        request.url = privateUpdateFeed(surroundings_.info.updateHost);
    }
}

bool AppUpdater::willInstallOnQuit(const UpdateItem& /*item*/, std::function<void()> installNow) {
    pendingInstall_ = std::move(installNow);
    tryPendingInstall();
    return true;
}

bool AppUpdater::supportsGentleScheduledUpdateReminders() {
    return true;
}

bool AppUpdater::shouldHandleShowingScheduledUpdate(const UpdateItem& /*item*/,
                                                    bool /*inImmediateFocus*/) {
    return true;
}

void AppUpdater::willHandleShowingUpdate(bool handledByEngine, const UpdateItem& /*item*/,
                                         UpdateStage /*stage*/) {
    if (handledByEngine) surroundings_.activateApplication();
}

void AppUpdater::tryPendingInstall() {
    if (!pendingInstall_) return;
    if (!isBusy()) {
        isRetrying_ = false;
        ++retryNumber_;
        std::exchange(pendingInstall_, nullptr)();
    } else if (!isRetrying_) {
        isRetrying_ = true;
        spawn(retry(this, surroundings_.sleep, retryNumber_));
    }
}

QCoro::Task<> AppUpdater::retry(QPointer<AppUpdater> updater, Sleep sleep, int number) {
    const auto isWanted = [&] { return updater && updater->retryNumber_ == number; };
    while (isWanted()) {
        const SleepEnd end = co_await sleep(retryInterval);
        if (end == SleepEnd::elapsed && isWanted()) updater->tryPendingInstall();
        if (end == SleepEnd::cancelled) co_return;
    }
}

bool AppUpdater::passesItemCheck(const UpdateItem& item) const {
    return isAllowedUpdateURL(item.fileURL, surroundings_.info.updateHost) && !item.infoURL &&
           !item.releaseNotesURL && !item.fullReleaseNotesURL && !item.isDeltaUpdate &&
           item.deltaUpdates.empty();
}

}  // namespace brimwatch
