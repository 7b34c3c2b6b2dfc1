#include "platform/linux/bus_test.h"

#include <QDBusConnection>

namespace brimwatch::test {

Process startCompanion(const PrivateBus& bus, const std::string& task,
                       EnvironmentList environment) {
    environment.set("DBUS_SESSION_BUS_ADDRESS", bus.addressText());
    return Process({.program = BRIMWATCH_BUS_COMPANION,
                    .arguments = {task},
                    .environment = environment,
                    .input = {},
                    .prepare = {}});
}

void BusTest::SetUp() {
    // The thread of all connections stays once there was one, with descriptors of its own.
    const QString name = QStringLiteral("first");
    QDBusConnection::connectToBus(QStringLiteral("unix:path=/missing"), name);
    QDBusConnection::disconnectFromBus(name);
    ApplicationTest::SetUp();
    descriptors_ = openDescriptors();
    daemon_.emplace();
    connectToBus(quickTiming);
}

void BusTest::TearDown() {
    bus_.reset();
    daemon_.reset();
    // That thread closes them.
    EXPECT_TRUE(eventually([this] { return openDescriptors() == descriptors_; }));
    ApplicationTest::TearDown();
}

void BusTest::connectToBus(BusConnection::Timing timing) {
    bus_ = std::make_unique<BusConnection>(daemon_->address(), timing);
    bus_->open();
}

void BusTest::offer(const std::string& service) {
    daemon_->offer(service);
    const FakeService witness(daemon_->address());
    EXPECT_TRUE(eventually([&] { return witness.seesOffer(QString::fromStdString(service)); }));
}

bool BusTest::hasArrived(const FakeService& service) {
    return hasArrived(*bus_, service);
}

bool BusTest::hasArrived(BusConnection& bus, const FakeService& service) const {
    QObject context;
    bool isAnswered = false;
    bus.call({.service = service.uniqueName(),
              .path = QStringLiteral("/"),
              .interface = QStringLiteral("org.freedesktop.DBus.Peer"),
              .method = QStringLiteral("Ping")},
             &context, [&](const QDBusMessage& answer) {
                 isAnswered = answer.type() == QDBusMessage::ReplyMessage;
             });
    if (!eventually([&] { return isAnswered; })) return false;
    settle();  // what came before it may take a turn more
    return true;
}

}  // namespace brimwatch::test
