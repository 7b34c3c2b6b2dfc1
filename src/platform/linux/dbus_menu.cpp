#include "platform/linux/dbus_menu.h"

#include <QDBusMessage>
#include <QPointer>
#include <algorithm>
#include <set>
#include <utility>

#include "platform/linux/dbus_properties.h"

namespace brimwatch {

namespace {

using Row = StatusItem::MenuRow;

constexpr QLatin1String interfaceName("com.canonical.dbusmenu");
constexpr int rootId = 0;
constexpr int kindCount = 3;

constexpr const char* introspection = R"xml(<interface name="com.canonical.dbusmenu">
  <property name="Version" type="u" access="read"/>
  <property name="TextDirection" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="IconThemePath" type="as" access="read"/>
  <method name="GetLayout">
    <arg name="parentId" type="i" direction="in"/>
    <arg name="recursionDepth" type="i" direction="in"/>
    <arg name="propertyNames" type="as" direction="in"/>
    <arg name="revision" type="u" direction="out"/>
    <arg name="layout" type="(ia{sv}av)" direction="out"/>
  </method>
  <method name="GetGroupProperties">
    <arg name="ids" type="ai" direction="in"/>
    <arg name="propertyNames" type="as" direction="in"/>
    <arg name="properties" type="a(ia{sv})" direction="out"/>
  </method>
  <method name="GetProperty">
    <arg name="id" type="i" direction="in"/>
    <arg name="name" type="s" direction="in"/>
    <arg name="value" type="v" direction="out"/>
  </method>
  <method name="Event">
    <arg name="id" type="i" direction="in"/>
    <arg name="eventId" type="s" direction="in"/>
    <arg name="data" type="v" direction="in"/>
    <arg name="timestamp" type="u" direction="in"/>
  </method>
  <method name="EventGroup">
    <arg name="events" type="a(isvu)" direction="in"/>
    <arg name="idErrors" type="ai" direction="out"/>
  </method>
  <method name="AboutToShow">
    <arg name="id" type="i" direction="in"/>
    <arg name="needUpdate" type="b" direction="out"/>
  </method>
  <method name="AboutToShowGroup">
    <arg name="ids" type="ai" direction="in"/>
    <arg name="updatesNeeded" type="ai" direction="out"/>
    <arg name="idErrors" type="ai" direction="out"/>
  </method>
  <signal name="ItemsPropertiesUpdated">
    <arg name="updatedProps" type="a(ia{sv})"/>
    <arg name="removedProps" type="a(ias)"/>
  </signal>
  <signal name="LayoutUpdated">
    <arg name="revision" type="u"/>
    <arg name="parent" type="i"/>
  </signal>
  <signal name="ItemActivationRequested">
    <arg name="id" type="i"/>
    <arg name="timestamp" type="u"/>
  </signal>
</interface>
)xml";

QVariantMap menuProperties() {
    return {{"Version", 3U},
            {"TextDirection", "ltr"},
            {"Status", "normal"},
            {"IconThemePath", QStringList()}};
}

// An underscore alone would underline what follows it.
QString labelText(QString label) {
    return label.replace('_', QLatin1String("__"));
}

QVariantMap rowProperties(const Row& row) {
    switch (row.kind) {
        case Row::Kind::separator:
            return {{"type", "separator"}};
        case Row::Kind::text:
            return {{"label", labelText(row.label)}, {"enabled", false}};
        case Row::Kind::command:
            break;
    }
    return {{"label", labelText(row.label)}};
}

// The id says of what kind the row is, so that none ever turns from a separator into a text: panels
// keep the widget that they have made for an id.
std::vector<DBusMenuItem> itemsOf(const std::vector<Row>& rows) {
    std::vector<DBusMenuItem> items{{rootId, {{"children-display", "submenu"}}}};
    int texts = 0;
    int separators = 0;
    for (const Row& row : rows) {
        const int number = row.kind == Row::Kind::command ? row.id
                           : row.kind == Row::Kind::text  ? ++texts
                                                          : ++separators;
        items.push_back({number * kindCount + static_cast<int>(row.kind), rowProperties(row)});
    }
    return items;
}

bool isCommand(int id) {
    return id != rootId && id % kindCount == static_cast<int>(Row::Kind::command);
}

// No names stand for all of them.
QVariantMap selected(const QVariantMap& properties, const QStringList& names) {
    if (names.isEmpty()) return properties;
    QVariantMap some;
    for (auto each = properties.begin(); each != properties.end(); ++each)
        if (names.contains(each.key())) some.insert(each.key(), each.value());
    return some;
}

template <typename Value>
Value argument(const QDBusMessage& message, int index) {
    return qdbus_cast<Value>(message.arguments().at(index));
}

QDBusMessage unknownItem(const QDBusMessage& message, int id) {
    return message.createErrorReply(QDBusError::InvalidArgs,
                                    QStringLiteral("There is no item %1").arg(id));
}

bool haveSameIds(const std::vector<DBusMenuItem>& some, const std::vector<DBusMenuItem>& others) {
    return std::equal(
        some.begin(), some.end(), others.begin(), others.end(),
        [](const DBusMenuItem& one, const DBusMenuItem& other) { return one.id == other.id; });
}

}  // namespace

