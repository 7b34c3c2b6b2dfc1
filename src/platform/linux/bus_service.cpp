#include "platform/linux/bus_service.h"

#include <utility>

namespace brimwatch {
namespace {

constexpr QLatin1String busName("org.freedesktop.DBus");
constexpr QLatin1String busPath("/org/freedesktop/DBus");

}  // namespace

BusService::BusService(BusConnection& bus, QString name) : bus_(bus), name_(std::move(name)) {
    connect(&bus_, &BusConnection::connected, this, &BusService::lookUp);
    connect(&bus_, &BusConnection::disconnected, this, &BusService::forget);
    if (bus_.isConnected()) lookUp();
}

BusService::~BusService() = default;

void BusService::lookUp() {
    connection_ = std::make_unique<QObject>();
    bus_.listen({.path = busPath,
                 .interface = busName,
                 .name = QStringLiteral("NameOwnerChanged"),
                 .firstArgument = name_},
                connection_.get(), [this](const QDBusMessage& message) {
                    // Others may send what looks like it.
                    if (message.service() != busName) return;
                    setOwner(message.arguments().value(2).toString());
                });
    bus_.call({busName, busPath, busName, QStringLiteral("GetNameOwner"), {name_}},
              connection_.get(), [this](const QDBusMessage& answer) {
                  if (owner_) return;  // what a signal told is newer
                  const bool isOwned = answer.type() == QDBusMessage::ReplyMessage;
                  setOwner(isOwned ? answer.arguments().value(0).toString() : QString());
              });
}

void BusService::forget() {
    connection_.reset();
    setOwner(std::nullopt);
}

void BusService::setOwner(std::optional<QString> owner) {
    if (owner == owner_) return;
    owner_ = std::move(owner);
    tenure_ = std::make_unique<QObject>();
    emit ownerChanged();
}

void BusService::call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments, BusConnection::Answered answered) {
    if (!isThere()) return;
    bus_.call({owner(), path, interface, method, arguments}, tenure_.get(), std::move(answered));
}

void BusService::listen(const BusSignal& signal, BusConnection::Received received) {
    if (!isThere()) return;
    BusSignal fromOwner = signal;
    fromOwner.service = owner();
    bus_.listen(fromOwner, tenure_.get(), std::move(received));
}

}  // namespace brimwatch
