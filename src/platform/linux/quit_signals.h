// The signals that ask a program to end.
#pragma once

#include <QSocketNotifier>
#include <optional>

#include "platform/posix/file_descriptor.h"

namespace brimwatch {

// While it lives, SIGINT, SIGTERM and SIGHUP quit the application from its event loop. A second one
// of the kind ends the process at once, as if this were not there. One that was ignored before
// stays so. One object at a time. Main thread.
class QuitSignals {
  public:
    QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;
    ~QuitSignals();

  private:
    FileDescriptor event_;
    std::optional<QSocketNotifier> notifier_;
};

}  // namespace brimwatch
