#include "claude/settings_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "claude/settings_folder.h"
#include "claude/status_line_command.h"

namespace brimwatch {
namespace {

using std::chrono::milliseconds;
using test::userCommand;
using test::userSettings;
using ::testing::ElementsAre;

class SettingsFileTest : public test::SettingsFolder {};

TEST_F(SettingsFileTest, KeepsItsModeAndOwner) {
    ASSERT_EQ(::chmod(path_.c_str(), 0640), 0);
    if (::getuid() == 0) {
        ASSERT_EQ(::chown(path_.c_str(), 1234, 4321), 0);
    }
    const FileStatus before = *files_.status(path_);
    ASSERT_TRUE(connect(files_));
    const FileStatus after = *files_.status(path_);
    EXPECT_EQ(after.permissions, 0640U);
    EXPECT_EQ(after.owner, before.owner);
    EXPECT_EQ(after.group, before.group);
    EXPECT_NE(after.inode, before.inode);
}

TEST_F(SettingsFileTest, KeepsAModeThatTheUmaskWouldNarrow) {
    ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);
    const mode_t mask = ::umask(077);
    ASSERT_TRUE(connect(files_));
    ::umask(mask);
    EXPECT_EQ(files_.status(path_)->permissions, 0666U);
    EXPECT_EQ(files_.status(backup_)->permissions, 0666U);
}

TEST_F(SettingsFileTest, ANewFileHasTheModeThatTheUmaskLeaves) {
    std::filesystem::remove(path_);
    const mode_t mask = ::umask(027);
    ASSERT_TRUE(connect(files_));
    ::umask(mask);
    EXPECT_EQ(files_.status(path_)->permissions, 0640U);
}

TEST_F(SettingsFileTest, ABackupHasTheBytesTheModeAndTheOwnerOfTheOriginal) {
    ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
    if (::getuid() == 0) {
        ASSERT_EQ(::chown(path_.c_str(), 1234, 4321), 0);
    }
    const FileStatus original = *files_.status(path_);
    ASSERT_TRUE(connect(files_));
    EXPECT_EQ(test::readFile(backup_), userSettings);
    EXPECT_EQ(files_.status(backup_)->permissions, 0600U);
    EXPECT_EQ(files_.status(backup_)->owner, original.owner);
    EXPECT_EQ(files_.status(backup_)->group, original.group);
}

TEST_F(SettingsFileTest, TheFirstBackupStaysForGood) {
    test::writeFile(backup_, "first");
    ASSERT_TRUE(connect(files_));
    EXPECT_EQ(test::readFile(backup_), "first");
}

TEST_F(SettingsFileTest, ABackupThatCantBeMadeStopsNothing) {
    link(folder_.file("nowhere"), backup_);
    ASSERT_TRUE(connect(files_));
    EXPECT_TRUE(std::filesystem::is_symlink(backup_));
    EXPECT_FALSE(test::exists(folder_.file("nowhere")));
    EXPECT_FALSE(hasLitter(work_));
}

TEST_F(SettingsFileTest, IsWrittenThroughASymbolicLink) {
    for (const std::string& target :
         {folder_.file("dot files/a.json"), std::string("../../rel.json")}) {
        std::filesystem::remove_all(work_);
        link(target, path_);
        const std::string real = target.starts_with('/') ? target : folder_.file("rel.json");
        test::writeFile(real, userSettings);
        ASSERT_EQ(::chmod(real.c_str(), 0604), 0);
        ASSERT_TRUE(connect(files_));
        EXPECT_TRUE(std::filesystem::is_symlink(path_));
        EXPECT_FALSE(std::filesystem::is_symlink(real));
        EXPECT_EQ(presentStatusLineCommand(parsed(test::readFile(real))), test::programCommand);
        EXPECT_EQ(files_.status(real)->permissions, 0604U);
        EXPECT_THAT(names(work_), ElementsAre("settings.json", "settings.json.brimwatch-backup"));
        EXPECT_FALSE(hasLitter(std::filesystem::path(real).parent_path()));
    }
}

TEST_F(SettingsFileTest, IsWrittenThroughAChainOfLinks) {
    test::writeFile(folder_.file("d/real.json"), userSettings);
    link("real.json", folder_.file("d/b"));
    link(folder_.file("d"), folder_.file("e"));
    std::filesystem::remove(path_);
    link(folder_.file("e/b"), path_);
    ASSERT_TRUE(connect(files_));
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("d/b")));
    EXPECT_TRUE(std::filesystem::is_regular_file(
        std::filesystem::symlink_status(folder_.file("d/real.json"))));
    EXPECT_EQ(presentStatusLineCommand(parsed(test::readFile(folder_.file("d/real.json")))),
              test::programCommand);
}

