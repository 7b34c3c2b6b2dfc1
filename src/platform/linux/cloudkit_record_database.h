// The public record database of a CloudKit container, by the provider's interface for the web.
//
// It acts as the user who signed in (`CloudSignIn`); while nobody is, it reads without a user.
// Questions go one after the other, each call having 20 seconds for its own and its wait. A
// conflict costs a second question, for the record that the server has. A call that runs when the
// database goes, or when the application quits, ends with `operationCancelled`: calls may outlive
// the database. Main thread.
#pragma once

#include <memory>

#include "platform/linux/cloud_connection.h"
#include "platform/record_database.h"

namespace brimwatch {

class CloudKitRecordDatabase final : public RecordDatabase {
  public:
    // The token must outlive the database.
    CloudKitRecordDatabase(CloudContainer container, CloudUserToken& userToken,
                           CloudTiming timing = {});
    CloudKitRecordDatabase(const CloudKitRecordDatabase&) = delete;
    CloudKitRecordDatabase& operator=(const CloudKitRecordDatabase&) = delete;
    ~CloudKitRecordDatabase() override;

    QCoro::Task<CloudResult<CloudAccountStatus>> accountStatus() override;
    QCoro::Task<CloudResult<CloudRecord>> record(std::string recordName) override;
    QCoro::Task<CloudResult<SavedRecord>> save(CloudRecord record, SavePolicy policy) override;
    QCoro::Task<CloudResult<void>> deleteRecord(std::string recordName) override;

  private:
    std::shared_ptr<CloudConnection> connection_;
};

}  // namespace brimwatch
