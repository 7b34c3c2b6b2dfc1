// Sending to an Android phone: what is sent when, and what the settings row shows.

#include "publish/publishers/phone_link_publisher.h"

#include "phone_link_fixture.h"

namespace brimwatch {
namespace {

using namespace publication;
using namespace std::chrono_literals;

using test::accountOf;
using test::cloudError;
using test::LogCapture;
using test::thisMac;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Key;
using Kind = test::ScriptedRecordDatabase::Kind;
using SavedRecord = RecordDatabase::SavedRecord;
using State = PhoneLinkPublisher::State;

class PhoneLinkPublishing : public test::PhoneLinkFixture {
  protected:
    void failSaves(const CloudError& error) {
        database_.saveAnswers = {SavedRecord(CloudResult<CloudRecord>(tl::unexpected(error)))};
    }
};

// --- At the start ---

TEST_F(PhoneLinkPublishing, WithoutAKeyItIsNotLinked) {
    EXPECT_EQ(start().state(), State(PhoneLinkPublisher::NotLinked{}));
    EXPECT_EQ(publisher().key(), std::nullopt);
    EXPECT_FALSE(publisher().isPaused());
    EXPECT_FALSE(publisher().isChanging());
    EXPECT_THAT(defaults_.writes, IsEmpty());
    EXPECT_EQ(keys_.calls.size(), 1U);
}

TEST_F(PhoneLinkPublishing, WithAKeyItWaits) {
    EXPECT_EQ(startLinked().state(), State(Waiting{}));
    EXPECT_EQ(publisher().key(), key_);
}

TEST_F(PhoneLinkPublishing, StartsPausedIfItWasPaused) {
    defaults_.put("phoneLinkPaused", "true");
    EXPECT_EQ(startLinked().state(), State(PhoneLinkPublisher::Paused{}));
    EXPECT_TRUE(publisher().isPaused());
}

TEST_F(PhoneLinkPublishing, PausedWithoutAKeyItIsNotLinked) {
    defaults_.put("phoneLinkPaused", "true");
    EXPECT_EQ(start().state(), State(PhoneLinkPublisher::NotLinked{}));
}

TEST_F(PhoneLinkPublishing, WithoutTheRightItIsUnavailableKeyOrNoKey) {
    EXPECT_EQ(start(PublishingRight::missing).state(), State(Unavailable{}));
    EXPECT_EQ(startLinked(PublishingRight::missing).state(), State(Unavailable{}));
    EXPECT_EQ(publisher().key(), key_);
}

TEST_F(PhoneLinkPublishing, AKeyStoreThatFailsCountsAsNoKey) {
    failKeys("copy");
    EXPECT_EQ(startLinked().state(), State(PhoneLinkPublisher::NotLinked{}));
}

TEST_F(PhoneLinkPublishing, WithoutASettingsStoreItIsNotPausedAndKeepsNothing) {
    PhoneLinkPublisher publisher({.store = std::make_unique<MemoryPhoneKeyStore>(),
                                  .now = [this] { return now(); },
                                  .sleep = time_.sleeper()});
    EXPECT_FALSE(publisher.isPaused());
    EXPECT_EQ(test::TaskResult(publisher.pause()).summary(), "");
    EXPECT_TRUE(publisher.isPaused());
}

TEST_F(PhoneLinkPublishing, EachStateHasItsText) {
    EXPECT_EQ(text(Failed{"왜"}), "왜");
    EXPECT_EQ(text(Unavailable{}), "개발용 빌드라 안드로이드로 보내지 않아요.");
    EXPECT_EQ(text(PhoneLinkPublisher::NotLinked{}), "연결하지 않았어요.");
    EXPECT_EQ(text(Waiting{}), "보낼 한도를 기다리고 있어요.");
    EXPECT_EQ(text(PhoneLinkPublisher::Paused{}),
              "모두 해제로 멈췄어요. QR 보기를 누르면 다시 보내요.");
    EXPECT_EQ(text(NoAccount{}), "시스템 설정에서 Apple 계정에 로그인해 주세요.");
    const std::string sent = text(Sent{now()});
    EXPECT_TRUE(sent.starts_with("안드로이드로 보냄: 오")) << sent;
}

// --- Sending ---

TEST_F(PhoneLinkPublishing, SendsTheLimitsUnderTheKeyOfTheLink) {
    startLinked();
    EXPECT_EQ(send(12), State(Sent{now()}));
    EXPECT_THAT(database_.records, ElementsAre(Key(LimitsCloud::phoneRecordName(key_))));
    EXPECT_EQ(database_.records.begin()->second.recordType, "PhoneLimitSnapshot");
    ASSERT_THAT(macs(), ElementsAre(Key(thisMac)));
    EXPECT_EQ(macs().at(thisMac).limits, limits(12));
    EXPECT_EQ(publisher().schedule().lastSent, now());
    EXPECT_EQ(publisher().schedule().sentDigest, PublishSchedule::contentDigest(limits(12)));
    EXPECT_EQ(publisher().schedule().retryAt, std::nullopt);
}

TEST_F(PhoneLinkPublishing, HistoriesAreThinnedBeforeAnythingElse) {
    startLinked();
    const Limits account = {accountOf("work", 0, {80'000, 650, 610, 0})};
    publisher().publish(account, now());
    settle();
    const Limits thin = {accountOf("work", 0, {610, 0})};
    EXPECT_EQ(macs().at(thisMac).limits, thin);
    advance(60s);
    EXPECT_FALSE(publisher().publish(thin, now()));
}

TEST_F(PhoneLinkPublishing, TheTimeOfASendIsThatOfThePublication) {
    startLinked();
    const Instant told = now() - 7s;
    publisher().publish(limits(10), told);
    settle();
    EXPECT_EQ(publisher().state(), State(Sent{told}));
    EXPECT_EQ(macs().at(thisMac).sentAt, told);
    EXPECT_EQ(publisher().schedule().lastSent, told);
}

TEST_F(PhoneLinkPublishing, TheSendBeginsWithTheNextTurnAndTellsOfItsEnd) {
    startLinked();
    const std::optional<TaskEnd> end = publisher().publish(limits(10), now());
    ASSERT_TRUE(end);
    EXPECT_TRUE(publisher().isSending());
    EXPECT_THAT(database_.calls(), IsEmpty());
    settle();
    EXPECT_TRUE(end->isReached());
    EXPECT_FALSE(publisher().isSending());
}

TEST_F(PhoneLinkPublishing, SendsWhatChangedAtMostOnceAMinute) {
    startLinked();
    send(10);
    advance(59s);
    EXPECT_FALSE(publish(11));
    advance(1s);
    EXPECT_FALSE(publish(10));
    EXPECT_TRUE(publish(11));
}

TEST_F(PhoneLinkPublishing, TheKnownRecordSavesTheFetch) {
    startLinked();
    send(10);
    database_.forgetCalls();
    advance(60s);
    send(20);
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
    EXPECT_EQ(sentPercentage(), 20);
}

TEST_F(PhoneLinkPublishing, ASecondPublishDuringASendStartsNothing) {
    startLinked();
    publish(10);
    EXPECT_FALSE(publish(20));
    settle();
    EXPECT_EQ(database_.count(Kind::save), 1U);
    EXPECT_EQ(sentPercentage(), 10);
}

TEST_F(PhoneLinkPublishing, NothingIsSentWithoutARightOrAKeyOrWhilePaused) {
    startLinked(PublishingRight::missing);
    EXPECT_FALSE(publish());
    defaults_.put("phoneLinkPaused", "true");
    startLinked();
    EXPECT_FALSE(publish());
    defaults_.put("phoneLinkPaused", "false");
    keys_.values.clear();
    start();
    EXPECT_FALSE(publish());
    settle();
    EXPECT_THAT(database_.calls(), IsEmpty());
}

TEST_F(PhoneLinkPublishing, ASuccessIsLoggedWithTheNumberOfAccounts) {
    startLinked();
    const LogCapture log;
    publisher().publish({accountOf("a", 0), accountOf("b", 0), accountOf("c", 0)}, now());
    settle();
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtInfoMsg, "안드로이드로 보냄: 계정 3개")));
}

// --- Failures ---

TEST_F(PhoneLinkPublishing, WithoutAnAccountItWaitsForFiveMinutes) {
    startLinked();
    const LogCapture log;
    database_.account = CloudAccountStatus::noAccount;
    EXPECT_EQ(send(10), State(NoAccount{}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 300s);
    EXPECT_EQ(publisher().schedule().sentDigest, std::nullopt);
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg, "안드로이드로 못 보냄: Failure")));
    database_.account = CloudAccountStatus::available;
    advance(300s);
    EXPECT_EQ(send(10), State(Sent{now()}));
}

