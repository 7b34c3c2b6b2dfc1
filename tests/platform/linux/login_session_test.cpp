#include "platform/linux/login_session.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "harness/environment_list.h"
#include "platform/linux/bus_test.h"
#include "platform/linux/fake_logind.h"

namespace brimwatch {

// GoogleTest prints it.
void PrintTo(const LoginSession::State& state, std::ostream* out) {
    *out << "active " << state.isActive << ", locked " << state.isLocked << ", about to sleep "
         << state.isAboutToSleep;
}

namespace {

using State = LoginSession::State;

TEST(LoginSessionProcessTest, IsThisOne) {
    test::EnvironmentList environment = {{"XDG_SESSION_ID", "c7"}};
    const LoginSession::Process process = LoginSession::thisProcess(environment.view());
    EXPECT_EQ(process.sessionId, "c7");
    EXPECT_EQ(process.id, static_cast<std::uint32_t>(::getpid()));
    EXPECT_EQ(process.user, ::getuid());
    environment = {{"HOME", "/"}};
    EXPECT_TRUE(LoginSession::thisProcess(environment.view()).sessionId.isEmpty());
}

class LoginSessionTest : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        makeLogind();
    }
    void TearDown() override {
        session_.reset();
        logind_.reset();
        test::BusTest::TearDown();
    }

    void makeLogind() { logind_.emplace(daemon_->address()); }
    void watch() {
        session_ = std::make_unique<LoginSession>(*bus_, process_);
        QObject::connect(session_.get(), &LoginSession::changed, [this] { ++changes_; });
    }
    // With the session found by its id, and read.
    void watchSession() {
        logind_->giveSession("GetSession");
        logind_->come();
        watch();
        EXPECT_TRUE(hasAsked("GetAll org.freedesktop.login1.Session"));
    }
    bool hasAsked(const QString& call) {
        return eventually([&] { return logind_->calls().contains(call); }) && hasArrived(*logind_);
    }
    bool becomes(const State& state) {
        return eventually([&] { return session_->state() == state; });
    }

    LoginSession::Process process_{.sessionId = "7", .id = 4711, .user = 1000};
    std::optional<test::FakeLogind> logind_;
    std::unique_ptr<LoginSession> session_;
    int changes_ = 0;
};

TEST_F(LoginSessionTest, StandsInFrontAndAwakeAtFirst) {
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    logind_->giveSession("GetSession");
    logind_->come();
    watch();
    EXPECT_EQ(session_->state(), State());
    EXPECT_EQ(changes_, 0);
}

TEST_F(LoginSessionTest, IsReadOnceItIsFound) {
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    watchSession();
    EXPECT_EQ(session_->state(), (State{.isActive = false, .isLocked = true}));
    EXPECT_EQ(changes_, 1);
}

TEST_F(LoginSessionTest, IsFoundByItsIdFirst) {
    watchSession();
    EXPECT_EQ(logind_->calls(),
              QStringList({"GetSession 7", "GetAll org.freedesktop.login1.Session"}));
}

TEST_F(LoginSessionTest, IsFoundByTheProcessWhereTheIdIsUnknown) {
    logind_->properties = QVariantMap{{"Active", false}};
    logind_->giveSession("GetSessionByPID");
    logind_->come();
    watch();
    EXPECT_TRUE(becomes({.isActive = false}));
    EXPECT_EQ(logind_->calls(), QStringList({"GetSession 7", "GetSessionByPID 4711",
                                             "GetAll org.freedesktop.login1.Session"}));
}

TEST_F(LoginSessionTest, IsFoundByTheProcessWhereThereIsNoId) {
    process_.sessionId.clear();
    logind_->properties = QVariantMap{{"Active", false}};
    logind_->giveSession("GetSessionByPID");
    logind_->come();
    watch();
    EXPECT_TRUE(becomes({.isActive = false}));
    EXPECT_EQ(logind_->calls().front(), "GetSessionByPID 4711");
}

TEST_F(LoginSessionTest, IsTheUsersDisplayOtherwise) {
    logind_->properties = QVariantMap{{"Active", false}};
    logind_->giveDisplay("7", test::FakeLogind::sessionPath());
    logind_->come();
    watch();
    EXPECT_TRUE(becomes({.isActive = false}));
    EXPECT_EQ(logind_->calls(), QStringList({"GetSession 7", "GetSessionByPID 4711", "GetUser 1000",
                                             "Get org.freedesktop.login1.User Display",
                                             "GetAll org.freedesktop.login1.Session"}));
}

TEST_F(LoginSessionTest, IsNoneForAUserWithoutADisplay) {
    logind_->giveDisplay("", "/");
    logind_->come();
    watch();
    EXPECT_TRUE(hasAsked("Get org.freedesktop.login1.User Display"));
    settle();
    EXPECT_FALSE(logind_->calls().contains("GetAll org.freedesktop.login1.Session"));
    EXPECT_EQ(session_->state(), State());
}

TEST_F(LoginSessionTest, WithoutASessionTheSleepIsStillHeard) {
    logind_->come();
    watch();
    EXPECT_TRUE(hasAsked("GetUser 1000"));
    logind_->sleepIs({true});
    EXPECT_TRUE(becomes({.isAboutToSleep = true}));
}

TEST_F(LoginSessionTest, FollowsWhatChanges) {
    watchSession();
    logind_->changeSession({{"Active", false}});
    EXPECT_TRUE(becomes({.isActive = false}));
    logind_->changeSession({{"LockedHint", true}});
    EXPECT_TRUE(becomes({.isActive = false, .isLocked = true}));
    logind_->sleepIs({true});
    EXPECT_TRUE(becomes({.isActive = false, .isLocked = true, .isAboutToSleep = true}));
    logind_->changeSession({{"Active", true}, {"LockedHint", false}});
    EXPECT_TRUE(becomes({.isAboutToSleep = true}));
    logind_->sleepIs({false});
    EXPECT_TRUE(becomes({}));
    EXPECT_EQ(changes_, 5);
}

