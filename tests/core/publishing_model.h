// A model that sends to phones, for tests.
#pragma once

#include <utility>

#include "core/helper_model.h"
#include "publish/publishers/publishers.h"
#include "virtual_time.h"

namespace brimwatch::test {

// The same, with publishers that may send to that database.
inline HelperModel::Surroundings withPublishers(HelperModel::Surroundings around,
                                                RecordDatabase& records, KeyStore& keys,
                                                SettingsStore& defaults, VirtualTime& time) {
    const PublisherDoors doors{.records = records,
                               .keys = keys,
                               .defaults = defaults,
                               .right = PublishingRight::granted,
                               .now = [&time] { return time.now(); },
                               .sleep = time.sleeper()};
    around.cloud = makeCloudPublisher(doors);
    around.phone = makePhoneLinkPublisher(doors);
    return around;
}

}  // namespace brimwatch::test
