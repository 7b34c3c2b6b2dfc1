// Ends of tasks: for several that wait for one, and for one that must know how another ended. Main
// thread.
#pragma once

#include <QCoroTask>
#include <exception>
#include <memory>

namespace brimwatch {

// The end of a task that any number of others may wait for.
//
// Copies stand for the same end. Those that wait go on from within the call that tells of it, in
// the order in which they began to wait. Whoever holds a copy may go away meanwhile.
class TaskEnd {
  public:
    TaskEnd();

    bool isReached() const;
    // Once. With a failure, each wait throws it.
    void reach(std::exception_ptr failure = nullptr) const;
    // Over at once if the end was reached before.
    QCoro::Task<> wait() const;

  private:
    struct State;

    static QCoro::Task<> waitFor(std::shared_ptr<State> state);

    std::shared_ptr<State> state_;
};

struct TaskOutcome {
    std::exception_ptr failure;  // null: it went well
};

// Lets the task run to its end, and never throws.
QCoro::Task<TaskOutcome> outcomeOf(QCoro::Task<> task);

}  // namespace brimwatch