TEST_F(SettingsFileTest, ALongChainOfLinksIsFollowedToItsEnd) {
    std::filesystem::rename(path_, folder_.file("0"));
    for (int number = 1; number < 20; ++number) {
        link(std::to_string(number - 1), folder_.file(std::to_string(number)));
    }
    link(folder_.file("19"), path_);
    ASSERT_TRUE(connect(files_));
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_EQ(presentStatusLineCommand(parsed(test::readFile(folder_.file("0")))),
              test::programCommand);
}

TEST_F(SettingsFileTest, ALinkToAFileThatIsYetToBeMadeIsKept) {
    std::filesystem::create_directories(folder_.file("d"));
    std::filesystem::remove(path_);
    link(folder_.file("d/new.json"), path_);
    ASSERT_TRUE(connect(files_));
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
    EXPECT_EQ(presentStatusLineCommand(parsed(test::readFile(folder_.file("d/new.json")))),
              test::programCommand);
}

TEST_F(SettingsFileTest, ALinkIntoAFolderThatIsAwayIsLeftAlone) {
    std::filesystem::remove(path_);
    link(folder_.file("unmounted/settings.json"), path_);
    EXPECT_EQ(connect(files_).error(), std::errc::no_such_file_or_directory);
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
}

TEST_F(SettingsFileTest, ALinkToItselfIsLeftAlone) {
    std::filesystem::remove(path_);
    link("settings.json", path_);
    EXPECT_EQ(connect(files_).error(), std::errc::too_many_symbolic_link_levels);
    EXPECT_TRUE(std::filesystem::is_symlink(path_));
}

TEST_F(SettingsFileTest, AFileThatCantBeReadIsReplacedAndKeptUnderAnotherName) {
    for (const std::errc error : {std::errc::permission_denied, std::errc::io_error}) {
        startAgain();
        test::ScriptedFileSystem failing(files_);
        failing.failEveryRead(path_, error);
        ASSERT_TRUE(connect(failing));
        EXPECT_EQ(presentStatusLineCommand(parsed(stored())), test::programCommand);
        EXPECT_EQ(test::readFile(damagedCopy_ + "1"), userSettings);
        EXPECT_FALSE(test::exists(backup_));
    }
}

TEST_F(SettingsFileTest, AFileThatIsNoRegularOneOrTooLargeIsKeptUnderAnotherNameToo) {
    std::filesystem::remove(path_);
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    ASSERT_TRUE(connect(files_));
    EXPECT_EQ(files_.status(damagedCopy_ + "1")->kind, FileKind::other);
}

TEST_F(SettingsFileTest, OneOfManyMegabytesIsAFileLikeAnyOther) {
    store(userSettings.substr(0, userSettings.size() - 1) + R"(,"x":")" +
          std::string(20U << 20U, 'y') + "\"}");
    const JsonObject before = parsed(stored());
    ASSERT_TRUE(connect(files_));
    EXPECT_EQ(*parsed(stored()).find("x"), *before.find("x"));
    EXPECT_EQ(*parsed(stored()).find("env")->member("BRIMWATCH_NEXT_STATUSLINE"),
              JsonValue(userCommand));
}

