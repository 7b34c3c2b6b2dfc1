#include "platform/linux/bus_connection.h"

#include <QDBusVariant>
#include <QFile>
#include <QUrl>
#include <string>

namespace brimwatch {

namespace {

QString nextName() {
    static int count = 0;
    return QStringLiteral("brimwatch-%1").arg(++count);
}

QString fromView(std::string_view bytes) {
    return QFile::decodeName(QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

}  // namespace

std::optional<QString> sessionBusAddress(const Environment& environment) {
    const auto address = environment.value("DBUS_SESSION_BUS_ADDRESS");
    if (address && !address->empty()) return fromView(*address);
    const auto runtimeFolder = environment.value("XDG_RUNTIME_DIR");
    if (!runtimeFolder || !runtimeFolder->starts_with('/')) return std::nullopt;
    const std::string path = std::string(*runtimeFolder) + "/bus";
    if (!QFile::exists(fromView(path))) return std::nullopt;
    return QStringLiteral("unix:path=") +
           QString::fromLatin1(QUrl::toPercentEncoding(fromView(path), "/", "~"));
}

BusConnection::BusConnection(const QString& address)
    : connection_(QDBusConnection::connectToBus(address, nextName())) {
    // Replies find the types of a slot by name, and this one is not among those that Qt knows so.
    qRegisterMetaType<QDBusVariant>();
}

BusConnection::~BusConnection() {
    QDBusConnection::disconnectFromBus(connection_.name());
}

}  // namespace brimwatch
