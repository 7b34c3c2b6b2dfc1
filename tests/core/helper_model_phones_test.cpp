// What the model has to do with the publishers to phones.

#include <gmock/gmock.h>

#include "accounts_fixture.h"
#include "log_capture.h"
#include "publish/memory_key_store.h"
#include "publish/publish_examples.h"
#include "publish/publishers/scripted_record_database.h"
#include "publish/publishers/task_result.h"
#include "publish/shared_key.h"
#include "publishing_model.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using test::cloudError;
using test::keyFilledWith;
using test::otherMac;
using test::TaskResult;
using test::thisMac;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using Calls = test::ScriptedRecordDatabase::Kind;
using Macs = std::map<MacId, LimitsCloud::Snapshot::Mac>;

constexpr const char* partly = "일부를 해제하지 못했어요. 다시 눌러 주세요.\n";
const std::string sharedItem = "net.quillmoor.brimwatch.sync/limits-key-v1";
const std::string phoneItem = "net.quillmoor.brimwatch.sync/phone-key-v1";

class HelperModelPhones : public test::AccountsFixture {
  protected:
    HelperModelPhones() {
        defaults_.put("macID", "\"" + thisMac.text + "\"");
        keys_.values[sharedItem] = cloudKey_.bytes();
        keys_.values[phoneItem] = phoneKey_.bytes();
    }
    ~HelperModelPhones() override { model_.reset(); }

    HelperModel& startWithPhones() {
        return start(test::withPublishers(surroundings(), database_, keys_, defaults_, time_));
    }
    void startSending() {
        makeRegisteredFolder(".claude-a");
        makeRegisteredFolder(".claude-b");
        writeLimits("claude-a", 10, 20);
        writeLimits("claude-b", 30, 40);
        startWithPhones();
        settleAll();
    }
    void settleAll() {
        settle();
        while (database_.isAsked() || time_.wakeNext()) {
            if (database_.isAsked()) database_.answer();
        }
    }
    void holdCalls() { database_.answers = test::ScriptedRecordDatabase::Answers::whenTold; }
    Macs cloudMacs() const {
        return database_.snapshot(LimitsCloud::recordName(cloudKey_), cloudKey_).value().macs;
    }
    Macs phoneMacs() const {
        return database_.snapshot(LimitsCloud::phoneRecordName(phoneKey_), phoneKey_).value().macs;
    }
    static std::vector<std::string> idsOf(const Macs& macs) {
        std::vector<std::string> ids;
        for (const SubscriptionLimits& limits : macs.at(thisMac).limits)
            ids.push_back(limits.id());
        return ids;
    }
    template <class State>
    bool isCloud() {
        return std::holds_alternative<State>(model().cloud().state());
    }
    template <class State>
    bool isPhone() {
        return std::holds_alternative<State>(model().phone().state());
    }

    const test::LogCapture quiet_;
    const SymmetricKey cloudKey_ = keyFilledWith('c');
    const SymmetricKey phoneKey_ = keyFilledWith('p');
    test::MemoryKeyStore keys_;
    test::ScriptedRecordDatabase database_;
};

TEST_F(HelperModelPhones, WithoutPublishersNothingCanBeSent) {
    start();
    EXPECT_TRUE(isCloud<publication::Unavailable>());
    EXPECT_TRUE(isPhone<publication::Unavailable>());
    EXPECT_TRUE(model().cloud().isEnabled());
    EXPECT_EQ(model().phone().key(), std::nullopt);
}

TEST_F(HelperModelPhones, AbsentPublishersStillKnowTheirSettings) {
    defaults_.put("cloudEnabled", "false");
    defaults_.put("phoneLinkPaused", "true");
    start();
    EXPECT_FALSE(model().cloud().isEnabled());
    EXPECT_TRUE(model().phone().isPaused());
}

TEST_F(HelperModelPhones, AReloadHandsTheFiguresToBothInTheOrderOfTheCards) {
    defaults_.put("menuOrder", R"(["subscription.claude-b","subscription.claude-a"])");
    startSending();
    EXPECT_THAT(idsOf(cloudMacs()), ElementsAre("claude-b", "claude-a"));
    EXPECT_THAT(idsOf(phoneMacs()), ElementsAre("claude-b", "claude-a"));
    EXPECT_EQ(cloudMacs().at(thisMac).limits, model().menuLimits());
    EXPECT_TRUE(isCloud<publication::Sent>());
    EXPECT_TRUE(isPhone<publication::Sent>());
}

