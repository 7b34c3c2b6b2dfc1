#include "platform/linux/qt_folder_watch.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "harness/temporary_folder.h"
#include "platform/linux/application_test.h"

namespace brimwatch {
namespace {

constexpr uid_t nobody = 65534;

class FolderWatchTest : public test::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        std::filesystem::create_directory(folder_);
        watch_ = std::make_unique<QtFolderWatch>();
        before_ = printed_;
        formerHandler_ = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext&, const QString&) { ++printed_; });
    }
    void TearDown() override {
        watch_.reset();
        qInstallMessageHandler(formerHandler_);
        EXPECT_EQ(printed_, before_) << "Qt had something to say";
        ApplicationTest::TearDown();
    }

    void watchFolder() {
        watch_->watch(folder_, [this] { ++words_; });
    }

    // Waits until a second watch has heard of a change of its own: by then this one has heard of
    // all that was before.
    void catchUp() {
        const std::string other = temporary_.file("other");
        std::filesystem::create_directories(other);
        bool isHeard = false;
        QtFolderWatch witness;
        witness.watch(other, [&] { isHeard = true; });
        test::writeFile(other + "/file", "");
        std::filesystem::remove(other + "/file");
        ASSERT_TRUE(eventually([&] { return isHeard; }));
        settle();
    }

    void expectNothingFrom(const std::function<void()>& change) {
        catchUp();
        words_ = 0;
        change();
        catchUp();
        EXPECT_EQ(words_, 0);
    }

    bool hearsOf(const std::function<void()>& change) {
        settle();
        words_ = 0;
        change();
        return eventually([this] { return words_ > 0; });
    }

    test::TemporaryFolder temporary_;
    std::string folder_ = temporary_.file("folder");
    std::unique_ptr<QtFolderWatch> watch_;
    int words_ = 0;

  private:
    static inline int printed_ = 0;
    int before_ = 0;
    QtMessageHandler formerHandler_ = nullptr;
};

TEST_F(FolderWatchTest, AFileThatIsRenamedIntoTheFolderGivesWord) {
    watchFolder();
    test::writeFile(temporary_.file("new"), "figures");
    EXPECT_TRUE(hearsOf(
        [&] { std::filesystem::rename(temporary_.file("new"), folder_ + "/claude.json"); }));
    test::writeFile(temporary_.file("newer"), "figures");
    EXPECT_TRUE(hearsOf(
        [&] { std::filesystem::rename(temporary_.file("newer"), folder_ + "/claude.json"); }));
}

TEST_F(FolderWatchTest, AFileThatIsReplacedFromWithinTheFolderGivesWord) {
    watchFolder();
    EXPECT_TRUE(hearsOf([&] {
        test::writeFile(folder_ + "/.hidden", "figures");
        std::filesystem::rename(folder_ + "/.hidden", folder_ + "/claude.json");
    }));
}

TEST_F(FolderWatchTest, AFileThatGoesGivesWord) {
    test::writeFile(folder_ + "/claude.json", "figures");
    watchFolder();
    EXPECT_TRUE(hearsOf([&] { std::filesystem::remove(folder_ + "/claude.json"); }));
}

TEST_F(FolderWatchTest, WithoutAChangeThereIsNoWord) {
    test::writeFile(folder_ + "/claude.json", "figures");
    watchFolder();
    expectNothingFrom([&] { EXPECT_EQ(test::readFile(folder_ + "/claude.json"), "figures"); });
}

TEST_F(FolderWatchTest, TheWordComesFromTheEventLoop) {
    watchFolder();
    test::writeFile(folder_ + "/claude.json", "figures");
    EXPECT_EQ(words_, 0);
    EXPECT_TRUE(eventually([&] { return words_ > 0; }));
}

TEST_F(FolderWatchTest, AThousandChangesAtOnceGiveFewWords) {
    watchFolder();
    constexpr int changes = 1000;
    EXPECT_TRUE(hearsOf([&] {
        for (int count = 0; count < changes; ++count) {
            test::writeFile(folder_ + "/new", "figures");
            std::filesystem::rename(folder_ + "/new", folder_ + "/claude.json");
        }
    }));
    settle();
    EXPECT_LT(words_, changes / 10);
}

TEST_F(FolderWatchTest, AFolderThatIsMissingGivesNothingAlsoWhenItComesLater) {
    std::filesystem::remove(folder_);
    watchFolder();
    expectNothingFrom([&] { test::writeFile(folder_ + "/claude.json", "figures"); });
}

TEST_F(FolderWatchTest, WhatIsNoFolderGivesNothing) {
    std::filesystem::remove(folder_);
    test::writeFile(folder_, "a file");
    for (const std::string& path : {folder_, folder_ + "/below", std::string()}) {
        watch_->watch(path, [this] { ++words_; });
        expectNothingFrom([&] { test::writeFile(folder_, "another"); });
    }
}

TEST_F(FolderWatchTest, AFolderThatCannotBeReadGivesNothing) {
    std::filesystem::permissions(
        folder_, std::filesystem::perms::owner_write | std::filesystem::perms::owner_exec);
    std::filesystem::permissions(temporary_.path(), std::filesystem::perms::all);
    const bool isRoot = ::geteuid() == 0;
    ASSERT_TRUE(!isRoot || ::setresuid(nobody, nobody, 0) == 0);
    watchFolder();
    ASSERT_TRUE(!isRoot || ::setresuid(0, 0, 0) == 0);
    expectNothingFrom([&] { test::writeFile(folder_ + "/claude.json", "figures"); });
}

