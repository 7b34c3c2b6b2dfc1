#include <gmock/gmock.h>

#include <QAccessibleActionInterface>
#include <cmath>

#include "setup_view_fixture.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;
using test::Spoken;
using test::spoken;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* a = "subscription.claude-a";
constexpr const char* b = "subscription.claude-b";
constexpr const char* c = "subscription.codex-c";

class SetupOrderView : public test::SetupViewFixture {
  protected:
    void showThree(double screenHeight = 6000) {
        startWithThreeCards();
        show(1, screenHeight);
    }
    // Of the card with that key.
    QQuickItem& row(const char* key) {
        for (QQuickItem* each : test::findItems(window().contentItem(), "cardOrder.row")) {
            if (each->property("key").toString() == key) return *each;
        }
        throw std::runtime_error(key);
    }
    // The keys by where their rows are.
    std::vector<std::string> seenOrder() {
        std::vector<QQuickItem*> rows = test::findItems(window().contentItem(), "cardOrder.row");
        std::sort(rows.begin(), rows.end(),
                  [](QQuickItem* one, QQuickItem* other) { return one->y() < other->y(); });
        std::vector<std::string> keys;
        for (const QQuickItem* each : rows)
            keys.push_back(each->property("key").toString().toStdString());
        return keys;
    }
    QPoint centerOf(const char* key) { return place(row(key)).center().toPoint(); }
    void pressMouse(QPoint at) { QTest::mousePress(&window(), Qt::LeftButton, {}, at); }
    void moveMouse(QPoint to) {
        QTest::mouseMove(&window(), to);
        QCoreApplication::processEvents();
    }
    void releaseMouse(QPoint at) {
        QTest::mouseRelease(&window(), Qt::LeftButton, {}, at);
        QCoreApplication::processEvents();
    }
    bool isAtRest() {
        for (QQuickItem* each : test::findItems(window().contentItem(), "cardOrder.row")) {
            const double place = each->property("index").toInt() * each->height();
            if (std::abs(each->y() - place) > 0.5) return false;
        }
        return true;
    }
};

TEST_F(SetupOrderView, IsThereForTwoCardsAndMore) {
    makeRegisteredFolder(".claude-a");
    writeLimits("claude-a", 10, 20);
    start();
    show();
    EXPECT_FALSE(isSeen("menuCardOrder"));
    makeRegisteredFolder(".claude-b");
    writeLimits("claude-b", 10, 20);
    model().refresh();
    QCoreApplication::processEvents();
    EXPECT_TRUE(isSeen("menuCardOrder"));
}

TEST_F(SetupOrderView, ARowHasAGripAndTheTitleOfItsCard) {
    showThree();
    EXPECT_THAT(seenOrder(), ElementsAre(a, b, c));
    EXPECT_EQ(textOf(itemIn(row(b), "title")), "Claude · b");
    EXPECT_EQ(textOf(itemIn(row(c), "title")), "Codex");
    EXPECT_EQ(itemIn(row(b), "grip").property("name").toString(), "line.3.horizontal");
}

TEST_F(SetupOrderView, ARowIsDraggedToItsPlace) {
    showThree();
    const QPoint start = centerOf(a);
    const QPoint end = centerOf(c);
    pressMouse(start);
    EXPECT_EQ(settings_->cardOrder()->dragging(), "");
    moveMouse(start + QPoint(0, 14));
    EXPECT_EQ(settings_->cardOrder()->dragging(), a);
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    moveMouse(end);
    EXPECT_THAT(model().menuOrder(), ElementsAre(b, c, a));
    EXPECT_TRUE(row(a).property("isDragged").toBool());
    releaseMouse(end);
    EXPECT_EQ(settings_->cardOrder()->dragging(), "");
    EXPECT_TRUE(eventuallyInLoop([this] { return isAtRest(); }));
    EXPECT_THAT(seenOrder(), ElementsAre(b, c, a));
}

