#include "platform/linux/background_tasks.h"

#include <utility>

namespace brimwatch {

BackgroundTasks::BackgroundTasks() : thread_([this] { run(); }) {}

BackgroundTasks::~BackgroundTasks() {
    {
        const std::lock_guard lock(mutex_);
        isRequested_ = true;
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void BackgroundTasks::submit(const std::string& name, Task task) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.insert_or_assign(name, std::move(task));
        isRequested_ = true;
    }
    changed_.notify_all();
}

void BackgroundTasks::retry() {
    {
        const std::lock_guard lock(mutex_);
        isRequested_ = true;
    }
    changed_.notify_all();
}

FileResult<void> BackgroundTasks::flush() {
    std::unique_lock lock(mutex_);
    isRequested_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isRequested_ && !isRunning_; });
    return lastResult_;
}

void BackgroundTasks::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return isRequested_ || isEnding_; });
        if (!isRequested_) return;
        isRequested_ = false;
        isRunning_ = true;
        lastResult_ = {};
        Tasks tasks = std::exchange(waiting_, {});
        lock.unlock();
        attempt(tasks);
        lock.lock();
        isRunning_ = false;
        changed_.notify_all();
    }
}

void BackgroundTasks::attempt(Tasks& tasks) {
    for (auto& [name, task] : tasks) {
        const FileResult<void> result = task();
        if (result) continue;
        const std::lock_guard lock(mutex_);
        lastResult_ = result;
        waiting_.emplace(name, std::move(task));
    }
}

}  // namespace brimwatch
