// A service on a message bus, or the one connection of a unique name, which comes and goes.
//
// What is asked of a service and heard from it ends with its owner: an answer or a signal of a
// former owner never arrives. Main thread.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <memory>
#include <optional>

#include "platform/linux/bus_connection.h"

namespace brimwatch {

class BusService final : public QObject {
    Q_OBJECT

  public:
    // The connection must outlive this.
    BusService(BusConnection& bus, QString name);
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;
    ~BusService() override;

    bool isThere() const { return !owner().isEmpty(); }
    // Nobody is there, and that is known.
    bool isMissing() const { return owner_ && owner_->isEmpty(); }
    // The unique name of the connection that owns the name, or empty.
    QString owner() const { return owner_.value_or(QString()); }

    // Nothing comes of either where nobody is there.
    void call(const QString& path, const QString& interface, const QString& method,
              const QVariantList& arguments, BusConnection::Answered answered);
    void listen(const BusSignal& signal, BusConnection::Received received);

  signals:
    // The service appeared, vanished, or has another owner; and once for each connection to the bus
    // when it is known that nobody is there.
    void ownerChanged();

  private:
    void lookUp();
    void forget();
    void setOwner(std::optional<QString> owner);

    BusConnection& bus_;
    QString name_;
    std::optional<QString> owner_;         // nothing while it isn't known
    std::unique_ptr<QObject> connection_;  // what lasts as long as the connection to the bus
    std::unique_ptr<QObject> tenure_;      // and as long as the owner
};

}  // namespace brimwatch
