// The keys of the settings window, in the windows that they are lent to as well.

#include <gtest/gtest.h>

#include <QAction>
#include <QRasterWindow>
#include <memory>

#include "presentation/language_translator.h"
#include "presentation/setup_window.h"
#include "setup_view_fixture.h"
#include "support/language.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;

class SetupWindowKeysTest : public test::SetupViewFixture {
  protected:
    SetupWindowKeysTest() {
        start();
        makeSettings();
    }
    std::unique_ptr<SheetWindow> make() {
        return std::make_unique<QuickSetupWindow>(
            QuickSetupWindow::Surroundings{.settings = *settings_});
    }
    void showBoth() {
        setup_.show();
        other_.show();
        setup_.lendKeys(other_);
        ASSERT_TRUE(eventuallyInLoop([this] { return other_.isExposed(); }));
    }
    static void press(QWindow& window, Qt::Key key) {
        QTest::keyClick(&window, key, Qt::ControlModifier);
    }

    int quits_ = 0;
    SetupWindow setup_{[this] { return make(); }, [this] { ++quits_; }};
    QRasterWindow other_;
};

TEST_F(SetupWindowKeysTest, CloseTheWindowInWhichTheyArePressed) {
    showBoth();
    press(other_, Qt::Key_W);
    EXPECT_FALSE(other_.isVisible());
    EXPECT_TRUE(setup_.isVisible());
    press(*setup_.window(), Qt::Key_W);
    EXPECT_FALSE(setup_.isVisible());
}

TEST_F(SetupWindowKeysTest, MinimizeTheWindowInWhichTheyArePressed) {
    showBoth();
    press(other_, Qt::Key_M);
    EXPECT_EQ(other_.windowState(), Qt::WindowMinimized);
    EXPECT_EQ(setup_.window()->windowState(), Qt::WindowNoState);
}

TEST_F(SetupWindowKeysTest, ActOnTheSettingsAgainAfterwards) {
    showBoth();
    press(other_, Qt::Key_M);
    setup_.actions()[1]->trigger();
    EXPECT_FALSE(setup_.isVisible());
    EXPECT_TRUE(other_.isVisible());
}

TEST_F(SetupWindowKeysTest, ActOnceHoweverOftenTheyWereLent) {
    showBoth();
    setup_.lendKeys(other_);
    press(other_, Qt::Key_Q);
    EXPECT_EQ(quits_, 1);
}

TEST_F(SetupWindowKeysTest, ActInAWindowBeforeTheSettingsWereShown) {
    other_.show();
    setup_.lendKeys(other_);
    press(other_, Qt::Key_W);
    EXPECT_FALSE(other_.isVisible());
    EXPECT_EQ(setup_.window(), nullptr);
}

TEST_F(SetupWindowKeysTest, AreNamedInTheLanguageOfTheMoment) {
    const LanguageTranslator translator(model());
    model().setLanguage(languageOfCode("en"));
    setup_.translate();
    const char* const names[] = {"Quit Brimwatch?", "Close", "Minimize"};
    const std::vector<QAction*> actions = setup_.actions();
    ASSERT_EQ(actions.size(), std::size(names));
    for (std::size_t index = 0; index < actions.size(); ++index)
        EXPECT_EQ(actions[index]->text(), QString::fromUtf8(names[index]));
}

}  // namespace
}  // namespace brimwatch
