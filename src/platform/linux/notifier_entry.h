// An item of the panel and its menu, as they lie on the bus together. Main thread.
#pragma once

#include <QDBusConnection>
#include <QString>

#include "platform/linux/dbus_menu.h"
#include "platform/linux/panel_content.h"
#include "platform/linux/status_notifier_item.h"

namespace brimwatch {

struct NotifierEntry {
    explicit NotifierEntry(const QString& id) : item(id, DBusMenu::objectPath()) {}

    // Before it is registered: some panels read it at once.
    bool exportOn(const QDBusConnection& connection) {
        return menu.exportOn(connection) && item.exportOn(connection);
    }

    void setRows(const PanelContent& content) {
        menu.setRows(content.rows);
        item.setDescription(content.description().toHtmlEscaped());
    }

    DBusMenu menu;
    StatusNotifierItem item;
};

}  // namespace brimwatch
