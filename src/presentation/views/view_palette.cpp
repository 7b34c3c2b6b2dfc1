#include "presentation/views/view_palette.h"

#include <QCoreApplication>
#include <QEvent>

namespace brimwatch {

void ViewPalette::setAppearance(Appearance appearance) {
    if (appearance == appearance_) return;
    appearance_ = appearance;
    emit appearanceChanged();
}

void ViewPalette::setTextScale(double scale) {
    if (scale == textScale_) return;
    textScale_ = scale;
    emit textScaleChanged();
}

void ViewPalette::follow(const DesktopAppearance& desktop) {
    const auto followMotion = [this, &desktop] { setReducesMotion(desktop.reducesMotion()); };
    const auto followContrast = [this, &desktop] {
        setIncreasesContrast(desktop.increasesContrast());
    };
    connect(&desktop, &DesktopAppearance::motionChanged, this, followMotion);
    connect(&desktop, &DesktopAppearance::contrastChanged, this, followContrast);
    followMotion();
    followContrast();
}

void ViewPalette::setIncreasesContrast(bool increases) {
    if (increases == increasesContrast_) return;
    increasesContrast_ = increases;
    emit appearanceChanged();
}

void ViewPalette::setReducesMotion(bool reduces) {
    if (reduces == reducesMotion_) return;
    reducesMotion_ = reduces;
    emit motionChanged();
}

QVariantList ViewPalette::gaugeTints() const {
    return {levelComfortable(), levelOverHalf(), levelWarning(), levelExhausted()};
}

QVariantList ViewPalette::statusInks() const {
    return {levelComfortable(), primaryLabel(), levelWarning(), levelExhausted()};
}

QVariantList ViewPalette::fiveHourInks() const {
    return {primaryLabel(), primaryLabel(), levelWarning(), levelExhausted()};
}

QVariantList ViewPalette::accountInks() const {
    return {secondaryLabel(), levelComfortable(), levelWarning()};
}

bool ViewPalette::eventFilter(QObject* watched, QEvent* event) {
    if (watched == QCoreApplication::instance() && event->type() == QEvent::LanguageChange)
        qmlEngine(this)->retranslate();
    return false;
}

}  // namespace brimwatch
