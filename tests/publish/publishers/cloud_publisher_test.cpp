// Sending to iPhones: what is sent when, and what the settings row shows.

#include "publish/publishers/cloud_publisher.h"

#include "publisher_fixture.h"

namespace brimwatch {
namespace {

using namespace publication;
using namespace std::chrono_literals;

using test::accountOf;
using test::cloudError;
using test::LogCapture;
using test::otherMac;
using test::TaskResult;
using test::thisMac;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using Kind = test::ScriptedRecordDatabase::Kind;
using SavedRecord = RecordDatabase::SavedRecord;
using State = CloudPublisher::State;

class CloudPublishing : public test::PublisherFixture {
  protected:
    CloudPublisher& start(PublishingRight right = PublishingRight::granted) {
        publisher_ = makeCloudPublisher(doors(right));
        return *publisher_;
    }
    CloudPublisher& publisher() { return *publisher_; }
    bool publish(double usedPercentage = 10) {
        return publisher().publish(limits(usedPercentage), now()).has_value();
    }
    // From the start to the end of a send.
    State send(double usedPercentage = 10) {
        EXPECT_TRUE(publish(usedPercentage));
        settle();
        return publisher().state();
    }
    SymmetricKey sharedKey() { return SharedKey(keys_).load().value(); }
    std::string recordName() { return LimitsCloud::recordName(sharedKey()); }
    Macs macs() { return database_.snapshot(recordName(), sharedKey()).value().macs; }
    double sentPercentage() { return macs().at(thisMac).limits.front().sevenDay->usedPercentage; }
    void failSaves(const CloudError& error) {
        database_.saveAnswers = {SavedRecord(CloudResult<CloudRecord>(tl::unexpected(error)))};
    }
    static std::string text(const State& state) { return CloudPublisher::displayText(state, "ko"); }

