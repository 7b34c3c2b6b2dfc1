#include <gmock/gmock.h>

#include "setup_view_fixture.h"

namespace brimwatch {
namespace {

using test::Spoken;
using test::spoken;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

class SetupDialogs : public test::SetupViewFixture {
  protected:
    void showAccounts() {
        makeRegisteredFolder(".claude-a");
        makeCodexFolder(".codex-c");
        start();
        show();
    }
    void rename(const char* recordId) {
        press((std::string("usageName.edit.") + recordId).c_str());
    }
    const QAccessibleInterface& accessible(const char* name) {
        return *QAccessible::queryAccessibleInterface(&item(name));
    }
};

// --- Names ---

TEST_F(SetupDialogs, ThePencilBesideANameOpensItsEditor) {
    showAccounts();
    QQuickItem& pencil = item("usageName.edit.claude-a");
    EXPECT_EQ(spoken(&pencil), (Spoken{QAccessible::Button, QStringLiteral("a 이름 바꾸기")}));
    EXPECT_EQ(pencil.property("symbol").toString(), "pencil");
    EXPECT_EQ(spoken(&item("usageName.edit.codex-c")).name, "Codex c 이름 바꾸기");
    EXPECT_FALSE(isSeen("usageName"));
    rename("claude-a");
    EXPECT_EQ(spoken(&item("usageName")),
              (Spoken{QAccessible::Dialog, QStringLiteral("이름 바꾸기")}));
    EXPECT_TRUE(hasFocus("usageName.text"));
    EXPECT_EQ(text("usageName.text"), "");
    EXPECT_EQ(textOf(itemIn(item("usageName"), "dialog.message")), "a");
    EXPECT_EQ(spoken(&item("usageName.text")),
              (Spoken{QAccessible::EditableText, QStringLiteral("표시할 이름")}));
    EXPECT_EQ(textOf(itemIn(item("usageName.text"), "prompt")), "개인용, 업무용, 리뷰용");
    EXPECT_TRUE(itemIn(item("usageName.text"), "prompt").isVisible());
    const std::pair<const char*, const char*> buttons[] = {{"usageName.reset", "원래 이름 사용"},
                                                           {"usageName.cancel", "취소"},
                                                           {"usageName.save", "저장"}};
    for (const auto& [name, label] : buttons)
        EXPECT_EQ(spoken(&item(name)), (Spoken{QAccessible::Button, QString::fromUtf8(label)}));
}

TEST_F(SetupDialogs, SavesTheNameThatIsWritten) {
    showAccounts();
    rename("claude-a");
    write("  My   team ");
    EXPECT_FALSE(itemIn(item("usageName.text"), "prompt").isVisible());
    press("usageName.save");
    EXPECT_FALSE(isSeen("usageName"));
    EXPECT_THAT(model().usageNames(), ElementsAre(Pair("subscription.claude-a", "My team")));
    EXPECT_EQ(textOf(itemIn(item("subscription.claude-a"), "name")), "My team");
    EXPECT_EQ(spoken(&item("usageName.edit.claude-a")).name, "My team 이름 바꾸기");
    rename("claude-a");
    EXPECT_EQ(text("usageName.text"), "My team");
    EXPECT_EQ(item("usageName.text").property("selectedText").toString(), "My team");
}

TEST_F(SetupDialogs, EnterSavesTheName) {
    showAccounts();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        model().setUsageName("codex-c", std::nullopt);
        QCoreApplication::processEvents();
        rename("codex-c");
        write("review");
        pressKey(key);
        EXPECT_FALSE(isSeen("usageName"));
        EXPECT_THAT(model().usageNames(), ElementsAre(Pair("subscription.codex-c", "review")));
    }
}

TEST_F(SetupDialogs, AnEmptyNameGivesTheOriginalOneBack) {
    showAccounts();
    model().setUsageName("claude-a", "team");
    QCoreApplication::processEvents();
    rename("claude-a");
    pressKey(Qt::Key_Delete);
    press("usageName.save");
    EXPECT_THAT(model().usageNames(), IsEmpty());
}

TEST_F(SetupDialogs, TheOriginalNameCanBeTakenAgain) {
    showAccounts();
    model().setUsageName("claude-a", "team");
    QCoreApplication::processEvents();
    rename("claude-a");
    press("usageName.reset");
    EXPECT_FALSE(isSeen("usageName"));
    EXPECT_THAT(model().usageNames(), IsEmpty());
    EXPECT_EQ(textOf(itemIn(item("subscription.claude-a"), "name")), "a");
}

TEST_F(SetupDialogs, ANameThatIsNotSavedIsForgotten) {
    showAccounts();
    rename("claude-a");
    write("team");
    press("usageName.cancel");
    EXPECT_FALSE(isSeen("usageName"));
    rename("claude-a");
    EXPECT_EQ(text("usageName.text"), "");
    write("team");
    pressKey(Qt::Key_Escape);
    EXPECT_FALSE(isSeen("usageName"));
    EXPECT_THAT(model().usageNames(), IsEmpty());
}

TEST_F(SetupDialogs, TheKeyboardStaysInTheEditor) {
    showAccounts();
    rename("claude-a");
    for (const char* name : {"usageName.reset", "usageName.cancel", "usageName.save",
                             "usageName.text", "usageName.reset"}) {
        pressKey(Qt::Key_Tab);
        EXPECT_TRUE(hasFocus(name)) << name;
    }
    for (const char* name : {"usageName.text", "usageName.save", "usageName.cancel"}) {
        pressKey(Qt::Key_Backtab, Qt::ShiftModifier);
        EXPECT_TRUE(hasFocus(name)) << name;
    }
    pressKey(Qt::Key_Space);
    EXPECT_TRUE(hasFocus("usageName.edit.claude-a"));
}

TEST_F(SetupDialogs, WhatLiesBehindASheetCannotBePressed) {
    showAccounts();
    rename("claude-a");
    press("codex.enabled");
    EXPECT_TRUE(model().codexEnabled());
    EXPECT_TRUE(isSeen("usageName"));
}

// --- Folders ---

TEST_F(SetupDialogs, TheSheetForAFolderOpensByItsButton) {
    showAccounts();
    EXPECT_EQ(spoken(&item("claude.addAccount")).name, "Claude Code 계정 추가");
    EXPECT_EQ(text("claude.addAccount"), "계정 추가");
    press("claude.addAccount");
    EXPECT_EQ(spoken(&item("addFolder")),
              (Spoken{QAccessible::Dialog, QStringLiteral("Claude Code 계정 추가")}));
    EXPECT_TRUE(hasFocus("claude.accountPath"));
    EXPECT_EQ(spoken(&item("claude.accountPath")),
              (Spoken{QAccessible::EditableText, QStringLiteral("Claude Code 설정 폴더 경로")}));
    EXPECT_EQ(textOf(itemIn(item("claude.accountPath"), "prompt")), "~/work/claude");
    EXPECT_EQ(text("addFolder.note"),
              "Claude Code를 실행한 적이 있는 설정 폴더(.claude.json이 있는 폴더)를 골라 주세요.");
    EXPECT_FALSE(isSeen("addFolder.invalid"));
    press("addFolder.cancel");
    EXPECT_FALSE(isSeen("addFolder"));
    EXPECT_EQ(spoken(&item("codex.addAccount")).name, "Codex 계정 추가");
    press("codex.addAccount");
    EXPECT_EQ(spoken(&item("addFolder")).name, "Codex 계정 추가");
    EXPECT_EQ(textOf(itemIn(item("codex.accountPath"), "prompt")), "~/.codex-review");
    pressKey(Qt::Key_Escape);
    EXPECT_FALSE(isSeen("addFolder"));
}

TEST_F(SetupDialogs, AFolderThatIsWrittenIsAdded) {
    showAccounts();
    test::writeFile(path("teams/claude/.claude.json"), "{}");
    press("claude.addAccount");
    write("~/teams/claude");
    press("addFolder.save");
    EXPECT_FALSE(isSeen("addFolder"));
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(path("teams/claude")));
}

