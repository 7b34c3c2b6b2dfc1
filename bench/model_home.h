// A home folder with accounts of Claude Code, all registered and with figures, and a model in it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/helper_model.h"
#include "core/memory_settings_store.h"
#include "core/virtual_time.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch::bench {

enum class Histories {
    none,
    fullDay,  // 300 samples an account, as after a day of work
};

class ModelHome {
  public:
    inline static const std::string program = "/opt/tools/bin/brimwatch";
    static constexpr Instant start = instantFromUnixSeconds(1'790'000'000);

    using MakeStore = std::function<std::unique_ptr<SettingsStore>(const std::string& folder)>;

    // On the disk, with settings in memory, and without services.
    ModelHome(std::int64_t accountCount, Histories histories);
    // With services, as in real life: it asks Codex, and looks around every minute. The store may
    // use the folder that it is told. The file system must outlive this.
    ModelHome(std::int64_t claudeCount, std::int64_t codexCount, FileSystem& files,
              const MakeStore& makeStore);
    ModelHome(const ModelHome&) = delete;
    ModelHome& operator=(const ModelHome&) = delete;
    ~ModelHome();  // removes the folder

    HelperModel& model() { return *model_; }
    SettingsStore& settings() { return *defaults_; }
    // The status line runs that happened before are told of, and time passes.
    void advance(std::chrono::seconds duration);
    const std::vector<std::string>& files() const { return files_; }  // paths of limits files
    FileSystem& disk() { return disk_; }
    // Status line runs report for each account a figure that is one step higher than before, and so
    // does Codex.
    void raiseFigures();

  private:
    enum class Services { absent, present };

    // Doors that lead nowhere, but for the word that figures changed.
    struct Doors final : FolderWatch, LimitsChangedBroadcast, LoginItem, AgentStopper {
        void watch(const std::string&, std::function<void()> told) override {
            changed = std::move(told);
        }
        void listen(std::function<void()>) override {}
        bool isEnabled() override { return false; }
        FileResult<void> setEnabled(bool) override { return {}; }
        void stop(const std::string&) override {}
        std::function<void()> changed;
    };

    void makeHome();
    void startModel(FileSystem& files, Services services);
    QCoro::Task<CodexReadResult> answer();
    void makeAccount(const std::string& name);
    LimitsFile::Windows figures() const;
    void writeFigures();
    void storeHistories();

    PosixFileSystem disk_;
    std::string home_;
    std::vector<std::string> keys_;
    std::vector<std::string> files_;
    std::unique_ptr<SettingsStore> defaults_ = std::make_unique<test::MemorySettingsStore>();
    Doors doors_;
    test::VirtualTime time_{start};
    CommandEnvironment commandEnvironment_{
        .executable = program,
        .installedCandidates = {},
        .rejectDevelopmentLocations = true,
        .isExecutable = [](const std::string& path) { return path == program; }};
    std::vector<const char*> environment_ = {nullptr};
    double used_ = 30;
    bool isReported_ = false;
    std::unique_ptr<HelperModel> model_;
};

}  // namespace brimwatch::bench
