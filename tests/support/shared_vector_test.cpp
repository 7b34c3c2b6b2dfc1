#include "support/shared_vector.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace brimwatch {
namespace {

using Texts = SharedVector<std::string>;

const std::string* firstOf(const Texts& texts) {
    return &texts.front();
}

// Equal to nothing, itself included.
struct Unequal {
    bool operator==(const Unequal&) const { return false; }
};

TEST(ASharedVector, SharesItsElementsWithItsCopies) {
    const Texts texts = {"a", "b"};
    const Texts copy = texts;
    EXPECT_EQ(firstOf(copy), firstOf(texts));
}

TEST(ASharedVector, IsCopiedByTheChangeOfACopy) {
    const Texts texts = {"a", "b"};
    Texts copy = texts;
    copy.push_back("c");
    EXPECT_EQ(texts, (Texts{"a", "b"}));
    EXPECT_EQ(copy, (Texts{"a", "b", "c"}));
    Texts other = texts;
    other.begin()->clear();
    EXPECT_EQ(texts.front(), "a");
}

TEST(ASharedVector, ThatNobodySharesChangesInPlace) {
    Texts texts = {"a", "b"};
    const std::string* before = firstOf(texts);
    texts.front() = "c";
    texts.pop_back();
    EXPECT_EQ(firstOf(texts), before);
    EXPECT_EQ(texts, Texts{"c"});
}

TEST(ASharedVector, EqualsOneItSharesWithWithoutALook) {
    const SharedVector<Unequal> elements = {Unequal()};
    const SharedVector<Unequal> copy = elements;
    EXPECT_TRUE(copy == elements);
    EXPECT_FALSE(elements == SharedVector<Unequal>{Unequal()});
}

TEST(ASharedVector, ThatIsEmptyEqualsOneThatNeverHeldAnything) {
    Texts texts = {"a"};
    texts.pop_back();
    EXPECT_EQ(texts, Texts());
    EXPECT_TRUE(texts.empty());
    EXPECT_TRUE(Texts().begin() == Texts().end());
}

TEST(ASharedVector, ErasesNothingFromASharedOneWhereNothingFits) {
    const Texts texts = {"a", "b"};
    Texts copy = texts;
    EXPECT_EQ(erase_if(copy, [](const std::string& text) { return text == "c"; }), 0U);
    EXPECT_EQ(firstOf(copy), firstOf(texts));
    EXPECT_EQ(erase_if(copy, [](const std::string& text) { return text == "a"; }), 1U);
    EXPECT_EQ(copy, Texts{"b"});
    EXPECT_EQ(texts.size(), 2U);
}

TEST(ASharedVector, KeepsANoteUntilAChange) {
    Texts texts = {"a", "b"};
    const Texts early = texts;
    EXPECT_FALSE(texts.isNoted());
    std::as_const(texts).note();
    EXPECT_TRUE(early.isNoted());
    Texts changed = texts;
    changed.push_back("c");
    EXPECT_FALSE(changed.isNoted());
    EXPECT_TRUE(texts.isNoted());
    Texts alone = {"a"};
    alone.note();
    alone.front() = "b";
    EXPECT_FALSE(alone.isNoted());
    Texts().note();
}

}  // namespace
}  // namespace brimwatch
