// The two publishers as the program uses them: with a record database, and keys from a key store.
// Main thread.
#pragma once

#include <functional>
#include <memory>

#include "platform/key_store.h"
#include "platform/record_database.h"
#include "platform/settings_store.h"
#include "platform/sleep.h"
#include "publish/publishers/cloud_publisher.h"
#include "publish/publishers/phone_link_publisher.h"
#include "publish/publishers/publication.h"
#include "support/instant.h"

namespace brimwatch {

// What is referred to must outlive the publishers and all their calls.
struct PublisherDoors {
    RecordDatabase& records;
    KeyStore& keys;
    SettingsStore& defaults;
    PublishingRight right;
    std::function<Instant()> now;
    Sleep sleep;
};

std::unique_ptr<CloudPublisher> makeCloudPublisher(const PublisherDoors& doors);
std::unique_ptr<PhoneLinkPublisher> makePhoneLinkPublisher(const PublisherDoors& doors);

}  // namespace brimwatch
