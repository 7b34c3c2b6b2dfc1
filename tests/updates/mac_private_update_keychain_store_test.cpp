#include "updates/mac_private_update_keychain_store.h"

#include <gmock/gmock.h>

#include "platform/linux/scripted_key_store.h"
#include "updates/private_update_info.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Reason = MacPrivateUpdateFailure::Reason;

constexpr const char* itemName = "net.quillmoor.brimwatch.mac.private-updates http-basic-v1";

MacPrivateUpdateCredentials me() {
    return {.username = "me", .password = SecretBytes("secret")};
}

template <class Value>
MacPrivateUpdateFailure failureOf(const MacPrivateUpdateResult<Value>& result) {
    EXPECT_FALSE(result);
    return result ? MacPrivateUpdateFailure{} : result.error();
}

class MacPrivateUpdateKeychainStoreTest : public ::testing::Test {
  protected:
    MacPrivateUpdateKeychainStore store() { return {keys_, info_}; }
    void answer(const std::string& call, KeyStatus status) {
        keys_.answer = [=](const std::string& made) {
            return made == call ? std::optional(status) : std::nullopt;
        };
    }

    BundleInfo info_ = test::privateUpdateInfo();
    test::ScriptedKeyStore keys_;
};

TEST_F(MacPrivateUpdateKeychainStoreTest, LoadsWhatWasSaved) {
    ASSERT_TRUE(store().save(me()));
    EXPECT_EQ(store().load().value(), me());
    EXPECT_EQ(keys_.values.at(itemName).view(), R"({"password":"secret","username":"me"})");
}

TEST_F(MacPrivateUpdateKeychainStoreTest, LoadsNothingWhereNothingIsStored) {
    const auto loaded = store().load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(*loaded, std::nullopt);
}

TEST_F(MacPrivateUpdateKeychainStoreTest, SavingTwiceUpdatesTheItemInsteadOfAddingASecond) {
    ASSERT_TRUE(store().save(me()));
    EXPECT_THAT(keys_.calls, ElementsAre("update", "add"));
    keys_.calls.clear();
    const MacPrivateUpdateCredentials you = {.username = "you", .password = SecretBytes("other")};
    ASSERT_TRUE(store().save(you));
    EXPECT_THAT(keys_.calls, ElementsAre("update"));
    EXPECT_EQ(keys_.values.size(), 1U);
    EXPECT_EQ(store().load().value(), you);
}

TEST_F(MacPrivateUpdateKeychainStoreTest, NeverAllowsAPrompt) {
    ASSERT_TRUE(store().save(me()));
    ASSERT_TRUE(store().load());
    ASSERT_TRUE(store().clear());
    // A call with prompts allowed would be recorded with "!".
    EXPECT_THAT(keys_.calls, ElementsAre("update", "add", "copy", "remove"));
}

TEST_F(MacPrivateUpdateKeychainStoreTest, AnItemWithoutDataIsCorrupt) {
    keys_.values[itemName] = SecretBytes();
    EXPECT_EQ(failureOf(store().load()).reason, Reason::corrupt);
}

TEST_F(MacPrivateUpdateKeychainStoreTest, AnItemOfMalformedDataCantBeLoadedUntilItIsCleared) {
    keys_.values[itemName] = SecretBytes("{\"username\":");
    EXPECT_EQ(failureOf(store().load()).reason, Reason::invalidCredentials);
    ASSERT_TRUE(store().clear());
    EXPECT_TRUE(store().load());
}

TEST_F(MacPrivateUpdateKeychainStoreTest, AnItemThatIsTooLargeCantBeLoaded) {
    keys_.values[itemName] = SecretBytes(std::string(8193, ' '));
    EXPECT_EQ(failureOf(store().load()).reason, Reason::inputTooLarge);
}

TEST_F(MacPrivateUpdateKeychainStoreTest, EveryOtherStatusIsAFailureThatCarriesIt) {
    for (const KeyStatus status : {-25308, -25291, -25299, -36, -67671}) {
        const MacPrivateUpdateFailure expected = {.reason = Reason::keychain, .status = status};
        answer("copy", status);
        EXPECT_EQ(failureOf(store().load()), expected);
        answer("update", status);
        EXPECT_EQ(failureOf(store().save(me())), expected);
        answer("add", status);
        EXPECT_EQ(failureOf(store().save(me())), expected);
        answer("remove", status);
        EXPECT_EQ(failureOf(store().clear()), expected);
    }
    EXPECT_THAT(keys_.values, IsEmpty());
}

TEST_F(MacPrivateUpdateKeychainStoreTest, AnItemThatGoesWhileItIsAddedIsAFailure) {
    answer("add", key_status::itemNotFound);
    EXPECT_EQ(failureOf(store().save(me())),
              (MacPrivateUpdateFailure{.reason = Reason::keychain, .status = -25300}));
}

TEST_F(MacPrivateUpdateKeychainStoreTest, ClearingTwiceIsNoFailure) {
    ASSERT_TRUE(store().save(me()));
    EXPECT_TRUE(store().clear());
    EXPECT_THAT(keys_.values, IsEmpty());
    EXPECT_TRUE(store().clear());
}

TEST_F(MacPrivateUpdateKeychainStoreTest, WithoutARightfulGroupNothingTouchesTheKeyStore) {
    const std::string identifier = info_.bundleIdentifier;
    const std::pair<std::string, std::string> builds[] = {
        {"", identifier},
        {"A1B2C3D4E5." + identifier, ""},
        {"", ""},
        {"A1B2C3D4E5.net.example.test", "net.example.test"},
        {"A1B2C3D4E5.net.example.testmac", "net.example.testmac"},
        {"A1B2C3D4E5.net.example.other.mac", identifier},
        {"A1B2C3D4E5" + identifier, identifier},
        {"A1B2C3D4E5." + identifier + ".x", identifier},
        {"." + identifier, identifier},
        {identifier, identifier},
        {"A1B2C3D4E." + identifier, identifier},
        {"A1B2C3D4E56." + identifier, identifier},
        {"a1b2c3d4e5." + identifier, identifier},
        {"A1B2C3D4E_." + identifier, identifier},
        {"A1B2C3D4E5\n." + identifier, identifier},
        {"A1B2C3D4:5." + identifier, identifier},
        {"A1B2C3D4@5." + identifier, identifier},
        {"A1B2C3D4[5." + identifier, identifier},
        {"A1B2C3D4/5." + identifier, identifier},
    };
    for (const auto& [group, bundle] : builds) {
        info_ = {.bundleIdentifier = bundle, .privateUpdatesKeychainGroup = group};
        EXPECT_EQ(failureOf(store().load()).reason, Reason::keychainGroup) << group;
        EXPECT_EQ(failureOf(store().save(me())).reason, Reason::keychainGroup) << group;
        EXPECT_EQ(failureOf(store().clear()).reason, Reason::keychainGroup) << group;
    }
    EXPECT_THAT(keys_.calls, IsEmpty());
}

TEST_F(MacPrivateUpdateKeychainStoreTest, ATeamIsTenCapitalsAndDigits) {
    for (const char* team : {"ABCDEFGHIJ", "0123456789", "AZ09AZ09AZ"}) {
        info_.privateUpdatesKeychainGroup = team + ("." + info_.bundleIdentifier);
        EXPECT_TRUE(store().load()) << team;
    }
}

}  // namespace
}  // namespace brimwatch