const std::array<DBusMenu::Method, 7> DBusMenu::methods = {{
    {"GetLayout", "iias", &DBusMenu::layout},
    {"GetGroupProperties", "aias", &DBusMenu::groupProperties},
    {"GetProperty", "is", &DBusMenu::property},
    {"Event", "isvu", &DBusMenu::event},
    {"EventGroup", "a(isvu)", &DBusMenu::eventGroup},
    {"AboutToShow", "i", &DBusMenu::aboutToShow},
    {"AboutToShowGroup", "ai", &DBusMenu::aboutToShowGroup},
}};

DBusMenu::DBusMenu() : items_(itemsOf({})) {
    registerDBusMenuTypes();
}

bool DBusMenu::exportOn(const QDBusConnection& connection) {
    connection_ = connection;
    return connection_->registerVirtualObject(objectPath(), this);
}

void DBusMenu::setRows(const std::vector<Row>& rows) {
    std::vector<DBusMenuItem> items = itemsOf(rows);
    if (haveSameIds(items, items_)) {
        updateLabels(items);
        items_ = std::move(items);
        return;
    }
    items_ = std::move(items);
    ++revision_;
    send("LayoutUpdated", {revision_, rootId});
}

void DBusMenu::updateLabels(const std::vector<DBusMenuItem>& items) {
    QList<DBusMenuItem> changed;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (items[i].properties != items_[i].properties) changed.append(items[i]);
    if (changed.isEmpty()) return;
    send("ItemsPropertiesUpdated",
         {QVariant::fromValue(changed), QVariant::fromValue(QList<DBusMenuRemovedProperties>())});
}

QString DBusMenu::introspect(const QString& path) const {
    return path == objectPath() ? QString::fromLatin1(introspection) : QString();
}

bool DBusMenu::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (isPropertiesCall(message)) {
        sendReply(message, connection, propertiesReply(message, interfaceName, menuProperties()));
        return true;
    }
    if (!message.interface().isEmpty() && message.interface() != interfaceName) return false;
    for (const Method& method : methods) {
        if (message.member() != QLatin1String(method.name)) continue;
        if (message.signature() == QLatin1String(method.signature)) {
            (this->*method.answer)(message, connection);
        } else {
            sendReply(message, connection, wrongArguments(message));
        }
        return true;
    }
    // Without an interface it may be one of those that Qt answers.
    if (message.interface().isEmpty()) return false;
    sendReply(message, connection, unknownMethod(message));
    return true;
}

void DBusMenu::layout(const QDBusMessage& message, const QDBusConnection& connection) {
    const int id = argument<int>(message, 0);
    const int depth = argument<int>(message, 1);
    const auto names = argument<QStringList>(message, 2);
    const DBusMenuItem* parent = item(id);
    if (parent == nullptr) return sendReply(message, connection, unknownItem(message, id));
    DBusMenuLayout layout{id, selected(parent->properties, names), {}};
    if (id == rootId && depth != 0) {
        for (auto child = items_.begin() + 1; child != items_.end(); ++child)
            layout.children.append({child->id, selected(child->properties, names), {}});
    }
    const QVariantList reply = {revision_, QVariant::fromValue(layout)};
    sendReply(message, connection, message.createReply(reply));
}

