// The colours of the program, by the names that all views and windows use. All sRGB.
#pragma once

#include <QColor>

#include "presentation/appearance.h"

namespace brimwatch {

struct DynamicColor {
    QColor dark;
    QColor light;

    constexpr const QColor& in(Appearance appearance) const {
        return appearance == Appearance::dark ? dark : light;
    }
};

namespace colors {

inline constexpr QColor brandTeal{47, 181, 165};
inline constexpr QColor brandDeepTeal{23, 112, 102};
inline constexpr QColor brandNavy{9, 34, 68};
inline constexpr QColor brandNavySurface{18, 36, 58};
inline constexpr QColor brandCream{246, 239, 226};
inline constexpr QColor brandPaper{251, 247, 239};

inline constexpr DynamicColor levelComfortable{brandTeal, brandDeepTeal};
inline constexpr DynamicColor levelOverHalf{brandCream, brandNavy};
inline constexpr DynamicColor levelWarning{{255, 177, 78}, {168, 83, 0}};
inline constexpr DynamicColor levelExhausted{{255, 122, 112}, {179, 38, 30}};
inline constexpr DynamicColor cardFill{brandNavy, brandPaper};
inline constexpr DynamicColor surfaceFill{brandNavySurface, brandPaper};
inline constexpr DynamicColor rowFill{brandNavy, brandPaper};

// What desktops have no names for. Texts stand out from cards and windows by a contrast of 4.5 at
// least, and signs by 3.
inline constexpr DynamicColor primaryLabel{{255, 255, 255, 217}, {0, 0, 0, 217}};
inline constexpr DynamicColor secondaryLabel{{255, 255, 255, 158}, {0, 0, 0, 153}};
inline constexpr DynamicColor tertiaryFill{{118, 118, 128, 92}, {118, 118, 128, 46}};
inline constexpr DynamicColor separator{{255, 255, 255, 31}, {0, 0, 0, 26}};
inline constexpr DynamicColor indigo{{125, 122, 255}, {88, 86, 214}};
inline constexpr DynamicColor teal{{64, 200, 224}, {34, 145, 168}};
inline constexpr DynamicColor orange{{255, 159, 10}, {201, 94, 0}};
inline constexpr DynamicColor red{{255, 105, 97}, {201, 22, 30}};

// The panel on which the cards lie, its edge, and what can be pressed.
inline constexpr DynamicColor popoverFill{brandNavySurface, brandCream};
inline constexpr DynamicColor popoverEdge{{255, 255, 255, 46}, {0, 0, 0, 46}};
inline constexpr DynamicColor controlFill{{255, 255, 255, 26}, {0, 0, 0, 15}};
inline constexpr DynamicColor controlHovered{{255, 255, 255, 41}, {0, 0, 0, 26}};
inline constexpr DynamicColor controlPressed{{255, 255, 255, 61}, {0, 0, 0, 46}};
inline constexpr DynamicColor focusRing{brandTeal, brandDeepTeal};

}  // namespace colors
}  // namespace brimwatch
