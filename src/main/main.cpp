// The command `brimwatch`: the status line role itself, every other one by way of the desktop
// program.

#include <unistd.h>

#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "claude/status_line_mode.h"
#include "main/desktop_program.h"
#include "platform/posix/ignored_signals.h"
#include "platform/posix/limits_changed_datagram.h"
#include "platform/posix/posix_file_system.h"
#include "platform/posix/process_ancestry.h"
#include "platform/posix/shell_command.h"
#include "platform/posix/standard_streams.h"
#include "platform/posix/wall_clock.h"
#include "support/role.h"

namespace brimwatch {
namespace {

constexpr int exitWithoutDesktop = 1;
constexpr int exitPrivateUpdateFailure = 2;

void runStatusLine(std::span<const std::string_view> arguments) {
    holdStandardDescriptors();
    const sigset_t defaultSignals = ignoreWriteSignals();
    const Environment environment(environ);
    PosixFileSystem files;
    StatusLineMode{
        .arguments = arguments,
        .environment = environment,
        .userId = ::getuid(),
        .files = files,
        .readInput = readStandardInput,
        .writeOutput = writeStandardOutput,
        .now = wallClock,
        .postLimitsChanged = [environment] { postLimitsChanged(environment); },
        .isChainedByItself = hasStatusLineAncestor,
        .runCommand =
            [&](const std::string& commandLine, std::string_view input,
                StatusLineMode::TimeOut timeOut) {
                return runShellCommand({.commandLine = commandLine,
                                        .input = input,
                                        .timeOut = timeOut,
                                        .environment = environment.entries(),
                                        .defaultSignals = defaultSignals});
            },
    }
        .run();
}

// A line is due even when memory has run out.
void runStatusLineWithoutFail(std::span<const std::string_view> arguments) {
    try {
        runStatusLine(arguments);
    } catch (const std::bad_alloc&) {
        writeStandardOutput("\n");
    }
}

int runApplication(char* const* arguments) {
    std::string complaint = "brimwatch: can't tell where this program lies\n";
    if (const std::optional<std::string> path = desktopProgramPath()) {
        const std::error_code error = becomeDesktopProgram(*path, arguments);
        complaint =
            "brimwatch: can't start the desktop program " + *path + ": " + error.message() + "\n";
    }
    writeStandardError(complaint);
    return exitWithoutDesktop;
}

int runPrivateUpdateCommand(char* const* arguments) {
    const std::optional<std::string> path = desktopProgramPath();
    if (path) static_cast<void>(becomeDesktopProgram(*path, arguments));
    writeStandardError("Private update configuration failed.\n");
    return exitPrivateUpdateFailure;
}

int reportUsageFailure() {
    writeStandardError(
        "Use --configure-private-updates <0600 JSON file> or --clear-private-updates.\n");
    return exitPrivateUpdateFailure;
}

int run(char* const* arguments) {
    std::vector<std::string_view> list;
    for (char* const* argument = arguments; *argument != nullptr; ++argument) {
        if (argument != arguments) list.emplace_back(*argument);
    }
    switch (classifyArguments(list)) {
        case Role::statusLine:
            runStatusLineWithoutFail(list);
            return EXIT_SUCCESS;
        case Role::application:
            return runApplication(arguments);
        case Role::configurePrivateUpdates:
        case Role::clearPrivateUpdates:
            return runPrivateUpdateCommand(arguments);
        case Role::usageFailure:
            break;
    }
    return reportUsageFailure();
}

}  // namespace
}  // namespace brimwatch

int main(int /*count*/, char** arguments) {
    return brimwatch::run(arguments);
}
