#include "platform/linux/file_key_store.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "harness/forwarding_file_system.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr KeyPrompt forbidden = KeyPrompt::forbidden;
const KeyItem item = {.service = "net.example.sync", .account = "key-v1"};

class FileKeyStoreTest : public testing::Test {
  protected:
    static mode_t modeOf(const std::string& path) {
        struct stat status {};
        EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777U;
    }
    std::string stored(const KeyItem& wanted = item) {
        const KeyStore::Match match = store_.copyMatching(wanted, forbidden);
        EXPECT_EQ(match.status, 0);
        return std::string(match.value.view());
    }
    KeyStatus add(std::string_view value) {
        return store_.add(item, SecretBytes(value), forbidden);
    }
    KeyStatus update(std::string_view value) {
        return store_.update(item, SecretBytes(value), forbidden);
    }
    KeyStatus readStatus() { return store_.copyMatching(item, forbidden).status; }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        if (!test::exists(folder_)) return result;
        for (const auto& entry : std::filesystem::directory_iterator(folder_))
            result.push_back(entry.path().filename().string());
        return result;
    }

    test::TemporaryFolder parent_;
    std::string folder_ = parent_.file("data/brimwatch/keys");
    PosixFileSystem files_;
    FileKeyStore store_{files_, folder_, ::getuid()};
};

TEST_F(FileKeyStoreTest, AKeyIsMadeReadChangedAndRemoved) {
    const std::string bytes("a\0\xFF\n", 4);
    EXPECT_EQ(add(bytes), 0);
    EXPECT_EQ(stored(), bytes);
    EXPECT_EQ(update("changed"), 0);
    EXPECT_EQ(stored(), "changed");
    EXPECT_EQ(store_.remove(item, forbidden), 0);
    EXPECT_EQ(readStatus(), -25300);
    EXPECT_TRUE(names().empty());
}

TEST_F(FileKeyStoreTest, WhatIsNotThereIsNotFound) {
    EXPECT_EQ(readStatus(), -25300);
    EXPECT_EQ(update("a"), -25300);
    EXPECT_EQ(store_.remove(item, forbidden), -25300);
    EXPECT_FALSE(test::exists(folder_));
    EXPECT_FALSE(store_.hasItems());
}

TEST_F(FileKeyStoreTest, AKeyIsNeverMadeTwice) {
    EXPECT_EQ(add("first"), 0);
    EXPECT_EQ(add("second"), -25299);
    EXPECT_EQ(stored(), "first");
    EXPECT_TRUE(store_.hasItems());
}

TEST_F(FileKeyStoreTest, OnlyTheUserHasRights) {
    const mode_t former = ::umask(0);
    EXPECT_EQ(add("a"), 0);
    EXPECT_EQ(update("b"), 0);
    ::umask(former);
    EXPECT_EQ(modeOf(store_.path(item)), 0600U);
    EXPECT_EQ(modeOf(folder_), 0700U);
    EXPECT_EQ(names().size(), 1);
}

TEST_F(FileKeyStoreTest, KeysOfAnyNameLieInFilesOfTheirOwn) {
    const std::vector<KeyItem> items = {
        {.service = "a", .account = "b"},     {.service = "a+b", .account = ""},
        {.service = "", .account = "a+b"},    {.service = "a/../..", .account = "b/c"},
        {.service = "..", .account = "/"},    {.service = "a%2fb", .account = "한글"},
        {.service = "a/b", .account = "x y"}, {.service = "A", .account = "b"}};
    for (const KeyItem& each : items)
        EXPECT_EQ(store_.add(each, SecretBytes(each.service + each.account), forbidden), 0);
    for (const KeyItem& each : items) {
        EXPECT_EQ(stored(each), each.service + each.account);
        EXPECT_EQ(std::filesystem::path(store_.path(each)).parent_path(), folder_);
    }
    EXPECT_EQ(names().size(), items.size());
}

