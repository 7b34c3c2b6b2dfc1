// A record database in memory that behaves as a server does, change tags included, and whose calls
// go on when a test says so.
#pragma once

#include <coroutine>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/record_database.h"
#include "publish/limits_cloud.h"

namespace brimwatch::test {

class ScriptedRecordDatabase final : public RecordDatabase {
  public:
    enum class Kind { accountStatus, fetch, save, deletion };
    struct Call {
        Kind kind = Kind::accountStatus;
        std::string recordName = {};
        std::optional<CloudRecord> record = {};
        SavePolicy policy = SavePolicy::ifServerRecordUnchanged;
    };
    // When the server does what it is asked for.
    enum class Effect { atTheCall, atTheAnswer };
    enum class Answers { atOnce, whenTold };

    ScriptedRecordDatabase() = default;
    ScriptedRecordDatabase(const ScriptedRecordDatabase&) = delete;
    ScriptedRecordDatabase& operator=(const ScriptedRecordDatabase&) = delete;
    // Fails what is open, as the end of the program does.
    ~ScriptedRecordDatabase() override;

    QCoro::Task<CloudResult<CloudAccountStatus>> accountStatus() override;
    QCoro::Task<CloudResult<CloudRecord>> record(std::string recordName) override;
    QCoro::Task<CloudResult<SavedRecord>> save(CloudRecord record, SavePolicy policy) override;
    QCoro::Task<CloudResult<void>> deleteRecord(std::string recordName) override;

    // --- The server ---

    std::map<std::string, CloudRecord> records;
    CloudAccountStatus account = CloudAccountStatus::available;
    // As another computer writes: whatever is there, with a new tag.
    void put(CloudRecord record);
    void put(const std::string& recordName, std::string payload);
    std::optional<LimitsCloud::Snapshot> snapshot(const std::string& recordName,
                                                  const SymmetricKey& key) const;

    // --- The script ---

    Answers answers = Answers::atOnce;
    Effect effect = Effect::atTheAnswer;
    // In place of what the server would say, in order; nothing of it happens on the server.
    std::map<Kind, std::deque<CloudError>> errors;
    std::deque<CloudResult<SavedRecord>> saveAnswers;
    std::function<void(const Call&)> beforeEffect;

    const std::vector<Call>& calls() const { return calls_; }
    std::size_t count(Kind kind) const;
    void forgetCalls() { calls_.clear(); }
    bool isAsked() const { return !open_.empty(); }
    std::size_t openCount() const { return open_.size(); }
    const Call& oldestOpen() const { return open_.front()->call; }
    // Lets the oldest open call go on, or the one at that place.
    void answer(std::size_t place = 0);
    void fail(CloudError error);

  private:
    struct Open {
        Call call;
        std::coroutine_handle<> waiting = {};
        std::optional<CloudError> failure = {};
    };

    template <class Value>
    using Work = CloudResult<Value> (ScriptedRecordDatabase::*)(const Call&);
    template <class Value>
    QCoro::Task<CloudResult<Value>> run(Call call, Work<Value> work);
    template <class Value>
    CloudResult<Value> done(const Call& call, Work<Value> work);
    CloudResult<CloudAccountStatus> accountNow(const Call& call);
    CloudResult<CloudRecord> recordNow(const Call& call);
    CloudResult<SavedRecord> saveNow(const Call& call);
    CloudResult<void> deleteNow(const Call& call);
    CloudResult<CloudRecord> written(const Call& call);

    std::vector<Call> calls_;
    std::deque<Open*> open_;
    int lastTag_ = 0;
};

CloudError cloudError(int code);

}  // namespace brimwatch::test
