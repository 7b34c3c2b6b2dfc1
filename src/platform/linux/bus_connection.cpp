#include "platform/linux/bus_connection.h"

#include <QDBusPendingCallWatcher>
#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/bus_signal_listener.h"

namespace brimwatch {
namespace {

constexpr QLatin1String localPath("/org/freedesktop/DBus/Local");
constexpr QLatin1String localInterface("org.freedesktop.DBus.Local");

QString text(std::string_view bytes) {
    return QString::fromLocal8Bit(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

QString nextConnectionName() {
    static int count = 0;
    return QStringLiteral("brimwatch-%1").arg(++count);
}

QDBusConnection noConnection() {
    return QDBusConnection(QString());
}

}  // namespace

QString sessionBusAddress(const Environment& environment) {
    const auto address = environment.value("DBUS_SESSION_BUS_ADDRESS");
    if (address && !address->empty()) return text(*address);
    const auto folder = environment.value("XDG_RUNTIME_DIR");
    if (!folder || !folder->starts_with('/')) return {};
    const QByteArray path(folder->data(), static_cast<qsizetype>(folder->size()));
    return QStringLiteral("unix:path=%1/bus").arg(QLatin1String(path.toPercentEncoding("/", "~")));
}

QString systemBusAddress(const Environment& environment) {
    const auto address = environment.value("DBUS_SYSTEM_BUS_ADDRESS");
    if (address && !address->empty()) return text(*address);
    return QStringLiteral("unix:path=/run/dbus/system_bus_socket");
}

QDBusMessage BusCall::message() const {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(start == Start::ifNeeded);
    return message;
}

BusPauses::Milliseconds BusPauses::afterFailure() {
    return std::exchange(next_, std::min(2 * next_, longest_));
}

BusPauses::Milliseconds BusPauses::afterConnection(Milliseconds lasted) {
    // A bus that dies again and again is not asked more often than one that is not there.
    if (lasted > longest_) next_ = first_;
    return afterFailure();
}

BusConnection::BusConnection(QString address) : BusConnection(std::move(address), Timing()) {}

BusConnection::BusConnection(QString address, Timing timing)
    : address_(std::move(address)),
      timing_(timing),
      name_(nextConnectionName()),
      connection_(noConnection()),
      pauses_(timing.firstPause, timing.longestPause) {
    nextAttempt_.setSingleShot(true);
    connect(&nextAttempt_, &QTimer::timeout, this, &BusConnection::connectToBus);
}

BusConnection::~BusConnection() {
    if (isConnected_) leaveBus();
}

void BusConnection::open() {
    if (!address_.isEmpty()) connectToBus();
}

void BusConnection::connectToBus() {
    connection_ = QDBusConnection::connectToBus(address_, name_);
    // Ahead of the question, so that a death in between is not missed.
    connection_.connect(QString(), localPath, localInterface, QStringLiteral("Disconnected"), this,
                        SLOT(lose()));
    if (!connection_.isConnected()) {
        leaveBus();
        nextAttempt_.start(pauses_.afterFailure());
        return;
    }
    isConnected_ = true;
    sinceConnected_.start();
    emit connected();
}

void BusConnection::lose() {
    if (!isConnected_ || connection_.isConnected()) return;
    isConnected_ = false;
    leaveBus();
    nextAttempt_.start(
        pauses_.afterConnection(std::chrono::milliseconds(sinceConnected_.elapsed())));
    emit disconnected();
}

void BusConnection::leaveBus() {
    connection_ = noConnection();
    QDBusConnection::disconnectFromBus(name_);
}

void BusConnection::call(const BusCall& call, QObject* context, Answered answered) {
    if (!isConnected_) return;
    const QDBusPendingCall pending =
        connection_.asyncCall(call.message(), static_cast<int>(timing_.answer.count()));
    auto* watcher = std::make_unique<QDBusPendingCallWatcher>(pending, context).release();
    connect(watcher, &QDBusPendingCallWatcher::finished, context,
            [watcher, function = std::move(answered)] {
                watcher->deleteLater();
                function(watcher->reply());
            });
}

void BusConnection::listen(const BusSignal& signal, QObject* context, Received received) {
    if (!isConnected_) return;
    auto* listener = std::make_unique<BusSignalListener>(std::move(received), context).release();
    QStringList firstArguments;
    if (!signal.firstArgument.isEmpty()) firstArguments << signal.firstArgument;
    connection_.connect(signal.service, signal.path, signal.interface, signal.name, firstArguments,
                        QString(), listener, SLOT(receive(QDBusMessage)));
}

}  // namespace brimwatch
