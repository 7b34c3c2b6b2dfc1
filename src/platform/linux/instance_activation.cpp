#include "platform/linux/instance_activation.h"

#include <QDBusConnection>
#include <QDBusError>

namespace brimwatch {
namespace {

constexpr QLatin1String instanceName("net.quillmoor.brimwatch");
constexpr QLatin1String nameHasNoOwner("org.freedesktop.DBus.Error.NameHasNoOwner");
constexpr QLatin1String instancePath("/net/quillmoor/brimwatch");

void putValue(QVariantMap& map, const QString& key, std::optional<std::string_view> value) {
    if (!value || value->empty()) return;
    map.insert(key, QString::fromUtf8(value->data(), static_cast<qsizetype>(value->size())));
}

QVariantMap platformData(const Environment& environment) {
    QVariantMap data;
    putValue(data, QStringLiteral("activation-token"), environment.value("XDG_ACTIVATION_TOKEN"));
    putValue(data, QStringLiteral("desktop-startup-id"), environment.value("DESKTOP_STARTUP_ID"));
    return data;
}

InstanceAnswer answerOf(const QDBusMessage& message) {
    if (message.type() == QDBusMessage::ReplyMessage) return InstanceAnswer::activated;
    const QDBusError error(message);
    if (error.type() == QDBusError::Disconnected) return InstanceAnswer::noBus;
    // One that could be started, but was not, has an error of its own.
    if (error.type() == QDBusError::ServiceUnknown || error.name() == nameHasNoOwner)
        return InstanceAnswer::noInstance;
    return InstanceAnswer::noAnswer;
}

}  // namespace

InstanceActivation::InstanceActivation(BusConnection& sessionBus)
    : bus_(sessionBus), name_(sessionBus, instanceName), interface_(this) {
    connect(&interface_, &ApplicationInterface::called, this, &InstanceActivation::activated);
    connect(&bus_, &BusConnection::connected, this, &InstanceActivation::exportInterface);
    connect(&name_, &BusService::ownerChanged, this, &InstanceActivation::takeFreeName);
    if (bus_.isConnected()) exportInterface();
}

bool InstanceActivation::ownsName() const {
    return name_.isThere() && name_.owner() == bus_.connection().baseService();
}

void InstanceActivation::exportInterface() {
    QDBusConnection connection = bus_.connection();
    connection.registerObject(instancePath, this, QDBusConnection::ExportAdaptors);
}

void InstanceActivation::takeFreeName() {
    if (name_.isThere()) return;
    constexpr std::uint32_t doNotQueue = 4;
    bus_.call({QStringLiteral("org.freedesktop.DBus"),
               QStringLiteral("/org/freedesktop/DBus"),
               QStringLiteral("org.freedesktop.DBus"),
               QStringLiteral("RequestName"),
               {QString(instanceName), doNotQueue}},
              this, [](const QDBusMessage&) {});
}

InstanceAnswer activateRunningInstance(const Environment& environment,
                                       std::chrono::milliseconds longestWait) {
    const QString connectionName = QStringLiteral("brimwatch-second-start");
    const QString address = sessionBusAddress(environment);
    if (address.isEmpty()) return InstanceAnswer::noBus;
    const BusCall call{instanceName,
                       instancePath,
                       QStringLiteral("org.freedesktop.Application"),
                       QStringLiteral("Activate"),
                       {platformData(environment)}};
    const QDBusMessage answer =
        QDBusConnection::connectToBus(address, connectionName)
            .call(call.message(), QDBus::Block, static_cast<int>(longestWait.count()));
    QDBusConnection::disconnectFromBus(connectionName);
    return answerOf(answer);
}

}  // namespace brimwatch
