// Lets one caller at a time pass, in the order of their coming.
//
// A caller is a coroutine that holds a ticket: it awaits the ticket's turn, and the next one's
// comes when the ticket goes. Main thread, while there is an application.
#pragma once

#include <QDeadlineTimer>
#include <QTimer>
#include <deque>

#include "platform/linux/event_loop_wait.h"

namespace brimwatch {

class CallQueue {
  public:
    class Ticket {
      public:
        enum class End {
            turn,
            late,       // the deadline came first
            cancelled,  // the queue was closed, or the application quits
        };

        // The queue must outlive the ticket.
        Ticket(CallQueue& queue, QDeadlineTimer deadline);
        Ticket(const Ticket&) = delete;
        Ticket& operator=(const Ticket&) = delete;
        ~Ticket();

        EventLoopWait& wait() { return wait_; }
        // Once the wait is over.
        End end() const { return end_; }

      private:
        friend CallQueue;

        void finish(End end);

        CallQueue& queue_;
        bool isOver_ = false;
        End end_ = End::turn;
        QTimer deadline_;
        EventLoopWait wait_;
    };

    CallQueue() = default;
    CallQueue(const CallQueue&) = delete;
    CallQueue& operator=(const CallQueue&) = delete;
    ~CallQueue() = default;

    // Nobody passes any more.
    void close();
    bool isClosed() const { return isClosed_; }

  private:
    void callNext();

    std::deque<Ticket*> tickets_;  // the first one's turn it is
    bool isClosed_ = false;
};

}  // namespace brimwatch
