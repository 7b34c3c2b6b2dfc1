#include "presentation/setup_window.h"

#include <gmock/gmock.h>

#include <QGuiApplication>
#include <QKeySequence>
#include <QRasterWindow>
#include <QScreen>
#include <cmath>
#include <filesystem>

#include "presentation/colors.h"
#include "presentation/views/view_module.h"
#include "setup_view_fixture.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;

class SetupWindowTest : public test::SetupViewFixture {
  protected:
    SetupWindowTest() {
        start();
        makeSettings();
    }
    std::unique_ptr<SheetWindow> make() {
        ++makings_;
        if (!hasViews_) return nullptr;
        return std::make_unique<QuickSetupWindow>(QuickSetupWindow::Surroundings{
            .settings = *settings_, .screen = [this] { return screen_; }});
    }
    void show() {
        setup_.show();
        ASSERT_TRUE(eventuallyInLoop([this] { return setup_.window()->isActive(); }));
    }
    void press(Qt::Key key) { QTest::keyClick(setup_.window(), key, Qt::ControlModifier); }
    QColor ground() {
        return static_cast<QQuickView*>(setup_.window())->grabWindow().pixelColor(4, 4);
    }

    int quits_ = 0;
    int makings_ = 0;
    bool hasViews_ = true;
    std::optional<QRect> screen_ = QRect(100, 40, 1280, 760);
    SetupWindow setup_{[this] { return make(); }, [this] { ++quits_; }};
};

TEST_F(SetupWindowTest, IsMadeWhenItIsFirstShown) {
    EXPECT_EQ(setup_.window(), nullptr);
    EXPECT_FALSE(setup_.isVisible());
    setup_.setAppearance(Appearance::dark);
    setup_.setTextScale(1.5);
    EXPECT_EQ(makings_, 0);
    show();
    EXPECT_TRUE(setup_.isVisible());
    EXPECT_EQ(setup_.window()->title(), QStringLiteral("Brimwatch?"));
}

TEST_F(SetupWindowTest, IsAsHighAsTheScreenAllowsWhereItScrolls) {
    show();
    EXPECT_EQ(setup_.window()->size(), QSize(460, 700));
    EXPECT_EQ(setup_.window()->minimumSize(), QSize(460, 360));
    EXPECT_EQ(setup_.window()->maximumSize(), QSize(460, 16777215));
}

TEST_F(SetupWindowTest, IsAsHighAsItsContentWhereThatFits) {
    screen_ = QRect(0, 0, 1280, 4000);
    show();
    const auto& view = static_cast<const QQuickView&>(*setup_.window());
    const double content = view.rootObject()->property("contentHeight").toDouble();
    EXPECT_GT(content, 800);
    EXPECT_LT(content, 2000);
    EXPECT_EQ(setup_.window()->size(), QSize(460, static_cast<int>(std::ceil(content))));
    EXPECT_EQ(setup_.window()->minimumSize(), setup_.window()->size());
    EXPECT_EQ(setup_.window()->maximumSize(), setup_.window()->size());
    EXPECT_FALSE(itemIn(*view.rootObject(), "scrollBar").isVisible());
}

TEST_F(SetupWindowTest, IsNeverLowerThanItsContentByAFraction) {
    screen_ = QRect(0, 0, 1280, 9000);
    for (const double scale : {1.0, 1.1, 1.15, 1.37}) {
        SetupWindow window([this] { return make(); }, [] {});
        window.setTextScale(scale);
        window.show();
        const auto& view = static_cast<const QQuickView&>(*window.window());
        const double content = view.rootObject()->property("contentHeight").toDouble();
        EXPECT_GE(window.window()->height(), content) << scale;
        EXPECT_LT(window.window()->height(), content + 1) << scale;
        EXPECT_FALSE(itemIn(*view.rootObject(), "scrollBar").isVisible()) << scale;
    }
}

TEST_F(SetupWindowTest, IsFilledAlsoWhenItsContentBecomesLower) {
    screen_ = QRect(0, 0, 1280, 9000);
    const std::string folder = makeCodexFolder(".codex-a");
    model().refresh();
    show();
    const auto& view = static_cast<const QQuickView&>(*setup_.window());
    const double before = view.rootObject()->property("contentHeight").toDouble();
    std::filesystem::remove_all(folder);
    model().refresh();
    EXPECT_TRUE(eventuallyInLoop(
        [&] { return view.rootObject()->property("contentHeight").toDouble() < before; }));
    EXPECT_EQ(view.rootObject()->size().toSize(), setup_.window()->size());
}

TEST_F(SetupWindowTest, CountsLargeTextsAndAllAccounts) {
    screen_ = QRect(0, 0, 1280, 9000);
    show();
    const int before = setup_.window()->height();
    for (const char* name : {".codex-a", ".codex-b"})
        makeCodexFolder(name);
    model().refresh();
    QCoreApplication::processEvents();
    SetupWindow withAccounts([this] { return make(); }, [] {});
    withAccounts.show();
    EXPECT_GT(withAccounts.window()->height(), before + 60);
    SetupWindow withLargeTexts([this] { return make(); }, [] {});
    withLargeTexts.setTextScale(2);
    withLargeTexts.show();
    EXPECT_GT(withLargeTexts.window()->height(), before + before / 4);
}

TEST_F(SetupWindowTest, IsMeasuredByAUsualScreenWithoutOne) {
    screen_.reset();
    show();
    EXPECT_EQ(setup_.window()->height(), 740);
}

TEST_F(SetupWindowTest, StandsInTheMiddleOfTheScreen) {
    show();
    const QPoint center = setup_.window()->geometry().center();
    EXPECT_NEAR(center.x(), screen_->center().x(), 1);
    EXPECT_NEAR(center.y(), screen_->center().y(), 1);
}

