#include "publish/snapshot_json.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "publish_examples.h"

namespace brimwatch {
namespace {

using test::accountOf;
using test::now;
using test::otherMac;
using test::Snapshot;
using test::thisMac;

Snapshot twoMacs() {
    Snapshot snapshot;
    snapshot.macs[thisMac] = {now, {accountOf("work", 5, {600, 300}), accountOf("home", 6)}};
    snapshot.macs[otherMac] = {test::secondsAgo(0.5), {}};
    return snapshot;
}

TEST(SnapshotJson, IsCompactWithSortedKeys) {
    Snapshot snapshot;
    EXPECT_EQ(encodeSnapshot(snapshot), R"({"macs":{},"version":1})");
    SubscriptionLimits limits;
    limits.account = "a";
    limits.updatedAt = instantFromUnixSeconds(5);
    snapshot.macs[otherMac] = {instantFromUnixSeconds(1.5), {}};
    snapshot.macs[thisMac] = {instantFromUnixSeconds(2), {limits, limits}};
    EXPECT_EQ(encodeSnapshot(snapshot),
              R"({"macs":{"11111111-2222-3333-4444-555555555555":{"limits":[)"
              R"({"account":"a","provider":"claude","updatedAt":5},)"
              R"({"account":"a","provider":"claude","updatedAt":5}],"sentAt":2},)"
              R"("AAAAAAAA-BBBB-CCCC-DDDD-EEEEEEEEEEEE":{"limits":[],"sentAt":1.5}},"version":1})");
}

TEST(SnapshotJson, ReadsBackWhatItWrote) {
    EXPECT_EQ(decodeSnapshot(encodeSnapshot(Snapshot())), Snapshot());
    EXPECT_EQ(decodeSnapshot(encodeSnapshot(twoMacs())), twoMacs());
}

TEST(SnapshotJson, ReadsOnlyVersion1) {
    Snapshot snapshot = twoMacs();
    for (const std::int64_t version : {-1, 0, 2, 1000}) {
        snapshot.version = version;
        EXPECT_FALSE(decodeSnapshot(encodeSnapshot(snapshot))) << version;
    }
    EXPECT_TRUE(decodeSnapshot(R"({"version":1.0,"macs":{}})"));
    for (const char* version :
         {"1.5", "true", "null", R"("1")", "[1]", "1e999", "18446744073709551617"}) {
        EXPECT_FALSE(decodeSnapshot(R"({"macs":{},"version":)" + std::string(version) + "}"))
            << version;
    }
    EXPECT_FALSE(decodeSnapshot(R"({"macs":{}})"));
}

TEST(SnapshotJson, IsUnreadableAsAWholeUnlessEachMacIsWhole) {
    const nlohmann::json whole = nlohmann::json::parse(encodeSnapshot(twoMacs()));
    std::vector<nlohmann::json> flawed(11, whole);
    flawed[0].erase("macs");
    flawed[1]["macs"] = nlohmann::json::array();
    flawed[2]["macs"] = nullptr;
    flawed[3]["macs"][otherMac.text] = nullptr;
    flawed[4]["macs"][otherMac.text] = nlohmann::json::array();
    flawed[5]["macs"][otherMac.text].erase("sentAt");
    flawed[6]["macs"][otherMac.text]["sentAt"] = "5";
    flawed[7]["macs"][otherMac.text]["sentAt"] = nullptr;
    flawed[8]["macs"][otherMac.text].erase("limits");
    flawed[9]["macs"][otherMac.text]["limits"] = nlohmann::json::object();
    flawed[10]["macs"][otherMac.text]["limits"] = nullptr;
    EXPECT_TRUE(decodeSnapshot(whole.dump()));
    for (std::size_t index = 0; index < flawed.size(); ++index)
        EXPECT_FALSE(decodeSnapshot(flawed[index].dump())) << index;
    EXPECT_FALSE(decodeSnapshot(R"({"version":1,"macs":{"a":{"limits":[],"sentAt":1e999}}})"));
}

// Such a key could not be written again as it was.
TEST(SnapshotJson, IsUnreadableWithAMacWhoseKeyIsNotUnicode) {
    EXPECT_TRUE(
        decodeSnapshot(R"({"version":1,"macs":{"\ud83d\ude80":{"limits":[],"sentAt":1}}})"));
    EXPECT_FALSE(decodeSnapshot(R"({"version":1,"macs":{"\ud83d":{"limits":[],"sentAt":1}}})"));
}

TEST(SnapshotJson, LosesOnlyTheElementsThatItCannotReadAndKeepsTheOrderOfTheRest) {
    nlohmann::json json = nlohmann::json::parse(encodeSnapshot(twoMacs()));
    nlohmann::json& limits = json["macs"][thisMac.text]["limits"];
    nlohmann::json newer = limits[0];
    newer["provider"] = "a provider of the future";
    limits.insert(limits.begin() + 1,
                  {newer, nullptr, 7, "text", nlohmann::json::array(), nlohmann::json::object()});
    limits.insert(limits.begin(), newer);
    EXPECT_EQ(decodeSnapshot(json.dump()), twoMacs());
}

TEST(SnapshotJson, IgnoresUnknownKeysAtEveryLevel) {
    nlohmann::json json = nlohmann::json::parse(encodeSnapshot(twoMacs()));
    json["x"] = {1, 2};
    json["macs"][thisMac.text]["x"] = nullptr;
    json["macs"][thisMac.text]["limits"][0]["x"] = "y";
    json["macs"][thisMac.text]["limits"][0]["sevenDay"]["x"] = false;
    json["macs"][thisMac.text]["limits"][0]["recentUsageHistory"][0]["x"] = 1;
    EXPECT_EQ(decodeSnapshot(json.dump(3)), twoMacs());
}

TEST(SnapshotJson, ReadsNothingFromWhatIsNoJsonObject) {
    const std::string whole = encodeSnapshot(twoMacs());
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(decodeSnapshot(whole.substr(0, size))) << size;
    for (const std::string& text : {std::string("null"), "[" + whole + "]", whole + whole,
                                    whole + "\xFF", std::string(100'000, '[')}) {
        EXPECT_FALSE(decodeSnapshot(text)) << text.substr(0, 100);
    }
}

TEST(SnapshotJson, RefusesATimeOfSendingThatIsNotFinite) {
    Snapshot snapshot = twoMacs();
    snapshot.macs[otherMac].sentAt =
        instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    EXPECT_THROW(encodeSnapshot(snapshot), LimitsCloud::EncodingError);
}

}  // namespace
}  // namespace brimwatch