TEST_F(LoginSessionTest, WhatStaysTheSameIsNotTold) {
    watchSession();
    logind_->changeSession({{"Active", true}, {"LockedHint", false}, {"IdleHint", true}});
    logind_->sleepIs({false});
    EXPECT_TRUE(hasArrived(*logind_));
    EXPECT_EQ(changes_, 0);
}

TEST_F(LoginSessionTest, APropertyThatChangedWithoutAValueIsRead) {
    watchSession();
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", false}};
    logind_->changeSession({}, {"Active"});
    EXPECT_TRUE(becomes({.isActive = false}));
}

TEST_F(LoginSessionTest, ValuesOfOtherTypesAreNone) {
    logind_->properties = QVariantMap{{"Active", 0}, {"LockedHint", "true"}};
    watchSession();
    logind_->changeSession({{"Active", "false"}, {"LockedHint", 1}});
    logind_->sleepIs({1});
    logind_->sleepIs({});
    logind_->sleepIs({"true"});
    EXPECT_TRUE(hasArrived(*logind_));
    EXPECT_EQ(session_->state(), State());
    EXPECT_EQ(changes_, 0);
}

TEST_F(LoginSessionTest, AnswersOfOtherTypesAreNone) {
    logind_->properties = QVariant("Active");
    logind_->answers["GetSession"] = "/org/freedesktop/login1/session/_37";
    logind_->answers["GetSessionByPID"] = 7;
    logind_->giveDisplay("7", "/");
    logind_->display = QVariant("7");
    logind_->come();
    watch();
    EXPECT_TRUE(hasAsked("Get org.freedesktop.login1.User Display"));
    settle();
    EXPECT_EQ(logind_->calls().size(), 4);
    EXPECT_EQ(session_->state(), State());
}

TEST_F(LoginSessionTest, PropertiesOfAnotherTypeAreNone) {
    logind_->properties = QVariant("Active");
    watchSession();
    EXPECT_EQ(session_->state(), State());
    logind_->changeSession({{"Active", false}});
    EXPECT_TRUE(becomes({.isActive = false}));
}

TEST_F(LoginSessionTest, AMethodThatHangsGivesWayToTheNext) {
    connectToBus(test::impatientTiming);
    logind_->properties = QVariantMap{{"Active", false}};
    logind_->giveSession("GetSession");
    logind_->giveSession("GetSessionByPID");
    logind_->silent = QStringList("GetSession");
    logind_->come();
    watch();
    EXPECT_TRUE(becomes({.isActive = false}));
}

TEST_F(LoginSessionTest, ASessionThatCannotBeReadIsHeardOf) {
    logind_->silent = QStringList("GetAll");
    watchSession();
    EXPECT_EQ(session_->state(), State());
    logind_->changeSession({{"Active", false}});
    EXPECT_TRUE(becomes({.isActive = false}));
}

TEST_F(LoginSessionTest, AServiceThatComesLateIsRead) {
    watch();
    EXPECT_TRUE(hasArrived(*logind_));
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    logind_->giveSession("GetSession");
    logind_->come();
    EXPECT_TRUE(becomes({.isActive = false, .isLocked = true}));
}

TEST_F(LoginSessionTest, AServiceThatVanishesLeavesNothingBehind) {
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    watchSession();
    logind_->sleepIs({true});
    ASSERT_TRUE(becomes({.isActive = false, .isLocked = true, .isAboutToSleep = true}));
    changes_ = 0;
    logind_->vanish();
    EXPECT_TRUE(becomes({}));
    EXPECT_EQ(changes_, 1);
}

TEST_F(LoginSessionTest, AServiceThatIsStartedAgainIsReadAgain) {
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    watchSession();
    logind_->go();
    EXPECT_TRUE(becomes({}));
    logind_->changeSession({{"Active", false}});
    logind_->sleepIs({true});
    EXPECT_TRUE(hasArrived(*logind_));
    EXPECT_EQ(session_->state(), State());
    logind_->come();
    EXPECT_TRUE(becomes({.isActive = false, .isLocked = true}));
}

TEST_F(LoginSessionTest, ABusThatDiesLeavesNothingBehindAndIsReadAgain) {
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    watchSession();
    daemon_->kill();
    EXPECT_TRUE(becomes({}));
    logind_.reset();
    daemon_->start();
    makeLogind();
    logind_->properties = QVariantMap{{"LockedHint", true}};
    logind_->giveSession("GetSession");
    logind_->come();
    EXPECT_TRUE(becomes({.isLocked = true}));
}

TEST_F(LoginSessionTest, WhatOthersMakeUpIsNotHeard) {
    watchSession();
    test::FakeLogind liar(daemon_->address());
    liar.sleepIs({true});
    liar.changeSession({{"Active", false}, {"LockedHint", true}});
    EXPECT_TRUE(hasArrived(liar));
    EXPECT_EQ(session_->state(), State());
}

TEST_F(LoginSessionTest, AFloodEndsInItsLastWord) {
    watchSession();
    for (int round = 0; round < 1000; ++round) {
        logind_->changeSession({{"Active", false}, {"LockedHint", true}});
        logind_->changeSession({{"Active", true}, {"LockedHint", round < 999}});
    }
    logind_->sleepIs({true});
    EXPECT_TRUE(hasArrived(*logind_));
    EXPECT_EQ(session_->state(), (State{.isAboutToSleep = true}));
    EXPECT_LE(changes_, 2001);
}

}  // namespace
}  // namespace brimwatch
