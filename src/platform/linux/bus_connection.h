// A connection to the session bus that is nobody else's, closed when it goes.
//
// The connection that Qt shares within a process can't be replaced once its bus is dead; this one
// can, by another of its kind. Main thread.
#pragma once

#include <QDBusConnection>
#include <QString>
#include <optional>

#include "support/environment.h"

namespace brimwatch {

// Where the session bus is, if there should be one. It is never started for us: a bus that nobody
// but us knows would serve nobody.
std::optional<QString> sessionBusAddress(const Environment& environment);

class BusConnection {
  public:
    // Waits for the bus to answer. Whether it did tells `isConnected` of the connection.
    explicit BusConnection(const QString& address);
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;
    ~BusConnection();

    QDBusConnection& operator*() { return connection_; }
    QDBusConnection* operator->() { return &connection_; }

  private:
    QDBusConnection connection_;
};

}  // namespace brimwatch