TEST_F(SetupDialogs, AFolderThatIsRefusedKeepsTheSheet) {
    showAccounts();
    press("codex.addAccount");
    write("/nowhere");
    pressKey(Qt::Key_Return);
    EXPECT_TRUE(isSeen("addFolder"));
    EXPECT_TRUE(isSeen("addFolder.invalid"));
    EXPECT_EQ(text("addFolder.invalid"),
              "Codex 설정 폴더를 골라 주세요. auth.json이나 config.toml이 있는 폴더여야 해요.");
    EXPECT_EQ(spoken(&item("addFolder.invalid")).role, QAccessible::AlertMessage);
    EXPECT_FALSE(isSeen("failure"));
    write("2");
    EXPECT_FALSE(isSeen("addFolder.invalid"));
    EXPECT_EQ(text("codex.accountPath"), "/nowhere2");
}

TEST_F(SetupDialogs, AFolderThatIsPickedIsWritten) {
    showAccounts();
    press("codex.addAccount");
    EXPECT_EQ(spoken(&item("addFolder.pick")),
              (Spoken{QAccessible::Button, QStringLiteral("폴더 고르기…")}));
    press("addFolder.pick");
    EXPECT_THAT(folderPicker_.parents, ElementsAre(&window()));
    folderPicker_.answer("/srv/codex");
    EXPECT_EQ(text("codex.accountPath"), "/srv/codex");
}

