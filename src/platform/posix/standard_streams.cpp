#include "platform/posix/standard_streams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/posix/retry.h"

namespace brimwatch {
namespace {

constexpr std::size_t firstBufferSize = 4096;

bool waitFor(int descriptor, short event) {
    pollfd entry{.fd = descriptor, .events = event, .revents = 0};
    return retryOnInterrupt([&entry] { return ::poll(&entry, 1, -1); }) > 0;
}

// A descriptor that another process made non-blocking is waited for.
bool isWorthRepeating(int descriptor, short event) {
    return (errno == EAGAIN || errno == EWOULDBLOCK) && waitFor(descriptor, event);
}

void writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            retryOnInterrupt([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (count == 0 || !isWorthRepeating(descriptor, POLLOUT)) {
            return;
        }
    }
}

}  // namespace

void holdStandardDescriptors() {
    int descriptor = 0;
    do {
        descriptor = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO) ::close(descriptor);
}

std::string readStandardInput() {
    std::string input(firstBufferSize, '\0');
    std::size_t filled = 0;
    while (true) {
        const ssize_t count = retryOnInterrupt(
            [&] { return ::read(STDIN_FILENO, input.data() + filled, input.size() - filled); });
        if (count < 0 && isWorthRepeating(STDIN_FILENO, POLLIN)) continue;
        if (count <= 0) break;
        filled += static_cast<std::size_t>(count);
        if (filled == input.size()) input.resize(2 * input.size());
    }
    input.resize(filled);
    return input;
}

void writeStandardOutput(std::string_view bytes) {
    writeAll(STDOUT_FILENO, bytes);
}

void writeStandardError(std::string_view bytes) {
    writeAll(STDERR_FILENO, bytes);
}

}  // namespace brimwatch
