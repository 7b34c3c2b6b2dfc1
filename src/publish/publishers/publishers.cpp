#include "publish/publishers/publishers.h"

#include <utility>

#include "publish/phone_keychain.h"
#include "publish/publishers/limits_cloud_operations.h"
#include "publish/publishers/own_mac_id.h"
#include "publish/shared_key.h"

namespace brimwatch {
namespace {

// Who has no key has never sent anything.
QCoro::Task<> removeFromCloud(RecordDatabase& records, KeyStore& keys, SettingsStore& defaults) {
    const std::optional<SymmetricKey> key = SharedKey(keys).load();
    if (!key) co_return;
    co_await removeMac(records, iPhoneChannel, ownMacId(defaults), *key);
}

}  // namespace

std::unique_ptr<CloudPublisher> makeCloudPublisher(const PublisherDoors& doors) {
    RecordDatabase& records = doors.records;
    KeyStore& keys = doors.keys;
    SettingsStore& defaults = doors.defaults;
    return std::make_unique<CloudPublisher>(CloudPublisher::Surroundings{
        .defaults = &defaults,
        .right = doors.right,
        .now = doors.now,
        .sleep = doors.sleep,
        .loadKey = [&keys] { return SharedKey(keys).loadOrCreate(); },
        .save =
            [&records, &defaults](ShareToSave share) {
                return saveShare(records, iPhoneChannel, ownMacId(defaults), std::move(share));
            },
        .remove = [&records, &keys,
                   &defaults] { return removeFromCloud(records, keys, defaults); }});
}

std::unique_ptr<PhoneLinkPublisher> makePhoneLinkPublisher(const PublisherDoors& doors) {
    RecordDatabase& records = doors.records;
    SettingsStore& defaults = doors.defaults;
    return std::make_unique<PhoneLinkPublisher>(PhoneLinkPublisher::Surroundings{
        .store = std::make_unique<PhoneKeychain>(doors.keys),
        .defaults = &defaults,
        .right = doors.right,
        .now = doors.now,
        .sleep = doors.sleep,
        .macId = [&defaults] { return ownMacId(defaults); },
        .save =
            [&records, &defaults](ShareToSave share) {
                return saveShare(records, androidChannel, ownMacId(defaults), std::move(share));
            },
        .deleteRecord =
            [&records](const SymmetricKey& key) {
                return deleteChannelRecord(records, androidChannel, key);
            },
        .removeMac =
            [&records](MacId macId, const SymmetricKey& key) {
                return removeMac(records, androidChannel, std::move(macId), key);
            }});
}

}  // namespace brimwatch
