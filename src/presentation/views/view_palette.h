// The colours and text sizes of the views, as they are at the moment: `ViewPalette` in QML.
//
// There is one for each engine. Sizes are in pixels of a screen of usual density. Main thread.
#pragma once

#include <QColor>
#include <QObject>
#include <QQmlEngine>
#include <QVariantList>
#include <cmath>

#include "presentation/colors.h"

namespace brimwatch {

class ViewPalette : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(bool dark READ isDark NOTIFY appearanceChanged)
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

  public:
    ViewPalette() = default;

    bool isDark() const { return appearance_ == Appearance::dark; }
    void setAppearance(Appearance appearance);
    // A factor for the size of all texts, above 0.
    void setTextScale(double scale);

    static QColor brandTeal() { return colors::brandTeal; }
    static QColor brandDeepTeal() { return colors::brandDeepTeal; }
    static QColor brandNavy() { return colors::brandNavy; }
    static QColor brandNavySurface() { return colors::brandNavySurface; }
    static QColor brandCream() { return colors::brandCream; }
    static QColor brandPaper() { return colors::brandPaper; }

    QColor levelComfortable() const { return colors::levelComfortable.in(appearance_); }
    QColor levelOverHalf() const { return colors::levelOverHalf.in(appearance_); }
    QColor levelWarning() const { return colors::levelWarning.in(appearance_); }
    QColor levelExhausted() const { return colors::levelExhausted.in(appearance_); }
    QColor cardFill() const { return colors::cardFill.in(appearance_); }
    QColor surfaceFill() const { return colors::surfaceFill.in(appearance_); }
    QColor rowFill() const { return colors::rowFill.in(appearance_); }

    QColor primaryLabel() const { return colors::primaryLabel.in(appearance_); }
    QColor secondaryLabel() const { return colors::secondaryLabel.in(appearance_); }
    QColor tertiaryFill() const { return colors::tertiaryFill.in(appearance_); }
    QColor separator() const { return colors::separator.in(appearance_); }
    QColor indigo() const { return colors::indigo.in(appearance_); }
    QColor teal() const { return colors::teal.in(appearance_); }
    QColor orange() const { return colors::orange.in(appearance_); }
    QColor red() const { return colors::red.in(appearance_); }

    QColor popoverFill() const { return colors::popoverFill.in(appearance_); }
    QColor popoverEdge() const { return colors::popoverEdge.in(appearance_); }
    QColor controlFill() const { return colors::controlFill.in(appearance_); }
    QColor controlHovered() const { return colors::controlHovered.in(appearance_); }
    QColor controlPressed() const { return colors::controlPressed.in(appearance_); }
    QColor focusRing() const { return colors::focusRing.in(appearance_); }

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

    // Of the application: texts of the views follow its language.
    bool eventFilter(QObject* watched, QEvent* event) override;

  signals:
    void appearanceChanged();
    void textScaleChanged();

  private:
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
};

}  // namespace brimwatch
