#include "presentation/colors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "presentation/views/view_palette.h"
#include "scripted_desktop.h"

namespace brimwatch {
namespace {

struct BaseRow {
    const char* name;
    QColor color;
};

struct DynamicRow {
    const char* name;
    QColor dark;
    QColor light;
};

constexpr QColor teal(47, 181, 165);
constexpr QColor deepTeal(23, 112, 102);
constexpr QColor navy(9, 34, 68);
constexpr QColor navySurface(18, 36, 58);
constexpr QColor cream(246, 239, 226);
constexpr QColor paper(251, 247, 239);

TEST(Colors, BaseColoursAreTheSameEverywhere) {
    constexpr BaseRow rows[] = {{"brandTeal", teal},   {"brandDeepTeal", deepTeal},
                                {"brandNavy", navy},   {"brandNavySurface", navySurface},
                                {"brandCream", cream}, {"brandPaper", paper}};
    ViewPalette palette;
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        palette.setAppearance(appearance);
        for (const BaseRow& row : rows)
            EXPECT_EQ(palette.property(row.name).value<QColor>(), row.color) << row.name;
    }
}

TEST(Colors, DynamicColoursFollowTheAppearance) {
    constexpr DynamicRow rows[] = {{"levelComfortable", teal, deepTeal},
                                   {"levelOverHalf", cream, navy},
                                   {"levelWarning", {255, 177, 78}, {168, 83, 0}},
                                   {"levelExhausted", {255, 122, 112}, {179, 38, 30}},
                                   {"cardFill", navy, paper},
                                   {"surfaceFill", navySurface, paper},
                                   {"rowFill", navy, paper}};
    ViewPalette palette;
    for (const DynamicRow& row : rows) {
        palette.setAppearance(Appearance::dark);
        EXPECT_EQ(palette.property(row.name).value<QColor>(), row.dark) << row.name;
        palette.setAppearance(Appearance::light);
        EXPECT_EQ(palette.property(row.name).value<QColor>(), row.light) << row.name;
    }
}

TEST(Colors, EveryColourOfThePaletteIsThere) {
    const ViewPalette palette;
    const QMetaObject& type = ViewPalette::staticMetaObject;
    int count = 0;
    for (int index = type.propertyOffset(); index < type.propertyCount(); ++index) {
        if (type.property(index).typeId() != QMetaType::QColor) continue;
        EXPECT_GT(type.property(index).read(&palette).value<QColor>().alpha(), 0)
            << type.property(index).name();
        ++count;
    }
    EXPECT_EQ(count, 27);
}

TEST(Colors, ThePaletteTellsOfAChangeOnce) {
    ViewPalette palette;
    int changes = 0;
    QObject::connect(&palette, &ViewPalette::appearanceChanged, [&changes] { ++changes; });
    palette.setAppearance(Appearance::light);
    EXPECT_EQ(changes, 0);
    palette.setAppearance(Appearance::dark);
    palette.setAppearance(Appearance::dark);
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(palette.isDark());
}

TEST(Colors, LevelsAreFoundByTheirNumber) {
    const ViewPalette palette;
    const QColor primary = palette.primaryLabel();
    EXPECT_EQ(palette.gaugeTints(),
              (QVariantList{deepTeal, navy, QColor(168, 83, 0), QColor(179, 38, 30)}));
    EXPECT_EQ(palette.statusInks(),
              (QVariantList{deepTeal, primary, QColor(168, 83, 0), QColor(179, 38, 30)}));
    EXPECT_EQ(palette.fiveHourInks(),
              (QVariantList{primary, primary, QColor(168, 83, 0), QColor(179, 38, 30)}));
}

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QColor over(const QColor& ground, const QColor& color) {
    const double alpha = color.alphaF();
    const auto mix = [alpha](double below, double above) {
        return static_cast<float>(below * (1 - alpha) + above * alpha);
    };
    return QColor::fromRgbF(mix(ground.redF(), color.redF()), mix(ground.greenF(), color.greenF()),
                            mix(ground.blueF(), color.blueF()));
}

double contrast(const QColor& ground, const QColor& color) {
    const double one = luminance(ground) + 0.05;
    const double other = luminance(over(ground, color)) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

struct Pair {
    const char* name;
    DynamicColor ground;
    DynamicColor color;
    double least;
};

TEST(Colors, TextsAndSignsStandOutFromTheirGround) {
    using namespace colors;
    constexpr Pair pairs[] = {
        {"primary text on cards", cardFill, primaryLabel, 7},
        {"primary text on the popover", popoverFill, primaryLabel, 7},
        {"secondary text on cards", cardFill, secondaryLabel, 4.5},
        {"secondary text on the popover", popoverFill, secondaryLabel, 4.5},
        {"comfortable", cardFill, levelComfortable, 4.5},
        {"over half", cardFill, levelOverHalf, 4.5},
        {"warning", cardFill, levelWarning, 4.5},
        {"exhausted", cardFill, levelExhausted, 4.5},
        {"destructive buttons", popoverFill, red, 4.5},
        {"attention", cardFill, orange, 3},
        {"Claude", cardFill, indigo, 3},
        {"Codex", cardFill, colors::teal, 3},
        {"focus ring", popoverFill, focusRing, 3},
    };
    for (const Pair& pair : pairs) {
        for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
            EXPECT_GE(contrast(pair.ground.in(appearance), pair.color.in(appearance)), pair.least)
                << pair.name << (appearance == Appearance::dark ? ", dark" : ", light");
        }
    }
}

TEST(Colors, WithMoreContrastTextsStandOutBySevenAndSignsByFourAndAHalf) {
    namespace more = colors::increased;
    constexpr Pair pairs[] = {
        {"primary text", colors::cardFill, more::primaryLabel, 15},
        {"secondary text", colors::cardFill, more::secondaryLabel, 7},
        {"secondary text on the popover", colors::popoverFill, more::secondaryLabel, 7},
        {"comfortable", colors::cardFill, more::levelComfortable, 7},
        {"over half", colors::cardFill, more::levelOverHalf, 7},
        {"warning", colors::cardFill, more::levelWarning, 7},
        {"exhausted", colors::cardFill, more::levelExhausted, 7},
        {"destructive buttons", colors::popoverFill, more::red, 7},
        {"attention", colors::cardFill, more::orange, 4.5},
        {"Claude", colors::cardFill, more::indigo, 4.5},
        {"Codex", colors::cardFill, more::teal, 4.5},
        {"focus ring", colors::popoverFill, more::focusRing, 4.5},
        {"lines", colors::cardFill, more::separator, 3},
        {"the edge of the popover", colors::popoverFill, more::popoverEdge, 3},
    };
    for (const Pair& pair : pairs) {
        for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
            EXPECT_GE(contrast(pair.ground.in(appearance), pair.color.in(appearance)), pair.least)
                << pair.name << (appearance == Appearance::dark ? ", dark" : ", light");
        }
    }
}

