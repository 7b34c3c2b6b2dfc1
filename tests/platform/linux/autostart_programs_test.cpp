// What other programs make of the autostart entry.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "harness/environment_list.h"
#include "harness/process.h"
#include "platform/linux/autostart_fixture.h"
#include "platform/posix/executable_path.h"

namespace brimwatch {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* validator = "/usr/bin/desktop-file-validate";
constexpr const char* launcher = "/usr/bin/gio";
constexpr const char* generator =
    "/usr/lib/systemd/user-generators/systemd-xdg-autostart-generator";

const std::vector<std::string> oddNames = {
    "plain", "a b",     "a\"b",     "a'b",   "a\\b",      "a$HOME",  "a`b`",     "100%",
    "50%F",  "a;b|c&d", "(a)[b]{}", "~a#*?", "한글 폴더", "a\nb\tc", "\\\"$`%\\"};

class AutostartPrograms : public test::AutostartTest {
  protected:
    // A program below a folder of that name, which notes how it was called.
    std::string program(const std::string& name) {
        std::string path = folder_.file(name + "/brimwatch");
        test::writeFile(path,
                        "#!/bin/sh\nprintf '%s|%s' \"$#\" \"$0\" >\"$NOTES.new\"\n"
                        "mv \"$NOTES.new\" \"$NOTES\"\n");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        return path;
    }

    test::ProcessResult run(const std::string& path,
                            const std::vector<std::string>& arguments) const {
        test::ProcessRequest request;
        request.program = path;
        request.arguments = arguments;
        request.environment = environment_;
        return test::runProcess(request);
    }

    test::EnvironmentList environment_ = {{"PATH", "/usr/bin:/bin"},
                                          {"HOME", folder_.path()},
                                          {"XDG_CONFIG_HOME", config_},
                                          {"XDG_CONFIG_DIRS", folder_.file("system")},
                                          {"NOTES", folder_.file("notes")}};
};

TEST_F(AutostartPrograms, TheValidatorOfDesktopEntriesHasNothingToSay) {
    if (!isExecutableFile(validator)) GTEST_SKIP() << "There is no desktop-file-validate here.";
    test::writeFile(systemEntry_, working);
    for (const std::string& name : oddNames) {
        executable_ = folder_.file(name + "/brimwatch");
        for (const bool enabled : {true, false}) {
            ASSERT_TRUE(switchTo(enabled)) << name;
            const test::ProcessResult result = run(validator, {entry_});
            EXPECT_TRUE(result.exitedWith(0)) << name;
            EXPECT_THAT(result.output + result.errorOutput, IsEmpty()) << name;
        }
    }
}

TEST_F(AutostartPrograms, TheLauncherOfGlibStartsTheProgramWhereverItLies) {
    if (!isExecutableFile(launcher)) GTEST_SKIP() << "There is no gio here.";
    for (const std::string& name : oddNames) {
        executable_ = program(name);
        ASSERT_TRUE(switchTo(true)) << name;
        const test::ProcessResult result = run(launcher, {"launch", entry_});
        EXPECT_TRUE(result.exitedWith(0)) << name << result.errorOutput;
        const std::string notes = folder_.file("notes");
        ASSERT_TRUE(test::eventually([&] { return test::exists(notes); })) << name;
        EXPECT_EQ(test::readFile(notes), "0|" + executable_);
        std::filesystem::remove(notes);
    }
}

TEST_F(AutostartPrograms, TheGeneratorOfSystemdStartsWhatIsOnAndNothingThatIsOff) {
    if (!isExecutableFile(generator)) GTEST_SKIP() << "There is no generator of systemd here.";
    const auto units = [&] {
        const std::string output = folder_.file("units");
        std::filesystem::remove_all(output);
        std::filesystem::create_directory(output);
        EXPECT_TRUE(run(generator, {output, output, output}).exitedWith(0));
        return files_.entries(output).value();
    };
    for (const std::string& name : oddNames) {
        // It loses backslashes.
        if (name.find('\\') != std::string::npos) continue;
        executable_ = program(name);
        ASSERT_TRUE(switchTo(true));
        EXPECT_THAT(units(), Not(IsEmpty())) << name;
        ASSERT_TRUE(switchTo(false));
        EXPECT_THAT(units(), IsEmpty()) << name;
    }
    test::writeFile(systemEntry_, "[Desktop Entry]\nType=Application\nName=B\nExec=/bin/true\n");
    EXPECT_THAT(units(), Not(IsEmpty()));
    ASSERT_TRUE(switchTo(false));
    EXPECT_THAT(units(), IsEmpty());
}

}  // namespace
}  // namespace brimwatch
