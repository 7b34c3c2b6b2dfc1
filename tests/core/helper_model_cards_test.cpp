// Names, order and credits of the cards.

#include <gmock/gmock.h>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class HelperModelCards : public test::AccountsFixture {
  protected:
    std::optional<std::string> nameOf(const std::string& id) {
        for (const SubscriptionLimits& limits : model().limits()) {
            if (limits.id() == id) return limits.displayName;
        }
        ADD_FAILURE() << "no card of " << id;
        return std::nullopt;
    }
    std::vector<std::string> cards() {
        std::vector<std::string> ids;
        for (const SubscriptionLimits& limits : model().menuLimits())
            ids.push_back(limits.id());
        return ids;
    }
    // Cards of Claude Code "a", "b" and "c".
    void makeThree() {
        for (const char* name : {"a", "b", "c"}) {
            makeRegisteredFolder(std::string(".claude-") + name);
            writeLimits(std::string("claude-") + name, 10, 20);
        }
    }
    void startWithThree() {
        makeThree();
        start();
        ASSERT_THAT(cards(), ElementsAre("claude-a", "claude-b", "claude-c"));
    }
    static std::string key(const std::string& name) { return "subscription.claude-" + name; }
};

TEST_F(HelperModelCards, ANameIsStoredUnderTheCardKeyAndShownAtOnce) {
    startWithThree();
    model().setUsageName("claude-b", "Büro");
    EXPECT_THAT(model().usageNames(), ElementsAre(Pair(key("b"), "Büro")));
    EXPECT_EQ(stored("usageNames"), R"({"subscription.claude-b":"Büro"})");
    EXPECT_EQ(nameOf("claude-b"), "Büro");
    EXPECT_EQ(nameOf("claude-a"), std::nullopt);
}

TEST_F(HelperModelCards, ANameIsNormalised) {
    startWithThree();
    model().setUsageName("claude-a", "  my \t\n work\u3000account ");
    EXPECT_EQ(model().usageNames().at(key("a")), "my work account");
    model().setUsageName("claude-a", std::string(41, 'x'));
    EXPECT_EQ(model().usageNames().at(key("a")), std::string(40, 'x'));
    model().setUsageName("claude-a", std::string(40, 'y'));
    EXPECT_EQ(model().usageNames().at(key("a")), std::string(40, 'y'));
}

TEST_F(HelperModelCards, NoNameAndOneOfBlanksRemoveTheEntry) {
    startWithThree();
    model().setUsageName("claude-b", "B");
    for (const std::optional<std::string>& name :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>(" \t\n ")}) {
        model().setUsageName("claude-a", "A");
        ASSERT_EQ(nameOf("claude-a"), "A");
        model().setUsageName("claude-a", name);
        EXPECT_THAT(model().usageNames(), ElementsAre(Pair(key("b"), "B")));
        EXPECT_EQ(stored("usageNames"), R"({"subscription.claude-b":"B"})");
        EXPECT_EQ(nameOf("claude-a"), std::nullopt);
    }
}

TEST_F(HelperModelCards, TheSameNameAgainIsNoNews) {
    startWithThree();
    model().setUsageName("claude-a", "A");
    const SignalCount names(model(), &HelperModel::usageNamesChanged);
    const SignalCount limits(model(), &HelperModel::limitsChanged);
    model().setUsageName("claude-a", " A ");
    EXPECT_EQ(names.count(), 0);
    EXPECT_EQ(limits.count(), 0);
    model().setUsageName("claude-a", "B");
    EXPECT_EQ(names.count(), 1);
    EXPECT_EQ(limits.count(), 1);
}

TEST_F(HelperModelCards, ANameMayBeGivenToACardThatIsNotThere) {
    startWithThree();
    model().setUsageName("codex-later", "Later");
    EXPECT_EQ(model().usageNames().at("subscription.codex-later"), "Later");
    start();
    EXPECT_EQ(model().usageNames().at("subscription.codex-later"), "Later");
}

TEST_F(HelperModelCards, AStoredNameIsNormalisedWhenItIsShown) {
    defaults_.setDictionary(
        "usageNames", {{"subscription.claude-a", "  A  B "}, {"subscription.claude-b", "   "}});
    startWithThree();
    EXPECT_EQ(nameOf("claude-a"), "A B");
    EXPECT_EQ(nameOf("claude-b"), std::nullopt);
}

