// A connection to the session bus that comes back.
//
// While there is no bus, or none that answers, it looks for one again and again. Each time that it
// finds one, the connection is a new one with a new name, on which nothing is exported yet. A bus
// that dies does not end the program. Main thread.
#pragma once

#include <QObject>
#include <QTimer>
#include <chrono>
#include <optional>

#include "platform/linux/own_bus.h"
#include "support/environment.h"

namespace brimwatch {

class BusLink final : public QObject {
    Q_OBJECT

  public:
    // The environment must outlive it.
    BusLink(const Environment& environment, std::chrono::milliseconds retryEvery);

    // Once. Either of the signals comes before it returns.
    void open();
    // Nothing while there is no bus.
    QDBusConnection* connection() { return connection_ ? &**connection_ : nullptr; }
    const QString& address() const { return address_; }

  signals:
    void opened();
    // There is no bus, or it is gone. Once, until another one has been found.
    void missing();

  private:
    Q_SLOT void leave();
    void look();
    bool connectToBus();

    const Environment environment_;
    QTimer retry_;
    QString address_;
    std::optional<OwnBus> connection_;
    bool isMissing_ = false;
};

}  // namespace brimwatch
