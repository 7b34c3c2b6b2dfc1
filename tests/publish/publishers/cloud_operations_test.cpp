// What both channels ask of the record database.

#include <gmock/gmock.h>

#include "publish/publish_examples.h"
#include "publish/publishers/limits_cloud_operations.h"
#include "publish/publishers/scripted_record_database.h"
#include "task_result.h"

namespace brimwatch {
namespace {

using test::accountOf;
using test::cloudError;
using test::otherMac;
using test::TaskResult;
using test::thisMac;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using Kind = test::ScriptedRecordDatabase::Kind;
using SavedRecord = RecordDatabase::SavedRecord;

QCoro::Task<> fetchInto(RecordDatabase& database, std::string name,
                        std::optional<CloudRecord>* record) {
    *record = co_await fetchRecord(database, std::move(name));
}

class CloudOperations : public ::testing::Test {
  protected:
    CloudRecord shareOfBoth() {
        const LimitsCloud::Snapshot both{
            .macs = {{thisMac, {.sentAt = test::now, .limits = {accountOf("a", 0)}}},
                     {otherMac, {.sentAt = test::now, .limits = {accountOf("b", 0)}}}}};
        database_.put(name_, LimitsCloud::seal(both, key_).bytes);
        return database_.records.at(name_);
    }
    std::string remove() {
        const TaskResult result(removeMac(database_, iPhoneChannel, thisMac, key_));
        return result.summary();
    }
    std::string deletion() {
        return TaskResult(deleteChannelRecord(database_, androidChannel, key_)).summary();
    }
    std::map<MacId, LimitsCloud::Snapshot::Mac> macs() {
        return database_.snapshot(name_, key_).value().macs;
    }
    CloudResult<SavedRecord> conflict(std::optional<CloudRecord> record) {
        CloudError error = cloudError(cloud_error_code::serverRecordChanged);
        error.serverRecord = std::move(record);
        return SavedRecord(CloudResult<CloudRecord>(tl::unexpected(error)));
    }

