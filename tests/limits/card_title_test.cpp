#include <gtest/gtest.h>

#include "limits/subscription_limits.h"
#include "limits/usage_name.h"

namespace brimwatch {
namespace {

SubscriptionLimits record(std::optional<std::string> displayName) {
    SubscriptionLimits limits;
    limits.provider = SubscriptionLimits::Provider::codex;
    limits.account = "work";
    limits.displayName = std::move(displayName);
    return limits;
}

TEST(CardTitle, IsProviderAndNameWhereThereIsOne) {
    EXPECT_EQ(record("My  team ").title(TitleAccount::hidden), "Codex · My team");
    EXPECT_EQ(record("My team").title(TitleAccount::shown), "Codex · My team");
}

TEST(CardTitle, IsTheProviderAloneWhereAccountsAreNotShown) {
    EXPECT_EQ(record(std::nullopt).title(TitleAccount::hidden), "Codex");
    EXPECT_EQ(record(" \t ").title(TitleAccount::hidden), "Codex");
}

TEST(CardTitle, IsProviderAndAccountWhereAccountsAreShown) {
    EXPECT_EQ(record(std::nullopt).title(TitleAccount::shown), "Codex · work");
    EXPECT_EQ(record("").title(TitleAccount::shown), "Codex · work");
}

TEST(CardTitle, HasTheFirstFortyCharactersOfTheName) {
    EXPECT_EQ(record(std::string(60, 'a')).title(TitleAccount::hidden),
              "Codex · " + std::string(40, 'a'));
    EXPECT_EQ(record(std::string(39, 'a') + " b").title(TitleAccount::hidden),
              "Codex · " + std::string(39, 'a'));
}

TEST(UsageName, FoldsWhiteSpaceOfEveryKind) {
    EXPECT_EQ(normalizedUsageName("  a \t\n b\u00A0\u2003c\u3000"), "a b c");
    EXPECT_EQ(normalizedUsageName("한글 이름"), "한글 이름");
}

TEST(UsageName, IsNothingWithoutACharacter) {
    EXPECT_EQ(normalizedUsageName(""), std::nullopt);
    EXPECT_EQ(normalizedUsageName(" \r\n\u2029"), std::nullopt);
}

TEST(UsageName, KeepsTheFirstFortyCharacters) {
    EXPECT_EQ(normalizedUsageName(std::string(40, 'a')), std::string(40, 'a'));
    EXPECT_EQ(normalizedUsageName(std::string(41, 'a')), std::string(40, 'a'));
    EXPECT_EQ(normalizedUsageName(std::string(39, 'a') + " b"), std::string(39, 'a') + " ");
    std::string families;
    const std::string family = "\U0001F469\u200D\U0001F469\u200D\U0001F467";
    for (int count = 0; count < 41; ++count)
        families += family;
    EXPECT_EQ(normalizedUsageName(families), families.substr(0, 40 * family.size()));
}

TEST(UsageName, SurvivesTextThatIsNotUtf8) {
    EXPECT_EQ(normalizedUsageName("a\xFF"
                                  "b"),
              "a\uFFFD"
              "b");
}

}  // namespace
}  // namespace brimwatch
