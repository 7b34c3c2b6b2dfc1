// Tests with a cloud of records, a user who may be signed in, and a look at everything that was
// logged: no token may be in it.
#pragma once

#include <QCoroTask>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/application_test.h"
#include "platform/linux/cloudkit_record_database.h"
#include "platform/linux/scripted_key_store.h"
#include "record_server/record_server.h"

namespace brimwatch::test {

template <class Value>
QCoro::Task<> keepResult(QCoro::Task<Value> task, std::shared_ptr<std::optional<Value>> place) {
    place->emplace(co_await std::move(task));
}

// The result of a task that runs.
template <class Value>
class Pending {
  public:
    explicit Pending(QCoro::Task<Value> task) { keepResult(std::move(task), place_); }

    bool isDone() const { return place_->has_value(); }
    const Value& result() const { return place_->value(); }

  private:
    std::shared_ptr<std::optional<Value>> place_ = std::make_shared<std::optional<Value>>();
};

class CloudTest : public ApplicationTest {
  protected:
    static constexpr const char* tokenItem =
        "net.quillmoor.brimwatch.cloudkit iCloud.net.example.test/development";

    void SetUp() override;
    void TearDown() override;

    CloudContainer container() const;
    void makeDatabase(CloudTiming timing = {});
    // Puts a token of that user into the key store.
    void signIn(const std::string& user);
    std::string storedToken() const;

    template <class Value>
    static Value wait(QCoro::Task<Value> task) {
        const Pending<Value> pending(std::move(task));
        EXPECT_TRUE(eventually([&] { return pending.isDone(); }));
        return pending.result();
    }

    RecordDatabase::SavedRecord save(const CloudRecord& record, SavePolicy policy);
    // Of a call that has to fail, or 0.
    template <class Value>
    static int codeOf(const CloudResult<Value>& result) {
        return result ? 0 : result.error().code;
    }

    static const QString& log();

    std::optional<RecordServer> server_;
    ScriptedKeyStore keys_;
    std::optional<CloudUserToken> token_;
    std::optional<CloudKitRecordDatabase> database_;
};

inline CloudRecord recordNamed(const std::string& name, const std::string& payload) {
    return {.recordType = "LimitSnapshot", .recordName = name, .payload = payload};
}

}  // namespace brimwatch::test
