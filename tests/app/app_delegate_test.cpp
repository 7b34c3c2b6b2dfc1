#include "app/app_delegate.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QFont>
#include <QQuickView>
#include <QWindow>
#include <memory>

#include "harness/process.h"
#include "model_fixture.h"
#include "platform/linux/scripted_key_store.h"
#include "presentation/colors.h"
#include "presentation/status_menu.h"
#include "presentation/views/quick_popover.h"
#include "presentation/views/quick_setup_window.h"
#include "quick_items.h"
#include "scripted_desktop.h"

namespace brimwatch {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

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
    QWindow* window() const override { return nullptr; }
    void setAppearance(Appearance appearance) override { log_.appearance = appearance; }
    void setTextScale(double scale) override { log_.textScale = scale; }

  private:
    SheetLog& log_;
};

class AppDelegateTest : public test::ModelFixture {
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
        return test::findItem(window->rootObject(), name);
    }
    static QQuickItem* popoverItem(const char* name) {
        for (QWindow* window : visibleWindows()) {
            auto* view = qobject_cast<QQuickView*>(window);
            if (view == nullptr) continue;
            if (QQuickItem* found = test::findItem(view->rootObject(), name)) return found;
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
    test::ScriptedDesktop desktop_;
    NoClipboard clipboard_;
    NoFileManager fileManager_;
    NoFolderPicker folderPicker_;
    SheetLog sheet_;
    int sheetCount_ = 0;
    bool hasViews_ = true;
    int quitCount_ = 0;
    int signInCount_ = 0;
    bool isActive_ = true;
    test::ScriptedKeyStore keys_;
    AppUpdater updater_{{.keys = keys_,
                         .info = {},
                         .makeEngine = nullptr,
                         .sleep = nullptr,
                         .activateApplication = [] {}}};
    std::unique_ptr<AppDelegate> delegate_;
};

TEST_F(AppDelegateTest, ShowsTheLinkToAPhoneInItsThemeAndTextSize) {
    AppDelegate& delegate = launchConnected();
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 1);
    EXPECT_EQ(sheet_.appearance, Appearance::light);
    EXPECT_EQ(sheet_.textScale, desktop_.appearance.textScale());
    model().setAppTheme(AppTheme::dark);
    EXPECT_TRUE(test::eventually([this] {
        QCoreApplication::processEvents();
        return sheet_.appearance == Appearance::dark;
    }));
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 2);
    EXPECT_EQ(sheetCount_, 1);
}

TEST_F(AppDelegateTest, TriesAgainToShowTheLinkIfTheViewsWereNotThere) {
    AppDelegate& delegate = launchConnected();
    hasViews_ = false;
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 0);
    hasViews_ = true;
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 1);
}

TEST_F(AppDelegateTest, TheLinkToAPhoneStaysBeforeTheSettingsItWasOpenedFrom) {
    AppDelegate& delegate = launchConnected();
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.parent, nullptr);
    delegate.reopen();
    QMetaObject::invokeMethod(settingsItem("phoneLink.show"), "clicked");
    EXPECT_EQ(sheet_.showings, 2);
    EXPECT_EQ(sheet_.parent, delegate.setupWindow().window());
}

TEST_F(AppDelegateTest, TheSettingsFollowTheThemeWhileTheyAreOpen) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const auto ground = [&delegate] {
        return static_cast<QQuickView*>(delegate.setupWindow().window())
            ->grabWindow()
            .pixelColor(4, 4);
    };
    EXPECT_EQ(ground(), colors::surfaceFill.light);
    model().setAppTheme(AppTheme::dark);
    EXPECT_TRUE(test::eventually([&ground] {
        QCoreApplication::processEvents();
        return ground() == colors::surfaceFill.dark;
    }));
    model().setAppTheme(AppTheme::system);
    desktop_.appearance.setDark(true);
    EXPECT_EQ(ground(), colors::surfaceFill.dark);
    desktop_.appearance.setDark(false);
    EXPECT_EQ(ground(), colors::surfaceFill.light);
}

TEST_F(AppDelegateTest, TheSettingsAreMadeInTheTextSizeOfTheDesktop) {
    desktop_.appearance.setTextScale(2);
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    EXPECT_EQ(promiseSize(), 24);
    desktop_.appearance.setTextScale(1);
    EXPECT_EQ(promiseSize(), 12);
}

TEST_F(AppDelegateTest, TheCardsOpenTheSettingsOnTheirOrder) {
    makeRegisteredFolder(".claude-a");
    makeRegisteredFolder(".claude-b");
    launchConnected();
    writeLimits("claude-a", 10, 20);
    writeLimits("claude-b", 10, 20);
    model().refresh();
    choose(StatusMenuCommand::open);
    QQuickItem* cards = popoverItem("cards");
    ASSERT_NE(cards, nullptr);
    QMetaObject::invokeMethod(cards, "reorderChosen");
    EXPECT_FALSE(delegate_->popover().isShown());
    EXPECT_TRUE(delegate_->setupWindow().isVisible());
    EXPECT_TRUE(settingsItem("menuCardOrder")->isVisible());
    EXPECT_TRUE(test::eventually([this] {
        QCoreApplication::processEvents();
        return !model().revealsMenuCardOrder();
    }));
}

TEST_F(AppDelegateTest, AFirstRunShowsTheSettings) {
    start();
    launch();
    ASSERT_EQ(visibleWindows().size(), 1U);
    EXPECT_EQ(visibleWindows().front()->title(), "Brimwatch?");
}

