#include <gtest/gtest.h>

#include "claude/claude_code_setup.h"
#include "support/json_reader.h"
#include "support/json_writer.h"

namespace brimwatch {
namespace {

using Account = ClaudeCodeSetup::Account;
using AutoConnect = ClaudeCodeSetup::AutoConnect;
using State = ClaudeCodeSetup::State;

const Account fresh = {"/h/.claude", State::notRegistered, false};
const Account connected = {"/h/.claude-a", State::registered, false};
const Account broken = {"/h/.claude-b", State::needsRepair, false};
const Account old = {"/h/.claude-c", State::oldHelper, false};
const Account manual = {"/x/.claude", State::notRegistered, true};

std::optional<AutoConnect> decoded(std::string_view text) {
    return AutoConnect::fromJson(parseJson(text).value());
}

TEST(AutoConnect, IsOffWhereNothingIsConnected) {
    EXPECT_EQ(AutoConnect::inferred({}), (AutoConnect{.enabled = false, .declined = {}}));
    EXPECT_EQ(AutoConnect::inferred({fresh, old, manual}),
              (AutoConnect{.enabled = false, .declined = {}}));
}

TEST(AutoConnect, LeavesAloneWhatAUserWhoConnectedFoldersDidNotConnect) {
    const AutoConnect expected{.enabled = true, .declined = {"/h/.claude", "/x/.claude"}};
    EXPECT_EQ(AutoConnect::inferred({fresh, connected, old, manual}), expected);
    EXPECT_EQ(AutoConnect::inferred({fresh, broken, manual}), expected);
}

TEST(AutoConnect, HasNoCandidatesWhileItIsOff) {
    EXPECT_TRUE(AutoConnect{}.candidates({fresh, broken}, {}).empty());
}

TEST(AutoConnect, ConnectsWhatIsNotConnectedOrBrokenInTheOrderGiven) {
    const AutoConnect on{.enabled = true, .declined = {}};
    EXPECT_EQ(on.candidates({manual, connected, broken, old, fresh}, {}),
              (std::vector<Account>{manual, broken, fresh}));
}

TEST(AutoConnect, PassesOverDeclinedAndSkippedFolders) {
    const AutoConnect on{.enabled = true, .declined = {"/h/.claude"}};
    EXPECT_EQ(on.candidates({fresh, broken, manual}, {"/x/.claude"}),
              (std::vector<Account>{broken}));
}

TEST(AutoConnect, IsStoredUnderItsTwoKeys) {
    const AutoConnect value{.enabled = true, .declined = {"/h/.claude", "/h/.claude-한글"}};
    EXPECT_EQ(writeJson(value.toJson(), JsonLayout::compact),
              R"({"declined":["/h/.claude","/h/.claude-한글"],"enabled":true})");
    EXPECT_EQ(AutoConnect::fromJson(value.toJson()), value);
    EXPECT_EQ(AutoConnect::fromJson(AutoConnect{}.toJson()), AutoConnect{});
}

TEST(AutoConnect, TakesDeclinedFoldersInAnyOrderAndOnce) {
    EXPECT_EQ(decoded(R"({"enabled":false,"declined":["/b","/a","/b"],"more":1})"),
              (AutoConnect{.enabled = false, .declined = {"/a", "/b"}}));
}

TEST(AutoConnect, NeedsBothKeysWithTheirTypes) {
    for (const char* text :
         {R"({"enabled":true})", R"({"declined":[]})", R"({"enabled":1,"declined":[]})",
          R"({"enabled":true,"declined":{}})", R"({"enabled":true,"declined":[1]})",
          R"({"enabled":true,"declined":["/a",null]})", R"({"enabled":null,"declined":[]})", "[]",
          "null", "{}"}) {
        EXPECT_EQ(decoded(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace brimwatch
