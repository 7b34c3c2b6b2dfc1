#include <gmock/gmock.h>

#include <QSignalSpy>
#include <QWindow>

#include "setup_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* claudeNote =
    "Claude Code를 실행한 적이 있는 설정 폴더(.claude.json이 있는 폴더)를 골라 주세요.";
constexpr const char* claudeRefusal =
    "Claude Code 설정 폴더를 골라 주세요. Claude Code를 실행한 적이 있는, .claude.json이 있는 "
    "폴더여야 해요.";
constexpr const char* codexRefusal =
    "Codex 설정 폴더를 골라 주세요. auth.json이나 config.toml이 있는 폴더여야 해요.";

class SetupAddFolder : public test::SetupFixture {
  protected:
    AddAccountFolder& open(AccountFolderKind kind) {
        start();
        AddAccountFolder& sheet = *makeShownSettings().addFolder();
        QObject::connect(&sheet, &AddAccountFolder::dismissed, &sheet, [this] { ++dismissals_; });
        sheet.open(kind);
        return sheet;
    }
    AddAccountFolder& openForClaude() { return open(AccountFolderKind::claude); }
    AddAccountFolder& openForCodex() { return open(AccountFolderKind::codex); }
    std::string makeFolder(const std::string& name, const std::string& file) {
        const std::string folder = path(name);
        test::writeFile(folder + '/' + file, "{}");
        return folder;
    }
    static void save(AddAccountFolder& sheet, const std::string& path) {
        sheet.setPath(QString::fromStdString(path));
        sheet.save();
    }

    int dismissals_ = 0;
};

TEST_F(SetupAddFolder, HasTheTextsOfClaudeCode) {
    const AddAccountFolder& sheet = openForClaude();
    EXPECT_EQ(sheet.title(), "Claude Code 계정 추가");
    EXPECT_EQ(sheet.pathLabel(), "Claude Code 설정 폴더 경로");
    EXPECT_EQ(sheet.placeholder(), "~/work/claude");
    EXPECT_EQ(sheet.note(), claudeNote);
    EXPECT_EQ(sheet.pathIdentifier(), "claude.accountPath");
    EXPECT_EQ(sheet.path(), "");
    EXPECT_FALSE(sheet.isInvalid());
}

TEST_F(SetupAddFolder, HasTheTextsOfCodex) {
    const AddAccountFolder& sheet = openForCodex();
    EXPECT_EQ(sheet.title(), "Codex 계정 추가");
    EXPECT_EQ(sheet.pathLabel(), "Codex 설정 폴더 경로");
    EXPECT_EQ(sheet.placeholder(), "~/.codex-review");
    EXPECT_EQ(sheet.note(), "auth.json이나 config.toml이 있는 Codex 설정 폴더를 골라 주세요.");
    EXPECT_EQ(sheet.pathIdentifier(), "codex.accountPath");
}

TEST_F(SetupAddFolder, AddsAFolderOfClaudeCodeAndGoes) {
    const std::string folder = makeFolder("teams/claude", ".claude.json");
    save(openForClaude(), folder);
    EXPECT_EQ(dismissals_, 1);
    EXPECT_TRUE(isRegistered(folder));
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
}

TEST_F(SetupAddFolder, AFolderThatWasOnlyDeclinedIsShownAsConnected) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    defaults_.put("claudeAutoConnect", R"({"enabled":true,"declined":[")" + folder + R"("]})");
    AddAccountFolder& sheet = openForClaude();
    const auto isOn = [this] { return settings_->claude()->accounts()->accounts().at(0).isOn; };
    ASSERT_FALSE(isOn());
    save(sheet, folder);
    QCoreApplication::processEvents();
    EXPECT_TRUE(isOn());
}

TEST_F(SetupAddFolder, AddsAFolderOfCodexAndGoes) {
    const std::string folder = makeFolder("teams/codex", "config.toml");
    save(openForCodex(), folder);
    EXPECT_EQ(dismissals_, 1);
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder));
    EXPECT_THAT(model().claudeManualDirectories(), IsEmpty());
}

TEST_F(SetupAddFolder, TakesATildeForTheHomeFolder) {
    const std::string folder = makeFolder("teams/claude", ".claude.json");
    save(openForClaude(), "~/teams/claude");
    EXPECT_EQ(dismissals_, 1);
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
}

TEST_F(SetupAddFolder, LeavesBlanksAroundThePathAway) {
    const std::string folder = makeFolder("teams/claude", ".claude.json");
    save(openForClaude(), "  ~/teams/claude \n");
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
}

TEST_F(SetupAddFolder, StaysWithAFolderThatIsRefused) {
    AddAccountFolder& sheet = openForClaude();
    std::filesystem::create_directories(path("empty"));
    QSignalSpy invalid(&sheet, &AddAccountFolder::invalidChanged);
    save(sheet, path("empty"));
    EXPECT_EQ(dismissals_, 0);
    EXPECT_TRUE(sheet.isInvalid());
    EXPECT_EQ(sheet.invalidText(), claudeRefusal);
    EXPECT_EQ(invalid.count(), 1);
    // It is told once.
    EXPECT_EQ(model().failure(), std::nullopt);
    QCoreApplication::processEvents();
    EXPECT_EQ(settings_->failure(), "");
}

TEST_F(SetupAddFolder, RefusesWhatIsNoFolderOfThatKind) {
    AddAccountFolder& sheet = openForCodex();
    save(sheet, makeFolder("teams/claude", ".claude.json"));
    EXPECT_EQ(sheet.invalidText(), codexRefusal);
    sheet.open(AccountFolderKind::claude);
    save(sheet, makeFolder("teams/codex", "auth.json"));
    EXPECT_EQ(sheet.invalidText(), claudeRefusal);
    EXPECT_EQ(dismissals_, 0);
}