TEST_F(FolderWatchTest, AFolderWhoseNameIsNotUtf8GivesNothing) {
    const std::string odd = temporary_.file("\xFFodd");
    std::filesystem::create_directory(odd);
    watch_->watch(odd, [this] { ++words_; });
    expectNothingFrom([&] { test::writeFile(odd + "/claude.json", "figures"); });
}

TEST_F(FolderWatchTest, AFolderWithAKoreanNameBehindALinkIsWatched) {
    const std::string korean = temporary_.file("한글 폴더");
    std::filesystem::create_directory(korean);
    std::filesystem::create_symlink(korean, temporary_.file("link"));
    watch_->watch(temporary_.file("link"), [this] { ++words_; });
    EXPECT_TRUE(hearsOf([&] { test::writeFile(korean + "/claude.json", "figures"); }));
}

TEST_F(FolderWatchTest, TheRemovalOfTheFolderGivesOneLastWordAtMost) {
    watchFolder();
    std::filesystem::remove(folder_);
    catchUp();
    EXPECT_LE(words_, 1);
    expectNothingFrom([&] { test::writeFile(folder_ + "/claude.json", "figures"); });
}

TEST_F(FolderWatchTest, AFolderThatTakesThePlaceOfARenamedOneGivesNothing) {
    watchFolder();
    std::filesystem::rename(folder_, temporary_.file("elsewhere"));
    expectNothingFrom([&] { test::writeFile(folder_ + "/claude.json", "figures"); });
}

TEST_F(FolderWatchTest, AFolderThatCameBackIsWatchedWhenThatIsAskedFor) {
    watchFolder();
    std::filesystem::remove(folder_);
    settle();
    std::filesystem::create_directory(folder_);
    watchFolder();
    EXPECT_TRUE(hearsOf([&] { test::writeFile(folder_ + "/claude.json", "figures"); }));
}

TEST_F(FolderWatchTest, ANewFolderTakesThePlaceOfTheFormerOne) {
    int former = 0;
    watch_->watch(folder_, [&] { ++former; });
    test::writeFile(folder_ + "/claude.json", "not heard of yet");
    const std::string next = temporary_.file("next");
    std::filesystem::create_directory(next);
    watch_->watch(next, [this] { ++words_; });
    EXPECT_TRUE(hearsOf([&] {
        test::writeFile(folder_ + "/claude.json", "figures");
        test::writeFile(next + "/claude.json", "figures");
    }));
    settle();
    EXPECT_EQ(former, 0);
}

TEST_F(FolderWatchTest, WatchingTheSameFolderTwiceGivesWordToTheLast) {
    int former = 0;
    watch_->watch(folder_, [&] { ++former; });
    watchFolder();
    EXPECT_TRUE(hearsOf([&] { test::writeFile(folder_ + "/claude.json", "figures"); }));
    EXPECT_EQ(former, 0);
}

TEST_F(FolderWatchTest, TwoWatchesOfOneFolderBothGiveWord) {
    int others = 0;
    QtFolderWatch other;
    other.watch(folder_, [&] { ++others; });
    watchFolder();
    EXPECT_TRUE(hearsOf([&] { test::writeFile(folder_ + "/claude.json", "figures"); }));
    EXPECT_TRUE(eventually([&] { return others > 0; }));
}

TEST_F(FolderWatchTest, DestroyingItEndsTheWatch) {
    watchFolder();
    test::writeFile(folder_ + "/claude.json", "figures");
    watch_.reset();
    settle();
    EXPECT_EQ(words_, 0);
}

TEST_F(FolderWatchTest, ItMayBeDestroyedFromWithinItsCall) {
    const auto token = std::make_shared<int>(7);
    watch_->watch(folder_, [this, token] {
        watch_.reset();
        words_ += *token;
    });
    EXPECT_TRUE(hearsOf([&] { test::writeFile(folder_ + "/claude.json", "figures"); }));
    test::writeFile(folder_ + "/claude.json", "more figures");
    settle();
    EXPECT_EQ(words_, 7);
}

TEST_F(FolderWatchTest, ItMayBeGivenAnotherFolderFromWithinItsCall) {
    const std::string next = temporary_.file("next");
    std::filesystem::create_directory(next);
    const auto token = std::make_shared<int>(1);
    int former = 0;
    watch_->watch(folder_, [this, &former, next, token] {
        watch_->watch(next, [this] { ++words_; });
        former += *token;
    });
    test::writeFile(folder_ + "/claude.json", "figures");
    EXPECT_TRUE(eventually([&] { return former > 0; }));
    EXPECT_TRUE(hearsOf([&] { test::writeFile(next + "/claude.json", "figures"); }));
    EXPECT_EQ(former, 1);
}

TEST_F(FolderWatchTest, ItsDescriptorsAreClosedOnExec) {
    watch_.reset();
    const std::set<int> before = test::openDescriptors();
    watch_ = std::make_unique<QtFolderWatch>();
    watchFolder();
    int added = 0;
    for (const int descriptor : test::openDescriptors()) {
        if (before.contains(descriptor)) continue;
        ++added;
        EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
    }
    EXPECT_GT(added, 0);
}

TEST_F(FolderWatchTest, WithoutAFreeDescriptorItStillDoesNoHarm) {
    watch_.reset();
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    const rlimit none{.rlim_cur = STDERR_FILENO + 1, .rlim_max = former.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    watch_ = std::make_unique<QtFolderWatch>();
    watchFolder();
    ::setrlimit(RLIMIT_NOFILE, &former);
    test::writeFile(folder_ + "/claude.json", "figures");
    settle();
    watch_.reset();
    EXPECT_LE(words_, 1);
}

}  // namespace
}  // namespace brimwatch
