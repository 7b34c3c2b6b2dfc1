// The short-lived role that Claude Code runs on every refresh: figures out of the document on
// standard input, into the account's limits file, one line to standard output.
//
// It must never get in Claude Code's way. A bad document, a failed write or a failing command of
// the user changes nothing in what it promises: a line, nothing on standard error, exit status 0.
//
// What it needs of the system is in its fields; the rules are static. Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "limits/limits_file.h"
#include "limits/usage_display.h"
#include "support/environment.h"
#include "support/file_system.h"
#include "support/instant.h"
#include "support/json_value.h"
#include "support/language.h"

namespace brimwatch {

struct StatusLineMode {
    // By window key: "five_hour", "seven_day".
    using ParsedLimits = LimitsFile::Windows;
    using TimeOut = std::chrono::duration<double>;

    std::span<const std::string_view> arguments;  // without the program's path
    Environment environment;
    std::uint32_t userId = 0;
    FileSystem& files;
    // The whole of standard input.
    std::function<std::string()> readInput;
    std::function<void(std::string_view)> writeOutput;
    std::function<Instant()> now;
    // Tells the running application to read the limits folder again.
    std::function<void()> postLimitsChanged;
    // Whether this process was started, at some remove, by a status line run of this program.
    std::function<bool()> isChainedByItself;
    // Runs a shell command line with that input; its output if it ended on its own in time.
    std::function<std::optional<std::string>(const std::string& commandLine, std::string_view input,
                                             TimeOut timeOut)>
        runCommand;

    void run() const;

    // The id of the account: the value of "--account", or the name of the configuration folder.
    static std::string accountArgument(std::span<const std::string_view> arguments,
                                       std::optional<std::string_view> claudeConfigDirectory);

    // The figures of a status line document. Aborts on a reset time beyond 64 bits.
    static ParsedLimits parseRateLimits(std::string_view input);

    // The program's own line, the weekly window first; empty for no limits.
    static std::string statusText(const ParsedLimits& limits, UsageDisplay display, Instant now,
                                  const Language& language = allLanguages().front());

    // The output of the user's own status line command without newlines at its ends. Nothing if
    // it failed to end on its own, or printed something other than UTF-8.
    std::optional<std::string> runNextStatusLine(const std::string& commandLine,
                                                 std::string_view input, TimeOut timeOut) const;

  private:
    void store(const ParsedLimits& limits) const;
    std::optional<std::string> nextStatusLine(std::string_view input) const;
    std::string ownStatusLine(const ParsedLimits& limits) const;
    JsonObject readSettings() const;
};

}  // namespace brimwatch
