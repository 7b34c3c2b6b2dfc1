#include "platform/linux/dbus_menu.h"

#include <algorithm>
#include <set>
#include <utility>
#include <variant>

namespace brimwatch {

namespace {

using Row = StatusItem::MenuRow;
using Item = DBusMenu::Item;
// No names stand for all of them.
using Names = std::vector<std::string_view>;

constexpr const char* interfaceName = "com.canonical.dbusmenu";
constexpr int rootId = 0;
constexpr int kindCount = 3;

// An underscore alone would underline what follows it.
std::string labelText(QString label) {
    return label.replace('_', QLatin1String("__")).toStdString();
}

bool isCommand(int id) {
    return id != rootId && id % kindCount == static_cast<int>(Row::Kind::command);
}

struct Property {
    const char* name;
    std::variant<const char*, bool> value;
};

// They last as long as the item does not change.
std::vector<Property> propertiesOf(const Item& item) {
    if (!item.kind) return {{"children-display", "submenu"}};
    switch (*item.kind) {
        case Row::Kind::separator:
            return {{"type", "separator"}};
        case Row::Kind::text:
            return {{"label", item.label.c_str()}, {"enabled", false}};
        case Row::Kind::command:
            break;
    }
    return {{"label", item.label.c_str()}};
}

// As a variant.
void appendValue(sd_bus_message* message, const Property& property) {
    if (const auto* text = std::get_if<const char*>(&property.value)) {
        sd_bus_message_append(message, "v", "s", *text);
    } else {
        sd_bus_message_append(message, "v", "b", int(std::get<bool>(property.value)));
    }
}

// The id, and those of the properties that have one of the names.
void appendItem(sd_bus_message* message, const Item& item, const Names& names) {
    sd_bus_message_append(message, "i", item.id);
    sd_bus_message_open_container(message, 'a', "{sv}");
    for (const Property& property : propertiesOf(item)) {
        const bool isWanted =
            names.empty() || std::find(names.begin(), names.end(), property.name) != names.end();
        if (!isWanted) continue;
        sd_bus_message_open_container(message, 'e', "sv");
        sd_bus_message_append(message, "s", property.name);
        appendValue(message, property);
        sd_bus_message_close_container(message);
    }
    sd_bus_message_close_container(message);
}

void appendItemAlone(sd_bus_message* message, const Item& item, const Names& names) {
    sd_bus_message_open_container(message, 'r', "ia{sv}");
    appendItem(message, item, names);
    sd_bus_message_close_container(message);
}

void appendLeaf(sd_bus_message* message, const Item& item, const Names& names) {
    sd_bus_message_open_container(message, 'v', "(ia{sv}av)");
    sd_bus_message_open_container(message, 'r', "ia{sv}av");
    appendItem(message, item, names);
    sd_bus_message_append(message, "av", 0);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
}

std::vector<int> readIds(sd_bus_message* call) {
    const void* ids = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(call, 'i', &ids, &size) < 0) return {};
    const int* first = static_cast<const int*>(ids);
    return {first, first + size / sizeof(int)};
}

// They last as long as the call.
std::vector<std::string_view> readNames(sd_bus_message* call) {
    std::vector<std::string_view> names;
    sd_bus_message_enter_container(call, 'a', "s");
    const char* name = nullptr;
    while (sd_bus_message_read_basic(call, 's', &name) > 0)
        names.emplace_back(name);
    sd_bus_message_exit_container(call);
    return names;
}

struct Event {
    int id;
    std::string name;
};

Event readEvent(sd_bus_message* call) {
    int id = 0;
    const char* name = "";
    sd_bus_message_read(call, "is", &id, &name);
    sd_bus_message_skip(call, "vu");
    return {id, name};
}

std::vector<Event> readEvents(sd_bus_message* call) {
    std::vector<Event> events;
    sd_bus_message_enter_container(call, 'a', "(isvu)");
    while (sd_bus_message_enter_container(call, 'r', "isvu") > 0) {
        events.push_back(readEvent(call));
        sd_bus_message_exit_container(call);
    }
    sd_bus_message_exit_container(call);
    return events;
}

BusMessage replyTo(sd_bus_message* call) {
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    return BusMessage(reply);
}

void send(const BusMessage& message) {
    if (message) sd_bus_message_send(message.get());
}

void appendIds(sd_bus_message* message, const std::vector<int>& ids) {
    sd_bus_message_append_array(message, 'i', ids.data(), ids.size() * sizeof(int));
}

void refuseItem(sd_bus_message* call, int id) {
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "There is no item %d", id);
}

