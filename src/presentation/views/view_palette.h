// The colours and text sizes of the views, as they are at the moment: `ViewPalette` in QML.
//
// There is one for each engine. Sizes are in pixels of a screen of usual density. Main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QVariantList>
#include <cmath>

#include "platform/desktop_appearance.h"
#include "presentation/colors.h"
#include "presentation/views/spring.h"

namespace brimwatch {

class ViewPalette : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(bool dark READ isDark NOTIFY appearanceChanged)
    // The user wants to see where a control ends.
    Q_PROPERTY(bool increasesContrast READ increasesContrast NOTIFY appearanceChanged)
    Q_PROPERTY(QColor brandTeal READ brandTeal CONSTANT)
    Q_PROPERTY(QColor brandDeepTeal READ brandDeepTeal CONSTANT)
    Q_PROPERTY(QColor brandNavy READ brandNavy CONSTANT)
    Q_PROPERTY(QColor brandNavySurface READ brandNavySurface CONSTANT)
    Q_PROPERTY(QColor brandCream READ brandCream CONSTANT)
    Q_PROPERTY(QColor brandPaper READ brandPaper CONSTANT)

    Q_PROPERTY(QColor levelComfortable READ levelComfortable NOTIFY appearanceChanged)
    Q_PROPERTY(QColor levelOverHalf READ levelOverHalf NOTIFY appearanceChanged)
    Q_PROPERTY(QColor levelWarning READ levelWarning NOTIFY appearanceChanged)
    Q_PROPERTY(QColor levelExhausted READ levelExhausted NOTIFY appearanceChanged)
    Q_PROPERTY(QColor cardFill READ cardFill NOTIFY appearanceChanged)
    Q_PROPERTY(QColor surfaceFill READ surfaceFill NOTIFY appearanceChanged)
    Q_PROPERTY(QColor rowFill READ rowFill NOTIFY appearanceChanged)

    Q_PROPERTY(QColor primaryLabel READ primaryLabel NOTIFY appearanceChanged)
    Q_PROPERTY(QColor secondaryLabel READ secondaryLabel NOTIFY appearanceChanged)
    Q_PROPERTY(QColor tertiaryFill READ tertiaryFill NOTIFY appearanceChanged)
    Q_PROPERTY(QColor separator READ separator NOTIFY appearanceChanged)
    Q_PROPERTY(QColor indigo READ indigo NOTIFY appearanceChanged)
    Q_PROPERTY(QColor teal READ teal NOTIFY appearanceChanged)
    Q_PROPERTY(QColor orange READ orange NOTIFY appearanceChanged)
    Q_PROPERTY(QColor red READ red NOTIFY appearanceChanged)

    Q_PROPERTY(QColor popoverFill READ popoverFill NOTIFY appearanceChanged)
    Q_PROPERTY(QColor popoverEdge READ popoverEdge NOTIFY appearanceChanged)
    Q_PROPERTY(QColor controlFill READ controlFill NOTIFY appearanceChanged)
    Q_PROPERTY(QColor controlHovered READ controlHovered NOTIFY appearanceChanged)
    Q_PROPERTY(QColor controlPressed READ controlPressed NOTIFY appearanceChanged)
    Q_PROPERTY(QColor focusRing READ focusRing NOTIFY appearanceChanged)

    // By the number of a level, `comfortable` to `exhausted`.
    Q_PROPERTY(QVariantList gaugeTints READ gaugeTints NOTIFY appearanceChanged)
    Q_PROPERTY(QVariantList statusInks READ statusInks NOTIFY appearanceChanged)
    Q_PROPERTY(QVariantList fiveHourInks READ fiveHourInks NOTIFY appearanceChanged)
    // By the number of an `AccountTone`.
    Q_PROPERTY(QVariantList accountInks READ accountInks NOTIFY appearanceChanged)

    Q_PROPERTY(double amountSize READ amountSize NOTIFY textScaleChanged)
    Q_PROPERTY(double suffixSize READ suffixSize NOTIFY textScaleChanged)
    Q_PROPERTY(double headlineSize READ headlineSize NOTIFY textScaleChanged)
    Q_PROPERTY(double subheadlineSize READ subheadlineSize NOTIFY textScaleChanged)
    Q_PROPERTY(double footnoteSize READ footnoteSize NOTIFY textScaleChanged)
    Q_PROPERTY(double captionSize READ captionSize NOTIFY textScaleChanged)
    Q_PROPERTY(double calloutSize READ calloutSize NOTIFY textScaleChanged)
    Q_PROPERTY(double controlSize READ controlSize NOTIFY textScaleChanged)
    // Of a line of a list.
    Q_PROPERTY(double listRowHeight READ listRowHeight NOTIFY textScaleChanged)
    // Whether texts are so large that what stands side by side has to go below each other.
    Q_PROPERTY(bool accessibilitySize READ isAccessibilitySize NOTIFY textScaleChanged)

