// The two commands of private updates as a user gives them in a terminal.

#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "harness/process.h"
#include "harness/temporary_folder.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* done = "Private update configuration updated. Restart the app to apply it.\n";
constexpr const char* good = R"({"username":"me-myself","password":"top-secret"})";

class PrivateUpdateProcess : public ::testing::Test {
  protected:
    // An installation of its own, made with another group than the build.
    void SetUp() override {
        fs::create_directories(prefix_ + "/bin");
        fs::create_directories(prefix_ + "/libexec/brimwatch");
        fs::copy_file(BRIMWATCH_COMMAND, prefix_ + "/bin/brimwatch");
        fs::copy_file(BRIMWATCH_DESKTOP_PROGRAM, desktopProgram());
        setGroup("A1B2C3D4E5.net.example.test.mac");
    }

    std::string desktopProgram() const { return prefix_ + "/libexec/brimwatch/brimwatch-desktop"; }
    void setGroup(const std::string& group) {
        test::writeFile(prefix_ + "/libexec/brimwatch/bundle-info.json",
                        R"({"CFBundleIdentifier":"net.example.test.mac",)"
                        R"("QMPrivateUpdatesKeychainGroup":")" +
                            group + "\"}");
    }

    // Without a session bus, so that keys are files.
    test::ProcessResult runProgram(const std::string& program,
                                   const std::vector<std::string>& arguments) {
        return test::runProcess({.program = program,
                                 .arguments = arguments,
                                 .environment = {{"HOME", folder_.file("home")},
                                                 {"DBUS_SESSION_BUS_ADDRESS", ""},
                                                 {"LANG", "C.UTF-8"},
                                                 {"QT_LOGGING_TO_CONSOLE", "1"},
                                                 {"XDG_RUNTIME_DIR", folder_.file("runtime")}},
                                 .input = "",
                                 .prepare = nullptr});
    }
    test::ProcessResult run(const std::vector<std::string>& arguments) {
        return runProgram(prefix_ + "/bin/brimwatch", arguments);
    }

    std::string write(const std::string& bytes, mode_t permissions = 0600) {
        const std::string path = folder_.file("configuration.json");
        test::writeFile(path, bytes);
        EXPECT_EQ(::chmod(path.c_str(), permissions), 0);
        return path;
    }

    std::vector<std::string> storedKeys() const {
        std::vector<std::string> keys;
        const std::string keyFolder = folder_.file("home/.local/share/brimwatch/keys");
        if (!test::exists(keyFolder)) return keys;
        for (const auto& entry : fs::directory_iterator(keyFolder))
            keys.push_back(test::readFile(entry.path()));
        return keys;
    }

    static void expectFailure(const test::ProcessResult& result, const std::string& message) {
        EXPECT_TRUE(result.exitedWith(2));
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errorOutput, message + '\n');
    }

    test::TemporaryFolder folder_;
    std::string prefix_ = fs::canonical(folder_.path()).string() + "/versions/1";
};

TEST_F(PrivateUpdateProcess, ConfiguringStoresTheCredentialsAndSaysToRestart) {
    const test::ProcessResult result = run({"--configure-private-updates", write(good)});
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_EQ(result.output, done);
    EXPECT_THAT(result.errorOutput, Not(HasSubstr("secret")));
    EXPECT_THAT(storedKeys(),
                ::testing::ElementsAre(R"({"password":"top-secret","username":"me-myself"})"));
}

TEST_F(PrivateUpdateProcess, ConfiguringTwiceKeepsOneItemAndClearingTwiceNone) {
    run({"--configure-private-updates", write(good)});
    run({"--configure-private-updates", write(R"({"username":"you","password":"p:w"})")});
    EXPECT_THAT(storedKeys(), ::testing::ElementsAre(R"({"password":"p:w","username":"you"})"));
    for (int time = 0; time < 2; ++time) {
        const test::ProcessResult result = run({"--clear-private-updates"});
        EXPECT_TRUE(result.exitedWith(0));
        EXPECT_EQ(result.output, done);
        EXPECT_EQ(result.errorOutput, "");
        EXPECT_THAT(storedKeys(), ::testing::IsEmpty());
    }
}