TEST_F(HelperModelPhones, AReloadWithoutNewsSendsNothing) {
    startSending();
    database_.forgetCalls();
    advance(120s);
    model().reload();
    settleAll();
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(HelperModelPhones, ANewFigureIsSentByTheNextReload) {
    startSending();
    advance(60s);
    writeLimits("claude-a", 50, 60);
    model().reload();
    settleAll();
    for (const Macs& macs : {cloudMacs(), phoneMacs()})
        EXPECT_EQ(macs.at(thisMac).limits.front().sevenDay->usedPercentage, 60);
}

TEST_F(HelperModelPhones, APublishersTimeIsThatOfThePublication) {
    startSending();
    advance(60s);
    writeLimits("claude-a", 50, 60);
    model().reload();
    settleAll();
    EXPECT_EQ(model().cloud().schedule().lastSent, now());
    EXPECT_EQ(model().phone().schedule().lastSent, now());
}

TEST_F(HelperModelPhones, ARefreshReadsTheKeyOfTheLink) {
    startSending();
    keys_.values[phoneItem] = keyFilledWith('n').bytes();
    model().reload();
    EXPECT_EQ(model().phone().key(), phoneKey_);
    model().refresh();
    EXPECT_EQ(model().phone().key(), keyFilledWith('n'));
}

TEST_F(HelperModelPhones, ARefreshLeavesALinkAloneThatIsChanging) {
    startSending();
    holdCalls();
    const TaskResult end(model().phone().disconnect());
    ASSERT_TRUE(model().phone().isChanging());
    keys_.values[phoneItem] = keyFilledWith('n').bytes();
    model().refresh();
    EXPECT_EQ(model().phone().key(), phoneKey_);
    settleAll();
    EXPECT_EQ(end.summary(), "");
}

// --- The switch of the iPhone channel ---

TEST_F(HelperModelPhones, SwitchingTheCloudOffTakesTheShareBack) {
    startSending();
    EXPECT_EQ(TaskResult(model().setCloudEnabled(false)).summary(), "");
    EXPECT_THAT(cloudMacs(), IsEmpty());
    EXPECT_THAT(phoneMacs(), ElementsAre(Key(thisMac)));
    EXPECT_FALSE(model().cloud().isEnabled());
    EXPECT_EQ(stored("cloudEnabled"), "false");
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelPhones, SwitchingTheCloudOnSendsAtOnce) {
    startSending();
    TaskResult(model().setCloudEnabled(false));
    writeLimits("claude-a", 70, 80);
    EXPECT_EQ(TaskResult(model().setCloudEnabled(true)).summary(), "");
    settleAll();
    EXPECT_THAT(idsOf(cloudMacs()), ElementsAre("claude-a", "claude-b"));
    EXPECT_EQ(shownWeekly("claude-a"), 80);
    EXPECT_EQ(cloudMacs().at(thisMac).limits, model().menuLimits());
}

TEST_F(HelperModelPhones, AShareThatCannotBeTakenBackIsAFailureThatTheUserSees) {
    startSending();
    database_.errors[Calls::fetch] = {cloudError(4)};
    EXPECT_EQ(TaskResult(model().setCloudEnabled(false)).summary(), "");
    EXPECT_EQ(model().failure(), "iPhone으로 보낸 값을 지우지 못했어요: 설명 4");
    EXPECT_FALSE(model().cloud().isEnabled());
    EXPECT_EQ(TaskResult(model().setCloudEnabled(false)).summary(), "");
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_THAT(cloudMacs(), IsEmpty());
}

TEST_F(HelperModelPhones, TheCloudCannotBeSwitchedOnDuringTheRemoval) {
    startSending();
    holdCalls();
    const TaskResult removal(model().removeEverything());
    settle();
    ASSERT_TRUE(model().isRemoving());
    EXPECT_EQ(TaskResult(model().setCloudEnabled(true)).summary(), "");
    EXPECT_FALSE(model().cloud().isEnabled());
    settleAll();
    EXPECT_EQ(removal.summary(), "");
    EXPECT_FALSE(model().cloud().isEnabled());
}

TEST_F(HelperModelPhones, AModelMayGoWhileTheCloudIsSwitchedOff) {
    startSending();
    holdCalls();
    const TaskResult off(model().setCloudEnabled(false));
    model_.reset();
    settleAll();
    EXPECT_EQ(off.summary(), "");
    EXPECT_THAT(cloudMacs(), IsEmpty());
}

// --- The removal of everything ---

TEST_F(HelperModelPhones, TheRemovalTakesBackWhatWasSentToBoth) {
    startSending();
    const TaskResult removal(model().removeEverything());
    settleAll();
    EXPECT_EQ(removal.summary(), "");
    EXPECT_THAT(cloudMacs(), IsEmpty());
    EXPECT_THAT(phoneMacs(), IsEmpty());
    EXPECT_TRUE(isCloud<CloudPublisher::Off>());
    EXPECT_TRUE(isPhone<PhoneLinkPublisher::Paused>());
    EXPECT_TRUE(model().removedEverything());
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_EQ(keys_.values.size(), 2U);
}

TEST_F(HelperModelPhones, NothingIsSentAfterTheRemoval) {
    startSending();
    TaskResult(model().removeEverything());
    settleAll();
    database_.forgetCalls();
    advance(3600s);
    model().refresh();
    settleAll();
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(HelperModelPhones, TheSharesOfOtherMacsOutliveTheRemoval) {
    startSending();
    const std::string name = LimitsCloud::recordName(cloudKey_);
    LimitsCloud::Snapshot both = database_.snapshot(name, cloudKey_).value();
    both.macs[otherMac] = {.sentAt = now(), .limits = {}};
    database_.put(name, LimitsCloud::seal(both, cloudKey_).bytes);
    TaskResult(model().removeEverything());
    settleAll();
    EXPECT_THAT(cloudMacs(), ElementsAre(Key(otherMac)));
}

TEST_F(HelperModelPhones, BothAreTakenBackAtTheSameTime) {
    startSending();
    holdCalls();
    const TaskResult removal(model().removeEverything());
    settle();
    EXPECT_EQ(database_.openCount(), 2U);
    EXPECT_TRUE(model().cloud().isRemoving());
    EXPECT_TRUE(model().phone().isPaused());
    while (model().cloud().isRemoving())
        database_.answer();
    EXPECT_TRUE(model().isRemoving());
    settleAll();
    EXPECT_FALSE(model().isRemoving());
    EXPECT_EQ(removal.summary(), "");
}

TEST_F(HelperModelPhones, EachFailedPartOfTheRemovalIsALine) {
    startSending();
    lockSettings(path(".claude-b"));
    database_.errors[Calls::accountStatus] = {cloudError(3), cloudError(6)};
    TaskResult(model().removeEverything());
    settleAll();
    EXPECT_EQ(model().failure(), std::string(partly) +
                                     "b: " + test::messageOf(std::errc::no_space_on_device) +
                                     "\niPhone으로 보낸 값: 설명 3\n안드로이드로 보낸 값: 설명 6");
    EXPECT_FALSE(model().removedEverything());
    EXPECT_FALSE(isRegistered(path(".claude-a")));
}

TEST_F(HelperModelPhones, AnotherPressTakesBackWhatTheFirstOneCouldNot) {
    startSending();
    database_.account = CloudAccountStatus::noAccount;
    TaskResult(model().removeEverything());
    settleAll();
    EXPECT_EQ(model().failure(),
              std::string(partly) +
                  "iPhone으로 보낸 값: 작업을 완료할 수 없습니다. (LimitsCloud.Failure 오류 0)\n"
                  "안드로이드로 보낸 값: 작업을 완료할 수 없습니다. (LimitsCloud.Failure 오류 0)");
    database_.account = CloudAccountStatus::available;
    TaskResult(model().removeEverything());
    settleAll();
    EXPECT_TRUE(model().removedEverything());
    EXPECT_THAT(cloudMacs(), IsEmpty());
    EXPECT_THAT(phoneMacs(), IsEmpty());
}

TEST_F(HelperModelPhones, AModelMayGoWhileSharesAreTakenBack) {
    startSending();
    holdCalls();
    const TaskResult removal(model().removeEverything());
    settle();
    ASSERT_EQ(database_.openCount(), 2U);
    model_.reset();
    settleAll();
    EXPECT_EQ(removal.summary(), "");
    EXPECT_THAT(cloudMacs(), IsEmpty());
    EXPECT_THAT(phoneMacs(), IsEmpty());
}

TEST_F(HelperModelPhones, ASendThatIsUnderWayDoesNotOutliveTheRemoval) {
    startSending();
    advance(60s);
    writeLimits("claude-a", 50, 60);
    holdCalls();
    database_.effect = test::ScriptedRecordDatabase::Effect::atTheCall;
    model().reload();
    settle();
    ASSERT_TRUE(model().cloud().isSending());
    const TaskResult removal(model().removeEverything());
    settleAll();
    EXPECT_EQ(removal.summary(), "");
    EXPECT_THAT(cloudMacs(), IsEmpty());
    EXPECT_THAT(phoneMacs(), IsEmpty());
}

}  // namespace
}  // namespace brimwatch
