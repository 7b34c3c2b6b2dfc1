// What all controls of the settings have in common: their look, and what they do while they are
// disabled.

#include <gmock/gmock.h>

#include "presentation/colors.h"
#include "setup_view_fixture.h"

namespace brimwatch {
namespace {

using ::testing::IsEmpty;

class SetupControlsTest : public test::SetupViewFixture {
  protected:
    // As an accessibility client does.
    static void act(QQuickItem& control, const QString& action) {
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&control);
        ASSERT_NE(interface, nullptr);
        QAccessibleActionInterface* actions = interface->actionInterface();
        ASSERT_NE(actions, nullptr);
        actions->doAction(action);
        QCoreApplication::processEvents();
    }
    static void press(QQuickItem& control) {
        act(control, QAccessibleActionInterface::pressAction());
    }
    QColor inkOf(const char* button) {
        return colorOf(*item(button).property("contentItem").value<QQuickItem*>());
    }
    bool isTinted(const char* button) { return itemIn(item(button), "tint").isVisible(); }
};

TEST_F(SetupControlsTest, AButtonThatTakesSomethingAwayIsRed) {
    start();
    show();
    EXPECT_EQ(inkOf("settings.removeEverything"), colors::red.light);
    EXPECT_TRUE(isTinted("settings.removeEverything"));
    EXPECT_EQ(colorOf(itemIn(item("settings.removeEverything"), "tint")), colors::red.light);
    EXPECT_EQ(inkOf("claude.connectAll"), colors::primaryLabel.light);
    EXPECT_FALSE(isTinted("claude.connectAll"));
    EXPECT_EQ(item("settings.removeEverything").opacity(), 1);
}

TEST_F(SetupControlsTest, WhatIsDisabledIsNotPressedByAnAccessibilityClientEither) {
    startAndBeginRemoval();
    show();
    QQuickItem& button = item("settings.removeEverything");
    ASSERT_FALSE(button.isEnabled());
    EXPECT_LT(button.opacity(), 1);
    press(button);
    EXPECT_FALSE(isSeen("removalDialog"));
    settle();
}

TEST_F(SetupControlsTest, AnAccessibilityClientHearsHowASwitchStands) {
    QAccessible::setActive(true);
    start();
    show();
    QQuickItem& control = item("codex.enabled");
    const QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&control);
    EXPECT_TRUE(interface->state().checkable);
    EXPECT_TRUE(interface->state().checked);
    press(control);
    EXPECT_FALSE(interface->state().checked);
    model().setCodexEnabled(true);
    EXPECT_TRUE(interface->state().checked);
}

TEST_F(SetupControlsTest, NoControlActsWhileItIsDisabled) {
    startWithThreeCards();
    show();
    QQuickItem& shown = item("codex.enabled");
    QQuickItem& picker = item("settings.appTheme");
    QQuickItem& symbol = itemIn(item("subscription.claude-b"), "location");
    for (QQuickItem* control : {&shown, &picker, &symbol}) {
        control->setEnabled(false);
        press(*control);
    }
    act(shown, QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(model().codexEnabled());
    EXPECT_FALSE(picker.property("popup").value<QObject*>()->property("visible").toBool());
    EXPECT_THAT(fileManager_.revealed, IsEmpty());
    for (QQuickItem* control : {&shown, &symbol}) {
        control->setEnabled(true);
        press(*control);
    }
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_EQ(fileManager_.revealed, std::vector{path(".claude-b")});
}

}  // namespace
}  // namespace brimwatch