TEST_F(SetupAddFolder, RefusesAPathThatLeadsNowhereByItself) {
    AddAccountFolder& sheet = openForClaude();
    makeFolder("teams/claude", ".claude.json");
    for (const char* path : {"", "   ", "teams/claude", "~teams/claude", "./claude"}) {
        sheet.setPath(QStringLiteral("/"));
        save(sheet, path);
        EXPECT_TRUE(sheet.isInvalid()) << path;
        EXPECT_EQ(sheet.invalidText(), claudeNote) << path;
    }
    EXPECT_EQ(dismissals_, 0);
}

TEST_F(SetupAddFolder, RefusesTheHomeFolderItself) {
    test::writeFile(path(".claude.json"), "{}");
    AddAccountFolder& sheet = openForClaude();
    save(sheet, "~");
    EXPECT_EQ(sheet.invalidText(), claudeRefusal);
}

TEST_F(SetupAddFolder, ARefusalGoesWithTheNextLetter) {
    AddAccountFolder& sheet = openForClaude();
    save(sheet, "/nowhere");
    sheet.setPath(QStringLiteral("/nowhere/"));
    EXPECT_FALSE(sheet.isInvalid());
}

TEST_F(SetupAddFolder, AFolderThatCannotBeConnectedIsAddedAllTheSame) {
    const std::string folder = makeFolder("teams/claude", ".claude.json");
    AddAccountFolder& sheet = openForClaude();
    lockSettings(folder);
    save(sheet, folder);
    EXPECT_EQ(dismissals_, 1);
    QCoreApplication::processEvents();
    EXPECT_TRUE(settings_->failure().startsWith("Claude Code 설정을 바꾸지 못했어요: "));
}

TEST_F(SetupAddFolder, AddsNothingDuringARemoval) {
    const std::string folder = makeFolder("teams/claude", ".claude.json");
    startAndBeginRemoval();
    AddAccountFolder& sheet = *makeShownSettings().addFolder();
    sheet.open(AccountFolderKind::claude);
    save(sheet, folder);
    EXPECT_EQ(sheet.invalidText(), claudeNote);
    EXPECT_THAT(model().claudeManualDirectories(), IsEmpty());
    settle();
}

TEST_F(SetupAddFolder, ForgetsWhatWasWrittenWhenItIsOpenedAgain) {
    AddAccountFolder& sheet = openForClaude();
    QSignalSpy kind(&sheet, &AddAccountFolder::kindChanged);
    QSignalSpy opened(&sheet, &AddAccountFolder::opened);
    save(sheet, "/nowhere");
    sheet.open(AccountFolderKind::codex);
    EXPECT_EQ(sheet.path(), "");
    EXPECT_FALSE(sheet.isInvalid());
    EXPECT_EQ(sheet.title(), "Codex 계정 추가");
    EXPECT_EQ(kind.count(), 1);
    EXPECT_EQ(opened.count(), 1);
    save(sheet, "");
    sheet.open(AccountFolderKind::codex);
    EXPECT_FALSE(sheet.isInvalid());
}

class SetupPicking : public SetupAddFolder {
  protected:
    SetupPicking() { parentWindow_ = &window_; }
    QWindow window_;
};

TEST_F(SetupPicking, LetsTheUserChooseAFolder) {
    AddAccountFolder& sheet = openForClaude();
    sheet.pick();
    EXPECT_THAT(folderPicker_.parents, ElementsAre(&window_));
    EXPECT_THAT(folderPicker_.titles, ElementsAre("Claude Code 계정 추가"));
    const std::string folder = makeFolder("teams/claude", ".claude.json");
    folderPicker_.answer(folder);
    EXPECT_EQ(sheet.path().toStdString(), folder);
    sheet.save();
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
}

TEST_F(SetupPicking, KeepsWhatIsWrittenIfNoneIsChosen) {
    AddAccountFolder& sheet = openForClaude();
    sheet.setPath(QStringLiteral("~/work"));
    sheet.pick();
    folderPicker_.answer(std::nullopt);
    EXPECT_EQ(sheet.path(), "~/work");
}

TEST_F(SetupPicking, TakesAFolderWhoseNameIsNoText) {
    AddAccountFolder& sheet = openForCodex();
    const std::string folder = makeFolder("teams/cod\xE9x", "auth.json");
    sheet.pick();
    folderPicker_.answer(folder);
    sheet.save();
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder));
}

TEST_F(SetupPicking, TakesAFolderWhoseNameEndsWithABlank) {
    AddAccountFolder& sheet = openForCodex();
    const std::string folder = makeFolder("teams/codex ", "auth.json");
    sheet.pick();
    folderPicker_.answer(folder);
    sheet.save();
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder));
}

TEST_F(SetupPicking, WhatIsWrittenAfterwardsCounts) {
    AddAccountFolder& sheet = openForCodex();
    const std::string folder = makeFolder("teams/codex", "auth.json");
    sheet.pick();
    folderPicker_.answer(path("elsewhere"));
    save(sheet, folder);
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder));
}

TEST_F(SetupPicking, AnAnswerForASheetThatHasGoneIsDropped) {
    AddAccountFolder& sheet = openForClaude();
    sheet.pick();
    sheet.open(AccountFolderKind::codex);
    folderPicker_.answer(path("teams"));
    EXPECT_EQ(sheet.path(), "");
    sheet.pick();
    settings_.reset();
    folderPicker_.answer(path("teams"));
}

TEST_F(SetupPicking, AsksNothingWithoutAWindow) {
    parentWindow_ = nullptr;
    openForClaude().pick();
    EXPECT_THAT(folderPicker_.titles, IsEmpty());
}

}  // namespace
}  // namespace brimwatch
