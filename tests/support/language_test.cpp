#include "support/language.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

namespace brimwatch {
namespace {

constexpr Translation examples[] = {
    {"%1 뒤 %2", "%2 after %1"},
    {"계정", "Account"},
    {"실패: %1", "Failed: %1"},
    {"실패: %1 (오류 %2).", "Failed: %1 (error %2)."},
    {"키", "Key"},
};
constexpr Language example{.code = "xx", .name = "X", .translations = examples};

std::string inExample(std::string_view text) {
    return translatedText(text, example);
}

TEST(Languages, AreKoreanFirstAndEnglish) {
    ASSERT_GE(allLanguages().size(), 2U);
    EXPECT_EQ(allLanguages()[0].code, "ko");
    EXPECT_EQ(allLanguages()[0].name, "한국어");
    EXPECT_EQ(languageOfCode("en").name, "English");
}

TEST(Languages, AreKoreanForAnyOtherCode) {
    for (const char* code : {"", "ko", "EN", "en_US", "english", "xx", " en"})
        EXPECT_EQ(languageOfCode(code).code, "ko") << code;
}

TEST(Languages, HaveTheirKeysInOrderOnce) {
    for (const Language& language : allLanguages()) {
        const auto unsorted = std::adjacent_find(
            language.translations.begin(), language.translations.end(),
            [](const Translation& one, const Translation& next) { return one.key >= next.key; });
        EXPECT_EQ(unsorted, language.translations.end());
    }
}

TEST(Translation, OfAKeyIsItsText) {
    EXPECT_EQ(inExample("계정"), "Account");
    EXPECT_EQ(translatedText("남음", languageOfCode("en")), "left");
}

TEST(Translation, OfATemplateKeepsItsPlaces) {
    EXPECT_EQ(inExample("실패: %1"), "Failed: %1");
}

TEST(Translation, OfATextThatIsNoKeyIsTheTextItself) {
    for (const char* text : {"", "work", "계정들", "%", "%1", "실패: "})
        EXPECT_EQ(inExample(text), text);
}

TEST(Translation, IntoKoreanIsTheTextItself) {
    EXPECT_EQ(translatedText("계정", allLanguages()[0]), "계정");
    EXPECT_EQ(translatedText("iPhone으로 보냄: 3", allLanguages()[0]), "iPhone으로 보냄: 3");
}

TEST(Translation, OfAFilledTemplateTranslatesWhatFillsItToo) {
    EXPECT_EQ(inExample("실패: 키"), "Failed: Key");
    EXPECT_EQ(inExample("키 뒤 계정"), "Account after Key");
    EXPECT_EQ(inExample("실패: /home/me/키"), "Failed: /home/me/키");
}

TEST(Translation, IsThatOfTheLongestTemplateThatFits) {
    EXPECT_EQ(inExample("실패: 키 (오류 -3)."), "Failed: Key (error -3).");
}

TEST(Translation, OfLinesIsThatOfEach) {
    EXPECT_EQ(inExample("계정\n실패: 키\n\nwork"), "Account\nFailed: Key\n\nwork");
}

TEST(Translation, EndsHoweverDeepTheTextIs) {
    std::string text = "키";
    for (int depth = 0; depth < 1000; ++depth)
        text = "실패: " + text;
    EXPECT_THAT(inExample(text), ::testing::StartsWith("Failed: Failed: "));
}

TEST(Translation, LeavesWhatLooksLikeAPlaceInATextAlone) {
    EXPECT_EQ(inExample("실패: %2"), "Failed: %2");
    EXPECT_EQ(inExample("실패: 100%"), "Failed: 100%");
}

TEST(LocaleOfALanguage, KeepsTheRegionOfTheUser) {
    const Language& korean = languageOfCode("ko");
    const Language& english = languageOfCode("en");
    EXPECT_EQ(localeOf(korean, "ko_KR.UTF-8"), "ko_KR");
    EXPECT_EQ(localeOf(korean, "de_DE.UTF-8"), "ko_DE");
    EXPECT_EQ(localeOf(english, "ko_KR"), "en_KR");
    EXPECT_EQ(localeOf(english, "ca_ES@valencia"), "en_ES");
    EXPECT_EQ(localeOf(korean, "C"), "ko");
    EXPECT_EQ(localeOf(korean, "C.UTF-8"), "ko");
    EXPECT_EQ(localeOf(english, ""), "en");
    EXPECT_EQ(localeOf(english, "POSIX"), "en");
}

}  // namespace
}  // namespace brimwatch
