// What publishers live in: time that passes when told, settings and keys in memory, a scripted
// record database. A test's publishers stand behind it, so that they go first.
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/log_capture.h"
#include "core/memory_settings_store.h"
#include "core/virtual_time.h"
#include "publish/memory_key_store.h"
#include "publish/publish_examples.h"
#include "publish/publishers/publishers.h"
#include "publish/publishers/scripted_record_database.h"
#include "publish/shared_key.h"
#include "task_result.h"

namespace brimwatch::test {

inline const std::string storedMacId = "\"" + thisMac.text + "\"";

class PublisherFixture : public ::testing::Test {
  protected:
    using Macs = std::map<MacId, LimitsCloud::Snapshot::Mac>;
    using Limits = std::vector<SubscriptionLimits>;

    PublisherFixture() { defaults_.put("macID", storedMacId); }

    PublisherDoors doors(PublishingRight right = PublishingRight::granted) {
        return {.records = database_,
                .keys = keys_,
                .defaults = defaults_,
                .right = right,
                .now = [this] { return time_.now(); },
                .sleep = time_.sleeper()};
    }

    Instant now() const { return time_.now(); }
    void advance(std::chrono::seconds duration) { time_.advance(duration); }
    // Lets everything that has begun come to its end.
    void settle() {
        while (time_.wakeNext() || answerNext()) {
        }
    }
    bool answerNext() {
        if (!database_.isAsked()) return false;
        database_.answer();
        return true;
    }
    void holdCalls() { database_.answers = ScriptedRecordDatabase::Answers::whenTold; }

    static Limits limits(double usedPercentage) {
        Limits limits = {accountOf("work", 0)};
        limits.front().sevenDay->usedPercentage = usedPercentage;
        return limits;
    }

    const LogCapture quiet_;
    const SymmetricKey key_ = keyFilledWith('k');
    VirtualTime time_{test::now};
    MemorySettingsStore defaults_;
    MemoryKeyStore keys_;
    ScriptedRecordDatabase database_;
};

}  // namespace brimwatch::test
