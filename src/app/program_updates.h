// The updates of the running program, with the real network, folders and keys. Main thread, while
// there is an application.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/bundle_info.h"
#include "platform/key_store.h"
#include "platform/linux/update_archive.h"
#include "platform/linux/version_folders.h"
#include "support/file_system.h"
#include "updates/app_updater.h"

namespace brimwatch {

class ProgramUpdates {
  public:
    struct Surroundings {
        FileSystem& files;
        KeyStore& keys;
        BundleInfo info;
        std::string stateFolder;
        std::string desktopProgram;  // that runs, without symbolic links
        std::string command;         // by which the user calls the program
        std::string locale;          // of the user
        UnpackUpdate* unpack;        // called on a thread of its own
        std::function<void()> activateApplication;
        std::function<void()> quit;
    };

    // Looks into the key store at once.
    explicit ProgramUpdates(Surroundings surroundings);

    AppUpdater& updater() { return updater_; }
    // What to start in place of this program, once it has quit.
    const std::optional<std::string>& successor() const { return successor_; }

  private:
    bool relaunch();
    std::unique_ptr<UpdateEngine> makeEngine(UpdateDelegate& delegate);

    Surroundings surroundings_;
    std::optional<VersionFolders> folders_;
    std::optional<std::string> successor_;
    AppUpdater updater_;
};

}  // namespace brimwatch
