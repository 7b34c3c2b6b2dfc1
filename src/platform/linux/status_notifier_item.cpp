#include "platform/linux/status_notifier_item.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <utility>

#include "platform/linux/dbus_properties.h"

namespace brimwatch {

namespace {

constexpr QLatin1String interfaceName("org.kde.StatusNotifierItem");

constexpr const char* introspection = R"xml(<interface name="org.kde.StatusNotifierItem">
  <property name="Category" type="s" access="read"/>
  <property name="Id" type="s" access="read"/>
  <property name="Title" type="s" access="read"/>
  <property name="Status" type="s" access="read"/>
  <property name="WindowId" type="i" access="read"/>
  <property name="IconThemePath" type="s" access="read"/>
  <property name="IconName" type="s" access="read"/>
  <property name="IconPixmap" type="a(iiay)" access="read"/>
  <property name="IconAccessibleDesc" type="s" access="read"/>
  <property name="OverlayIconName" type="s" access="read"/>
  <property name="OverlayIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionIconName" type="s" access="read"/>
  <property name="AttentionIconPixmap" type="a(iiay)" access="read"/>
  <property name="AttentionMovieName" type="s" access="read"/>
  <property name="ToolTip" type="(sa(iiay)ss)" access="read"/>
  <property name="ItemIsMenu" type="b" access="read"/>
  <property name="Menu" type="o" access="read"/>
  <property name="XAyatanaLabel" type="s" access="read"/>
  <property name="XAyatanaLabelGuide" type="s" access="read"/>
  <property name="XAyatanaOrderingIndex" type="u" access="read"/>
  <method name="Activate">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="SecondaryActivate">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="XAyatanaSecondaryActivate">
    <arg name="timestamp" type="u" direction="in"/>
  </method>
  <method name="ContextMenu">
    <arg name="x" type="i" direction="in"/>
    <arg name="y" type="i" direction="in"/>
  </method>
  <method name="Scroll">
    <arg name="delta" type="i" direction="in"/>
    <arg name="orientation" type="s" direction="in"/>
  </method>
  <method name="ProvideXdgActivationToken">
    <arg name="token" type="s" direction="in"/>
  </method>
  <signal name="NewTitle"/>
  <signal name="NewIcon"/>
  <signal name="NewToolTip"/>
  <signal name="NewStatus">
    <arg name="status" type="s"/>
  </signal>
  <signal name="XAyatanaNewLabel">
    <arg name="label" type="s"/>
    <arg name="guide" type="s"/>
  </signal>
</interface>
)xml";

QString statusName(StatusNotifierItem::Status status) {
    return status == StatusNotifierItem::Status::active ? QStringLiteral("Active")
                                                        : QStringLiteral("Passive");
}

}  // namespace

const std::array<StatusNotifierItem::Method, 6> StatusNotifierItem::methods = {{
    {"Activate", "ii", &StatusNotifierItem::activate},
    // Only panels that draw no menu ask for one. What a click opens has the same commands.
    {"ContextMenu", "ii", &StatusNotifierItem::activate},
    {"SecondaryActivate", "ii", &StatusNotifierItem::ignore},
    {"XAyatanaSecondaryActivate", "u", &StatusNotifierItem::ignore},
    {"Scroll", "is", &StatusNotifierItem::ignore},
    {"ProvideXdgActivationToken", "s", &StatusNotifierItem::keepToken},
}};

StatusNotifierItem::StatusNotifierItem(QString id, QString menuPath)
    : id_(std::move(id)), menuPath_(std::move(menuPath)) {
    registerNotifierTypes();
}

bool StatusNotifierItem::exportOn(const QDBusConnection& connection) {
    connection_ = connection;
    return connection_->registerVirtualObject(objectPath(), this);
}

void StatusNotifierItem::setTitle(const QString& title) {
    if (title_ == title) return;
    title_ = title;
    send("NewTitle");
    send("NewToolTip");
}

