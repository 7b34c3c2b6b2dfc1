// An object on a bus: one interface at one path, there until this is destroyed.
//
// What it can do is told by a table of sd-bus(3), which answers by itself what every object has to:
// its description, its properties, and calls that it does not know. Main thread.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>

#include "platform/linux/event_loop_bus.h"

namespace brimwatch {

class ExportedObject {
  public:
    ExportedObject() = default;
    // The names and the table last for ever; `self` is what the functions of the table are given.
    ExportedObject(const EventLoopBus& bus, const char* path, const char* interface,
                   const sd_bus_vtable* table, void* self);

    // False where the bus took none.
    explicit operator bool() const { return object_ != nullptr; }

  private:
    struct Target {
        const sd_bus_vtable* table;
        void* self;
    };
    static int answerWithoutInterface(sd_bus_message* call, void* data, sd_bus_error* error);

    std::unique_ptr<Target> target_;
    BusSlot calls_;
    BusSlot object_;
};

// Functions of a table: of the object that stands behind it, or of any.
template <auto member>
struct BusMember;

template <void (*function)(sd_bus_message*)>
struct BusMember<function> {
    static int answer(sd_bus_message* call, void* /*object*/, sd_bus_error* /*error*/) {
        function(call);
        return 1;
    }
    static int read(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                    const char* /*property*/, sd_bus_message* reply, void* /*object*/,
                    sd_bus_error* /*error*/) {
        function(reply);
        return 1;
    }
};

template <class Object, void (Object::*member)(sd_bus_message*)>
struct BusMember<member> {
    // The member answers the call.
    static int answer(sd_bus_message* call, void* object, sd_bus_error* /*error*/) {
        (static_cast<Object*>(object)->*member)(call);
        return 1;
    }
};

template <class Object, void (Object::*member)(sd_bus_message*) const>
struct BusMember<member> {
    // The member appends the value of the property.
    static int read(sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/,
                    const char* /*property*/, sd_bus_message* reply, void* object,
                    sd_bus_error* /*error*/) {
        (static_cast<const Object*>(object)->*member)(reply);
        return 1;
    }
};

// Entries of a table. After `startOfTable` come the others in any order, and `endOfTable` last.
// Names of arguments are in the order of the signature, those of the result behind them, each with
// `SD_BUS_PARAM`.
constexpr sd_bus_vtable startOfTable() noexcept {
    return SD_BUS_VTABLE_START(0);
}

constexpr sd_bus_vtable endOfTable() noexcept {
    return SD_BUS_VTABLE_END;
}

template <auto member>
constexpr sd_bus_vtable propertyEntry(const char* name, const char* signature) noexcept {
    return SD_BUS_PROPERTY(name, signature, BusMember<member>::read, 0, 0);
}

// Anybody on the bus may call it: only the user himself is there.
template <auto member>
constexpr sd_bus_vtable methodEntry(const char* name, const char* signature, const char* result,
                                    const char* argumentNames) noexcept {
    return {.type = _SD_BUS_VTABLE_METHOD,
            .flags = SD_BUS_VTABLE_UNPRIVILEGED,
            .x = {.method = {.member = name,
                             .signature = signature,
                             .result = result,
                             .handler = BusMember<member>::answer,
                             .offset = 0,
                             .names = argumentNames}}};
}

constexpr sd_bus_vtable signalEntry(const char* name, const char* signature,
                                    const char* argumentNames = "") noexcept {
    return {.type = _SD_BUS_VTABLE_SIGNAL,
            .flags = 0,
            .x = {.signal = {.member = name, .signature = signature, .names = argumentNames}}};
}

}  // namespace brimwatch
