// Hearing of the broadcast of status line runs in the event loop.
//
// A burst of datagrams gives one call each time that the loop gets to them, and a thousand of them
// are taken at most before the loop goes on with other things. Without a runtime folder, and while
// another process listens, nothing comes; each call of `listen` tries again. The listener may be
// destroyed from within its own call. Main thread, while there is an application.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/limits_changed_broadcast.h"
#include "platform/posix/limits_changed_socket.h"
#include "support/environment.h"

namespace brimwatch {

class LimitsChangedListener final : public LimitsChangedBroadcast {
  public:
    explicit LimitsChangedListener(const Environment& environment);

    void listen(std::function<void()> received) override;

  private:
    void bind();
    void receive();

    std::optional<std::string> path_;
    std::function<void()> received_;
    std::unique_ptr<LimitsChangedSocket> socket_;
    std::optional<QSocketNotifier> arrivals_;
};

}  // namespace brimwatch
