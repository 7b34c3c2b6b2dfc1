// How large the settings window becomes. In points.
#pragma once

#include <cmath>
#include <optional>

namespace brimwatch {

inline constexpr double setupWindowWidth = 460;
inline constexpr double setupWindowMinimumHeight = 360;

struct SetupWindowSize {
    double height = 0;  // of what is in it, in whole points
    // It is too high for the screen: it scrolls, and its height is the user's to choose, from the
    // minimum on.
    bool isResizable = false;

    bool operator==(const SetupWindowSize&) const = default;
};

// For that height of all sections. `screenHeight` is what the main screen leaves to windows.
inline SetupWindowSize setupWindowSize(double contentHeight, std::optional<double> screenHeight) {
    constexpr double roomBeside = 60;
    constexpr double withoutScreen = 740;
    constexpr double allowance = 120;  // for a title bar and margins
    const double highest = screenHeight ? *screenHeight - roomBeside : withoutScreen;
    const bool needsScrolling = contentHeight + allowance > highest;
    // Rounded up: a view that is lower than its content by a fraction scrolls.
    return {.height = needsScrolling ? std::floor(highest) : std::ceil(contentHeight),
            .isResizable = needsScrolling};
}

}  // namespace brimwatch
