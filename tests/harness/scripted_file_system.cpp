#include "harness/scripted_file_system.h"

#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

namespace brimwatch::test {
namespace {

class ScriptedTemporaryFile final : public TemporaryFile {
  public:
    ScriptedTemporaryFile(ScriptedFileSystem& files, std::unique_ptr<TemporaryFile> inner)
        : files_(files), inner_(std::move(inner)) {}

    FileResult<void> write(std::string_view bytes) override {
        if (files_.stopsNow()) static_cast<void>(inner_->write(bytes.substr(0, bytes.size() / 2)));
        if (const auto error = files_.takeStep("write", "")) return tl::unexpected(error);
        return inner_->write(bytes);
    }
    FileResult<void> setOwner(std::uint32_t owner, std::uint32_t group) override {
        if (const auto error = files_.takeStep("setOwner", "")) return tl::unexpected(error);
        return inner_->setOwner(owner, group);
    }
    FileResult<void> setPermissions(std::uint32_t permissions) override {
        if (const auto error = files_.takeStep("setPermissions", "")) return tl::unexpected(error);
        return inner_->setPermissions(permissions);
    }
    FileResult<void> synchronize() override {
        if (const auto error = files_.takeStep("synchronize", "")) return tl::unexpected(error);
        return inner_->synchronize();
    }
    FileResult<void> replace(const std::string& path) override {
        if (const auto error = files_.takeStep("replace", path)) return tl::unexpected(error);
        return inner_->replace(path);
    }
    FileResult<void> claim(const std::string& path) override {
        if (const auto error = files_.takeStep("claim", path)) return tl::unexpected(error);
        return inner_->claim(path);
    }

  private:
    ScriptedFileSystem& files_;
    std::unique_ptr<TemporaryFile> inner_;
};

}  // namespace

void ScriptedFileSystem::failAtStep(std::size_t step, std::errc error) {
    failAt_ = step;
    error_ = std::make_error_code(error);
}

void ScriptedFileSystem::failEveryStepNamed(const std::string& name, std::errc error) {
    failingName_ = name;
    failingNameError_ = std::make_error_code(error);
}

void ScriptedFileSystem::failEveryRead(const std::string& path, std::errc error) {
    unreadablePath_ = path;
    unreadableError_ = std::make_error_code(error);
}

void ScriptedFileSystem::failEvery(const std::string& step, std::errc error) {
    failingSteps_[step] = std::make_error_code(error);
}

void ScriptedFileSystem::failNothing() {
    failAt_.reset();
    failingName_.clear();
    unreadablePath_.clear();
    failingSteps_.clear();
}

std::error_code ScriptedFileSystem::takeStep(const std::string& name, const std::string& path) {
    if (stopsNow()) ::_exit(stoppedStatus);
    if (crashAt_ == steps_.size()) throw Crash();
    if (interruption_) interruption_(steps_.size(), name);
    const bool fails = failAt_ == steps_.size();
    steps_.push_back(path.empty() ? name : name + ' ' + path);
    if (name == failingName_) return failingNameError_;
    const auto failing = failingSteps_.find(steps_.back());
    if (failing != failingSteps_.end()) return failing->second;
    return fails ? error_ : std::error_code();
}

FileResult<std::string> ScriptedFileSystem::read(const std::string& path,
                                                 std::size_t maximumBytes) {
    if (const auto error = takeStep("read", path)) return tl::unexpected(error);
    if (path == unreadablePath_) return tl::unexpected(unreadableError_);
    return inner_.read(path, maximumBytes);
}

FileResult<FileStatus> ScriptedFileSystem::status(const std::string& path) {
    if (const auto error = takeStep("status", path)) return tl::unexpected(error);
    return inner_.status(path);
}

FileResult<std::vector<std::string>> ScriptedFileSystem::entries(const std::string& folder) {
    if (const auto error = takeStep("entries", folder)) return tl::unexpected(error);
    if (entries_) return *entries_;
    return inner_.entries(folder);
}

FileResult<std::string> ScriptedFileSystem::linkTarget(const std::string& path) {
    if (const auto error = takeStep("linkTarget", path)) return tl::unexpected(error);
    return inner_.linkTarget(path);
}

FileResult<std::string> ScriptedFileSystem::realPath(const std::string& path) {
    if (const auto error = takeStep("realPath", path)) return tl::unexpected(error);
    return inner_.realPath(path);
}

FileResult<void> ScriptedFileSystem::addName(const std::string& path, const std::string& name) {
    if (const auto error = takeStep("addName", name)) return tl::unexpected(error);
    return inner_.addName(path, name);
}

FileResult<void> ScriptedFileSystem::remove(const std::string& path) {
    if (const auto error = takeStep("remove", path)) return tl::unexpected(error);
    return inner_.remove(path);
}

FileResult<void> ScriptedFileSystem::makeFolders(const std::string& folder) {
    if (const auto error = takeStep("makeFolders", folder)) return tl::unexpected(error);
    return inner_.makeFolders(folder);
}

FileResult<std::unique_ptr<FileLock>> ScriptedFileSystem::lock(const std::string& path,
                                                               LockWait wait) {
    const char* name = wait == LockWait::untilFree ? "lock until free" : "lock for two seconds";
    if (const auto error = takeStep(name, path)) return tl::unexpected(error);
    return inner_.lock(path, wait);
}

FileResult<std::unique_ptr<TemporaryFile>> ScriptedFileSystem::makeTemporary(
    const std::string& folder, std::uint32_t permissions) {
    if (const auto error = takeStep("makeTemporary", folder)) return tl::unexpected(error);
    FileResult<std::unique_ptr<TemporaryFile>> file = inner_.makeTemporary(folder, permissions);
    if (!file) return file;
    return std::make_unique<ScriptedTemporaryFile>(*this, *std::move(file));
}

void ScriptedFileSystem::removeAbandonedTemporaries(const std::string& folder) {
    if (!takeStep("removeAbandonedTemporaries", folder)) inner_.removeAbandonedTemporaries(folder);
}

FileResult<void> ScriptedFileSystem::synchronizeFolder(const std::string& folder) {
    if (const auto error = takeStep("synchronizeFolder", folder)) return tl::unexpected(error);
    return inner_.synchronizeFolder(folder);
}

bool isStopped(const std::function<void()>& action) {
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("can't fork");
    if (child == 0) {
        action();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == ScriptedFileSystem::stoppedStatus;
}

}  // namespace brimwatch::test
