#include "platform/linux/event_loop_bus.h"

#include <poll.h>

#include <QPointer>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <utility>

namespace brimwatch {

namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

struct PendingCall {
    QPointer<const QObject> context;
    EventLoopBus::Answer answer;
};

int takeAnswer(sd_bus_message* message, void* data, sd_bus_error* /*error*/) {
    const auto& call = *static_cast<PendingCall*>(data);
    if (call.context) call.answer(message);
    return 0;
}

void dropCall(void* data) {
    const std::unique_ptr<PendingCall> call(static_cast<PendingCall*>(data));
}

// From now on, by the clock that sd-bus counts by.
milliseconds until(std::uint64_t microsecondsSinceStart) {
    const microseconds now = std::chrono::duration_cast<microseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
    const microseconds then(static_cast<std::int64_t>(microsecondsSinceStart));
    return std::chrono::ceil<milliseconds>(std::max(then - now, microseconds(0)));
}

}  // namespace

EventLoopBus::EventLoopBus(const QString& address) {
    timeout_.setSingleShot(true);
    connect(&timeout_, &QTimer::timeout, this, &EventLoopBus::serve);
    if (connectTo(address.toStdString())) {
        watch();
    } else {
        bus_.reset();
        timeout_.start(0);
    }
}

EventLoopBus::~EventLoopBus() {
    // What is exported holds the bus as well, and may go later.
    if (bus_) sd_bus_close(bus_.get());
}

bool EventLoopBus::connectTo(const std::string& address) {
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0) return false;
    bus_.reset(bus);
    return sd_bus_set_address(bus, address.c_str()) >= 0 && sd_bus_set_bus_client(bus, 1) >= 0 &&
           sd_bus_start(bus) >= 0;
}

std::string EventLoopBus::name() const {
    const char* name = nullptr;
    if (!isOpen() || sd_bus_get_unique_name(bus_.get(), &name) < 0) return {};
    return name;
}

BusMessage EventLoopBus::newSignal(const char* path, const char* interface,
                                   const char* member) const {
    sd_bus_message* message = nullptr;
    if (isOpen()) sd_bus_message_new_signal(bus_.get(), &message, path, interface, member);
    return BusMessage(message);
}

BusMessage EventLoopBus::newCall(const char* service, const char* path, const char* interface,
                                 const char* method) const {
    sd_bus_message* message = nullptr;
    if (isOpen())
        sd_bus_message_new_method_call(bus_.get(), &message, service, path, interface, method);
    return BusMessage(message);
}

void EventLoopBus::send(const BusMessage& message) {
    if (!message || !isOpen()) return;
    sd_bus_send(bus_.get(), message.get(), nullptr);
    watch();
}

void EventLoopBus::call(const BusMessage& message, const QObject* context, Answer answer) {
    if (!message || !isOpen()) return;
    auto pending = std::make_unique<PendingCall>(PendingCall{context, std::move(answer)});
    sd_bus_slot* slot = nullptr;
    if (sd_bus_call_async(bus_.get(), &slot, message.get(), takeAnswer, pending.get(), 0) < 0)
        return;
    sd_bus_slot_set_destroy_callback(slot, dropCall);
    static_cast<void>(pending.release());
    // From here on it lasts as long as the bus, or until it is answered.
    sd_bus_slot_set_floating(slot, 1);
    sd_bus_slot_unref(slot);
    watch();
}

void EventLoopBus::serve() {
    if (!bus_) return close();
    const QPointer<EventLoopBus> self(this);
    const std::unique_ptr<sd_bus, BusReferences> bus(sd_bus_ref(bus_.get()));
    int result = 1;
    while (result > 0) {
        result = sd_bus_process(bus.get(), nullptr);
        if (!self) return;
        if (result < 0) return close();
        if (state_ == State::connecting && sd_bus_is_ready(bus.get()) > 0) {
            state_ = State::open;
            emit opened();
            if (!self) return;
        }
    }
    watch();
}

void EventLoopBus::watch() {
    const int descriptor = sd_bus_get_fd(bus_.get());
    const int events = sd_bus_get_events(bus_.get());
    std::uint64_t timeout = std::numeric_limits<std::uint64_t>::max();
    if (descriptor < 0 || events < 0 || sd_bus_get_timeout(bus_.get(), &timeout) < 0) {
        // Of what is being lost the next turn of the event loop tells.
        timeout = 0;
    } else {
        watchDescriptor(descriptor, events);
    }
    if (timeout == std::numeric_limits<std::uint64_t>::max()) {
        timeout_.stop();
    } else {
        timeout_.start(until(timeout));
    }
}

void EventLoopBus::watchDescriptor(int descriptor, int events) {
    if (!reading_ || reading_->socket() != descriptor) {
        reading_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        writing_ = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write);
        connect(reading_.get(), &QSocketNotifier::activated, this, &EventLoopBus::serve);
        connect(writing_.get(), &QSocketNotifier::activated, this, &EventLoopBus::serve);
    }
    if (const bool reads = (events & POLLIN) != 0; reads != reading_->isEnabled())
        reading_->setEnabled(reads);
    if (const bool writes = (events & POLLOUT) != 0; writes != writing_->isEnabled())
        writing_->setEnabled(writes);
}

void EventLoopBus::close() {
    if (std::exchange(state_, State::closed) == State::closed) return;
    timeout_.stop();
    reading_.reset();
    writing_.reset();
    emit closed();
}

}  // namespace brimwatch
