#include "platform/linux/notifier_watcher.h"

#include <QFile>

namespace brimwatch {

namespace {

constexpr const char* serviceName = "org.kde.StatusNotifierWatcher";
constexpr const char* objectPath = "/StatusNotifierWatcher";
constexpr const char* hostPrefix = "org.kde.StatusNotifierHost-";

constexpr const char* ownerRule =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',"
    "arg0='org.kde.StatusNotifierWatcher'";
constexpr const char* newHostRule =
    "type='signal',path='/StatusNotifierWatcher',interface='org.kde.StatusNotifierWatcher',"
    "member='StatusNotifierHostRegistered'";
constexpr const char* goneHostRule =
    "type='signal',path='/StatusNotifierWatcher',interface='org.kde.StatusNotifierWatcher',"
    "member='StatusNotifierHostUnregistered'";

// Empty where it can't be told, as from within a sandbox.
QString programOf(std::uint32_t process) {
    QFile file(QStringLiteral("/proc/%1/comm").arg(process));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromLocal8Bit(file.readAll().trimmed());
}

BusMessage busCall(const EventLoopBus& bus, const char* method, const char* argument = nullptr) {
    BusMessage call = bus.newCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", method);
    if (call && argument != nullptr) sd_bus_message_append(call.get(), "s", argument);
    return call;
}

BusMessage watcherCall(const EventLoopBus& bus, const char* interface, const char* method) {
    BusMessage call = bus.newCall(serviceName, objectPath, interface, method);
    // A watcher that the bus could start belongs to a panel that is not there.
    if (call) sd_bus_message_set_auto_start(call.get(), 0);
    return call;
}

bool isError(sd_bus_message* answer) {
    return sd_bus_message_is_method_error(answer, nullptr) != 0;
}

}  // namespace

NotifierWatcher::NotifierWatcher(EventLoopBus& bus) : bus_(bus) {
    listen(ownerRule, noteOwnerChange);
    listen(newHostRule, noteHostChange);
    listen(goneHostRule, noteHostChange);
    askForOwner();
}

void NotifierWatcher::listen(const char* rule, sd_bus_message_handler_t hear) {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus_.get(), &slot, rule, hear, nullptr, this) >= 0)
        subscriptions_.emplace_back(slot);
}

void NotifierWatcher::registerItem(const std::string& service) const {
    const BusMessage call = watcherCall(bus_, serviceName, "RegisterStatusNotifierItem");
    if (!call) return;
    sd_bus_message_append(call.get(), "s", service.c_str());
    sd_bus_message_set_expect_reply(call.get(), 0);
    bus_.send(call);
}

int NotifierWatcher::noteOwnerChange(sd_bus_message* signal, void* watcher,
                                     sd_bus_error* /*error*/) {
    const char* owner = "";
    if (sd_bus_message_read(signal, "sss", nullptr, nullptr, &owner) > 0)
        static_cast<NotifierWatcher*>(watcher)->setOwner(*owner != '\0');
    return 0;
}

int NotifierWatcher::noteHostChange(sd_bus_message* /*signal*/, void* watcher,
                                    sd_bus_error* /*error*/) {
    static_cast<NotifierWatcher*>(watcher)->askForHosts();
    return 0;
}

void NotifierWatcher::askForOwner() {
    bus_.call(busCall(bus_, "GetNameOwner", serviceName), this, [this](sd_bus_message* answer) {
        if (presence_ == Presence::unknown) setOwner(!isError(answer));
    });
}

void NotifierWatcher::setOwner(bool isThere) {
    hasHost_ = true;
    hosts_.reset();
    if (!isThere) {
        presence_ = Presence::absent;
        emit vanished();
        return;
    }
    presence_ = Presence::present;
    askForHosts();
    emit appeared();
}

void NotifierWatcher::askForHosts() {
    askWhetherThereIsAHost();
    askForNames();
}

void NotifierWatcher::askWhetherThereIsAHost() {
    const BusMessage call = watcherCall(bus_, "org.freedesktop.DBus.Properties", "Get");
    if (!call) return;
    sd_bus_message_append(call.get(), "ss", serviceName, "IsStatusNotifierHostRegistered");
    bus_.call(call, this, [this](sd_bus_message* answer) {
        int hasHost = 0;
        if (sd_bus_message_read(answer, "v", "b", &hasHost) <= 0) return;
        hasHost_ = hasHost != 0;
        emit hostsChanged();
    });
}

void NotifierWatcher::askForNames() {
    bus_.call(busCall(bus_, "ListNames"), this, [this](sd_bus_message* answer) {
        if (isError(answer)) return;
        std::vector<std::string> names;
        const char* name = nullptr;
        sd_bus_message_enter_container(answer, 'a', "s");
        while (sd_bus_message_read_basic(answer, 's', &name) > 0)
            names.emplace_back(name);
        noteNames(names);
    });
}

void NotifierWatcher::noteNames(const std::vector<std::string>& names) {
    std::vector<std::string> owners;
    for (const std::string& name : names)
        if (name.starts_with(hostPrefix)) owners.push_back(name);
    // Some panels are their own watcher and host, and take no name for the second.
    if (owners.empty()) owners.emplace_back(serviceName);
    foundHosts_.clear();
    missingHosts_ = owners.size();
    for (const std::string& owner : owners)
        askForProcess(owner);
}

void NotifierWatcher::askForProcess(const std::string& owner) {
    const BusMessage call = busCall(bus_, "GetConnectionUnixProcessID", owner.c_str());
    bus_.call(call, this, [this](sd_bus_message* answer) {
        std::uint32_t process = 0;
        const bool isTold = !isError(answer) && sd_bus_message_read(answer, "u", &process) > 0;
        noteProgram(isTold ? programOf(process) : QString());
    });
}

// Replies of one bus come in the order of the calls: those to an earlier question are all there
// before the names of a later one are.
void NotifierWatcher::noteProgram(const QString& program) {
    if (!program.isEmpty() && !foundHosts_.contains(program)) foundHosts_.append(program);
    if (--missingHosts_ != 0 || hosts_ == foundHosts_) return;
    hosts_ = foundHosts_;
    emit hostsChanged();
}

}  // namespace brimwatch
