// The switch of the login item.

#include <gmock/gmock.h>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::messageOf;
using ::testing::IsEmpty;

constexpr const char* loginFailure = "로그인할 때 열기를 바꾸지 못했어요: ";

class HelperModelLogin : public test::AccountsFixture {};

TEST_F(HelperModelLogin, IsSwitchedOnAndOff) {
    startWithServices();
    makeCodexFolder(".codex-new");
    model().setLaunchAtLogin(true);
    EXPECT_TRUE(services_.login.enabled);
    EXPECT_TRUE(model().launchAtLogin());
    EXPECT_EQ(codexAccount("new").name, "new") << "a refresh follows";
    model().setLaunchAtLogin(false);
    EXPECT_FALSE(services_.login.enabled);
    EXPECT_FALSE(model().launchAtLogin());
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelLogin, FlipsBackByItselfAfterAFailure) {
    startWithServices();
    services_.login.error = std::make_error_code(std::errc::read_only_file_system);
    makeCodexFolder(".codex-new");
    model().setLaunchAtLogin(true);
    EXPECT_EQ(model().failure(), loginFailure + messageOf(std::errc::read_only_file_system));
    EXPECT_FALSE(model().launchAtLogin());
    EXPECT_EQ(codexAccount("new").name, "new") << "a refresh follows";
}

TEST_F(HelperModelLogin, FollowsTheSessionAtEachRefreshAndIsNeverStored) {
    startWithServices();
    defaults_.changes.clear();
    services_.login.enabled = true;
    EXPECT_FALSE(model().launchAtLogin());
    model().refresh();
    EXPECT_TRUE(model().launchAtLogin());
    EXPECT_THAT(defaults_.changes, IsEmpty());
}

TEST_F(HelperModelLogin, HasNothingToDoWithoutSystemServices) {
    start();
    services_.login.enabled = true;
    model().setLaunchAtLogin(true);
    model().refresh();
    EXPECT_FALSE(model().launchAtLogin());
    EXPECT_EQ(model().failure(), std::nullopt);
}

}  // namespace
}  // namespace brimwatch
