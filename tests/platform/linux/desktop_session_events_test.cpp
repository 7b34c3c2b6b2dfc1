#include "platform/linux/desktop_session_events.h"

#include <gtest/gtest.h>

#include "platform/linux/bus_test.h"
#include "platform/linux/fake_logind.h"

namespace brimwatch {
namespace {

using test::FakeLogind;
using test::FakeService;

class DesktopSessionEventsTest : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        system_.emplace();
        systemBus_ = std::make_unique<BusConnection>(system_->address(), test::quickTiming);
        systemBus_->open();
        makeServices();
    }
    void TearDown() override {
        events_.reset();
        desktop_.reset();
        logind_.reset();
        systemBus_.reset();
        system_.reset();
        test::BusTest::TearDown();
    }

    void makeServices() {
        desktop_.emplace(daemon_->address());
        logind_.emplace(system_->address());
        logind_->giveSession("GetSession");
        logind_->come();
    }
    void watch() {
        events_ = std::make_unique<DesktopSessionEvents>(
            *bus_, *systemBus_, LoginSession::Process{.sessionId = "7", .id = 1, .user = 1000});
        QObject::connect(events_.get(), &SessionEvents::screensAsleepChanged,
                         [this] { ++asleep_; });
        QObject::connect(events_.get(), &SessionEvents::sessionActiveChanged,
                         [this] { ++active_; });
    }
    void watchSession() {
        watch();
        EXPECT_TRUE(eventually([this] { return logind_->calls().size() == 2; }));
        EXPECT_TRUE(haveArrived());
    }
    bool haveArrived() { return hasArrived(*desktop_) && hasArrived(*systemBus_, *logind_); }
    void saySaver(bool isActive) {
        desktop_->say("/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged",
                      {isActive});
    }
    void setMonitors(int mode) {
        desktop_->say("/org/gnome/Mutter/DisplayConfig", "org.freedesktop.DBus.Properties",
                      "PropertiesChanged",
                      {"org.gnome.Mutter.DisplayConfig", QVariantMap{{"PowerSaveMode", mode}},
                       QStringList()});
    }

    std::optional<test::PrivateBus> system_;
    std::unique_ptr<BusConnection> systemBus_;
    std::optional<FakeService> desktop_;
    std::optional<FakeLogind> logind_;
    std::unique_ptr<DesktopSessionEvents> events_;
    int asleep_ = 0;
    int active_ = 0;
};

TEST_F(DesktopSessionEventsTest, EachSourceAlonePutsTheScreenToSleep) {
    desktop_->own("org.gnome.Mutter.DisplayConfig");
    watchSession();
    EXPECT_TRUE(eventually([this] { return !desktop_->calls().isEmpty(); }));
    const std::vector<std::function<void(bool)>> sources = {
        [this](bool isAsleep) {
            logind_->changeSession({{"LockedHint", isAsleep}});
        },
        [this](bool isAsleep) { logind_->sleepIs({isAsleep}); },
        [this](bool isAsleep) { saySaver(isAsleep); },
        [this](bool isAsleep) { setMonitors(isAsleep ? 3 : 0); }};
    int changes = 0;
    for (const auto& set : sources) {
        set(true);
        EXPECT_TRUE(haveArrived());
        EXPECT_TRUE(events_->areScreensAsleep());
        EXPECT_EQ(asleep_, ++changes);
        set(false);
        EXPECT_TRUE(haveArrived());
        EXPECT_FALSE(events_->areScreensAsleep());
        EXPECT_EQ(asleep_, ++changes);
    }
    EXPECT_EQ(active_, 0);
}

TEST_F(DesktopSessionEventsTest, TheScreenSleepsUntilTheLastSourceIsAwake) {
    watchSession();
    logind_->sleepIs({true});
    saySaver(true);
    logind_->changeSession({{"LockedHint", true}});
    EXPECT_TRUE(haveArrived());
    logind_->sleepIs({false});
    saySaver(false);
    EXPECT_TRUE(haveArrived());
    EXPECT_TRUE(events_->areScreensAsleep());
    EXPECT_EQ(asleep_, 1);
    logind_->changeSession({{"LockedHint", false}});
    EXPECT_TRUE(haveArrived());
    EXPECT_FALSE(events_->areScreensAsleep());
    EXPECT_EQ(asleep_, 2);
}

TEST_F(DesktopSessionEventsTest, TheSessionThatLeavesTheSeatIsNotAsleep) {
    watchSession();
    logind_->changeSession({{"Active", false}});
    EXPECT_TRUE(haveArrived());
    EXPECT_FALSE(events_->isSessionActive());
    EXPECT_FALSE(events_->areScreensAsleep());
    EXPECT_EQ(active_, 1);
    EXPECT_EQ(asleep_, 0);
    logind_->changeSession({{"Active", true}});
    EXPECT_TRUE(haveArrived());
    EXPECT_TRUE(events_->isSessionActive());
    EXPECT_EQ(active_, 2);
}

