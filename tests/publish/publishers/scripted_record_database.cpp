#include "publish/publishers/scripted_record_database.h"

#include <algorithm>
#include <utility>

namespace brimwatch::test {

ScriptedRecordDatabase::~ScriptedRecordDatabase() {
    answers = Answers::atOnce;
    while (isAsked())
        fail(cloudError(20));
}

template <class Value>
QCoro::Task<CloudResult<Value>> ScriptedRecordDatabase::run(Call call, Work<Value> work) {
    struct Enlist {
        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) const {
            open->waiting = waiting;
            database->open_.push_back(open);
        }
        void await_resume() const {}

        ScriptedRecordDatabase* database;
        Open* open;
    };
    calls_.push_back(call);
    if (answers == Answers::atOnce) co_return done(call, work);
    std::optional<CloudResult<Value>> early;
    if (effect == Effect::atTheCall) early = done(call, work);
    Open open{.call = call};
    const Enlist enlist{this, &open};
    co_await enlist;
    if (open.failure) co_return CloudResult<Value>(tl::unexpected(*open.failure));
    if (early) co_return *std::move(early);
    co_return done(call, work);
}

template <class Value>
CloudResult<Value> ScriptedRecordDatabase::done(const Call& call, Work<Value> work) {
    if (beforeEffect) beforeEffect(call);
    std::deque<CloudError>& scripted = errors[call.kind];
    if (scripted.empty()) return (this->*work)(call);
    CloudError error = std::move(scripted.front());
    scripted.pop_front();
    return tl::unexpected(std::move(error));
}

QCoro::Task<CloudResult<CloudAccountStatus>> ScriptedRecordDatabase::accountStatus() {
    return run({.kind = Kind::accountStatus}, &ScriptedRecordDatabase::accountNow);
}

QCoro::Task<CloudResult<CloudRecord>> ScriptedRecordDatabase::record(std::string recordName) {
    return run({.kind = Kind::fetch, .recordName = std::move(recordName)},
               &ScriptedRecordDatabase::recordNow);
}

QCoro::Task<CloudResult<RecordDatabase::SavedRecord>> ScriptedRecordDatabase::save(
    CloudRecord record, SavePolicy policy) {
    const std::string name = record.recordName;
    return run(
        {.kind = Kind::save, .recordName = name, .record = std::move(record), .policy = policy},
        &ScriptedRecordDatabase::saveNow);
}

QCoro::Task<CloudResult<void>> ScriptedRecordDatabase::deleteRecord(std::string recordName) {
    return run({.kind = Kind::deletion, .recordName = std::move(recordName)},
               &ScriptedRecordDatabase::deleteNow);
}

CloudResult<CloudAccountStatus> ScriptedRecordDatabase::accountNow(const Call& /*call*/) {
    return account;
}

CloudResult<CloudRecord> ScriptedRecordDatabase::recordNow(const Call& call) {
    const auto found = records.find(call.recordName);
    if (found == records.end()) return tl::unexpected(cloudError(cloud_error_code::unknownItem));
    return found->second;
}

CloudResult<RecordDatabase::SavedRecord> ScriptedRecordDatabase::saveNow(const Call& call) {
    if (saveAnswers.empty()) return SavedRecord(written(call));
    CloudResult<SavedRecord> answer = std::move(saveAnswers.front());
    saveAnswers.pop_front();
    return answer;
}

CloudResult<CloudRecord> ScriptedRecordDatabase::written(const Call& call) {
    const auto found = records.find(call.recordName);
    const bool isThere = found != records.end();
    const std::optional<std::string>& tag = call.record->recordChangeTag;
    if (call.policy == SavePolicy::ifServerRecordUnchanged) {
        if (tag && !isThere) return tl::unexpected(cloudError(cloud_error_code::unknownItem));
        if (isThere && tag != found->second.recordChangeTag) {
            CloudError conflict = cloudError(cloud_error_code::serverRecordChanged);
            conflict.serverRecord = found->second;
            return tl::unexpected(std::move(conflict));
        }
    }
    put(*call.record);
    return records.at(call.recordName);
}

CloudResult<void> ScriptedRecordDatabase::deleteNow(const Call& call) {
    if (records.erase(call.recordName) == 0) {
        return tl::unexpected(cloudError(cloud_error_code::unknownItem));
    }
    return {};
}

void ScriptedRecordDatabase::put(CloudRecord record) {
    record.recordChangeTag = "tag" + std::to_string(++lastTag_);
    const std::string name = record.recordName;
    records.insert_or_assign(name, std::move(record));
}

void ScriptedRecordDatabase::put(const std::string& recordName, std::string payload) {
    put({.recordType = "LimitSnapshot", .recordName = recordName, .payload = std::move(payload)});
}

std::optional<LimitsCloud::Snapshot> ScriptedRecordDatabase::snapshot(
    const std::string& recordName, const SymmetricKey& key) const {
    const auto found = records.find(recordName);
    if (found == records.end() || !found->second.payload) return std::nullopt;
    return LimitsCloud::open(*found->second.payload, key);
}

std::size_t ScriptedRecordDatabase::count(Kind kind) const {
    return static_cast<std::size_t>(std::count_if(
        calls_.begin(), calls_.end(), [kind](const Call& call) { return call.kind == kind; }));
}

void ScriptedRecordDatabase::answer(std::size_t place) {
    Open* open = open_.at(place);
    open_.erase(open_.begin() + static_cast<std::ptrdiff_t>(place));
    open->waiting.resume();
}

void ScriptedRecordDatabase::fail(CloudError error) {
    open_.front()->failure = std::move(error);
    answer();
}

CloudError cloudError(int code) {
    CloudError error;
    error.code = code;
    error.description = "설명 " + std::to_string(code);
    return error;
}

}  // namespace brimwatch::test
