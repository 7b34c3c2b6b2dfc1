#include "publish/shared_key.h"

#include <gtest/gtest.h>

#include "memory_key_store.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::countingKey;
using test::keyFilledWith;
using Calls = std::vector<std::string>;

constexpr const char* itemName = "net.quillmoor.brimwatch.sync/limits-key-v1";

class SharedKeyTest : public ::testing::Test {
  protected:
    static RandomBytes random() { return test::CountingBytes(0); }

    void store(std::string_view bytes) { store_.values.emplace(itemName, SecretBytes(bytes)); }

    // The status of the failure that creating ends in.
    KeyStatus failedStatus() {
        try {
            static_cast<void>(sharedKey_.loadOrCreate());
        } catch (const SharedKey::Failure& failure) {
            return failure.status();
        }
        return key_status::success;
    }

    test::MemoryKeyStore store_;
    SharedKey sharedKey_{store_, random()};
};

TEST_F(SharedKeyTest, IsNothingInAnEmptyStore) {
    EXPECT_FALSE(sharedKey_.load());
    EXPECT_EQ(store_.calls, (Calls{"copy"}));
    EXPECT_TRUE(store_.values.empty());
}

TEST_F(SharedKeyTest, IsTheStoredOne) {
    store(keyFilledWith('k').bytes().view());
    EXPECT_EQ(sharedKey_.load(), keyFilledWith('k'));
    EXPECT_EQ(sharedKey_.loadOrCreate(), keyFilledWith('k'));
    EXPECT_EQ(store_.calls, (Calls{"copy", "copy"}));
}

TEST_F(SharedKeyTest, IsNothingOfAnyOtherLength) {
    for (const std::size_t size : {0U, 1U, 31U, 33U, 43U, 64U}) {
        store_.values.clear();
        store(std::string(size, 'k'));
        EXPECT_FALSE(sharedKey_.load()) << size;
    }
}

TEST_F(SharedKeyTest, IsNothingWhateverStatusTheStoreAnswers) {
    store(keyFilledWith('k').bytes().view());
    for (const KeyStatus status :
         {key_status::itemNotFound, key_status::interactionNotAllowed, key_status::notAvailable,
          key_status::decode, key_status::internalError, 1}) {
        store_.answer = [status](const std::string&) { return status; };
        EXPECT_FALSE(sharedKey_.load()) << status;
    }
}

TEST_F(SharedKeyTest, IsMadeAndStoredOnce) {
    EXPECT_EQ(sharedKey_.loadOrCreate(), countingKey());
    EXPECT_EQ(store_.values.at(itemName), countingKey().bytes());
    EXPECT_EQ(store_.labels.at(itemName), "Brimwatch? 동기화 키");
    EXPECT_EQ(store_.calls, (Calls{"copy", "add", "copy"}));
    EXPECT_EQ(sharedKey_.loadOrCreate(), countingKey());
    EXPECT_EQ(store_.values.size(), 1U);
}

TEST_F(SharedKeyTest, OfAnotherDeviceThatCameMeanwhileIsTaken) {
    store_.answer = [this](const std::string& call) {
        if (call == "add") store(keyFilledWith('k').bytes().view());
        return std::nullopt;
    };
    EXPECT_EQ(sharedKey_.loadOrCreate(), keyFilledWith('k'));
    EXPECT_EQ(store_.values.at(itemName), keyFilledWith('k').bytes());
}

TEST_F(SharedKeyTest, IsTheOneReadBackEvenAfterASuccessfulAdd) {
    store_.answer = [this](const std::string& call) -> std::optional<KeyStatus> {
        if (call != "add") return std::nullopt;
        store(keyFilledWith('k').bytes().view());
        return key_status::success;
    };
    EXPECT_EQ(sharedKey_.loadOrCreate(), keyFilledWith('k'));
}

TEST_F(SharedKeyTest, IsANewOneEachTimeWhileTheItemIsNoKey) {
    store(std::string(31, 'k'));
    const SymmetricKey first = sharedKey_.loadOrCreate();
    const SymmetricKey second = sharedKey_.loadOrCreate();
    EXPECT_EQ(first, countingKey());
    EXPECT_NE(second, first);
    EXPECT_EQ(store_.values.at(itemName).view(), std::string(31, 'k'));
}

TEST_F(SharedKeyTest, IsTheNewOneIfItCannotBeReadBack) {
    store_.answer = [](const std::string& call) -> std::optional<KeyStatus> {
        if (call == "copy") return key_status::notAvailable;
        return std::nullopt;
    };
    EXPECT_EQ(sharedKey_.loadOrCreate(), countingKey());
    EXPECT_EQ(store_.values.at(itemName), countingKey().bytes());
}

TEST_F(SharedKeyTest, IsNotMadeWhereTheStoreRefusesIt) {
    for (const KeyStatus status :
         {key_status::interactionNotAllowed, key_status::notAvailable, key_status::itemNotFound,
          key_status::userCanceled, key_status::missingEntitlement, 1}) {
        store_.calls.clear();
        store_.answer = [status](const std::string& call) -> std::optional<KeyStatus> {
            if (call == "add") return status;
            return std::nullopt;
        };
        EXPECT_EQ(failedStatus(), status);
        EXPECT_EQ(store_.calls, (Calls{"copy", "add"}));
        EXPECT_TRUE(store_.values.empty());
    }
}

// A locked store knows the item, but does not show it. A new key would mean a new record.
TEST_F(SharedKeyTest, IsNotMadeWhileTheStoreIsLocked) {
    store(keyFilledWith('k').bytes().view());
    store_.answer = [](const std::string&) { return key_status::interactionNotAllowed; };
    EXPECT_FALSE(sharedKey_.load());
    EXPECT_EQ(failedStatus(), key_status::interactionNotAllowed);
    store_.answer = nullptr;
    EXPECT_EQ(sharedKey_.loadOrCreate(), keyFilledWith('k'));
}

TEST_F(SharedKeyTest, ComesFromTheSystemsRandomnessUnlessTheTestKnowsBetter) {
    test::MemoryKeyStore emptyStore;
    EXPECT_NE(SharedKey(emptyStore).loadOrCreate(), SharedKey(store_).loadOrCreate());
}

}  // namespace
}  // namespace brimwatch
