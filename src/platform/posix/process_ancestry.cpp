#include "platform/posix/process_ancestry.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/retry.h"

namespace brimwatch {
namespace {

constexpr int ancestorsLookedAt = 8;

// The beginning of a file of /proc; enough for what is looked for in it.
class ProcFile {
  public:
    explicit ProcFile(const std::string& path) {
        const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        if (!file.isOpen()) return;
        const ssize_t count =
            retryOnInterrupt([&] { return ::read(file.get(), buffer_.data(), buffer_.size()); });
        if (count > 0) length_ = static_cast<std::size_t>(count);
    }

    std::string_view text() const { return {buffer_.data(), length_}; }

  private:
    std::array<char, 4096> buffer_{};
    std::size_t length_ = 0;
};

std::string procPath(pid_t process, std::string_view name) {
    std::string path = "/proc/" + std::to_string(process) + '/';
    path += name;
    return path;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The arguments stand one after the other, each with a NUL behind it.
bool isInStatusLineMode(pid_t process) {
    const ProcFile file(procPath(process, "cmdline"));
    std::string_view rest = file.text();
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) return false;
    rest.remove_prefix(end + 1);
    return rest.substr(0, rest.find('\0')) == "--statusline";
}

// From proc(5): "pid (name) state ppid". The name may hold anything, also a parenthesis.
std::optional<pid_t> parentOf(pid_t process) {
    const ProcFile file(procPath(process, "stat"));
    std::string_view text = file.text();
    const std::size_t nameEnd = text.rfind(')');
    constexpr std::size_t stateLength = std::string_view(") S ").size();
    if (nameEnd == std::string_view::npos || text.size() < nameEnd + stateLength) {
        return std::nullopt;
    }
    text.remove_prefix(nameEnd + stateLength);
    pid_t parent = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), parent);
    if (result.ec != std::errc()) return std::nullopt;
    return parent;
}

}  // namespace

bool hasStatusLineAncestor() {
    struct stat own {};
    if (::stat("/proc/self/exe", &own) != 0) return false;
    std::optional<pid_t> ancestor = ::getppid();
    for (int count = 0; count < ancestorsLookedAt && ancestor && *ancestor > 0; ++count) {
        struct stat executable {};
        if (::stat(procPath(*ancestor, "exe").c_str(), &executable) == 0 &&
            isSameFile(executable, own) && isInStatusLineMode(*ancestor)) {
            return true;
        }
        ancestor = parentOf(*ancestor);
    }
    return false;
}

}  // namespace brimwatch
