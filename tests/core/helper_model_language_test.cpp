// In which language the program speaks.

#include "model_fixture.h"

namespace brimwatch {
namespace {

class HelperModelLanguage : public test::ModelFixture {};

TEST_F(HelperModelLanguage, IsKoreanUntilTheUserChooses) {
    start();
    EXPECT_EQ(model().language().code, "ko");
}

TEST_F(HelperModelLanguage, IsTheOneThatWasStored) {
    startWith("language", "\"en\"");
    EXPECT_EQ(model().language().code, "en");
}

TEST_F(HelperModelLanguage, IsKoreanForAStoredValueOfAnotherKind) {
    for (const char* stored : {"\"fr\"", "\"\"", "7", "true", "null", "[\"en\"]"}) {
        startWith("language", stored);
        EXPECT_EQ(model().language().code, "ko") << stored;
    }
}

TEST_F(HelperModelLanguage, IsStoredAndToldWhenItIsChosen) {
    start();
    const test::SignalCount changes(model(), &HelperModel::languageChanged);
    model().setLanguage(languageOfCode("en"));
    EXPECT_EQ(model().language().code, "en");
    EXPECT_EQ(defaults_.string("language"), "en");
    EXPECT_EQ(changes.count(), 1);
    model().setLanguage(languageOfCode("en"));
    EXPECT_EQ(changes.count(), 1);
    model().setLanguage(languageOfCode("ko"));
    EXPECT_EQ(defaults_.string("language"), "ko");
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(HelperModelLanguage, SpeaksOfTimesInItsOwnWordsAndTheRegionOfTheUser) {
    HelperModel::Surroundings around = surroundings();
    around.locale = "de_DE.UTF-8";
    start(std::move(around));
    EXPECT_EQ(model().locale(), "ko_DE");
    model().setLanguage(languageOfCode("en"));
    EXPECT_EQ(model().locale(), "en_DE");
}

}  // namespace
}  // namespace brimwatch
