// Connecting and disconnecting, told to the program and to a plain model of it.
#include <gtest/gtest.h>

#include "claude/claude_code_setup.h"
#include "claude/claude_folders.h"
#include "claude/status_line_command.h"
#include "harness/memory_file_system.h"
#include "harness/random_json.h"

namespace brimwatch {
namespace {

using State = ClaudeCodeSetup::State;

class RegistrationInRandomFiles : public test::ClaudeFolders {};

std::string randomStatusLine(test::Random& random, test::RandomJson& json) {
    std::vector<std::string> members;
    if (!random.oneIn(6)) {
        members.push_back(
            json.member(R"("command")",
                        json.oneOf({json.value(), json.string(), R"("npx -y ccline \/x")", R"("")",
                                    R"("'\/opt\/tools\/bin\/brimwatch' --statusline")",
                                    R"("'/opt/tools/bin/brimwatch' --statusline --account work")",
                                    R"("'/gone/bin/brimwatch' --statusline --account 한글")",
                                    R"("python3 /h/.brimwatch/brimwatch.py")"})));
    }
    if (!random.oneIn(4)) {
        const std::string type = random.oneIn(4) ? json.value(1) : R"("command")";
        members.push_back(json.member(R"("type")", type));
    }
    if (random.oneIn(2)) members.push_back(json.member(R"("padding")", json.number()));
    return random.oneIn(5) ? json.value() : json.object(members);
}

std::string randomVariables(test::Random& random, test::RandomJson& json) {
    std::vector<std::string> members;
    for (std::size_t count = random.below(4); count > 0; --count)
        members.push_back(json.member(json.string(), json.string()));
    if (random.oneIn(4)) {
        members.push_back(json.member(R"("BRIMWATCH_NEXT_STATUSLINE")",
                                      json.oneOf({json.value(1), json.string(), R"("")"})));
    }
    return random.oneIn(5) ? json.value() : json.object(members);
}

std::string randomSettings(test::Random& random, test::RandomJson& json) {
    std::vector<std::string> members;
    for (std::size_t count = random.below(5); count > 0; --count)
        members.push_back(json.member(json.string(), json.value(5)));
    if (!random.oneIn(4))
        members.push_back(json.member(R"("statusLine")", randomStatusLine(random, json)));
    if (!random.oneIn(3)) members.push_back(json.member(R"("env")", randomVariables(random, json)));
    return json.blank() + json.object(members) + json.blank();
}

JsonObject variablesOf(const JsonObject& settings) {
    const JsonValue* variables = settings.find("env");
    return variables != nullptr && variables->object() != nullptr ? *variables->object()
                                                                  : JsonObject();
}

// What is left of settings after connecting and disconnecting. `state` is the state before.
JsonObject restored(JsonObject settings, State state) {
    const std::string former(presentStatusLineCommand(settings));
    JsonObject variables = variablesOf(settings);
    const std::optional<JsonValue> chained = variables.remove("BRIMWATCH_NEXT_STATUSLINE");
    JsonValue command = chained.value_or(nullptr);
    if (state == State::notRegistered && !former.empty()) command = former;
    settings.remove("statusLine");
    settings.remove("env");
    if (command.string() != nullptr && !command.string()->empty())
        settings.set("statusLine", JsonObject({{"type", "command"}, {"command", command}}));
    if (!variables.empty()) settings.set("env", variables);
    return settings;
}

// What connecting makes of them.
JsonObject registered(JsonObject settings, State state, const std::string& executable) {
    const std::string former(presentStatusLineCommand(settings));
    const std::string command = statusLineCommand(executable, "work");
    if (state == State::registered && former == command) return settings;
    if (state == State::notRegistered && !former.empty()) {
        JsonObject variables = variablesOf(settings);
        variables.set("BRIMWATCH_NEXT_STATUSLINE", former);
        settings.set("env", variables);
    }
    settings.set("statusLine", JsonObject({{"type", "command"},
                                           {"command", command},
                                           {"refreshInterval", JsonNumber{"60"}}}));
    return settings;
}

TEST_F(RegistrationInRandomFiles, KeepsEveryValue) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    test::RandomJson json(random);
    const auto noPause = [](std::chrono::milliseconds) {};
    for (int round = 0; round < 10'000; ++round) {
        const std::string text = randomSettings(random, json);
        const JsonObject original = parsed(text);
        test::MemoryFileSystem files;
        files.put("/c/settings.json", text);
        const State state = ClaudeCodeSetup::classify(files, original, environment());
        const auto present = [&] { return parsed(files.files().at("/c/settings.json").bytes); };

        ASSERT_TRUE(ClaudeCodeSetup::connect(files, "/c", "work", environment(), noPause));
        ASSERT_EQ(present(), registered(original, state, test::program)) << text;
        ASSERT_TRUE(ClaudeCodeSetup::disconnect(files, "/c", environment(), noPause));
        ASSERT_EQ(present(), restored(original, state)) << text;
        const auto backup = files.files().find("/c/settings.json.brimwatch-backup");
        if (backup != files.files().end()) {
            ASSERT_EQ(backup->second.bytes, text);
        }
    }
}

}  // namespace
}  // namespace brimwatch
