// What stands in the panel: the number, the picture with its flying rocket, and the popover that a
// click opens.
//
// While there is a figure and somebody can see the item, the rocket advances ten times a second; at
// all other times the controller does nothing. It follows the model, the theme of the desktop and
// the state of the session by itself. Main thread.
#pragma once

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <random>

#include "core/helper_model.h"
#include "platform/desktop_appearance.h"
#include "platform/session_events.h"
#include "platform/status_item.h"
#include "presentation/frame_timer.h"
#include "presentation/menu_bar_icon.h"
#include "presentation/menu_bar_motion.h"
#include "presentation/menu_bar_renderer.h"
#include "presentation/menu_bar_rocket.h"
#include "presentation/popover.h"

namespace brimwatch {

class StatusItemController final : public QObject {
  public:
    // What is referred to must outlive the controller.
    struct Surroundings {
        HelperModel& model;
        StatusItem& item;
        Popover& popover;
        SessionEvents& session;
        DesktopAppearance& appearance;
        FrameTimer& timer;
        // Seconds on a clock that nobody sets and that rests while the machine sleeps.
        std::function<double()> uptime;
        // Without it the item shows the number alone.
        std::optional<MenuBarRocket> rocket;
    };

    // Puts the item into the panel.
    explicit StatusItemController(Surroundings surroundings);
    StatusItemController(const StatusItemController&) = delete;
    StatusItemController& operator=(const StatusItemController&) = delete;
    ~StatusItemController() override;

    // Opens the popover, or closes it if it is open; right after it closed it stays closed, because
    // the click that closed it comes here, too.
    void toggle(std::optional<QPoint> click, const QString& activationToken);

    // Frames of the flight since the start.
    std::uint64_t frameCount() const { return frameCount_; }

  private:
    struct Ink {
        bool isDark = false;
        QColor color;
    };

    void followSystem();
    void followModel();
    void updateSoon() { soon_.start(0); }
    void updateItem();
    bool isSessionSeen() const;
    bool isRocketToMove() const;
    void tick();
    void paintFrame();
    void showIcon(const MenuBarIcon& icon);
    void followLook();
    void applyTheme();

    Surroundings surroundings_;
    std::optional<MenuBarRenderer> renderer_;
    std::optional<Ink> ink_;
    double shownScale_ = 0;
    std::optional<MenuBarIcon> lastIcon_;
    MenuBarMotion motion_;
    std::mt19937_64 random_{std::random_device{}()};
    double lastTick_ = 0;
    bool reduceMotion_;
    double popoverClosedAt_ = -std::numeric_limits<double>::infinity();
    std::uint64_t frameCount_ = 0;
    QTimer soon_;  // joins the changes of one turn of the event loop
};

}  // namespace brimwatch