TEST_F(PhoneLinkPublishing, AnErrorOfTheCloudWaitsForAMinuteAtLeast) {
    startLinked();
    const LogCapture log;
    CloudError error = cloudError(7);
    error.retryAfterSeconds = 7;
    failSaves(error);
    send(10);
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
    EXPECT_THAT(log.messages(), ElementsAre(LogCapture::Message(
                                    QtCriticalMsg, "안드로이드로 못 보냄: CloudKit 오류 7")));
    advance(60s);
    error.retryAfterSeconds = 600;
    failSaves(error);
    send(10);
    EXPECT_EQ(publisher().schedule().retryAt, now() + 600s);
}

TEST_F(PhoneLinkPublishing, EachErrorOfTheCloudHasItsText) {
    const std::string now = "지금은 보낼 수 없어요. 잠시 뒤 다시 보내요.";
    const std::string offline = "인터넷에 연결되지 않았어요. 연결되면 다시 보내요.";
    const std::map<int, std::string> texts = {{6, now},
                                              {7, now},
                                              {23, now},
                                              {3, offline},
                                              {4, offline},
                                              {1, "안드로이드로 보내지 못했어요 (오류 1)."},
                                              {5, "안드로이드로 보내지 못했어요 (오류 5)."},
                                              {8, "안드로이드로 보내지 못했어요 (오류 8)."},
                                              {10, "안드로이드로 보내지 못했어요 (오류 10)."},
                                              {14, "안드로이드로 보내지 못했어요 (오류 14)."}};
    for (const auto& [code, expected] : texts) {
        startLinked();
        database_.errors[Kind::save] = {cloudError(code)};
        EXPECT_EQ(send(10), State(Failed{expected})) << code;
    }
}