TEST_F(HelperModelCards, AManualFolderOfClaudeCodeHasItsNameAndADiscoveredOneHasNone) {
    const std::string folder = folder_.file("team/.claude");
    test::writeFile(folder + "/.claude.json", "{}");
    makeRegisteredFolder(".claude-work");
    start();
    model().addClaudeFolder(folder);
    for (const std::string& account : model().claudeIDs())
        writeLimits("claude-" + account, 10, 20);
    model().reload();
    const std::string id =
        "claude-" + ClaudeCodeSetup::accountID(disk_, claudeAccount(folder), home_);
    EXPECT_EQ(nameOf(id), "team");
    EXPECT_EQ(nameOf("claude-work"), std::nullopt);
    model().setUsageName(id, "Mine");
    EXPECT_EQ(nameOf(id), "Mine");
    model().setUsageName(id, std::nullopt);
    EXPECT_EQ(nameOf(id), "team");
}

TEST_F(HelperModelCards, AFolderOfCodexHasItsNameUnlessThatIsTheKeyOrTheDefaultOne) {
    makeCodexFolder(".codex-work");
    makeCodexFolder(".codex-a b");
    for (const char* name : {"team", "x/.codex"})
        test::writeFile(folder_.file(name) + "/config.toml", "");
    start();
    model().addCodexFolder(folder_.file("team"));
    model().addCodexFolder(folder_.file("x/.codex"));
    ASSERT_EQ(model().codexAccounts().size(), 5U);
    for (const std::string& account : model().codexIDs())
        writeLimits("codex-" + account, 10, 20);
    model().reload();
    for (const CodexAccounts::Account& account : model().codexAccounts()) {
        const std::optional<std::string> name = nameOf("codex-" + account.key);
        const std::string folder(account.directory);
        if (folder == folder_.file("team")) {
            EXPECT_EQ(name, "team");
        } else if (folder == path(".codex-a b")) {
            EXPECT_EQ(name, "a-b");
        } else {
            EXPECT_EQ(name, std::nullopt) << folder;
        }
    }
}

TEST_F(HelperModelCards, NewCardsComeBehindTheArrangedOnesClaudeBeforeCodex) {
    startWithThree();
    model().moveCard(key("c"), -2);
    makeRegisteredFolder(".claude-0");
    writeLimits("claude-0", 10, 20);
    writeLimits("codex-default", 10, 20);
    model().refresh();
    EXPECT_THAT(cards(),
                ElementsAre("claude-c", "claude-a", "claude-b", "claude-0", "codex-default"));
    EXPECT_THAT(model().menuOrder(), ElementsAre(key("c"), key("a"), key("b")))
        << "nothing is filled in when an account appears";
}

TEST_F(HelperModelCards, MovingByAnOffsetStoresTheWholeOrder) {
    startWithThree();
    model().moveCard(key("a"), 1);
    EXPECT_THAT(cards(), ElementsAre("claude-b", "claude-a", "claude-c"));
    EXPECT_THAT(model().menuOrder(), ElementsAre(key("b"), key("a"), key("c")));
    EXPECT_EQ(stored("menuOrder"),
              "[\"" + key("b") + "\",\"" + key("a") + "\",\"" + key("c") + "\"]");
    model().moveCard(key("c"), -2);
    EXPECT_THAT(cards(), ElementsAre("claude-c", "claude-b", "claude-a"));
}

TEST_F(HelperModelCards, AMoveThatLeadsNowhereStoresNothing) {
    startWithThree();
    const SignalCount changes(model(), &HelperModel::menuOrderChanged);
    defaults_.changes.clear();
    model().moveCard(key("c"), 1);
    model().moveCard(key("a"), -1);
    model().moveCard(key("b"), 0);
    model().moveCard(key("b"), 2);
    model().moveCard(key("x"), 1);
    model().moveCard("claude-a", 1);
    model().moveCard(key("a"), key("a"));
    model().moveCard(key("a"), key("x"));
    model().moveCard(key("x"), key("a"));
    EXPECT_EQ(changes.count(), 0);
    EXPECT_THAT(defaults_.changes, IsEmpty());
    EXPECT_EQ(stored("menuOrder"), "");
}

TEST_F(HelperModelCards, MovingToAnotherCardTakesItsPlace) {
    startWithThree();
    model().moveCard(key("c"), key("a"));
    EXPECT_THAT(cards(), ElementsAre("claude-c", "claude-a", "claude-b"));
    model().moveCard(key("c"), key("a"));
    EXPECT_THAT(cards(), ElementsAre("claude-a", "claude-c", "claude-b")) << "the next one below";
    model().moveCard(key("a"), key("b"));
    EXPECT_THAT(cards(), ElementsAre("claude-c", "claude-b", "claude-a"));
}

TEST_F(HelperModelCards, KeysOfAccountsThatAreGoneSurviveAMove) {
    defaults_.setStrings("menuOrder", {"subscription.codex-gone", key("c"), key("old"), key("a")});
    makeThree();
    start();
    ASSERT_THAT(cards(), ElementsAre("claude-c", "claude-a", "claude-b"));
    model().moveCard(key("b"), -1);
    EXPECT_THAT(model().menuOrder(),
                ElementsAre(key("c"), key("b"), key("a"), "subscription.codex-gone", key("old")));
}

