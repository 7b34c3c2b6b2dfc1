#include "platform/linux/notifier_watcher.h"

#include <QDBusMessage>
#include <QFile>

namespace brimwatch {

namespace {

const char* const serviceName = "org.kde.StatusNotifierWatcher";
const char* const objectPath = "/StatusNotifierWatcher";
constexpr QLatin1String hostPrefix("org.kde.StatusNotifierHost-");

// Empty where it can't be told, as from within a sandbox.
QString programOf(uint process) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromLocal8Bit(file.readAll().trimmed());
}

QDBusMessage watcherCall(const char* interface, const char* method, const QVariantList& arguments) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(QLatin1String(serviceName), QLatin1String(objectPath),
                                       QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    // A watcher that the bus could start belongs to a panel that is not there.
    call.setAutoStartService(false);
    return call;
}

}  // namespace

NotifierWatcher::NotifierWatcher(const QDBusConnection& connection)
    : connection_(connection),
      owners_(serviceName, connection, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&owners_, &QDBusServiceWatcher::serviceOwnerChanged, this, &NotifierWatcher::noteOwner);
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        connection_.connect(serviceName, objectPath, serviceName, signal, this,
                            SLOT(askForHosts()));
    }
    askBus("GetNameOwner", {serviceName}, SLOT(noteFirstOwner(QString)), SLOT(noteNoOwner()));
}

void NotifierWatcher::registerItem(const QString& service) const {
    connection_.send(watcherCall(serviceName, "RegisterStatusNotifierItem", {service}));
}

void NotifierWatcher::noteOwner(const QString& /*name*/, const QString& /*former*/,
                                const QString& owner) {
    setOwner(owner);
}

void NotifierWatcher::noteFirstOwner(const QString& owner) {
    if (presence_ == Presence::unknown) setOwner(owner);
}

void NotifierWatcher::noteNoOwner() {
    if (presence_ == Presence::unknown) setOwner({});
}

void NotifierWatcher::setOwner(const QString& owner) {
    hasHost_ = true;
    hosts_.reset();
    if (owner.isEmpty()) {
        presence_ = Presence::absent;
        emit vanished();
        return;
    }
    presence_ = Presence::present;
    askForHosts();
    emit appeared();
}

void NotifierWatcher::askForHosts() {
    connection_.callWithCallback(watcherCall("org.freedesktop.DBus.Properties", "Get",
                                             {serviceName, "IsStatusNotifierHostRegistered"}),
                                 this, SLOT(noteHasHost(QDBusVariant)), SLOT(ignoreError()));
    askBus("ListNames", {}, SLOT(noteNames(QStringList)));
}

void NotifierWatcher::noteHasHost(const QDBusVariant& hasHost) {
    hasHost_ = hasHost.variant().toBool();
    emit hostsChanged();
}

void NotifierWatcher::noteNames(const QStringList& names) {
    QStringList owners;
    for (const QString& name : names)
        if (name.startsWith(hostPrefix)) owners.append(name);
    // Some panels are their own watcher and host, and take no name for the second.
    if (owners.isEmpty()) owners.append(serviceName);
    foundHosts_.clear();
    missingHosts_ = owners.size();
    for (const QString& owner : owners)
        askBus("GetConnectionUnixProcessID", {owner}, SLOT(noteProcess(uint)),
               SLOT(noteNoProcess()));
}

void NotifierWatcher::noteProcess(uint process) {
    const QString program = programOf(process);
    if (!program.isEmpty() && !foundHosts_.contains(program)) foundHosts_.append(program);
    noteNoProcess();
}

// Replies of one bus come in the order of the calls: those to an earlier question are all there
// before the names of a later one are.
void NotifierWatcher::noteNoProcess() {
    if (--missingHosts_ != 0 || hosts_ == foundHosts_) return;
    hosts_ = foundHosts_;
    emit hostsChanged();
}

void NotifierWatcher::askBus(const QString& method, const QVariantList& arguments,
                             const char* answer, const char* failure) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method);
    call.setArguments(arguments);
    connection_.callWithCallback(call, this, answer, failure);
}

}  // namespace brimwatch