// The id says of what kind the row is, so that none ever turns from a separator into a text: panels
// keep the widget that they have made for an id.
std::vector<Item> itemsOf(const std::vector<Row>& rows) {
    std::vector<Item> items{{rootId, std::nullopt, {}}};
    int texts = 0;
    int separators = 0;
    for (const Row& row : rows) {
        const int number = row.kind == Row::Kind::command ? row.id
                           : row.kind == Row::Kind::text  ? ++texts
                                                          : ++separators;
        items.push_back(
            {number * kindCount + static_cast<int>(row.kind), row.kind, labelText(row.label)});
    }
    return items;
}

template <class Some>
bool haveSameIds(const Some& some, const Some& others) {
    return std::equal(some.begin(), some.end(), others.begin(), others.end(),
                      [](const auto& one, const auto& other) { return one.id == other.id; });
}

void readVersion(sd_bus_message* reply) {
    sd_bus_message_append(reply, "u", 3U);
}

void readTextDirection(sd_bus_message* reply) {
    sd_bus_message_append(reply, "s", "ltr");
}

void readStatus(sd_bus_message* reply) {
    sd_bus_message_append(reply, "s", "normal");
}

void readNoPaths(sd_bus_message* reply) {
    sd_bus_message_append(reply, "as", 0);
}

}  // namespace

const std::array<sd_bus_vtable, 16> DBusMenu::table = {
    startOfTable(),
    propertyEntry<&readVersion>("Version", "u"),
    propertyEntry<&readTextDirection>("TextDirection", "s"),
    propertyEntry<&readStatus>("Status", "s"),
    propertyEntry<&readNoPaths>("IconThemePath", "as"),
    methodEntry<&DBusMenu::layout>("GetLayout", "iias", "u(ia{sv}av)",
                                   SD_BUS_PARAM(parentId) SD_BUS_PARAM(recursionDepth) SD_BUS_PARAM(
                                       propertyNames) SD_BUS_PARAM(revision) SD_BUS_PARAM(layout)),
    methodEntry<&DBusMenu::groupProperties>("GetGroupProperties", "aias", "a(ia{sv})",
                                            SD_BUS_PARAM(ids) SD_BUS_PARAM(propertyNames)
                                                SD_BUS_PARAM(properties)),
    methodEntry<&DBusMenu::property>("GetProperty", "is", "v",
                                     SD_BUS_PARAM(id) SD_BUS_PARAM(name) SD_BUS_PARAM(value)),
    methodEntry<&DBusMenu::event>("Event", "isvu", "",
                                  SD_BUS_PARAM(id) SD_BUS_PARAM(eventId) SD_BUS_PARAM(data)
                                      SD_BUS_PARAM(timestamp)),
    methodEntry<&DBusMenu::eventGroup>("EventGroup", "a(isvu)", "ai",
                                       SD_BUS_PARAM(events) SD_BUS_PARAM(idErrors)),
    methodEntry<&DBusMenu::aboutToShow>("AboutToShow", "i", "b",
                                        SD_BUS_PARAM(id) SD_BUS_PARAM(needUpdate)),
    methodEntry<&DBusMenu::aboutToShowGroup>("AboutToShowGroup", "ai", "aiai",
                                             SD_BUS_PARAM(ids) SD_BUS_PARAM(updatesNeeded)
                                                 SD_BUS_PARAM(idErrors)),
    signalEntry("ItemsPropertiesUpdated", "a(ia{sv})a(ias)",
                SD_BUS_PARAM(updatedProps) SD_BUS_PARAM(removedProps)),
    signalEntry("LayoutUpdated", "ui", SD_BUS_PARAM(revision) SD_BUS_PARAM(parent)),
    signalEntry("ItemActivationRequested", "iu", SD_BUS_PARAM(id) SD_BUS_PARAM(timestamp)),
    endOfTable(),
};

DBusMenu::DBusMenu() : items_(itemsOf({})) {}

bool DBusMenu::exportOn(EventLoopBus& bus) {
    bus_ = &bus;
    object_ = ExportedObject(bus, objectPath, interfaceName, table.data(), this);
    return bool(object_);
}

void DBusMenu::setRows(const std::vector<Row>& rows) {
    Items items = itemsOf(rows);
    if (haveSameIds(items, items_)) {
        updateLabels(items);
        items_ = std::move(items);
        return;
    }
    items_ = std::move(items);
    ++revision_;
    if (!bus_) return;
    const BusMessage signal = bus_->newSignal(objectPath, interfaceName, "LayoutUpdated");
    if (!signal) return;
    sd_bus_message_append(signal.get(), "ui", revision_, rootId);
    bus_->send(signal);
}

void DBusMenu::updateLabels(const Items& items) {
    if (items == items_ || !bus_) return;
    const BusMessage signal = bus_->newSignal(objectPath, interfaceName, "ItemsPropertiesUpdated");
    if (!signal) return;
    sd_bus_message_open_container(signal.get(), 'a', "(ia{sv})");
    for (std::size_t i = 0; i < items.size(); ++i)
        if (items[i] != items_[i]) appendItemAlone(signal.get(), items[i], {});
    sd_bus_message_close_container(signal.get());
    sd_bus_message_append(signal.get(), "a(ias)", 0);
    bus_->send(signal);
}

