// What both channels to phones ask of the record database.
//
// Each operation throws what stops it: `CloudFailure` as the database tells it, or
// `LimitsCloud::Failure`. The database must outlive them. Main thread.
#pragma once

#include <QCoroTask>
#include <optional>
#include <string>
#include <string_view>

#include "platform/record_database.h"
#include "publish/limits_cloud.h"
#include "publish/mac_id.h"
#include "publish/symmetric_key.h"

namespace brimwatch {

// A kind of phone: how the records for it are called.
struct RecordChannel {
    std::string_view recordType;
    std::string (*recordName)(const SymmetricKey& key);
};

inline constexpr RecordChannel iPhoneChannel{"LimitSnapshot", &LimitsCloud::recordName};
inline constexpr RecordChannel androidChannel{"PhoneLimitSnapshot", &LimitsCloud::phoneRecordName};

// Throws unless somebody is signed in.
QCoro::Task<> requireAccount(RecordDatabase& database);
// Nothing if there is no such record.
QCoro::Task<std::optional<CloudRecord>> fetchRecord(RecordDatabase& database,
                                                    std::string recordName);
QCoro::Task<> saveRecord(RecordDatabase& database, CloudRecord record);

// Takes the share of one computer out of the channel's record, which stays. That there is no record
// is no failure; one that can't be read is, and stays as it is.
QCoro::Task<> removeMac(RecordDatabase& database, RecordChannel channel, MacId macId,
                        SymmetricKey key);
// Deletes the channel's record with the shares of all computers. That there is none is no failure.
QCoro::Task<> deleteChannelRecord(RecordDatabase& database, RecordChannel channel,
                                  SymmetricKey key);

// The same rules for the answers themselves, where something has to happen in between.
void requireAvailable(const CloudResult<CloudAccountStatus>& status);
std::optional<CloudRecord> foundRecord(CloudResult<CloudRecord> result);

}  // namespace brimwatch
