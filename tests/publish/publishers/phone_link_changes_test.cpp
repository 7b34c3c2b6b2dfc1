// The life of a link to an Android phone: its start, pause, renewal and end.

#include <gmock/gmock.h>

#include "phone_link_fixture.h"

namespace brimwatch {
namespace {

using namespace publication;
using namespace std::chrono_literals;

using test::cloudError;
using test::keyFilledWith;
using test::LogCapture;
using test::otherMac;
using test::TaskResult;
using test::thisMac;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using Kind = test::ScriptedRecordDatabase::Kind;
using State = PhoneLinkPublisher::State;

class PhoneLinkChanges : public test::PhoneLinkFixture {
  protected:
    std::string showLink() {
        try {
            publisher().showLink();
        } catch (...) {
            return failureSummary(std::current_exception());
        }
        return "";
    }
    void putShareOfOther() {
        const SymmetricKey key = publisher().key().value();
        const std::string name = LimitsCloud::phoneRecordName(key);
        LimitsCloud::Snapshot snapshot = database_.snapshot(name, key).value();
        snapshot.macs[otherMac] = {.sentAt = now(), .limits = {}};
        database_.put(name, LimitsCloud::seal(snapshot, key).bytes);
    }
};

// --- Showing the link ---

TEST_F(PhoneLinkChanges, ShowingTheLinkMakesAKeyAndWaits) {
    start();
    EXPECT_EQ(showLink(), "");
    ASSERT_TRUE(publisher().key());
    EXPECT_EQ(storedKey(), publisher().key());
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_FALSE(publisher().isSending());
}

TEST_F(PhoneLinkChanges, ShowingTheLinkSendsWhatIsKnown) {
    start();
    EXPECT_FALSE(publish(33));
    EXPECT_EQ(showLink(), "");
    settle();
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
    EXPECT_EQ(sentPercentage(), 33);
}

TEST_F(PhoneLinkChanges, ShowingTheLinkUsesTheKeyThatIsThere) {
    start();
    store(key_);
    EXPECT_EQ(showLink(), "");
    EXPECT_EQ(publisher().key(), key_);
}

TEST_F(PhoneLinkChanges, AKeyThatAppearsWhileOneIsMadeCounts) {
    start();
    keys_.answer = [this](const std::string& call) {
        if (call == "add") store(key_);
        return std::optional<KeyStatus>();
    };
    EXPECT_EQ(showLink(), "");
    EXPECT_EQ(publisher().key(), key_);
}

TEST_F(PhoneLinkChanges, ShowingARunningLinkOnlyPublishes) {
    startLinked();
    send(10);
    advance(60s);
    EXPECT_EQ(showLink(), "");
    EXPECT_FALSE(publisher().isSending());
    EXPECT_EQ(publisher().state(), State(Sent{now() - 60s}));
    publish(20);
    settle();
    EXPECT_EQ(publisher().key(), key_);
}

TEST_F(PhoneLinkChanges, ShowingAPausedLinkSendsAtOnce) {
    startLinked();
    send(10);
    EXPECT_EQ(run(publisher().pause()), "");
    publish(20);
    EXPECT_EQ(showLink(), "");
    EXPECT_FALSE(publisher().isPaused());
    EXPECT_EQ(defaults_.stored("phoneLinkPaused"), "");
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    settle();
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
    EXPECT_EQ(sentPercentage(), 20);
}

TEST_F(PhoneLinkChanges, ShowingAPausedLinkWithoutTheRightLeavesItUnavailable) {
    defaults_.put("phoneLinkPaused", "true");
    startLinked(PublishingRight::missing);
    EXPECT_EQ(showLink(), "");
    EXPECT_FALSE(publisher().isPaused());
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
}

TEST_F(PhoneLinkChanges, AFailureOfTheKeyStoreIsThrownByShowingTheLink) {
    start();
    for (const char* call : {"copy", "add"}) {
        failKeys(call);
        EXPECT_EQ(showLink(), "키체인 오류 -25308");
        EXPECT_EQ(publisher().key(), std::nullopt);
        EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::NotLinked{}));
    }
}

