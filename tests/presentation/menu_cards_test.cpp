#include "presentation/menu_cards.h"

#include <gmock/gmock.h>

#include "card_examples.h"
#include "model_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;

class MenuCards : public test::ModelFixture {
  protected:
    std::vector<SubscriptionUsageCard> cards() { return menuCards(model(), now(), "ko_KR"); }

    std::vector<std::string> titles() {
        std::vector<std::string> titles;
        for (const SubscriptionUsageCard& card : cards())
            titles.push_back(content(card).title.toStdString());
        return titles;
    }

    // The last card is one of Codex, with those credits.
    void receiveCredits(const CodexCredits& credits) {
        makeCodexFolder(".codex-work");
        CodexPoller::Reading reading = test::codexReading(10, 20, now());
        reading.credits = credits;
        codex_.answerAtOnce = [reading](const auto&) { return reading; };
        start();
        static_cast<void>(model().pollCodex());
    }
};

TEST_F(MenuCards, AreNoneWithoutAFigure) {
    makeRegisteredFolder(".claude-work");
    start();
    EXPECT_TRUE(cards().empty());
}

TEST_F(MenuCards, OneAccountIsTitledByItsProviderAlone) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 28);
    start();
    EXPECT_THAT(titles(), ElementsAre("Claude"));
    model().setUsageName("claude-work", "My team");
    EXPECT_THAT(titles(), ElementsAre("Claude · My team"));
}

TEST_F(MenuCards, AccountsAreTitledWhereTheirProviderHasSeveral) {
    makeRegisteredFolder(".claude-work");
    makeRegisteredFolder(".claude-other");
    makeCodexFolder(".codex");
    writeLimits("claude-work", 10, 28);
    writeLimits("claude-other", 10, 28);
    writeLimits("codex-default", 10, 28);
    start();
    EXPECT_THAT(titles(), ElementsAre("Claude · other", "Claude · work", "Codex"));
    EXPECT_EQ(cards()[0].titleAccount, TitleAccount::shown);
    EXPECT_EQ(cards()[1].titleAccount, TitleAccount::shown);
    EXPECT_EQ(cards()[2].titleAccount, TitleAccount::hidden);
}

TEST_F(MenuCards, ComeInTheOrderOfTheUser) {
    makeRegisteredFolder(".claude-work");
    makeRegisteredFolder(".claude-other");
    writeLimits("claude-work", 10, 28);
    writeLimits("claude-other", 10, 28);
    start();
    model().moveCard("subscription.claude-work", "subscription.claude-other");
    EXPECT_THAT(titles(), ElementsAre("Claude · work", "Claude · other"));
}

TEST_F(MenuCards, FollowWhatTheUserChose) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 28);
    start();
    EXPECT_EQ(cards()[0].display, UsageDisplay::remaining);
    EXPECT_EQ(cards()[0].recentUsagePeriod, RecentUsagePeriod::off);
    EXPECT_EQ(cards()[0].warningRatio, 0.8);
    EXPECT_EQ(cards()[0].now, now());
    EXPECT_EQ(cards()[0].locale, "ko_KR");
    model().setUsageDisplay(UsageDisplay::used);
    model().setRecentUsagePeriod(RecentUsagePeriod::fourHours);
    EXPECT_EQ(cards()[0].display, UsageDisplay::used);
    EXPECT_EQ(cards()[0].recentUsagePeriod, RecentUsagePeriod::fourHours);
}

TEST_F(MenuCards, NameThePlanThatClaudeCodeKnows) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 28);
    start();
    EXPECT_EQ(content(cards()[0]).plan, "구독 한도");
    storeTier(folder, "default_claude_max_20x");
    start();
    EXPECT_EQ(content(cards()[0]).plan, "Max 20배");
    storeTier(folder, "default_claude_gold");
    start();
    EXPECT_EQ(content(cards()[0]).plan, "구독 한도");
}

TEST_F(MenuCards, NameThePlanOfAFileOnlyIfItIsOne) {
    makeCodexFolder(".codex-work");
    LimitsFile file = figures("codex-work", 10, 20);
    file.planTier = "Pro Lite";
    writeLimits(file);
    start();
    EXPECT_EQ(content(cards()[0]).plan, "Pro Lite");
    file.planTier = "plus";
    file.updatedAt += 1;
    writeLimits(file);
    model().reload();
    EXPECT_EQ(content(cards()[0]).plan, "Plus");
    file.planTier = "gold_2026";
    file.updatedAt += 1;
    writeLimits(file);
    model().reload();
    EXPECT_EQ(content(cards()[0]).plan, "구독 한도");
}

TEST_F(MenuCards, TellTheBalanceOfCredits) {
    receiveCredits(
        {.hasCredits = true, .unlimited = false, .balance = Decimal::fromDigits("1234.567")});
    ASSERT_FALSE(cards().empty());
    EXPECT_EQ(cards().back().creditValue, "1,234.56");
    EXPECT_EQ(cards().back().creditAccessibilityLabel, "크레딧 1,234.56 남음");
}

TEST_F(MenuCards, TellCreditsWithoutLimit) {
    receiveCredits({.hasCredits = true, .unlimited = true, .balance = {}});
    ASSERT_FALSE(cards().empty());
    EXPECT_EQ(cards().back().creditValue, "무제한");
    EXPECT_EQ(cards().back().creditAccessibilityLabel, "크레딧 무제한");
}

TEST_F(MenuCards, HaveNoCreditsWhereThereAreNone) {
    receiveCredits({.hasCredits = false, .unlimited = false, .balance = {}});
    ASSERT_FALSE(cards().empty());
    EXPECT_EQ(cards().back().creditValue, std::nullopt);
    EXPECT_EQ(cards().back().creditAccessibilityLabel, std::nullopt);
}

TEST(CardListHeight, LeavesRoomOnTheSmallestScreen) {
    EXPECT_EQ(cardListHeight({600}), 380);
    EXPECT_EQ(cardListHeight({900, 600, 1400}), 380);
}

TEST(CardListHeight, StaysWithinItsBounds) {
    EXPECT_EQ(cardListHeight({400}), 260);
    EXPECT_EQ(cardListHeight({0}), 260);
    EXPECT_EQ(cardListHeight({900}), 432);
    EXPECT_EQ(cardListHeight({480}), 260);
    EXPECT_EQ(cardListHeight({481}), 261);
    EXPECT_EQ(cardListHeight({652}), 432);
    EXPECT_EQ(cardListHeight({}), 432);
}

}  // namespace
}  // namespace brimwatch