void StatusNotifierItem::setLabel(const QString& label) {
    if (label_ == label) return;
    label_ = label;
    send("XAyatanaNewLabel", {label_, labelGuide()});
}

void StatusNotifierItem::setDescription(const QString& description) {
    if (description_ == description) return;
    description_ = description;
    send("NewToolTip");
}

void StatusNotifierItem::setPicture(const QImage& picture) {
    writePixmap(picture, nextPixmap_);
    if (nextPixmap_ == pixmap_) return;
    std::swap(pixmap_, nextPixmap_);
    send("NewIcon");
}

void StatusNotifierItem::setStatus(Status status) {
    if (status_ == status) return;
    status_ = status;
    send("NewStatus", {statusName(status_)});
}

QString StatusNotifierItem::introspect(const QString& path) const {
    return path == objectPath() ? QString::fromLatin1(introspection) : QString();
}

bool StatusNotifierItem::handleMessage(const QDBusMessage& message,
                                       const QDBusConnection& connection) {
    if (isPropertiesCall(message)) {
        sendReply(message, connection, propertiesReply(message, interfaceName, properties()));
        return true;
    }
    if (!message.interface().isEmpty() && message.interface() != interfaceName) return false;
    for (const Method& method : methods) {
        if (message.member() != QLatin1String(method.name)) continue;
        const bool fits = message.signature() == QLatin1String(method.signature);
        sendReply(message, connection, fits ? message.createReply() : wrongArguments(message));
        // Last: who hears of it may destroy the item.
        if (fits) (this->*method.run)(message.arguments());
        return true;
    }
    // Without an interface it may be one of those that Qt answers.
    if (message.interface().isEmpty()) return false;
    sendReply(message, connection, unknownMethod(message));
    return true;
}

void StatusNotifierItem::activate(const QVariantList& arguments) {
    const QPoint position(arguments.at(0).toInt(), arguments.at(1).toInt());
    const QString token = std::exchange(activationToken_, QString());
    emit activated(position, token);
}

void StatusNotifierItem::keepToken(const QVariantList& arguments) {
    activationToken_ = arguments.constFirst().toString();
}

QVariantMap StatusNotifierItem::properties() const {
    const QVariant noPixmaps = QVariant::fromValue(NotifierPixmaps());
    const QVariant pixmaps =
        QVariant::fromValue(pixmap_.bytes.isEmpty() ? NotifierPixmaps() : NotifierPixmaps{pixmap_});
    const NotifierToolTip toolTip{{}, {}, title_, description_};
    return {
        {"Category", "ApplicationStatus"},
        {"Id", id_},
        {"Title", title_},
        {"Status", statusName(status_)},
        {"WindowId", 0},
        {"IconThemePath", ""},
        // A name would win over the pixmap.
        {"IconName", ""},
        {"IconPixmap", pixmaps},
        {"IconAccessibleDesc", title_},
        {"OverlayIconName", ""},
        {"OverlayIconPixmap", noPixmaps},
        {"AttentionIconName", ""},
        {"AttentionIconPixmap", noPixmaps},
        {"AttentionMovieName", ""},
        {"ToolTip", QVariant::fromValue(toolTip)},
        {"ItemIsMenu", false},
        {"Menu", QVariant::fromValue(QDBusObjectPath(menuPath_))},
        {"XAyatanaLabel", label_},
        {"XAyatanaLabelGuide", labelGuide()},
        {"XAyatanaOrderingIndex", 0U},
    };
}

QString StatusNotifierItem::labelGuide() const {
    return label_.isEmpty() ? QString() : QStringLiteral("100%");
}

void StatusNotifierItem::send(const char* signal, const QVariantList& arguments) const {
    if (!connection_ || !connection_->isConnected()) return;
    QDBusMessage message =
        QDBusMessage::createSignal(objectPath(), interfaceName, QLatin1String(signal));
    message.setArguments(arguments);
    connection_->send(message);
}

}  // namespace brimwatch
