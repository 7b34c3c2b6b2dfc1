#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include "core/codex_status_text.h"
#include "setup_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Fatal = QAbstractItemModelTester::FailureReportingMode;

class SetupAccounts : public test::SetupFixture {
  protected:
    const std::vector<AccountRow>& claudeRows() {
        return settings_->claude()->accounts()->accounts();
    }
    const std::vector<AccountRow>& codexRows() {
        return settings_->codex()->accounts()->accounts();
    }
    // The one of that name, which has to be there.
    int rowOf(const std::vector<AccountRow>& rows, const char* name) {
        for (std::size_t row = 0; row < rows.size(); ++row) {
            if (rows[row].name == QString::fromUtf8(name)) return static_cast<int>(row);
        }
        ADD_FAILURE() << "no account " << name;
        return 0;
    }
    const AccountRow& claude(const char* name) {
        return claudeRows().at(static_cast<std::size_t>(rowOf(claudeRows(), name)));
    }
    const AccountRow& codex(const char* name) {
        return codexRows().at(static_cast<std::size_t>(rowOf(codexRows(), name)));
    }
    std::string footer() { return settings_->claude()->footer().toStdString(); }
    void turn() { QCoreApplication::processEvents(); }
};

TEST_F(SetupAccounts, AConnectedAccountHasACheckmark) {
    makeRegisteredFolder(".claude-work");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").statusText, "");
    EXPECT_EQ(claude("work").statusSymbol, "checkmark.circle.fill");
    EXPECT_EQ(claude("work").statusTone, AccountTone::comfortable);
    EXPECT_TRUE(claude("work").isOn);
}

TEST_F(SetupAccounts, ARegisteredAccountThatIsNotConnectedIsPaused) {
    makeRegisteredFolder(".claude-work");
    start();
    model().setClaudeUsagePaused(true);
    makeShownSettings();
    EXPECT_EQ(claude("work").statusText, "수집 중지됨");
    EXPECT_EQ(claude("work").statusSymbol, "pause.circle");
    EXPECT_EQ(claude("work").statusTone, AccountTone::secondary);
    EXPECT_FALSE(claude("work").isOn);
}

TEST_F(SetupAccounts, AnAccountWhoseProgramHasGoneNeedsRepair) {
    writeStatusLine(makeClaudeFolder(".claude-work"), "'/gone/bin/brimwatch' --statusline");
    defaults_.put("claudeAutoConnect", R"({"enabled":false,"declined":[]})");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").statusText, "연결 복구 필요");
    EXPECT_EQ(claude("work").statusSymbol, "exclamationmark.circle");
    EXPECT_EQ(claude("work").statusTone, AccountTone::warning);
    EXPECT_FALSE(claude("work").isOn);
}

TEST_F(SetupAccounts, AnAccountOfTheFormerScriptSaysSo) {
    writeStatusLine(makeClaudeFolder(".claude-work"), "python3 ~/.brimwatch/brimwatch.py");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").statusText, "예전 도우미로 연결됨");
    EXPECT_EQ(claude("work").statusSymbol, "");
    EXPECT_EQ(claude("work").statusTone, AccountTone::secondary);
}

TEST_F(SetupAccounts, AnAccountThatIsNotRegisteredHasNoStatus) {
    makeClaudeFolder(".claude-work");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").statusText, "");
    EXPECT_EQ(claude("work").statusSymbol, "");
    EXPECT_FALSE(claude("work").isOn);
}

TEST_F(SetupAccounts, AnAccountIsCalledByItsRecord) {
    makeRegisteredFolder(".claude-work");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").recordId, "claude-work");
    EXPECT_EQ(claude("work").account, "work");
    EXPECT_EQ(claude("work").spokenName, "work");
}

TEST_F(SetupAccounts, ANameOfTheUserStandsForTheOriginalOne) {
    makeRegisteredFolder(".claude-work");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").givenName, "");
    settings_->setUsageName("claude-work", "  개인용 ");
    turn();
    const AccountRow& row = claude("개인용");
    EXPECT_EQ(row.givenName, "개인용");
    EXPECT_EQ(row.originalName, "work");
    EXPECT_EQ(row.spokenName, "개인용");
    EXPECT_EQ(row.recordId, "claude-work");
}

TEST_F(SetupAccounts, AnEmptyNameGivesTheOriginalOneBack) {
    makeRegisteredFolder(".claude-work");
    start();
    makeShownSettings();
    settings_->setUsageName("claude-work", "개인용");
    settings_->setUsageName("claude-work", "");
    turn();
    EXPECT_EQ(claude("work").givenName, "");
    EXPECT_THAT(model().usageNames(), IsEmpty());
}

