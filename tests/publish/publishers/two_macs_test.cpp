// Two computers with one key, which send at the same time.

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <array>

#include "core/log_capture.h"
#include "harness/random.h"
#include "platform/linux/cloud_test.h"
#include "publisher_world.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using test::otherMac;
using test::thisMac;

const std::string item = "net.quillmoor.brimwatch.sync/limits-key-v1";

QCoro::Task<SleepEnd> turn(std::chrono::milliseconds /*time*/) {
    co_return SleepEnd::elapsed;
}

// One of them, with settings and keys of its own.
class Mac {
  public:
    Mac(MacId id, RecordDatabase& records, Sleep sleep) : id_(std::move(id)) {
        defaults_.put("macID", "\"" + id_.text + "\"");
        keys_.values[item] = key().bytes();
        publisher_ = makeCloudPublisher({.records = records,
                                         .keys = keys_,
                                         .defaults = defaults_,
                                         .right = PublishingRight::granted,
                                         .now = [this] { return now_; },
                                         .sleep = std::move(sleep)});
    }

    static const SymmetricKey& key() {
        static const SymmetricKey key = test::keyFilledWith('k');
        return key;
    }
    static std::string recordName() { return LimitsCloud::recordName(key()); }

    CloudPublisher& publisher() { return *publisher_; }
    void publish() {
        now_ += 60s;
        limits_ = {test::accountOf("work", 0)};
        limits_.front().sevenDay->usedPercentage = (used_ += 0.01);
        EXPECT_TRUE(publisher_->publish(limits_, now_));
    }
    // Whether what was published last is what phones read.
    void check(const std::optional<std::string>& payload) const {
        EXPECT_TRUE(std::holds_alternative<publication::Sent>(publisher_->state()));
        ASSERT_TRUE(payload);
        const LimitsCloud::Snapshot snapshot = LimitsCloud::open(*payload, key());
        ASSERT_TRUE(snapshot.macs.contains(id_));
        EXPECT_EQ(snapshot.macs.at(id_).limits, limits_);
    }

  private:
    MacId id_;
    test::MemorySettingsStore defaults_;
    test::MemoryKeyStore keys_;
    Instant now_ = test::now;
    double used_ = 0;
    std::vector<SubscriptionLimits> limits_;
    std::unique_ptr<CloudPublisher> publisher_;
};

TEST(TwoMacs, NeverLoseEachOthersShareInAThousandRoundsOfAnyOrder) {
    const test::LogCapture quiet;
    test::Random random;
    SCOPED_TRACE(random.trace());
    test::ScriptedRecordDatabase database;
    database.answers = test::ScriptedRecordDatabase::Answers::whenTold;
    Mac one(thisMac, database, turn);
    Mac other(otherMac, database, turn);
    for (int round = 0; round < 1000 && !::testing::Test::HasFailure(); ++round) {
        one.publish();
        other.publish();
        while (database.isAsked())
            database.answer(random.below(database.openCount()));
        const std::optional<std::string> payload = database.records.at(Mac::recordName()).payload;
        one.check(payload);
        other.check(payload);
        quiet.messages().clear();
    }
    EXPECT_GE(database.count(test::ScriptedRecordDatabase::Kind::save), 2999U);
}

class TwoMacsOnAServer : public test::CloudTest {
  protected:
    static void waitFor(const std::function<bool()>& condition) {
        while (!condition())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    std::size_t countSaves() const {
        return static_cast<std::size_t>(
            std::count_if(server_->requests().begin(), server_->requests().end(),
                          [](const test::RecordServer::Request& request) {
                              return request.operation == "records/modify";
                          }));
    }
};

TEST_F(TwoMacsOnAServer, NeverLoseEachOthersShareInAThousandSaves) {
    signIn("user");
    test::ScriptedKeyStore otherKeys;
    otherKeys.values[tokenItem] = SecretBytes(server_->signIn("user"));
    CloudUserToken otherToken(otherKeys, container());
    CloudKitRecordDatabase otherDatabase(container(), otherToken);
    Mac one(thisMac, *database_, turn);
    Mac other(otherMac, otherDatabase, turn);
    for (int round = 0; round < 500 && !HasFailure(); ++round) {
        one.publish();
        other.publish();
        waitFor([&] { return !one.publisher().isSending() && !other.publisher().isSending(); });
        const std::optional<std::string> payload = server_->payload(Mac::recordName());
        one.check(payload);
        other.check(payload);
    }
    // Each round has a conflict.
    EXPECT_GE(countSaves(), 1499U);
}

}  // namespace
}  // namespace brimwatch
