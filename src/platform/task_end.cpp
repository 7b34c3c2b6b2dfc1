#include "platform/task_end.h"

#include <coroutine>
#include <utility>
#include <vector>

namespace brimwatch {

struct TaskEnd::State {
    // NOLINTBEGIN(readability-identifier-naming): the names are the language's
    struct Wait {
        bool await_ready() const { return state->isReached; }
        void await_suspend(std::coroutine_handle<> waiting) const {
            state->waiting.push_back(waiting);
        }
        void await_resume() const {}

        State* state;
    };
    // NOLINTEND(readability-identifier-naming)

    bool isReached = false;
    std::exception_ptr failure;
    std::vector<std::coroutine_handle<>> waiting;
};

TaskEnd::TaskEnd() : state_(std::make_shared<State>()) {}

bool TaskEnd::isReached() const {
    return state_->isReached;
}

void TaskEnd::reach(std::exception_ptr failure) const {
    const std::shared_ptr<State> state = state_;
    state->isReached = true;
    state->failure = std::move(failure);
    const std::vector<std::coroutine_handle<>> waiting = std::exchange(state->waiting, {});
    for (const std::coroutine_handle<> one : waiting)
        one.resume();
}

QCoro::Task<> TaskEnd::wait() const {
    return waitFor(state_);
}

QCoro::Task<> TaskEnd::waitFor(std::shared_ptr<State> state) {
    const State::Wait wait{state.get()};
    co_await wait;
    if (state->failure) std::rethrow_exception(state->failure);
}

QCoro::Task<TaskOutcome> outcomeOf(QCoro::Task<> task) {
    TaskOutcome outcome;
    try {
        co_await std::move(task);
    } catch (...) {
        outcome.failure = std::current_exception();
    }
    co_return outcome;
}

}  // namespace brimwatch