    std::unique_ptr<CloudPublisher> publisher_;
};

// --- At the start ---

TEST_F(CloudPublishing, IsOnAtFirst) {
    EXPECT_TRUE(start().isEnabled());
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_FALSE(publisher().isRemoving());
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_THAT(defaults_.writes, IsEmpty());
}

TEST_F(CloudPublishing, StartsAsItWasLeft) {
    defaults_.put("cloudEnabled", "false");
    EXPECT_FALSE(start().isEnabled());
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    defaults_.put("cloudEnabled", "true");
    EXPECT_TRUE(start().isEnabled());
}

TEST_F(CloudPublishing, ASettingThatIsNoBooleanMeansOn) {
    defaults_.put("cloudEnabled", R"("false")");
    EXPECT_TRUE(start().isEnabled());
}

TEST_F(CloudPublishing, WithoutASettingsStoreItIsOnAndKeepsNothing) {
    CloudPublisher publisher({.right = PublishingRight::granted,
                              .now = [this] { return now(); },
                              .sleep = time_.sleeper(),
                              .remove = []() -> QCoro::Task<> { co_return; }});
    EXPECT_TRUE(publisher.isEnabled());
    EXPECT_TRUE(TaskResult(publisher.switchOff()).succeeded());
    EXPECT_FALSE(publisher.isEnabled());
}

TEST_F(CloudPublishing, WithoutTheRightItIsUnavailableWhateverTheSwitchSays) {
    EXPECT_EQ(start(PublishingRight::missing).state(), State(Unavailable{}));
    EXPECT_TRUE(publisher().isEnabled());
    defaults_.put("cloudEnabled", "false");
    EXPECT_EQ(start(PublishingRight::missing).state(), State(Unavailable{}));
}

TEST_F(CloudPublishing, EachStateHasItsText) {
    EXPECT_EQ(text(Failed{"왜"}), "왜");
    EXPECT_EQ(text(Unavailable{}), "개발용 빌드라 iPhone으로 보내지 않아요.");
    EXPECT_EQ(text(CloudPublisher::Off{}), "iPhone으로 보내지 않아요.");
    EXPECT_EQ(text(Waiting{}), "보낼 한도를 기다리고 있어요.");
    EXPECT_EQ(text(NoAccount{}), "시스템 설정에서 Apple 계정에 로그인해 주세요.");
    const std::string sent = text(Sent{now()});
    EXPECT_TRUE(sent.starts_with("iPhone으로 보냄: 오")) << sent;
    const std::string german = CloudPublisher::displayText(Sent{now()}, "de_DE");
    EXPECT_TRUE(german.starts_with("iPhone으로 보냄: ")) << german;
    EXPECT_NE(german, sent);
}

// --- Sending ---

TEST_F(CloudPublishing, SendsTheLimitsUnderTheIdentityOfThisMac) {
    start();
    EXPECT_EQ(send(12), State(Sent{now()}));
    ASSERT_THAT(macs(), ElementsAre(Key(thisMac)));
    EXPECT_EQ(macs().at(thisMac).limits, limits(12));
    EXPECT_EQ(macs().at(thisMac).sentAt, now());
    EXPECT_EQ(publisher().schedule().lastSent, now());
    EXPECT_EQ(publisher().schedule().sentDigest, PublishSchedule::contentDigest(limits(12)));
}

TEST_F(CloudPublishing, HistoriesGoOutAsTheyStand) {
    start();
    Limits account = {accountOf("work", 0, {80'000, 90, 60, 30})};
    publisher().publish(account, now());
    settle();
    EXPECT_EQ(macs().at(thisMac).limits, account);
}

TEST_F(CloudPublishing, TheKeyIsMadeAtTheFirstSend) {
    start();
    publish();
    EXPECT_THAT(keys_.values, IsEmpty());
    settle();
    EXPECT_EQ(keys_.values.size(), 1U);
    const SymmetricKey key = sharedKey();
    advance(60s);
    send(20);
    EXPECT_EQ(sharedKey(), key);
    EXPECT_EQ(database_.records.size(), 1U);
}

TEST_F(CloudPublishing, TheSendBeginsWithTheNextTurnAndTellsOfItsEnd) {
    start();
    const std::optional<TaskEnd> end = publisher().publish(limits(10), now());
    ASSERT_TRUE(end);
    EXPECT_TRUE(publisher().isSending());
    EXPECT_FALSE(end->isReached());
    EXPECT_THAT(database_.calls(), IsEmpty());
    settle();
    EXPECT_TRUE(end->isReached());
    EXPECT_FALSE(publisher().isSending());
}

TEST_F(CloudPublishing, TheTimeOfASendIsThatOfItsBeginning) {
    holdCalls();
    start();
    publisher().publish(limits(10), now() - 7s);
    time_.advance(0ms);
    const Instant begin = now();
    advance(5s);
    settle();
    EXPECT_EQ(publisher().state(), State(Sent{begin}));
    EXPECT_EQ(macs().at(thisMac).sentAt, begin);
}

TEST_F(CloudPublishing, WhatDidNotChangeIsNotSentAgain) {
    start();
    send(10);
    advance(3600s);
    EXPECT_FALSE(publish(10));
    EXPECT_TRUE(publish(11));
}

TEST_F(CloudPublishing, SendsAtMostOnceAMinute) {
    start();
    send(10);
    advance(59s);
    EXPECT_FALSE(publish(11));
    advance(1s);
    EXPECT_TRUE(publish(11));
}

TEST_F(CloudPublishing, TheKnownRecordSavesTheFetch) {
    start();
    send(10);
    database_.forgetCalls();
    advance(60s);
    send(20);
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
    EXPECT_EQ(database_.count(Kind::save), 1U);
    EXPECT_EQ(sentPercentage(), 20);
}

TEST_F(CloudPublishing, AKnownRecordOfAnotherKeyIsNotUsed) {
    start();
    send(10);
    const std::string former = recordName();
    keys_.values.begin()->second = key_.bytes();
    database_.forgetCalls();
    advance(60s);
    send(20);
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
    EXPECT_NE(recordName(), former);
    EXPECT_EQ(sentPercentage(), 20);
}

TEST_F(CloudPublishing, ASecondPublishDuringASendStartsNothing) {
    start();
    publish(10);
    EXPECT_FALSE(publish(20));
    settle();
    EXPECT_EQ(database_.count(Kind::save), 1U);
    EXPECT_EQ(sentPercentage(), 10);
    advance(60s);
    EXPECT_TRUE(publish(20));
}

TEST_F(CloudPublishing, AnEmptyListIsSentToo) {
    start();
    EXPECT_TRUE(publisher().publish({}, now()));
    settle();
    EXPECT_THAT(macs().at(thisMac).limits, IsEmpty());
}

TEST_F(CloudPublishing, NothingIsSentWhileItIsOff) {
    defaults_.put("cloudEnabled", "false");
    start();
    EXPECT_FALSE(publish());
    settle();
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_THAT(keys_.calls, IsEmpty());
}

TEST_F(CloudPublishing, NothingIsSentWithoutTheRight) {
    start(PublishingRight::missing);
    EXPECT_FALSE(publish());
    settle();
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_THAT(keys_.calls, IsEmpty());
}

TEST_F(CloudPublishing, ASuccessIsLoggedWithTheNumberOfAccounts) {
    const LogCapture log;
    start();
    publisher().publish({accountOf("a", 0), accountOf("b", 0)}, now());
    settle();
    EXPECT_THAT(log.messages(), ElementsAre(LogCapture::Message(QtInfoMsg, "보냄: 계정 2개")));
}

TEST_F(CloudPublishing, TellsOfEachChangeOnce) {
    start();
    std::vector<std::string> texts;
    QObject::connect(&publisher(), &CloudPublisher::stateChanged, &publisher(),
                     [&] { texts.push_back(text(publisher().state())); });
    database_.account = CloudAccountStatus::noAccount;
    send(10);
    advance(300s);
    send(11);
    EXPECT_THAT(texts, ElementsAre(text(NoAccount{})));
}

// --- Failures ---

TEST_F(CloudPublishing, WithoutAnAccountItWaitsForFiveMinutes) {
    const LogCapture log;
    start();
    database_.account = CloudAccountStatus::noAccount;
    EXPECT_EQ(send(10), State(NoAccount{}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 300s);
    EXPECT_EQ(publisher().schedule().sentDigest, std::nullopt);
    EXPECT_EQ(publisher().schedule().lastSent, std::nullopt);
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg, "iCloud 로그인 안 됨")));
    advance(299s);
    EXPECT_FALSE(publish(11));
    advance(1s);
    database_.account = CloudAccountStatus::available;
    EXPECT_EQ(send(10), State(Sent{now()}));
    EXPECT_EQ(publisher().schedule().retryAt, std::nullopt);
}

TEST_F(CloudPublishing, AnErrorOfTheCloudWaitsForAMinuteAtLeast) {
    const LogCapture log;
    start();
    CloudError error = cloudError(6);
    error.retryAfterSeconds = 7;
    failSaves(error);
    send(10);
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg, "CloudKit 오류 6: 설명 6")));
    advance(60s);
    error.retryAfterSeconds = 600;
    failSaves(error);
    send(10);
    EXPECT_EQ(publisher().schedule().retryAt, now() + 600s);
    advance(600s);
    failSaves(cloudError(6));
    send(10);
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
}

