#include "platform/linux/desktop_session_events.h"

#include <utility>

namespace brimwatch {

DesktopSessionEvents::DesktopSessionEvents(BusConnection& sessionBus, BusConnection& systemBus,
                                           LoginSession::Process process)
    : loginSession_(systemBus, std::move(process)),
      screenSavers_(sessionBus),
      monitorPower_(sessionBus) {
    connect(&loginSession_, &LoginSession::changed, this, &DesktopSessionEvents::update);
    connect(&screenSavers_, &ScreenSavers::changed, this, &DesktopSessionEvents::update);
    connect(&monitorPower_, &MonitorPower::changed, this, &DesktopSessionEvents::update);
}

void DesktopSessionEvents::update() {
    const LoginSession::State& login = loginSession_.state();
    const bool asleep = login.isLocked || login.isAboutToSleep || screenSavers_.isAnyActive() ||
                        monitorPower_.isOff();
    const bool asleepChanges = std::exchange(screensAsleep_, asleep) != asleep;
    const bool activeChanges = std::exchange(sessionActive_, login.isActive) != login.isActive;
    if (asleepChanges) emit screensAsleepChanged();
    if (activeChanges) emit sessionActiveChanged();
}

}  // namespace brimwatch
