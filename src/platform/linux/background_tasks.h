// Work that nobody waits for, on a thread of its own: of each name only the latest task counts.
//
// A task that failed is tried again when the next one is submitted, by `retry` and by `flush`. The
// methods belong to one thread.
#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "support/file_system.h"

namespace brimwatch {

class BackgroundTasks {
  public:
    // Run on the other thread; must not throw.
    using Task = std::function<FileResult<void>()>;

    BackgroundTasks();
    BackgroundTasks(const BackgroundTasks&) = delete;
    BackgroundTasks& operator=(const BackgroundTasks&) = delete;
    ~BackgroundTasks();  // as `flush`

    // In place of a task of that name that has not begun.
    void submit(const std::string& name, Task task);
    void retry();
    // Waits until every task was tried; a failure of one of them.
    FileResult<void> flush();

  private:
    using Tasks = std::map<std::string, Task, std::less<>>;

    void run();
    void attempt(Tasks& tasks);

    std::mutex mutex_;
    std::condition_variable changed_;
    Tasks waiting_;
    bool isRequested_ = false;
    bool isRunning_ = false;
    bool isEnding_ = false;
    FileResult<void> lastResult_;
    std::thread thread_;  // the last member: it uses the others
};

}  // namespace brimwatch
