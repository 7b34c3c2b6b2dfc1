#include "platform/linux/autostart_login_item.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "harness/environment_list.h"
#include "harness/scripted_file_system.h"
#include "platform/linux/autostart_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using AutostartState = test::AutostartTest;
using AutostartSwitch = test::AutostartTest;

TEST_F(AutostartState, WithoutAnEntryItIsOff) {
    EXPECT_FALSE(isEnabled());
    EXPECT_FALSE(test::exists(config_));
}

TEST_F(AutostartState, AnEntryThatNothingSwitchesOffIsOn) {
    EXPECT_TRUE(isEnabledWith(""));
}

TEST_F(AutostartState, HiddenSwitchesOff) {
    EXPECT_FALSE(isEnabledWith("Hidden=true\n"));
    EXPECT_FALSE(isEnabledWith("Hidden = true \n"));
    EXPECT_FALSE(isEnabledWith("Hidden=1\n"));
    EXPECT_TRUE(isEnabledWith("Hidden=false\n"));
    EXPECT_TRUE(isEnabledWith("#Hidden=true\n"));
}

TEST_F(AutostartState, OnlyShowInSwitchesOffWhereItDoesNotNameThisDesktop) {
    EXPECT_FALSE(isEnabledWith("OnlyShowIn=KDE;XFCE;\n"));
    EXPECT_FALSE(isEnabledWith("OnlyShowIn=\n"));
    EXPECT_FALSE(isEnabledWith("OnlyShowIn=gnome;\n"));
    EXPECT_TRUE(isEnabledWith("OnlyShowIn=KDE;GNOME;\n"));
    EXPECT_TRUE(isEnabledWith("OnlyShowIn=ubuntu\n"));
    session_.desktops = {};
    EXPECT_FALSE(isEnabledWith("OnlyShowIn=GNOME;\n"));
}

TEST_F(AutostartState, NotShowInSwitchesOffWhereItNamesThisDesktop) {
    EXPECT_FALSE(isEnabledWith("NotShowIn=KDE;GNOME;\n"));
    EXPECT_FALSE(isEnabledWith("NotShowIn=ubuntu\n"));
    EXPECT_TRUE(isEnabledWith("NotShowIn=KDE;XFCE;\n"));
    EXPECT_TRUE(isEnabledWith("NotShowIn=\n"));
    session_.desktops = {};
    EXPECT_TRUE(isEnabledWith("NotShowIn=GNOME;\n"));
}

TEST_F(AutostartState, OfBothListsOneThatSwitchesOffIsEnough) {
    EXPECT_FALSE(isEnabledWith("OnlyShowIn=GNOME;\nNotShowIn=ubuntu;\n"));
    EXPECT_FALSE(isEnabledWith("OnlyShowIn=KDE;\nNotShowIn=XFCE;\n"));
    EXPECT_TRUE(isEnabledWith("OnlyShowIn=GNOME;\nNotShowIn=KDE;\n"));
}

TEST_F(AutostartState, TryExecSwitchesOffWhereItsProgramIsNotExecutable) {
    EXPECT_FALSE(isEnabledWith("TryExec=/opt/gone\n"));
    EXPECT_TRUE(isEnabledWith("TryExec=/usr/bin/brimwatch\n"));
    EXPECT_TRUE(isEnabledWith("TryExec=\n"));
    executables_.insert("/opt/a b");
    EXPECT_TRUE(isEnabledWith("TryExec=/opt/a\\sb\n"));
}

TEST_F(AutostartState, TryExecIsLookedForInTheSearchPath) {
    EXPECT_TRUE(isEnabledWith("TryExec=brimwatch\n"));
    EXPECT_FALSE(isEnabledWith("TryExec=other\n"));
    executables_ = {"/home/a/bin/other"};
    EXPECT_TRUE(isEnabledWith("TryExec=other\n"));
    session_.executableFolders = {};
    EXPECT_FALSE(isEnabledWith("TryExec=other\n"));
}

