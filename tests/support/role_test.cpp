#include "support/role.h"

#include <gtest/gtest.h>

#include <vector>

namespace brimwatch {
namespace {

Role role(std::vector<std::string_view> arguments) {
    return classifyArguments(arguments);
}

TEST(Role, WithoutArgumentsIsTheApplication) {
    EXPECT_EQ(role({}), Role::application);
    EXPECT_EQ(role({"--other"}), Role::application);
}

TEST(Role, IsTheStatusLineOnlyForTheFirstArgument) {
    EXPECT_EQ(role({"--statusline"}), Role::statusLine);
    EXPECT_EQ(role({"--statusline", "--account", "work"}), Role::statusLine);
    EXPECT_EQ(role({"x", "--statusline"}), Role::application);
    EXPECT_EQ(role({"--account", "work", "--statusline"}), Role::application);
    EXPECT_EQ(role({"--statuslines"}), Role::application);
    EXPECT_EQ(role({"--Statusline"}), Role::application);
}

TEST(Role, ConfiguresFromExactlyOnePath) {
    EXPECT_EQ(role({"--configure-private-updates", "file.json"}), Role::configurePrivateUpdates);
    EXPECT_EQ(role({"--configure-private-updates", "-"}), Role::configurePrivateUpdates);
    EXPECT_EQ(role({"--configure-private-updates", "-x"}), Role::configurePrivateUpdates);
}

TEST(Role, ClearsWithoutAnythingElse) {
    EXPECT_EQ(role({"--clear-private-updates"}), Role::clearPrivateUpdates);
}

TEST(Role, EveryOtherFormOfThePrivateUpdateFlagsIsAUsageFailure) {
    EXPECT_EQ(role({"--configure-private-updates"}), Role::usageFailure);
    EXPECT_EQ(role({"--configure-private-updates", ""}), Role::usageFailure);
    EXPECT_EQ(role({"--configure-private-updates", "--x"}), Role::usageFailure);
    EXPECT_EQ(role({"--configure-private-updates", "--"}), Role::usageFailure);
    EXPECT_EQ(role({"--configure-private-updates", "a", "b"}), Role::usageFailure);
    EXPECT_EQ(role({"a", "--configure-private-updates"}), Role::usageFailure);
    EXPECT_EQ(role({"--clear-private-updates", "extra"}), Role::usageFailure);
    EXPECT_EQ(role({"--clear-private-updates", ""}), Role::usageFailure);
    EXPECT_EQ(role({"--clear-private-updates", "--clear-private-updates"}), Role::usageFailure);
    EXPECT_EQ(role({"--configure-private-updates", "--clear-private-updates"}), Role::usageFailure);
}

TEST(Role, ThePrivateUpdateFlagsComeBeforeTheStatusLine) {
    EXPECT_EQ(role({"--statusline", "--clear-private-updates"}), Role::usageFailure);
    EXPECT_EQ(role({"--statusline", "--configure-private-updates", "x"}), Role::usageFailure);
    EXPECT_EQ(role({"--statusline", "--account", "--clear-private-updates"}), Role::usageFailure);
}

}  // namespace
}  // namespace brimwatch
