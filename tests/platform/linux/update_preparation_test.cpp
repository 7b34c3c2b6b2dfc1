#include "platform/linux/update_preparation.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <limits>

#include "platform/linux/killed_process.h"
#include "platform/linux/update_maker.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using Result = tl::expected<void, UpdateFailure>;

class UpdatePreparation : public ::testing::Test {
  protected:
    void SetUp() override { offer(test::entriesOf("2")); }

    void offer(const std::vector<test::ArchiveEntry>& entries) {
        archive_ = test::makeArchive(entries);
        order_ = {.version = "2",
                  .signature = key_.sign(archive_),
                  .publicKey = key_.publicKey(),
                  .bundleIdentifier = "net.example.test.mac",
                  .runningVersion = "1"};
    }
    // The version of an archive that differs in one file.
    void offerWith(const std::string& path, const std::string& content, mode_t mode) {
        auto entries = test::entriesOf("2");
        for (test::ArchiveEntry& entry : entries) {
            if (entry.path != path) continue;
            entry.content = content;
            entry.mode = mode;
        }
        offer(entries);
    }

    Result prepare() { return prepareIn(installation_); }
    Result prepareIn(const test::Installation& installation) const {
        const FileDescriptor file(::memfd_create("update", MFD_CLOEXEC));
        EXPECT_EQ(::write(file.get(), archive_.data(), archive_.size()),
                  static_cast<ssize_t>(archive_.size()));
        return prepareUpdate(order_, file, installation.folders(), unpackUpdate, isCancelled_);
    }
    int prepareAndSwitch(const test::Installation& installation) const {
        if (!prepareIn(installation)) return 1;
        return installation.folders().switchTo("2") ? 0 : 2;
    }
    // Fails like that and leaves no trace.
    void expectFailure(UpdateFailure failure) {
        const Result result = prepare();
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error(), failure);
        EXPECT_THAT(installation_.versions(), ElementsAre("1"));
        EXPECT_EQ(installation_.current(), "1");
    }

    test::SigningKey key_;
    test::Installation installation_;
    std::string archive_;
    PreparationOrder order_;
    std::atomic<bool> isCancelled_ = false;
};

TEST_F(UpdatePreparation, PutsTheVersionBesideTheOthersAndCallsItByNobody) {
    ASSERT_TRUE(prepare());
    EXPECT_THAT(installation_.versions(), ElementsAre("1", "2"));
    EXPECT_EQ(installation_.current(), "1");
    ASSERT_TRUE(installation_.folders().switchTo("2"));
    EXPECT_EQ(installation_.current(), "2");
}

TEST_F(UpdatePreparation, TwiceIsAsGoodAsOnce) {
    ASSERT_TRUE(prepare());
    ASSERT_TRUE(prepare());
    EXPECT_THAT(installation_.versions(), ElementsAre("1", "2"));
}

TEST_F(UpdatePreparation, UnpacksNothingOfAnotherSignature) {
    order_.signature = key_.sign(archive_ + 'x');
    expectFailure(UpdateFailure::signature);
    order_.signature = "";
    expectFailure(UpdateFailure::signature);
    order_.signature = test::SigningKey().sign(archive_);
    expectFailure(UpdateFailure::signature);
    order_.signature = key_.sign(archive_);
    archive_.back() = static_cast<char>(archive_.back() ^ 1);
    expectFailure(UpdateFailure::signature);
}

TEST_F(UpdatePreparation, AskedForNoKeyTakesNoSignature) {
    order_.publicKey = "";
    expectFailure(UpdateFailure::signature);
}

TEST_F(UpdatePreparation, RefusesAnOldArchiveThatTheFeedCallsNew) {
    offer(test::entriesOf("1"));
    expectFailure(UpdateFailure::archive);
    order_.version = "1";
    expectFailure(UpdateFailure::archive);
    offer(test::entriesOf("0.9"));
    order_.version = "0.9";
    expectFailure(UpdateFailure::archive);
    offer(test::entriesOf("1.0"));
    order_.version = "1.0";
    expectFailure(UpdateFailure::archive);
}

TEST_F(UpdatePreparation, RefusesAnotherProgramOfTheMaker) {
    order_.bundleIdentifier = "net.example.other.mac";
    expectFailure(UpdateFailure::archive);
}

TEST_F(UpdatePreparation, RefusesWhatIsNoWholeVersion) {
    for (const char* path : {"bin/brimwatch", "libexec/brimwatch/brimwatch-desktop"}) {
        offerWith(path, "x", 0644);
        expectFailure(UpdateFailure::archive);
    }
    offerWith("libexec/brimwatch/bundle-info.json", "{", 0644);
    expectFailure(UpdateFailure::archive);
    offer({{.path = "bin/brimwatch", .mode = 0755}});
    expectFailure(UpdateFailure::archive);
    offer({});
    expectFailure(UpdateFailure::archive);
}

