#include "core/app_theme.h"

#include <gmock/gmock.h>

#include <string>

namespace brimwatch {
namespace {

using ::testing::ElementsAre;

TEST(AppTheme, ListsAllItsCasesInOrder) {
    EXPECT_THAT(allAppThemes, ElementsAre(AppTheme::system, AppTheme::light, AppTheme::dark));
}

TEST(AppTheme, HasARawStringForEachCase) {
    EXPECT_EQ(rawString(AppTheme::system), "system");
    EXPECT_EQ(rawString(AppTheme::light), "light");
    EXPECT_EQ(rawString(AppTheme::dark), "dark");
}

TEST(AppTheme, IsReadBackFromItsRawString) {
    for (const AppTheme theme : allAppThemes)
        EXPECT_EQ(appThemeFromRawString(rawString(theme)), theme);
}

TEST(AppTheme, ReadsAnyOtherTextAsTheSystem) {
    for (const char* raw : {"", "Dark", "LIGHT", "dark ", " light", "auto", "다크"})
        EXPECT_EQ(appThemeFromRawString(raw), AppTheme::system) << raw;
    EXPECT_EQ(appThemeFromRawString(std::string_view("dark\0", 5)), AppTheme::system);
}

TEST(AppTheme, HasALabelForTheSettings) {
    EXPECT_EQ(label(AppTheme::system), "시스템 설정");
    EXPECT_EQ(label(AppTheme::light), "라이트");
    EXPECT_EQ(label(AppTheme::dark), "다크");
}

}  // namespace
}  // namespace brimwatch
