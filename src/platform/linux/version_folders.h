// The folders of an installation that updates itself:
//
//     ROOT/versions/57/bin/brimwatch, ...    a version, named as the feed names it
//     ROOT/current -> versions/57            what everybody calls
//
// A version gets its name when all of it has reached the disk, and the link changes in one step: so
// whatever ends the program or the machine in between, ROOT/current leads to a whole version. Any
// thread.
#pragma once

#include <optional>
#include <string>

#include "platform/posix/file_descriptor.h"
#include "support/file_system.h"

namespace brimwatch {

class VersionFolders {
  public:
    // Of the installation that this desktop program belongs to. Nothing if it lies in no such
    // folders, or they are not the user's to write: then it is somebody else's to update.
    static std::optional<VersionFolders> find(FileSystem& files, const std::string& desktopProgram,
                                              std::uint32_t userId);

    VersionFolders(std::string root, std::string runningVersion)
        : root_(std::move(root)), running_(std::move(runningVersion)) {}

    // Whether a version may be a folder's name.
    static bool isName(const std::string& version);

    std::string path(const std::string& name) const { return root_ + "/versions/" + name; }
    const std::string& running() const { return running_; }
    // The command of the version that everybody calls.
    std::string currentCommand() const { return root_ + "/current/bin/brimwatch"; }

    // A file without a name on the disk of the versions.
    FileResult<FileDescriptor> makeUnnamedFile() const;
    // An empty folder for a version that has no name yet; what it is called in `versions`.
    FileResult<std::string> makeStaging() const;
    // Gives it its name, in place of a folder of that name that nobody uses. Where that version is
    // the current one already, it stays as it is.
    FileResult<void> adopt(const std::string& staging, const std::string& version) const;
    // From then on everybody who calls the program calls that version. Fails without it.
    FileResult<void> switchTo(const std::string& version) const;
    // Everything in `versions` but the running version, the current one, the one to keep and what
    // is not ours.
    void removeUnused(const std::string& keep) const;
    void remove(const std::string& name) const;

  private:
    std::optional<std::string> current() const;

    std::string root_;
    std::string running_;
};

}  // namespace brimwatch
