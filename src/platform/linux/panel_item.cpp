#include "platform/linux/panel_item.h"

#include <QApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "platform/linux/screen_pixels.h"

namespace brimwatch {

namespace {

using Look = StatusItem::Look;
using Presence = NotifierWatcher::Presence;

constexpr double pointsOfPicture = 20;

constexpr QColor inkOnDark(0xf2, 0xf2, 0xf2);
constexpr QColor inkOnLight(0x2b, 0x2b, 0x2b);

// Only on X11 does a panel know where it is, and can a window be put beside it.
bool doPlacesHaveMeaning(const Environment& environment) {
    return !QGuiApplication::platformName().startsWith(u"wayland") &&
           environment.value("WAYLAND_DISPLAY").value_or("").empty();
}

void copyPixels(const QImage& from, QImage& to) {
    const bool fits = to.size() == from.size() && to.format() == from.format() && to.isDetached();
    if (!fits) {
        to = from.copy();
        return;
    }
    const auto length = static_cast<std::size_t>(std::min(from.bytesPerLine(), to.bytesPerLine()));
    for (int y = 0; y < from.height(); ++y)
        std::memcpy(to.scanLine(y), from.constScanLine(y), length);
}

}  // namespace

PanelItem::PanelItem(const Environment& environment, const DesktopAppearance& appearance)
    : PanelItem(environment, appearance, Delays()) {}

PanelItem::PanelItem(const Environment& environment, const DesktopAppearance& appearance,
                     Delays delays)
    : appearance_(appearance),
      placesHaveMeaning_(doPlacesHaveMeaning(environment)),
      notifiers_(environment, delays.notifiers, content_) {
    oldTrayDelay_.setSingleShot(true);
    oldTrayDelay_.setInterval(delays.oldTray);
    content_.look = currentLook();
    connect(&notifiers_, &NotifierPanel::activated, this, &PanelItem::announceClick);
    connect(&notifiers_, &NotifierPanel::menuOpened, this, &PanelItem::menuOpened);
    connect(&notifiers_, &NotifierPanel::commandChosen, this, &PanelItem::commandChosen);
    connect(&notifiers_, &NotifierPanel::changed, this, &PanelItem::noteChange);
    connect(&oldTray_, &XembedTray::changed, this, &PanelItem::noteChange);
    connect(&oldTrayDelay_, &QTimer::timeout, this, &PanelItem::choosePanel);
    connect(&appearance, &DesktopAppearance::darkChanged, this, &PanelItem::updateLook);
    watchScreens();
}

void PanelItem::watchScreens() {
    const auto watch = [this](const QScreen* screen) {
        connect(screen, &QScreen::logicalDotsPerInchChanged, this, &PanelItem::updateLook);
        updateLook();
    };
    for (const QScreen* screen : QGuiApplication::screens())
        watch(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, watch);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, &PanelItem::updateLook);
}

void PanelItem::show() {
    isShown_ = true;
    notifiers_.show();
    noteChange();
}

void PanelItem::setTitle(const QString& title) {
    if (content_.number == title) return;
    content_.number = title;
    notifiers_.updateNumber();
    if (oldTrayPanel_) oldTrayPanel_->updateNumber();
}

void PanelItem::setPicture(const QImage& picture) {
    if (content_.picture == picture) return;
    copyPixels(picture, content_.picture);
    notifiers_.updatePicture();
    if (oldTrayPanel_) oldTrayPanel_->updatePicture();
}

void PanelItem::setMenu(const std::vector<MenuRow>& rows) {
    if (content_.rows == rows) return;
    content_.rows = rows;
    notifiers_.updateRows();
    if (oldTrayPanel_) oldTrayPanel_->updateRows();
}

bool PanelItem::isOldTrayWanted() const {
    return isShown_ && notifiers_.presence() == Presence::absent && oldTray_.isThere();
}

void PanelItem::noteChange() {
    if (!isOldTrayWanted()) {
        oldTrayDelay_.stop();
        oldTrayPanel_.reset();
    } else if (!oldTrayPanel_ && !oldTrayDelay_.isActive()) {
        oldTrayDelay_.start();
    }
    updateLook();
    updateVisibility();
}

void PanelItem::choosePanel() {
    if (!isOldTrayWanted() || oldTrayPanel_) return;
    oldTrayPanel_.emplace(content_);
    connect(&*oldTrayPanel_, &XembedPanel::activated, this,
            [this](QPoint position) { announceClick(position, {}); });
    connect(&*oldTrayPanel_, &XembedPanel::menuOpened, this, &PanelItem::menuOpened);
    connect(&*oldTrayPanel_, &XembedPanel::commandChosen, this, &PanelItem::commandChosen);
    updateVisibility();
}

void PanelItem::updateVisibility() {
    const Presence presence = notifiers_.presence();
    const bool isSeenOnBus =
        presence == Presence::unknown || (presence == Presence::present && notifiers_.hasHost());
    const bool isVisible = isShown_ && (isSeenOnBus || oldTrayPanel_);
    if (isVisible == isVisible_) return;
    isVisible_ = isVisible;
    emit visibilityChanged();
}

void PanelItem::updateLook() {
    const Look look = currentLook();
    if (look == content_.look) return;
    content_.look = look;
    notifiers_.updateNumber();
    if (oldTrayPanel_) oldTrayPanel_->updateNumber();
    emit lookChanged();
}

Look PanelItem::currentLook() const {
    const PanelTraits panel = notifiers_.traits();
    const bool isDark = panel.shade == PanelTraits::Shade::dark || appearance_.isDark();
    const double pixels = std::round(panel.pictureSidePixels * largestPixelRatio());
    return {isDark, isDark ? inkOnDark : inkOnLight, pixels / pointsOfPicture};
}

void PanelItem::announceClick(QPoint position, const QString& activationToken) {
    const bool isPlace = placesHaveMeaning_ && isOnScreen(position);
    emit activated(isPlace ? std::optional(position) : std::nullopt, activationToken);
}

}  // namespace brimwatch
