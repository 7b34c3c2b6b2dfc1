// What the tests of the settings share: a configuration and a state folder of their own.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"
#include "support/json_reader.h"

namespace brimwatch::test {

inline const std::vector<std::errc> diskErrors = {
    std::errc::no_space_on_device, std::errc::permission_denied,   std::errc::read_only_file_system,
    std::errc::io_error,           std::errc::too_many_files_open, std::errc::file_too_large};

class SettingsFolders : public ::testing::Test {
  protected:
    void store(const std::string& bytes) { writeFile(settings_, bytes); }
    std::string stored() { return readFile(settings_); }

    void startAgain(const std::string& bytes) {
        std::filesystem::remove_all(config_);
        std::filesystem::remove_all(state_);
        store(bytes);
    }

    // What stands in a folder, sorted.
    std::vector<std::string> names(const std::string& folder) {
        std::vector<std::string> names =
            files_.entries(folder).value_or(std::vector<std::string>{"(no folder)"});
        std::sort(names.begin(), names.end());
        return names;
    }

    TemporaryFolder folder_;
    std::string config_ = folder_.file("config/brimwatch");
    std::string state_ = folder_.file("state/brimwatch");
    std::string settings_ = config_ + "/settings.json";
    std::string lock_ = state_ + "/.settings.lock";
    std::string damagedCopy_ = settings_ + ".brimwatch-damaged-";
    PosixFileSystem files_;
};

}  // namespace brimwatch::test
