// The menu of an item of the panel, as panels find it on the bus: com.canonical.dbusmenu.
//
// The panel draws it. A row keeps its id for as long as there are rows of its kind before it, and a
// command keeps it for ever, so that an open menu stays the same while only texts change. Main
// thread.
#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QString>
#include <array>
#include <optional>
#include <vector>

#include "platform/linux/dbus_menu_types.h"
#include "platform/status_item.h"

namespace brimwatch {

class DBusMenu final : public QDBusVirtualObject {
    Q_OBJECT

  public:
    static QString objectPath() { return QStringLiteral("/MenuBar"); }

    DBusMenu();

    // False where the connection is broken. What it was exported on before it has left.
    bool exportOn(const QDBusConnection& connection);
    void setRows(const std::vector<StatusItem::MenuRow>& rows);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  signals:
    // Once at each opening, though panels may tell of it twice.
    void opened();
    void commandChosen(int id);

  private:
    struct Method {
        const char* name;
        const char* signature;
        void (DBusMenu::*answer)(const QDBusMessage& message, const QDBusConnection& connection);
    };
    static const std::array<Method, 7> methods;

    void layout(const QDBusMessage& message, const QDBusConnection& connection);
    void groupProperties(const QDBusMessage& message, const QDBusConnection& connection);
    void property(const QDBusMessage& message, const QDBusConnection& connection);
    void event(const QDBusMessage& message, const QDBusConnection& connection);
    void eventGroup(const QDBusMessage& message, const QDBusConnection& connection);
    void aboutToShow(const QDBusMessage& message, const QDBusConnection& connection);
    void aboutToShowGroup(const QDBusMessage& message, const QDBusConnection& connection);

    // The last thing that a call does: who hears of it may destroy the menu.
    void take(int id, const QString& event);
    const DBusMenuItem* item(int id) const;
    void updateLabels(const std::vector<DBusMenuItem>& items);
    void send(const char* signal, const QVariantList& arguments) const;

    std::optional<QDBusConnection> connection_;
    std::vector<DBusMenuItem> items_;  // the root first
    uint revision_ = 1;
    bool isOpeningAnnounced_ = false;
};

}  // namespace brimwatch
