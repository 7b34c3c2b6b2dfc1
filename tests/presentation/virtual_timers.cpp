#include "virtual_timers.h"

#include <QCoreApplication>
#include <QTimerEvent>

namespace brimwatch::test {

void VirtualTimers::advance(Milliseconds duration) {
    const Milliseconds end = elapsed_ + duration;
    readTimers();
    while (QTimer* timer = nextUntil(end)) {
        const Milliseconds due = appointments_.at(timer).due;
        time_.advance(due - elapsed_);
        elapsed_ = due;
        fire(*timer);
        readTimers();
    }
    time_.advance(end - elapsed_);
    elapsed_ = end;
}

std::size_t VirtualTimers::activeCount() {
    readTimers();
    return appointments_.size();
}

// A timer that was started anew has another id.
void VirtualTimers::readTimers() {
    for (QTimer* timer : owner_.findChildren<QTimer*>()) {
        const auto known = appointments_.find(timer);
        if (!timer->isActive()) {
            appointments_.erase(timer);
        } else if (known == appointments_.end() || known->second.timerId != timer->timerId()) {
            appointments_.insert_or_assign(
                timer, Appointment{timer->timerId(), elapsed_ + timer->intervalAsDuration()});
        }
    }
}

QTimer* VirtualTimers::nextUntil(Milliseconds end) const {
    QTimer* next = nullptr;
    for (const auto& [timer, appointment] : appointments_) {
        if (appointment.due > end) continue;
        if (next == nullptr || appointment.due < appointments_.at(next).due) next = timer;
    }
    return next;
}

void VirtualTimers::fire(QTimer& timer) {
    Appointment& appointment = appointments_.at(&timer);
    appointment.due += timer.intervalAsDuration();
    QTimerEvent event(appointment.timerId);
    ++firedCount_;
    QCoreApplication::sendEvent(&timer, &event);
}

}  // namespace brimwatch::test
