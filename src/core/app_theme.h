// How the windows of the program look.
#pragma once

#include <array>
#include <string_view>

namespace brimwatch {

enum class AppTheme { system, light, dark };

inline constexpr std::array allAppThemes = {AppTheme::system, AppTheme::light, AppTheme::dark};

constexpr std::string_view rawString(AppTheme theme) {
    switch (theme) {
        case AppTheme::light:
            return "light";
        case AppTheme::dark:
            return "dark";
        case AppTheme::system:
            break;
    }
    return "system";
}

// Any other text reads as `system`.
constexpr AppTheme appThemeFromRawString(std::string_view raw) {
    for (const AppTheme theme : allAppThemes) {
        if (raw == rawString(theme)) return theme;
    }
    return AppTheme::system;
}

constexpr std::string_view label(AppTheme theme) {
    switch (theme) {
        case AppTheme::light:
            return "라이트";
        case AppTheme::dark:
            return "다크";
        case AppTheme::system:
            break;
    }
    return "시스템 설정";
}

}  // namespace brimwatch
