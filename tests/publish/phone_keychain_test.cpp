#include "publish/phone_keychain.h"

#include <gtest/gtest.h>

#include "memory_key_store.h"
#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::keyFilledWith;
using Calls = std::vector<std::string>;

constexpr const char* itemName = "net.quillmoor.brimwatch.sync/phone-key-v1";

class PhoneKeychainTest : public ::testing::Test {
  protected:
    void store(std::string_view bytes) {
        store_.values.insert_or_assign(itemName, SecretBytes(bytes));
    }

    SecretBytes stored() const { return store_.values.at(itemName); }

    void answer(const std::string& wanted, KeyStatus status) {
        store_.answer = [wanted, status](const std::string& call) -> std::optional<KeyStatus> {
            if (call == wanted) return status;
            return std::nullopt;
        };
    }

    template <class Action>
    static KeyStatus failedStatus(Action action) {
        try {
            action();
        } catch (const PhoneKeychain::Failure& failure) {
            return failure.status();
        }
        return key_status::success;
    }

    const SymmetricKey key_ = keyFilledWith('k');
    const SymmetricKey newKey_ = keyFilledWith('n');
    test::MemoryKeyStore store_;
    PhoneKeychain keychain_{store_};
};

TEST_F(PhoneKeychainTest, LoadsNothingFromAnEmptyStore) {
    EXPECT_FALSE(keychain_.load());
}

TEST_F(PhoneKeychainTest, LoadsTheStoredKey) {
    store(key_.bytes().view());
    EXPECT_EQ(keychain_.load(), key_);
}

TEST_F(PhoneKeychainTest, LoadsNothingFromAnItemOfAnotherLength) {
    for (const std::size_t size : {0U, 31U, 33U}) {
        store(std::string(size, 'k'));
        EXPECT_FALSE(keychain_.load()) << size;
    }
}

TEST_F(PhoneKeychainTest, TellsAFailureFromAMissingKey) {
    for (const KeyStatus status : {key_status::interactionNotAllowed, key_status::notAvailable,
                                   key_status::decode, key_status::duplicateItem, 1}) {
        answer("copy", status);
        EXPECT_EQ(failedStatus([this] { keychain_.load(); }), status);
    }
}

TEST_F(PhoneKeychainTest, AddsTheCandidateToAnEmptyStore) {
    EXPECT_EQ(keychain_.addIfAbsent(newKey_), newKey_);
    EXPECT_EQ(stored(), newKey_.bytes());
    EXPECT_EQ(store_.labels.at(itemName), "Brimwatch? 폰 연결 키");
    EXPECT_EQ(store_.calls, (Calls{"add", "copy"}));
}

TEST_F(PhoneKeychainTest, AddingNeverOverwritesAKey) {
    store(key_.bytes().view());
    EXPECT_EQ(keychain_.addIfAbsent(newKey_), key_);
    EXPECT_EQ(stored(), key_.bytes());
    EXPECT_EQ(store_.calls, (Calls{"add", "copy"}));
}

TEST_F(PhoneKeychainTest, AddingGivesTheKeyReadBack) {
    store_.answer = [this](const std::string& call) -> std::optional<KeyStatus> {
        if (call != "add") return std::nullopt;
        store(key_.bytes().view());
        return key_status::success;
    };
    EXPECT_EQ(keychain_.addIfAbsent(newKey_), key_);
}

TEST_F(PhoneKeychainTest, AddingGivesTheCandidateIfNothingIsReadBack) {
    answer("copy", key_status::itemNotFound);
    EXPECT_EQ(keychain_.addIfAbsent(newKey_), newKey_);
    EXPECT_EQ(store_.calls, (Calls{"add", "copy"}));
}

TEST_F(PhoneKeychainTest, AddingReplacesAnItemThatIsNoKey) {
    store(std::string(31, 'k'));
    EXPECT_EQ(keychain_.addIfAbsent(newKey_), newKey_);
    EXPECT_EQ(stored(), newKey_.bytes());
    EXPECT_EQ(store_.calls, (Calls{"add", "copy", "update"}));
}

TEST_F(PhoneKeychainTest, AddingFailsWithTheStatusOfTheCallThatFailed) {
    const auto add = [this] { keychain_.addIfAbsent(newKey_); };
    for (const KeyStatus status :
         {key_status::interactionNotAllowed, key_status::itemNotFound, key_status::inputOutput}) {
        answer("add", status);
        EXPECT_EQ(failedStatus(add), status);
        EXPECT_TRUE(store_.values.empty());
    }
    answer("copy", key_status::notAvailable);
    EXPECT_EQ(failedStatus(add), key_status::notAvailable);
    store(std::string(31, 'k'));
    answer("update", key_status::inputOutput);
    EXPECT_EQ(failedStatus(add), key_status::inputOutput);
    EXPECT_EQ(stored().view(), std::string(31, 'k'));
}

TEST_F(PhoneKeychainTest, ReplacesAKey) {
    store(key_.bytes().view());
    keychain_.replace(newKey_);
    EXPECT_EQ(stored(), newKey_.bytes());
    EXPECT_EQ(store_.calls, (Calls{"update"}));
}

TEST_F(PhoneKeychainTest, ReplacingCreatesWhatIsNotThere) {
    keychain_.replace(newKey_);
    EXPECT_EQ(stored(), newKey_.bytes());
    EXPECT_EQ(store_.labels.at(itemName), "Brimwatch? 폰 연결 키");
    EXPECT_EQ(store_.calls, (Calls{"update", "add"}));
}

TEST_F(PhoneKeychainTest, ReplacingFailsWithTheStatusOfTheCallThatFailed) {
    const auto replace = [this] { keychain_.replace(newKey_); };
    for (const KeyStatus status : {key_status::interactionNotAllowed, key_status::duplicateItem}) {
        store_.calls.clear();
        answer("update", status);
        EXPECT_EQ(failedStatus(replace), status);
        EXPECT_EQ(store_.calls, (Calls{"update"}));
        answer("add", status);
        EXPECT_EQ(failedStatus(replace), status);
        EXPECT_TRUE(store_.values.empty());
    }
}

TEST_F(PhoneKeychainTest, RemovesTheKey) {
    store(key_.bytes().view());
    keychain_.remove();
    EXPECT_TRUE(store_.values.empty());
}

TEST_F(PhoneKeychainTest, RemovingFromAnEmptyStoreIsASuccess) {
    EXPECT_NO_THROW(keychain_.remove());
    EXPECT_EQ(store_.calls, (Calls{"remove"}));
}

TEST_F(PhoneKeychainTest, RemovingFailsWithAnyOtherStatus) {
    store(key_.bytes().view());
    for (const KeyStatus status :
         {key_status::interactionNotAllowed, key_status::duplicateItem, key_status::notAvailable}) {
        answer("remove", status);
        EXPECT_EQ(failedStatus([this] { keychain_.remove(); }), status);
    }
    EXPECT_EQ(stored(), key_.bytes());
}

}  // namespace
}  // namespace brimwatch
