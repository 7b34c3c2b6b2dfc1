// An item of the panel with its menu, on a connection of its own: closing that is the one way to
// take an item out of every panel. Main thread.
#pragma once

#include <QString>

#include "platform/linux/dbus_menu.h"
#include "platform/linux/event_loop_bus.h"
#include "platform/linux/panel_content.h"
#include "platform/linux/status_notifier_item.h"

namespace brimwatch {

struct NotifierEntry {
    NotifierEntry(const QString& address, const QString& id)
        : connection(address), item(id, DBusMenu::objectPath) {
        // Before it is registered: some panels read it at once.
        menu.exportOn(connection);
        item.exportOn(connection);
    }

    void setRows(const PanelContent& content) {
        menu.setRows(content.rows);
        item.setDescription(content.description().toHtmlEscaped());
    }

    EventLoopBus connection;
    DBusMenu menu;
    StatusNotifierItem item;
    bool isRegistered = false;
};

}  // namespace brimwatch