void DBusMenu::layout(sd_bus_message* call) {
    int id = 0;
    int depth = 0;
    sd_bus_message_read(call, "ii", &id, &depth);
    const Names names = readNames(call);
    const Item* parent = find(id);
    if (parent == nullptr) return refuseItem(call, id);
    const BusMessage reply = replyTo(call);
    sd_bus_message* message = reply.get();
    sd_bus_message_append(message, "u", revision_);
    sd_bus_message_open_container(message, 'r', "ia{sv}av");
    appendItem(message, *parent, names);
    sd_bus_message_open_container(message, 'a', "v");
    if (id == rootId && depth != 0)
        for (auto child = items_.begin() + 1; child != items_.end(); ++child)
            appendLeaf(message, *child, names);
    sd_bus_message_close_container(message);
    sd_bus_message_close_container(message);
    send(reply);
}

void DBusMenu::groupProperties(sd_bus_message* call) {
    const std::vector<int> ids = readIds(call);
    const Names names = readNames(call);
    const std::set<int> wanted(ids.begin(), ids.end());
    const BusMessage reply = replyTo(call);
    sd_bus_message_open_container(reply.get(), 'a', "(ia{sv})");
    for (const Item& item : items_)
        if (wanted.empty() || wanted.contains(item.id)) appendItemAlone(reply.get(), item, names);
    sd_bus_message_close_container(reply.get());
    send(reply);
}

void DBusMenu::property(sd_bus_message* call) {
    int id = 0;
    const char* name = "";
    sd_bus_message_read(call, "is", &id, &name);
    const Item* item = find(id);
    if (item == nullptr) return refuseItem(call, id);
    for (const Property& each : propertiesOf(*item)) {
        if (each.name != std::string_view(name)) continue;
        const BusMessage reply = replyTo(call);
        appendValue(reply.get(), each);
        return send(reply);
    }
    sd_bus_reply_method_errorf(call, SD_BUS_ERROR_INVALID_ARGS, "The item has no such property");
}

void DBusMenu::event(sd_bus_message* call) {
    const Event event = readEvent(call);
    if (find(event.id) == nullptr) return refuseItem(call, event.id);
    sd_bus_reply_method_return(call, "");
    take(event.id, event.name);
}

void DBusMenu::eventGroup(sd_bus_message* call) {
    const std::vector<Event> events = readEvents(call);
    std::vector<int> unknown;
    for (const Event& each : events)
        if (find(each.id) == nullptr) unknown.push_back(each.id);
    const BusMessage reply = replyTo(call);
    appendIds(reply.get(), unknown);
    send(reply);
    const QPointer<DBusMenu> self(this);
    for (const Event& each : events)
        if (self && find(each.id) != nullptr) take(each.id, each.name);
}

void DBusMenu::aboutToShow(sd_bus_message* call) {
    int id = 0;
    sd_bus_message_read(call, "i", &id);
    if (find(id) == nullptr) return refuseItem(call, id);
    const bool hasChanged = id == rootId && announceOpening();
    sd_bus_reply_method_return(call, "b", int(hasChanged));
}

void DBusMenu::aboutToShowGroup(sd_bus_message* call) {
    const std::vector<int> ids = readIds(call);
    std::vector<int> unknown;
    for (const int id : ids)
        if (find(id) == nullptr) unknown.push_back(id);
    const bool isRootAsked = std::find(ids.begin(), ids.end(), rootId) != ids.end();
    const bool hasChanged = isRootAsked && announceOpening();
    const BusMessage reply = replyTo(call);
    appendIds(reply.get(), hasChanged ? std::vector<int>{rootId} : std::vector<int>{});
    appendIds(reply.get(), unknown);
    send(reply);
}

bool DBusMenu::announceOpening() {
    const QPointer<DBusMenu> self(this);
    const std::uint32_t before = revision_;
    isOpeningAnnounced_ = true;
    emit opened();
    return self && revision_ != before;
}

void DBusMenu::take(int id, std::string_view event) {
    if (event == "clicked" && isCommand(id)) {
        emit commandChosen(id / kindCount);
    } else if (event == "opened" && id == rootId) {
        if (!std::exchange(isOpeningAnnounced_, false)) emit opened();
    } else if (event == "closed" && id == rootId) {
        isOpeningAnnounced_ = false;
    }
}

const Item* DBusMenu::find(int id) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [id](const Item& each) { return each.id == id; });
    return found == items_.end() ? nullptr : &*found;
}

}  // namespace brimwatch
