#include "presentation/setup_window.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QKeySequence>
#include <QRasterWindow>
#include <QScreen>
#include <QTest>

#include "harness/process.h"
#include "presentation/colors.h"

namespace brimwatch {
namespace {

bool eventuallyInLoop(const std::function<bool()>& condition) {
    return test::eventually([&condition] {
        QCoreApplication::processEvents();
        return condition();
    });
}

class SetupWindowTest : public ::testing::Test {
  protected:
    void show() {
        setup_.show();
        ASSERT_TRUE(eventuallyInLoop([this] { return setup_.window()->isActive(); }));
    }
    void press(Qt::Key key) { QTest::keyClick(setup_.window(), key, Qt::ControlModifier); }

    int quits_ = 0;
    SetupWindow setup_{[this] { ++quits_; }};
};

TEST_F(SetupWindowTest, IsMadeWhenItIsFirstShown) {
    EXPECT_EQ(setup_.window(), nullptr);
    EXPECT_FALSE(setup_.isVisible());
    setup_.setAppearance(Appearance::dark);
    EXPECT_EQ(setup_.window(), nullptr);
    show();
    EXPECT_TRUE(setup_.isVisible());
    EXPECT_EQ(setup_.window()->title(), QStringLiteral("Brimwatch?"));
    EXPECT_EQ(setup_.window()->size(), QSize(460, 520));
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
    show();
    const auto ground = [this] {
        QCoreApplication::processEvents();
        return setup_.window()->screen()->grabWindow(setup_.window()->winId()).toImage();
    };
    EXPECT_TRUE(
        eventuallyInLoop([&] { return ground().pixelColor(20, 20) == colors::surfaceFill.light; }));
    setup_.setAppearance(Appearance::dark);
    EXPECT_TRUE(eventuallyInLoop(
        [&] { return ground().pixelColor(459, 519) == colors::surfaceFill.dark; }));
}

}  // namespace
}  // namespace brimwatch
