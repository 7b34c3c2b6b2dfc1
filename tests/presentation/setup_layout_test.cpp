#include <gmock/gmock.h>

#include "presentation/colors.h"
#include "setup_view_fixture.h"

namespace brimwatch {
namespace {

class SetupLayout : public test::SetupViewFixture {
  protected:
    // What shows most: accounts in all states, with names long and short, and all answers.
    void showMuch(double textScale) {
        window_.reset();
        settings_.reset();
        makeRegisteredFolder(".claude-a");
        writeStatusLine(makeClaudeFolder(".claude-old"), "python3 ~/.brimwatch/brimwatch.py");
        makeCodexFolder(".codex-c");
        writeLimits("claude-a", 10, 20);
        writeLimits("codex-c", 10, 20);
        database_.account = CloudAccountStatus::noAccount;
        keys_.values["net.quillmoor.brimwatch.sync/phone-key-v1"] =
            test::keyFilledWith('p').bytes();
        startWithPhones();
        settleAll();
        poll();
        while (codex_.isAsking())
            codex_.answer(test::codexFailure(Kind::noLimits));
        model().setUsageName("claude-a", "팀에서 함께 쓰는 업무용 구독 계정의 아주 긴 이름");
        updates_.status = QStringLiteral("새 버전 1.4 준비됐어요. 앱을 끄거나 다시 켜면 바뀌어요.");
        updates_.installable = updates_.skippable = updates_.page = true;
        show(textScale, 9000);
    }
    // Each text that is seen but not whole, with how much of it is missing.
    void collectCutTexts(QQuickItem& around, std::vector<std::string>& cut) {
        if (!around.isVisible()) return;
        if (around.inherits("QQuickText")) {
            const bool isCut = around.property("truncated").toBool() ||
                               around.property("paintedWidth").toDouble() > around.width() + 1 ||
                               around.property("paintedHeight").toDouble() > around.height() + 1;
            const QRectF seen = place(around);
            const bool isOut = seen.left() < 0 || seen.right() > window().width() + 0.5;
            if (isCut || isOut) cut.push_back(textOf(around).toStdString());
        }
        for (QQuickItem* child : around.childItems())
            collectCutTexts(*child, cut);
    }
    std::vector<std::string> cutTexts(const char* within) {
        std::vector<std::string> cut;
        collectCutTexts(item(within), cut);
        return cut;
    }
    QQuickItem& rowOf(const char* account) { return item(account); }
};

TEST_F(SetupLayout, ShowsEveryTextWholeAtEachSize) {
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        SCOPED_TRACE(scale);
        showMuch(scale);
        for (const char* section :
             {"claude", "codex", "menuCardOrder", "iPhone", "android", "general", "removal"})
            EXPECT_THAT(cutTexts(section), testing::IsEmpty()) << section;
    }
}

TEST_F(SetupLayout, ShowsEveryTextOfItsDialogsWholeAtEachSize) {
    const std::pair<const char*, const char*> dialogs[] = {
        {"usageName.edit.codex-c", "usageName"},
        {"claude.addAccount", "addFolder"},
        {"codex.addAccount", "addFolder"},
        {"settings.removeEverything", "removalDialog"}};
    for (const double scale : {1.0, 1.5, 2.0}) {
        for (const auto& [button, dialog] : dialogs) {
            SCOPED_TRACE(std::string(dialog) + " at " + std::to_string(scale));
            showMuch(scale);
            press(button);
            ASSERT_TRUE(isSeen(dialog));
            QCoreApplication::processEvents();
            EXPECT_THAT(cutTexts(dialog), testing::IsEmpty());
        }
    }
}

TEST_F(SetupLayout, ARowIsOneLineWhereItFitsAndTwoWhereItDoesNot) {
    showMuch(1);
    const QRectF name = place(itemIn(rowOf("subscription.claude-old"), "name"));
    const QRectF status = place(itemIn(rowOf("subscription.claude-old"), "status"));
    EXPECT_NEAR(name.center().y(), status.center().y(), 1.5);
    EXPECT_GT(status.left(), name.right() + 12);
    const QRectF longName = place(itemIn(rowOf("subscription.codex-c"), "name"));
    const QRectF longStatus = place(itemIn(rowOf("subscription.codex-c"), "status"));
    EXPECT_GT(longStatus.top(), longName.bottom());
    EXPECT_EQ(longStatus.left(), place(rowOf("subscription.codex-c")).left() + 12);
}

TEST_F(SetupLayout, TheRowsOfASectionLieOnAGroundOfTheirOwn) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        showMuch(1);
        window_->setAppearance(appearance);
        EXPECT_EQ(colorOf(item("rowBackground")), colors::rowFill.in(appearance));
        EXPECT_EQ(colorOf(item("surface")), colors::surfaceFill.in(appearance));
    }
    EXPECT_EQ(colors::rowFill.dark, colors::brandNavy);
    EXPECT_EQ(colors::rowFill.light, colors::brandPaper);
}

TEST_F(SetupLayout, ALineLiesBetweenTwoRowsAndNotAboveTheFirst) {
    showMuch(1);
    const std::vector<QQuickItem*> lines = test::findItems(&item("general"), "line");
    ASSERT_EQ(lines.size(), 6U);
    for (std::size_t index = 0; index < lines.size(); ++index)
        EXPECT_EQ(lines[index]->isVisible(), index > 0) << index;
}

TEST_F(SetupLayout, IsAsWideAsItsWindow) {
    showMuch(1);
    EXPECT_EQ(window().width(), 460);
    EXPECT_EQ(place(item("claude")).left(), 20);
    EXPECT_EQ(place(item("claude")).right(), 440);
}

TEST_F(SetupLayout, TheFilesOfThePictureAreThoseOfTheAppearance) {
    start();
    show();
    const auto logo = [this] { return item("logo").property("source").toString(); };
    EXPECT_EQ(logo(), "qrc:/brimwatch/LogoLockup.png");
    window_->setAppearance(Appearance::dark);
    EXPECT_EQ(logo(), "qrc:/brimwatch/LogoLockupDark.png");
}

}  // namespace
}  // namespace brimwatch