TEST_F(AutostartState, TheKeyOfGnomeSwitchesOff) {
    EXPECT_FALSE(isEnabledWith("X-GNOME-Autostart-enabled=false\n"));
    EXPECT_TRUE(isEnabledWith("X-GNOME-Autostart-enabled=true\n"));
}

TEST_F(AutostartState, TheKeyOfMateSwitchesOff) {
    EXPECT_FALSE(isEnabledWith("X-MATE-Autostart-enabled=false\n"));
    EXPECT_TRUE(isEnabledWith("X-MATE-Autostart-enabled=true\n"));
}

TEST_F(AutostartState, TheKeyOfSystemdSwitchesOff) {
    EXPECT_FALSE(isEnabledWith("X-systemd-skip=true\n"));
    EXPECT_TRUE(isEnabledWith("X-systemd-skip=false\n"));
}

TEST_F(AutostartState, ConditionsThatOnlySomeSessionsKnowSwitchOff) {
    for (const std::string key :
         {"AutostartCondition", "X-KDE-autostart-condition", "X-GNOME-Autostart-Phase"}) {
        EXPECT_FALSE(isEnabledWith(key + "=something\n")) << key;
        EXPECT_TRUE(isEnabledWith(key + "=\n")) << key;
    }
}

TEST_F(AutostartState, ABooleanThatIsNoneSwitchesOff) {
    for (const std::string key :
         {"Hidden", "X-systemd-skip", "X-GNOME-Autostart-enabled", "X-MATE-Autostart-enabled"}) {
        EXPECT_FALSE(isEnabledWith(key + "=yes\n")) << key;
        EXPECT_FALSE(isEnabledWith(key + "=\n")) << key;
    }
}

TEST_F(AutostartState, AKeyThatStandsTwiceCountsTwice) {
    EXPECT_FALSE(isEnabledWith("Hidden=true\nHidden=false\n"));
    EXPECT_FALSE(isEnabledWith("Hidden=false\nHidden=true\n"));
    EXPECT_TRUE(isEnabledWith("Hidden=false\nHidden=false\nName=Again\n"));
}

TEST_F(AutostartState, KeysOfAnotherGroupOrLanguageSwitchNothingOff) {
    EXPECT_TRUE(isEnabledWith("Hidden[ko]=true\n[Desktop Action stop]\nHidden=true\n"));
}

TEST_F(AutostartState, WhatASessionCouldNotStartIsOff) {
    for (const std::string& text :
         {std::string(), std::string("[Desktop Entry]\n"), std::string("garbage"),
          std::string("[Desktop Entry]\nType=Application\n"),
          std::string("[Desktop Entry]\nExec=/usr/bin/brimwatch\n"),
          std::string("[Desktop Entry]\nType=Application\nExec=\n"),
          std::string("[Desktop Entry]\nType=Link\nExec=/usr/bin/brimwatch\n"),
          working + "a line that is nothing\n", working + std::string(1, '\0')}) {
        test::writeFile(entry_, text);
        EXPECT_FALSE(isEnabled()) << text;
    }
}

TEST_F(AutostartState, AnEntryOfMoreThan64KiBIsOff) {
    constexpr std::size_t limit = 65'536;
    const std::string comment = "#" + std::string(limit - working.size() - 2, 'x') + "\n";
    EXPECT_TRUE(isEnabledWith(comment));
    EXPECT_FALSE(isEnabledWith("#" + comment));
}

TEST_F(AutostartState, TheUsersEntryHidesThatOfTheSystem) {
    test::writeFile(systemEntry_, working);
    EXPECT_TRUE(isEnabled());
    EXPECT_FALSE(isEnabledWith("Hidden=true\n"));
    test::writeFile(systemEntry_, working + "Hidden=true\n");
    EXPECT_TRUE(isEnabledWith(""));
}

TEST_F(AutostartState, TheFirstSystemFolderThatHasOneCounts) {
    test::writeFile(secondSystemEntry_, working);
    EXPECT_TRUE(isEnabled());
    test::writeFile(systemEntry_, working + "X-systemd-skip=true\n");
    EXPECT_FALSE(isEnabled());
}

