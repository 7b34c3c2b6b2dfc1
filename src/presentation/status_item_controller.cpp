#include "presentation/status_item_controller.h"

#include <algorithm>
#include <array>
#include <numbers>
#include <utility>

namespace brimwatch {
namespace {

// A late or resumed timer makes no jump beyond this.
constexpr double longestStepSeconds = 0.25;
constexpr double reopenPauseSeconds = 0.3;

}  // namespace

StatusItemController::StatusItemController(Surroundings surroundings)
    : surroundings_(std::move(surroundings)),
      reduceMotion_(surroundings_.appearance.reducesMotion()) {
    if (surroundings_.rocket) renderer_.emplace(*surroundings_.rocket);
    soon_.setSingleShot(true);
    connect(&soon_, &QTimer::timeout, this, [this] {
        updateItem();
        applyTheme();
    });
    applyTheme();
    followSystem();
    followModel();
    updateItem();
    surroundings_.item.show();
}

StatusItemController::~StatusItemController() {
    surroundings_.timer.stop();
}

void StatusItemController::followSystem() {
    const StatusItem& item = surroundings_.item;
    connect(&item, &StatusItem::activated, this, &StatusItemController::toggle);
    connect(&item, &StatusItem::lookChanged, this, &StatusItemController::followLook);
    connect(&item, &StatusItem::visibilityChanged, this, &StatusItemController::updateItem);

    const Popover& popover = surroundings_.popover;
    connect(&popover, &Popover::willShow, this, &StatusItemController::applyTheme);
    connect(&popover, &Popover::didShow, this, &StatusItemController::applyTheme);
    connect(&popover, &Popover::willClose, this,
            [this] { popoverClosedAt_ = surroundings_.uptime(); });

    const SessionEvents& session = surroundings_.session;
    connect(&session, &SessionEvents::screensAsleepChanged, this,
            &StatusItemController::updateItem);
    connect(&session, &SessionEvents::sessionActiveChanged, this,
            &StatusItemController::updateItem);

    const DesktopAppearance& appearance = surroundings_.appearance;
    connect(&appearance, &DesktopAppearance::darkChanged, this, &StatusItemController::applyTheme);
    connect(&appearance, &DesktopAppearance::motionChanged, this, [this] {
        reduceMotion_ = surroundings_.appearance.reducesMotion();
        updateItem();
    });
}

void StatusItemController::followModel() {
    for (const auto changed :
         std::to_array({&HelperModel::menuTitleChanged, &HelperModel::menuGaugeChanged,
                        &HelperModel::appThemeChanged})) {
        connect(&surroundings_.model, changed, this, &StatusItemController::updateSoon);
    }
}

void StatusItemController::updateItem() {
    surroundings_.item.setTitle(QString::fromStdString(surroundings_.model.menuTitle()));
    FrameTimer& timer = surroundings_.timer;
    if (!isRocketToMove()) {
        timer.stop();
    } else if (!timer.isRunning()) {
        lastTick_ = surroundings_.uptime();
        timer.start([this] { tick(); });
    }
    paintFrame();
}

bool StatusItemController::isSessionSeen() const {
    return !surroundings_.session.areScreensAsleep() && surroundings_.session.isSessionActive();
}

bool StatusItemController::isRocketToMove() const {
    return !reduceMotion_ && surroundings_.model.menuGauge().remaining && isSessionSeen() &&
           surroundings_.item.isVisible();
}

void StatusItemController::tick() {
    const double now = surroundings_.uptime();
    const double step = std::min(now - lastTick_, longestStepSeconds);
    lastTick_ = now;
    motion_.step(step, surroundings_.model.menuGauge().weekly);
    ++frameCount_;
    paintFrame();
}

void StatusItemController::paintFrame() {
    const MenuBarGauge& gauge = surroundings_.model.menuGauge();
    MenuBarIcon icon{.remaining = gauge.remaining.value_or(0), .angle = 0, .shake = {}};
    if (reduceMotion_ || !gauge.remaining) {
        icon.angle = 2 * icon.remaining * std::numbers::pi;
    } else {
        icon.angle = motion_.angle;
        icon.shake = drawShake(gauge.weekly, random_);
    }
    lastIcon_ = icon;
    showIcon(icon);
}

void StatusItemController::showIcon(const MenuBarIcon& icon) {
    // Out of sight the panel would work for nobody. A frame follows when somebody looks again.
    if (!renderer_ || !isSessionSeen()) return;
    const StatusItem::Look look = surroundings_.item.look();
    if (!ink_ || ink_->isDark != look.isDark) ink_ = Ink{look.isDark, look.ink};
    shownScale_ = look.scale;
    const QImage* picture = renderer_->render(icon, ink_->color, look.scale);
    // Not made on the spot: then the other one would be copied, deeply, with each frame.
    static const QImage none;
    surroundings_.item.setPicture(picture != nullptr ? *picture : none);
}

// Repaints what is shown: no step of the flight, no new trembling.
void StatusItemController::followLook() {
    const StatusItem::Look look = surroundings_.item.look();
    if (ink_ && ink_->isDark == look.isDark && shownScale_ == look.scale) return;
    if (lastIcon_) showIcon(*lastIcon_);
}

void StatusItemController::applyTheme() {
    const AppTheme theme = surroundings_.model.appTheme();
    const bool isDark =
        theme == AppTheme::system ? surroundings_.appearance.isDark() : theme == AppTheme::dark;
    surroundings_.popover.setAppearance(isDark ? Appearance::dark : Appearance::light);
}

void StatusItemController::toggle(std::optional<QPoint> click, const QString& activationToken) {
    Popover& popover = surroundings_.popover;
    if (popover.isShown()) {
        popover.performClose();
        return;
    }
    if (surroundings_.uptime() - popoverClosedAt_ <= reopenPauseSeconds) return;
    surroundings_.model.refresh();
    popover.show(click, activationToken);
}

}  // namespace brimwatch
