#include "platform/linux/compositor.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <string>

namespace brimwatch {
namespace {

struct Free {
    void operator()(void* reply) const { std::free(reply); }  // NOLINT: as XCB asks for
};

template <class Reply>
using ReplyPointer = std::unique_ptr<Reply, Free>;

int screenNumber() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0) std::free(host);  // NOLINT
    return screen;
}

// A compositor owns the selection of that name.
bool hasOwner(xcb_connection_t* connection, const std::string& selection) {
    const auto atomCookie = xcb_intern_atom(
        connection, 0, static_cast<std::uint16_t>(selection.size()), selection.c_str());
    const ReplyPointer<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(connection, atomCookie, nullptr));
    if (!atom) return false;
    const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
    const ReplyPointer<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(connection, ownerCookie, nullptr));
    return owner && owner->owner != XCB_WINDOW_NONE;
}

}  // namespace

bool compositorBlendsWindows() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr) return true;
    return hasOwner(x11->connection(), "_NET_WM_CM_S" + std::to_string(screenNumber()));
}

bool compositorPlacesWindows() {
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

}  // namespace brimwatch