TEST_F(PhoneLinkChanges, AKeyThatCannotBeReadIsNotReplaced) {
    startLinked();
    failKeys("copy");
    EXPECT_EQ(showLink(), "키체인 오류 -25308");
    EXPECT_EQ(storedKey(), key_);
}

TEST_F(PhoneLinkChanges, APausedLinkThatCannotBeReadStaysPaused) {
    defaults_.put("phoneLinkPaused", "true");
    startLinked();
    failKeys("copy");
    EXPECT_EQ(showLink(), "키체인 오류 -25308");
    EXPECT_TRUE(publisher().isPaused());
}

// --- Another key ---

TEST_F(PhoneLinkChanges, RotatingPutsAnotherKeyInForceAndSends) {
    startLinked();
    send(10);
    EXPECT_EQ(run(publisher().rotate()), "");
    const SymmetricKey key = publisher().key().value();
    EXPECT_NE(key, key_);
    EXPECT_EQ(storedKey(), key);
    EXPECT_THAT(database_.records, ElementsAre(Key(LimitsCloud::phoneRecordName(key))));
    EXPECT_EQ(sentPercentage(), 10);
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
    EXPECT_FALSE(publisher().isChanging());
}

TEST_F(PhoneLinkChanges, RotatingWithoutAFormerKeyMakesOne) {
    start();
    EXPECT_EQ(run(publisher().rotate()), "");
    EXPECT_EQ(storedKey(), publisher().key());
    EXPECT_EQ(database_.count(Kind::deletion), 0U);
    EXPECT_EQ(publisher().state(), State(Waiting{}));
}

TEST_F(PhoneLinkChanges, RotatingRetiresTheKeyOfTheStore) {
    startLinked();
    store(keyFilledWith('e'));
    database_.put(LimitsCloud::phoneRecordName(keyFilledWith('e')), "x");
    EXPECT_EQ(run(publisher().rotate()), "");
    EXPECT_THAT(database_.records, IsEmpty());
}

TEST_F(PhoneLinkChanges, RotatingAPausedLinkLeavesItPaused) {
    startLinked();
    send(10);
    run(publisher().pause());
    EXPECT_EQ(run(publisher().rotate()), "");
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::Paused{}));
    EXPECT_THAT(database_.records, IsEmpty());
}

TEST_F(PhoneLinkChanges, RotatingWithoutTheRightNeedsNoNetwork) {
    startLinked(PublishingRight::missing);
    EXPECT_EQ(run(publisher().rotate()), "");
    EXPECT_NE(publisher().key(), key_);
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(PhoneLinkChanges, RotatingWithoutANetworkLeavesTheFormerRecordBehind) {
    startLinked();
    send(10);
    const LogCapture log;
    database_.errors[Kind::deletion] = {cloudError(3)};
    EXPECT_EQ(run(publisher().rotate()), "");
    EXPECT_NE(publisher().key(), key_);
    EXPECT_EQ(database_.records.size(), 2U);
    EXPECT_FALSE(publisher().isChanging());
    EXPECT_THAT(
        log.messages(),
        ElementsAre(LogCapture::Message(QtCriticalMsg, "옛 기록을 지우지 못했다: CloudKit 오류 3"),
                    LogCapture::Message(QtInfoMsg, "안드로이드로 보냄: 계정 1개")));
}

TEST_F(PhoneLinkChanges, AKeyThatCannotBeReplacedStaysInForce) {
    startLinked();
    send(10);
    failKeys("update");
    EXPECT_EQ(run(publisher().rotate()), "키체인 오류 -25308");
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_EQ(storedKey(), key_);
    EXPECT_FALSE(publisher().isChanging());
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
    advance(60s);
    EXPECT_EQ(send(20), State(Sent{now()}));
}

TEST_F(PhoneLinkChanges, RotatingWaitsForTheSendWhoseOutcomeCountsForNothing) {
    holdCalls();
    startLinked();
    publish(10);
    time_.advance(0ms);
    const TaskResult rotation(publisher().rotate());
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_TRUE(publisher().isChanging());
    database_.fail(cloudError(5));
    EXPECT_NE(publisher().key(), key_);
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    settle();
    EXPECT_EQ(rotation.summary(), "");
    EXPECT_EQ(sentPercentage(), 10);
}

// --- The end ---

TEST_F(PhoneLinkChanges, DisconnectingDeletesTheRecordAndThenTheKey) {
    startLinked();
    send(10);
    putShareOfOther();
    const LogCapture log;
    keys_.answer = [this](const std::string& call) {
        EXPECT_TRUE(call != "remove" || database_.records.empty());
        return std::optional<KeyStatus>();
    };
    EXPECT_EQ(run(publisher().disconnect()), "");
    EXPECT_THAT(database_.records, IsEmpty());
    EXPECT_EQ(storedKey(), std::nullopt);
    EXPECT_EQ(publisher().key(), std::nullopt);
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::NotLinked{}));
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_FALSE(publisher().isChanging());
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtInfoMsg, "안드로이드 연결을 끊었다")));
}

