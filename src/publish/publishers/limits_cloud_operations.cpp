#include "publish/publishers/limits_cloud_operations.h"

#include <utility>

#include "publish/publishers/cloud_failure.h"

namespace brimwatch {
namespace {

constexpr int mostRemovalAttempts = 3;

CloudError noResultError() {
    return {.code = cloud_error_code::internalError,
            .description = "서버가 저장한 결과를 알려 주지 않았어요."};
}

// The record to try the removal on after a conflict, or the failure.
CloudRecord serverRecordOf(const CloudFailure& failure, const std::string& recordName) {
    const CloudError& error = failure.error();
    const bool isRecord = error.serverRecord && error.serverRecord->recordName == recordName;
    if (error.code != cloud_error_code::serverRecordChanged || !isRecord)
        throw CloudFailure(failure);
    return *error.serverRecord;
}

}  // namespace

void requireAvailable(const CloudResult<CloudAccountStatus>& status) {
    if (!status) throw CloudFailure(status.error());
    if (*status != CloudAccountStatus::available) {
        throw LimitsCloud::Failure(LimitsCloud::Failure::Reason::noAccount);
    }
}

std::optional<CloudRecord> foundRecord(CloudResult<CloudRecord> result) {
    if (result) return *std::move(result);
    if (result.error().code == cloud_error_code::unknownItem) return std::nullopt;
    throw CloudFailure(std::move(result).error());
}

QCoro::Task<> requireAccount(RecordDatabase& database) {
    const CloudResult<CloudAccountStatus> status = co_await database.accountStatus();
    requireAvailable(status);
}

QCoro::Task<std::optional<CloudRecord>> fetchRecord(RecordDatabase& database,
                                                    std::string recordName) {
    CloudResult<CloudRecord> result = co_await database.record(std::move(recordName));
    std::optional<CloudRecord> record = foundRecord(std::move(result));
    co_return record;
}

QCoro::Task<> saveRecord(RecordDatabase& database, CloudRecord record) {
    const CloudResult<RecordDatabase::SavedRecord> saved =
        co_await database.save(std::move(record), SavePolicy::ifServerRecordUnchanged);
    if (!saved) throw CloudFailure(saved.error());
    if (!*saved) throw CloudFailure(noResultError());
    if (!**saved) throw CloudFailure((*saved)->error());
}

QCoro::Task<> removeMac(RecordDatabase& database, RecordChannel channel, MacId macId,
                        SymmetricKey key) {
    co_await requireAccount(database);
    const std::string recordName = channel.recordName(key);
    std::optional<CloudRecord> record = co_await fetchRecord(database, recordName);
    for (int attempt = 1; record; ++attempt) {
        record->payload = LimitsCloud::payloadWithoutShare(record->payload, key, macId).bytes;
        std::optional<CloudFailure> failure;
        try {
            co_await saveRecord(database, *record);
        } catch (const CloudFailure& thrown) {
            failure = thrown;
        }
        if (!failure || failure->error().code == cloud_error_code::unknownItem) co_return;
        if (attempt == mostRemovalAttempts) throw CloudFailure(*failure);
        record = serverRecordOf(*failure, recordName);
    }
}

QCoro::Task<> deleteChannelRecord(RecordDatabase& database, RecordChannel channel,
                                  SymmetricKey key) {
    co_await requireAccount(database);
    const CloudResult<void> result = co_await database.deleteRecord(channel.recordName(key));
    if (result || result.error().code == cloud_error_code::unknownItem) co_return;
    throw CloudFailure(result.error());
}

}  // namespace brimwatch
