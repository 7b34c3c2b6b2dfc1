#include "platform/linux/xembed_tray.h"

#include <QGuiApplication>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace brimwatch {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> owned(Reply* reply) {
    return Owned<Reply>(reply, &std::free);
}

xcb_connection_t* displayOfApplication() {
    const auto* application = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return application == nullptr ? nullptr : application->connection();
}

}  // namespace

XembedTray::XembedTray() : display_(displayOfApplication()) {
    if (display_ == nullptr) return;
    // Trays stand on the first screen: what Qt calls screens are parts of it.
    selection_ = atom("_NET_SYSTEM_TRAY_S0");
    managerMessage_ = atom("MANAGER");
    QCoreApplication::instance()->installNativeEventFilter(this);
    findOwner();
}

XembedTray::~XembedTray() {
    if (display_ != nullptr) QCoreApplication::instance()->removeNativeEventFilter(this);
}

bool XembedTray::nativeEventFilter(const QByteArray& type, void* event, qintptr* /*result*/) {
    if (type != "xcb_generic_event_t") return false;
    constexpr std::uint8_t sentByClient = 0x80;
    const auto* generic = static_cast<const xcb_generic_event_t*>(event);
    const int kind = generic->response_type & ~sentByClient;
    if (kind == XCB_CLIENT_MESSAGE) {
        const auto* message = static_cast<const xcb_client_message_event_t*>(event);
        if (message->type == managerMessage_ && message->data.data32[1] == selection_) findOwner();
    } else if (kind == XCB_DESTROY_NOTIFY) {
        const auto* destroyed = static_cast<const xcb_destroy_notify_event_t*>(event);
        if (destroyed->window == owner_) findOwner();
    }
    return false;
}

xcb_atom_t XembedTray::atom(const char* name) const {
    const auto length = static_cast<std::uint16_t>(std::strlen(name));
    const auto reply =
        owned(xcb_intern_atom_reply(display_, xcb_intern_atom(display_, 0, length, name), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void XembedTray::findOwner() {
    const auto reply = owned(xcb_get_selection_owner_reply(
        display_, xcb_get_selection_owner(display_, selection_), nullptr));
    const xcb_window_t owner = reply ? reply->owner : xcb_window_t{XCB_WINDOW_NONE};
    if (owner == owner_) return;
    owner_ = owner;
    if (owner_ != XCB_WINDOW_NONE) {
        // To hear of its end. Qt asks for the same events of the same window.
        const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(display_, owner_, XCB_CW_EVENT_MASK, &events);
        xcb_flush(display_);
    }
    emit changed();
}

}  // namespace brimwatch
