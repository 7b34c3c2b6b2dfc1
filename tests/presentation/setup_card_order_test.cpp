#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "setup_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SetupCardOrder : public test::SetupFixture {
  protected:
    CardOrderSection& showThree() {
        startWithThreeCards();
        CardOrderSection& order = *makeShownSettings().cardOrder();
        tester_.emplace(&order, QAbstractItemModelTester::FailureReportingMode::Fatal);
        return order;
    }
    std::vector<std::string> column(const char* role) {
        const CardOrderSection& order = *settings_->cardOrder();
        std::vector<std::string> values;
        for (int row = 0; row < order.rowCount(); ++row)
            values.push_back(
                order.data(order.index(row), order.roleNames().key(role)).toString().toStdString());
        return values;
    }
    std::vector<std::string> titles() { return column("title"); }

    std::optional<QAbstractItemModelTester> tester_;
};

constexpr const char* a = "subscription.claude-a";
constexpr const char* b = "subscription.claude-b";
constexpr const char* c = "subscription.codex-c";

TEST_F(SetupCardOrder, ShowsTheTitlesOfTheCardsInTheirOrder) {
    showThree();
    EXPECT_THAT(titles(), ElementsAre("Claude · a", "Claude · b", "Codex"));
    EXPECT_THAT(column("key"), ElementsAre(a, b, c));
}

TEST_F(SetupCardOrder, IsShownForTwoCardsAndMore) {
    makeRegisteredFolder(".claude-a");
    writeLimits("claude-a", 10, 20);
    start();
    makeShownSettings();
    QSignalSpy spy(settings_->cardOrder(), &CardOrderSection::isShownChanged);
    EXPECT_FALSE(settings_->cardOrder()->isShown());
    makeRegisteredFolder(".claude-b");
    writeLimits("claude-b", 10, 20);
    model().refresh();
    QCoreApplication::processEvents();
    EXPECT_TRUE(settings_->cardOrder()->isShown());
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(SetupCardOrder, MovesACardUpAndDown) {
    CardOrderSection& order = showThree();
    QSignalSpy moved(&order, &QAbstractItemModel::rowsMoved);
    order.moveUp(c);
    EXPECT_THAT(titles(), ElementsAre("Claude · a", "Codex", "Claude · b"));
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, c, b));
    order.moveDown(a);
    EXPECT_THAT(model().menuOrder(), ElementsAre(c, a, b));
    EXPECT_EQ(moved.count(), 2);
}

TEST_F(SetupCardOrder, ACardAtItsEndStays) {
    CardOrderSection& order = showThree();
    order.moveUp(a);
    order.moveDown(c);
    EXPECT_THAT(model().menuOrder(), IsEmpty());
}

TEST_F(SetupCardOrder, GoesBackToTheUsualOrder) {
    CardOrderSection& order = showThree();
    order.moveUp(c);
    order.reset();
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    EXPECT_THAT(titles(), ElementsAre("Claude · a", "Claude · b", "Codex"));
}

TEST_F(SetupCardOrder, WhatIsDraggedTakesThePlaceOfTheCardThatItComesOver) {
    CardOrderSection& order = showThree();
    order.drag(a);
    EXPECT_EQ(order.dragging(), a);
    order.enter(c);
    EXPECT_THAT(model().menuOrder(), ElementsAre(b, c, a));
    order.enter(b);
    EXPECT_THAT(model().menuOrder(), ElementsAre(a, b, c));
    order.drop();
    EXPECT_EQ(order.dragging(), "");
}

TEST_F(SetupCardOrder, ACardDraggedOverItselfChangesNothing) {
    CardOrderSection& order = showThree();
    order.drag(a);
    order.enter(a);
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    EXPECT_EQ(order.dragging(), a);
}

TEST_F(SetupCardOrder, NothingMovesUnlessACardIsDragged) {
    CardOrderSection& order = showThree();
    order.enter(c);
    order.drag(a);
    order.drop();
    order.enter(c);
    EXPECT_THAT(model().menuOrder(), IsEmpty());
}

TEST_F(SetupCardOrder, TellsWhatIsDragged) {
    CardOrderSection& order = showThree();
    QSignalSpy spy(&order, &CardOrderSection::draggingChanged);
    order.drag(a);
    order.drag(a);
    order.drop();
    order.drop();
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SetupCardOrder, ACardThatGoesWhileItIsDraggedChangesNothingAnyMore) {
    CardOrderSection& order = showThree();
    order.drag(a);
    model().disconnectClaude(claudeAccount(path(".claude-a")));
    QCoreApplication::processEvents();
    order.enter(c);
    order.drop();
    EXPECT_THAT(model().menuOrder(), IsEmpty());
}

TEST_F(SetupCardOrder, ACardThatGoesIsDraggedNoMore) {
    CardOrderSection& order = showThree();
    QSignalSpy spy(&order, &CardOrderSection::draggingChanged);
    order.drag(a);
    model().disconnectClaude(claudeAccount(path(".claude-a")));
    QCoreApplication::processEvents();
    EXPECT_EQ(order.dragging(), "");
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SetupCardOrder, FollowsTheNamesOfTheUser) {
    showThree();
    settings_->setUsageName("codex-c", "리뷰용");
    QCoreApplication::processEvents();
    EXPECT_THAT(titles(), ElementsAre("Claude · a", "Claude · b", "Codex · 리뷰용"));
}

TEST_F(SetupCardOrder, IsRevealedAsTheModelSays) {
    CardOrderSection& order = showThree();
    QSignalSpy spy(&order, &CardOrderSection::isRevealedChanged);
    model().setRevealsMenuCardOrder(true);
    EXPECT_TRUE(order.isRevealed());
    order.setRevealed(false);
    EXPECT_FALSE(model().revealsMenuCardOrder());
    EXPECT_EQ(spy.count(), 2);
}

}  // namespace
}  // namespace brimwatch
