// What the application writes on a day, by kind of file. The day is simulated, the files are real;
// after each minute the store writes what it has to, so that nothing is counted as one that would
// have been two.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "bench/counting_file_system.h"
#include "bench/model_home.h"
#include "platform/linux/json_settings_store.h"

namespace brimwatch::bench {
namespace {

using namespace std::chrono_literals;

constexpr int minutesOfADay = 24 * 60;

class Day {
  public:
    Day(int claudeAccounts, int codexAccounts)
        : home_(claudeAccounts, codexAccounts, files_, [this](const std::string& folder) {
              return std::make_unique<JsonSettingsStore>(files_, folder + "/config/settings.json",
                                                         folder + "/state");
          }) {}

    ModelHome& home() { return home_; }

    // What each minute brings is told its number.
    void pass(const std::function<void(int minute)>& minute) {
        files_.forget();
        for (int number = 0; number < minutesOfADay; ++number) {
            minute(number);
            home_.advance(60s);
            if (!home_.settings().flush()) std::abort();
        }
    }

    void print(const char* name) const {
        CountingFileSystem::Written all;
        std::map<std::string, CountingFileSystem::Written> kinds;
        for (const auto& [file, written] : files_.written()) {
            const bool isLimits = file.starts_with("claude-") || file.starts_with("codex-");
            CountingFileSystem::Written& kind = kinds[isLimits ? "limits files" : file];
            for (CountingFileSystem::Written* sum : {&kind, &all}) {
                sum->files += written.files;
                sum->bytes += written.bytes;
            }
        }
        std::printf("%-52s %6llu files %9.1f kB", name, static_cast<unsigned long long>(all.files),
                    kilobytes(all.bytes));
        for (const auto& [kind, written] : kinds)
            std::printf("  %s %.1f", kind.c_str(), kilobytes(written.bytes));
        std::printf("\n");
    }

  private:
    static double kilobytes(std::uint64_t bytes) { return static_cast<double>(bytes) / 1000; }

    PosixFileSystem disk_;
    CountingFileSystem files_{disk_};
    ModelHome home_;
};

void nothing(int /*minute*/) {}

}  // namespace
}  // namespace brimwatch::bench

int main() {
    using brimwatch::bench::Day;
    using brimwatch::bench::nothing;
    {
        Day day(10, 0);
        day.pass(nothing);
        day.print("idle, 10 Claude Code accounts");
        // Ten hours of work, a report of each account a minute.
        day.pass([&](int minute) {
            if (minute < 600) day.home().raiseFigures();
        });
        day.print("busy, 10 Claude Code accounts for ten hours");
        day.pass(nothing);
        day.print("idle after that, its samples become too old");
    }
    {
        Day day(0, 1);
        day.pass(nothing);
        day.print("idle, 1 Codex account, first day");
        day.pass(nothing);
        day.print("idle, 1 Codex account, second day");
    }
    {
        Day day(1, 1);
        day.pass([&](int minute) {
            if (minute < 600) day.home().raiseFigures();
        });
        day.print("busy, 1 account of each for ten hours");
    }
    return 0;
}
