#include <QGuiApplication>
#include <QSignalSpy>

#include "popover_fixture.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;
using test::spoken;
using test::Spoken;

constexpr double onePixel = 1;

class MenuContentView : public test::PopoverFixture {
  protected:
    double scrolled() { return item("list").property("contentY").toDouble(); }
    bool hasFocus(const char* name) { return item(name).hasActiveFocus(); }
    bool isMenuOpen() {
        const auto rows = items("menu.reorder");
        return !rows.empty() && rows.front()->isVisible();
    }
};

TEST_F(MenuContentView, StacksLogoCardsAndActions) {
    show(test::cards(2));
    EXPECT_EQ(root().width(), 270);
    EXPECT_EQ(window().size(), root().size().toSize());
    EXPECT_EQ(place("logo").topLeft(), QPointF(12, 12));
    EXPECT_EQ(place("logo").height(), 20);
    EXPECT_EQ(place("cards").left(), 12);
    EXPECT_EQ(place("cards").width(), 246);
    EXPECT_EQ(place("cards").top() - place("logo").bottom(), 12);
    EXPECT_EQ(place("sending").left(), 12);
    EXPECT_EQ(place("sending").width(), 246);
    EXPECT_EQ(place("sending").top() - place("cards").bottom(), 12);
    EXPECT_EQ(place("menu.receiveNow").top() - place("sending").bottom(), 12);
    EXPECT_EQ(root().height() - place("menu.receiveNow").bottom(), 12);
}

TEST_F(MenuContentView, KeepsTheShapeOfItsLogo) {
    show(test::cards(1));
    QQuickItem& logo = item("logo");
    EXPECT_GT(logo.implicitWidth(), 40);
    EXPECT_NEAR(place("logo").width(), logo.implicitWidth() * 20 / logo.implicitHeight(), onePixel);
    EXPECT_EQ(spoken(&logo), (Spoken{QAccessible::Graphic, QStringLiteral("Brimwatch?")}));
    const QString light = logo.property("source").toString();
    popover_->setAppearance(Appearance::dark);
    EXPECT_NE(logo.property("source").toString(), light);
    EXPECT_GT(logo.implicitWidth(), 40);
}

TEST_F(MenuContentView, TellsHowItIsWithSendingToPhones) {
    show(test::cards(1));
    QQuickItem& sending = item("sending");
    EXPECT_EQ(sending.property("text").toString(), "개발용 빌드라 iPhone으로 보내지 않아요.");
    EXPECT_EQ(spoken(&sending),
              (Spoken{QAccessible::StaticText,
                      QStringLiteral("개발용 빌드라 iPhone으로 보내지 않아요.")}));
    EXPECT_EQ(sending.property("color").value<QColor>(),
              colors::secondaryLabel.in(Appearance::light));
    EXPECT_EQ(sending.property("font").value<QFont>().pixelSize(), 12);
}

TEST_F(MenuContentView, PutsTheCardsBelowEachOther) {
    show(test::cards(2));
    const auto cards = items("card");
    ASSERT_EQ(cards.size(), 2U);
    EXPECT_NEAR(place(*cards[1]).top() - place(*cards[0]).bottom(), 9.6, onePixel);
    EXPECT_EQ(place(*cards[1]).left(), place(*cards[0]).left());
    EXPECT_FALSE(item("emptyState").isVisible());
}

TEST_F(MenuContentView, IdentifiesTheCardsOfEachAccount) {
    show(test::cards(3));
    for (const char* name : {"menu.plan.claude-account0", "menu.subscription.codex-account1",
                             "menu.gauge.claude-account2", "menu.recentUsage.codex-account1"})
        EXPECT_EQ(items(name).size(), 1U) << name;
}

