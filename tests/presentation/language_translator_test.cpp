#include "presentation/language_translator.h"

#include <QCoreApplication>
#include <QEvent>

#include "model_fixture.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

class LanguageTranslatorTest : public test::ModelFixture {
  protected:
    static const Language& english() { return languageOfCode("en"); }
    static const Language& korean() { return languageOfCode("ko"); }

    int argumentCount_ = 1;
    std::string programName_ = "card_test";
    char* arguments_[2] = {programName_.data(), nullptr};
    QCoreApplication application_{argumentCount_, arguments_};
};

TEST_F(LanguageTranslatorTest, SpeaksKoreanUntilTheUserChoosesAnotherLanguage) {
    start();
    const LanguageTranslator translator(model());
    EXPECT_EQ(translated("닫기"), "닫기");
    EXPECT_EQ(translated("no key"), "no key");
}

TEST_F(LanguageTranslatorTest, SpeaksTheLanguageThatWasChosenBefore) {
    startWith("language", "\"en\"");
    const LanguageTranslator translator(model());
    EXPECT_EQ(translated("닫기"), "Close");
    EXPECT_EQ(QObject::tr("닫기"), "Close");
}

TEST_F(LanguageTranslatorTest, FollowsTheChoiceAtOnce) {
    start();
    const LanguageTranslator translator(model());
    model().setLanguage(english());
    EXPECT_EQ(translated("닫기"), "Close");
    model().setLanguage(korean());
    EXPECT_EQ(translated("닫기"), "닫기");
}

TEST_F(LanguageTranslatorTest, TellsEverybodyOfTheChoice) {
    struct Listener final : QObject {
        bool eventFilter(QObject* /*watched*/, QEvent* event) override {
            if (event->type() == QEvent::LanguageChange) ++changes;
            return false;
        }
        int changes = 0;
    } listener;
    start();
    const LanguageTranslator translator(model());
    QCoreApplication::processEvents();
    application_.installEventFilter(&listener);
    model().setLanguage(english());
    EXPECT_GE(listener.changes, 1);
}

TEST_F(LanguageTranslatorTest, TranslatesTextsThatWerePutTogether) {
    startWith("language", "\"en\"");
    const LanguageTranslator translator(model());
    EXPECT_EQ(translated(std::string("오후 3:04에 받음")), "Received at 3:04 PM");
    EXPECT_EQ(translated(std::string("Claude Code 설정을 바꾸지 못했어요:\nwork: No space left")),
              "Couldn't change the Claude Code settings:\nwork: No space left");
    EXPECT_EQ(translated("%1에서 %2 받음").arg("Claude Code", "just now"),
              "Received just now from Claude Code");
}

TEST_F(LanguageTranslatorTest, LeavesNothingBehind) {
    startWith("language", "\"en\"");
    { const LanguageTranslator translator(model()); }
    EXPECT_EQ(translated("닫기"), "닫기");
}

}  // namespace
}  // namespace brimwatch
