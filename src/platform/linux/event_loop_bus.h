// A connection to a message bus of its own, served by the event loop of the main thread.
//
// It costs no thread, which is what makes it cheap: Qt's own connections wake a second thread for
// each message. Nothing waits, not even for a bus that takes the connection and never answers. What
// is exported is up to the users, by the calls of sd-bus(3). Main thread.
#pragma once

#include <systemd/sd-bus.h>

#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <string>

namespace brimwatch {

struct BusReferences {
    void operator()(sd_bus* bus) const { sd_bus_unref(bus); }
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusReferences>;
using BusSlot = std::unique_ptr<sd_bus_slot, BusReferences>;

class EventLoopBus final : public QObject {
    Q_OBJECT

  public:
    // The answer may be an error. The message lasts as long as the call.
    using Answer = std::function<void(sd_bus_message* answer)>;

    // An address as in DBUS_SESSION_BUS_ADDRESS.
    explicit EventLoopBus(const QString& address);
    EventLoopBus(const EventLoopBus&) = delete;
    EventLoopBus& operator=(const EventLoopBus&) = delete;
    ~EventLoopBus() override;

    bool isOpen() const { return state_ == State::open; }
    // Empty until it is open.
    std::string name() const;
    // For exporting and subscribing, also before it is open. Absent where the address is no
    // address.
    sd_bus* get() const { return bus_.get(); }

    // Empty where the connection is closed.
    BusMessage newSignal(const char* path, const char* interface, const char* member) const;
    BusMessage newCall(const char* service, const char* path, const char* interface,
                       const char* method) const;
    // Messages leave in their order; those to a closed connection are dropped. An empty one is
    // nothing.
    void send(const BusMessage& message);
    // The answer comes unless the context is gone, or the connection is closed before.
    void call(const BusMessage& message, const QObject* context, Answer answer);

  signals:
    void opened();
    // Once, and never before the constructor has returned. Nothing comes after it.
    void closed();

  private:
    enum class State { connecting, open, closed };

    bool connectTo(const std::string& address);
    void serve();
    void watch();
    void watchDescriptor(int descriptor, int events);
    void close();

    std::unique_ptr<sd_bus, BusReferences> bus_;
    State state_ = State::connecting;
    std::unique_ptr<QSocketNotifier> reading_;
    std::unique_ptr<QSocketNotifier> writing_;
    QTimer timeout_;
};

}  // namespace brimwatch