TEST_F(MenuContentView, SaysWhatToDoWhileThereIsNoCard) {
    show({});
    EXPECT_FALSE(item("cards").isVisible());
    EXPECT_TRUE(item("emptyState").isVisible());
    EXPECT_EQ(
        text("emptyText"),
        QStringLiteral("아직 받은 한도가 없어요. 설정에서 Claude Code와 Codex를 연결해 주세요."));
    EXPECT_EQ(spoken(&item("emptyText")).name, text("emptyText"));
    EXPECT_EQ(color("emptyText"), colors::secondaryLabel.light);
    EXPECT_EQ(pixelSize("emptyText"), 12);
    EXPECT_EQ(place("emptyState").width(), 246);
    EXPECT_EQ(place("emptyText").topLeft() - place("emptyState").topLeft(), QPointF(12, 12));
    EXPECT_EQ(place("emptyState").bottom() - place("emptyText").bottom(), 12);
    QQuickItem* ground = test::findItem(&item("emptyState"), "cardBackground");
    ASSERT_NE(ground, nullptr);
    EXPECT_EQ(ground->property("radius"), 26);
    EXPECT_EQ(ground->property("color").value<QColor>(), colors::cardFill.light);
    EXPECT_TRUE(item("menu.quit").isVisible());
}

struct CountRow {
    int count;
    bool scrolls;
};

TEST_F(MenuContentView, GivesTheCardsNoMoreThanTheListsHeight) {
    constexpr CountRow rows[] = {{1, false}, {6, true}, {40, true}};
    for (const CountRow& row : rows) {
        show(test::cards(row.count));
        EXPECT_EQ(items("card").size(), static_cast<std::size_t>(row.count));
        EXPECT_EQ(item("scrollBar").isVisible(), row.scrolls);
        if (row.scrolls) {
            EXPECT_EQ(place("cards").height(), 432);
        } else {
            EXPECT_EQ(place("cards").height(), place("card").height());
        }
    }
}

TEST_F(MenuContentView, FollowsTheModelWhileItIsShown) {
    show(test::cards(1));
    const double height = root().height();
    content_->model().cards()->setCards(test::cards(2));
    EXPECT_TRUE(eventuallyInLoop([&] { return root().height() > height + 100; }));
    EXPECT_TRUE(eventuallyInLoop([&] { return window().height() == qRound(root().height()); }));
    UsageCardContent card = test::comfortableCard();
    card.amount = QStringLiteral("81%");
    content_->model().cards()->setCards({card});
    EXPECT_EQ(text("amount"), QStringLiteral("81%"));
    EXPECT_TRUE(eventuallyInLoop([&] { return window().height() == qRound(height); }));
}

TEST_F(MenuContentView, HasThreeActions) {
    show(test::cards(1));
    const std::pair<const char*, const char*> rows[] = {
        {"menu.receiveNow", "지금 새로 받기"}, {"menu.openSetup", "설정…"}, {"menu.quit", "종료"}};
    for (const auto& [name, label] : rows) {
        EXPECT_EQ(text(name), QString::fromUtf8(label));
        EXPECT_EQ(spoken(&item(name)), (Spoken{QAccessible::PushButton, QString::fromUtf8(label)}));
    }
    EXPECT_EQ(place("menu.receiveNow").top(), place("menu.quit").top());
    const double left = place("menu.receiveNow").left();
    const double right = root().width() - place("menu.quit").right();
    EXPECT_NEAR(left, right, onePixel);
}

TEST_F(MenuContentView, CutsNoActionAtAnySize) {
    for (const double textScale : {0.8, 1.0, 1.25, 1.49, 1.5, 2.0}) {
        show(test::cards(1), textScale);
        for (const char* name : {"menu.receiveNow", "menu.openSetup", "menu.quit"}) {
            QQuickItem* label = item(name).property("contentItem").value<QQuickItem*>();
            EXPECT_FALSE(label->property("truncated").toBool()) << name << " at " << textScale;
            EXPECT_GE(place(name).left(), 12) << name << " at " << textScale;
            EXPECT_LE(place(name).right(), 258) << name << " at " << textScale;
        }
    }
}

TEST_F(MenuContentView, RunsAnActionAtAClick) {
    show(test::cards(1));
    click("menu.openSetup");
    EXPECT_EQ(content_->calls, (std::vector<std::string>{"openSetup"}));
    click("menu.quit");
    EXPECT_EQ(content_->calls.back(), "quit");
    EXPECT_FALSE(content_->revealsCardOrder());
}

TEST_F(MenuContentView, RunsAnActionForAScreenReader) {
    show(test::cards(1));
    QAccessibleInterface* button = QAccessible::queryAccessibleInterface(&item("menu.quit"));
    ASSERT_NE(button, nullptr);
    ASSERT_NE(button->actionInterface(), nullptr);
    button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(content_->calls, (std::vector<std::string>{"quit"}));
}

