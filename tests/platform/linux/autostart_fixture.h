// An autostart entry with folders of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "harness/temporary_folder.h"
#include "platform/linux/autostart_login_item.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch::test {

class AutostartTest : public ::testing::Test {
  protected:
    AutostartLoginItem item() { return item(files_); }
    AutostartLoginItem item(FileSystem& files) {
        return AutostartLoginItem(files, session_, executable_, [this](const std::string& path) {
            return executables_.contains(path);
        });
    }

    bool isEnabled() { return item().isEnabled(); }
    bool switchTo(bool enabled) { return item().setEnabled(enabled).has_value(); }

    // A user's entry that starts the program, with those lines behind it.
    bool isEnabledWith(const std::string& lines) {
        writeFile(entry_, working + lines);
        return isEnabled();
    }

    static inline const std::string working =
        "[Desktop Entry]\nType=Application\nName=Brimwatch\nExec=/usr/bin/brimwatch\n";

    TemporaryFolder folder_;
    PosixFileSystem files_;
    std::string config_ = folder_.file("config");
    std::string entry_ = config_ + "/autostart/net.quillmoor.brimwatch.desktop";
    std::string systemEntry_ = folder_.file("system/autostart/net.quillmoor.brimwatch.desktop");
    std::string secondSystemEntry_ =
        folder_.file("second/autostart/net.quillmoor.brimwatch.desktop");
    AutostartSession session_ = {
        .userConfigFolder = config_,
        .systemConfigFolders = {folder_.file("system"), folder_.file("second")},
        .desktops = {"ubuntu", "GNOME"},
        .executableFolders = {"/home/a/bin", "/usr/bin"}};
    std::string executable_ = "/usr/bin/brimwatch";
    std::set<std::string> executables_ = {"/usr/bin/brimwatch"};
};

}  // namespace brimwatch::test