TEST_F(UpdatePreparation, RefusesWhatIsNoArchive) {
    archive_ = "signed, but no archive";
    order_.signature = key_.sign(archive_);
    expectFailure(UpdateFailure::archive);
}

TEST_F(UpdatePreparation, RefusesAVersionThatIsNoName) {
    for (const char* version : {"../2", "", ".", "2/3"}) {
        order_.version = version;
        expectFailure(UpdateFailure::archive);
    }
}

TEST_F(UpdatePreparation, AnEmptyFileIsNoUpdate) {
    archive_.clear();
    order_.signature = key_.sign(archive_);
    expectFailure(UpdateFailure::disk);
}

TEST_F(UpdatePreparation, StopsWhenItIsCancelled) {
    isCancelled_ = true;
    expectFailure(UpdateFailure::disk);
}

TEST_F(UpdatePreparation, RemovesWhatAttemptsBeforeItLeftButNotWhatIsReady) {
    for (const char* name : {"0.5", "1.5", ".staging-abc123"})
        test::writeFile(installation_.versionsFolder() + '/' + name + "/bin/brimwatch", "x");
    order_.readyVersion = "1.5";
    ASSERT_TRUE(prepare());
    EXPECT_THAT(installation_.versions(), ElementsAre("1", "1.5", "2"));
}

TEST_F(UpdatePreparation, OnAFullDiskLeavesNothing) {
    int status = 0;
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const FileDescriptor file(::memfd_create("update", MFD_CLOEXEC));
        const bool isWritten = ::write(file.get(), archive_.data(), archive_.size()) > 0;
        // Less than the largest file of a version.
        const rlimit limit{.rlim_cur = 200'000, .rlim_max = 200'000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        const Result result =
            prepareUpdate(order_, file, installation_.folders(), unpackUpdate, isCancelled_);
        ::_exit(isWritten && !result && result.error() == UpdateFailure::disk ? 7 : 1);
    }
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    EXPECT_THAT(installation_.versions(), ElementsAre("1"));
    EXPECT_EQ(installation_.current(), "1");
}

TEST_F(UpdatePreparation, InFoldersThatCantBeWrittenFails) {
    fs::remove_all(installation_.versionsFolder());
    const Result result = prepare();
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), UpdateFailure::disk);
}

TEST_F(UpdatePreparation, KilledInFrontOfAnyStepLeavesAProgramThatStarts) {
    const test::FoldersInMemory quick;
    std::size_t killed = 0;
    bool sawNew = false;
    for (std::size_t step = 0;; ++step) {
        const test::Installation installation;
        const test::KilledRun run =
            test::runUntilChange(step, [&] { return prepareAndSwitch(installation); });
        if (!run.isTraced) GTEST_SKIP() << "tracing is not allowed here";
        const std::string current = installation.current();
        EXPECT_TRUE(current == "1" || current == "2") << step << ": " << current;
        // Once everybody calls the new version nobody goes back.
        EXPECT_FALSE(sawNew && current == "1") << step;
        sawNew |= current == "2";
        if (!run.isKilled) {
            EXPECT_EQ(run.exitStatus, 0);
            EXPECT_EQ(current, "2");
            break;
        }
        ++killed;
        ASSERT_EQ(prepareAndSwitch(installation), 0) << step;
        EXPECT_EQ(installation.current(), "2") << step;
        EXPECT_THAT(installation.versions(), ElementsAre("1", "2")) << step;
    }
    EXPECT_GT(killed, 20U);
    EXPECT_TRUE(sawNew);
}

TEST_F(UpdatePreparation, EverythingReachesTheDiskBeforeItGetsItsName) {
    const test::KilledRun run = test::runUntilChange(
        std::numeric_limits<std::size_t>::max(), [&] { return prepareAndSwitch(installation_); });
    if (!run.isTraced) GTEST_SKIP() << "tracing is not allowed here";
    std::vector<long> order;
    std::size_t synchronizedFirst = 0;
    for (const long change : run.changes) {
        const bool isName = change == SYS_rename || change == SYS_symlink;
        if (order.empty() && change == SYS_fsync) ++synchronizedFirst;
        if (isName || (!order.empty() && (change == SYS_fsync || change == SYS_write)))
            order.push_back(change);
    }
    // Four files, and bin, libexec, libexec/brimwatch, share and the folder of the version.
    EXPECT_EQ(synchronizedFirst, 4U + 5U);
    EXPECT_THAT(order, ElementsAre(SYS_rename, SYS_fsync, SYS_symlink, SYS_rename, SYS_fsync));
}

}  // namespace
}  // namespace brimwatch