TEST_F(SetupAccounts, ANameOfBlanksThatSomebodyStoredIsNone) {
    defaults_.put("usageNames", R"({"subscription.claude-work":"   "})");
    makeRegisteredFolder(".claude-work");
    start();
    makeShownSettings();
    EXPECT_EQ(claude("work").givenName, "");
}

TEST_F(SetupAccounts, AFolderAddedByHandIsCalledByItsFolder) {
    const std::string folder = path("teams/claude");
    test::writeFile(folder + "/.claude.json", "{}");
    start();
    ASSERT_TRUE(model().addClaudeFolder(folder));
    makeShownSettings();
    ASSERT_EQ(claudeRows().size(), 1U);
    EXPECT_EQ(claudeRows()[0].originalName,
              QString::fromStdString(model().claudeAccountName(model().accounts().front())));
    EXPECT_NE(claudeRows()[0].account, claudeRows()[0].originalName);
    EXPECT_TRUE(claudeRows()[0].isOn);
}

TEST_F(SetupAccounts, ConnectsAllAccountsOfClaude) {
    const std::string one = makeClaudeFolder(".claude-a");
    const std::string other = makeClaudeFolder(".claude-b");
    start();
    makeShownSettings();
    settings_->claude()->connectAll();
    EXPECT_TRUE(isRegistered(one));
    EXPECT_TRUE(isRegistered(other));
    EXPECT_TRUE(claude("a").isOn);
}

TEST_F(SetupAccounts, ConnectsOneAccountAndNoOther) {
    const std::string one = makeClaudeFolder(".claude-a");
    const std::string other = makeClaudeFolder(".claude-b");
    start();
    makeShownSettings();
    settings_->claude()->setAccount(rowOf(claudeRows(), "b"), true);
    EXPECT_FALSE(isRegistered(one));
    EXPECT_TRUE(isRegistered(other));
    EXPECT_TRUE(claude("b").isOn);
    EXPECT_FALSE(claude("a").isOn);
    EXPECT_EQ(defaults_.stored("setupDone"), "true");
}

TEST_F(SetupAccounts, DisconnectsOneAccountForGood) {
    const std::string one = makeRegisteredFolder(".claude-a");
    const std::string other = makeRegisteredFolder(".claude-b");
    start();
    makeShownSettings();
    settings_->claude()->setAccount(rowOf(claudeRows(), "a"), false);
    EXPECT_FALSE(isRegistered(one));
    EXPECT_TRUE(isRegistered(other));
    EXPECT_FALSE(claude("a").isOn);
    model().refresh();
    EXPECT_FALSE(isRegistered(one));
}

// Nothing that is observed tells of it.
TEST_F(SetupAccounts, AnAccountThatWasOnlyDeclinedIsConnectedAtOnce) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    defaults_.put("claudeAutoConnect", R"({"enabled":true,"declined":[")" + folder + R"("]})");
    start();
    makeShownSettings();
    ASSERT_FALSE(claude("a").isOn);
    settings_->claude()->setAccount(0, true);
    EXPECT_TRUE(claude("a").isOn);
}

TEST_F(SetupAccounts, AFailureToConnectOneIsTold) {
    const std::string folder = makeClaudeFolder(".claude-a");
    start();
    makeShownSettings();
    lockSettings(folder);
    settings_->claude()->setAccount(0, true);
    turn();
    EXPECT_EQ(
        settings_->failure().toStdString(),
        "Claude Code 설정을 바꾸지 못했어요: " + test::messageOf(std::errc::no_space_on_device));
}

TEST_F(SetupAccounts, ConnectsNothingDuringARemoval) {
    startAndBeginRemoval();
    const std::string folder = makeClaudeFolder(".claude-a");
    makeShownSettings();
    model().connectClaude({.directory = folder});
    EXPECT_FALSE(isRegistered(folder));
    settle();
}

TEST_F(SetupAccounts, ARowThatHasGoneDoesNothing) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    makeCodexFolder(".codex-a");
    start();
    makeShownSettings();
    for (const int row : {-1, 7}) {
        settings_->claude()->setAccount(row, false);
        settings_->claude()->reveal(row);
        settings_->codex()->setAccount(row, false);
        settings_->codex()->reveal(row);
    }
    EXPECT_TRUE(isRegistered(folder));
    EXPECT_THAT(model().codexSelection().excluded, IsEmpty());
    EXPECT_THAT(fileManager_.revealed, IsEmpty());
}

