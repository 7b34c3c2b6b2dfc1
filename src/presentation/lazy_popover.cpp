#include "presentation/lazy_popover.h"

#include <utility>

namespace brimwatch {

LazyPopover::LazyPopover(Make make) : make_(std::move(make)) {}

void LazyPopover::prepare() {
    popover_ = make_();
    if (!popover_) return;
    connect(popover_.get(), &Popover::willShow, this, &Popover::willShow);
    connect(popover_.get(), &Popover::didShow, this, &Popover::didShow);
    connect(popover_.get(), &Popover::willClose, this, &Popover::willClose);
    connect(popover_.get(), &Popover::didClose, this, &Popover::didClose);
    popover_->setAppearance(appearance_);
    popover_->setTextScale(textScale_);
}

void LazyPopover::show(std::optional<QPoint> click, const QString& activationToken) {
    if (!popover_) prepare();
    if (popover_) popover_->show(click, activationToken);
}

void LazyPopover::performClose() {
    if (popover_) popover_->performClose();
}

void LazyPopover::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    if (popover_) popover_->setAppearance(appearance);
}

void LazyPopover::setTextScale(double scale) {
    textScale_ = scale;
    if (popover_) popover_->setTextScale(scale);
}

}  // namespace brimwatch
