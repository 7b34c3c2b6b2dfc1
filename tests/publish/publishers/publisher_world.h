// A small world for a publisher, of which tests make one for each order of events.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "core/memory_settings_store.h"
#include "core/virtual_time.h"
#include "publish/memory_key_store.h"
#include "publish/publish_examples.h"
#include "publish/publishers/publishers.h"
#include "publish/publishers/scripted_record_database.h"
#include "publish/publishers/task_result.h"

namespace brimwatch::test {

class PublisherWorld {
  public:
    using Limits = std::vector<SubscriptionLimits>;

    explicit PublisherWorld(ScriptedRecordDatabase::Effect effect) {
        defaults.put("macID", "\"" + thisMac.text + "\"");
        database.answers = ScriptedRecordDatabase::Answers::whenTold;
        database.effect = effect;
    }

    PublisherDoors doors() {
        return {.records = database,
                .keys = keys,
                .defaults = defaults,
                .right = PublishingRight::granted,
                .now = [this] { return time.now(); },
                .sleep = time.sleeper()};
    }

    // Figures that were not there before.
    Limits newLimits() {
        Limits limits = {accountOf("work", 0)};
        limits.front().sevenDay->usedPercentage = (figure_ += 0.001);
        return limits;
    }
    void begin(QCoro::Task<> task) { tasks.emplace_back(std::move(task)); }
    bool areTasksOver() const {
        for (const TaskResult& task : tasks) {
            if (!task.isOver()) return false;
        }
        return true;
    }
    // Lets what has waited longest go on; false if nothing waits.
    bool step() {
        if (time.wakeNext()) return true;
        if (!database.isAsked()) return false;
        database.answer();
        return true;
    }
    // Another computer puts its share beside what is there.
    void putOther(const std::string& recordName, const SymmetricKey& key) {
        LimitsCloud::Snapshot snapshot = database.snapshot(recordName, key).value_or(Snapshot());
        snapshot.macs[otherMac] = {.sentAt = time.now(), .limits = {}};
        database.put(recordName, LimitsCloud::seal(snapshot, key).bytes);
    }
    // The share of this computer, by its digest.
    std::optional<ContentDigest> share(const std::string& recordName,
                                       const SymmetricKey& key) const {
        const std::optional<Snapshot> snapshot = database.snapshot(recordName, key);
        if (!snapshot || !snapshot->macs.contains(thisMac)) return std::nullopt;
        return PublishSchedule::contentDigest(snapshot->macs.at(thisMac).limits);
    }
    bool hasOther(const std::string& recordName, const SymmetricKey& key) const {
        const std::optional<Snapshot> snapshot = database.snapshot(recordName, key);
        return snapshot && snapshot->macs.contains(otherMac);
    }

    VirtualTime time{now};
    MemorySettingsStore defaults;
    MemoryKeyStore keys;
    ScriptedRecordDatabase database;
    std::vector<TaskResult> tasks;

  private:
    double figure_ = 0;
};

// Two things that happen, each at a point at which everything waits.
struct Interleaving {
    std::size_t first;
    std::size_t firstPoint;
    std::size_t second;
    std::size_t secondPoint;
};

// Every order of two of the actions among the points of a run, of which there are as many.
inline void forEachInterleaving(std::size_t actionCount, std::size_t pointCount,
                                const std::function<void(const Interleaving&)>& run) {
    for (std::size_t first = 0; first < actionCount; ++first) {
        for (std::size_t second = 0; second < actionCount; ++second) {
            for (std::size_t firstPoint = 0; firstPoint < pointCount; ++firstPoint) {
                for (std::size_t point = firstPoint; point < pointCount; ++point)
                    run({first, firstPoint, second, point});
            }
        }
    }
}

}  // namespace brimwatch::test
