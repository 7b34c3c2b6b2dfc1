#include "limits/account_name.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

std::string claude(std::optional<std::string_view> path) {
    return derivedAccountName(path, ".claude");
}

TEST(DerivedAccountName, IsWhatFollowsThePrefixAndAHyphen) {
    EXPECT_EQ(claude("/home/a/.claude-work"), "work");
    EXPECT_EQ(claude(".claude-work/"), "work");
    EXPECT_EQ(derivedAccountName("/home/a/.codex-two", ".codex"), "two");
}

TEST(DerivedAccountName, OfTheStandardFolderIsDefault) {
    EXPECT_EQ(claude("/home/a/.claude"), "default");
    EXPECT_EQ(claude("/home/a/claude"), "default");
    EXPECT_EQ(claude("/home/a/.claude-"), "default");
    EXPECT_EQ(derivedAccountName("/home/a/.codex", ".codex"), "default");
}

TEST(DerivedAccountName, WithoutAPathIsDefault) {
    EXPECT_EQ(claude(std::nullopt), "default");
    EXPECT_EQ(claude(""), "default");
    EXPECT_EQ(claude("/"), "default");
}

TEST(DerivedAccountName, ReplacesOtherCharactersByHyphens) {
    EXPECT_EQ(claude(".claude-a b"), "a-b");
    EXPECT_EQ(claude(".claude- a b "), "a-b");
    EXPECT_EQ(claude(".claude-a'b\"c"), "a-b-c");
    EXPECT_EQ(claude(".claude-a·b"), "a-b");
    EXPECT_EQ(claude(".claude-!!!"), "default");
}

TEST(DerivedAccountName, KeepsLettersOfAnyScript) {
    EXPECT_EQ(claude(".claude-한글"), "한글");
    EXPECT_EQ(claude(".claude-e\u0301٣"), "e\u0301٣");
}

TEST(DerivedAccountName, DropsLeadingDots) {
    EXPECT_EQ(claude("/home/a/..work"), "work");
    EXPECT_EQ(claude("/home/a/.claude-.work"), "work");
    EXPECT_EQ(claude("/home/a/..."), "default");
}

TEST(DerivedAccountName, ReplacesBytesThatAreNotUtf8) {
    EXPECT_EQ(claude(".claude-a\xFF"
                     "b\xE2\x82"),
              "a-b");
}

TEST(DerivedAccountName, DropsThePrefixOnlyOnce) {
    EXPECT_EQ(claude(".claude-.claude"), "claude");
    EXPECT_EQ(claude(".claude-claude"), "claude");
    EXPECT_EQ(claude(".claude-.claude-x"), "claude-x");
    EXPECT_EQ(claude(".claudette"), "claudette");
}

}  // namespace
}  // namespace brimwatch