TEST_F(SetupWindowTest, CanBeClosedAndMinimizedButNotMaximized) {
    show();
    const Qt::WindowFlags flags = setup_.window()->flags();
    EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowMinimizeButtonHint));
    EXPECT_TRUE(flags.testFlag(Qt::WindowTitleHint));
    EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_EQ(setup_.window()->type(), Qt::Window);
}

TEST_F(SetupWindowTest, IsKeptWhenItIsClosed) {
    show();
    const QWindow* first = setup_.window();
    press(Qt::Key_W);
    EXPECT_FALSE(setup_.isVisible());
    EXPECT_EQ(quits_, 0);
    show();
    EXPECT_EQ(setup_.window(), first);
    EXPECT_TRUE(setup_.isVisible());
    EXPECT_EQ(makings_, 1);
}

TEST_F(SetupWindowTest, ThereIsNeverASecondOne) {
    show();
    const auto windows = [] { return QGuiApplication::topLevelWindows().size(); };
    const auto before = windows();
    show();
    EXPECT_EQ(windows(), before);
    EXPECT_EQ(makings_, 1);
}

TEST_F(SetupWindowTest, RestsWhileItIsClosed) {
    show();
    press(Qt::Key_W);
    makeRegisteredFolder(".claude-a");
    model().refresh();
    QCoreApplication::processEvents();
    EXPECT_EQ(settings_->claude()->accounts()->rowCount(), 0);
    show();
    EXPECT_EQ(settings_->claude()->accounts()->rowCount(), 1);
}

TEST_F(SetupWindowTest, IsBroughtForwardAgain) {
    show();
    QRasterWindow other;
    other.show();
    other.requestActivate();
    ASSERT_TRUE(eventuallyInLoop([this] { return !setup_.window()->isActive(); }));
    show();
}

TEST_F(SetupWindowTest, ComesBackFromBeingMinimized) {
    show();
    press(Qt::Key_M);
    EXPECT_EQ(setup_.window()->windowState(), Qt::WindowMinimized);
    show();
    EXPECT_EQ(setup_.window()->windowState(), Qt::WindowNoState);
}

TEST_F(SetupWindowTest, QuitsByItsKey) {
    show();
    press(Qt::Key_Q);
    EXPECT_EQ(quits_, 1);
    EXPECT_TRUE(setup_.isVisible());
}

TEST_F(SetupWindowTest, LeavesOtherKeysAlone) {
    show();
    press(Qt::Key_X);
    QTest::keyClick(setup_.window(), Qt::Key_Q);
    QTest::keyClick(setup_.window(), Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(quits_, 0);
    EXPECT_TRUE(setup_.isVisible());
}

TEST_F(SetupWindowTest, ItsKeysActOnceHoweverOftenItWasShown) {
    show();
    press(Qt::Key_W);
    show();
    show();
    press(Qt::Key_Q);
    EXPECT_EQ(quits_, 1);
}

TEST_F(SetupWindowTest, NamesWhatItsKeysDo) {
    const std::pair<const char*, const char*> rows[] = {
        {"Brimwatch? 종료", "Ctrl+Q"}, {"닫기", "Ctrl+W"}, {"최소화", "Ctrl+M"}};
    const std::vector<QAction*> actions = setup_.actions();
    ASSERT_EQ(actions.size(), std::size(rows));
    for (std::size_t index = 0; index < actions.size(); ++index) {
        EXPECT_EQ(actions[index]->text(), QString::fromUtf8(rows[index].first));
        EXPECT_EQ(actions[index]->shortcut(), QKeySequence(QString::fromUtf8(rows[index].second)));
    }
}

TEST_F(SetupWindowTest, CanBeClosedBeforeItWasShown) {
    for (QAction* action : setup_.actions())
        action->trigger();
    EXPECT_FALSE(setup_.isVisible());
    EXPECT_EQ(quits_, 1);
}

TEST_F(SetupWindowTest, IsTriedAgainIfTheViewsWereNotThere) {
    hasViews_ = false;
    setup_.show();
    EXPECT_FALSE(setup_.isVisible());
    EXPECT_EQ(setup_.window(), nullptr);
    hasViews_ = true;
    show();
    EXPECT_EQ(makings_, 2);
}

TEST_F(SetupWindowTest, DoesNotKeepTheProgramFromQuitting) {
    show();
    bool isQuitting = false;
    QObject context;
    QObject::connect(QGuiApplication::instance(), &QCoreApplication::aboutToQuit, &context,
                     [&isQuitting] { isQuitting = true; });
    QMetaObject::invokeMethod(QGuiApplication::instance(), &QCoreApplication::quit,
                              Qt::QueuedConnection);
    QGuiApplication::exec();
    EXPECT_TRUE(isQuitting);
}

TEST_F(SetupWindowTest, HasTheGroundOfTheAppearance) {
    setup_.setAppearance(Appearance::dark);
    show();
    EXPECT_EQ(ground(), colors::surfaceFill.dark);
    setup_.setAppearance(Appearance::light);
    EXPECT_EQ(ground(), colors::surfaceFill.light);
    setup_.setAppearance(Appearance::dark);
    EXPECT_EQ(ground(), colors::surfaceFill.dark);
}

TEST_F(SetupWindowTest, FollowsTheSizeOfTexts) {
    show();
    auto& view = static_cast<QQuickView&>(*setup_.window());
    QQuickItem& label = itemIn(*view.rootObject(), "promise");
    const double before = label.height();
    setup_.setTextScale(2);
    layOut(*view.rootObject());
    EXPECT_GT(label.height(), 1.5 * before);
    EXPECT_EQ(setup_.window()->height(), 700);
}

}  // namespace
}  // namespace brimwatch