TEST_F(AppDelegateTest, OnceConnectedTheItemAloneAppears) {
    launchConnected();
    EXPECT_EQ(desktop_.item.showCount, 1);
    EXPECT_THAT(visibleWindows(), IsEmpty());
}

TEST_F(AppDelegateTest, TheModelIsAtWorkBeforeTheLaunch) {
    startWithServices();
    EXPECT_THAT(services_.watch.folder, Not(IsEmpty()));
    EXPECT_EQ(desktop_.item.showCount, 0);
    launch();
    EXPECT_EQ(desktop_.item.showCount, 1);
}

TEST_F(AppDelegateTest, TheUserIsBusyWhileTheSettingsOrThePopoverAreBeforeHim) {
    AppDelegate& delegate = launchConnected();
    EXPECT_FALSE(updater_.isBusy());
    choose(StatusMenuCommand::open);
    EXPECT_TRUE(updater_.isBusy());
    delegate.popover().performClose();
    EXPECT_FALSE(updater_.isBusy());
    delegate.reopen();
    EXPECT_TRUE(updater_.isBusy());
    visibleWindows().front()->close();
    EXPECT_FALSE(updater_.isBusy());
}

TEST_F(AppDelegateTest, NobodyIsBusyInAProgramThatIsNotActive) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    choose(StatusMenuCommand::open);
    isActive_ = false;
    EXPECT_FALSE(updater_.isBusy());
}

TEST_F(AppDelegateTest, NobodyIsBusyBeforeTheLaunchAndAfterTheDelegate) {
    EXPECT_FALSE(updater_.isBusy());
    launchConnected().reopen();
    ASSERT_TRUE(updater_.isBusy());
    delegate_.reset();
    EXPECT_FALSE(updater_.isBusy());
}

TEST_F(AppDelegateTest, AReopenShowsTheSettings) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    EXPECT_EQ(visibleWindows().size(), 1U);
}

TEST_F(AppDelegateTest, AReopenBringsTheOneWindowForward) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const std::vector<QWindow*> first = visibleWindows();
    delegate.reopen();
    EXPECT_EQ(visibleWindows(), first);
}

TEST_F(AppDelegateTest, AClosedWindowComesBackAsTheSame) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const std::vector<QWindow*> first = visibleWindows();
    ASSERT_EQ(first.size(), 1U);
    first.front()->close();
    EXPECT_THAT(visibleWindows(), IsEmpty());
    EXPECT_EQ(quitCount_, 0);
    delegate.reopen();
    EXPECT_EQ(visibleWindows(), first);
}

TEST_F(AppDelegateTest, AClickOpensThePopoverAndTheMenuDoesToo) {
    AppDelegate& delegate = launchConnected();
    desktop_.item.click(QPoint(300, 10));
    EXPECT_TRUE(delegate.popover().isShown());
    delegate.popover().performClose();
    ASSERT_FALSE(delegate.popover().isShown());
}

TEST_F(AppDelegateTest, TheMenuOpensThePopover) {
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    EXPECT_TRUE(delegate.popover().isShown());
}

TEST_F(AppDelegateTest, TheSettingsTakeThePlaceOfThePopover) {
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    ASSERT_TRUE(delegate.popover().isShown());
    choose(StatusMenuCommand::setup);
    EXPECT_FALSE(delegate.popover().isShown());
    EXPECT_TRUE(delegate.setupWindow().isVisible());
}

TEST_F(AppDelegateTest, TheMenuReceivesFiguresAtOnce) {
    makeRegisteredFolder(".claude");
    launchConnected();
    model().refresh();
    writeLimits("claude-default", 10, 20);
    ASSERT_THAT(shownIds(), IsEmpty());
    choose(StatusMenuCommand::receiveNow);
    EXPECT_THAT(shownIds(), Not(IsEmpty()));
}

TEST_F(AppDelegateTest, TheMenuEndsTheProgram) {
    launchConnected();
    choose(StatusMenuCommand::quit);
    EXPECT_EQ(quitCount_, 1);
}

TEST_F(AppDelegateTest, ACommandThatNobodyKnowsDoesNothing) {
    launchConnected();
    emit desktop_.item.commandChosen(99);
    emit desktop_.item.commandChosen(0);
    EXPECT_EQ(quitCount_, 0);
    EXPECT_THAT(visibleWindows(), IsEmpty());
}

TEST_F(AppDelegateTest, TheMenuOfTheItemFollowsTheFigures) {
    makeRegisteredFolder(".claude");
    launchConnected();
    model().refresh();
    const std::size_t rowsWithoutFigures = desktop_.item.menu.size();
    writeLimits("claude-default", 10, 20);
    model().reload();
    QCoreApplication::processEvents();
    ASSERT_GT(desktop_.item.menu.size(), rowsWithoutFigures);
    EXPECT_TRUE(desktop_.item.menu.front().label.contains("80%"));
}

TEST_F(AppDelegateTest, OpeningTheMenuLooksForFreshFigures) {
    makeRegisteredFolder(".claude");
    launchConnected();
    writeLimits("claude-default", 10, 20);
    emit desktop_.item.menuOpened();
    EXPECT_THAT(shownIds(), Not(IsEmpty()));
}

}  // namespace
}  // namespace brimwatch