TEST_F(DesktopSessionEventsTest, BothValuesAreNewWhenEitherIsTold) {
    watchSession();
    bool bothAreNew = true;
    const auto look = [&] {
        bothAreNew = bothAreNew && events_->areScreensAsleep() && !events_->isSessionActive();
    };
    QObject::connect(events_.get(), &SessionEvents::screensAsleepChanged, look);
    QObject::connect(events_.get(), &SessionEvents::sessionActiveChanged, look);
    logind_->changeSession({{"Active", false}, {"LockedHint", true}});
    EXPECT_TRUE(haveArrived());
    EXPECT_EQ(asleep_ + active_, 2);
    EXPECT_TRUE(bothAreNew);
}

TEST_F(DesktopSessionEventsTest, WithoutBothBusesNobodySleeps) {
    bus_ = std::make_unique<BusConnection>(QString(), test::quickTiming);
    systemBus_ = std::make_unique<BusConnection>("unix:path=/missing", test::quickTiming);
    watch();
    bus_->open();
    systemBus_->open();
    settle();
    EXPECT_FALSE(events_->areScreensAsleep());
    EXPECT_TRUE(events_->isSessionActive());
    EXPECT_EQ(asleep_ + active_, 0);
}

TEST_F(DesktopSessionEventsTest, ConnectionsMayBeOpenedLater) {
    bus_ = std::make_unique<BusConnection>(daemon_->address(), test::quickTiming);
    systemBus_ = std::make_unique<BusConnection>(system_->address(), test::quickTiming);
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    watch();
    systemBus_->open();
    EXPECT_TRUE(eventually([this] { return asleep_ == 1 && active_ == 1; }));
    logind_->changeSession({{"LockedHint", false}});
    EXPECT_TRUE(eventually([this] { return asleep_ == 2; }));
    bus_->open();
    EXPECT_TRUE(haveArrived());
    saySaver(true);
    EXPECT_TRUE(eventually([this] { return asleep_ == 3; }));
}

TEST_F(DesktopSessionEventsTest, AServiceThatDiesWhileTheScreenSleepsWakesIt) {
    logind_->properties = QVariantMap{{"Active", false}, {"LockedHint", true}};
    watchSession();
    ASSERT_TRUE(events_->areScreensAsleep());
    logind_->vanish();
    EXPECT_TRUE(eventually([this] { return !events_->areScreensAsleep(); }));
    EXPECT_TRUE(events_->isSessionActive());
    EXPECT_EQ(asleep_, 2);
    EXPECT_EQ(active_, 2);
}

TEST_F(DesktopSessionEventsTest, BusesThatDieWhileTheScreenSleepsWakeItAndAreHeardAgain) {
    watchSession();
    saySaver(true);
    logind_->changeSession({{"LockedHint", true}});
    EXPECT_TRUE(haveArrived());
    daemon_->kill();
    EXPECT_TRUE(eventually([this] { return !bus_->isConnected(); }));
    EXPECT_TRUE(events_->areScreensAsleep());
    system_->kill();
    EXPECT_TRUE(eventually([this] { return !events_->areScreensAsleep(); }));
    EXPECT_EQ(asleep_, 2);

    desktop_.reset();
    logind_.reset();
    daemon_->start();
    system_->start();
    makeServices();
    ASSERT_TRUE(eventually([this] { return bus_->isConnected(); }));
    EXPECT_TRUE(hasArrived(*desktop_));
    saySaver(true);
    EXPECT_TRUE(eventually([this] { return asleep_ == 3; }));
    saySaver(false);
    EXPECT_TRUE(eventually([this] { return logind_->calls().size() == 2; }));
    logind_->changeSession({{"LockedHint", true}});
    EXPECT_TRUE(haveArrived());
    EXPECT_TRUE(events_->areScreensAsleep());
}

TEST_F(DesktopSessionEventsTest, ItMayEndAtAnyMoment) {
    saySaver(true);
    for (int turns = 0; turns < 30; ++turns) {
        watch();
        for (int turn = 0; turn < turns; ++turn)
            QCoreApplication::processEvents();
        saySaver(turns % 2 == 0);
        events_.reset();
    }
    watch();
    EXPECT_TRUE(haveArrived());
    saySaver(true);
    EXPECT_TRUE(eventually([this] { return events_->areScreensAsleep(); }));
}

}  // namespace
}  // namespace brimwatch
