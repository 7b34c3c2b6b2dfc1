// Saving a share on top of what others have saved.

#include "publish/publishers/record_save.h"

#include <gmock/gmock.h>

#include "publish/publish_examples.h"
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

QCoro::Task<> saveInto(RecordDatabase& database, ShareToSave share,
                       std::optional<CloudRecord>* saved) {
    *saved = co_await saveShare(database, iPhoneChannel, thisMac, std::move(share));
}

CloudResult<SavedRecord> refusal(int code, std::optional<CloudRecord> serverRecord = {}) {
    CloudError error = cloudError(code);
    error.serverRecord = std::move(serverRecord);
    return SavedRecord(CloudResult<CloudRecord>(tl::unexpected(error)));
}

class RecordSave : public ::testing::Test {
  protected:
    ShareToSave share(std::optional<CloudRecord> record = {}) {
        return {.limits = {accountOf("mine", 0)},
                .key = key_,
                .record = std::move(record),
                .now = test::now,
                .isCurrent = [this] { return ++questions_ && isCurrent_; }};
    }
    std::string save(std::optional<CloudRecord> record = {}) {
        saved_.reset();
        return TaskResult(saveInto(database_, share(std::move(record)), &saved_)).summary();
    }
    CloudRecord putShareOf(const MacId& mac, double ageSeconds = 10) {
        LimitsCloud::Snapshot snapshot;
        snapshot.macs[mac] = {.sentAt = test::secondsAgo(ageSeconds), .limits = {}};
        database_.put(name_, LimitsCloud::seal(snapshot, key_).bytes);
        return database_.records.at(name_);
    }
    std::map<MacId, LimitsCloud::Snapshot::Mac> macs() {
        return database_.snapshot(name_, key_).value().macs;
    }
    std::vector<SavePolicy> policies() {
        std::vector<SavePolicy> policies;
        for (const auto& call : database_.calls()) {
            if (call.kind == Kind::save) policies.push_back(call.policy);
        }
        return policies;
    }
    std::vector<std::optional<std::string>> tags() {
        std::vector<std::optional<std::string>> tags;
        for (const auto& call : database_.calls()) {
            if (call.kind == Kind::save) tags.push_back(call.record->recordChangeTag);
        }
        return tags;
    }
    CloudRecord known() const {
        return {.recordType = "LimitSnapshot", .recordName = name_, .recordChangeTag = "old"};
    }

    SymmetricKey key_ = test::keyFilledWith('k');
    std::string name_ = LimitsCloud::recordName(key_);
    test::ScriptedRecordDatabase database_;
    std::optional<CloudRecord> saved_;
    bool isCurrent_ = true;
    int questions_ = 0;
};

constexpr SavePolicy careful = SavePolicy::ifServerRecordUnchanged;
constexpr SavePolicy forced = SavePolicy::allKeys;

TEST_F(RecordSave, MakesARecordWhereThereIsNone) {
    EXPECT_EQ(save(), "");
    EXPECT_EQ(saved_, database_.records.at(name_));
    EXPECT_EQ(saved_->recordType, "LimitSnapshot");
    ASSERT_THAT(macs(), ElementsAre(Key(thisMac)));
    EXPECT_EQ(macs().at(thisMac).sentAt, test::now);
    EXPECT_THAT(macs().at(thisMac).limits, ElementsAre(accountOf("mine", 0)));
    EXPECT_THAT(policies(), ElementsAre(careful));
}

TEST_F(RecordSave, AnAndroidRecordHasItsOwnTypeAndName) {
    EXPECT_EQ(TaskResult([](RecordDatabase& database, ShareToSave share) -> QCoro::Task<> {
                  co_await saveShare(database, androidChannel, thisMac, std::move(share));
              }(database_, share()))
                  .summary(),
              "");
    const std::string name = LimitsCloud::phoneRecordName(key_);
    ASSERT_THAT(database_.records, ElementsAre(Key(name)));
    EXPECT_EQ(database_.records.at(name).recordType, "PhoneLimitSnapshot");
}

