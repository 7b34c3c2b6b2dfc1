#include "app/app_setup_updates.h"

#include <utility>

#include "presentation/translated.h"
#include "updates/update_texts.h"

namespace brimwatch {

using Phase = UpdateStatus::Phase;

AppSetupUpdates::AppSetupUpdates(AppUpdater& updater,
                                 std::function<void(const QUrl& page)> openPage)
    : updater_(updater), openPage_(std::move(openPage)) {
    connect(&updater, &AppUpdater::automaticallyUpdatesChanged, this,
            &SetupUpdates::automaticallyUpdatesChanged);
    connect(&updater, &AppUpdater::statusChanged, this, &SetupUpdates::statusChanged);
}

QString AppSetupUpdates::unavailabilityText() const {
    const std::optional<UpdateUnavailability> reason = updater_.unavailability();
    return reason ? translated(updateUnavailabilityText(*reason)) : QString();
}

void AppSetupUpdates::setAutomaticallyUpdates(bool value) {
    updater_.setAutomaticallyUpdates(value);
}

QString AppSetupUpdates::statusText() const {
    return translated(updateStatusText(updater_.status()));
}

bool AppSetupUpdates::needsAttention() const {
    return updater_.status().phase == Phase::failed;
}

bool AppSetupUpdates::canInstall() const {
    const UpdateStatus& status = updater_.status();
    return status.phase == Phase::ready ||
           (status.phase == Phase::found && !status.isInformational);
}

bool AppSetupUpdates::canSkip() const {
    return updater_.status().phase == Phase::found;
}

void AppSetupUpdates::showPage() {
    if (const std::optional<QUrl> shown = page()) openPage_(*shown);
}

// An address from a feed opens in a browser, and nowhere else.
std::optional<QUrl> AppSetupUpdates::page() const {
    const UpdateStatus& status = updater_.status();
    if (status.phase != Phase::found && status.phase != Phase::ready) return std::nullopt;
    const std::optional<std::string>& address =
        status.isInformational || !status.releaseNotesURL ? status.infoURL : status.releaseNotesURL;
    if (!address) return std::nullopt;
    const QUrl url(QString::fromStdString(*address), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QLatin1String("https")) return std::nullopt;
    return url;
}

}  // namespace brimwatch
