#include "platform/linux/panel_fixture.h"

#include <QDBusPendingCall>
#include <QDBusReply>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>

#include "harness/environment_list.h"
#include "platform/linux/dbus_menu_types.h"
#include "platform/linux/notifier_types.h"

namespace brimwatch::test {

namespace {

const char* const itemInterface = "org.kde.StatusNotifierItem";
const char* const menuInterface = "com.canonical.dbusmenu";
const char* const propertiesInterface = "org.freedesktop.DBus.Properties";

QString nextName() {
    static int count = 0;
    return QStringLiteral("test-%1").arg(++count);
}

// It starts no services, and knows none of the desktop that the test may run on.
std::string busConfiguration(const std::string& address) {
    return R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>)" +
           address + R"(</listen>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
</busconfig>
)";
}

}  // namespace

bool eventuallyInLoop(const std::function<bool()>& condition) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (Clock::now() > end) return false;
        QCoreApplication::processEvents();
        QThread::msleep(2);
    }
    return true;
}

OwnConnection::OwnConnection(const QString& address)
    : connection_(QDBusConnection::connectToBus(address, nextName())) {}

OwnConnection::~OwnConnection() {
    QDBusConnection::disconnectFromBus(connection_.name());
}

SignalLog::SignalLog(QDBusConnection& connection, const QString& service) {
    for (const char* interface : {itemInterface, menuInterface}) {
        connection.connect(service, QString(), interface, QString(), this,
                           SLOT(note(QDBusMessage)));
    }
}

int SignalLog::count(const QString& name) const {
    return static_cast<int>(
        std::count_if(messages_.begin(), messages_.end(),
                      [&](const QDBusMessage& message) { return message.member() == name; }));
}

QVariantList SignalLog::last(const QString& name) const {
    for (auto message = messages_.rbegin(); message != messages_.rend(); ++message)
        if (message->member() == name) return message->arguments();
    return {};
}

FakePanel::FakePanel(const QString& address) : connection_(address) {
    EXPECT_TRUE(connection_->registerObject("/StatusNotifierWatcher", this,
                                            QDBusConnection::ExportAllContents));
    EXPECT_TRUE(connection_->registerService("org.kde.StatusNotifierWatcher"));
}

void FakePanel::setHasHost(bool hasHost) {
    hasHost_ = hasHost;
    if (hasHost) emit StatusNotifierHostRegistered();
    if (!hasHost) emit StatusNotifierHostUnregistered();
}

void FakePanel::RegisterStatusNotifierItem(const QString& service) {
    items_.append(service);
}

QString FakePanel::idOf(const QString& item) {
    return property(item, "Id").toString();
}

QString FakePanel::itemWithId(const QString& id) {
    for (const QString& item : items_)
        if (idOf(item) == id) return item;
    return {};
}

QDBusMessage FakePanel::call(const QString& service, const QString& path, const QString& interface,
                             const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    QDBusPendingCall call = connection_->asyncCall(message);
    EXPECT_TRUE(eventuallyInLoop([&] { return call.isFinished(); }));
    return call.reply();
}

QVariant FakePanel::property(const QString& service, const QString& name) {
    const QDBusMessage reply =
        call(service, "/StatusNotifierItem", propertiesInterface, "Get", {itemInterface, name});
    if (reply.type() != QDBusMessage::ReplyMessage) return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

QDBusMessage FakePanel::callMenu(const QString& service, const QString& method,
                                 const QVariantList& arguments) {
    return call(service, "/MenuBar", menuInterface, method, arguments);
}

QDBusMessage FakePanel::callItem(const QString& service, const QString& method,
                                 const QVariantList& arguments) {
    return call(service, "/StatusNotifierItem", itemInterface, method, arguments);
}

void PanelTest::SetUp() {
    application_ = std::make_unique<QApplication>(argumentCount_, arguments_);
    registerDBusMenuTypes();
    registerNotifierTypes();
    startBus();
}

QString PanelTest::busAddress() const {
    return QString::fromStdString("unix:path=" + folder_.file("bus"));
}

void PanelTest::startBus() {
    const std::string configuration = folder_.file("bus.conf");
    writeFile(configuration, busConfiguration(busAddress().toStdString()));
    bus_.emplace(
        ProcessRequest{.program = "/usr/bin/dbus-daemon",
                       .arguments = {"--nofork", "--nopidfile", "--config-file=" + configuration},
                       .input = {},
                       .prepare = {}});
    ASSERT_TRUE(eventually([&] { return OwnConnection(busAddress())->isConnected(); }));
}

void PanelTest::killBus() {
    panel_.reset();
    bus_->signal(SIGKILL);
    bus_->wait();
    bus_.reset();
    // What a killed bus leaves would be in the way of the next one.
    std::filesystem::remove(folder_.file("bus"));
}

}  // namespace brimwatch::test
