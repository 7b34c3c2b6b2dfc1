// Whether somebody can look at the screen.
//
// What can't be told keeps its starting value: the screen is on, the session has the seat. Main
// thread.
#pragma once

#include <QObject>

namespace brimwatch {

class SessionEvents : public QObject {
    Q_OBJECT

  public:
    SessionEvents() = default;

    // The screen is off, blank or locked, or the machine is about to sleep.
    virtual bool areScreensAsleep() const = 0;
    // The session is the one in front on its seat.
    virtual bool isSessionActive() const = 0;

  signals:
    void screensAsleepChanged();
    void sessionActiveChanged();
};

}  // namespace brimwatch
