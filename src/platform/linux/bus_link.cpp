#include "platform/linux/bus_link.h"

#include "platform/linux/bus_connection.h"

namespace brimwatch {

namespace {

// How long a bus may take to answer.
constexpr std::chrono::milliseconds patience(2000);

}  // namespace

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
    retry_.start();
    // One that is stopped takes connections all the same, and may go on later.
    if (bus_ && asked_.hasExpired(patience.count())) noteMissing();
    if (bus_) return;
    address_ = sessionBusAddress(environment_);
    if (address_.isEmpty()) return noteMissing();
    asked_.start();
    bus_.emplace(address_);
    connect(&*bus_, &EventLoopBus::opened, this, &BusLink::meet);
    // Not at once: it is in the middle of telling so.
    connect(&*bus_, &EventLoopBus::closed, this, &BusLink::lose, Qt::QueuedConnection);
}

void BusLink::meet() {
    retry_.stop();
    isMissing_ = false;
    emit opened();
}

void BusLink::lose() {
    if (!bus_) return;
    bus_.reset();
    retry_.start();
    noteMissing();
}

void BusLink::noteMissing() {
    if (isMissing_) return;
    isMissing_ = true;
    emit missing();
}

}  // namespace brimwatch
