// The updates of the settings, by the updater of the application. Main thread.
#pragma once

#include <QUrl>
#include <functional>
#include <optional>

#include "presentation/setup/setup_updates.h"
#include "updates/app_updater.h"

namespace brimwatch {

class AppSetupUpdates final : public SetupUpdates {
  public:
    // The updater must outlive it. `openPage` shows a page in the user's browser.
    AppSetupUpdates(AppUpdater& updater, std::function<void(const QUrl& page)> openPage);

    bool isAvailable() const override { return updater_.isAvailable(); }
    QString unavailabilityText() const override;
    bool automaticallyUpdates() const override { return updater_.automaticallyUpdates(); }
    void setAutomaticallyUpdates(bool value) override;
    QString statusText() const override;
    bool needsAttention() const override;
    bool canInstall() const override;
    bool canSkip() const override;
    bool hasPage() const override { return page().has_value(); }

    void checkNow() override { updater_.checkForUpdates(); }
    void install() override { updater_.install(); }
    void skip() override { updater_.skip(); }
    void showPage() override;

  private:
    std::optional<QUrl> page() const;

    AppUpdater& updater_;
    std::function<void(const QUrl& page)> openPage_;
};

}  // namespace brimwatch
