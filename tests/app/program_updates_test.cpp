#include "app/program_updates.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

#include "app/successor.h"
#include "platform/linux/application_test.h"
#include "platform/linux/scripted_key_store.h"
#include "platform/linux/update_maker.h"
#include "platform/linux/update_server.h"
#include "platform/posix/ignored_signals.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;
using Phase = UpdateStatus::Phase;

class ProgramUpdatesTest : public test::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        server_.emplace();
        const std::string archive = test::makeArchive(test::entriesOf("2"));
        server_->serve("/two", {.body = archive});
        server_->serve(
            "/feed",
            {.body = R"(<rss xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle">)"
                     "<channel><item><sparkle:version>2</sparkle:version><enclosure url=\"/two\" "
                     "length=\"" +
                     std::to_string(archive.size()) + "\" sparkle:edSignature=\"" +
                     key_.sign(archive) + "\"/></item></channel></rss>"});
    }
    void TearDown() override {
        updates_.reset();
        server_.reset();
        settle();
        application_.reset();
        ApplicationTest::TearDown();
    }

    void make(const std::string& command, const std::string& desktopProgram) {
        updates_.emplace(ProgramUpdates::Surroundings{
            .files = files_,
            .keys = keys_,
            .info = {.bundleIdentifier = "net.example.test.mac",
                     .version = "1",
                     .privateUpdatesKeychainGroup = "A1B2C3D4E5.net.example.test.mac",
                     .publicUpdateFeed = server_->origin() + "/feed",
                     .publicUpdateSigningKey = key_.publicKey()},
            .stateFolder = stateFolder_.path(),
            .desktopProgram = desktopProgram,
            .command = command,
            .locale = "ko_KR.UTF-8",
            .unpack = unpackUpdate,
            .activateApplication = [this] { ++activations_; },
            .quit = [this] { ++quits_; }});
    }
    // What is started after an update.
    std::string successorOf(const std::string& command) {
        make(command, installation_.desktopProgram());
        updates_->updater().checkForUpdates();
        EXPECT_TRUE(eventually([&] { return updates_->updater().status().phase == Phase::found; }));
        EXPECT_EQ(updates_->successor(), std::nullopt);
        updates_->updater().install();
        EXPECT_TRUE(eventually([&] { return quits_ > 0; }));
        EXPECT_EQ(installation_.current(), "2");
        return updates_->successor().value_or("none");
    }
    std::string currentCommand() const { return installation_.root() + "/current/bin/brimwatch"; }

    PosixFileSystem files_;
    test::ScriptedKeyStore keys_;
    test::TemporaryFolder stateFolder_;
    test::Installation installation_;
    test::SigningKey key_;
    std::optional<test::UpdateServer> server_;
    int activations_ = 0;
    int quits_ = 0;
    std::optional<ProgramUpdates> updates_;
};

TEST_F(ProgramUpdatesTest, TheSuccessorIsCalledAsTheUserCallsTheProgram) {
    const std::string link = stateFolder_.file("brimwatch");
    fs::create_symlink(currentCommand(), link);
    EXPECT_EQ(successorOf(link), link);
    EXPECT_EQ(quits_, 1);
    EXPECT_EQ(activations_, 2);
}

TEST_F(ProgramUpdatesTest, TheSuccessorOfAProgramThatWasCalledPastTheLinkIsTheNewVersion) {
    EXPECT_EQ(successorOf(installation_.versionsFolder() + "/1/bin/brimwatch"), currentCommand());
}

TEST_F(ProgramUpdatesTest, AProgramOfAPackageHasNoUpdates) {
    make("/usr/bin/brimwatch", "/usr/libexec/brimwatch/brimwatch-desktop");
    EXPECT_FALSE(updates_->updater().isAvailable());
    EXPECT_EQ(updates_->updater().unavailability(), UpdateUnavailability::managedElsewhere);
}

TEST(Successor, HasTheSignalsThatTheProgramWasStartedWith) {
    const test::TemporaryFolder folder;
    const std::string script = folder.file("program");
    test::writeFile(script, "#!/bin/sh\ngrep SigIgn /proc/self/status > '" +
                                folder.file("signals") + "'\necho \"$0 $#\" > '" +
                                folder.file("name") + "'\n");
    ::chmod(script.c_str(), 0755);
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGPIPE, SIG_DFL);
        ::signal(SIGXFSZ, SIG_DFL);
        becomeSuccessor(script, ignoreWriteSignals());
        ::_exit(1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(test::readFile(folder.file("name")), script + " 0\n");
    const std::string ignored = test::readFile(folder.file("signals")).substr(7);
    const auto mask = std::stoull(ignored, nullptr, 16);
    EXPECT_EQ(mask & (1ULL << (SIGPIPE - 1)), 0U);
    EXPECT_EQ(mask & (1ULL << (SIGXFSZ - 1)), 0U);
}

}  // namespace
}  // namespace brimwatch