TEST_F(CloudPublishing, EachErrorOfTheCloudHasItsText) {
    const std::map<int, std::string> texts = {
        {5, "보내기 설정에 문제가 있어요 (오류 5)."},
        {8, "보내기 설정에 문제가 있어요 (오류 8)."},
        {10, "보내기 설정에 문제가 있어요 (오류 10)."},
        {6, "지금은 보낼 수 없어요. 잠시 뒤 다시 보내요."},
        {7, "지금은 보낼 수 없어요. 잠시 뒤 다시 보내요."},
        {23, "지금은 보낼 수 없어요. 잠시 뒤 다시 보내요."},
        {3, "인터넷에 연결되지 않았어요. 연결되면 다시 보내요."},
        {4, "인터넷에 연결되지 않았어요. 연결되면 다시 보내요."},
        {1, "설명 1"},
        {11, "설명 11"},
        {12, "설명 12"},
        {15, "설명 15"},
        {25, "설명 25"}};
    for (const auto& [code, expected] : texts) {
        start();
        database_.errors[Kind::save] = {cloudError(code)};
        EXPECT_EQ(send(10), State(Failed{expected})) << code;
    }
}

TEST_F(CloudPublishing, AnErrorOfAuthenticationCountsAsNoAccount) {
    const LogCapture log;
    start();
    database_.errors[Kind::accountStatus] = {cloudError(9)};
    EXPECT_EQ(send(10), State(NoAccount{}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg, "CloudKit 오류 9: 설명 9")));
}

