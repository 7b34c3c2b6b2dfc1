// Connecting and disconnecting any `settings.json`: what is not ours comes back as it was, and
// what could not be parsed lies in the backup.
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "../tests/harness/memory_file_system.h"
#include "claude/claude_code_setup.h"
#include "claude/status_line_command.h"
#include "require.h"
#include "support/json_reader.h"

namespace {

using namespace brimwatch;
using State = ClaudeCodeSetup::State;

constexpr const char* path = "/c/settings.json";

void pass(std::chrono::milliseconds) {}

JsonObject stored(const test::MemoryFileSystem& files) {
    const std::optional<JsonObject> settings = parseJsonObject(files.files().at(path).bytes);
    REQUIRE(settings.has_value());
    return *settings;
}

JsonObject withoutOurMembers(JsonObject settings) {
    settings.remove("statusLine");
    settings.remove("env");
    return settings;
}

JsonObject othersVariables(const JsonObject& settings) {
    const JsonValue* present = settings.find("env");
    if (present == nullptr || present->object() == nullptr) return JsonObject();
    JsonObject variables = *present->object();
    variables.remove("BRIMWATCH_NEXT_STATUSLINE");
    return variables;
}

void requireOthersUnchanged(const JsonObject& settings, const JsonObject& original) {
    REQUIRE(withoutOurMembers(settings) == withoutOurMembers(original));
    REQUIRE(othersVariables(settings) == othersVariables(original));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const std::optional<JsonObject> parsed = parseJsonObject(text);
    const JsonObject original = parsed.value_or(JsonObject());
    const CommandEnvironment environment{
        .executable = "/opt/bin/brimwatch",
        .installedCandidates = {},
        .rejectDevelopmentLocations = true,
        .isExecutable = [](const std::string& copy) { return copy == "/opt/bin/brimwatch"; }};
    test::MemoryFileSystem files;
    files.put(path, text);
    const State former = ClaudeCodeSetup::classify(files, original, environment);
    const std::string command(presentStatusLineCommand(original));

    REQUIRE(ClaudeCodeSetup::connect(files, "/c", "work", environment, pass).has_value());
    const JsonObject connected = stored(files);
    REQUIRE(ClaudeCodeSetup::classify(files, connected, environment) == State::registered);
    requireOthersUnchanged(connected, original);
    const auto backup = files.files().find("/c/settings.json.brimwatch-backup");
    const bool hasBackup = backup != files.files().end();
    REQUIRE(hasBackup ? backup->second.bytes == text : parsed && connected == original);

    REQUIRE(ClaudeCodeSetup::disconnect(files, "/c", environment, pass).has_value());
    const JsonObject restored = stored(files);
    requireOthersUnchanged(restored, original);
    if (former == State::notRegistered && !command.empty()) {
        REQUIRE(presentStatusLineCommand(restored) == command);
    }
    return 0;
}
