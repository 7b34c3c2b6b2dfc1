#include "platform/linux/limits_changed_listener.h"

#include <QObject>
#include <utility>

#include "platform/posix/limits_changed_datagram.h"

namespace brimwatch {

LimitsChangedListener::LimitsChangedListener(const Environment& environment)
    : path_(limitsChangedSocket(environment)) {}

void LimitsChangedListener::listen(std::function<void()> received) {
    received_ = std::move(received);
    if (path_ && !socket_) bind();
}

void LimitsChangedListener::bind() {
    FileResult<std::unique_ptr<LimitsChangedSocket>> socket = LimitsChangedSocket::bind(*path_);
    if (!socket) return;
    socket_ = *std::move(socket);
    arrivals_.emplace(socket_->descriptor(), QSocketNotifier::Read);
    QObject::connect(&*arrivals_, &QSocketNotifier::activated, &*arrivals_, [this] { receive(); });
}

void LimitsChangedListener::receive() {
    const FileResult<std::size_t> count = socket_->drain();
    // A socket that can't be read would wake the loop for ever.
    if (!count) arrivals_->setEnabled(false);
    if (!count || *count == 0) return;
    const std::function<void()> received = received_;
    received();
}

}  // namespace brimwatch