TEST_F(PhoneLinkChanges, DisconnectingARecordThatIsGoneSucceeds) {
    startLinked();
    EXPECT_EQ(run(publisher().disconnect()), "");
    EXPECT_EQ(database_.count(Kind::deletion), 1U);
    EXPECT_EQ(storedKey(), std::nullopt);
}

TEST_F(PhoneLinkChanges, DisconnectingWithoutANetworkLeavesALinkThatWorks) {
    startLinked();
    send(10);
    database_.errors[Kind::deletion] = {cloudError(3)};
    EXPECT_EQ(run(publisher().disconnect()), "CloudKit 오류 3");
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_EQ(storedKey(), key_);
    EXPECT_FALSE(publisher().isChanging());
    advance(60s);
    EXPECT_EQ(send(20), State(Sent{now()}));
    EXPECT_EQ(run(publisher().disconnect()), "");
}

TEST_F(PhoneLinkChanges, DisconnectingWithoutAnAccountLeavesTheLink) {
    startLinked();
    database_.account = CloudAccountStatus::noAccount;
    EXPECT_EQ(run(publisher().disconnect()), "Failure");
    EXPECT_EQ(publisher().key(), key_);
}

TEST_F(PhoneLinkChanges, AKeyThatCannotBeDeletedKeepsTheLink) {
    startLinked();
    send(10);
    failKeys("remove");
    EXPECT_EQ(run(publisher().disconnect()), "키체인 오류 -25308");
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_FALSE(publisher().isChanging());
    EXPECT_THAT(database_.records, IsEmpty());
    advance(60s);
    EXPECT_EQ(send(20), State(Sent{now()}));
    EXPECT_THAT(macs(), ElementsAre(Key(thisMac)));
}

TEST_F(PhoneLinkChanges, DisconnectingAPausedLinkEndsThePause) {
    startLinked();
    run(publisher().pause());
    EXPECT_EQ(run(publisher().disconnect()), "");
    EXPECT_FALSE(publisher().isPaused());
    EXPECT_EQ(defaults_.stored("phoneLinkPaused"), "");
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::NotLinked{}));
}

TEST_F(PhoneLinkChanges, DisconnectingWithoutTheRightDeletesTheKeyAlone) {
    startLinked(PublishingRight::missing);
    EXPECT_EQ(run(publisher().disconnect()), "");
    EXPECT_EQ(storedKey(), std::nullopt);
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(PhoneLinkChanges, DisconnectingWaitsForTheSend) {
    holdCalls();
    database_.effect = test::ScriptedRecordDatabase::Effect::atTheCall;
    startLinked();
    publish(10);
    time_.advance(0ms);
    database_.answer();
    database_.answer();
    ASSERT_EQ(database_.records.size(), 1U);
    const TaskResult end(publisher().disconnect());
    EXPECT_EQ(database_.openCount(), 1U);
    EXPECT_EQ(database_.count(Kind::deletion), 0U);
    settle();
    EXPECT_EQ(end.summary(), "");
    EXPECT_THAT(database_.records, IsEmpty());
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::NotLinked{}));
}

