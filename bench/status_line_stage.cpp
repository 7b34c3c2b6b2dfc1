#include "bench/status_line_stage.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "bench/file_bytes.h"

namespace brimwatch::bench {
namespace {

constexpr std::int64_t hourSeconds = 3600;
constexpr std::int64_t daySeconds = 24 * hourSeconds;

// Replaces the reset time of a window of the document.
void setReset(std::string& document, std::string_view window, std::int64_t seconds) {
    constexpr std::string_view key = "\"resets_at\":";
    const std::size_t member = document.find("\"" + std::string(window) + "\":{");
    const std::size_t found = document.find(key, std::min(member, document.size()));
    if (found == std::string::npos) throw std::runtime_error("a document without reset times");
    const std::size_t number = found + key.size();
    const std::size_t end = document.find_first_not_of("0123456789", number);
    document.replace(number, end - number, std::to_string(seconds));
}

std::string temporaryFolder(const std::string& parent) {
    std::string path = parent + "/brimwatch-bench-XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
    return path;
}

}  // namespace

StatusLineStage::StatusLineStage(std::string document, const std::string& parent)
    : document_(std::move(document)),
      folder_(temporaryFolder(parent)),
      sevenDayReset_(std::time(nullptr) + 4 * daySeconds),
      fiveHourReset_(std::time(nullptr) + 2 * hourSeconds) {
    writeDocument(steadyDocument(), fiveHourReset_);
    writeDocument(movingDocument(), fiveHourReset_);
    listen();
}

StatusLineStage::~StatusLineStage() {
    ::close(socket_);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

void StatusLineStage::moveFigures() {
    writeDocument(movingDocument(), ++fiveHourReset_);
}

std::string StatusLineStage::install(const std::string& program) const {
    const std::filesystem::path copy = file(std::filesystem::path(program).filename().string());
    std::filesystem::copy_file(program, copy);
    return copy.string();
}

std::vector<std::string> StatusLineStage::environment(std::string_view home) const {
    const std::filesystem::path settings = file(home) + "/.config/brimwatch/settings.json";
    std::filesystem::create_directories(settings.parent_path());
    writeFile(settings.string(), R"({"usageDisplay": "remaining"})");
    return {"PATH=/usr/local/bin:/usr/bin:/bin", "LANG=C.UTF-8", "HOME=" + file(home),
            "XDG_RUNTIME_DIR=" + folder_};
}

void StatusLineStage::forgetFigures(std::string_view home) const {
    std::filesystem::remove(file(home) + "/.brimwatch/limits/claude-default.json");
}

int StatusLineStage::takeDatagrams() const {
    std::array<char, 64> buffer{};
    int count = 0;
    while (::recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT) >= 0)
        ++count;
    return count;
}

void StatusLineStage::listen() {
    const std::string path = file("net.quillmoor.brimwatch.limitsChanged");
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) throw std::runtime_error("too long: " + path);
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), &address.sun_path[0]);
    socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error("can't listen at " + path);
    }
}

void StatusLineStage::writeDocument(const std::string& path, std::int64_t fiveHourReset) const {
    std::string document = document_;
    setReset(document, "five_hour", fiveHourReset);
    setReset(document, "seven_day", sevenDayReset_);
    writeFile(path, document);
}

}  // namespace brimwatch::bench