TEST_F(AutostartState, AnEntryThatCannotBeReadIsOffAndStillHidesThatOfTheSystem) {
    test::writeFile(systemEntry_, working);
    test::writeFile(entry_, working);
    test::ScriptedFileSystem scripted(files_);
    scripted.failEveryRead(entry_, std::errc::permission_denied);
    EXPECT_FALSE(item(scripted).isEnabled());
    std::filesystem::remove(entry_);
    std::filesystem::create_directory(entry_);
    EXPECT_FALSE(isEnabled());
    std::filesystem::remove(entry_);
    ASSERT_EQ(::mkfifo(entry_.c_str(), 0600), 0);
    EXPECT_FALSE(isEnabled());
}

TEST_F(AutostartState, ALinkIsReadThrough) {
    test::writeFile(folder_.file("dotfiles/entry"), working);
    std::filesystem::create_directories(config_ + "/autostart");
    std::filesystem::create_symlink(folder_.file("dotfiles/entry"), entry_);
    EXPECT_TRUE(isEnabled());
    test::writeFile(folder_.file("dotfiles/entry"), working + "Hidden=true\n");
    EXPECT_FALSE(isEnabled());
}

TEST_F(AutostartState, ALinkThatLeadsNowhereIsNoEntry) {
    std::filesystem::create_directories(config_ + "/autostart");
    std::filesystem::create_symlink(folder_.file("gone"), entry_);
    EXPECT_FALSE(isEnabled());
    test::writeFile(systemEntry_, working);
    EXPECT_TRUE(isEnabled());
}

TEST_F(AutostartState, AFileInPlaceOfAFolderIsNoEntry) {
    test::writeFile(config_, "a file");
    test::writeFile(systemEntry_, working);
    EXPECT_TRUE(isEnabled());
}

TEST_F(AutostartSwitch, OnWritesTheEntryAndOffRemovesIt) {
    ASSERT_TRUE(switchTo(true));
    EXPECT_TRUE(isEnabled());
    EXPECT_EQ(test::readFile(entry_),
              "[Desktop Entry]\n"
              "Type=Application\n"
              "Name=Brimwatch\n"
              "Exec=\"/usr/bin/brimwatch\"\n"
              "Icon=net.quillmoor.brimwatch\n"
              "X-GNOME-Autostart-enabled=true\n");
    ASSERT_TRUE(switchTo(false));
    EXPECT_FALSE(isEnabled());
    EXPECT_FALSE(test::exists(entry_));
}

TEST_F(AutostartSwitch, EachTwiceIsAsOnce) {
    EXPECT_TRUE(switchTo(false));
    EXPECT_TRUE(switchTo(true));
    EXPECT_TRUE(switchTo(true));
    EXPECT_TRUE(isEnabled());
    EXPECT_TRUE(switchTo(false));
    EXPECT_TRUE(switchTo(false));
    EXPECT_THAT(files_.entries(config_ + "/autostart").value(), IsEmpty());
}

TEST_F(AutostartSwitch, OnTakesBackWhatAToolSwitchedOff) {
    for (const std::string line : {"Hidden=true", "X-GNOME-Autostart-enabled=false",
                                   "X-MATE-Autostart-enabled=false", "OnlyShowIn=KDE;", "broken"}) {
        ASSERT_FALSE(isEnabledWith(line + "\n"));
        ASSERT_TRUE(switchTo(true));
        EXPECT_TRUE(isEnabled()) << line;
    }
}

TEST_F(AutostartSwitch, OffHidesTheEntryOfTheSystem) {
    for (const std::string& path : {systemEntry_, secondSystemEntry_}) {
        test::writeFile(path, working);
        ASSERT_TRUE(isEnabled());
        ASSERT_TRUE(switchTo(false));
        EXPECT_FALSE(isEnabled());
        EXPECT_THAT(test::readFile(entry_), HasSubstr("\nHidden=true\n"));
        EXPECT_EQ(test::readFile(path), working);
        ASSERT_TRUE(switchTo(true));
        EXPECT_TRUE(isEnabled());
        EXPECT_THAT(test::readFile(entry_), Not(HasSubstr("Hidden")));
        std::filesystem::remove(path);
        std::filesystem::remove(entry_);
    }
}