// --- The pause ---

TEST_F(PhoneLinkChanges, PausingTakesThisMacOutAndKeepsTheKey) {
    startLinked();
    send(10);
    putShareOfOther();
    const LogCapture log;
    EXPECT_EQ(run(publisher().pause()), "");
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
    EXPECT_EQ(storedKey(), key_);
    EXPECT_TRUE(publisher().isPaused());
    EXPECT_EQ(defaults_.stored("phoneLinkPaused"), "true");
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::Paused{}));
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(
                    QtInfoMsg, "모두 해제: 안드로이드 기록에서 이 맥의 몫을 뺐다")));
}

TEST_F(PhoneLinkChanges, PausingWithoutAKeyNeedsNoNetwork) {
    start();
    const LogCapture log;
    EXPECT_EQ(run(publisher().pause()), "");
    EXPECT_TRUE(publisher().isPaused());
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::NotLinked{}));
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_THAT(log.messages(), IsEmpty());
}

TEST_F(PhoneLinkChanges, PausingWithoutTheRightNeedsNoNetwork) {
    startLinked(PublishingRight::missing);
    EXPECT_EQ(run(publisher().pause()), "");
    EXPECT_TRUE(publisher().isPaused());
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(PhoneLinkChanges, AFailedPauseIsThrownAndTheLinkIsPausedAllTheSame) {
    startLinked();
    send(10);
    const LogCapture log;
    database_.errors[Kind::fetch] = {cloudError(4)};
    EXPECT_EQ(run(publisher().pause()), "CloudKit 오류 4");
    EXPECT_TRUE(publisher().isPaused());
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::Paused{}));
    EXPECT_THAT(log.messages(), IsEmpty());
    EXPECT_EQ(run(publisher().pause()), "");
    EXPECT_THAT(macs(), IsEmpty());
}

TEST_F(PhoneLinkChanges, PausingTakesOutTheShareUnderTheKeyOfTheStore) {
    startLinked();
    const SymmetricKey other = keyFilledWith('e');
    store(other);
    const LimitsCloud::Snapshot both{.macs = {{thisMac, {.sentAt = now(), .limits = {}}},
                                              {otherMac, {.sentAt = now(), .limits = {}}}}};
    database_.put(LimitsCloud::phoneRecordName(other), LimitsCloud::seal(both, other).bytes);
    EXPECT_EQ(run(publisher().pause()), "");
    EXPECT_EQ(publisher().key(), other);
    EXPECT_THAT(macs(), ElementsAre(Key(otherMac)));
}

TEST_F(PhoneLinkChanges, PausingWaitsForTheSendAndDropsIt) {
    holdCalls();
    startLinked();
    publish(10);
    time_.advance(0ms);
    const TaskResult pause(publisher().pause());
    EXPECT_TRUE(publisher().isPaused());
    EXPECT_EQ(database_.openCount(), 1U);
    settle();
    EXPECT_EQ(pause.summary(), "");
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::Paused{}));
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    EXPECT_THAT(database_.records, IsEmpty());
}

TEST_F(PhoneLinkChanges, WhatIsPublishedWhilePausedIsKeptAndNothingElse) {
    defaults_.put("phoneLinkPaused", "true");
    startLinked();
    EXPECT_FALSE(publish(44));
    settle();
    EXPECT_THAT(database_.calls(), IsEmpty());
    EXPECT_EQ(showLink(), "");
    settle();
    EXPECT_EQ(sentPercentage(), 44);
}