TEST_F(SettingsFileTest, OneThatIsTooLargeToLookAtIsLeftAlone) {
    std::filesystem::resize_file(path_, settingsSizeLimit + 1);
    EXPECT_EQ(connect(files_).error(), std::errc::file_too_large);
    EXPECT_EQ(disconnect(files_).error(), std::errc::file_too_large);
    EXPECT_EQ(std::filesystem::file_size(path_), settingsSizeLimit + 1);
    EXPECT_THAT(names(work_), ElementsAre("settings.json"));
}

TEST_F(SettingsFileTest, AFileThatCantBeReadKeepsItsModeButForItsOwner) {
    for (const auto& [before, after] : {std::pair{0600U, 0600U}, {0004U, 0604U}, {0640U, 0640U}}) {
        startAgain();
        ASSERT_EQ(::chmod(path_.c_str(), before), 0);
        test::ScriptedFileSystem failing(files_);
        failing.failEveryRead(path_, std::errc::permission_denied);
        ASSERT_TRUE(connect(failing));
        EXPECT_EQ(files_.status(path_)->permissions, after);
    }
}

TEST_F(SettingsFileTest, AGroupThatCantHaveTheFileLosesItsRights) {
    ASSERT_EQ(::chmod(path_.c_str(), 0664), 0);
    test::ScriptedFileSystem failing(files_);
    failing.failEveryStepNamed("setOwner", std::errc::operation_not_permitted);
    ASSERT_TRUE(connect(failing));
    EXPECT_EQ(files_.status(path_)->permissions, 0644U);
    EXPECT_EQ(files_.status(backup_)->permissions, 0644U);
}

TEST_F(SettingsFileTest, AFileOfTheUsersWithANameLikeATemporaryOneIsNotTouched) {
    for (const char* name : {".brimwatch-notes.tmp", ".brimwatch-1.tmp", ".brimwatch-1-x.tmp"}) {
        test::writeFile(work_ + "/" + name, "mine");
        ASSERT_TRUE(connect(files_));
        EXPECT_TRUE(test::exists(work_ + "/" + name));
    }
}

TEST_F(SettingsFileTest, WhatADeadWriterLeftBesideALinkedFileIsRemovedToo) {
    const std::string dotfiles = folder_.file("dotfiles");
    std::filesystem::remove(path_);
    test::writeFile(dotfiles + "/settings.json", userSettings);
    link(dotfiles + "/settings.json", path_);
    test::writeFile(dotfiles + "/.brimwatch-1-0.tmp", "left behind");
    ASSERT_TRUE(connect(files_));
    EXPECT_THAT(names(dotfiles), ElementsAre("settings.json"));
}

TEST_F(SettingsFileTest, WhatCanNeitherBeReadNorKeptIsLeftAlone) {
    test::ScriptedFileSystem recording(files_);
    recording.failEveryRead(path_, std::errc::permission_denied);
    ASSERT_TRUE(connect(recording));
    const auto keeping = std::find(recording.steps().begin(), recording.steps().end(),
                                   "addName " + damagedCopy_ + "1");
    ASSERT_NE(keeping, recording.steps().end());
    startAgain();
    test::ScriptedFileSystem failing(files_);
    failing.failEveryRead(path_, std::errc::permission_denied);
    failing.failAtStep(static_cast<std::size_t>(keeping - recording.steps().begin()),
                       std::errc::operation_not_permitted);
    EXPECT_EQ(connect(failing).error(), std::errc::operation_not_permitted);
    EXPECT_EQ(stored(), userSettings);

    std::filesystem::remove(path_);
    std::filesystem::create_directory(path_);
    EXPECT_FALSE(connect(files_));
    EXPECT_THAT(names(work_), ElementsAre("settings.json"));
}

TEST_F(SettingsFileTest, DisconnectingFromAFileThatCantBeReadChangesNothing) {
    store(connectedText());
    const std::string connected = stored();
    test::ScriptedFileSystem failing(files_);
    failing.failEveryRead(path_, std::errc::permission_denied);
    EXPECT_TRUE(disconnect(failing));
    EXPECT_EQ(stored(), connected);
}