TEST_F(CloudPublishing, AfterAnErrorOfTheCloudTheRecordIsFetchedAnew) {
    start();
    send(10);
    advance(60s);
    failSaves(cloudError(7));
    send(20);
    database_.forgetCalls();
    advance(60s);
    send(20);
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
}

TEST_F(CloudPublishing, WithoutAnAccountTheKnownRecordIsKept) {
    start();
    send(10);
    advance(60s);
    database_.account = CloudAccountStatus::noAccount;
    send(20);
    database_.account = CloudAccountStatus::available;
    database_.forgetCalls();
    advance(300s);
    send(20);
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
}

TEST_F(CloudPublishing, AConflictAtEachAttemptEndsInItsError) {
    start();
    send(10);
    const std::string name = recordName();
    database_.beforeEffect = [&](const auto& call) {
        if (call.kind == Kind::save) database_.put(database_.records.at(name));
    };
    database_.forgetCalls();
    advance(60s);
    EXPECT_EQ(send(20), State(Failed{"설명 14"}));
    EXPECT_EQ(database_.count(Kind::save), 4U);
}

TEST_F(CloudPublishing, AKeyThatCannotBeStoredWaitsForTenMinutes) {
    const LogCapture log;
    start();
    keys_.answer = [](const std::string& call) {
        return call == "add" ? std::optional<KeyStatus>(-34018) : std::nullopt;
    };
    EXPECT_EQ(send(10), State(Failed{"연결 키를 저장하지 못했어요 (오류 -34018). 시스템 설정에서 "
                                     "암호 동기화가 켜져 있는지 확인해 주세요."}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 600s);
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg, "키체인 오류 -34018")));
    EXPECT_THAT(database_.calls(), IsEmpty());
    keys_.answer = {};
    advance(600s);
    EXPECT_EQ(send(10), State(Sent{now()}));
}

TEST_F(CloudPublishing, AnyOtherErrorIsShownAndWaitsForAMinute) {
    const LogCapture log;
    start();
    Limits broken = limits(10);
    broken.front().updatedAt = instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(publisher().publish(broken, now()));
    settle();
    const std::string description = LimitsCloud::EncodingError().what();
    EXPECT_EQ(publisher().state(), State(Failed{description}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg, "못 보냄: " + description)));
}

TEST_F(CloudPublishing, WhatIsThrownWithoutADescriptionIsAFailureLikeOthers) {
    auto publisher = CloudPublisher({.right = PublishingRight::granted,
                                     .now = [this] { return now(); },
                                     .sleep = time_.sleeper(),
                                     .loadKey = []() -> SymmetricKey { throw 7; }});
    EXPECT_TRUE(publisher.publish(limits(10), now()));
    settle();
    EXPECT_EQ(publisher.state(), State(Failed{"작업을 완료할 수 없습니다."}));
}

TEST_F(CloudPublishing, FailureAfterSuccessKeepsWhatWasSent) {
    start();
    send(10);
    const PublishSchedule sent = publisher().schedule();
    advance(60s);
    failSaves(cloudError(3));
    send(20);
    EXPECT_EQ(publisher().schedule().sentDigest, sent.sentDigest);
    EXPECT_EQ(publisher().schedule().lastSent, sent.lastSent);
}

TEST_F(CloudPublishing, TheRetryTimeCountsFromTheBeginningOfTheSend) {
    holdCalls();
    start();
    publish(10);
    time_.advance(0ms);
    const Instant begin = now();
    advance(19s);
    database_.fail(cloudError(4));
    EXPECT_EQ(publisher().schedule().retryAt, begin + 60s);
}

// --- Switching off and on ---

TEST_F(CloudPublishing, SwitchingOffTakesThisMacOutOfTheRecord) {
    start();
    send(10);
    LimitsCloud::Snapshot both = database_.snapshot(recordName(), sharedKey()).value();
    both.macs[otherMac] = {.sentAt = now(), .limits = {}};
    database_.put(recordName(), LimitsCloud::seal(both, sharedKey()).bytes);
    const LogCapture log;
    EXPECT_EQ(TaskResult(publisher().switchOff()).summary(), "");
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    EXPECT_FALSE(publisher().isEnabled());
    EXPECT_FALSE(publisher().isRemoving());
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_EQ(defaults_.stored("cloudEnabled"), "false");
    EXPECT_THAT(log.messages(), ElementsAre(LogCapture::Message(QtInfoMsg, "보낸 값을 지웠다")));
    EXPECT_EQ(keys_.values.size(), 1U);
}

