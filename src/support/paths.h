// Paths as bytes, and the folders that the program lives in.
//
// Nothing here asks the disk except where a `FileSystem` is passed.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/environment.h"
#include "support/file_system.h"

namespace brimwatch {

std::string joinPath(std::string_view folder, std::string_view name);

// What stands behind the last "/", slashes at the end not counted: "/a/b/" gives "b", "/" gives
// "/", an empty path gives "".
std::string_view lastPathComponent(std::string_view path);

// The folder that the last component stands in: "/a/b" gives "/a", "/a" gives "/", "a" gives ".".
std::string parentPath(std::string_view path);

// Without empty components, "." and "..", which take away the component before them without asking
// the disk whether that is a symbolic link. A path that is not absolute stays relative.
std::string standardizedPath(std::string_view path);

// The standardised path with its symbolic links resolved, as far as it exists. This is the form in
// which paths that identify a folder are compared. A relative path is taken from the working
// folder.
std::string resolvedPath(FileSystem& files, std::string_view path);

// The user's own home folder: `HOME` if it is an absolute path, else the folder that /etc/passwd
// names for the user, else nothing. Read as a file, because a static program has no getpwuid.
std::optional<std::string> realHomeFolder(const Environment& environment, FileSystem& files,
                                          std::uint32_t userId);

// What stands for the home folder: `BRIMWATCH_HOME` if it is set and not empty, else the real one.
std::optional<std::string> homeFolder(const Environment& environment, FileSystem& files,
                                      std::uint32_t userId);

// Where limits files lie below a home folder.
std::string limitsFolder(std::string_view home);

// Where every program keeps what its user chose: `$XDG_CONFIG_HOME`, or `~/.config` where the
// variable is unset or relative (XDG Base Directory Specification). It does not follow
// `BRIMWATCH_HOME`.
std::optional<std::string> configFolder(const Environment& environment, FileSystem& files,
                                        std::uint32_t userId);

// The file of the user's choices: `brimwatch/settings.json` in that folder.
std::optional<std::string> settingsFile(const Environment& environment, FileSystem& files,
                                        std::uint32_t userId);

// Where lies what the program learnt by itself: `$XDG_STATE_HOME/brimwatch`, with `~/.local/state`
// where the variable is unset or relative. It does not follow `BRIMWATCH_HOME`.
std::optional<std::string> stateFolder(const Environment& environment, FileSystem& files,
                                       std::uint32_t userId);

// Where lies what belongs to the user and nobody can make again: `$XDG_DATA_HOME/brimwatch`, with
// `~/.local/share` where the variable is unset or relative. It does not follow `BRIMWATCH_HOME`.
std::optional<std::string> dataFolder(const Environment& environment, FileSystem& files,
                                      std::uint32_t userId);

}  // namespace brimwatch