TEST_F(SetupDialogs, TheKeyboardStaysInTheSheetForAFolder) {
    showAccounts();
    press("codex.addAccount");
    for (const char* name :
         {"addFolder.pick", "addFolder.cancel", "addFolder.save", "codex.accountPath"}) {
        pressKey(Qt::Key_Tab);
        EXPECT_TRUE(hasFocus(name)) << name;
    }
    pressKey(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_TRUE(hasFocus("addFolder.save"));
    pressKey(Qt::Key_Escape);
    EXPECT_TRUE(hasFocus("codex.addAccount"));
}

// --- Removal ---

TEST_F(SetupDialogs, ARemovalIsAskedForFirst) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    start();
    show();
    EXPECT_EQ(text("removal.text"),
              "모두 해제하면 Claude Code 상태줄을 원래대로 돌리고, iPhone과 안드로이드로 보낸 값을 "
              "지우고, Codex 확인과 로그인할 때 열기를 꺼요. ~/.brimwatch 폴더는 앱을 지운 뒤 "
              "지워도 돼요.");
    EXPECT_EQ(spoken(&item("settings.removeEverything")),
              (Spoken{QAccessible::Button, QStringLiteral("모두 해제")}));
    constexpr int destructive = 1;
    EXPECT_EQ(item("settings.removeEverything").property("role").toInt(), destructive);
    EXPECT_FALSE(isSeen("removal.done"));
    press("settings.removeEverything");
    QQuickItem& dialog = item("removalDialog");
    EXPECT_EQ(spoken(&dialog),
              (Spoken{QAccessible::AlertMessage, QStringLiteral("모두 해제할까요?")}));
    EXPECT_EQ(accessible("removalDialog").text(QAccessible::Description),
              "Claude Code 상태줄을 원래대로 돌리고 iPhone과 안드로이드로 보낸 값을 지워요.");
    EXPECT_EQ(textOf(itemIn(dialog, "dialog.confirm")), "모두 해제");
    EXPECT_EQ(itemIn(dialog, "dialog.confirm").property("role").toInt(), destructive);
    press(itemIn(dialog, "dialog.cancel"));
    settleAll();
    EXPECT_TRUE(isRegistered(folder));
    press("settings.removeEverything");
    pressKey(Qt::Key_Escape);
    settleAll();
    EXPECT_TRUE(isRegistered(folder));
}

