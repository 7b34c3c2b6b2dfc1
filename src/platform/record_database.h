// The public record database of a cloud container: records with one field of bytes, `payload`, that
// are found by their names, change under optimistic locking, and belong to whoever made them.
//
// Each call ends with a value or a `CloudError`, after 10 seconds without an answer and after 20 in
// all, whatever happens; calls may be made while others run. Nothing throws. Main thread. The
// database must outlive its calls.
#pragma once

#include <QCoroTask>
#include <optional>
#include <string>
#include <tl/expected.hpp>

namespace brimwatch {

// The numbers of CKError.
namespace cloud_error_code {
inline constexpr int internalError = 1;
inline constexpr int networkUnavailable = 3;
inline constexpr int networkFailure = 4;
inline constexpr int badContainer = 5;
inline constexpr int serviceUnavailable = 6;
inline constexpr int requestRateLimited = 7;
inline constexpr int missingEntitlement = 8;
inline constexpr int notAuthenticated = 9;
inline constexpr int permissionFailure = 10;
inline constexpr int unknownItem = 11;
inline constexpr int invalidArguments = 12;
inline constexpr int serverRecordChanged = 14;
inline constexpr int serverRejectedRequest = 15;
inline constexpr int constraintViolation = 19;
inline constexpr int operationCancelled = 20;
inline constexpr int batchRequestFailed = 22;
inline constexpr int zoneBusy = 23;
inline constexpr int quotaExceeded = 25;
inline constexpr int zoneNotFound = 26;
inline constexpr int referenceViolation = 31;
}  // namespace cloud_error_code

struct CloudRecord {
    std::string recordType;
    std::string recordName;
    std::optional<std::string> recordChangeTag = {};  // absent: never saved
    std::optional<std::string> payload = {};          // absent too if it isn't bytes

    bool operator==(const CloudRecord&) const = default;
};

struct CloudError {
    int code = cloud_error_code::internalError;
    std::optional<double> retryAfterSeconds = {};
    std::optional<CloudRecord> serverRecord = {};  // of `serverRecordChanged`, if it could be had
    std::string description = {};                  // for the user and the log: without any secret

    bool operator==(const CloudError&) const = default;
};

template <class Value>
using CloudResult = tl::expected<Value, CloudError>;

enum class CloudAccountStatus { available, noAccount };

enum class SavePolicy {
    ifServerRecordUnchanged,
    allKeys,  // whatever the server has
};

class RecordDatabase {
  public:
    // What the answer to a save says of the record, if it says anything.
    using SavedRecord = std::optional<CloudResult<CloudRecord>>;

    RecordDatabase() = default;
    RecordDatabase(const RecordDatabase&) = delete;
    RecordDatabase& operator=(const RecordDatabase&) = delete;
    virtual ~RecordDatabase() = default;

    virtual QCoro::Task<CloudResult<CloudAccountStatus>> accountStatus() = 0;
    // A record that isn't there is `unknownItem`.
    virtual QCoro::Task<CloudResult<CloudRecord>> record(std::string recordName) = 0;
    // The error is that of the call as a whole.
    virtual QCoro::Task<CloudResult<SavedRecord>> save(CloudRecord record, SavePolicy policy) = 0;
    // May tell of a record that isn't there as `unknownItem`.
    virtual QCoro::Task<CloudResult<void>> deleteRecord(std::string recordName) = 0;
};

}  // namespace brimwatch