TEST_F(RecordSave, PutsTheShareBesideThoseOfOtherMacs) {
    putShareOf(otherMac);
    EXPECT_EQ(save(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
}

TEST_F(RecordSave, UsesTheRecordThatItIsGivenWithoutAFetch) {
    EXPECT_EQ(save(putShareOf(otherMac)), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
}

TEST_F(RecordSave, DoesNotUseTheRecordOfAnotherKey) {
    CloudRecord other = putShareOf(otherMac);
    database_.records.clear();
    other.recordName = LimitsCloud::recordName(test::keyFilledWith('o'));
    EXPECT_EQ(save(other), "");
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
}

TEST_F(RecordSave, APayloadThatCannotBeReadIsReplaced) {
    database_.put(name_, std::string(100, 'x'));
    EXPECT_EQ(save(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
}

TEST_F(RecordSave, AShareOfThirtyDaysIsDropped) {
    putShareOf(otherMac, 2'592'000);
    EXPECT_EQ(save(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
    putShareOf(otherMac, 2'591'999);
    EXPECT_EQ(save(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
}

TEST_F(RecordSave, WithoutAResultForTheRecordItIsGivenBackAsItIs) {
    database_.saveAnswers = {SavedRecord()};
    EXPECT_EQ(save(), "");
    ASSERT_TRUE(saved_);
    EXPECT_EQ(saved_->recordChangeTag, std::nullopt);
    EXPECT_THAT(LimitsCloud::open(saved_->payload.value(), key_).macs, ElementsAre(Key(thisMac)));
    EXPECT_THAT(database_.records, IsEmpty());
}

TEST_F(RecordSave, NeedsAnAccount) {
    database_.account = CloudAccountStatus::noAccount;
    EXPECT_EQ(save(), "Failure");
    EXPECT_EQ(database_.calls().size(), 1U);
}

TEST_F(RecordSave, ErrorsBeforeTheSavePassThrough) {
    database_.errors[Kind::accountStatus] = {cloudError(9)};
    EXPECT_EQ(save(), "CloudKit 오류 9");
    database_.errors[Kind::fetch] = {cloudError(3)};
    EXPECT_EQ(save(), "CloudKit 오류 3");
    EXPECT_EQ(database_.count(Kind::save), 0U);
}

TEST_F(RecordSave, AnErrorOfTheCallAsAWholeIsFinal) {
    for (const int code : {11, 14, 23, 6}) {
        database_.forgetCalls();
        database_.errors[Kind::save] = {cloudError(code)};
        EXPECT_EQ(save(), "CloudKit 오류 " + std::to_string(code));
        EXPECT_EQ(database_.count(Kind::save), 1U);
    }
}

// --- What a failure of the record leads to ---

TEST_F(RecordSave, ANewRecordThatIsUnknownIsAFailure) {
    database_.saveAnswers = {refusal(11)};
    EXPECT_EQ(save(), "CloudKit 오류 11");
    EXPECT_EQ(database_.count(Kind::save), 1U);
}

TEST_F(RecordSave, AKnownRecordThatVanishedIsMadeAnew) {
    const CloudRecord gone = putShareOf(otherMac);
    database_.records.clear();
    EXPECT_EQ(save(gone), "");
    EXPECT_THAT(policies(), ElementsAre(careful, careful));
    EXPECT_THAT(tags(), ElementsAre(gone.recordChangeTag, std::nullopt));
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
    EXPECT_EQ(saved_->recordType, "LimitSnapshot");
}

TEST_F(RecordSave, ANewRecordThatIsThereMeanwhileIsContinuedWith) {
    database_.beforeEffect = [this](const auto& call) {
        if (call.kind == Kind::save && database_.records.empty()) putShareOf(otherMac);
    };
    EXPECT_EQ(save(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
    EXPECT_THAT(policies(), ElementsAre(careful, careful));
}

TEST_F(RecordSave, AKnownRecordThatChangedMeanwhileIsContinuedWith) {
    const CloudRecord stale = putShareOf(thisMac);
    putShareOf(otherMac);
    EXPECT_EQ(save(stale), "");
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
    EXPECT_THAT(policies(), ElementsAre(careful, careful));
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
}

TEST_F(RecordSave, ANewRecordThatChangedInSecretIsForced) {
    database_.saveAnswers = {refusal(14)};
    EXPECT_EQ(save(), "");
    EXPECT_THAT(policies(), ElementsAre(careful, forced));
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
}

TEST_F(RecordSave, AKnownRecordThatChangedInSecretIsAFailure) {
    database_.saveAnswers = {refusal(14)};
    EXPECT_EQ(save(known()), "CloudKit 오류 14");
    EXPECT_THAT(policies(), ElementsAre(careful));
}

TEST_F(RecordSave, ANewRecordInABusyZoneIsForced) {
    database_.saveAnswers = {refusal(23)};
    EXPECT_EQ(save(), "");
    EXPECT_THAT(policies(), ElementsAre(careful, forced));
}

TEST_F(RecordSave, AKnownRecordInABusyZoneIsAFailure) {
    database_.saveAnswers = {refusal(23)};
    EXPECT_EQ(save(known()), "CloudKit 오류 23");
    EXPECT_THAT(policies(), ElementsAre(careful));
}

TEST_F(RecordSave, EveryOtherErrorIsAFailure) {
    for (const int code : {1, 3, 4, 5, 6, 7, 8, 9, 10, 12, 15, 19, 22, 25, 26, 31}) {
        for (const bool isKnown : {false, true}) {
            database_.forgetCalls();
            database_.saveAnswers = {refusal(code)};
            EXPECT_EQ(isKnown ? save(known()) : save(), "CloudKit 오류 " + std::to_string(code));
            EXPECT_EQ(database_.count(Kind::save), 1U);
        }
    }
}

TEST_F(RecordSave, AForcedRecordStaysForced) {
    database_.saveAnswers = {refusal(23), refusal(14, putShareOf(otherMac))};
    database_.records.clear();
    EXPECT_EQ(save(), "");
    EXPECT_THAT(policies(), ElementsAre(careful, forced, forced));
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
}

TEST_F(RecordSave, GivesUpAfterTheFourthConflict) {
    putShareOf(otherMac);
    database_.beforeEffect = [this](const auto& call) {
        if (call.kind == Kind::save) putShareOf(otherMac);
    };
    EXPECT_EQ(save(), "CloudKit 오류 14");
    EXPECT_EQ(database_.count(Kind::save), 4U);
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
}

TEST_F(RecordSave, SucceedsAtTheFourthAttempt) {
    int conflicts = 3;
    putShareOf(otherMac);
    database_.beforeEffect = [&](const auto& call) {
        if (call.kind == Kind::save && conflicts-- > 0) putShareOf(otherMac);
    };
    EXPECT_EQ(save(), "");
    EXPECT_EQ(database_.count(Kind::save), 4U);
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac), Key(otherMac)));
}

TEST_F(RecordSave, LimitsThatCannotBeEncodedAreAFailure) {
    ShareToSave broken = share();
    broken.limits.front().updatedAt =
        instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    const TaskResult result(saveInto(database_, broken, &saved_));
    EXPECT_EQ(result.summary(), "EncodingError");
    EXPECT_EQ(database_.count(Kind::save), 0U);
}

// --- Being stopped ---

TEST_F(RecordSave, StopsBeforeTheFirstCall) {
    isCurrent_ = false;
    EXPECT_EQ(save(), "PublicationStopped");
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(RecordSave, StopsAfterEachCall) {
    // Account, fetch, two saves.
    for (std::size_t last = 1; last <= 4; ++last) {
        test::ScriptedRecordDatabase database;
        database.answers = test::ScriptedRecordDatabase::Answers::whenTold;
        database.saveAnswers = {refusal(23)};
        isCurrent_ = true;
        const TaskResult result(saveInto(database, share(), &saved_));
        while (database.isAsked()) {
            if (database.calls().size() == last) isCurrent_ = false;
            database.answer();
        }
        EXPECT_EQ(result.summary(), "PublicationStopped") << last;
        EXPECT_EQ(database.calls().size(), last);
    }
}

TEST_F(RecordSave, BeingStoppedCountsMoreThanAnError) {
    for (const Kind kind : {Kind::accountStatus, Kind::fetch, Kind::save}) {
        database_.errors[kind] = {cloudError(5)};
        database_.beforeEffect = [&](const auto& call) {
            if (call.kind == kind) isCurrent_ = false;
        };
        isCurrent_ = true;
        EXPECT_EQ(save(), "PublicationStopped");
    }
}

}  // namespace
}  // namespace brimwatch
