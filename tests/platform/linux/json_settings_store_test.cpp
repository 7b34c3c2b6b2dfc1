#include "platform/linux/json_settings_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "harness/process.h"
#include "platform/linux/settings_folders.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::Optional;
namespace key = settings_key;

class SettingsStoreTest : public test::SettingsFolders {
  protected:
    JsonSettingsStore opened() { return JsonSettingsStore(files_, settings_, state_); }
};

const std::vector<std::string_view> booleans = {key::setupDone, key::claudeUsagePaused,
                                                key::codexEnabled, key::cloudEnabled,
                                                key::phoneLinkPaused};
const std::vector<std::string_view> lists = {key::claudeManualDirectories, key::menuOrder};
const std::vector<std::string_view> strings = {key::usageDisplay, key::appTheme, key::macID};
const std::vector<std::string_view> documents = {key::claudeAutoConnect, key::codexAccounts,
                                                 key::limitsMemory, key::recentUsageHistory};
const std::vector<std::string_view> others = {key::recentUsagePeriod, key::usageNames};

TEST_F(SettingsStoreTest, EveryKeyIsAbsentAtFirstAndLookingMakesNoFile) {
    const JsonSettingsStore store = opened();
    for (const auto name : booleans)
        EXPECT_EQ(store.boolean(name), std::nullopt) << name;
    for (const auto name : lists)
        EXPECT_EQ(store.strings(name), std::nullopt) << name;
    for (const auto name : strings)
        EXPECT_EQ(store.string(name), std::nullopt) << name;
    for (const auto name : documents)
        EXPECT_EQ(store.json(name), std::nullopt) << name;
    EXPECT_EQ(store.integer(key::recentUsagePeriod), std::nullopt);
    EXPECT_EQ(store.dictionary(key::usageNames), std::nullopt);
    EXPECT_FALSE(test::exists(config_));
    EXPECT_FALSE(test::exists(state_));
}

TEST_F(SettingsStoreTest, EveryKeyComesBackWithItsTypeInTheNextRun) {
    const JsonValue document = *parseJson(R"({"enabled":true,"declined":["/a"],"n":1.50})");
    const SettingsStore::Dictionary names = {{"subscription.claude-abc", "한글"}, {"", ""}};
    {
        JsonSettingsStore store = opened();
        for (const auto name : booleans)
            EXPECT_TRUE(store.setBoolean(name, name != key::codexEnabled));
        for (const auto name : lists)
            EXPECT_TRUE(store.setStrings(name, {"b", "a", ""}));
        for (const auto name : strings)
            EXPECT_TRUE(store.setString(name, "dark \"\n🚀"));
        for (const auto name : documents)
            EXPECT_TRUE(store.setJson(name, document));
        EXPECT_TRUE(store.setInteger(key::recentUsagePeriod, 6));
        EXPECT_TRUE(store.setDictionary(key::usageNames, names));
        EXPECT_TRUE(store.flush());
    }
    const JsonSettingsStore store = opened();
    for (const auto name : booleans)
        EXPECT_EQ(store.boolean(name), name != key::codexEnabled) << name;
    for (const auto name : lists)
        EXPECT_THAT(store.strings(name), Optional(ElementsAre("b", "a", ""))) << name;
    for (const auto name : strings)
        EXPECT_EQ(store.string(name), "dark \"\n🚀") << name;
    for (const auto name : documents)
        EXPECT_EQ(store.json(name), document) << name;
    EXPECT_EQ(store.integer(key::recentUsagePeriod), 6);
    EXPECT_EQ(store.dictionary(key::usageNames), names);
}

// Files of an earlier version have to be understood.
TEST_F(SettingsStoreTest, KeysKeepTheirNames) {
    {
        JsonSettingsStore store = opened();
        for (const auto& group : {booleans, lists, strings, documents, others}) {
            for (const auto name : group)
                EXPECT_TRUE(store.setBoolean(name, true));
        }
    }
    const JsonObject file = parseJsonObject(stored()).value_or(JsonObject());
    std::vector<std::string> chosen;
    for (const JsonMember& member : file.members())
        chosen.push_back(member.key);
    EXPECT_THAT(
        chosen,
        ElementsAre("appTheme", "claudeAutoConnect", "claudeManualDirectories", "claudeUsagePaused",
                    "cloudEnabled", "codexAccounts", "codexEnabled", "menuOrder", "phoneLinkPaused",
                    "recentUsagePeriod", "setupDone", "usageDisplay", "usageNames"));
    EXPECT_THAT(names(state_), ElementsAre(".settings.lock", "limitsMemory.json", "macID.json",
                                           "recentUsageHistory.json"));
}

TEST_F(SettingsStoreTest, AValueOfAnotherTypeCountsAsAbsent) {
    const std::vector<std::string> values = {
        "true", "1", "1.5", R"("x")", R"(["x"])", R"([1])", R"({"a":"x"})", R"({"a":1})", "null"};
    for (const std::string& value : values) {
        store(R"({"k":)" + value + "}");
        const JsonSettingsStore store = opened();
        EXPECT_EQ(store.boolean("k").has_value(), value == "true") << value;
        EXPECT_EQ(store.integer("k").has_value(), value == "1") << value;
        EXPECT_EQ(store.string("k").has_value(), value == R"("x")") << value;
        EXPECT_EQ(store.strings("k").has_value(), value == R"(["x"])") << value;
        EXPECT_EQ(store.dictionary("k").has_value(), value == R"({"a":"x"})") << value;
        EXPECT_EQ(store.json("k").has_value(), value != "null") << value;
    }
}