TEST_F(CloudPublishing, SwitchingOffWithoutAKeyNeedsNoNetwork) {
    start();
    const LogCapture log;
    EXPECT_EQ(TaskResult(publisher().switchOff()).summary(), "");
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_THAT(keys_.values, IsEmpty());
    EXPECT_THAT(log.messages(), ElementsAre(LogCapture::Message(QtInfoMsg, "보낸 값을 지웠다")));
}

TEST_F(CloudPublishing, SwitchingOffWithoutTheRightTouchesNothing) {
    keys_.values["net.quillmoor.brimwatch.sync/limits-key-v1"] = key_.bytes();
    start(PublishingRight::missing);
    const LogCapture log;
    EXPECT_EQ(TaskResult(publisher().switchOff()).summary(), "");
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
    EXPECT_FALSE(publisher().isEnabled());
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(CloudPublishing, AFailedRemovalIsThrownAndTheChannelIsOffAllTheSame) {
    start();
    send(10);
    database_.errors[Kind::fetch] = {cloudError(3)};
    EXPECT_EQ(TaskResult(publisher().switchOff()).summary(), "CloudKit 오류 3");
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    EXPECT_FALSE(publisher().isRemoving());
    EXPECT_EQ(defaults_.stored("cloudEnabled"), "false");
    EXPECT_EQ(TaskResult(publisher().switchOff()).summary(), "");
    EXPECT_THAT(macs(), IsEmpty());
}

TEST_F(CloudPublishing, TheSecondSwitchOffEndsAsTheFirst) {
    start();
    send(10);
    holdCalls();
    const TaskResult first(publisher().switchOff());
    const TaskResult second(publisher().switchOff());
    EXPECT_EQ(database_.openCount(), 1U);
    EXPECT_TRUE(publisher().isRemoving());
    EXPECT_EQ(second.summary(), "running");
    database_.fail(cloudError(4));
    EXPECT_EQ(first.summary(), "CloudKit 오류 4");
    EXPECT_EQ(second.summary(), "CloudKit 오류 4");
    EXPECT_FALSE(publisher().isRemoving());
}

TEST_F(CloudPublishing, SwitchingOffDuringASendWaitsForItAndDropsIt) {
    holdCalls();
    start();
    publish(10);
    time_.advance(0ms);
    const TaskResult off(publisher().switchOff());
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    EXPECT_EQ(database_.openCount(), 1U);
    database_.answer();
    EXPECT_FALSE(publisher().isSending());
    EXPECT_TRUE(publisher().isRemoving());
    settle();
    EXPECT_EQ(off.summary(), "");
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_THAT(database_.records, IsEmpty());
}

TEST_F(CloudPublishing, AFailureOfADroppedSendShowsNothing) {
    holdCalls();
    start();
    publish(10);
    time_.advance(0ms);
    const TaskResult off(publisher().switchOff());
    const LogCapture log;
    database_.fail(cloudError(5));
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_THAT(log.messages(), IsEmpty());
    settle();
    EXPECT_EQ(off.summary(), "");
}

TEST_F(CloudPublishing, WhatADroppedSendWroteIsTakenBack) {
    holdCalls();
    database_.effect = test::ScriptedRecordDatabase::Effect::atTheCall;
    start();
    publish(10);
    time_.advance(0ms);
    database_.answer();
    database_.answer();
    ASSERT_THAT(macs(), ElementsAre(Key(thisMac)));
    const TaskResult off(publisher().switchOff());
    settle();
    EXPECT_EQ(off.summary(), "");
    EXPECT_THAT(macs(), IsEmpty());
}

TEST_F(CloudPublishing, SwitchingOffBeforeTheSendBeganSendsNothing) {
    start();
    publish(10);
    const TaskResult off(publisher().switchOff());
    settle();
    EXPECT_EQ(off.summary(), "");
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_THAT(keys_.values, IsEmpty());
}

TEST_F(CloudPublishing, SwitchingOnSendsAtOnce) {
    start();
    send(10);
    TaskResult(publisher().switchOff());
    publisher().switchOn();
    EXPECT_TRUE(publisher().isEnabled());
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_EQ(defaults_.stored("cloudEnabled"), "true");
    EXPECT_EQ(send(10), State(Sent{now()}));
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
}

TEST_F(CloudPublishing, SwitchingOnAnewForgetsTheSchedule) {
    start();
    send(10);
    publisher().switchOn();
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_TRUE(publish(10));
}

TEST_F(CloudPublishing, SwitchingOnDuringARemovalDoesNothing) {
    start();
    send(10);
    holdCalls();
    const TaskResult off(publisher().switchOff());
    publisher().switchOn();
    EXPECT_FALSE(publisher().isEnabled());
    EXPECT_EQ(defaults_.stored("cloudEnabled"), "false");
    EXPECT_EQ(publisher().state(), State(CloudPublisher::Off{}));
    settle();
    EXPECT_EQ(off.summary(), "");
}

TEST_F(CloudPublishing, SwitchingOnWithoutTheRightChangesTheSwitchAlone) {
    defaults_.put("cloudEnabled", "false");
    start(PublishingRight::missing);
    publisher().switchOn();
    EXPECT_TRUE(publisher().isEnabled());
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
}

TEST_F(CloudPublishing, ARetryAfterAFailureIsForgottenBySwitchingOffAndOn) {
    start();
    database_.account = CloudAccountStatus::noAccount;
    send(10);
    database_.account = CloudAccountStatus::available;
    TaskResult(publisher().switchOff());
    publisher().switchOn();
    EXPECT_EQ(send(10), State(Sent{now()}));
}

TEST_F(CloudPublishing, TellsOfSwitchesAndRemovals) {
    start();
    std::vector<std::string> told;
    QObject::connect(&publisher(), &CloudPublisher::isEnabledChanged, &publisher(),
                     [&] { told.emplace_back(publisher().isEnabled() ? "on" : "off"); });
    QObject::connect(&publisher(), &CloudPublisher::isRemovingChanged, &publisher(),
                     [&] { told.emplace_back(publisher().isRemoving() ? "removing" : "removed"); });
    TaskResult(publisher().switchOff());
    TaskResult(publisher().switchOff());
    publisher().switchOn();
    publisher().switchOn();
    EXPECT_THAT(told, ElementsAre("removing", "off", "removed", "removing", "removed", "on"));
}

TEST_F(CloudPublishing, AnObserverMaySwitchOffAgainWithinARemoval) {
    start();
    send(10);
    std::vector<TaskResult> joined;
    QObject::connect(&publisher(), &CloudPublisher::stateChanged, &publisher(),
                     [&] { joined.emplace_back(publisher().switchOff()); });
    database_.forgetCalls();
    EXPECT_EQ(TaskResult(publisher().switchOff()).summary(), "");
    ASSERT_EQ(joined.size(), 1U);
    EXPECT_EQ(joined.front().summary(), "");
    EXPECT_EQ(database_.count(Kind::save), 1U);
}

TEST_F(CloudPublishing, AfterARemovalTheRecordIsFetchedAnew) {
    start();
    send(10);
    TaskResult(publisher().switchOff());
    publisher().switchOn();
    database_.forgetCalls();
    send(10);
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
    EXPECT_EQ(database_.count(Kind::save), 1U);
}

// --- A save that goes on although it is no longer wanted ---

QCoro::Task<CloudRecord> saveAfter(TaskEnd end) {
    co_await end.wait();
    co_return CloudRecord{.recordType = "LimitSnapshot", .recordName = "ls-"};
}

TEST_F(CloudPublishing, TheOutcomeOfASaveThatIsNoLongerWantedCountsForNothing) {
    const std::exception_ptr failure = std::make_exception_ptr(CloudFailure(cloudError(5)));
    for (const std::exception_ptr& outcome : {std::exception_ptr(), failure}) {
        const TaskEnd saved;
        CloudPublisher publisher({.right = PublishingRight::granted,
                                  .now = [this] { return now(); },
                                  .sleep = time_.sleeper(),
                                  .loadKey = [this] { return key_; },
                                  .save = [saved](const ShareToSave&) { return saveAfter(saved); },
                                  .remove = []() -> QCoro::Task<> { co_return; }});
        publisher.publish(limits(10), now());
        time_.advance(0ms);
        const TaskResult off(publisher.switchOff());
        saved.reach(outcome);
        EXPECT_EQ(off.summary(), "");
        EXPECT_EQ(publisher.state(), State(CloudPublisher::Off{}));
        EXPECT_EQ(publisher.schedule(), PublishSchedule());
        EXPECT_FALSE(publisher.isSending());
    }
}

TEST_F(CloudPublishing, ASendThatIsSwitchedOffWhileItLooksForTheKeySavesNothing) {
    std::function<SymmetricKey()> loadKey;
    bool isSaved = false;
    CloudPublisher publisher({.right = PublishingRight::granted,
                              .now = [this] { return now(); },
                              .sleep = time_.sleeper(),
                              .loadKey = [&loadKey] { return loadKey(); },
                              .save =
                                  [&isSaved](const ShareToSave&) {
                                      isSaved = true;
                                      return saveAfter(TaskEnd());
                                  },
                              .remove = []() -> QCoro::Task<> { co_return; }});
    std::optional<TaskResult> off;
    loadKey = [&] {
        off.emplace(publisher.switchOff());
        return key_;
    };
    publisher.publish(limits(10), now());
    settle();
    EXPECT_EQ(off->summary(), "");
    EXPECT_FALSE(isSaved);
    EXPECT_EQ(publisher.state(), State(CloudPublisher::Off{}));
}

TEST_F(CloudPublishing, IsCurrentIsAskedOfThePublisherAndNotOfItsPast) {
    std::function<bool()> isCurrent;
    const TaskEnd saved;
    auto publisher = std::make_unique<CloudPublisher>(
        CloudPublisher::Surroundings{.right = PublishingRight::granted,
                                     .now = [this] { return now(); },
                                     .sleep = time_.sleeper(),
                                     .loadKey = [this] { return key_; },
                                     .save =
                                         [&isCurrent, saved](const ShareToSave& share) {
                                             isCurrent = share.isCurrent;
                                             return saveAfter(saved);
                                         }});
    publisher->publish(limits(10), now());
    time_.advance(0ms);
    EXPECT_TRUE(isCurrent());
    publisher.reset();
    EXPECT_FALSE(isCurrent());
    saved.reach();
}

// --- Ends ---

TEST_F(CloudPublishing, ItMayBeDestroyedAtEachStepOfASend) {
    for (int step = 0; step <= 3; ++step) {
        test::ScriptedRecordDatabase database;
        database.answers = test::ScriptedRecordDatabase::Answers::whenTold;
        PublisherDoors around = {.records = database,
                                 .keys = keys_,
                                 .defaults = defaults_,
                                 .right = PublishingRight::granted,
                                 .now = [this] { return now(); },
                                 .sleep = time_.sleeper()};
        std::unique_ptr<CloudPublisher> publisher = makeCloudPublisher(around);
        const std::optional<TaskEnd> end = publisher->publish(limits(10), now());
        if (step > 0) time_.advance(0ms);
        for (int answered = 1; answered < step; ++answered)
            database.answer();
        publisher.reset();
        time_.advance(0ms);
        const std::size_t calls = database.calls().size();
        while (database.isAsked())
            database.answer();
        EXPECT_TRUE(end->isReached()) << step;
        EXPECT_EQ(database.calls().size(), calls) << step;
        EXPECT_EQ(calls, static_cast<std::size_t>(step));
    }
}

TEST_F(CloudPublishing, ARemovalThatHasBegunOutlivesThePublisher) {
    start();
    send(10);
    holdCalls();
    const TaskResult off(publisher().switchOff());
    publisher_.reset();
    settle();
    EXPECT_EQ(off.summary(), "");
    EXPECT_THAT(macs(), IsEmpty());
}

TEST_F(CloudPublishing, LogsUnderItsCategory) {
    const LogCapture log;
    start();
    send(10);
    advance(60s);
    failSaves(cloudError(5));
    send(20);
    EXPECT_THAT(log.categories(), ElementsAre("net.quillmoor.brimwatch.mac.cloud",
                                              "net.quillmoor.brimwatch.mac.cloud"));
}

TEST_F(CloudPublishing, TheEndOfTheProgramEndsASendThatHasNotBegun) {
    start();
    const std::optional<TaskEnd> end = publisher().publish(limits(10), now());
    time_.cancelSleeps();
    EXPECT_TRUE(end->isReached());
    EXPECT_THAT(database_.calls(), IsEmpty());
}

}  // namespace
}  // namespace brimwatch
