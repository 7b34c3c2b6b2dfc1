// The running desktop program: the model with the real system around it.
#pragma once

#include <csignal>
#include <memory>
#include <string>
#include <tl/expected.hpp>

#include "app/account_sign_in.h"
#include "app/phone_services.h"
#include "app/user_keys.h"
#include "core/helper_model.h"
#include "platform/linux/autostart_login_item.h"
#include "platform/linux/json_settings_store.h"
#include "platform/linux/launchctl_agent_stopper.h"
#include "platform/linux/limits_changed_listener.h"
#include "platform/linux/qt_folder_watch.h"
#include "platform/posix/instance_lock.h"
#include "platform/posix/posix_file_system.h"
#include "publish/publishers/publishers.h"
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

    struct Folders {
        std::string home;
        std::string settingsFile;
        std::string state;
    };
    // The folders of a user, and the right to work in them.
    struct Claim {
        Folders folders;
        InstanceLock lock;
    };
    struct Refusal {
        enum class Reason { isRunning, system };

        Reason reason = Reason::system;
        std::string text;  // a line for the user
    };

    // There is one for each state folder: a second one, in whatever process, is refused.
    static tl::expected<Claim, Refusal> claim(Environment environment);

    // Starts to watch and to ask. Needs a QCoreApplication, before and after it. Main thread.
    Application(Launch launch, Claim claim);
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application() = default;

    HelperModel& model() { return model_; }
    SettingsStore& defaults() { return store_; }
    FileSystem& files() { return files_; }
    AccountSignIn& accountSignIn() { return accountSignIn_; }
    KeyStore& keys() { return keys_->store(); }
    const std::string& stateFolder() const { return stateFolder_; }
    // The path to name in anybody's configuration.
    const std::string& executable() const { return launch_.executable; }
    // Of times and numbers.
    const std::string& locale() const { return locale_; }

  private:
    HelperModel::Surroundings surroundings(const std::string& home);
    PublisherDoors publisherDoors();

    Launch launch_;
    std::string locale_;
    std::string stateFolder_;
    InstanceLock lock_;
    PosixFileSystem files_;
    JsonSettingsStore store_;
    QtFolderWatch folderWatch_;
    LimitsChangedListener limitsChanged_;
    AutostartLoginItem loginItem_;
    LaunchctlAgentStopper agentStopper_;
    std::unique_ptr<UserKeys> keys_;
    PhoneServices phones_;
    HelperModel model_;
    AccountSignIn accountSignIn_;
};

}  // namespace brimwatch