TEST_F(PhoneLinkPublishing, AnErrorOfAuthenticationCountsAsNoAccount) {
    startLinked();
    database_.errors[Kind::accountStatus] = {cloudError(9)};
    EXPECT_EQ(send(10), State(NoAccount{}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
}

TEST_F(PhoneLinkPublishing, AnyOtherErrorWaitsForAMinute) {
    startLinked();
    const LogCapture log;
    Limits broken = limits(10);
    broken.front().updatedAt = instantFromUnixSeconds(std::numeric_limits<double>::infinity());
    EXPECT_TRUE(publisher().publish(broken, now()));
    settle();
    EXPECT_EQ(publisher().state(), State(Failed{"안드로이드로 보내지 못했어요."}));
    EXPECT_EQ(publisher().schedule().retryAt, now() + 60s);
    EXPECT_THAT(log.messages(), ElementsAre(LogCapture::Message(
                                    QtCriticalMsg, "안드로이드로 못 보냄: EncodingError")));
}

TEST_F(PhoneLinkPublishing, AfterAnErrorOfTheCloudTheKnownRecordIsStillUsed) {
    startLinked();
    send(10);
    advance(60s);
    failSaves(cloudError(7));
    send(20);
    database_.forgetCalls();
    advance(60s);
    send(20);
    EXPECT_EQ(database_.count(Kind::fetch), 0U);
}

TEST_F(PhoneLinkPublishing, FailureAfterSuccessKeepsWhatWasSent) {
    startLinked();
    send(10);
    const PublishSchedule sent = publisher().schedule();
    advance(60s);
    failSaves(cloudError(3));
    send(20);
    EXPECT_EQ(publisher().schedule().sentDigest, sent.sentDigest);
    EXPECT_EQ(publisher().schedule().lastSent, sent.lastSent);
}

// --- Refreshing the key ---

TEST_F(PhoneLinkPublishing, AKeyThatCameFromElsewhereIsTakenIn) {
    start();
    store(key_);
    publisher().refreshKey();
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_TRUE(publish());
}

TEST_F(PhoneLinkPublishing, AKeyThatIsGoneEndsTheLink) {
    startLinked();
    keys_.values.clear();
    publisher().refreshKey();
    EXPECT_EQ(publisher().key(), std::nullopt);
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::NotLinked{}));
    EXPECT_FALSE(publish());
}

TEST_F(PhoneLinkPublishing, AnotherKeyStartsAnew) {
    startLinked();
    send(10);
    store(test::keyFilledWith('n'));
    publisher().refreshKey();
    EXPECT_EQ(publisher().state(), State(Waiting{}));
    EXPECT_EQ(publisher().schedule(), PublishSchedule());
    database_.forgetCalls();
    EXPECT_EQ(send(10), State(Sent{now()}));
    EXPECT_EQ(database_.count(Kind::fetch), 1U);
}

TEST_F(PhoneLinkPublishing, AnotherKeyOfAPausedLinkLeavesItPaused) {
    defaults_.put("phoneLinkPaused", "true");
    startLinked();
    store(test::keyFilledWith('n'));
    publisher().refreshKey();
    EXPECT_EQ(publisher().state(), State(PhoneLinkPublisher::Paused{}));
}

