// A home folder with accounts of Claude Code, all registered and with figures, and a model in it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
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
    static constexpr Instant start = instantFromUnixSeconds(1'790'000'000);

    ModelHome(std::int64_t accountCount, Histories histories);
    ModelHome(const ModelHome&) = delete;
    ModelHome& operator=(const ModelHome&) = delete;
    ~ModelHome();  // removes the folder

    HelperModel& model() { return *model_; }
    const std::vector<std::string>& files() const { return files_; }  // paths of limits files
    FileSystem& disk() { return disk_; }
    // A figure of each account that is one step higher than before.
    void raiseFigures();

  private:
    void makeAccount(const std::string& name);
    void writeFigures();
    void storeHistories();

    PosixFileSystem disk_;
    std::string home_;
    std::vector<std::string> keys_;
    std::vector<std::string> files_;
    test::MemorySettingsStore defaults_;
    test::VirtualTime time_{start};
    CommandEnvironment commandEnvironment_;
    std::vector<const char*> environment_ = {nullptr};
    double used_ = 30;
    std::unique_ptr<HelperModel> model_;
};

}  // namespace brimwatch::bench
