#include "presentation/views/view_palette.h"

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

}  // namespace brimwatch
