// The running desktop program: the model with the real system around it.
#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <tl/expected.hpp>

#include "core/helper_model.h"
#include "platform/linux/autostart_login_item.h"
#include "platform/linux/json_settings_store.h"
#include "platform/linux/launchctl_agent_stopper.h"
#include "platform/linux/limits_changed_listener.h"
#include "platform/linux/qt_folder_watch.h"
#include "platform/posix/instance_lock.h"
#include "platform/posix/posix_file_system.h"
#include "support/environment.h"

namespace brimwatch {

class Application {
  public:
    struct Launch {
        std::string executable;  // the path to name in anybody's configuration
        Environment environment;
        // Signals that are ignored here and have to have their default action in a child.
        sigset_t defaultSignals{};
    };

    // Starts to watch and to ask. There is one for each state folder: a second one, in whatever
    // process, is refused. Fails with a line for the user. Needs a QCoreApplication, before and
    // after it. Main thread.
    static tl::expected<std::unique_ptr<Application>, std::string> start(Launch launch);

    HelperModel& model() { return model_; }

  private:
    struct Folders {
        std::string home;
        std::string settingsFile;
        std::string state;
    };

    static tl::expected<Folders, std::string> findFolders(Environment environment);
    Application(Launch launch, const Folders& folders, InstanceLock lock);
    HelperModel::Surroundings surroundings(const std::string& home);

    Launch launch_;
    InstanceLock lock_;
    PosixFileSystem files_;
    JsonSettingsStore store_;
    QtFolderWatch folderWatch_;
    LimitsChangedListener limitsChanged_;
    AutostartLoginItem loginItem_;
    LaunchctlAgentStopper agentStopper_;
    HelperModel model_;
};

}  // namespace brimwatch