    // The user wants to be where something leads without seeing how it gets there.
    Q_PROPERTY(bool reducesMotion READ reducesMotion NOTIFY motionChanged)
    // Of a `SpringAnimation` by which rows glide to their places.
    Q_PROPERTY(double rowSpring READ rowSpring CONSTANT)
    Q_PROPERTY(double rowDamping READ rowDamping CONSTANT)

  public:
    ViewPalette() = default;

    bool increasesContrast() const { return increasesContrast_; }
    bool isDark() const { return appearance_ == Appearance::dark; }
    void setAppearance(Appearance appearance);
    // A factor for the size of all texts, above 0.
    void setTextScale(double scale);
    // Has motion and contrast as the desktop has them from now on; it must outlive the palette.
    void follow(const DesktopAppearance& desktop);

    static QColor brandTeal() { return colors::brandTeal; }
    static QColor brandDeepTeal() { return colors::brandDeepTeal; }
    static QColor brandNavy() { return colors::brandNavy; }
    static QColor brandNavySurface() { return colors::brandNavySurface; }
    static QColor brandCream() { return colors::brandCream; }
    static QColor brandPaper() { return colors::brandPaper; }

    QColor levelComfortable() const {
        return pick(colors::levelComfortable, colors::increased::levelComfortable);
    }
    QColor levelOverHalf() const {
        return pick(colors::levelOverHalf, colors::increased::levelOverHalf);
    }
    QColor levelWarning() const {
        return pick(colors::levelWarning, colors::increased::levelWarning);
    }
    QColor levelExhausted() const {
        return pick(colors::levelExhausted, colors::increased::levelExhausted);
    }
    QColor cardFill() const { return colors::cardFill.in(appearance_); }
    QColor surfaceFill() const { return colors::surfaceFill.in(appearance_); }
    QColor rowFill() const { return colors::rowFill.in(appearance_); }

    QColor primaryLabel() const {
        return pick(colors::primaryLabel, colors::increased::primaryLabel);
    }
    QColor secondaryLabel() const {
        return pick(colors::secondaryLabel, colors::increased::secondaryLabel);
    }
    QColor tertiaryFill() const {
        return pick(colors::tertiaryFill, colors::increased::tertiaryFill);
    }
    QColor separator() const { return pick(colors::separator, colors::increased::separator); }
    QColor indigo() const { return pick(colors::indigo, colors::increased::indigo); }
    QColor teal() const { return pick(colors::teal, colors::increased::teal); }
    QColor orange() const { return pick(colors::orange, colors::increased::orange); }
    QColor red() const { return pick(colors::red, colors::increased::red); }

    QColor popoverFill() const { return colors::popoverFill.in(appearance_); }
    QColor popoverEdge() const { return pick(colors::popoverEdge, colors::increased::popoverEdge); }
    QColor controlFill() const { return pick(colors::controlFill, colors::increased::controlFill); }
    QColor controlHovered() const {
        return pick(colors::controlHovered, colors::increased::controlHovered);
    }
    QColor controlPressed() const {
        return pick(colors::controlPressed, colors::increased::controlPressed);
    }
    QColor focusRing() const { return pick(colors::focusRing, colors::increased::focusRing); }

    QVariantList gaugeTints() const;
    QVariantList statusInks() const;
    QVariantList fiveHourInks() const;
    QVariantList accountInks() const;

    double amountSize() const { return 44 * textScale_; }
    double suffixSize() const { return 20 * textScale_; }
    double headlineSize() const { return 17 * textScale_; }
    double subheadlineSize() const { return 15 * textScale_; }
    double footnoteSize() const { return 13 * textScale_; }
    double captionSize() const { return 12 * textScale_; }
    double calloutSize() const { return 12 * textScale_; }
    double controlSize() const { return 13 * textScale_; }
    double listRowHeight() const { return std::round(controlSize() * 1.4) + 18; }
    bool isAccessibilitySize() const { return textScale_ >= 1.5; }

    bool reducesMotion() const { return reducesMotion_; }
    static double rowSpring() { return rowMotion.spring(); }
    static double rowDamping() { return rowMotion.damping(); }

    // Of the application: texts of the views follow its language.
    bool eventFilter(QObject* watched, QEvent* event) override;

  signals:
    void appearanceChanged();
    void textScaleChanged();
    void motionChanged();

  private:
    void setReducesMotion(bool reduces);
    void setIncreasesContrast(bool increases);
    QColor pick(const DynamicColor& usual, const DynamicColor& increased) const {
        return (increasesContrast_ ? increased : usual).in(appearance_);
    }

    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    bool reducesMotion_ = false;
    bool increasesContrast_ = false;
};

}  // namespace brimwatch
