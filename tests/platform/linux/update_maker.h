// The maker of updates in tests: a key to sign with, archives, and an installation to update.
#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

#include "harness/temporary_folder.h"
#include "platform/linux/version_folders.h"

namespace brimwatch::test {

struct ArchiveEntry {
    enum class Kind { file, folder, symbolicLink, hardLink, device, pipe };

    std::string path;
    std::string content = {};  // or the target of a link
    Kind kind = Kind::file;
    mode_t mode = 0644;
};

enum class Compression { none, gzip, xz, zstd, bzip2 };

std::string makeArchive(const std::vector<ArchiveEntry>& entries,
                        Compression compression = Compression::gzip);

// What the file beside the desktop program tells of a version.
std::string bundleInfoOf(const std::string& version);
// A whole version; its programs hold its name.
std::vector<ArchiveEntry> entriesOf(const std::string& version);

class SigningKey {
  public:
    SigningKey();
    SigningKey(const SigningKey&) = delete;
    SigningKey& operator=(const SigningKey&) = delete;
    ~SigningKey();

    // Both in base64.
    std::string publicKey() const;
    std::string sign(const std::string& bytes) const;

  private:
    void* key_;
};

// Version 1, installed in a folder of its own.
class Installation {
  public:
    Installation();

    const std::string& root() const { return root_; }
    std::string versionsFolder() const { return root_ + "/versions"; }
    std::string desktopProgram() const {
        return versionsFolder() + "/1/libexec/brimwatch/brimwatch-desktop";
    }
    VersionFolders folders() const { return {root_, "1"}; }

    // Which version everybody calls, if all of it is there; otherwise what is wrong with it.
    std::string current() const;
    // What lies beside the versions' names: of all that was begun and not finished nothing may.
    std::vector<std::string> versions() const;

  private:
    TemporaryFolder folder_;
    std::string root_;
};

}  // namespace brimwatch::test