TEST_F(FileKeyStoreTest, AFileThatOthersMayUseIsRefusedButCanBeRemoved) {
    for (const mode_t bit : {0040U, 0020U, 0010U, 0004U, 0002U, 0001U}) {
        EXPECT_EQ(add("a"), 0);
        ASSERT_EQ(::chmod(store_.path(item).c_str(), 0600U | bit), 0);
        EXPECT_EQ(readStatus(), -36) << bit;
        EXPECT_EQ(update("b"), -36) << bit;
        EXPECT_EQ(add("b"), -36) << bit;
        EXPECT_EQ(store_.remove(item, forbidden), 0) << bit;
    }
}

TEST_F(FileKeyStoreTest, AFolderIntoWhichOthersMayWriteIsRefused) {
    EXPECT_EQ(add("a"), 0);
    for (const mode_t mode : {0720U, 0702U}) {
        ASSERT_EQ(::chmod(folder_.c_str(), mode), 0);
        EXPECT_EQ(readStatus(), -36) << mode;
        EXPECT_EQ(add("b"), -36) << mode;
    }
    ASSERT_EQ(::chmod(folder_.c_str(), 0755), 0);
    EXPECT_EQ(stored(), "a");
}

TEST_F(FileKeyStoreTest, ALinkIsNotFollowed) {
    EXPECT_EQ(add("a"), 0);
    const std::string place = store_.path(item);
    const std::string elsewhere = parent_.file("elsewhere");
    std::filesystem::rename(place, elsewhere);
    std::filesystem::create_symlink(elsewhere, place);
    EXPECT_EQ(readStatus(), -36);
    EXPECT_EQ(update("b"), -36);
    EXPECT_EQ(add("b"), -36);
    EXPECT_EQ(store_.remove(item, forbidden), 0);
    EXPECT_EQ(test::readFile(elsewhere), "a");
    std::filesystem::create_symlink(parent_.file("missing"), place);
    EXPECT_EQ(add("b"), -36);
    EXPECT_FALSE(test::exists(parent_.file("missing")));
}

TEST_F(FileKeyStoreTest, WhatIsNoFileOrTooLargeIsRefused) {
    std::filesystem::create_directories(store_.path(item));
    ASSERT_EQ(::chmod(folder_.c_str(), 0700), 0);
    ASSERT_EQ(::chmod(store_.path(item).c_str(), 0700), 0);
    EXPECT_EQ(readStatus(), -36);
    EXPECT_EQ(add("a"), -36);
    EXPECT_EQ(store_.remove(item, forbidden), -36);
    std::filesystem::remove(store_.path(item));
    EXPECT_EQ(add(std::string(FileKeyStore::sizeLimit, 'a')), 0);
    EXPECT_EQ(stored().size(), FileKeyStore::sizeLimit);
    const std::string tooLarge(FileKeyStore::sizeLimit + 1, 'a');
    EXPECT_EQ(update(tooLarge), -36);
    EXPECT_EQ(stored().size(), FileKeyStore::sizeLimit);
    EXPECT_EQ(store_.remove(item, forbidden), 0);
    EXPECT_EQ(add(tooLarge), -36);
    EXPECT_EQ(readStatus(), -25300);
    test::writeFile(store_.path(item), tooLarge);
    ASSERT_EQ(::chmod(store_.path(item).c_str(), 0600), 0);
    EXPECT_EQ(readStatus(), -36);
}

TEST_F(FileKeyStoreTest, AFileInPlaceOfTheFolderIsRefused) {
    test::writeFile(folder_, "");
    EXPECT_EQ(add("a"), -36);
    EXPECT_EQ(readStatus(), -36);
}

// Everything belongs to another user.
class OthersFiles final : public test::ForwardingFileSystem {
  public:
    using ForwardingFileSystem::ForwardingFileSystem;

    std::string path;

    FileResult<FileStatus> status(const std::string& asked) override {
        FileResult<FileStatus> result = ForwardingFileSystem::status(asked);
        if (result && asked == path) ++result->owner;
        return result;
    }
};

