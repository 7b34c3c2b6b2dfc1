// The other process of a test with a message bus; its argument says what it does.
//
//   survive    outlives the bus, then exits with 7
//   hold       holds the name of the running instance until it is killed
//   activate   is a second start; exits with the `InstanceAnswer`
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QTimer>
#include <string_view>

#include "platform/linux/instance_activation.h"

namespace brimwatch {
namespace {

constexpr int survived = 7;

int survive(QCoreApplication& application) {
    QDBusConnection shared = QDBusConnection::sessionBus();
    QDBusConnection own =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("own"));
    shared.registerService(QStringLiteral("net.example.Survivor"));
    own.registerService(QStringLiteral("net.example.SecondSurvivor"));
    QTimer look;
    int looksSinceDeath = 0;
    QObject::connect(&look, &QTimer::timeout, &application, [&] {
        if (!shared.isConnected() && !own.isConnected()) ++looksSinceDeath;
        if (looksSinceDeath == 10) QCoreApplication::exit(survived);
    });
    look.start(10);
    return QCoreApplication::exec();
}

int hold(const Environment& environment) {
    BusConnection bus(sessionBusAddress(environment));
    const InstanceActivation activation(bus);
    bus.open();
    return QCoreApplication::exec();
}

int run(int count, char** arguments) {
    QCoreApplication application(count, arguments);
    const Environment environment(environ);
    const std::string_view task = count > 1 ? arguments[1] : "";
    if (task == "survive") return survive(application);
    if (task == "hold") return hold(environment);
    return static_cast<int>(activateRunningInstance(environment));
}

}  // namespace
}  // namespace brimwatch

int main(int count, char** arguments) {
    return brimwatch::run(count, arguments);
}