TEST(Colors, ThePaletteFollowsTheContrastThatTheDesktopTells) {
    namespace more = colors::increased;
    test::ScriptedAppearance desktop;
    desktop.setIncreasesContrast(true);
    ViewPalette palette;
    int changes = 0;
    QObject::connect(&palette, &ViewPalette::appearanceChanged, [&changes] { ++changes; });
    EXPECT_EQ(palette.secondaryLabel(), colors::secondaryLabel.light);
    palette.follow(desktop);
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(palette.increasesContrast());
    EXPECT_EQ(palette.secondaryLabel(), more::secondaryLabel.light);
    EXPECT_EQ(palette.gaugeTints().front().value<QColor>(), more::levelComfortable.light);
    palette.setAppearance(Appearance::dark);
    EXPECT_EQ(palette.separator(), more::separator.dark);
    desktop.setIncreasesContrast(true);
    EXPECT_EQ(changes, 2);
    desktop.setIncreasesContrast(false);
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(palette.separator(), colors::separator.dark);
}

TEST(Colors, SecondaryTextStaysReadableOnAPlanChip) {
    for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
        const QColor chip =
            over(colors::cardFill.in(appearance), colors::tertiaryFill.in(appearance));
        EXPECT_GE(contrast(chip, colors::secondaryLabel.in(appearance)), 4.0);
    }
}

struct SizeRow {
    const char* name;
    double size;
};

TEST(TextSizes, GrowWithTheDesktopsScale) {
    constexpr SizeRow rows[] = {{"amountSize", 44},      {"headlineSize", 17}, {"suffixSize", 20},
                                {"subheadlineSize", 15}, {"footnoteSize", 13}, {"captionSize", 12}};
    ViewPalette palette;
    for (const double scale : {1.0, 0.8, 1.25, 2.0}) {
        palette.setTextScale(scale);
        for (const SizeRow& row : rows)
            EXPECT_DOUBLE_EQ(palette.property(row.name).toDouble(), row.size * scale) << row.name;
    }
}

TEST(TextSizes, AreForAccessibilityFromOneAndAHalf) {
    ViewPalette palette;
    palette.setTextScale(1.49);
    EXPECT_FALSE(palette.isAccessibilitySize());
    palette.setTextScale(1.5);
    EXPECT_TRUE(palette.isAccessibilitySize());
}

}  // namespace
}  // namespace brimwatch
