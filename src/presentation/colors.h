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

// What takes their place where the user wants more contrast: 7 for texts, 4.5 for signs, and 3 for
// the edges of what is usually told by its fill.
namespace increased {

inline constexpr DynamicColor levelComfortable{{94, 224, 208}, {12, 82, 74}};
inline constexpr DynamicColor levelOverHalf{{255, 255, 255}, brandNavy};
inline constexpr DynamicColor levelWarning{{255, 196, 120}, {120, 58, 0}};
inline constexpr DynamicColor levelExhausted{{255, 166, 158}, {140, 20, 14}};
inline constexpr DynamicColor primaryLabel{{255, 255, 255}, {0, 0, 0}};
inline constexpr DynamicColor secondaryLabel{{255, 255, 255, 222}, {0, 0, 0, 222}};
inline constexpr DynamicColor tertiaryFill{{118, 118, 128, 115}, {118, 118, 128, 71}};
inline constexpr DynamicColor separator{{255, 255, 255, 130}, {0, 0, 0, 130}};
inline constexpr DynamicColor indigo{{170, 168, 255}, {58, 56, 170}};
inline constexpr DynamicColor teal{{110, 220, 240}, {10, 90, 110}};
inline constexpr DynamicColor orange{{255, 190, 90}, {130, 62, 0}};
inline constexpr DynamicColor red{{255, 160, 152}, {150, 10, 18}};
inline constexpr DynamicColor popoverEdge{{255, 255, 255, 153}, {0, 0, 0, 153}};
inline constexpr DynamicColor controlFill{{255, 255, 255, 41}, {0, 0, 0, 31}};
inline constexpr DynamicColor controlHovered{{255, 255, 255, 71}, {0, 0, 0, 56}};
inline constexpr DynamicColor controlPressed{{255, 255, 255, 97}, {0, 0, 0, 82}};
inline constexpr DynamicColor focusRing{{94, 224, 208}, {12, 82, 74}};

}  // namespace increased
}  // namespace colors
}  // namespace brimwatch
