// The menu of an item of the panel, as panels find it on the bus: com.canonical.dbusmenu.
//
// The panel draws it. A row keeps its id for as long as there are rows of its kind before it, and a
// command keeps it for ever, so that an open menu stays the same while only texts change. Main
// thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/event_loop_bus.h"
#include "platform/linux/exported_object.h"
#include "platform/status_item.h"

namespace brimwatch {

class DBusMenu final : public QObject {
    Q_OBJECT

  public:
    static constexpr const char* objectPath = "/MenuBar";

    struct Item {
        int id;
        std::optional<StatusItem::MenuRow::Kind> kind;  // the root has none
        std::string label;                              // in UTF-8, as the bus wants it

        bool operator==(const Item&) const = default;
    };

    DBusMenu();

    // False where the connection is closed. What it was exported on before it has left.
    bool exportOn(EventLoopBus& bus);
    void setRows(const std::vector<StatusItem::MenuRow>& rows);

  signals:
    // Once at each opening, though panels may tell of it twice.
    void opened();
    void commandChosen(int id);

  private:
    using Items = std::vector<Item>;

    static const std::array<sd_bus_vtable, 16> table;

    void layout(sd_bus_message* call);
    void groupProperties(sd_bus_message* call);
    void property(sd_bus_message* call);
    void event(sd_bus_message* call);
    void eventGroup(sd_bus_message* call);
    void aboutToShow(sd_bus_message* call);
    void aboutToShowGroup(sd_bus_message* call);

    // Whether the layout changed by it. It may destroy the menu.
    bool announceOpening();
    // The last thing that a call does: who hears of it may destroy the menu.
    void take(int id, std::string_view event);
    const Item* find(int id) const;
    void updateLabels(const Items& items);

    QPointer<EventLoopBus> bus_;
    Items items_;  // the root first
    std::uint32_t revision_ = 1;
    bool isOpeningAnnounced_ = false;
    ExportedObject object_;
};

}  // namespace brimwatch
