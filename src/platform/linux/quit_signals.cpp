#include "platform/linux/quit_signals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace brimwatch {
namespace {

constexpr std::array quitSignals = {SIGINT, SIGTERM, SIGHUP};

// Of the object that lives; the only thing that a handler may look at.
std::atomic<int> eventOfHandlers = -1;

void requestQuit(int /*signal*/) {
    const int formerError = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(eventOfHandlers.load(), &one, sizeof one);
    errno = formerError;
}

void handle(int signal, void (*handler)(int), unsigned flags) {
    struct sigaction former {};
    if (::sigaction(signal, nullptr, &former) != 0 || former.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(flags);
    ::sigaction(signal, &action, nullptr);
}

}  // namespace

QuitSignals::QuitSignals() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event_.isOpen()) return;
    eventOfHandlers = event_.get();
    notifier_.emplace(event_.get(), QSocketNotifier::Read);
    QObject::connect(&*notifier_, &QSocketNotifier::activated, QCoreApplication::instance(),
                     [this] {
                         notifier_->setEnabled(false);
                         QCoreApplication::quit();
                     });
    for (const int signal : quitSignals)
        handle(signal, requestQuit, unsigned{SA_RESTART} | unsigned{SA_RESETHAND});
}

QuitSignals::~QuitSignals() {
    if (!event_.isOpen()) return;
    for (const int signal : quitSignals)
        handle(signal, SIG_DFL, 0);
    eventOfHandlers = -1;
}

}  // namespace brimwatch
