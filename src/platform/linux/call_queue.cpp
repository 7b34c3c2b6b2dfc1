#include "platform/linux/call_queue.h"

#include <deque>

namespace brimwatch {

CallQueue::Ticket::Ticket(CallQueue& queue, QDeadlineTimer deadline)
    : queue_(queue), wait_([this] { finish(End::cancelled); }) {
    queue_.tickets_.push_back(this);
    if (queue_.isClosed_) finish(End::cancelled);
    deadline_.setSingleShot(true);
    QObject::connect(&deadline_, &QTimer::timeout, &deadline_, [this] { finish(End::late); });
    if (!isOver_) deadline_.start(static_cast<int>(deadline.remainingTime()));
    queue_.callNext();
}

CallQueue::Ticket::~Ticket() {
    std::erase(queue_.tickets_, this);
    queue_.callNext();
}

void CallQueue::Ticket::finish(End end) {
    if (isOver_) return;
    isOver_ = true;
    end_ = end;
    deadline_.stop();
    wait_.end();
}

void CallQueue::close() {
    isClosed_ = true;
    for (Ticket* ticket : tickets_)
        ticket->finish(Ticket::End::cancelled);
}

void CallQueue::callNext() {
    if (!tickets_.empty()) tickets_.front()->finish(Ticket::End::turn);
}

}  // namespace brimwatch