void DBusMenu::groupProperties(const QDBusMessage& message, const QDBusConnection& connection) {
    const auto ids = argument<QList<int>>(message, 0);
    const auto names = argument<QStringList>(message, 1);
    const std::set<int> wanted(ids.begin(), ids.end());
    QList<DBusMenuItem> found;
    for (const DBusMenuItem& each : items_) {
        if (wanted.empty() || wanted.contains(each.id))
            found.append({each.id, selected(each.properties, names)});
    }
    sendReply(message, connection, message.createReply(QVariant::fromValue(found)));
}

void DBusMenu::property(const QDBusMessage& message, const QDBusConnection& connection) {
    const int id = argument<int>(message, 0);
    const DBusMenuItem* found = item(id);
    if (found == nullptr) return sendReply(message, connection, unknownItem(message, id));
    const QVariant value = found->properties.value(argument<QString>(message, 1));
    const QDBusMessage reply =
        value.isValid() ? message.createReply(QVariant::fromValue(QDBusVariant(value)))
                        : message.createErrorReply(QDBusError::InvalidArgs,
                                                   QStringLiteral("The item has no such property"));
    sendReply(message, connection, reply);
}

void DBusMenu::event(const QDBusMessage& message, const QDBusConnection& connection) {
    const int id = argument<int>(message, 0);
    if (item(id) == nullptr) return sendReply(message, connection, unknownItem(message, id));
    sendReply(message, connection, message.createReply());
    take(id, argument<QString>(message, 1));
}

void DBusMenu::eventGroup(const QDBusMessage& message, const QDBusConnection& connection) {
    const auto events = argument<QList<DBusMenuEvent>>(message, 0);
    QList<int> unknown;
    for (const DBusMenuEvent& each : events)
        if (item(each.id) == nullptr) unknown.append(each.id);
    sendReply(message, connection, message.createReply(QVariant::fromValue(unknown)));
    const QPointer<DBusMenu> self(this);
    for (const DBusMenuEvent& each : events)
        if (self && item(each.id) != nullptr) take(each.id, each.name);
}

void DBusMenu::aboutToShow(const QDBusMessage& message, const QDBusConnection& connection) {
    const int id = argument<int>(message, 0);
    if (item(id) == nullptr) return sendReply(message, connection, unknownItem(message, id));
    const QPointer<DBusMenu> self(this);
    const uint before = revision_;
    if (id == rootId) {
        isOpeningAnnounced_ = true;
        emit opened();
    }
    if (self) sendReply(message, connection, message.createReply(revision_ != before));
}

void DBusMenu::aboutToShowGroup(const QDBusMessage& message, const QDBusConnection& connection) {
    const auto ids = argument<QList<int>>(message, 0);
    QList<int> unknown;
    for (const int id : ids)
        if (item(id) == nullptr) unknown.append(id);
    const QPointer<DBusMenu> self(this);
    const uint before = revision_;
    if (ids.contains(rootId)) {
        isOpeningAnnounced_ = true;
        emit opened();
    }
    if (!self) return;
    const QList<int> changed = revision_ != before ? QList<int>{rootId} : QList<int>{};
    sendReply(message, connection,
              message.createReply({QVariant::fromValue(changed), QVariant::fromValue(unknown)}));
}

void DBusMenu::take(int id, const QString& event) {
    if (event == u"clicked" && isCommand(id)) {
        emit commandChosen(id / kindCount);
    } else if (event == u"opened" && id == rootId) {
        if (!std::exchange(isOpeningAnnounced_, false)) emit opened();
    } else if (event == u"closed" && id == rootId) {
        isOpeningAnnounced_ = false;
    }
}

const DBusMenuItem* DBusMenu::item(int id) const {
    const auto found = std::find_if(items_.begin(), items_.end(),
                                    [id](const DBusMenuItem& each) { return each.id == id; });
    return found == items_.end() ? nullptr : &*found;
}

void DBusMenu::send(const char* signal, const QVariantList& arguments) const {
    if (!connection_ || !connection_->isConnected()) return;
    QDBusMessage message =
        QDBusMessage::createSignal(objectPath(), interfaceName, QLatin1String(signal));
    message.setArguments(arguments);
    connection_->send(message);
}

}  // namespace brimwatch
