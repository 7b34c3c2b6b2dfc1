// Starts the tests away from the user's desktop, with every folder of the user's moved into a
// temporary one, and refuses to start if that did not take.

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

#include "harness/temporary_folder.h"

namespace {

constexpr const char* userFolders[] = {"HOME",           "BRIMWATCH_HOME", "XDG_CONFIG_HOME",
                                       "XDG_STATE_HOME", "XDG_DATA_HOME",  "XDG_CACHE_HOME",
                                       "XDG_RUNTIME_DIR"};

void moveUserFolders(const std::string& folder) {
    for (const char* name : userFolders) {
        const std::string path = folder + '/' + name;
        std::filesystem::create_directories(path);
        // As a runtime folder has to be.
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        ::setenv(name, path.c_str(), 1);
    }
    for (const char* name : {"CLAUDE_CONFIG_DIR", "CODEX_HOME", "BRIMWATCH_NEXT_STATUSLINE"}) {
        ::unsetenv(name);
    }
}

// No test shows anything to whoever sits at the machine.
void leaveDesktop() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS",
                             "XDG_CURRENT_DESKTOP", "XDG_SESSION_ID"}) {
        ::unsetenv(name);
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

bool userFoldersAreBelow(const std::string& folder) {
    for (const char* name : userFolders) {
        const char* path = std::getenv(name);
        if (path == nullptr || !std::string(path).starts_with(folder + '/')) return false;
    }
    return true;
}

// A shell lets what it starts in the background ignore these.
void takeSignals() {
    for (const int signal : {SIGINT, SIGQUIT})
        ::signal(signal, SIG_DFL);
}

}  // namespace

int main(int count, char** arguments) {
    ::testing::InitGoogleTest(&count, arguments);
    const brimwatch::test::TemporaryFolder folder;
    moveUserFolders(folder.path());
    leaveDesktop();
    takeSignals();
    if (!userFoldersAreBelow(folder.path())) {
        std::cerr << "The tests would touch the real home folder; they don't start.\n";
        return EXIT_FAILURE;
    }
    return RUN_ALL_TESTS();
}