TEST_F(FileKeyStoreTest, WhatBelongsToAnotherUserIsRefused) {
    EXPECT_EQ(add("a"), 0);
    OthersFiles others(files_);
    FileKeyStore store(others, folder_, ::getuid());
    EXPECT_EQ(store.copyMatching(item, forbidden).status, 0);
    for (const std::string& path : {store.path(item), folder_}) {
        others.path = path;
        EXPECT_EQ(store.copyMatching(item, forbidden).status, -36) << path;
        EXPECT_EQ(store.update(item, SecretBytes("b"), forbidden), -36) << path;
    }
}

TEST_F(FileKeyStoreTest, AFullDiskLeavesTheFormerKeyAndNoTraceOfTheNewOne) {
    EXPECT_EQ(add("former"), 0);
    test::ScriptedFileSystem scripted(files_);
    FileKeyStore store(scripted, folder_, ::getuid());
    EXPECT_EQ(store.update(item, SecretBytes("former"), forbidden), 0);
    const std::size_t stepCount = scripted.steps().size();
    for (std::size_t step = 0; step < stepCount; ++step) {
        test::ScriptedFileSystem failing(files_);
        FileKeyStore full(failing, folder_, ::getuid());
        failing.failAtStep(step, std::errc::no_space_on_device);
        const KeyStatus status = full.update(item, SecretBytes("new"), forbidden);
        const std::string name = failing.steps().at(step);
        const bool isHarmless = name.starts_with("removeAbandonedTemporaries");
        EXPECT_EQ(status, isHarmless ? 0 : -36) << name;
        const bool isDone = isHarmless || name.starts_with("synchronizeFolder");
        EXPECT_EQ(stored(), isDone ? "new" : "former") << name;
        EXPECT_EQ(names().size(), 1) << name;
        EXPECT_EQ(update("former"), 0);
    }
    EXPECT_GE(stepCount, 6);
}

TEST_F(FileKeyStoreTest, AFullDiskMakesNoNewKey) {
    EXPECT_EQ(add("former"), 0);
    EXPECT_EQ(store_.remove(item, forbidden), 0);
    for (const char* step : {"makeTemporary", "write", "synchronize", "claim"}) {
        test::ScriptedFileSystem failing(files_);
        FileKeyStore full(failing, folder_, ::getuid());
        failing.failEveryStepNamed(step, std::errc::no_space_on_device);
        EXPECT_EQ(full.add(item, SecretBytes("new"), forbidden), -36) << step;
        EXPECT_TRUE(names().empty()) << step;
    }
}

TEST_F(FileKeyStoreTest, ACrashLeavesNoSecretBehindTheNextChange) {
    EXPECT_EQ(add("former"), 0);
    for (std::size_t step = 0;; ++step) {
        const bool stopped = test::isStopped([&] {
            test::ScriptedFileSystem crashing(files_);
            crashing.stopAtStep(step);
            FileKeyStore store(crashing, folder_, ::getuid());
            store.update(item, SecretBytes("new"), forbidden);
        });
        if (!stopped) break;
        const std::string left = stored();
        EXPECT_TRUE(left == "former" || left == "new") << step;
        EXPECT_EQ(update("former"), 0);
        EXPECT_EQ(names().size(), 1) << step;
    }
}

TEST_F(FileKeyStoreTest, AKeyThatSomebodyMakesMeanwhileStays) {
    test::ScriptedFileSystem scripted(files_);
    FileKeyStore store(scripted, folder_, ::getuid());
    scripted.interruptBeforeEachStep([&](std::size_t, const std::string& name) {
        if (name == "claim") add("theirs");
    });
    EXPECT_EQ(store.add(item, SecretBytes("mine"), forbidden), -25299);
    EXPECT_EQ(stored(), "theirs");
}

}  // namespace
}  // namespace brimwatch
