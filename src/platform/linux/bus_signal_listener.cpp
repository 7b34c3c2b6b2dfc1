#include "platform/linux/bus_signal_listener.h"

#include <utility>

namespace brimwatch {

BusSignalListener::BusSignalListener(Received received, QObject* parent)
    : QObject(parent), received_(std::move(received)) {}

void BusSignalListener::receive(const QDBusMessage& message) {
    // The call may be the end of this.
    const Received received = received_;
    received(message);
}

}  // namespace brimwatch