TEST_F(PrivateUpdateProcess, ARefusedFileIsOneLineAndStatusTwo) {
    const std::vector<std::string> missing = {"--configure-private-updates",
                                              folder_.file("missing")};
    expectFailure(run(missing), "Cannot read a regular, non-symlink configuration file.");
    expectFailure(run({"--configure-private-updates", write(good, 0640)}),
                  "Configuration file must be owned by this user with permissions 0600.");
    expectFailure(run({"--configure-private-updates", write("")}),
                  "Configuration file must contain 1–8192 bytes.");
    expectFailure(run({"--configure-private-updates", write(R"({"username":"top-secret"})")}),
                  "Configuration must contain only valid username and password strings.");
    EXPECT_THAT(storedKeys(), ::testing::IsEmpty());
}

TEST_F(PrivateUpdateProcess, ABuildWithoutAGroupFails) {
    setGroup("");
    expectFailure(run({"--configure-private-updates", write(good)}),
                  "Private update Keychain group is unavailable.");
    expectFailure(run({"--clear-private-updates"}),
                  "Private update Keychain group is unavailable.");
}

TEST_F(PrivateUpdateProcess, AKeyStoreThatFailsIsOneLineWithoutItsStatus) {
    run({"--configure-private-updates", write(good)});
    fs::permissions(folder_.file("home/.local/share/brimwatch/keys"), fs::perms::all);
    const test::ProcessResult result = run({"--configure-private-updates", write(good)});
    EXPECT_TRUE(result.exitedWith(2));
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errorOutput,
                ::testing::EndsWith("Private update Keychain access failed.\n"));
    EXPECT_THAT(result.errorOutput, Not(HasSubstr("-36")));
}

// For a user whom the system knows by his number alone, which only root may arrange.
class PrivateUpdateWithoutHome : public PrivateUpdateProcess {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "only root can hide the list of users";
        PrivateUpdateProcess::SetUp();
        if (runWithoutHome({"--clear-private-updates"}).exitedWith(126))
            GTEST_SKIP() << "this place allows no mount namespace";
    }

    test::ProcessResult runWithoutHome(const std::vector<std::string>& arguments) {
        return test::runProcess(
            {.program = prefix_ + "/bin/brimwatch",
             .arguments = arguments,
             .environment = {{"DBUS_SESSION_BUS_ADDRESS", ""},
                             {"LANG", "C.UTF-8"},
                             {"XDG_RUNTIME_DIR", folder_.file("runtime")}},
             .input = "",
             .prepare = [] {
                 const bool isHidden =
                     ::unshare(CLONE_NEWNS) == 0 &&
                     ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                     ::mount("/dev/null", "/etc/passwd", nullptr, MS_BIND, nullptr) == 0;
                 if (!isHidden) ::_exit(126);
             }});
    }
};

TEST_F(PrivateUpdateWithoutHome, TheFileIsLookedAtFirstAllTheSame) {
    expectFailure(runWithoutHome({"--configure-private-updates", folder_.file("missing")}),
                  "Cannot read a regular, non-symlink configuration file.");
    expectFailure(runWithoutHome({"--configure-private-updates", write("{}")}),
                  "Configuration must contain only valid username and password strings.");
    expectFailure(runWithoutHome({"--configure-private-updates", write(good)}),
                  "Private update configuration failed.");
    expectFailure(runWithoutHome({"--clear-private-updates"}),
                  "Private update configuration failed.");
}

TEST_F(PrivateUpdateProcess, TheDesktopProgramTellsOfTheUsageByItself) {
    const std::string usage =
        "Use --configure-private-updates <0600 JSON file> or --clear-private-updates.";
    expectFailure(runProgram(desktopProgram(), {"--statusline", "--clear-private-updates"}), usage);
    expectFailure(runProgram(desktopProgram(), {"--configure-private-updates"}), usage);
}

TEST_F(PrivateUpdateProcess, APathThatLooksLikeAnOptionOfTheToolkitIsAPath) {
    expectFailure(run({"--configure-private-updates", "-platform"}),
                  "Cannot read a regular, non-symlink configuration file.");
}

}  // namespace
}  // namespace brimwatch
