// A service on a message bus that does what a test tells it to, on a connection of its own.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>

namespace brimwatch::test {

class FakeService : public QDBusVirtualObject {
  public:
    // Answers a call; an invalid message is no answer at all. Any object may be called.
    using Handler = std::function<QDBusMessage(const QDBusMessage& call)>;

    // Connected, with no name yet.
    explicit FakeService(const QString& address);
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;
    ~FakeService() override;

    void handle(Handler handler) { handler_ = std::move(handler); }
    void own(const QString& name);
    void release(const QString& name);
    void vanish();  // as one does that crashed
    void say(const QString& path, const QString& interface, const QString& name,
             const QVariantList& arguments);

    QString uniqueName() const { return connection_.baseService(); }
    // Whether anybody has that name.
    bool sees(const QString& name) const;
    // Whether the bus could start a service of that name.
    bool seesOffer(const QString& name) const;
    const QDBusConnection& connection() const { return connection_; }
    // "METHOD ARGUMENT..." of each call that came.
    const QStringList& calls() const { return calls_; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;

  private:
    QString connectionName_;
    QDBusConnection connection_;
    Handler handler_;
    QStringList calls_;
};

}  // namespace brimwatch::test