TEST_F(MenuContentView, ReceivesNewFiguresAtAClick) {
    show(test::cards(1));
    content_->receive(0, 90);
    click("menu.receiveNow");
    EXPECT_TRUE(eventuallyInLoop([this] { return text("amount") == QStringLiteral("10%"); }));
}

TEST_F(MenuContentView, RunsAnActionBySpaceAndEnter) {
    show(test::cards(1));
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        content_->calls.clear();
        item("menu.openSetup").forceActiveFocus(Qt::TabFocusReason);
        press(key);
        EXPECT_EQ(content_->calls, (std::vector<std::string>{"openSetup"})) << key;
    }
}

TEST_F(MenuContentView, ShowsAButtonUnderThePointerAndPressed) {
    show(test::cards(1));
    const auto fill = [this] {
        return item("menu.openSetup")
            .property("background")
            .value<QQuickItem*>()
            ->property("color");
    };
    const QPoint center = place("menu.openSetup").center().toPoint();
    EXPECT_EQ(fill().value<QColor>(), colors::controlFill.light);
    QTest::mouseMove(&window(), center);
    EXPECT_TRUE(
        eventuallyInLoop([&] { return fill().value<QColor>() == colors::controlHovered.light; }));
    QTest::mousePress(&window(), Qt::LeftButton, {}, center);
    EXPECT_EQ(fill().value<QColor>(), colors::controlPressed.light);
    QTest::mouseRelease(&window(), Qt::LeftButton, {}, center);
    EXPECT_NE(fill().value<QColor>(), colors::controlPressed.light);
}

TEST_F(MenuContentView, GoesRoundByTab) {
    show(test::cards(1));
    for (const char* name : {"menu.receiveNow", "menu.openSetup", "menu.quit", "menu.receiveNow"}) {
        press(Qt::Key_Tab);
        EXPECT_TRUE(hasFocus(name)) << name;
    }
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(hasFocus("menu.quit"));
}

TEST_F(MenuContentView, StopsByTabAtAListOnlyIfItCanBeUsed) {
    show(test::cards(2));
    press(Qt::Key_Tab);
    EXPECT_TRUE(hasFocus("cards"));
    press(Qt::Key_Tab);
    EXPECT_TRUE(hasFocus("menu.receiveNow"));
}

TEST_F(MenuContentView, RingsWhatTheKeyboardActsOn) {
    show(test::cards(2));
    const auto isRinged = [this](const char* name) {
        QQuickItem* ring = test::findItem(&item(name), "focusRing");
        return ring != nullptr && ring->isVisible();
    };
    for (const char* name : {"cards", "menu.receiveNow", "menu.openSetup", "menu.quit"}) {
        EXPECT_FALSE(isRinged(name)) << name;
        press(Qt::Key_Tab);
        EXPECT_TRUE(isRinged(name)) << name;
    }
    click("menu.openSetup");
    EXPECT_FALSE(isRinged("menu.openSetup"));
}

TEST_F(MenuContentView, ScrollsByArrows) {
    show(test::cards(6));
    EXPECT_EQ(scrolled(), 0);
    press(Qt::Key_Down);
    EXPECT_TRUE(eventuallyInLoop([this] { return scrolled() > 20; }));
    const double once = scrolled();
    press(Qt::Key_Down);
    EXPECT_TRUE(eventuallyInLoop([&] { return scrolled() > once + 20; }));
    for (int index = 0; index < 3; ++index)
        press(Qt::Key_Up);
    EXPECT_TRUE(eventuallyInLoop([this] { return scrolled() == 0; }));
}

TEST_F(MenuContentView, ScrollsByArrowsFromAButtonToo) {
    show(test::cards(6));
    item("menu.quit").forceActiveFocus(Qt::TabFocusReason);
    press(Qt::Key_Down);
    EXPECT_TRUE(eventuallyInLoop([this] { return scrolled() > 20; }));
}

TEST_F(MenuContentView, BouncesOnlyWhereItScrolls) {
    const auto bounce = [this] { return item("list").property("boundsBehavior").toInt(); };
    show(test::cards(1));
    EXPECT_EQ(bounce(), 0);  // StopAtBounds
    show(test::cards(6));
    EXPECT_EQ(bounce(), 3);  // DragAndOvershootBounds
}