TEST_F(HelperModelCards, ResettingBringsTheFirstOrderBack) {
    startWithThree();
    model().moveCard(key("a"), 2);
    const SignalCount changes(model(), &HelperModel::menuOrderChanged);
    model().resetCardOrder();
    EXPECT_THAT(cards(), ElementsAre("claude-a", "claude-b", "claude-c"));
    EXPECT_THAT(model().menuOrder(), IsEmpty());
    EXPECT_EQ(stored("menuOrder"), "[]");
    model().resetCardOrder();
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(HelperModelCards, ResettingAnOrderThatIsEmptyStoresNothing) {
    startWithThree();
    defaults_.changes.clear();
    model().resetCardOrder();
    EXPECT_THAT(defaults_.changes, IsEmpty());
}

TEST_F(HelperModelCards, TheOrderAndTheNamesOutliveTheProgram) {
    startWithThree();
    model().moveCard(key("a"), 2);
    model().setUsageName("claude-a", "A");
    start();
    EXPECT_THAT(cards(), ElementsAre("claude-b", "claude-c", "claude-a"));
    EXPECT_EQ(nameOf("claude-a"), "A");
}

class HelperModelCredits : public test::AccountsFixture {
  protected:
    // The credit row of the default account after an answer with these credits.
    std::optional<CodexCredits::Text> rowAfter(const std::optional<CodexCredits>& credits) {
        poll();
        CodexPoller::Reading reading = test::codexReading(10, 20, now());
        reading.credits = credits;
        codex_.answer(reading);
        return model().creditText(model().limits().at(0));
    }
    static CodexCredits balance(std::string_view digits) {
        return {.hasCredits = true, .unlimited = false, .balance = Decimal::fromDigits(digits)};
    }
};

TEST_F(HelperModelCredits, AreThoseOfTheLastReading) {
    start();
    EXPECT_EQ(rowAfter(balance("12.349")), (CodexCredits::Text{.balance = "12.34"}));
    EXPECT_EQ(rowAfter(balance("1234.5")), (CodexCredits::Text{.balance = "1,234.5"}));
    EXPECT_EQ(rowAfter(CodexCredits{.hasCredits = false, .unlimited = true, .balance = {}}),
              (CodexCredits::Text{.balance = std::nullopt}));
    EXPECT_EQ(rowAfter(balance("0.004")), std::nullopt);
    EXPECT_EQ(rowAfter(std::nullopt), std::nullopt);
}

TEST_F(HelperModelCredits, AreWrittenInTheLocaleOfTheUser) {
    HelperModel::Surroundings around = surroundings();
    around.locale = "de_DE.UTF-8";
    start(std::move(around));
    EXPECT_EQ(rowAfter(balance("1234.5")), (CodexCredits::Text{.balance = "1.234,5"}));
}

TEST_F(HelperModelCredits, AreNotThereWithoutAReading) {
    writeLimits("codex-default", 10, 20);
    start();
    ASSERT_EQ(model().limits().size(), 1U);
    EXPECT_EQ(model().creditText(model().limits()[0]), std::nullopt);
}

TEST_F(HelperModelCredits, AreNeverThoseOfClaudeCode) {
    makeRegisteredFolder(".claude");
    writeLimits("claude-default", 10, 20);
    start();
    poll();
    CodexPoller::Reading reading = test::codexReading(10, 20, now());
    reading.credits = balance("12");
    codex_.answer(reading);
    ASSERT_THAT(shownIds(), ElementsAre("claude-default", "codex-default"));
    EXPECT_EQ(model().creditText(model().limits()[0]), std::nullopt);
    EXPECT_NE(model().creditText(model().limits()[1]), std::nullopt);
}

TEST_F(HelperModelCredits, AreThoseOfTheAccountItself) {
    makeCodexFolder(".codex-work");
    start();
    poll();
    CodexPoller::Reading reading = test::codexReading(10, 20, now());
    reading.credits = balance("12");
    codex_.answer(reading);
    reading.credits = balance("7");
    codex_.answer(reading);
    ASSERT_EQ(model().limits().size(), 2U);
    EXPECT_EQ(model().creditText(model().limits()[0]), (CodexCredits::Text{.balance = "12"}));
    EXPECT_EQ(model().creditText(model().limits()[1]), (CodexCredits::Text{.balance = "7"}));
}

TEST_F(HelperModelCredits, GoWhenTheAccountIsSwitchedOff) {
    start();
    ASSERT_NE(rowAfter(balance("12")), std::nullopt);
    const SubscriptionLimits shown = model().limits()[0];
    model().setCodexAccount(codexAccount("default"), false);
    EXPECT_EQ(model().creditText(shown), std::nullopt);
}

}  // namespace
}  // namespace brimwatch
