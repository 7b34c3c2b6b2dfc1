// What a coroutine waits for while the event loop of Qt runs: an end that something in the loop
// tells of, or that of the application.
//
// At the end the coroutine goes on from the event loop, not from within what told of it. When the
// application quits or goes away it goes on at once, for there will be no event loop any more.
// Main thread, while there is an application.
#pragma once

#include <QObject>
#include <QTimer>
#include <coroutine>
#include <functional>

namespace brimwatch {

class EventLoopWait {
  public:
    // `cancelled` is called if the application ends first, before the coroutine goes on.
    explicit EventLoopWait(std::function<void()> cancelled);

    void end();

    // What a coroutine awaits; one at a time. It stands apart from the wait because GCC 12 copies
    // what is awaited.
    class End {
      public:
        explicit End(EventLoopWait& wait) : wait_(&wait) {}

        // NOLINTBEGIN(readability-identifier-naming): the names are the language's
        bool await_ready() const { return wait_->hasEnded_; }
        void await_suspend(std::coroutine_handle<> waiting) const { wait_->waiting_ = waiting; }
        void await_resume() const {}
        // NOLINTEND(readability-identifier-naming)

      private:
        EventLoopWait* wait_;
    };

  private:
    void cancel();
    void resume();

    std::function<void()> cancelled_;
    std::coroutine_handle<> waiting_;
    bool hasEnded_ = false;
    QTimer resumption_;
    QObject context_;  // what is connected to this goes with it
};

}  // namespace brimwatch
