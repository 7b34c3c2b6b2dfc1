// The delegate over a model and a desktop in the hands of a test, with the real popover and the
// real settings window.
#pragma once

#include <QApplication>
#include <QFont>
#include <QQuickItem>
#include <QQuickView>
#include <QWindow>
#include <memory>
#include <string>
#include <vector>

#include "app/app_delegate.h"
#include "model_fixture.h"
#include "platform/linux/scripted_key_store.h"
#include "presentation/menu_bar_rocket.h"
#include "presentation/status_menu.h"
#include "presentation/views/quick_popover.h"
#include "presentation/views/quick_setup_window.h"
#include "quick_items.h"
#include "scripted_desktop.h"

namespace brimwatch::test {

class NoClipboard : public Clipboard {
  public:
    void setSecretText(const QString& /*text*/) override {}
};

class NoFileManager : public FileManager {
  public:
    void reveal(const std::string& /*path*/) override {}
};

class NoFolderPicker : public FolderPicker {
  public:
    void pick(QWindow& /*parent*/, const QString& /*title*/, Picked /*picked*/) override {}
};

struct SheetLog {
    int showings = 0;
    QWindow* parent = nullptr;
    QWindow* window = nullptr;  // that of the sheet
    Appearance appearance = Appearance::light;
    double textScale = 0;
};

class NotedSheet : public SheetWindow {
  public:
    explicit NotedSheet(SheetLog& log) : log_(log) {}

    void show(QWindow* parent) override {
        ++log_.showings;
        log_.parent = parent;
    }
    QWindow* window() const override { return log_.window; }
    void setAppearance(Appearance appearance) override { log_.appearance = appearance; }
    void setTextScale(double scale) override { log_.textScale = scale; }

  private:
    SheetLog& log_;
};

class AppDelegateFixture : public ModelFixture {
  protected:
    std::unique_ptr<SheetWindow> makeSheet() {
        if (!hasViews_) return nullptr;
        ++sheetCount_;
        return std::make_unique<NotedSheet>(sheet_);
    }
    AppDelegate& launch() {
        delegate_ = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            .model = model(),
            .defaults = defaults_,
            .item = desktop_.item,
            .session = desktop_.session,
            .appearance = desktop_.appearance,
            .clipboard = clipboard_,
            .fileManager = fileManager_,
            .folderPicker = folderPicker_,
            .timer = desktop_.timer,
            .now = [this] { return now(); },
            .uptime = [] { return 1000.0; },
            .locale = "ko",
            .screenHeights = [] { return std::vector<double>{800}; },
            .rocket = sharedRocket(),
            .makePopover =
                [](MenuContentModel& content) {
                    return std::make_unique<QuickPopover>(
                        QuickPopover::Surroundings{.content = content});
                },
            .makePhoneLinkWindow = [this](PhoneLinkSheet&) { return makeSheet(); },
            .makeSetupWindow =
                [](SetupViewModel& settings) {
                    return std::make_unique<QuickSetupWindow>(
                        QuickSetupWindow::Surroundings{.settings = settings});
                },
            .canSignIn = [] { return true; },
            .signIn = [this] { ++signInCount_; },
            .openPage = [](const QUrl&) {},
            .sleep = time_.sleeper(),
            .quit = [this] { ++quitCount_; },
            .updater = updater_,
            .isApplicationActive = [this] { return isActive_; }});
        delegate_->didFinishLaunching();
        return *delegate_;
    }

    AppDelegate& launchConnected() {
        startWith(settings_key::setupDone, "true");
        return launch();
    }

    void choose(StatusMenuCommand command) {
        emit desktop_.item.commandChosen(static_cast<int>(command));
    }

    QQuickItem* settingsItem(const char* name) {
        auto* window = static_cast<QQuickView*>(delegate_->setupWindow().window());
        return findItem(window->rootObject(), name);
    }
    static QQuickItem* popoverItem(const char* name) {
        for (QWindow* window : visibleWindows()) {
            auto* view = qobject_cast<QQuickView*>(window);
            if (view == nullptr) continue;
            if (QQuickItem* found = findItem(view->rootObject(), name)) return found;
        }
        return nullptr;
    }
    int promiseSize() {
        return settingsItem("promise")->property("font").value<QFont>().pixelSize();
    }

    static std::vector<QWindow*> visibleWindows() {
        std::vector<QWindow*> windows;
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (window->isVisible()) windows.push_back(window);
        }
        return windows;
    }

    int argumentCount_ = 1;
    std::string name_ = "app_test";
    char* arguments_[2] = {name_.data(), nullptr};
    QApplication application_{argumentCount_, arguments_};
    ScriptedDesktop desktop_;
    NoClipboard clipboard_;
    NoFileManager fileManager_;
    NoFolderPicker folderPicker_;
    SheetLog sheet_;
    int sheetCount_ = 0;
    bool hasViews_ = true;
    int quitCount_ = 0;
    int signInCount_ = 0;
    bool isActive_ = true;
    ScriptedKeyStore keys_;
    AppUpdater updater_{{.keys = keys_,
                         .info = {},
                         .makeEngine = nullptr,
                         .sleep = nullptr,
                         .activateApplication = [] {}}};
    std::unique_ptr<AppDelegate> delegate_;
};

}  // namespace brimwatch::test
