// A model with everything around it in the hands of a test: a home folder of its own, settings in
// memory, time that passes when told, and a scripted Codex.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/helper_model.h"
#include "harness/environment_list.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "memory_settings_store.h"
#include "platform/posix/posix_file_system.h"
#include "scripted_codex.h"
#include "virtual_time.h"

namespace brimwatch::test {

// Doors that do what a test says.
struct ScriptedServices {
    struct Watch final : FolderWatch {
        void watch(const std::string& watched, std::function<void()> told) override {
            folder = watched;
            changed = std::move(told);
        }
        std::string folder;
        std::function<void()> changed;
    };
    struct Broadcast final : LimitsChangedBroadcast {
        void listen(std::function<void()> told) override { received = std::move(told); }
        std::function<void()> received;
    };
    struct Login final : LoginItem {
        bool isEnabled() override { return enabled; }
        FileResult<void> setEnabled(bool wanted) override {
            if (error) return tl::unexpected(*error);
            enabled = wanted;
            return {};
        }
        bool enabled = false;
        std::optional<std::error_code> error;
    };
    struct Agents final : AgentStopper {
        void stop(const std::string& definition) override { stopped.push_back(definition); }
        std::vector<std::string> stopped;
    };

    HelperModel::SystemServices doors() { return {watch, broadcast, login, agents}; }

    Watch watch;
    Broadcast broadcast;
    Login login;
    Agents agents;
};

class ModelFixture : public ::testing::Test {
  protected:
    static constexpr double startSeconds = 1'790'000'000;  // 2026-09-21
    inline static const std::string program = "/opt/tools/bin/brimwatch";

    // What a model is made with; a test may change it before `start`.
    HelperModel::Surroundings surroundings();
    HelperModel::Surroundings surroundingsWithServices();

    // In place of the former model, which is destroyed first, as at a new start of the program.
    HelperModel& start();
    HelperModel& startWithServices();
    HelperModel& start(HelperModel::Surroundings surroundings);
    HelperModel& model() { return *model_; }

    // Starts with that JSON text stored under the key, and counts what is written from then on.
    HelperModel& startWith(std::string_view key, std::string_view json);

    // Folders below the home, by names as ".claude-work" and ".codex-work".
    std::string path(std::string_view name) const { return home_ + '/' + std::string(name); }
    std::string makeClaudeFolder(std::string_view name);      // not registered yet
    std::string makeRegisteredFolder(std::string_view name);  // as this program registers itself
    std::string makeCodexFolder(std::string_view name);
    // As Claude Code does once it knows the plan of the account.
    static void storeTier(const std::string& folder, std::string_view tier);
    // Whose status line is ours now.
    static bool isRegistered(const std::string& folder);

    std::string limitsFile(const std::string& id) const;
    // Writes a limits file with both windows, used to those percentages, reset in two hours and in
    // four days, as its writer would.
    void writeLimits(const std::string& id, double fiveHour, double sevenDay);
    LimitsFile figures(const std::string& id, double fiveHour, double sevenDay) const;
    void writeLimits(const LimitsFile& file);

    // The ids in `limits`, and the used weekly percentage of one of them.
    std::vector<std::string> shownIds();
    std::optional<double> shownWeekly(const std::string& id);

    Instant now() const { return time_.now(); }
    void advance(std::chrono::milliseconds duration) { time_.advance(duration); }

    TemporaryFolder folder_;
    std::string home_ = folder_.file("home");
    std::set<std::string> executables_ = {program};
    EnvironmentList environment_ = {{"PATH", "/usr/bin:/bin"}};
    PosixFileSystem disk_;
    ScriptedFileSystem files_{disk_};
    MemorySettingsStore defaults_;
    VirtualTime time_{instantFromUnixSeconds(startSeconds)};
    ScriptedServices services_;
    // What the model outlives, last made and first destroyed.
    std::unique_ptr<HelperModel> model_;
    ScriptedCodex codex_;
};

// The fields of a model that told of a change, by name and in order.
class SignalLog {
  public:
    explicit SignalLog(HelperModel& model);
    // Those since the last call.
    std::vector<std::string> take() { return std::exchange(*names_, {}); }

  private:
    std::shared_ptr<std::vector<std::string>> names_ = std::make_shared<std::vector<std::string>>();
};

// How often each of the chosen signals was sent since the counter was made.
class SignalCount {
  public:
    SignalCount(HelperModel& model, void (HelperModel::*signal)());
    int count() const { return *count_; }

  private:
    std::shared_ptr<int> count_ = std::make_shared<int>(0);
};

}  // namespace brimwatch::test
