#include "updates/private_update_commands.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "harness/temporary_folder.h"
#include "platform/linux/scripted_key_store.h"
#include "platform/posix/private_file.h"
#include "updates/mac_private_update_keychain_store.h"
#include "updates/private_update_info.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Reason = MacPrivateUpdateFailure::Reason;

class PrivateUpdateCommands : public ::testing::Test {
  protected:
    MacPrivateUpdateResult<void> configure(const std::string& path) {
        return configurePrivateUpdates(path, readFile(), readInfo(), keys_);
    }
    MacPrivateUpdateResult<void> clear() { return clearPrivateUpdates(readInfo(), keys_); }
    Reason reasonToRefuse(const std::string& path) {
        const auto result = configure(path);
        EXPECT_FALSE(result);
        return result ? Reason::debugDisabled : result.error().reason;
    }

    std::string write(const std::string& bytes, mode_t permissions = 0600) {
        const std::string path = folder_.file("configuration.json");
        test::writeFile(path, bytes);
        EXPECT_EQ(::chmod(path.c_str(), permissions), 0);
        return path;
    }

    ReadPrivateFile readFile() {
        return [this](const std::string& path) {
            steps_.emplace_back("file");
            return readPrivateFile(path, ::getuid(), privateUpdateSizeLimit);
        };
    }
    ReadBundleInfo readInfo() {
        return [this] {
            steps_.emplace_back("info");
            return info_;
        };
    }

    test::TemporaryFolder folder_;
    BundleInfo info_ = test::privateUpdateInfo();
    test::ScriptedKeyStore keys_;
    std::vector<std::string> steps_;
    const std::string good_ = R"({"username":"me","password":"secret"})";
};

TEST_F(PrivateUpdateCommands, ConfigureStoresWhatTheFileHolds) {
    ASSERT_TRUE(configure(write(good_)));
    EXPECT_EQ(MacPrivateUpdateKeychainStore(keys_, info_).load().value(), *parseCredentials(good_));
    EXPECT_THAT(steps_, ElementsAre("file", "info"));
}

TEST_F(PrivateUpdateCommands, ConfigureTouchesNoKeyStoreBeforeTheFileHasPassed) {
    EXPECT_EQ(reasonToRefuse(folder_.file("missing")), Reason::fileUnreadable);
    EXPECT_EQ(reasonToRefuse(folder_.path()), Reason::fileUnreadable);
    EXPECT_EQ(reasonToRefuse(write(good_, 0640)), Reason::filePermissions);
    EXPECT_EQ(reasonToRefuse(write(good_, 0700)), Reason::filePermissions);
    EXPECT_EQ(reasonToRefuse(write("")), Reason::inputTooLarge);
    EXPECT_EQ(reasonToRefuse(write(std::string(8193, ' '))), Reason::inputTooLarge);
    EXPECT_EQ(reasonToRefuse(write(R"({"username":"me","password":"s","x":1})")),
              Reason::invalidCredentials);
    EXPECT_THAT(keys_.calls, IsEmpty());
    EXPECT_EQ(std::count(steps_.begin(), steps_.end(), "info"), 0);
}

TEST_F(PrivateUpdateCommands, ConfigureTellsOfAMissingGroupAfterTheFile) {
    info_ = {};
    EXPECT_EQ(reasonToRefuse(write("")), Reason::inputTooLarge);
    EXPECT_EQ(reasonToRefuse(write(good_)), Reason::keychainGroup);
    EXPECT_THAT(keys_.calls, IsEmpty());
}

TEST_F(PrivateUpdateCommands, ConfigureTellsOfALockedKeyStore) {
    keys_.answer = [](const std::string&) { return key_status::interactionNotAllowed; };
    EXPECT_EQ(configure(write(good_)).error(),
              (MacPrivateUpdateFailure{.reason = Reason::keychain, .status = -25308}));
}

TEST_F(PrivateUpdateCommands, ClearingRemovesTheItemAndIsNoFailureWithoutOne) {
    ASSERT_TRUE(configure(write(good_)));
    EXPECT_TRUE(clear());
    EXPECT_THAT(keys_.values, IsEmpty());
    EXPECT_TRUE(clear());
}

}  // namespace
}  // namespace brimwatch
