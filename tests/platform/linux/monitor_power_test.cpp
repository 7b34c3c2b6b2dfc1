#include "platform/linux/monitor_power.h"

#include <gtest/gtest.h>

#include "platform/linux/bus_test.h"

namespace brimwatch {
namespace {

using test::FakeService;

const QString name = "org.gnome.Mutter.DisplayConfig";
const QString path = "/org/gnome/Mutter/DisplayConfig";

class MonitorPowerTest : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        mutter_.emplace(daemon_->address());
        mutter_->handle([this](const QDBusMessage& call) {
            return call.path() == path && call.arguments().value(0) == name
                       ? call.createReply(QVariantMap{{"PowerSaveMode", mode_}})
                       : call.createErrorReply(QDBusError::Failed, "no");
        });
    }
    void TearDown() override {
        power_.reset();
        mutter_.reset();
        test::BusTest::TearDown();
    }

    void watch() {
        power_ = std::make_unique<MonitorPower>(*bus_);
        QObject::connect(power_.get(), &MonitorPower::changed, [this] { ++changes_; });
    }
    // With its mode read.
    void watchRunning(const QVariant& mode) {
        mode_ = mode;
        mutter_->own(name);
        watch();
        EXPECT_TRUE(eventually([this] { return !mutter_->calls().isEmpty(); }));
        EXPECT_TRUE(hasArrived(*mutter_));
    }
    void change(const QVariant& mode) {
        mutter_->say(path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                     {name, QVariantMap{{"PowerSaveMode", mode}}, QStringList()});
        EXPECT_TRUE(hasArrived(*mutter_));
    }

    QVariant mode_ = 0;
    std::optional<FakeService> mutter_;
    std::unique_ptr<MonitorPower> power_;
    int changes_ = 0;
};

TEST_F(MonitorPowerTest, TheMonitorsAreOnWhereNobodyTells) {
    offer(name.toStdString());
    watch();
    settle();
    EXPECT_TRUE(hasArrived(*mutter_));
    EXPECT_FALSE(power_->isOff());
    EXPECT_FALSE(daemon_->hasStarted(name.toStdString()));
}

TEST_F(MonitorPowerTest, TheModeIsReadAtFirst) {
    watchRunning(3);
    EXPECT_TRUE(power_->isOff());
    EXPECT_EQ(changes_, 1);
}

TEST_F(MonitorPowerTest, StandbySuspendAndOffAreOff) {
    watchRunning(0);
    for (const int mode : {1, 2, 3}) {
        change(mode);
        EXPECT_TRUE(power_->isOff()) << mode;
        change(0);
        EXPECT_FALSE(power_->isOff());
    }
    EXPECT_EQ(changes_, 6);
}

TEST_F(MonitorPowerTest, UnknownModesAreOn) {
    watchRunning(0);
    for (const int mode : {-1, 4, 1000, -2147483647 - 1, 2147483647}) {
        change(3);
        change(mode);
        EXPECT_FALSE(power_->isOff()) << mode;
    }
}

TEST_F(MonitorPowerTest, ModesOfOtherTypesChangeNothing) {
    watchRunning(0);
    for (const QVariant& mode : {QVariant(3U), QVariant("3"), QVariant(true), QVariant(3.0)}) {
        change(mode);
        EXPECT_FALSE(power_->isOff());
    }
    change(3);
    change("0");
    EXPECT_TRUE(power_->isOff());
}

TEST_F(MonitorPowerTest, FromOneKindOfOffToAnotherNothingChanges) {
    watchRunning(1);
    change(2);
    change(3);
    EXPECT_EQ(changes_, 1);
}

TEST_F(MonitorPowerTest, OneThatComesLateIsRead) {
    watch();
    EXPECT_TRUE(hasArrived(*mutter_));
    mode_ = 3;
    mutter_->own(name);
    EXPECT_TRUE(eventually([this] { return power_->isOff(); }));
}

TEST_F(MonitorPowerTest, OneThatVanishesLeavesTheMonitorsOn) {
    watchRunning(3);
    mutter_->vanish();
    EXPECT_TRUE(eventually([this] { return !power_->isOff(); }));
    EXPECT_EQ(changes_, 2);
}

TEST_F(MonitorPowerTest, OneThatHangsIsStillHeard) {
    mutter_->handle([](const QDBusMessage&) { return QDBusMessage(); });
    watchRunning(3);
    EXPECT_FALSE(power_->isOff());
    change(3);
    EXPECT_TRUE(power_->isOff());
}

}  // namespace
}  // namespace brimwatch
