// The timers of an object in a time that passes when a test says so.
//
// The event loop must not run meanwhile: it would let the real time in.
#pragma once

#include <QTimer>
#include <chrono>
#include <cstddef>
#include <map>

#include "virtual_time.h"

namespace brimwatch::test {

class VirtualTimers {
  public:
    using Milliseconds = std::chrono::milliseconds;

    // Of the owner's own timers; they go off in that time.
    VirtualTimers(const QObject& owner, VirtualTime& time) : owner_(owner), time_(time) {}

    // Lets time pass; each timer goes off at its moment.
    void advance(Milliseconds duration);
    // Lets those go off that wait for no time to pass.
    void settle() { advance(Milliseconds(0)); }

    std::size_t activeCount();
    // How often one went off.
    std::size_t firedCount() const { return firedCount_; }

  private:
    struct Appointment {
        int timerId;
        Milliseconds due;
    };

    void readTimers();
    QTimer* nextUntil(Milliseconds end) const;
    void fire(QTimer& timer);

    const QObject& owner_;
    VirtualTime& time_;
    Milliseconds elapsed_{};
    std::map<QTimer*, Appointment> appointments_;
    std::size_t firedCount_ = 0;
};

}  // namespace brimwatch::test
