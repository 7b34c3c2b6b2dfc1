// A connection to the session bus that is nobody else's, closed when it goes.
//
// The connection that Qt shares within a process can't be replaced once its bus is dead; this one
// can, by another of its kind. Main thread.
#pragma once

#include <QDBusConnection>
#include <QString>

namespace brimwatch {

class OwnBus {
  public:
    // Waits for the bus to answer. Whether it did tells `isConnected` of the connection.
    explicit OwnBus(const QString& address);
    OwnBus(const OwnBus&) = delete;
    OwnBus& operator=(const OwnBus&) = delete;
    ~OwnBus();

    QDBusConnection& operator*() { return connection_; }
    QDBusConnection* operator->() { return &connection_; }

  private:
    QDBusConnection connection_;
};

}  // namespace brimwatch