TEST_F(SetupOrderView, ARowFollowsThePointerAndStaysInTheList) {
    showThree();
    const QPoint start = centerOf(b);
    pressMouse(start);
    moveMouse(start - QPoint(0, 12));
    EXPECT_NEAR(row(b).y(), row(b).height() - 12, 1);
    moveMouse(start - QPoint(0, 500));
    EXPECT_EQ(row(b).y(), 0);
    moveMouse(start + QPoint(0, 500));
    EXPECT_EQ(row(b).y(), 2 * row(b).height());
    releaseMouse(start);
}

TEST_F(SetupOrderView, APressIsNoDrag) {
    showThree();
    const QPoint start = centerOf(a);
    pressMouse(start);
    moveMouse(start + QPoint(3, 3));
    releaseMouse(start + QPoint(3, 3));
    EXPECT_EQ(settings_->cardOrder()->dragging(), "");
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    EXPECT_TRUE(row(a).hasActiveFocus());
}

TEST_F(SetupOrderView, ADragPastTheRowsMovesToTheNearestEnd) {
    showThree();
    const QPoint start = centerOf(b);
    pressMouse(start);
    moveMouse(start - QPoint(0, 15));
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    moveMouse(start - QPoint(0, 400));
    EXPECT_THAT(model().menuOrder(), ElementsAre(b, a, c));
    moveMouse(start + QPoint(0, 400));
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, c, b));
    releaseMouse(start + QPoint(0, 400));
    EXPECT_EQ(settings_->cardOrder()->dragging(), "");
}

TEST_F(SetupOrderView, TheViewDoesNotScrollWhileARowIsDragged) {
    showThree(500);
    QQuickItem& scroll = item("scroll");
    scroll.setProperty("contentY", item("menuCardOrder").y());
    const double before = scroll.property("contentY").toDouble();
    const QPoint start = centerOf(c);
    pressMouse(start);
    for (int step = 1; step <= 12; ++step)
        moveMouse(start - QPoint(0, 5 * step));
    EXPECT_EQ(scroll.property("contentY").toDouble(), before);
    EXPECT_THAT(model().menuOrder(), testing::Not(IsEmpty()));
    releaseMouse(start);
}

TEST_F(SetupOrderView, ACardThatWentWhileItWasDraggedComesBackAtRest) {
    showThree();
    const QPoint start = centerOf(c);
    pressMouse(start);
    moveMouse(start - QPoint(0, 14));
    ASSERT_EQ(settings_->cardOrder()->dragging(), c);
    model().setCodexEnabled(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(settings_->cardOrder()->dragging(), "");
    releaseMouse(start);
    model().setCodexEnabled(true);
    QCoreApplication::processEvents();
    EXPECT_FALSE(row(c).property("isDragged").toBool());
}

TEST_F(SetupOrderView, AllRowsMayGoWhileTheLastOneIsDragged) {
    showThree();
    const QPoint start = centerOf(c);
    pressMouse(start);
    moveMouse(start - QPoint(0, 14));
    model().setClaudeUsagePaused(true);
    model().setCodexEnabled(false);
    QCoreApplication::processEvents();
    EXPECT_EQ(settings_->cardOrder()->rowCount(), 0);
    releaseMouse(start);
}

TEST_F(SetupOrderView, TheKeyboardMovesARow) {
    showThree();
    row(b).forceActiveFocus();
    pressKey(Qt::Key_Up, Qt::AltModifier);
    EXPECT_THAT(model().menuOrder(), ElementsAre(b, a, c));
    EXPECT_TRUE(row(b).hasActiveFocus());
    pressKey(Qt::Key_Down, Qt::AltModifier);
    pressKey(Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, c, b));
    pressKey(Qt::Key_Up);
    pressKey(Qt::Key_Up, Qt::ControlModifier);
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, c, b));
}