    SymmetricKey key_ = test::keyFilledWith('k');
    std::string name_ = LimitsCloud::recordName(key_);
    test::ScriptedRecordDatabase database_;
};

TEST_F(CloudOperations, AnAccountThatIsAvailableIsNoFailure) {
    EXPECT_EQ(TaskResult(requireAccount(database_)).summary(), "");
}

TEST_F(CloudOperations, EveryOtherAccountStatusIsNoAccount) {
    database_.account = CloudAccountStatus::noAccount;
    const TaskResult result(requireAccount(database_));
    EXPECT_TRUE(std::holds_alternative<publication_failure::NoAccount>(
        publicationFailure(result.failure())));
}

TEST_F(CloudOperations, AnErrorOfTheAccountStatusPassesThrough) {
    database_.errors[Kind::accountStatus] = {cloudError(6)};
    EXPECT_EQ(TaskResult(requireAccount(database_)).summary(), "CloudKit 오류 6");
}

TEST_F(CloudOperations, ARecordIsFetched) {
    const CloudRecord stored = shareOfBoth();
    std::optional<CloudRecord> record;
    EXPECT_EQ(TaskResult(fetchInto(database_, name_, &record)).summary(), "");
    EXPECT_EQ(record, stored);
}

TEST_F(CloudOperations, ARecordThatIsNotThereIsNothing) {
    std::optional<CloudRecord> record = CloudRecord();
    EXPECT_EQ(TaskResult(fetchInto(database_, name_, &record)).summary(), "");
    EXPECT_EQ(record, std::nullopt);
}

TEST_F(CloudOperations, EveryOtherErrorOfAFetchPassesThrough) {
    for (const int code : {1, 3, 4, 5, 6, 7, 8, 9, 10, 12, 14, 15, 23}) {
        database_.errors[Kind::fetch] = {cloudError(code)};
        std::optional<CloudRecord> record;
        EXPECT_EQ(TaskResult(fetchInto(database_, name_, &record)).summary(),
                  "CloudKit 오류 " + std::to_string(code));
    }
}

TEST_F(CloudOperations, ASaveIsMadeOnlyOnTheUnchangedRecord) {
    EXPECT_EQ(TaskResult(saveRecord(database_, {.recordType = "T", .recordName = "n"})).summary(),
              "");
    EXPECT_EQ(database_.calls().front().policy, SavePolicy::ifServerRecordUnchanged);
    EXPECT_EQ(TaskResult(saveRecord(database_, {.recordType = "T", .recordName = "n"})).summary(),
              "CloudKit 오류 14");
}

TEST_F(CloudOperations, ASaveWithoutAResultForTheRecordIsAnInternalError) {
    database_.saveAnswers = {SavedRecord()};
    const TaskResult result(saveRecord(database_, {.recordType = "T", .recordName = "n"}));
    EXPECT_EQ(result.summary(), "CloudKit 오류 1");
    EXPECT_EQ(failureDescription(result.failure()), "서버가 저장한 결과를 알려 주지 않았어요.");
}

TEST_F(CloudOperations, AnErrorOfTheWholeSavePassesThrough) {
    database_.errors[Kind::save] = {cloudError(7)};
    EXPECT_EQ(TaskResult(saveRecord(database_, {.recordType = "T", .recordName = "n"})).summary(),
              "CloudKit 오류 7");
}

TEST_F(CloudOperations, TheTwoChannelsHaveRecordsOfTheirOwn) {
    EXPECT_EQ(iPhoneChannel.recordType, "LimitSnapshot");
    EXPECT_EQ(androidChannel.recordType, "PhoneLimitSnapshot");
    EXPECT_EQ(iPhoneChannel.recordName(key_), LimitsCloud::recordName(key_));
    EXPECT_EQ(androidChannel.recordName(key_), LimitsCloud::phoneRecordName(key_));
}

TEST_F(CloudOperations, TakesOutTheShareOfThisMacAlone) {
    shareOfBoth();
    EXPECT_EQ(remove(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
}

TEST_F(CloudOperations, TheRecordStaysWhenNoShareIsLeft) {
    const LimitsCloud::Snapshot one{.macs = {{thisMac, {.sentAt = test::now, .limits = {}}}}};
    database_.put(name_, LimitsCloud::seal(one, key_).bytes);
    EXPECT_EQ(remove(), "");
    EXPECT_THAT(macs(), IsEmpty());
}

TEST_F(CloudOperations, WithoutAShareOfThisMacTheRecordIsRewrittenAllTheSame) {
    const LimitsCloud::Snapshot one{.macs = {{otherMac, {.sentAt = test::now, .limits = {}}}}};
    database_.put(name_, LimitsCloud::seal(one, key_).bytes);
    const CloudRecord before = database_.records.at(name_);
    EXPECT_EQ(remove(), "");
    EXPECT_NE(database_.records.at(name_), before);
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
}

TEST_F(CloudOperations, WithoutARecordThereIsNothingToTakeOut) {
    EXPECT_EQ(remove(), "");
    EXPECT_EQ(database_.count(Kind::save), 0U);
}

TEST_F(CloudOperations, WithoutAnAccountNothingIsTakenOut) {
    const CloudRecord before = shareOfBoth();
    database_.account = CloudAccountStatus::noAccount;
    EXPECT_EQ(remove(), "Failure");
    EXPECT_EQ(database_.records.at(name_), before);
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
}

TEST_F(CloudOperations, ARecordThatCannotBeReadIsNotTouchedByARemoval) {
    database_.put(name_, "not sealed at all, and more than 28 bytes");
    const CloudRecord before = database_.records.at(name_);
    const TaskResult result(removeMac(database_, iPhoneChannel, thisMac, key_));
    EXPECT_EQ(result.summary(), "Failure");
    EXPECT_EQ(database_.records.at(name_), before);
    EXPECT_EQ(database_.count(Kind::save), 0U);
}

TEST_F(CloudOperations, ARecordWithoutAPayloadGetsAnEmptyDocument) {
    database_.put({.recordType = "LimitSnapshot", .recordName = name_});
    EXPECT_EQ(remove(), "");
    EXPECT_THAT(macs(), IsEmpty());
}

TEST_F(CloudOperations, ARecordThatVanishesDuringTheRemovalIsNoFailure) {
    shareOfBoth();
    database_.beforeEffect = [this](const auto& call) {
        if (call.kind == Kind::save) database_.records.clear();
    };
    EXPECT_EQ(remove(), "");
    EXPECT_EQ(database_.count(Kind::save), 1U);
    EXPECT_THAT(database_.records, IsEmpty());
}

TEST_F(CloudOperations, ARemovalIsRepeatedOnWhatAnotherMacWroteMeanwhile) {
    shareOfBoth();
    int conflicts = 2;
    database_.beforeEffect = [&](const auto& call) {
        if (call.kind == Kind::save && conflicts-- > 0) shareOfBoth();
    };
    EXPECT_EQ(remove(), "");
    EXPECT_EQ(database_.count(Kind::save), 3U);
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
}

TEST_F(CloudOperations, ARemovalGivesUpAfterTheThirdConflict) {
    shareOfBoth();
    database_.beforeEffect = [&](const auto& call) {
        if (call.kind == Kind::save) shareOfBoth();
    };
    EXPECT_EQ(remove(), "CloudKit 오류 14");
    EXPECT_EQ(database_.count(Kind::save), 3U);
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
}

TEST_F(CloudOperations, ARecordThatVanishesAtTheThirdAttemptIsNoFailure) {
    const CloudRecord stored = shareOfBoth();
    database_.saveAnswers = {conflict(stored), conflict(stored),
                             SavedRecord(tl::unexpected(cloudError(11)))};
    EXPECT_EQ(remove(), "");
    EXPECT_EQ(database_.count(Kind::save), 3U);
}

TEST_F(CloudOperations, AConflictWithoutTheRecordOfTheServerEndsARemoval) {
    shareOfBoth();
    database_.saveAnswers = {conflict(std::nullopt)};
    EXPECT_EQ(remove(), "CloudKit 오류 14");
    EXPECT_EQ(database_.count(Kind::save), 1U);
}

TEST_F(CloudOperations, AConflictWithAnotherRecordEndsARemoval) {
    CloudRecord other = shareOfBoth();
    other.recordName = "ls-other";
    database_.saveAnswers = {conflict(other)};
    EXPECT_EQ(remove(), "CloudKit 오류 14");
    EXPECT_EQ(database_.count(Kind::save), 1U);
}

TEST_F(CloudOperations, AConflictWithARecordThatCannotBeReadEndsARemoval) {
    CloudRecord other = shareOfBoth();
    other.payload = std::string(40, 'x');
    database_.saveAnswers = {conflict(other)};
    EXPECT_EQ(remove(), "Failure");
    EXPECT_EQ(database_.count(Kind::save), 1U);
}

TEST_F(CloudOperations, EveryOtherErrorEndsARemovalAtOnce) {
    for (const int code : {1, 3, 4, 5, 6, 7, 8, 9, 10, 12, 15, 19, 22, 23, 25, 26, 31}) {
        shareOfBoth();
        database_.forgetCalls();
        database_.saveAnswers = {SavedRecord(tl::unexpected(cloudError(code)))};
        EXPECT_EQ(remove(), "CloudKit 오류 " + std::to_string(code));
        EXPECT_EQ(database_.count(Kind::save), 1U);
    }
}

TEST_F(CloudOperations, ADeletionTakesTheRecordOfTheChannel) {
    const std::string name = LimitsCloud::phoneRecordName(key_);
    database_.put(name, "x");
    shareOfBoth();
    EXPECT_EQ(deletion(), "");
    EXPECT_THAT(database_.records, ElementsAre(Key(name_)));
}

TEST_F(CloudOperations, ADeletionOfARecordThatIsGoneSucceeds) {
    EXPECT_EQ(deletion(), "");
    EXPECT_EQ(database_.count(Kind::deletion), 1U);
}

TEST_F(CloudOperations, ADeletionNeedsAnAccount) {
    database_.account = CloudAccountStatus::noAccount;
    EXPECT_EQ(deletion(), "Failure");
    EXPECT_EQ(database_.count(Kind::deletion), 0U);
}

TEST_F(CloudOperations, EveryOtherErrorOfADeletionPassesThrough) {
    for (const int code : {1, 3, 9, 14}) {
        database_.errors[Kind::deletion] = {cloudError(code)};
        EXPECT_EQ(deletion(), "CloudKit 오류 " + std::to_string(code));
    }
}

}  // namespace
}  // namespace brimwatch
