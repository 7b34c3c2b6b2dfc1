// A file system that does what a test says: it records every step, fails one of them, or ends the
// process before one of them, as a crash would.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "support/file_system.h"

namespace brimwatch::test {

class ScriptedFileSystem final : public FileSystem {
  public:
    explicit ScriptedFileSystem(FileSystem& inner) : inner_(inner) {}

    // The steps so far: a name and a path, as in "read /a/b".
    const std::vector<std::string>& steps() const { return steps_; }

    // Makes the step with that number, counted from 0, fail without being carried out.
    void failAtStep(std::size_t step, std::errc error);
    // Makes every step of that name fail.
    void failEveryStepNamed(const std::string& name, std::errc error);
    // Makes every reading of that file fail.
    void failEveryRead(const std::string& path, std::errc error);
    // Makes every such step fail, given as `steps` records it.
    void failEvery(const std::string& step, std::errc error);
    // Takes back every failure that was asked for.
    void failNothing();
    // Ends the process instead of taking that step, with exit status `stoppedStatus`. A write is
    // carried out for its first half.
    void stopAtStep(std::size_t step) { stopAt_ = step; }
    static constexpr int stoppedStatus = 99;
    // Throws `Crash` instead of taking that step, for file systems that live in memory.
    struct Crash {};
    void crashAtStep(std::size_t step) { crashAt_ = step; }
    // What `entries` gives of every folder from now on.
    void answerEntries(std::vector<std::string> names) { entries_ = std::move(names); }

    // What another program might do between two steps: it is told the number and the name of the
    // step that comes next.
    using Interruption = std::function<void(std::size_t step, const std::string& name)>;
    void interruptBeforeEachStep(Interruption interruption) {
        interruption_ = std::move(interruption);
    }

    FileResult<std::string> read(const std::string& path, std::size_t maximumBytes) override;
    FileResult<FileStatus> status(const std::string& path) override;
    FileResult<std::vector<std::string>> entries(const std::string& folder) override;
    FileResult<std::string> linkTarget(const std::string& path) override;
    FileResult<std::string> realPath(const std::string& path) override;
    FileResult<void> addName(const std::string& path, const std::string& name) override;
    FileResult<void> remove(const std::string& path) override;
    FileResult<void> makeFolders(const std::string& folder) override;
    FileResult<std::unique_ptr<FileLock>> lock(const std::string& path, LockWait wait) override;
    FileResult<std::unique_ptr<TemporaryFile>> makeTemporary(const std::string& folder,
                                                             std::uint32_t permissions) override;
    void removeAbandonedTemporaries(const std::string& folder) override;
    FileResult<void> synchronizeFolder(const std::string& folder) override;

    // Whether the step that comes next is the one to stop at.
    bool stopsNow() const { return stopAt_ == steps_.size(); }
    // Records the step; gives its error if it is to fail, and does not return if it is to stop.
    std::error_code takeStep(const std::string& name, const std::string& path);

  private:
    FileSystem& inner_;
    std::vector<std::string> steps_;
    std::optional<std::size_t> stopAt_;
    std::optional<std::size_t> crashAt_;
    std::optional<std::size_t> failAt_;
    std::error_code error_;
    std::string failingName_;
    std::error_code failingNameError_;
    std::string unreadablePath_;
    std::error_code unreadableError_;
    std::map<std::string, std::error_code> failingSteps_;
    Interruption interruption_;
    std::optional<std::vector<std::string>> entries_;
};

// Runs the action in a process of its own, and tells whether `stopAtStep` ended it.
bool isStopped(const std::function<void()>& action);

}  // namespace brimwatch::test
