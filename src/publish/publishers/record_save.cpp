#include "publish/publishers/record_save.h"

#include <string>
#include <utility>

#include "publish/publishers/cloud_failure.h"

namespace brimwatch {
namespace {

using RecordResult = CloudResult<CloudRecord>;

constexpr int mostSaveAttempts = 4;

struct Attempt {
    CloudRecord record;
    SavePolicy policy = SavePolicy::ifServerRecordUnchanged;
};

CloudRecord newRecord(std::string_view type, std::string name) {
    return {.recordType = std::string(type), .recordName = std::move(name)};
}

// Nothing if another attempt can't help.
std::optional<Attempt> attemptAfter(const CloudError& error, const Attempt& failed,
                                    RecordChannel channel) {
    const bool isNew = !failed.record.recordChangeTag;
    switch (error.code) {
        case cloud_error_code::unknownItem:
            if (isNew) return std::nullopt;
            return Attempt{newRecord(channel.recordType, failed.record.recordName), failed.policy};
        case cloud_error_code::serverRecordChanged:
            if (error.serverRecord) return Attempt{*error.serverRecord, failed.policy};
            [[fallthrough]];
        case cloud_error_code::zoneBusy:
            if (!isNew) return std::nullopt;
            return Attempt{failed.record, SavePolicy::allKeys};
        default:
            return std::nullopt;
    }
}

void requireCurrent(const ShareToSave& share) {
    if (!share.isCurrent()) throw LimitsCloud::PublicationStopped();
}

QCoro::Task<CloudRecord> recordToChange(RecordDatabase& database, RecordChannel channel,
                                        ShareToSave share) {
    std::string name = channel.recordName(share.key);
    if (share.record && share.record->recordName == name) co_return *std::move(share.record);
    RecordResult result = co_await database.record(name);
    requireCurrent(share);
    std::optional<CloudRecord> found = foundRecord(std::move(result));
    if (found) co_return *std::move(found);
    co_return newRecord(channel.recordType, std::move(name));
}

}  // namespace

QCoro::Task<CloudRecord> saveShare(RecordDatabase& database, RecordChannel channel, MacId macId,
                                   ShareToSave share) {
    requireCurrent(share);
    const CloudResult<CloudAccountStatus> status = co_await database.accountStatus();
    requireCurrent(share);
    requireAvailable(status);
    Attempt attempt;
    attempt.record = co_await recordToChange(database, channel, share);
    for (int count = 1;; ++count) {
        attempt.record.payload = LimitsCloud::payloadWithShare(attempt.record.payload, share.key,
                                                               macId, share.limits, share.now)
                                     .bytes;
        CloudResult<RecordDatabase::SavedRecord> saved =
            co_await database.save(attempt.record, attempt.policy);
        requireCurrent(share);
        if (!saved) throw CloudFailure(std::move(saved).error());
        if (!*saved) co_return attempt.record;
        RecordResult& result = **saved;
        if (result) co_return *std::move(result);
        std::optional<Attempt> next = attemptAfter(result.error(), attempt, channel);
        if (!next || count == mostSaveAttempts) throw CloudFailure(std::move(result).error());
        attempt = *std::move(next);
    }
}

}  // namespace brimwatch