TEST_F(AutostartSwitch, OffHidesAlsoWhatItCannotLookAt) {
    test::ScriptedFileSystem scripted(files_);
    scripted.failEveryStepNamed("status", std::errc::permission_denied);
    ASSERT_TRUE(item(scripted).setEnabled(false));
    EXPECT_THAT(test::readFile(entry_), HasSubstr("\nHidden=true\n"));
}

TEST_F(AutostartSwitch, OffWorksAlsoForAProgramThatCannotBeSwitchedOn) {
    executable_ = "/opt/a=b";
    test::writeFile(systemEntry_, working);
    const FileResult<void> switched = item().setEnabled(true);
    ASSERT_FALSE(switched);
    EXPECT_EQ(switched.error(), std::errc::invalid_argument);
    EXPECT_FALSE(test::exists(config_));
    ASSERT_TRUE(switchTo(false));
    EXPECT_FALSE(isEnabled());
}

TEST_F(AutostartSwitch, OffRemovesTheLinkAndNotWhatItLeadsTo) {
    const std::string target = folder_.file("dotfiles/entry");
    for (const bool isThere : {true, false}) {
        if (isThere) test::writeFile(target, working);
        std::filesystem::create_directories(config_ + "/autostart");
        std::filesystem::create_symlink(target, entry_);
        ASSERT_TRUE(switchTo(false));
        EXPECT_FALSE(test::exists(entry_));
        EXPECT_EQ(test::exists(target), isThere);
        std::filesystem::remove(target);
    }
}

TEST_F(AutostartSwitch, OnReplacesTheLinkAndLeavesWhatItLeadsTo) {
    const std::string target = folder_.file("dotfiles/entry");
    test::writeFile(target, working + "Hidden=true\n");
    std::filesystem::create_directories(config_ + "/autostart");
    std::filesystem::create_symlink(target, entry_);
    ASSERT_TRUE(switchTo(true));
    EXPECT_TRUE(isEnabled());
    EXPECT_FALSE(std::filesystem::is_symlink(entry_));
    EXPECT_EQ(test::readFile(target), working + "Hidden=true\n");
}

TEST_F(AutostartSwitch, WithoutAConfigurationFolderOnlyTheSystemsEntryCounts) {
    session_.userConfigFolder.reset();
    EXPECT_FALSE(isEnabled());
    for (const bool enabled : {true, false}) {
        const FileResult<void> switched = item().setEnabled(enabled);
        ASSERT_FALSE(switched);
        EXPECT_EQ(switched.error(), std::errc::no_such_file_or_directory);
    }
    test::writeFile(systemEntry_, working);
    EXPECT_TRUE(isEnabled());
}

TEST_F(AutostartSwitch, WhatStandsInTheWayIsAFailure) {
    std::filesystem::create_directories(entry_);
    EXPECT_FALSE(switchTo(true));
    EXPECT_FALSE(switchTo(false));
    EXPECT_TRUE(std::filesystem::is_directory(entry_));
}