TEST_F(PhoneLinkChanges, ALinkThatIsResumedWhileItsShareIsTakenOutIsSentAgain) {
    startLinked();
    send(10);
    holdCalls();
    const TaskResult pause(publisher().pause());
    EXPECT_EQ(showLink(), "");
    time_.advance(0ms);
    while (publisher().isSending())
        database_.answer(1);
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
    settle();
    EXPECT_EQ(pause.summary(), "");
    EXPECT_FALSE(publisher().isPaused());
    ASSERT_THAT(macs(), IsEmpty());
    send(10);
    EXPECT_EQ(sentPercentage(), 10);
}

TEST_F(PhoneLinkChanges, ALinkThatIsResumedWhileItsShareIsTakenOutWinsAConflict) {
    startLinked();
    send(10);
    holdCalls();
    const TaskResult pause(publisher().pause());
    EXPECT_EQ(showLink(), "");
    settle();
    EXPECT_EQ(pause.summary(), "");
    EXPECT_EQ(sentPercentage(), 10);
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
}

TEST_F(PhoneLinkChanges, ALinkThatIsResumedWhileAPauseWaitsIsNotShownAsPaused) {
    startLinked();
    send(9);
    advance(60s);
    holdCalls();
    publish(10);
    time_.advance(0ms);
    const TaskResult pause(publisher().pause());
    EXPECT_EQ(showLink(), "");
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    settle();
    EXPECT_EQ(pause.summary(), "");
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_EQ(send(10), State(Sent{now()}));
    EXPECT_EQ(sentPercentage(), 10);
}

QCoro::Task<> showLinkAfter(TaskEnd end, PhoneLinkPublisher* publisher) {
    co_await end.wait();
    publisher->showLink();
}

TEST_F(PhoneLinkChanges, APauseWaitsForASendThatFollowsTheOneItWaitedFor) {
    holdCalls();
    startLinked();
    const std::optional<TaskEnd> end = publisher().publish(limits(10), now());
    time_.advance(0ms);
    const TaskResult resumption(showLinkAfter(*end, &publisher()));
    const TaskResult pause(publisher().pause());
    database_.answer();
    EXPECT_EQ(resumption.summary(), "");
    EXPECT_TRUE(publisher().isSending());
    EXPECT_FALSE(database_.isAsked());
    settle();
    EXPECT_EQ(pause.summary(), "");
    EXPECT_THAT(macs(), IsEmpty());
}

// --- One change at a time ---

TEST_F(PhoneLinkChanges, WhileTheLinkChangesNothingElseChangesIt) {
    startLinked();
    send(10);
    holdCalls();
    for (const bool isRotation : {true, false}) {
        database_.forgetCalls();
        const TaskResult change(isRotation ? publisher().rotate() : publisher().disconnect());
        ASSERT_TRUE(publisher().isChanging());
        const std::optional<SymmetricKey> key = publisher().key();
        EXPECT_EQ(TaskResult(publisher().rotate()).summary(), "");
        EXPECT_EQ(TaskResult(publisher().disconnect()).summary(), "");
        EXPECT_EQ(showLink(), "");
        EXPECT_FALSE(publish(50));
        EXPECT_EQ(publisher().key(), key);
        EXPECT_EQ(database_.calls().size(), 1U);
        settle();
        EXPECT_EQ(change.summary(), "");
        EXPECT_FALSE(publisher().isChanging());
    }
}

TEST_F(PhoneLinkChanges, ItMayBeDestroyedDuringEachChange) {
    for (const int which : {0, 1, 2}) {
        for (int step = 0; step <= 2; ++step) {
            database_.answers = test::ScriptedRecordDatabase::Answers::atOnce;
            defaults_.remove("phoneLinkPaused");
            startLinked();
            send(10);
            holdCalls();
            advance(60s);
            publish(20);
            time_.advance(0ms);
            const TaskResult change(which == 0   ? publisher().rotate()
                                    : which == 1 ? publisher().disconnect()
                                                 : publisher().pause());
            for (int answered = 0; answered < step && database_.isAsked(); ++answered)
                database_.answer();
            publisher_.reset();
            settle();
            EXPECT_EQ(change.summary(), "") << which << ' ' << step;
        }
    }
}

}  // namespace
}  // namespace brimwatch