TEST_F(SetupOrderView, ARowThatTheKeyboardMovesStaysInSight) {
    showThree(420);
    QQuickItem& scroll = item("scroll");
    row(a).forceActiveFocus();
    const double below = place(row(a)).bottom() - window().height();
    scroll.setProperty("contentY", scroll.property("contentY").toDouble() + below);
    pressKey(Qt::Key_Down, Qt::AltModifier);
    pressKey(Qt::Key_Down, Qt::AltModifier);
    EXPECT_TRUE(eventuallyInLoop([this] { return isAtRest(); }));
    EXPECT_LE(place(row(a)).bottom(), window().height());
    scroll.setProperty("contentY", scroll.property("contentY").toDouble() + place(row(a)).top());
    pressKey(Qt::Key_Up, Qt::AltModifier);
    pressKey(Qt::Key_Up, Qt::AltModifier);
    EXPECT_TRUE(eventuallyInLoop([this] { return isAtRest(); }));
    EXPECT_GE(place(row(a)).top(), 0);
}

TEST_F(SetupOrderView, ALongTitleWrapsAndAllRowsAreAsHighAsItsOwn) {
    startWithThreeCards();
    model().setUsageName("claude-b", "팀에서 함께 쓰는 업무용 구독 계정의 아주 긴 이름");
    show(2);
    const QQuickItem& title = itemIn(row(b), "title");
    EXPECT_GT(title.property("lineCount").toInt(), 1);
    EXPECT_GE(row(b).height(), title.property("paintedHeight").toDouble());
    EXPECT_EQ(row(a).height(), row(b).height());
    EXPECT_EQ(row(c).height(), row(b).height());
    EXPECT_TRUE(isAtRest());
    EXPECT_GE(place(item("cardOrder.reset")).top(), place(row(c)).bottom());
    const QPoint start = centerOf(a);
    const QPoint end = centerOf(b);
    pressMouse(start);
    moveMouse(start + QPoint(0, 14));
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    moveMouse(end);
    EXPECT_THAT(model().menuOrder(), ElementsAre(b, a, c));
    releaseMouse(end);
}

TEST_F(SetupOrderView, ShortTitlesHaveRowsOfTheUsualHeight) {
    for (const double scale : {1.0, 1.5, 2.0}) {
        startWithThreeCards();
        show(scale);
        EXPECT_EQ(row(a).height(), std::round(13 * scale * 1.4) + 18) << scale;
        window_.reset();
        settings_.reset();
    }
}

TEST_F(SetupOrderView, AnAccessibilityClientMovesARowByItsActions) {
    showThree();
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&row(b));
    EXPECT_EQ(spoken(&row(b)), (Spoken{QAccessible::ListItem, QStringLiteral("Claude · b")}));
    QAccessibleActionInterface* actions = interface->actionInterface();
    ASSERT_NE(actions, nullptr);
    ASSERT_GE(actions->actionNames().size(), 2);
    EXPECT_EQ(actions->actionNames()[0], "위로 옮기기");
    EXPECT_EQ(actions->actionNames()[1], "아래로 옮기기");
    EXPECT_EQ(actions->localizedActionName("위로 옮기기"), "위로 옮기기");
    actions->doAction(QStringLiteral("위로 옮기기"));
    EXPECT_THAT(model().menuOrder(), ElementsAre(b, a, c));
    actions->doAction(QStringLiteral("아래로 옮기기"));
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, b, c));
    actions->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(row(b).hasActiveFocus());
    EXPECT_TRUE(interface->state().focused);
    actions->doAction(QStringLiteral("anything"));
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, b, c));
}

TEST_F(SetupOrderView, AnAccessibilityClientFindsTheRowsInTheirList) {
    showThree();
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&row(b));
    QAccessibleInterface* list = interface->parent();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->role(), QAccessible::List);
    EXPECT_EQ(list->text(QAccessible::Name), "메뉴 카드 순서");
    EXPECT_GE(list->indexOfChild(interface), 0);
    EXPECT_EQ(interface->childCount(), 0);
    EXPECT_EQ(interface->window(), &window());
    EXPECT_EQ(interface->rect().size(), row(b).size().toSize());
    EXPECT_EQ(interface->rect().topLeft(), window().mapToGlobal(place(row(b)).topLeft().toPoint()));
    EXPECT_FALSE(interface->state().invisible);
    window().hide();
    EXPECT_TRUE(interface->state().invisible);
}