TEST_F(SettingsStoreTest, NamesWithOneNumberAmongThemAreAbsentAsAWhole) {
    store(R"({"usageNames":{"subscription.a":"A","subscription.b":2}})");
    EXPECT_EQ(opened().dictionary(key::usageNames), std::nullopt);
}

TEST_F(SettingsStoreTest, AnIntegerMayBeAnyAndOneBeyondItsRangeIsAbsent) {
    store(R"({"a":3,"b":-9223372036854775808,"c":9223372036854775808,"d":2.0,"e":1e999})");
    const JsonSettingsStore store = opened();
    EXPECT_EQ(store.integer("a"), 3);
    EXPECT_EQ(store.integer("b"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(store.integer("c"), std::nullopt);
    EXPECT_EQ(store.integer("d"), 2);
    EXPECT_EQ(store.integer("e"), std::nullopt);
}

TEST_F(SettingsStoreTest, WhatTheUserChoseAndWhatWasLearntLieApart) {
    JsonSettingsStore store = opened();
    EXPECT_TRUE(store.setBoolean(key::setupDone, true));
    EXPECT_EQ(stored(), "{\n  \"setupDone\": true\n}\n");
    EXPECT_TRUE(store.setString(key::macID, "id"));
    EXPECT_TRUE(store.setJson(key::limitsMemory, JsonArray{JsonNumber{"1.50"}}));
    EXPECT_TRUE(store.setJson(key::recentUsageHistory, JsonObject()));
    EXPECT_TRUE(store.flush());
    EXPECT_EQ(test::readFile(state_ + "/macID.json"), "\"id\"");
    EXPECT_EQ(test::readFile(state_ + "/limitsMemory.json"), "[1.50]");
    EXPECT_EQ(test::readFile(state_ + "/recentUsageHistory.json"), "{}");
    EXPECT_EQ(stored(), "{\n  \"setupDone\": true\n}\n");
    EXPECT_THAT(names(config_), ElementsAre("settings.json"));
}

TEST_F(SettingsStoreTest, ARemovedValueIsAbsentNowAndInTheNextRun) {
    {
        JsonSettingsStore store = opened();
        for (const auto name : {key::appTheme, key::recentUsageHistory}) {
            EXPECT_TRUE(store.setString(name, "x"));
            EXPECT_TRUE(store.flush());
            EXPECT_TRUE(store.remove(name));
            EXPECT_EQ(store.json(name), std::nullopt);
        }
        EXPECT_TRUE(store.flush());
    }
    EXPECT_EQ(stored(), "{}\n");
    EXPECT_FALSE(test::exists(state_ + "/recentUsageHistory.json"));
    EXPECT_EQ(opened().json(key::recentUsageHistory), std::nullopt);
}

// One key a time: the scripted file system belongs to one thread at a time.
TEST_F(SettingsStoreTest, AWriteThatFailsHoldsForThisRunAndIsTriedAgainByFlush) {
    for (const auto name : {key::appTheme, key::macID}) {
        test::ScriptedFileSystem failing(files_);
        JsonSettingsStore store(failing, settings_, state_);
        failing.interruptBeforeEachStep([&](std::size_t step, const std::string& next) {
            if (next == "makeTemporary") failing.failAtStep(step, std::errc::no_space_on_device);
        });
        const FileResult<void> result = store.setString(name, "dark");
        EXPECT_EQ(result.has_value(), name == key::macID);
        EXPECT_EQ(store.flush().error(), std::errc::no_space_on_device);
        EXPECT_EQ(store.string(name), "dark");
        EXPECT_EQ(opened().string(name), std::nullopt);
        failing.interruptBeforeEachStep(nullptr);
        EXPECT_TRUE(store.flush());
        EXPECT_EQ(opened().string(name), "dark");
    }
}

TEST_F(SettingsStoreTest, WhatTheUserChoseAndCouldNotBeWrittenIsTriedAgainWhenTheProgramLearns) {
    test::writeFile(folder_.file("config"), "no folder");
    JsonSettingsStore store = opened();
    EXPECT_FALSE(store.setString(key::appTheme, "dark"));
    std::filesystem::remove(folder_.file("config"));
    EXPECT_TRUE(store.setString(key::macID, "id"));
    EXPECT_EQ(opened().string(key::appTheme), "dark");
}

TEST_F(SettingsStoreTest, WhatWasLearntAndCouldNotBeWrittenIsTriedAgainWhenTheUserChooses) {
    test::writeFile(folder_.file("state"), "no folder");
    JsonSettingsStore store = opened();
    EXPECT_TRUE(store.setString(key::macID, "id"));
    EXPECT_FALSE(store.flush());
    std::filesystem::remove(folder_.file("state"));
    EXPECT_TRUE(store.setString(key::appTheme, "dark"));
    EXPECT_TRUE(test::eventually([&] { return opened().string(key::macID) == "id"; }));
}

TEST_F(SettingsStoreTest, FilesAreForTheUserAlone) {
    JsonSettingsStore store = opened();
    EXPECT_TRUE(store.setString(key::appTheme, "dark"));
    EXPECT_TRUE(store.setString(key::macID, "id"));
    EXPECT_TRUE(store.flush());
    EXPECT_EQ(files_.status(settings_)->permissions, 0600U);
    EXPECT_EQ(files_.status(state_ + "/macID.json")->permissions, 0600U);
}

}  // namespace
}  // namespace brimwatch
