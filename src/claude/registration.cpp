#include <string>
#include <utility>

#include "claude/claude_code_setup.h"
#include "claude/settings_file.h"
#include "claude/status_line_command.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using State = ClaudeCodeSetup::State;

constexpr std::string_view nextStatusLineVariable = "BRIMWATCH_NEXT_STATUSLINE";
constexpr std::int64_t refreshIntervalSeconds = 60;
// Nobody changes the file so often; a program that does must not keep us here for ever.
constexpr int attempts = 10;

// Settings as they shall be; nothing if they are to stay as they are.
using Change = std::optional<JsonObject>;

enum class Backup { taken, omitted };

class ConnectionCategory final : public std::error_category {
  public:
    const char* name() const noexcept override { return "brimwatch connection"; }
    std::string message(int /*failure*/) const override {
        return "Brimwatch?를 응용 프로그램 폴더에 설치한 뒤 앱을 다시 열어 주세요.";
    }
};

JsonObject environmentOf(const JsonObject& settings) {
    const JsonValue* environment = settings.find("env");
    const bool isObject = environment != nullptr && environment->object() != nullptr;
    return isObject ? *environment->object() : JsonObject();
}

JsonObject commandObject(std::string_view command) {
    return JsonObject({{"type", "command"}, {"command", command}});
}

// One that the status line names already stays: it may be there by the user's choice.
std::optional<std::string> chooseExecutable(FileSystem& files, const JsonObject& settings,
                                            const CommandEnvironment& environment) {
    std::vector<std::string> choices = environment.installedCandidates;
    choices.insert(choices.begin(), environment.executable);
    std::optional<std::string> present = connectedExecutable(settings, environment.executable);
    if (present) choices.insert(choices.begin(), *std::move(present));
    for (std::string& choice : choices) {
        if (ClaudeCodeSetup::isUsableCopy(files, choice, environment)) return std::move(choice);
    }
    return std::nullopt;
}

void chainPresentCommand(JsonObject& settings) {
    const std::string present(presentStatusLineCommand(settings));
    if (present.empty()) return;
    JsonObject environment = environmentOf(settings);
    environment.set(nextStatusLineVariable, present);
    settings.set("env", std::move(environment));
}

FileResult<Change> connected(FileSystem& files, JsonObject settings,
                             const std::optional<std::string>& account,
                             const CommandEnvironment& environment) {
    const State state = ClaudeCodeSetup::classify(files, settings, environment);
    const std::optional<std::string> executable = chooseExecutable(files, settings, environment);
    if (!executable) {
        return tl::unexpected(make_error_code(ClaudeCodeSetup::ConnectionFailure::installRequired));
    }
    const std::string command = statusLineCommand(*executable, account);
    if (state == State::registered && presentStatusLineCommand(settings) == command) {
        return std::nullopt;
    }
    if (state == State::notRegistered) chainPresentCommand(settings);
    JsonObject statusLine = commandObject(command);
    statusLine.set("refreshInterval", JsonNumber::fromInteger(refreshIntervalSeconds));
    settings.set("statusLine", std::move(statusLine));
    return settings;
}

Change disconnected(FileSystem& files, JsonObject settings, const CommandEnvironment& environment) {
    if (ClaudeCodeSetup::classify(files, settings, environment) == State::notRegistered) {
        return std::nullopt;
    }
    JsonObject variables = environmentOf(settings);
    const JsonValue next = variables.remove(nextStatusLineVariable).value_or(nullptr);
    settings.remove("statusLine");
    settings.remove("env");
    if (next.string() != nullptr && !next.string()->empty()) {
        settings.set("statusLine", commandObject(*next.string()));
    }
    if (!variables.empty()) settings.set("env", std::move(variables));
    return settings;
}

// What a writer that died left behind: temporary files lie beside the file that they replace.
void removeAbandonedTemporaries(FileSystem& files, const std::string& folder,
                                const std::string& target) {
    files.removeAbandonedTemporaries(folder);
    const std::string targetFolder = parentPath(target);
    if (targetFolder != folder) files.removeAbandonedTemporaries(targetFolder);
}

// Reads, changes and writes, and starts again if another program wrote in between.
template <class Rule>
FileResult<void> change(FileSystem& files, const std::string& folder,
                        const ClaudeCodeSetup::Pause& pause, Backup backup, const Rule& rule) {
    FileResult<void> written;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const FileResult<SettingsFile> present = readSettings(files, folder, pause);
        if (!present) return tl::unexpected(present.error());
        const FileResult<Change> next = rule(present->object.value_or(JsonObject()));
        if (!next) return tl::unexpected(next.error());
        if (!*next) return {};
        removeAbandonedTemporaries(files, folder, present->target);
        if (backup == Backup::taken) backupSettings(files, folder, *present);
        const FileResult<void> kept = keepDamagedSettings(files, folder, *present);
        if (!kept) return kept;
        written = writeSettings(files, folder, **next, *present);
        if (written || written.error() != std::errc::resource_unavailable_try_again) break;
    }
    return written;
}

}  // namespace

FileResult<void> ClaudeCodeSetup::connect(FileSystem& files, const std::string& folder,
                                          const std::optional<std::string>& account,
                                          const CommandEnvironment& environment,
                                          const Pause& pause) {
    return change(files, folder, pause, Backup::taken, [&](const JsonObject& settings) {
        return connected(files, settings, account, environment);
    });
}

FileResult<void> ClaudeCodeSetup::disconnect(FileSystem& files, const std::string& folder,
                                             const CommandEnvironment& environment,
                                             const Pause& pause) {
    return change(files, folder, pause, Backup::omitted,
                  [&](const JsonObject& settings) -> FileResult<Change> {
                      return disconnected(files, settings, environment);
                  });
}

std::error_code make_error_code(ClaudeCodeSetup::ConnectionFailure failure) {
    static const ConnectionCategory category;
    return {static_cast<int>(failure), category};
}

}  // namespace brimwatch