TEST_F(SetupDialogs, ARemovalShowsItsProgressAndItsEnd) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    start();
    show();
    press("settings.removeEverything");
    press(itemIn(item("removalDialog"), "dialog.confirm"));
    ASSERT_TRUE(model().isRemoving());
    EXPECT_FALSE(item("settings.removeEverything").isEnabled());
    EXPECT_TRUE(isSeen("removal.progress"));
    press("settings.removeEverything");
    EXPECT_FALSE(isSeen("removalDialog"));
    settleAll();
    EXPECT_FALSE(isRegistered(folder));
    EXPECT_TRUE(item("settings.removeEverything").isEnabled());
    EXPECT_FALSE(isSeen("removal.progress"));
    EXPECT_EQ(text("removal.done"), "모두 해제했어요. 메뉴 막대에서 종료하고 앱을 지워도 돼요.");
    EXPECT_TRUE(isSeen("removal.done"));
    EXPECT_EQ(item("removal.doneSymbol").property("name").toString(), "checkmark.circle.fill");
}

TEST_F(SetupDialogs, TheKeyboardStaysInTheQuestion) {
    showAccounts();
    press("settings.removeEverything");
    QQuickItem& dialog = item("removalDialog");
    EXPECT_TRUE(itemIn(dialog, "dialog.cancel").hasActiveFocus());
    pressKey(Qt::Key_Tab);
    EXPECT_TRUE(itemIn(dialog, "dialog.confirm").hasActiveFocus());
    pressKey(Qt::Key_Tab);
    EXPECT_TRUE(itemIn(dialog, "dialog.cancel").hasActiveFocus());
}

TEST_F(SetupDialogs, TheKeyboardGoesBackToWhereTheQuestionCameFrom) {
    showAccounts();
    press("settings.removeEverything");
    pressKey(Qt::Key_Escape);
    EXPECT_TRUE(hasFocus("settings.removeEverything"));
    pressKey(Qt::Key_Space);
    ASSERT_TRUE(isSeen("removalDialog"));
    pressKey(Qt::Key_Space);
    EXPECT_FALSE(isSeen("removalDialog"));
    EXPECT_TRUE(hasFocus("settings.removeEverything"));
}

TEST_F(SetupDialogs, AnAnswerCountsOnce) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    start();
    show();
    press("settings.removeEverything");
    pressKey(Qt::Key_Tab);
    pressKey(Qt::Key_Return);
    ASSERT_TRUE(model().isRemoving());
    settleAll();
    ASSERT_FALSE(isRegistered(folder));
    model().connectClaude();
    ASSERT_TRUE(isRegistered(folder));
    pressKey(Qt::Key_Return);
    settleAll();
    EXPECT_TRUE(isRegistered(folder)) << "nobody was asked again";
}

// --- Failures ---

TEST_F(SetupDialogs, AFailureIsToldUntilItIsSeen) {
    start();
    show();
    press("claude.connectAll");
    QQuickItem& alert = item("failure");
    EXPECT_EQ(spoken(&alert), (Spoken{QAccessible::AlertMessage, QStringLiteral("Brimwatch?")}));
    EXPECT_EQ(textOf(itemIn(alert, "dialog.title")), "Brimwatch?");
    EXPECT_EQ(textOf(itemIn(alert, "dialog.message")),
              "Claude Code 계정을 찾지 못했어요. Claude Code에 로그인한 뒤 다시 연결해 주세요.");
    EXPECT_EQ(text("alert.seen"), "확인");
    EXPECT_TRUE(hasFocus("alert.seen"));
    press("alert.seen");
    EXPECT_FALSE(alert.isVisible());
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_TRUE(hasFocus("claude.connectAll"));
}

TEST_F(SetupDialogs, AFailureThatCameBeforeTheWindowHasTheKeyboard) {
    start();
    model().connectClaude();
    show();
    ASSERT_TRUE(isSeen("failure"));
    EXPECT_TRUE(hasFocus("alert.seen"));
    pressKey(Qt::Key_Return);
    EXPECT_FALSE(isSeen("failure"));
    EXPECT_FALSE(hasFocus("alert.seen"));
}

TEST_F(SetupDialogs, AFailureGoesByEscapeAndEnter) {
    start();
    show();
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        press("claude.connectAll");
        ASSERT_TRUE(isSeen("failure"));
        pressKey(Qt::Key_Tab);
        pressKey(key);
        EXPECT_FALSE(isSeen("failure")) << key;
        EXPECT_EQ(model().failure(), std::nullopt);
    }
}

}  // namespace
}  // namespace brimwatch