TEST_F(SetupAccounts, AnAccountThatHasGoneSinceTheRowWasShownDoesNothing) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    start();
    makeShownSettings();
    std::filesystem::remove_all(folder);
    model().refresh();
    settings_->claude()->reveal(0);
    settings_->claude()->setAccount(0, true);
    EXPECT_THAT(fileManager_.revealed, IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST_F(SetupAccounts, RevealsTheFolderOfARow) {
    const std::string claudeFolder = makeRegisteredFolder(".claude-a");
    makeCodexFolder(".codex-b");
    start();
    makeShownSettings();
    settings_->claude()->reveal(0);
    settings_->codex()->reveal(rowOf(codexRows(), "b"));
    EXPECT_THAT(fileManager_.revealed, ElementsAre(claudeFolder, codexFolder("b")));
}

TEST_F(SetupAccounts, TheFooterTellsWhatBringsNewFigures) {
    makeRegisteredFolder(".claude-a");
    start();
    makeShownSettings();
    EXPECT_EQ(footer(), "Claude는 연결한 계정의 Claude Code에서 응답을 받으면 갱신돼요.");
}

TEST_F(SetupAccounts, TheFooterTellsThatNoAccountWasFound) {
    start();
    makeShownSettings();
    EXPECT_EQ(footer(),
              "Claude Code 계정을 못 찾았어요. Claude Code를 한 번 실행한 뒤 다시 열어 주세요.");
}

TEST_F(SetupAccounts, TheFooterAsksForAnInstallation) {
    makeClaudeFolder(".claude-a");
    executables_.clear();
    start();
    makeShownSettings();
    EXPECT_EQ(footer(), "앱을 응용 프로그램 폴더에 설치한 뒤 Claude Code 연결을 눌러 주세요.");
}

TEST_F(SetupAccounts, AnInstalledCopyIsEnough) {
    makeClaudeFolder(".claude-a");
    executables_ = {"/usr/bin/brimwatch"};
    HelperModel::Surroundings around = surroundings();
    around.commandEnvironment.installedCandidates = {"/nowhere/bin/brimwatch",
                                                     "/usr/bin/brimwatch"};
    start(std::move(around));
    makeShownSettings();
    EXPECT_EQ(footer(), "");
}

TEST_F(SetupAccounts, TheFooterFollowsWhatIsConnected) {
    makeClaudeFolder(".claude-a");
    start();
    makeShownSettings();
    QSignalSpy spy(settings_->claude(), &ClaudeSection::footerChanged);
    EXPECT_EQ(footer(), "");
    settings_->claude()->connectAll();
    EXPECT_NE(footer(), "");
    model().setClaudeUsagePaused(true);
    turn();
    EXPECT_EQ(footer(), "");
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SetupAccounts, ACodexAccountWaitsForItsLimit) {
    makeCodexFolder(".codex-b");
    start();
    makeShownSettings();
    EXPECT_EQ(codex("b").statusText, "한도를 기다리는 중");
    EXPECT_EQ(codex("b").statusSymbol, "");
    EXPECT_EQ(codex("b").recordId, "codex-b");
    EXPECT_EQ(codex("b").account, "b");
    EXPECT_EQ(codex("b").spokenName, "Codex b");
    EXPECT_TRUE(codex("b").isOn);
}

TEST_F(SetupAccounts, ACodexAccountWithAFigureOfAFormerRunWaitsForNone) {
    makeCodexFolder(".codex-b");
    makeCodexFolder(".codex-c");
    writeLimits("codex-b", 10, 20);
    writeLimits("claude-c", 10, 20);
    start();
    makeShownSettings();
    EXPECT_EQ(codex("b").statusText, "");
    EXPECT_EQ(codex("c").statusText, "한도를 기다리는 중");
}

TEST_F(SetupAccounts, ACodexAccountTellsOfItsLastAnswer) {
    makeCodexFolder(".codex-b");
    start();
    makeShownSettings();
    settings_->codex()->receiveNow();
    while (codex_.isAsking())
        codex_.answer(test::codexFailure(Kind::noLimits));
    turn();
    EXPECT_EQ(codex("b").statusText,
              "한도가 없어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.");
    settings_->codex()->receiveNow();
    while (codex_.isAsking())
        answer(20);
    turn();
    EXPECT_EQ(codex("b").statusText.toStdString(), receivedNow());
}

TEST_F(SetupAccounts, ACodexAccountThatIsOffIsPaused) {
    makeCodexFolder(".codex-b");
    writeLimits("codex-b", 10, 20);
    start();
    makeShownSettings();
    settings_->codex()->setAccount(rowOf(codexRows(), "b"), false);
    turn();
    EXPECT_FALSE(codex("b").isOn);
    EXPECT_EQ(codex("b").statusText, "수집 중지됨");
    EXPECT_EQ(codex("b").statusSymbol, "pause.circle");
    settings_->codex()->setAccount(rowOf(codexRows(), "b"), true);
    turn();
    EXPECT_TRUE(codex("b").isOn);
    EXPECT_NE(codex("b").statusText, "수집 중지됨");
}

TEST_F(SetupAccounts, SwitchesCodexAsAWhole) {
    makeCodexFolder(".codex-b");
    start();
    makeShownSettings();
    QSignalSpy spy(settings_->codex(), &CodexSection::isEnabledChanged);
    settings_->codex()->setEnabled(false);
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_FALSE(settings_->codex()->isEnabled());
    turn();
    EXPECT_FALSE(codex("b").isOn);
    settings_->codex()->setEnabled(true);
    EXPECT_TRUE(settings_->codex()->isEnabled());
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SetupAccounts, ConnectsAllAccountsOfCodexAndAsksThem) {
    makeCodexFolder(".codex-b");
    start();
    model().setCodexAccount(codexAccount("b"), false);
    makeShownSettings();
    settings_->codex()->connectAll();
    settle();
    EXPECT_TRUE(codex_.isAsking());
    turn();
    EXPECT_TRUE(codex("b").isOn);
}

TEST_F(SetupAccounts, TellsThatCodexIsNotInstalled) {
    makeCodexFolder(".codex-b");
    codex_.installed.reset();
    start();
    makeShownSettings();
    EXPECT_EQ(settings_->codex()->status(), "");
    QSignalSpy spy(settings_->codex(), &CodexSection::statusChanged);
    settings_->codex()->receiveNow();
    EXPECT_EQ(settings_->codex()->status().toStdString(), codexNotFoundText);
    EXPECT_EQ(spy.count(), 1);
}

TEST_F(SetupAccounts, AccountsComeAndGoRowByRow) {
    makeRegisteredFolder(".claude-a");
    const std::string gone = makeRegisteredFolder(".claude-b");
    start();
    makeShownSettings();
    const QAbstractItemModelTester claudeTester(settings_->claude()->accounts(), Fatal::Fatal);
    const QAbstractItemModelTester codexTester(settings_->codex()->accounts(), Fatal::Fatal);
    QSignalSpy inserted(settings_->claude()->accounts(), &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(settings_->claude()->accounts(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy changed(settings_->claude()->accounts(), &QAbstractItemModel::dataChanged);
    std::filesystem::remove_all(gone);
    makeRegisteredFolder(".claude-c");
    makeCodexFolder(".codex-new");
    model().refresh();
    turn();
    EXPECT_EQ(claudeRows().size(), 2U);
    EXPECT_EQ(inserted.count(), 1);
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(codexRows().size(), 2U);
}

TEST_F(SetupAccounts, RowsAreNamedForViewsAsTheirFields) {
    makeRegisteredFolder(".claude-work");
    start();
    model().setUsageName("claude-work", "업무용");
    makeShownSettings();
    const AccountRowsModel& rows = *settings_->claude()->accounts();
    const auto value = [&rows](const char* role) {
        return rows.data(rows.index(0), rows.roleNames().key(role)).toString().toStdString();
    };
    const std::pair<const char*, const char*> values[] = {
        {"recordId", "claude-work"}, {"account", "work"},
        {"name", "업무용"},          {"givenName", "업무용"},
        {"originalName", "work"},    {"spokenName", "업무용"},
        {"statusText", ""},          {"statusSymbol", "checkmark.circle.fill"},
        {"statusTone", "1"},         {"isOn", "true"}};
    EXPECT_EQ(rows.roleNames().size(), static_cast<int>(std::size(values)));
    for (const auto& [role, expected] : values)
        EXPECT_EQ(value(role), expected) << role;
}

// Two folders whose names give one key.
TEST_F(SetupAccounts, TwoAccountsOfOneKeyKeepTheirRows) {
    const std::string one = makeRegisteredFolder(".claude-a b");
    const std::string other = makeRegisteredFolder(".claude-a-b");
    start();
    makeShownSettings();
    ASSERT_EQ(claudeRows().size(), 2U);
    settings_->claude()->reveal(0);
    settings_->claude()->reveal(1);
    EXPECT_THAT(fileManager_.revealed, ::testing::UnorderedElementsAre(one, other));
}

}  // namespace
}  // namespace brimwatch
