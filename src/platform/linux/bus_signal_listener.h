// Hands the signals of a message bus to a function, for as long as it lives.
//
// It is what the bus knows of its receiver; `BusConnection::listen` makes one. Main thread.
#pragma once

#include <QDBusMessage>
#include <QObject>
#include <functional>

namespace brimwatch {

class BusSignalListener final : public QObject {
    Q_OBJECT

  public:
    using Received = std::function<void(const QDBusMessage&)>;

    BusSignalListener(Received received, QObject* parent);

    Q_SLOT void receive(const QDBusMessage& message);

  private:
    Received received_;
};

}  // namespace brimwatch
