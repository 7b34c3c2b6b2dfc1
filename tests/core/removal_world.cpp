#include "removal_world.h"

#include <gmock/gmock.h>

#include "publish/limits_cloud.h"
#include "publish/publish_examples.h"
#include "publish/publishers/publishers.h"

namespace brimwatch::test {
namespace {

using namespace std::chrono_literals;
using ::testing::IsEmpty;

const std::string sharedItem = "net.quillmoor.brimwatch.sync/limits-key-v1";
const std::string phoneItem = "net.quillmoor.brimwatch.sync/phone-key-v1";

}  // namespace

const std::vector<std::string>& RemovalWorld::connectedNames() {
    static const std::vector<std::string> names = {".claude-a", ".claude-b", ".claude-c"};
    return names;
}

RemovalWorld::RemovalWorld() : cloudKey_(keyFilledWith('c')), phoneKey_(keyFilledWith('p')) {
    defaults_.put("macID", "\"" + thisMac.text + "\"");
    keys_.values[sharedItem] = cloudKey_.bytes();
    keys_.values[phoneItem] = phoneKey_.bytes();
    for (const std::string& name : connectedNames())
        makeRegisteredFolder(name);
    writeStatusLine(makeClaudeFolder(".claude-own"), "~/bin/mine");
    makeCodexFolder(".codex");
    writeLimits("claude-a", 10, 20);
    writeLimits("claude-b", 30, 40);
    services_.login.enabled = true;
}

void RemovalWorld::restart() {
    model_.reset();
    const PublisherDoors cloud{.records = cloudRecords_,
                               .keys = keys_,
                               .defaults = defaults_,
                               .right = PublishingRight::granted,
                               .now = [this] { return now(); },
                               .sleep = time_.sleeper()};
    PublisherDoors phone{.records = phoneRecords_,
                         .keys = keys_,
                         .defaults = defaults_,
                         .right = PublishingRight::granted,
                         .now = cloud.now,
                         .sleep = cloud.sleep};
    HelperModel::Surroundings around = surroundingsWithServices();
    around.cloud = makeCloudPublisher(cloud);
    around.phone = makePhoneLinkPublisher(phone);
    start(std::move(around));
}

void RemovalWorld::startSent() {
    restart();
    settle();
    ASSERT_TRUE(hasCloudShare());
    ASSERT_TRUE(hasPhoneShare());
    ASSERT_TRUE(model().launchAtLogin());
    ASSERT_TRUE(codex_.isAsking());
}

void RemovalWorld::holdCalls() {
    cloudRecords_.answers = Database::Answers::whenTold;
    phoneRecords_.answers = Database::Answers::whenTold;
}

void RemovalWorld::beginSends() {
    advance(59s);
    writeLimits("claude-a", 50, 60);
    advance(1s);
    settle();
    ASSERT_TRUE(cloudRecords_.isAsked());
    ASSERT_TRUE(phoneRecords_.isAsked());
}

bool RemovalWorld::goOn(Order order) {
    const bool isPhonesTurn =
        order == Order::phoneFirst || (order == Order::inTurn && ++turn_ % 2 == 0);
    Database& first = isPhonesTurn ? phoneRecords_ : cloudRecords_;
    Database& second = isPhonesTurn ? cloudRecords_ : phoneRecords_;
    if (time_.wakeNext()) return true;
    if (first.isAsked()) return first.answer(), true;
    if (second.isAsked()) return second.answer(), true;
    return false;
}

void RemovalWorld::drain(Order order) {
    while (goOn(order)) {
    }
}

void RemovalWorld::removeAll() {
    removeEverything();
    drain(Order::cloudFirst);
    ASSERT_FALSE(model().isRemoving());
}

bool RemovalWorld::hasShare(const Database& database, const std::string& record,
                            const SymmetricKey& key) {
    const auto snapshot = database.snapshot(record, key);
    return snapshot && snapshot->macs.contains(thisMac);
}

bool RemovalWorld::hasCloudShare() {
    return hasShare(cloudRecords_, LimitsCloud::recordName(cloudKey_), cloudKey_);
}

bool RemovalWorld::hasPhoneShare() {
    return hasShare(phoneRecords_, LimitsCloud::phoneRecordName(phoneKey_), phoneKey_);
}

void RemovalWorld::expectAllDown(const HelperModel::AccountKeys& claude) {
    EXPECT_THAT(model().limits(), IsEmpty());
    EXPECT_EQ(model().claudeIDs(), claude);
    EXPECT_THAT(model().codexIDs(), IsEmpty());
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_FALSE(model().autoConnect().enabled);
    EXPECT_THAT(model().autoConnect().declined,
                ::testing::ElementsAre(path(".claude-a"), path(".claude-b"), path(".claude-c"),
                                       path(".claude-own")));
    EXPECT_THAT(model().autoConnectFailed(), IsEmpty());
}

}  // namespace brimwatch::test
