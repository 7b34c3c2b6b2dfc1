#include "platform/linux/cloudkit_record_database.h"

#include <utility>

#include "platform/linux/cloud_error_codes.h"
#include "platform/linux/cloud_questions.h"

namespace brimwatch {
namespace {

using Connection = std::shared_ptr<CloudConnection>;
using SavedRecord = RecordDatabase::SavedRecord;

tl::unexpected<CloudError> failed(CloudRefusal refusal) {
    return tl::unexpected(std::move(refusal.error));
}

bool hasUserName(const JsonValue* user) {
    const JsonValue* name = user != nullptr ? user->member("userRecordName") : nullptr;
    return name != nullptr && name->string() != nullptr && !name->string()->empty();
}

// The user stands in a list or at the top: the provider tells of both.
bool namesCaller(const JsonObject& body) {
    const JsonValue* users = body.find("users");
    if (users != nullptr && users->array() != nullptr && !users->array()->empty() &&
        hasUserName(&users->array()->front()))
        return true;
    const JsonValue top(body);
    return hasUserName(&top);
}

CloudResult<CloudAccountStatus> statusOf(const CloudAnswer& answer) {
    if (answer && namesCaller(answer->body)) return CloudAccountStatus::available;
    if (answer) {
        return tl::unexpected(CloudError{.code = cloud_error_code::internalError,
                                         .description = "서버가 계정을 알려 주지 않았어요."});
    }
    CloudError error = answer.error().error;
    if (error.code == cloud_error_code::notAuthenticated) return CloudAccountStatus::noAccount;
    error.code = errorCodeOfCaller(error.code);
    return tl::unexpected(std::move(error));
}

CloudResult<CloudRecord> recordIn(const CloudReply& reply, const std::string& recordName) {
    const JsonObject* entry = recordEntry(reply.body, recordName);
    if (entry == nullptr) {
        return tl::unexpected(CloudError{.code = cloud_error_code::internalError,
                                         .description = "서버의 답에 기록이 없어요."});
    }
    if (isError(*entry)) return failed(refusalOf(*entry, reply));
    if (isDeleted(*entry)) {
        return tl::unexpected(
            CloudError{.code = cloud_error_code::unknownItem, .description = "지워진 기록이에요."});
    }
    return recordOf(*entry);
}

QCoro::Task<CloudResult<CloudAccountStatus>> accountStatusOf(Connection connection) {
    // Who never signed in need not ask.
    if (!connection->isClosed() && connection->userToken().status == key_status::itemNotFound)
        co_return CloudAccountStatus::noAccount;
    const QDeadlineTimer deadline = connection->deadline();
    const CloudAnswer answer = co_await CloudConnection::ask(connection, askCaller(), deadline);
    co_return statusOf(answer);
}

QCoro::Task<CloudResult<CloudRecord>> fetch(Connection connection, std::string recordName,
                                            QDeadlineTimer deadline) {
    CloudAnswer answer = co_await CloudConnection::ask(connection, lookUp(recordName), deadline);
    if (!answer) co_return failed(std::move(answer.error()));
    co_return recordIn(*answer, recordName);
}

// What the answer to a save says of the record; a record is saved where it has a tag.
SavedRecord savedRecord(const CloudReply& reply, const CloudRecord& sent) {
    const JsonObject* entry = recordEntry(reply.body, sent.recordName);
    if (entry == nullptr) return std::nullopt;
    if (isError(*entry)) return CloudResult<CloudRecord>(failed(refusalOf(*entry, reply)));
    CloudRecord saved = recordOf(*entry);
    if (!saved.recordChangeTag) return std::nullopt;
    if (saved.recordType.empty()) saved.recordType = sent.recordType;
    if (!hasPayload(*entry)) saved.payload = sent.payload;
    return saved;
}

bool isConflict(const CloudError& error) {
    return error.code == cloud_error_code::serverRecordChanged;
}

// The interface does not tell the server's record with a conflict, so it is asked for.
QCoro::Task<CloudError> withServerRecord(Connection connection, CloudError conflict,
                                         std::string recordName, QDeadlineTimer deadline) {
    CloudResult<CloudRecord> record =
        co_await fetch(std::move(connection), std::move(recordName), deadline);
    if (record) {
        conflict.serverRecord = *std::move(record);
        co_return conflict;
    }
    if (record.error().code == cloud_error_code::unknownItem) co_return conflict;
    co_return std::move(record.error());
}

QCoro::Task<CloudResult<SavedRecord>> saveTo(Connection connection, CloudRecord record,
                                             SavePolicy policy) {
    const QDeadlineTimer deadline = connection->deadline();
    CloudAnswer answer =
        co_await CloudConnection::ask(connection, modify(record, policy), deadline);
    if (!answer && !isConflict(answer.error().error)) co_return failed(std::move(answer.error()));
    SavedRecord saved;
    if (answer) {
        saved = savedRecord(*answer, record);
    } else {
        saved = CloudResult<CloudRecord>(failed(std::move(answer.error())));
    }
    if (!saved || *saved || !isConflict(saved->error())) co_return saved;
    CloudError error =
        co_await withServerRecord(connection, saved->error(), record.recordName, deadline);
    saved = CloudResult<CloudRecord>(tl::unexpected(std::move(error)));
    co_return saved;
}

QCoro::Task<CloudResult<void>> deleteFrom(Connection connection, std::string recordName) {
    const QDeadlineTimer deadline = connection->deadline();
    CloudAnswer answer = co_await CloudConnection::ask(connection, remove(recordName), deadline);
    if (!answer) co_return failed(std::move(answer.error()));
    const JsonObject* entry = recordEntry(answer->body, recordName);
    if (entry != nullptr && isError(*entry)) co_return failed(refusalOf(*entry, *answer));
    if (entry == nullptr) {
        co_return tl::unexpected(CloudError{.code = cloud_error_code::internalError,
                                            .description = "서버의 답에 기록이 없어요."});
    }
    co_return CloudResult<void>();
}

}  // namespace

CloudKitRecordDatabase::CloudKitRecordDatabase(CloudContainer container, CloudUserToken& userToken,
                                               CloudTiming timing)
    : connection_(std::make_shared<CloudConnection>(std::move(container), &userToken, timing)) {}

CloudKitRecordDatabase::~CloudKitRecordDatabase() {
    connection_->close();
}

QCoro::Task<CloudResult<CloudAccountStatus>> CloudKitRecordDatabase::accountStatus() {
    return accountStatusOf(connection_);
}

QCoro::Task<CloudResult<CloudRecord>> CloudKitRecordDatabase::record(std::string recordName) {
    return fetch(connection_, std::move(recordName), connection_->deadline());
}

QCoro::Task<CloudResult<SavedRecord>> CloudKitRecordDatabase::save(CloudRecord record,
                                                                   SavePolicy policy) {
    return saveTo(connection_, std::move(record), policy);
}

QCoro::Task<CloudResult<void>> CloudKitRecordDatabase::deleteRecord(std::string recordName) {
    return deleteFrom(connection_, std::move(recordName));
}

}  // namespace brimwatch