TEST_F(SettingsFileTest, AFileThatCantBeReadIsReadAgainAfterAPause) {
    test::ScriptedFileSystem recording(files_);
    static_cast<void>(readSettings(recording, work_, [](milliseconds) {}));
    const auto read =
        std::find(recording.steps().begin(), recording.steps().end(), "read " + path_);
    ASSERT_NE(read, recording.steps().end());
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(static_cast<std::size_t>(read - recording.steps().begin()),
                       std::errc::io_error);
    const std::string whole = connectedText();
    ASSERT_TRUE(connect(failing));
    EXPECT_THAT(pauses_, ElementsAre(milliseconds(100)));
    EXPECT_EQ(stored(), whole);
}

TEST_F(SettingsFileTest, AFileInTheMiddleOfBeingWrittenIsReadAgainAfterAPause) {
    const std::string whole = connectedText();
    store(userSettings.substr(0, 30));
    const auto result =
        ClaudeCodeSetup::connect(files_, work_, "work", environment(), [this](milliseconds pause) {
            pauses_.push_back(pause);
            store(userSettings);
        });
    ASSERT_TRUE(result);
    EXPECT_THAT(pauses_, ElementsAre(milliseconds(100)));
    EXPECT_EQ(stored(), whole);
    EXPECT_EQ(test::readFile(backup_), userSettings);
    EXPECT_FALSE(test::exists(damagedCopy_ + "1"));
}

TEST_F(SettingsFileTest, AWholeFileAndAMissingOneAreReadWithoutAPause) {
    ASSERT_TRUE(connect(files_));
    std::filesystem::remove(path_);
    ASSERT_TRUE(connect(files_));
    EXPECT_TRUE(pauses_.empty());
}

TEST_F(SettingsFileTest, TheBackupKeepsADamagedFileIfItIsTheFirst) {
    for (const char* damaged : {"{\"a\":", "[]", "null", "\xFF\xFE", "", "{} {}", "// x\n{}"}) {
        startAgain(damaged);
        ASSERT_TRUE(connect(files_));
        EXPECT_EQ(presentStatusLineCommand(parsed(stored())), test::programCommand);
        EXPECT_EQ(test::readFile(backup_), damaged);
        EXPECT_THAT(names(work_), ElementsAre("settings.json", "settings.json.brimwatch-backup"));
    }
}

TEST_F(SettingsFileTest, LaterDamagedFilesAreKeptUnderNumbersOfTheirOwn) {
    test::writeFile(backup_, userSettings);
    for (const char* damaged : {"{1", "{2", "{1"}) {
        store(damaged);
        ASSERT_TRUE(connect(files_));
    }
    EXPECT_EQ(test::readFile(damagedCopy_ + "1"), "{1");
    EXPECT_EQ(test::readFile(damagedCopy_ + "2"), "{2");
    EXPECT_FALSE(test::exists(damagedCopy_ + "3"));
    EXPECT_EQ(test::readFile(backup_), userSettings);
}

TEST_F(SettingsFileTest, ACopyOfADamagedFileHasItsMode) {
    test::writeFile(backup_, userSettings);
    store("{");
    ASSERT_EQ(::chmod(path_.c_str(), 0600), 0);
    ASSERT_TRUE(connect(files_));
    EXPECT_EQ(files_.status(damagedCopy_ + "1")->permissions, 0600U);
}

TEST_F(SettingsFileTest, ADamagedFileThatCantBeKeptIsNotReplaced) {
    test::writeFile(backup_, userSettings);
    store("{damaged");
    test::ScriptedFileSystem recording(files_);
    ASSERT_TRUE(connect(recording));
    const auto claim = std::find(recording.steps().begin(), recording.steps().end(),
                                 "claim " + damagedCopy_ + "1");
    ASSERT_NE(claim, recording.steps().end());
    std::filesystem::remove(damagedCopy_ + "1");
    store("{damaged");
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(static_cast<std::size_t>(claim - recording.steps().begin()),
                       std::errc::no_space_on_device);
    EXPECT_EQ(connect(failing).error(), std::errc::no_space_on_device);
    EXPECT_EQ(stored(), "{damaged");
    EXPECT_FALSE(hasLitter(work_));
}

}  // namespace
}  // namespace brimwatch
