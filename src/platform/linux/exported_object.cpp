#include "platform/linux/exported_object.h"

#include <string_view>

namespace brimwatch {

namespace {

// NOLINTBEGIN(cppcoreguidelines-pro-type-union-access): the type tells which member it is.
const sd_bus_vtable* findMethod(const sd_bus_vtable* table, std::string_view name) {
    for (const sd_bus_vtable* entry = table; entry->type != _SD_BUS_VTABLE_END; ++entry)
        if (entry->type == _SD_BUS_VTABLE_METHOD && name == entry->x.method.member) return entry;
    return nullptr;
}

bool takes(const sd_bus_vtable& method, sd_bus_message* call) {
    return sd_bus_message_has_signature(call, method.x.method.signature) > 0;
}

int run(const sd_bus_vtable& method, sd_bus_message* call, void* self, sd_bus_error* error) {
    return method.x.method.handler(call, self, error);
}
// NOLINTEND(cppcoreguidelines-pro-type-union-access)

}  // namespace

ExportedObject::ExportedObject(const EventLoopBus& bus, const char* path, const char* interface,
                               const sd_bus_vtable* table, void* self)
    : target_(std::make_unique<Target>(Target{table, self})) {
    if (bus.get() == nullptr) return;
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_object(bus.get(), &slot, path, answerWithoutInterface, target_.get()) < 0)
        return;
    calls_.reset(slot);
    if (sd_bus_add_object_vtable(bus.get(), &slot, path, interface, table, self) < 0) return;
    object_.reset(slot);
}

// A call may leave the interface out, and sd-bus knows none of those.
int ExportedObject::answerWithoutInterface(sd_bus_message* call, void* data, sd_bus_error* error) {
    if (sd_bus_message_get_interface(call) != nullptr) return 0;
    const Target target = *static_cast<const Target*>(data);
    const sd_bus_vtable* method = findMethod(target.table, sd_bus_message_get_member(call));
    if (method == nullptr) return 0;
    if (takes(*method, call)) return run(*method, call, target.self, error);
    return sd_bus_error_set(error, SD_BUS_ERROR_INVALID_ARGS, "It takes other arguments");
}

}  // namespace brimwatch
