// A connection to the session bus that comes back.
//
// While there is no bus, or none that answers, it looks for one again and again. Each time that it
// finds one, the connection is a new one with a new name, on which nothing is exported yet. A bus
// that dies does not end the program. Main thread.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <optional>

#include "platform/linux/event_loop_bus.h"
#include "support/environment.h"

namespace brimwatch {

class BusLink final : public QObject {
    Q_OBJECT

  public:
    // The environment must outlive it.
    BusLink(const Environment& environment, std::chrono::milliseconds retryEvery);

    // Once.
    void open();
    // Nothing while there is no bus.
    EventLoopBus* connection() { return bus_ && bus_->isOpen() ? &*bus_ : nullptr; }
    const QString& address() const { return address_; }

  signals:
    void opened();
    // There is no bus, or it is gone. Once, until another one has been found.
    void missing();

  private:
    void look();
    void meet();
    void lose();
    void noteMissing();

    const Environment environment_;
    QTimer retry_;
    QElapsedTimer asked_;
    QString address_;
    std::optional<EventLoopBus> bus_;
    bool isMissing_ = false;
};

}  // namespace brimwatch