TEST_F(SetupOrderView, GoesBackToTheUsualOrder) {
    showThree();
    model().moveCard(c, -2);
    QCoreApplication::processEvents();
    EXPECT_EQ(spoken(&item("cardOrder.reset")),
              (Spoken{QAccessible::Button, QStringLiteral("기본 순서로")}));
    press("cardOrder.reset");
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    EXPECT_TRUE(eventuallyInLoop([this] { return isAtRest(); }));
    EXPECT_THAT(seenOrder(), ElementsAre(a, b, c));
}

TEST_F(SetupOrderView, ComesToTheTopWhenTheUserWantsToArrangeTheCards) {
    startWithThreeCards();
    model().setRevealsMenuCardOrder(true);
    show(1, 500);
    EXPECT_EQ(item("scroll").property("contentY").toDouble(), 0);
    EXPECT_TRUE(model().revealsMenuCardOrder());
    EXPECT_TRUE(eventuallyInLoop([this] { return !model().revealsMenuCardOrder(); }));
    EXPECT_TRUE(
        eventuallyInLoop([this] { return std::abs(place(item("menuCardOrder")).top()) < 0.5; }));
}

TEST_F(SetupOrderView, ComesToTheTopInAnOpenWindowToo) {
    showThree(500);
    EXPECT_EQ(helperOf("reveal").property("interval").toInt(), 300);
    model().setRevealsMenuCardOrder(true);
    EXPECT_TRUE(
        eventuallyInLoop([this] { return std::abs(place(item("menuCardOrder")).top()) < 0.5; }));
    EXPECT_FALSE(model().revealsMenuCardOrder());
}

TEST_F(SetupOrderView, WithoutRowsNothingScrolls) {
    start();
    model().setRevealsMenuCardOrder(true);
    show(1, 500);
    EXPECT_TRUE(eventuallyInLoop([this] { return !model().revealsMenuCardOrder(); }));
    EXPECT_FALSE(helperOf("glide").property("running").toBool());
    EXPECT_EQ(item("scroll").property("contentY").toDouble(), 0);
}

TEST_F(SetupOrderView, WhereAllIsSeenNothingScrolls) {
    showThree();
    model().setRevealsMenuCardOrder(true);
    EXPECT_TRUE(eventuallyInLoop([this] { return !model().revealsMenuCardOrder(); }));
    EXPECT_EQ(helperOf("glide").property("to").toDouble(), 0);
}

// --- Without motion ---

TEST_F(SetupOrderView, IsThereAtOnceForWhoWantsNoMotion) {
    appearance_.setReducesMotion(true);
    showThree(500);
    model().setRevealsMenuCardOrder(true);
    EXPECT_TRUE(eventuallyInLoop([this] { return !model().revealsMenuCardOrder(); }));
    EXPECT_FALSE(helperOf("glide").property("running").toBool());
    EXPECT_NEAR(place(item("menuCardOrder")).top(), 0, 0.5);
}

TEST_F(SetupOrderView, RowsAreInTheirPlacesAtOnceForWhoWantsNoMotion) {
    showThree();
    appearance_.setReducesMotion(true);
    settings_->cardOrder()->moveUp(c);
    EXPECT_TRUE(isAtRest());
    EXPECT_THAT(seenOrder(), ElementsAre(a, c, b));
    appearance_.setReducesMotion(false);
    settings_->cardOrder()->moveUp(c);
    EXPECT_FALSE(isAtRest());
    EXPECT_TRUE(eventuallyInLoop([this] { return isAtRest(); }));
    EXPECT_THAT(seenOrder(), ElementsAre(c, a, b));
}

}  // namespace
}  // namespace brimwatch