// The step is tried with each number until none is left.
TEST_F(AutostartSwitch, AFailureAtAnyStepIsToldAndLeavesTheOldEntryOrTheNewOne) {
    const std::string former = working + "Hidden=true\n";
    const auto errors = {std::errc::no_space_on_device, std::errc::permission_denied,
                         std::errc::read_only_file_system};
    for (const std::errc error : errors) {
        bool failed = true;
        for (std::size_t step = 0; failed; ++step) {
            test::writeFile(entry_, former);
            test::ScriptedFileSystem scripted(files_);
            scripted.failAtStep(step, error);
            const FileResult<void> switched = item(scripted).setEnabled(true);
            const bool isTold = !switched && switched.error() == error;
            failed = step < scripted.steps().size();
            const bool isCleaning = failed && scripted.steps()[step].starts_with("removeAbandoned");
            const bool isNamed = failed && scripted.steps()[step].starts_with("synchronizeFolder");
            EXPECT_EQ(isTold, failed && !isCleaning) << step;
            const bool isOld = test::readFile(entry_) == former;
            EXPECT_EQ(isOld, failed && !isCleaning && !isNamed) << step;
            EXPECT_THAT(files_.entries(config_ + "/autostart").value(),
                        ElementsAre("net.quillmoor.brimwatch.desktop"));
        }
    }
}

TEST_F(AutostartSwitch, ACrashAtAnyStepLeavesTheOldEntryOrTheNewOne) {
    const std::string former = working + "Hidden=true\n";
    bool stopped = true;
    for (std::size_t step = 0; stopped; ++step) {
        test::writeFile(entry_, former);
        stopped = test::isStopped([&] {
            test::ScriptedFileSystem scripted(files_);
            scripted.stopAtStep(step);
            static_cast<void>(item(scripted).setEnabled(true));
        });
        const std::string left = test::readFile(entry_);
        EXPECT_TRUE(left == former || isEnabled()) << step;
        // What was left behind goes with the next writing.
        ASSERT_TRUE(switchTo(true));
        EXPECT_THAT(files_.entries(config_ + "/autostart").value(),
                    ElementsAre("net.quillmoor.brimwatch.desktop"));
    }
}

class AutostartSessionTest : public ::testing::Test {
  protected:
    AutostartSession session(const test::EnvironmentList& environment) {
        constexpr std::uint32_t unknownUser = 4'000'000'000;
        return autostartSession(environment.view(), files_, unknownUser);
    }

    PosixFileSystem files_;
};

TEST_F(AutostartSessionTest, ComesFromTheEnvironment) {
    EXPECT_EQ(session({{"XDG_CONFIG_HOME", "/c"},
                       {"XDG_CONFIG_DIRS", "/etc/xdg/xdg-ubuntu:/etc/xdg"},
                       {"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"},
                       {"PATH", "/usr/local/bin:/usr/bin"}}),
              (AutostartSession{"/c",
                                {"/etc/xdg/xdg-ubuntu", "/etc/xdg"},
                                {"ubuntu", "GNOME"},
                                {"/usr/local/bin", "/usr/bin"}}));
}

TEST_F(AutostartSessionTest, HasDefaultsForWhatIsUnsetOrEmpty) {
    const AutostartSession usual = {"/h/.config", {"/etc/xdg"}, {}, {}};
    EXPECT_EQ(session({{"HOME", "/h"}}), usual);
    EXPECT_EQ(session({{"HOME", "/h"},
                       {"XDG_CONFIG_HOME", ""},
                       {"XDG_CONFIG_DIRS", ""},
                       {"XDG_CURRENT_DESKTOP", ""},
                       {"PATH", ""}}),
              usual);
    EXPECT_EQ(session({{"X", "y"}}).userConfigFolder, std::nullopt);
}

TEST_F(AutostartSessionTest, FoldersThatAreNotAbsoluteAreIgnored) {
    EXPECT_EQ(session({{"HOME", "/h"},
                       {"BRIMWATCH_HOME", "/moved"},
                       {"XDG_CONFIG_HOME", "relative"},
                       {"XDG_CONFIG_DIRS", "a:/b::c:/d:"},
                       {"XDG_CURRENT_DESKTOP", ":KDE:"},
                       {"PATH", ".:/bin::bin"}}),
              (AutostartSession{"/h/.config", {"/b", "/d"}, {"KDE"}, {"/bin"}}));
    EXPECT_THAT(session({{"XDG_CONFIG_DIRS", "only:relative"}}).systemConfigFolders,
                ElementsAre("/etc/xdg"));
}

}  // namespace
}  // namespace brimwatch
