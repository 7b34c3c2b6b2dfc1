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