TEST_F(PhoneLinkPublishing, TheSameKeyChangesNothing) {
    startLinked();
    send(10);
    const PublishSchedule schedule = publisher().schedule();
    publisher().refreshKey();
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
    EXPECT_EQ(publisher().schedule(), schedule);
}

TEST_F(PhoneLinkPublishing, WithoutTheRightAKeyIsTakenInAndTheStateStays) {
    start(PublishingRight::missing);
    store(key_);
    publisher().refreshKey();
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_EQ(publisher().state(), State(Unavailable{}));
}

TEST_F(PhoneLinkPublishing, AKeyThatCannotBeReadStaysAsItIs) {
    startLinked();
    send(10);
    const LogCapture log;
    failKeys("copy");
    publisher().refreshKey();
    EXPECT_EQ(publisher().key(), key_);
    EXPECT_EQ(publisher().state(), State(Sent{now()}));
    EXPECT_THAT(log.messages(),
                ElementsAre(LogCapture::Message(QtCriticalMsg,
                                                "폰 연결 키를 읽지 못했다: 키체인 오류 -25308")));
}

TEST_F(PhoneLinkPublishing, TheOutcomeOfASendUnderAFormerKeyCountsForNothing) {
    for (const bool isFailure : {false, true}) {
        database_.records.clear();
        holdCalls();
        startLinked();
        publish(10);
        time_.advance(0ms);
        store(test::keyFilledWith('n'));
        publisher().refreshKey();
        if (isFailure) database_.fail(cloudError(5));
        settle();
        EXPECT_FALSE(publisher().isSending());
        EXPECT_EQ(publisher().state(), State(Waiting{}));
        EXPECT_EQ(publisher().schedule(), PublishSchedule());
        database_.forgetCalls();
        EXPECT_EQ(send(10), State(Sent{now()}));
        EXPECT_EQ(database_.count(Kind::fetch), 1U);
    }
}

TEST_F(PhoneLinkPublishing, TellsOfEachChangeOnce) {
    startLinked();
    std::vector<std::string> told;
    const auto note = [&](auto signal, const char* name) {
        QObject::connect(&publisher(), signal, &publisher(),
                         [&told, name] { told.emplace_back(name); });
    };
    note(&PhoneLinkPublisher::stateChanged, "state");
    note(&PhoneLinkPublisher::keyChanged, "key");
    note(&PhoneLinkPublisher::isPausedChanged, "paused");
    note(&PhoneLinkPublisher::isChangingChanged, "changing");
    publisher().refreshKey();
    EXPECT_THAT(told, IsEmpty());
    run(publisher().pause());
    run(publisher().pause());
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("paused", "state"));
    publisher().showLink();
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("paused", "state"));
    run(publisher().rotate());
    EXPECT_THAT(std::exchange(told, {}), ElementsAre("changing", "key", "changing"));
    run(publisher().disconnect());
    EXPECT_THAT(told, ElementsAre("changing", "key", "state", "changing"));
}

// --- Ends ---

TEST_F(PhoneLinkPublishing, ItMayBeDestroyedAtEachStepOfASend) {
    for (int step = 0; step <= 3; ++step) {
        database_.records.clear();
        database_.forgetCalls();
        holdCalls();
        startLinked();
        const std::optional<TaskEnd> end = publisher().publish(limits(10), now());
        if (step > 0) time_.advance(0ms);
        for (int answered = 1; answered < step; ++answered)
            database_.answer();
        publisher_.reset();
        settle();
        EXPECT_TRUE(end->isReached()) << step;
        EXPECT_EQ(database_.calls().size(), static_cast<std::size_t>(step));
    }
}

TEST_F(PhoneLinkPublishing, LogsUnderItsCategory) {
    const LogCapture log;
    startLinked();
    send(10);
    advance(60s);
    failSaves(cloudError(5));
    send(20);
    EXPECT_THAT(log.categories(), ElementsAre("net.quillmoor.brimwatch.mac.phone",
                                              "net.quillmoor.brimwatch.mac.phone"));
}

TEST_F(PhoneLinkPublishing, TheEndOfTheProgramEndsASendThatHasNotBegun) {
    startLinked();
    const std::optional<TaskEnd> end = publisher().publish(limits(10), now());
    time_.cancelSleeps();
    EXPECT_TRUE(end->isReached());
    EXPECT_THAT(database_.calls(), IsEmpty());
}

}  // namespace
}  // namespace brimwatch