TEST_F(MenuContentView, DoesNotScrollAListThatFits) {
    show(test::cards(1));
    press(Qt::Key_Down);
    QCoreApplication::processEvents();
    EXPECT_EQ(scrolled(), 0);
}

TEST_F(MenuContentView, OffersTheOrderAtARightClickOnACard) {
    show(test::cards(2));
    EXPECT_FALSE(isMenuOpen());
    click("title", Qt::RightButton);
    EXPECT_TRUE(eventuallyInLoop([this] { return isMenuOpen(); }));
    EXPECT_EQ(text("menu.reorder"), QStringLiteral("순서 바꾸기"));
    EXPECT_EQ(spoken(&item("menu.reorder")),
              (Spoken{QAccessible::MenuItem, QStringLiteral("순서 바꾸기")}));
    QQuickItem* symbol = test::findItem(&item("menu.reorder"), "symbol");
    EXPECT_EQ(symbol->property("name").toString(), QStringLiteral("arrow.up.arrow.down"));
    click("menu.reorder");
    EXPECT_EQ(content_->calls, (std::vector<std::string>{"openSetup"}));
    EXPECT_TRUE(content_->revealsCardOrder());
    EXPECT_TRUE(eventuallyInLoop([this] { return !isMenuOpen(); }));
}

TEST_F(MenuContentView, OffersNoOrderOfOneCard) {
    show(test::cards(1));
    click("title", Qt::RightButton);
    press(Qt::Key_Menu);
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents();
    EXPECT_FALSE(isMenuOpen());
}

TEST_F(MenuContentView, OffersTheOrderByKeyboard) {
    const std::pair<Qt::Key, Qt::KeyboardModifiers> keys[] = {{Qt::Key_Menu, Qt::NoModifier},
                                                              {Qt::Key_F10, Qt::ShiftModifier}};
    for (const auto& [key, modifiers] : keys) {
        show(test::cards(2));
        press(Qt::Key_Tab);
        press(key, modifiers);
        ASSERT_TRUE(eventuallyInLoop([this] { return isMenuOpen(); })) << key;
        press(Qt::Key_Return);
        EXPECT_EQ(content_->calls, (std::vector<std::string>{"openSetup"})) << key;
        EXPECT_TRUE(content_->revealsCardOrder());
    }
}

TEST_F(MenuContentView, ClosesItsMenuByEscapeAndThenItself) {
    show(test::cards(2));
    click("title", Qt::RightButton);
    ASSERT_TRUE(eventuallyInLoop([this] { return isMenuOpen(); }));
    press(Qt::Key_Escape);
    EXPECT_TRUE(eventuallyInLoop([this] { return !isMenuOpen(); }));
    EXPECT_TRUE(popover_->isShown());
    press(Qt::Key_Escape);
    EXPECT_FALSE(popover_->isShown());
}

TEST_F(MenuContentView, OpensWithoutTheMenuOfTheLastTime) {
    show(test::cards(2));
    click("title", Qt::RightButton);
    ASSERT_TRUE(eventuallyInLoop([this] { return isMenuOpen(); }));
    popover_->performClose();
    popover_->show(QPoint(300, 0), QString());
    EXPECT_TRUE(eventuallyInLoop([this] { return !isMenuOpen(); }));
}

TEST_F(MenuContentView, IsMirroredWhereOneReadsFromRightToLeft) {
    show(test::cards(2));
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    const auto isMirrored = [this] { return place("providerDot").left() > place("title").left(); };
    EXPECT_TRUE(eventuallyInLoop(isMirrored));
    EXPECT_NEAR(place("fill").right(), place("track").right(), onePixel);
    EXPECT_LT(place("menu.quit").left(), place("menu.receiveNow").left());
    for (const char* name : {"logo", "title", "amount", "statusText", "freshness", "menu.quit"}) {
        EXPECT_GE(place(name).left(), 12) << name;
        EXPECT_LE(place(name).right(), 258) << name;
    }
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    EXPECT_TRUE(eventuallyInLoop([&] { return !isMirrored(); }));
}

}  // namespace
}  // namespace brimwatch
