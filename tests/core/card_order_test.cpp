#include "core/card_order.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "harness/random.h"

namespace brimwatch {
namespace {

using Keys = std::vector<std::string>;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

SubscriptionLimits record(SubscriptionLimits::Provider provider, const std::string& account) {
    SubscriptionLimits limits;
    limits.provider = provider;
    limits.account = account;
    return limits;
}

std::vector<SubscriptionLimits> records(const Keys& accounts) {
    std::vector<SubscriptionLimits> limits;
    std::transform(accounts.begin(), accounts.end(), std::back_inserter(limits),
                   [](const std::string& account) {
                       return record(SubscriptionLimits::Provider::claude, account);
                   });
    return limits;
}

// The accounts in the order of their cards; `order` holds accounts of Claude Code.
Keys ordered(const Keys& accounts, const Keys& order) {
    Keys keys;
    std::transform(order.begin(), order.end(), std::back_inserter(keys),
                   [](const std::string& account) { return cardKey("claude-" + account); });
    Keys result;
    for (const SubscriptionLimits& limits : inCardOrder(records(accounts), keys))
        result.push_back(limits.account);
    return result;
}

TEST(CardOrder, ACardIsCalledAfterTheIdOfItsRecord) {
    EXPECT_EQ(cardKey("claude-abc"), "subscription.claude-abc");
    EXPECT_EQ(cardKey(""), "subscription.");
}

TEST(CardOrder, WithoutAnOrderTheCardsStayAsTheyAre) {
    EXPECT_THAT(ordered({"b", "a", "c"}, {}), ElementsAre("b", "a", "c"));
    EXPECT_THAT(ordered({}, {"a"}), IsEmpty());
}

TEST(CardOrder, PlacedCardsComeFirstAndTheOthersBehindThemAsTheyAre) {
    EXPECT_THAT(ordered({"a", "b", "c", "d"}, {"d", "b"}), ElementsAre("d", "b", "a", "c"));
}

TEST(CardOrder, KeysWithoutACardAreNoHindrance) {
    EXPECT_THAT(ordered({"a", "b"}, {"x", "b", "y", "a"}), ElementsAre("b", "a"));
}

TEST(CardOrder, TheFirstPlaceOfAKeyCounts) {
    EXPECT_THAT(ordered({"a", "b", "c"}, {"b", "a", "b", "c"}), ElementsAre("b", "a", "c"));
    EXPECT_THAT(ordered({"a", "b"}, {"b", "a", "a", "b"}), ElementsAre("b", "a"));
}

TEST(CardOrder, OnlyWholeKeysCount) {
    const std::vector<SubscriptionLimits> both = {record(SubscriptionLimits::Provider::claude, "a"),
                                                  record(SubscriptionLimits::Provider::codex, "a")};
    EXPECT_EQ(inCardOrder(both, {"subscription.codex-a", "subscription.claude-a"})[0], both[1]);
    EXPECT_EQ(inCardOrder(both, {"codex-a", "a", "subscription.codex-"})[0], both[0]);
}

TEST(CardOrder, ManyCardsWithoutAPlaceStayAsTheyAreToo) {
    Keys accounts;
    for (int number = 0; number < 100; ++number)
        accounts.push_back(std::to_string(number * 37 % 100));
    Keys expected = accounts;
    std::rotate(expected.begin(), expected.begin() + 60, expected.begin() + 61);
    EXPECT_EQ(ordered(accounts, {accounts[60]}), expected);
}

TEST(CardOrder, TwoRecordsOfOneAccountStayInTheirOrder) {
    std::vector<SubscriptionLimits> twice = records({"b", "a", "a"});
    twice[1].planTier = "first";
    const std::vector<SubscriptionLimits> result =
        inCardOrder(twice, {"subscription.claude-a", "subscription.claude-b"});
    EXPECT_EQ(result[0].planTier, "first");
    EXPECT_EQ(result[1].planTier, std::nullopt);
    EXPECT_EQ(result[2].account, "b");
}

TEST(CardOrder, MovesByAnOffset) {
    const Keys shown = {"a", "b", "c", "d"};
    EXPECT_THAT(movedBy(1, "a", shown, {}), ElementsAre("b", "a", "c", "d"));
    EXPECT_THAT(movedBy(3, "a", shown, {}), ElementsAre("b", "c", "d", "a"));
    EXPECT_THAT(movedBy(-1, "d", shown, {}), ElementsAre("a", "b", "d", "c"));
    EXPECT_THAT(movedBy(-3, "d", shown, {}), ElementsAre("d", "a", "b", "c"));
    EXPECT_THAT(movedBy(1, "b", shown, {}), ElementsAre("a", "c", "b", "d"));
}

TEST(CardOrder, AMoveOutOfTheListChangesNothing) {
    const Keys shown = {"a", "b", "c"};
    const Keys order = {"c", "x"};
    EXPECT_EQ(movedBy(1, "c", shown, order), order);
    EXPECT_EQ(movedBy(-1, "a", shown, order), order);
    EXPECT_EQ(movedBy(3, "a", shown, order), order);
    EXPECT_EQ(movedBy(-3, "c", shown, order), order);
    EXPECT_EQ(movedBy(PTRDIFF_MAX, "b", shown, order), order);
    EXPECT_EQ(movedBy(PTRDIFF_MIN, "b", shown, order), order);
    EXPECT_EQ(movedBy(1, "a", {"a"}, order), order);
}

TEST(CardOrder, AMoveByNothingOrOfACardThatIsNotShownChangesNothing) {
    const Keys order = {"c", "x"};
    EXPECT_EQ(movedBy(0, "a", {"a", "b", "c"}, order), order);
    EXPECT_EQ(movedBy(1, "x", {"a", "b", "c"}, order), order);
    EXPECT_EQ(movedBy(1, "a", {}, order), order);
}

TEST(CardOrder, KeysThatAreNotShownFollowInTheirOldOrder) {
    EXPECT_THAT(movedBy(1, "a", {"a", "b"}, {"z", "a", "y", "b", "x"}),
                ElementsAre("b", "a", "z", "y", "x"));
    EXPECT_THAT(movedToPlaceOf("a", "b", {"a", "b"}, {"z", "a", "y"}),
                ElementsAre("b", "a", "z", "y"));
}

TEST(CardOrder, MovesToThePlaceOfAnotherCard) {
    const Keys shown = {"a", "b", "c", "d"};
    EXPECT_THAT(movedToPlaceOf("a", "d", shown, {}), ElementsAre("d", "a", "b", "c"));
    EXPECT_THAT(movedToPlaceOf("d", "a", shown, {}), ElementsAre("b", "c", "d", "a"));
    EXPECT_THAT(movedToPlaceOf("c", "b", shown, {}), ElementsAre("a", "c", "b", "d"));
    EXPECT_THAT(movedToPlaceOf("b", "c", shown, {}), ElementsAre("a", "c", "b", "d"));
}

TEST(CardOrder, AMoveToItselfOrToOrOfACardThatIsNotShownChangesNothing) {
    const Keys shown = {"a", "b"};
    const Keys order = {"b", "x"};
    EXPECT_EQ(movedToPlaceOf("a", "a", shown, order), order);
    EXPECT_EQ(movedToPlaceOf("x", "a", shown, order), order);
    EXPECT_EQ(movedToPlaceOf("a", "x", shown, order), order);
    EXPECT_EQ(movedToPlaceOf("x", "x", shown, order), order);
}

// Any list of moves keeps every card and every key, once.
TEST(CardOrder, NoMoveEverLosesAKey) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    const Keys all = {"a", "b", "c", "d", "e", "f"};
    Keys order = {"x", "c", "y"};
    for (int move = 0; move < 2000; ++move) {
        Keys visible = all;
        visible.resize(1 + random.below(all.size()));
        Keys shown;
        for (const SubscriptionLimits& limits : inCardOrder(records(visible), [&] {
                 Keys keys;
                 for (const std::string& key : order)
                     keys.push_back(cardKey("claude-" + key));
                 return keys;
             }()))
            shown.push_back(limits.account);
        const std::string key = all[random.below(all.size())];
        const Keys next = random.oneIn(2)
                              ? movedBy(random.between(-6, 6), key, shown, order)
                              : movedToPlaceOf(all[random.below(all.size())], key, shown, order);
        for (const std::string& known : order)
            ASSERT_EQ(std::count(next.begin(), next.end(), known), 1) << known;
        if (next != order) {
            for (const std::string& card : shown)
                ASSERT_EQ(std::count(next.begin(), next.end(), card), 1) << card;
        }
        order = next;
    }
}

}  // namespace
}  // namespace brimwatch
