#include "platform/linux/chosen_key_store.h"

#include <gtest/gtest.h>

#include <QLoggingCategory>
#include <vector>

#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/linux/scripted_key_store.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr KeyPrompt forbidden = KeyPrompt::forbidden;
const KeyItem item = {.service = "a", .account = "b"};
const KeyItem otherItem = {.service = "a", .account = "c"};

QStringList logged;  // NOLINT: the message handler of Qt has no context

class ChosenKeyStoreTest : public testing::Test {
  protected:
    void SetUp() override {
        logged.clear();
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
            logged << message;
        });
        restart();
    }
    void TearDown() override { qInstallMessageHandler(nullptr); }

    void restart(FileSystem* files = nullptr) {
        store_.emplace(
            ChosenKeyStore::Stores{.secretService = service_,
                                   .isServiceMissing = [this] { return isMissing_; },
                                   .files = fileStore_,
                                   .hasFiles = [this] { return !fileStore_.values.empty(); }},
            files != nullptr ? *files : files_, choiceFile_);
    }
    void serviceIs(std::optional<KeyStatus> status, bool isMissing = false) {
        isMissing_ = isMissing;
        service_.answer = [status](const std::string&) { return status; };
    }
    KeyStatus add(const KeyItem& added = item) {
        return store_->add(added, SecretBytes("value"), forbidden);
    }
    std::vector<KeyStatus> others() {
        return {store_->copyMatching(item, forbidden).status,
                store_->update(item, SecretBytes("x"), forbidden), store_->remove(item, forbidden)};
    }

    test::TemporaryFolder folder_;
    std::string choiceFile_ = folder_.file("state/keyStore.json");
    PosixFileSystem files_;
    test::ScriptedKeyStore service_;
    test::ScriptedKeyStore fileStore_;
    bool isMissing_ = false;
    std::optional<ChosenKeyStore> store_;
};

TEST_F(ChosenKeyStoreTest, WhereThereIsAServiceKeysAreKeptThere) {
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(service_.values.size(), 1);
    EXPECT_TRUE(fileStore_.values.empty());
    EXPECT_EQ(test::readFile(choiceFile_), "\"secret-service\"");
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, 0));
    EXPECT_TRUE(logged.isEmpty());
}

TEST_F(ChosenKeyStoreTest, WhereThereIsNoneTheyAreFilesAndTheLogSaysSoOnce) {
    serviceIs(-25291, true);
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(add(otherItem), 0);
    EXPECT_EQ(fileStore_.values.size(), 2);
    EXPECT_EQ(test::readFile(choiceFile_), "\"files\"");
    EXPECT_EQ(logged, QStringList(QStringLiteral("비밀 저장소가 없어 열쇠를 파일에 둔다")));
    restart();
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, 0));
    EXPECT_EQ(logged.size(), 1);
}

TEST_F(ChosenKeyStoreTest, OnceChosenAnAbsentServiceIsNotAvailable) {
    EXPECT_EQ(add(), 0);
    restart();
    serviceIs(-25291, true);
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, -25291));
    EXPECT_EQ(add(otherItem), -25291);
    EXPECT_TRUE(fileStore_.calls.empty());
    serviceIs(std::nullopt);
    EXPECT_EQ(store_->copyMatching(item, forbidden).value.view(), "value");
}

TEST_F(ChosenKeyStoreTest, OnceFilesAreChosenAServiceThatComesIsNotAsked) {
    serviceIs(-25291, true);
    EXPECT_EQ(add(), 0);
    serviceIs(std::nullopt);
    service_.calls.clear();
    restart();
    EXPECT_EQ(add(otherItem), 0);
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, 0));
    EXPECT_TRUE(service_.calls.empty());
}

TEST_F(ChosenKeyStoreTest, AServiceThatOnlyDoesNotAnswerMakesNoChoice) {
    serviceIs(-25291);
    EXPECT_EQ(add(), -25291);
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, -25291));
    EXPECT_FALSE(test::exists(choiceFile_));
    EXPECT_TRUE(fileStore_.calls.empty());
}

TEST_F(ChosenKeyStoreTest, ALockedServiceMakesNoChoice) {
    serviceIs(-25308, true);
    EXPECT_EQ(add(), -25308);
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, -25308));
    EXPECT_FALSE(test::exists(choiceFile_));
}

TEST_F(ChosenKeyStoreTest, WhereNothingCanBeKeptAndNothingIsNothingIsMissed) {
    serviceIs(-25291, true);
    EXPECT_EQ(others(), std::vector<KeyStatus>(3, -25300));
    EXPECT_FALSE(test::exists(choiceFile_));
}

TEST_F(ChosenKeyStoreTest, AKeyThatIsThereAlreadyIsAChoice) {
    service_.values[test::ScriptedKeyStore::nameOf(item)] = SecretBytes("former");
    EXPECT_EQ(add(), -25299);
    EXPECT_EQ(test::readFile(choiceFile_), "\"secret-service\"");
}

TEST_F(ChosenKeyStoreTest, WhereTheChoiceIsLostFilesTellIt) {
    serviceIs(-25291, true);
    EXPECT_EQ(add(), 0);
    serviceIs(std::nullopt);
    for (const char* damaged : {"", "\"other\"", "files", "{", "7"}) {
        test::writeFile(choiceFile_, damaged);
        restart();
        EXPECT_EQ(store_->copyMatching(item, forbidden).value.view(), "value") << damaged;
    }
    EXPECT_EQ(add(), -25299);
}

TEST_F(ChosenKeyStoreTest, NoFileIsMadeWhereTheChoiceCannotBeRemembered) {
    test::ScriptedFileSystem full(files_);
    full.failEveryStepNamed("write", std::errc::no_space_on_device);
    restart(&full);
    serviceIs(-25291, true);
    EXPECT_EQ(add(), -36);
    EXPECT_TRUE(fileStore_.values.empty());
    serviceIs(std::nullopt);
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(store_->copyMatching(item, forbidden).value.view(), "value");
}

TEST_F(ChosenKeyStoreTest, TheFileOfTheChoiceIsTheUsersAlone) {
    EXPECT_EQ(add(), 0);
    EXPECT_EQ(files_.status(choiceFile_)->permissions & 0177U, 0U);
}

TEST_F(ChosenKeyStoreTest, LeaveToPromptIsHandedOn) {
    store_->add(item, SecretBytes("a"), KeyPrompt::allowed);
    store_->copyMatching(item, KeyPrompt::allowed);
    store_->update(item, SecretBytes("a"), KeyPrompt::allowed);
    store_->remove(item, KeyPrompt::allowed);
    EXPECT_EQ(service_.calls, (std::vector<std::string>{"add!", "copy!", "update!", "remove!"}));
}

}  // namespace
}  // namespace brimwatch
