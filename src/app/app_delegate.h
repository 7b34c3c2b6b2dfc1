// Everything of the desktop program that the user sees: the item in the panel with its popover and
// menu, and the settings window. It brings them to life in their order and joins them to the model.
// Main thread.
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/app_setup_updates.h"
#include "core/helper_model.h"
#include "platform/clipboard.h"
#include "platform/desktop_appearance.h"
#include "platform/file_manager.h"
#include "platform/folder_picker.h"
#include "platform/session_events.h"
#include "platform/settings_store.h"
#include "platform/sleep.h"
#include "platform/status_item.h"
#include "presentation/frame_timer.h"
#include "presentation/language_translator.h"
#include "presentation/lazy_popover.h"
#include "presentation/menu_bar_rocket.h"
#include "presentation/menu_content_model.h"
#include "presentation/phone_link_sheet.h"
#include "presentation/setup/setup_view_model.h"
#include "presentation/setup_window.h"
#include "presentation/sheet_window.h"
#include "presentation/status_item_controller.h"
#include "presentation/status_item_menu.h"
#include "updates/app_updater.h"

namespace brimwatch {

class AppDelegate final : public QObject {
  public:
    // What is referred to must outlive the delegate.
    struct Surroundings {
        HelperModel& model;
        SettingsStore& defaults;
        StatusItem& item;
        SessionEvents& session;
        DesktopAppearance& appearance;
        Clipboard& clipboard;
        FileManager& fileManager;
        FolderPicker& folderPicker;
        FrameTimer& timer;
        std::function<Instant()> now;
        std::function<double()> uptime;  // as that of `StatusItemController`
        std::string locale;              // of times and numbers
        // What each screen leaves to windows, in points.
        std::function<std::vector<double>()> screenHeights;
        std::optional<MenuBarRocket> rocket;
        // As for `LazyPopover`.
        std::function<std::unique_ptr<Popover>(MenuContentModel& content)> makePopover;
        std::function<std::unique_ptr<SheetWindow>(PhoneLinkSheet& sheet)> makePhoneLinkWindow;
        std::function<std::unique_ptr<SheetWindow>(SetupViewModel& settings)> makeSetupWindow;
        // As for `SetupViewModel`.
        std::function<bool()> canSignIn;
        std::function<void()> signIn;
        std::function<void(const QUrl& page)> openPage;  // in the user's browser
        Sleep sleep;
        std::function<void()> quit;
        AppUpdater& updater;
        std::function<bool()> isApplicationActive;  // one of its windows has the focus
    };

    explicit AppDelegate(Surroundings surroundings);

    // Once, when the event loop is about to run. Who has connected nothing yet sees the settings.
    void didFinishLaunching();
    // The program was started again while it runs: shows the settings, whatever is open.
    void reopen();
    // The updates have something to say: shows the settings, with them in sight.
    void showUpdates() {
        updates_.setRevealed(true);
        reopen();
    }
    // Nothing if its window can't be made; the next call tries again. The model needs a publisher
    // for phones.
    void showPhoneLink();

    Popover& popover() { return popover_; }
    SetupWindow& setupWindow() { return setupWindow_; }

  private:
    void openPopover();
    void openSetupFromPopover();
    Appearance appearance() const;
    void applyTheme();
    void applyTextScale();
    bool isBusy() const;

    Surroundings surroundings_;
    LanguageTranslator translator_;  // before all that shows texts
    AppSetupUpdates updates_;
    SetupViewModel settings_;
    SetupWindow setupWindow_;
    MenuContentModel content_;
    LazyPopover popover_;
    std::optional<StatusItemController> statusItem_;
    std::optional<StatusItemMenu> menu_;
    std::optional<PhoneLinkSheet> phoneLink_;
    std::unique_ptr<SheetWindow> phoneLinkWindow_;
    QTimer themeSoon_;
};

}  // namespace brimwatch
