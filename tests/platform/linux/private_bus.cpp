#include "platform/linux/private_bus.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace brimwatch::test {
namespace {

constexpr const char* daemonProgram = "/usr/bin/dbus-daemon";

std::string configuration(const std::string& address, const std::string& services) {
    return "<busconfig><type>session</type><listen>" + address +
           "</listen><auth>EXTERNAL</auth><servicedir>" + services +
           "</servicedir><policy context=\"default\"><allow send_destination=\"*\"/>"
           "<allow receive_sender=\"*\"/><allow own=\"*\"/></policy></busconfig>";
}

bool takesConnections(const std::string& path) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    const int result = ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address);
    ::close(socket);
    return result == 0;
}

}  // namespace

PrivateBus::PrivateBus() {
    std::filesystem::create_directories(folder_.file("services"));
    writeFile(folder_.file("bus.conf"), configuration(addressText(), folder_.file("services")));
    start();
}

void PrivateBus::start() {
    daemon_.emplace(ProcessRequest{
        .program = daemonProgram,
        .arguments = {"--nofork", "--nopidfile", "--config-file=" + folder_.file("bus.conf")},
        .input = {},
        .prepare = [] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }});
    if (!eventually([this] { return takesConnections(path()); }))
        throw std::runtime_error("no message bus: " + daemon_->wait().errorOutput);
}

void PrivateBus::kill() {
    daemon_.reset();
    std::filesystem::remove(path());
}

void PrivateBus::offer(const std::string& service) {
    writeFile(folder_.file("services/" + service + ".service"),
              "[D-BUS Service]\nName=" + service + "\nExec=/usr/bin/touch " + mark(service) + "\n");
    daemon_->signal(SIGHUP);  // lets it read the folder anew
}

bool PrivateBus::hasStarted(const std::string& service) const {
    return exists(mark(service));
}

}  // namespace brimwatch::test
