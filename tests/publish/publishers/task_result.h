// What became of a task that a test started.
#pragma once

#include <QCoroTask>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/spawn.h"
#include "platform/task_end.h"
#include "publish/publishers/cloud_failure.h"
#include "publish/publishers/publication_failure.h"

namespace brimwatch::test {

class TaskResult {
  public:
    explicit TaskResult(QCoro::Task<> task) { spawn(note(std::move(task), ended_)); }

    bool isOver() const { return ended_->has_value(); }
    bool succeeded() const { return isOver() && !failure(); }
    std::exception_ptr failure() const { return (*ended_)->failure; }
    // "" if it went well, "running" while it runs.
    std::string summary() const {
        if (!isOver()) return "running";
        return failure() ? failureSummary(failure()) : "";
    }

  private:
    using Ended = std::shared_ptr<std::optional<TaskOutcome>>;

    static QCoro::Task<> note(QCoro::Task<> task, Ended ended) {
        *ended = co_await outcomeOf(std::move(task));
    }

    Ended ended_ = std::make_shared<std::optional<TaskOutcome>>();
};

}  // namespace brimwatch::test
