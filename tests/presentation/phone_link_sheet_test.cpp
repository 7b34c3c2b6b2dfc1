#include "presentation/phone_link_sheet.h"

#include <QSignalSpy>
#include <stdexcept>

#include "phone_link_sheet_fixture.h"
#include "publish/limits_cloud.h"
#include "publish/phone_keychain.h"
#include "publish/publishers/cloud_failure.h"

namespace brimwatch {
namespace {

using Action = PhoneLinkSheet::Action;

class PhoneLinkSheetTest : public test::PhoneLinkSheetFixture {};

TEST_F(PhoneLinkSheetTest, MakesALinkWhenItAppears) {
    PhoneLinkSheet& sheet = open();
    EXPECT_EQ(sheet.linkText(), "");
    QSignalSpy changes(&sheet, &PhoneLinkSheet::linkTextChanged);
    sheet.appear();
    EXPECT_EQ(changes.count(), 1);
    EXPECT_EQ(sheet.linkText(), textOf(storedKey().value()));
    EXPECT_EQ(sheet.problem(), "");
}

TEST_F(PhoneLinkSheetTest, ShowsTheKeyThatIsThere) {
    PhoneLinkSheet& sheet = openLinked();
    sheet.appear();
    EXPECT_EQ(sheet.linkText(), textOf(key_));
}

TEST_F(PhoneLinkSheetTest, SaysWhyThereIsNoLink) {
    failKeys("copy");
    PhoneLinkSheet& sheet = open();
    sheet.appear();
    EXPECT_EQ(sheet.linkText(), "");
    EXPECT_EQ(sheet.problem(),
              "연결 키를 만들지 못했어요 (오류 -25308). 시스템 설정에서 암호 동기화가 켜져 있는지 "
              "확인해 주세요.");
}

TEST_F(PhoneLinkSheetTest, AppearsWithoutTheProblemOfTheLastTime) {
    failKeys("copy");
    PhoneLinkSheet& sheet = open();
    sheet.appear();
    ASSERT_NE(sheet.problem(), "");
    keys_.answer = {};
    sheet.appear();
    EXPECT_EQ(sheet.problem(), "");
    EXPECT_EQ(sheet.linkText(), textOf(storedKey().value()));
}

TEST_F(PhoneLinkSheetTest, AppearsWithoutTheWordOfTheLastCopy) {
    PhoneLinkSheet& sheet = openLinked();
    sheet.copy();
    sheet.appear();
    EXPECT_FALSE(sheet.isCopied());
}

TEST_F(PhoneLinkSheetTest, CopiesTheTextAndSaysSoForTwoSeconds) {
    PhoneLinkSheet& sheet = openLinked();
    sheet.copy();
    EXPECT_EQ(clipboard_.texts, std::vector{textOf(key_)});
    EXPECT_TRUE(sheet.isCopied());
    advance(std::chrono::seconds(1));
    EXPECT_TRUE(sheet.isCopied());
    advance(std::chrono::seconds(1));
    EXPECT_FALSE(sheet.isCopied());
}

TEST_F(PhoneLinkSheetTest, EndsTheWordWithTheFirstOfTwoCopies) {
    PhoneLinkSheet& sheet = openLinked();
    sheet.copy();
    advance(std::chrono::seconds(1));
    sheet.copy();
    EXPECT_TRUE(sheet.isCopied());
    advance(std::chrono::seconds(1));
    EXPECT_FALSE(sheet.isCopied());
    EXPECT_EQ(clipboard_.texts.size(), 2U);
}

TEST_F(PhoneLinkSheetTest, MayGoWhileItSaysThatItCopied) {
    openLinked().copy();
    sheet_.reset();
    advance(std::chrono::seconds(2));
}

TEST_F(PhoneLinkSheetTest, ShowsTheNewKeyAfterARotation) {
    PhoneLinkSheet& sheet = openLinked();
    holdCalls();
    sheet.rotate();
    EXPECT_TRUE(sheet.isChanging());
    settle();
    EXPECT_FALSE(sheet.isChanging());
    EXPECT_EQ(sheet.linkText(), textOf(storedKey().value()));
    EXPECT_NE(sheet.linkText(), textOf(key_));
    EXPECT_EQ(dismissals_, 0);
}

TEST_F(PhoneLinkSheetTest, KeepsTheOldKeyIfTheNewOneCannotBeStored) {
    PhoneLinkSheet& sheet = openLinked();
    failKeys("update");
    sheet.rotate();
    settle();
    EXPECT_EQ(sheet.linkText(), textOf(key_));
    EXPECT_EQ(
        sheet.problem(),
        "새 연결 키를 저장하지 못했어요 (오류 -25308). 시스템 설정에서 암호 동기화가 켜져 있는지 "
        "확인해 주세요.");
    EXPECT_EQ(dismissals_, 0);
}

TEST_F(PhoneLinkSheetTest, GoesWhenTheLinkHasEnded) {
    PhoneLinkSheet& sheet = openLinked();
    holdCalls();
    sheet.disconnectLink();
    EXPECT_EQ(dismissals_, 0);
    settle();
    EXPECT_EQ(dismissals_, 1);
    EXPECT_EQ(sheet.linkText(), "");
    EXPECT_FALSE(storedKey());
}

TEST_F(PhoneLinkSheetTest, StaysIfTheLinkCannotBeEnded) {
    PhoneLinkSheet& sheet = openLinked();
    failKeys("remove");
    sheet.disconnectLink();
    settle();
    EXPECT_EQ(dismissals_, 0);
    EXPECT_EQ(sheet.problem(), "연결 키를 지우지 못했어요 (오류 -25308).");
    EXPECT_EQ(sheet.linkText(), textOf(key_));
}

TEST_F(PhoneLinkSheetTest, ForgetsTheProblemWithTheNextTry) {
    PhoneLinkSheet& sheet = openLinked();
    failKeys("remove");
    sheet.disconnectLink();
    settle();
    EXPECT_NE(sheet.problem(), "");
    sheet.rotate();
    EXPECT_EQ(sheet.problem(), "");
    settle();
    failKeys("remove");
    sheet.disconnectLink();
    settle();
    keys_.answer = {};
    sheet.disconnectLink();
    EXPECT_EQ(sheet.problem(), "");
}

TEST_F(PhoneLinkSheetTest, MayGoWhileTheLinkChanges) {
    openLinked();
    holdCalls();
    sheet_->disconnectLink();
    sheet_.reset();
    settle();
    EXPECT_FALSE(storedKey());
}

struct ProblemCase {
    const char* name;
    std::exception_ptr thrown;
    const char* make;
    const char* rotate;
    const char* disconnect;
};

class PhoneLinkProblem : public ::testing::TestWithParam<ProblemCase> {};

TEST_P(PhoneLinkProblem, IsWordedForWhatWasTried) {
    const ProblemCase& problem = GetParam();
    EXPECT_EQ(PhoneLinkSheet::problemText(problem.thrown, Action::make), problem.make);
    EXPECT_EQ(PhoneLinkSheet::problemText(problem.thrown, Action::rotate), problem.rotate);
    EXPECT_EQ(PhoneLinkSheet::problemText(problem.thrown, Action::disconnect), problem.disconnect);
}

constexpr const char* noAccount = "시스템 설정에서 Apple 계정에 로그인해 주세요.";
constexpr const char* notStored = "연결 키를 저장하지 못했어요. 다시 해 주세요.";
constexpr const char* notEnded = "연결을 끊지 못했어요. 인터넷 연결을 확인하고 다시 눌러 주세요.";

INSTANTIATE_TEST_SUITE_P(
    Texts, PhoneLinkProblem,
    ::testing::Values(
        ProblemCase{
            "OfTheKeyStore", std::make_exception_ptr(PhoneKeychain::Failure(-25291)),
            "연결 키를 만들지 못했어요 (오류 -25291). 시스템 설정에서 암호 동기화가 켜져 "
            "있는지 확인해 주세요.",
            "새 연결 키를 저장하지 못했어요 (오류 -25291). 시스템 설정에서 암호 동기화가 켜져 "
            "있는지 확인해 주세요.",
            "연결 키를 지우지 못했어요 (오류 -25291)."},
        ProblemCase{
            "OfAMissingAccount",
            std::make_exception_ptr(LimitsCloud::Failure(LimitsCloud::Failure::Reason::noAccount)),
            noAccount, noAccount, noAccount},
        ProblemCase{"OfACallWithoutAccount", std::make_exception_ptr(CloudFailure({.code = 9})),
                    noAccount, noAccount, noAccount},
        ProblemCase{
            "OfAnUnreadableRecord",
            std::make_exception_ptr(LimitsCloud::Failure(LimitsCloud::Failure::Reason::unreadable)),
            notStored, notStored, notEnded},
        ProblemCase{"OfTheNetwork", std::make_exception_ptr(CloudFailure({.code = 4})), notStored,
                    notStored, notEnded},
        ProblemCase{"OfAnythingElse", std::make_exception_ptr(std::runtime_error("x")), notStored,
                    notStored, notEnded}),
    [](const auto& problem) { return std::string(problem.param.name); });

}  // namespace
}  // namespace brimwatch
