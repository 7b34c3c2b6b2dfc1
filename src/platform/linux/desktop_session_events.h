// Whether somebody can look at the screen, as a Linux desktop tells it: logind on the system bus;
// screen savers, lockers and GNOME's monitor power on the session bus.
//
// The screen counts as asleep while any of them says so. What a service has said is forgotten when
// it, or its bus, goes away. Main thread.
#pragma once

#include "platform/linux/login_session.h"
#include "platform/linux/monitor_power.h"
#include "platform/linux/screen_savers.h"
#include "platform/session_events.h"

namespace brimwatch {

class DesktopSessionEvents final : public SessionEvents {
    Q_OBJECT

  public:
    // The connections must outlive this; they may be opened before or after.
    DesktopSessionEvents(BusConnection& sessionBus, BusConnection& systemBus,
                         LoginSession::Process process);

    bool areScreensAsleep() const override { return screensAsleep_; }
    bool isSessionActive() const override { return sessionActive_; }

  private:
    void update();

    LoginSession loginSession_;
    ScreenSavers screenSavers_;
    MonitorPower monitorPower_;
    bool screensAsleep_ = false;
    bool sessionActive_ = true;
};

}  // namespace brimwatch
