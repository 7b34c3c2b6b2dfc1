// The status line command that the program writes into a Claude Code `settings.json`, and by whose
// exact form it recognises itself there:
//
//     '/usr/bin/brimwatch' --statusline --account work
//
// A path is single-quoted for the shell; an account id needs no quotes, since it holds only
// letters, marks, digits, ".", "_" and "-".
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "support/file_system.h"
#include "support/json_value.h"

namespace brimwatch {

std::string statusLineCommand(std::string_view executable, std::optional<std::string_view> account);

// The executable that a command names, if the command has the form above. An unquoted path is
// taken too where it needs no quotes.
std::optional<std::string> parseStatusLineCommand(std::string_view command);

// The command at `statusLine.command` of a parsed `settings.json`, whoever it belongs to; empty if
// there is none.
std::string_view presentStatusLineCommand(const JsonObject& settings);

// The executable of our status line in a parsed `settings.json`: `executable` itself, or any copy
// of the program, told by how its path ends. A status line that passes "--statusline" to another
// program is the user's own.
std::optional<std::string> connectedExecutable(const JsonObject& settings,
                                               std::string_view executable);

enum class DevelopmentLocations { accepted, rejected };

// Whether a copy may be named in a command that has to work after this process has gone: not one
// on a disk image, in a translocated place or, where rejected, in the build folder of a bundle.
bool isUsable(FileSystem& files, const std::string& path, DevelopmentLocations developmentLocations,
              const std::function<bool(const std::string&)>& isExecutable);

}  // namespace brimwatch
