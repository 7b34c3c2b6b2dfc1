#include "platform/linux/bus_link.h"

#include "platform/linux/bus_connection.h"

namespace brimwatch {

BusLink::BusLink(const Environment& environment, std::chrono::milliseconds retryEvery)
    : environment_(environment) {
    retry_.setInterval(retryEvery);
    retry_.setTimerType(Qt::VeryCoarseTimer);
    connect(&retry_, &QTimer::timeout, this, &BusLink::look);
}

void BusLink::open() {
    look();
}

void BusLink::look() {
    if (connectToBus()) {
        retry_.stop();
        isMissing_ = false;
        emit opened();
        return;
    }
    retry_.start();
    if (isMissing_) return;
    isMissing_ = true;
    emit missing();
}

bool BusLink::connectToBus() {
    address_ = sessionBusAddress(environment_);
    if (address_.isEmpty()) return false;
    connection_.emplace(address_);
    // libdbus itself sends this signal, when the connection breaks.
    const bool stands = (*connection_)->isConnected() &&
                        (*connection_)
                            ->connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                                      QStringLiteral("org.freedesktop.DBus.Local"),
                                      QStringLiteral("Disconnected"), this, SLOT(leave()));
    if (!stands) connection_.reset();
    return stands;
}

void BusLink::leave() {
    if (!connection_) return;
    connection_.reset();
    isMissing_ = true;
    retry_.start();
    emit missing();
}

}  // namespace brimwatch
