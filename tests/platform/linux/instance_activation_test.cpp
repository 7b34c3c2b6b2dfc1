#include "platform/linux/instance_activation.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QDBusArgument>
#include <QDBusPendingCall>

#include "platform/linux/bus_test.h"

namespace brimwatch {
namespace {

using test::EnvironmentList;
using test::FakeService;

constexpr const char* name = "net.quillmoor.brimwatch";
constexpr const char* path = "/net/quillmoor/brimwatch";
constexpr const char* interface = "org.freedesktop.Application";

class InstanceActivationTest : public test::BusTest {
  protected:
    void TearDown() override {
        activation_.reset();
        other_.reset();
        test::BusTest::TearDown();
    }

    void run() {
        activation_ = std::make_unique<InstanceActivation>(*bus_);
        QObject::connect(activation_.get(), &InstanceActivation::activated,
                         [this](const QString& token) { tokens_ << token; });
    }
    void runWithName() {
        run();
        EXPECT_TRUE(eventually([this] { return activation_->ownsName(); }));
    }
    FakeService& other() {
        if (!other_) other_.emplace(daemon_->address());
        return *other_;
    }
    // The answer that the other connection gets.
    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        QDBusMessage message = QDBusMessage::createMethodCall(name, path, interface, method);
        message.setArguments(arguments);
        const QDBusPendingCall pending = other().connection().asyncCall(message);
        EXPECT_TRUE(eventually([&] { return pending.isFinished(); }));
        return pending.reply();
    }
    // From another process.
    InstanceAnswer startSecond(const EnvironmentList& environment = {}) {
        test::Process second = test::startCompanion(*daemon_, "activate", environment);
        std::optional<test::ProcessResult> result;
        EXPECT_TRUE(eventually([&] {
            if (!result && hasEnded(second.id())) result = second.wait();
            return result.has_value();
        }));
        return static_cast<InstanceAnswer>(WEXITSTATUS(result->status));
    }
    InstanceAnswer activateHere(const EnvironmentList& environment,
                                std::chrono::milliseconds longestWait) {
        return activateRunningInstance(environment.view(), longestWait);
    }

    std::unique_ptr<InstanceActivation> activation_;
    std::optional<FakeService> other_;
    QStringList tokens_;

  private:
    static bool hasEnded(pid_t process) {
        siginfo_t information{};
        return ::waitid(P_PID, static_cast<id_t>(process), &information,
                        WEXITED | WNOHANG | WNOWAIT) == 0 &&
               information.si_pid == process;
    }
};

TEST_F(InstanceActivationTest, TheFirstHasTheName) {
    run();
    EXPECT_FALSE(activation_->ownsName());
    EXPECT_TRUE(eventually([this] { return activation_->ownsName(); }));
    EXPECT_TRUE(other().sees(name));
}

TEST_F(InstanceActivationTest, TheConnectionMayBeOpenedLater) {
    bus_ = std::make_unique<BusConnection>(daemon_->address(), test::quickTiming);
    run();
    bus_->open();
    EXPECT_TRUE(eventually([this] { return activation_->ownsName(); }));
    EXPECT_EQ(call("Activate", {QVariantMap()}).type(), QDBusMessage::ReplyMessage);
}

TEST_F(InstanceActivationTest, ASecondStartActivatesTheFirst) {
    runWithName();
    EXPECT_EQ(startSecond(), InstanceAnswer::activated);
    EXPECT_EQ(tokens_, QStringList(QString()));
}

TEST_F(InstanceActivationTest, ASecondStartPassesOnWhatItWasStartedWith) {
    runWithName();
    EXPECT_EQ(startSecond({{"XDG_ACTIVATION_TOKEN", "wayland"}}), InstanceAnswer::activated);
    EXPECT_EQ(startSecond({{"DESKTOP_STARTUP_ID", "x11_TIME7"}}), InstanceAnswer::activated);
    EXPECT_EQ(startSecond({{"XDG_ACTIVATION_TOKEN", "w"}, {"DESKTOP_STARTUP_ID", "x"}}),
              InstanceAnswer::activated);
    EXPECT_EQ(startSecond({{"XDG_ACTIVATION_TOKEN", ""}, {"DESKTOP_STARTUP_ID", "x"}}),
              InstanceAnswer::activated);
    EXPECT_EQ(tokens_, QStringList({"wayland", "x11_TIME7", "w", "x"}));
}

TEST_F(InstanceActivationTest, ASecondStartUsesTheKeysOfTheSpecification) {
    other().own(name);
    QVariantMap data;
    other().handle([&](const QDBusMessage& call) {
        data = qdbus_cast<QVariantMap>(call.arguments().value(0));
        return call.createReply();
    });
    EXPECT_EQ(startSecond({{"XDG_ACTIVATION_TOKEN", "w"}, {"DESKTOP_STARTUP_ID", "x"}}),
              InstanceAnswer::activated);
    EXPECT_EQ(data, (QVariantMap{{"activation-token", "w"}, {"desktop-startup-id", "x"}}));
}

TEST_F(InstanceActivationTest, WithoutAnInstanceASecondStartReachesNobodyAndStartsNone) {
    offer(name);
    EXPECT_EQ(startSecond(), InstanceAnswer::noInstance);
    EXPECT_FALSE(daemon_->hasStarted(name));
}

TEST_F(InstanceActivationTest, WithoutABusASecondStartSaysSo) {
    EXPECT_EQ(activateHere({{"HOME", "/"}}, std::chrono::seconds(2)), InstanceAnswer::noBus);
    EXPECT_EQ(
        activateHere({{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/missing"}}, std::chrono::seconds(2)),
        InstanceAnswer::noBus);
}

TEST_F(InstanceActivationTest, AnInstanceThatHangsIsWaitedForNoLongerThanTold) {
    other().own(name);
    other().handle([](const QDBusMessage&) { return QDBusMessage(); });
    EXPECT_EQ(activateHere({{"DBUS_SESSION_BUS_ADDRESS", daemon_->addressText()}},
                           std::chrono::milliseconds(50)),
              InstanceAnswer::noAnswer);
    EXPECT_EQ(startSecond(), InstanceAnswer::noAnswer);
}

TEST_F(InstanceActivationTest, AnOwnerThatKnowsNoActivationIsNoInstance) {
    other().own(name);
    EXPECT_EQ(startSecond(), InstanceAnswer::noAnswer);
    EXPECT_EQ(other().calls().size(), 1);
}

TEST_F(InstanceActivationTest, WhateverIsCalledActivates) {
    runWithName();
    const QVariantMap data = {{"activation-token", "t"}};
    EXPECT_EQ(call("Activate", {data}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("Open", {QStringList("file:///x"), data}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("ActivateAction", {"quit", QVariantList{7}, data}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(tokens_, QStringList({"t", "t", "t"}));
}

TEST_F(InstanceActivationTest, OtherArgumentsAreRefused) {
    runWithName();
    EXPECT_EQ(call("Activate", {}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call("Activate", {"token"}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call("Open", {"file:///x", QVariantMap()}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call("Quit", {}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call("deleteLater", {}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(tokens_, QStringList());
}

TEST_F(InstanceActivationTest, ATokenOfAnotherTypeIsNone) {
    runWithName();
    call("Activate", {QVariantMap{{"activation-token", QVariantMap()}}});
    call("Activate", {QVariantMap{{"activation-token", QStringList({"a", "b"})}}});
    EXPECT_EQ(tokens_, QStringList({QString(), QString()}));
}

TEST_F(InstanceActivationTest, TheInterfaceCanBeLookedUp) {
    runWithName();
    QDBusMessage message = QDBusMessage::createMethodCall(
        name, path, "org.freedesktop.DBus.Introspectable", "Introspect");
    const QDBusPendingCall pending = other().connection().asyncCall(message);
    ASSERT_TRUE(eventually([&] { return pending.isFinished(); }));
    const QString text = pending.reply().arguments().value(0).toString();
    EXPECT_TRUE(text.contains("<interface name=\"org.freedesktop.Application\">"));
    EXPECT_TRUE(text.contains("name=\"ActivateAction\""));
}

TEST_F(InstanceActivationTest, TheNameIsTakenFromNobody) {
    const test::Process holder = test::startCompanion(*daemon_, "hold");
    ASSERT_TRUE(eventually([this] { return other().sees(name); }));
    run();
    settle();
    EXPECT_TRUE(hasArrived(other()));
    EXPECT_FALSE(activation_->ownsName());
    EXPECT_EQ(startSecond(), InstanceAnswer::activated);
    EXPECT_EQ(tokens_, QStringList());
}

TEST_F(InstanceActivationTest, TheNameIsTakenOnceItsHolderHasGone) {
    {
        const test::Process holder = test::startCompanion(*daemon_, "hold");
        ASSERT_TRUE(eventually([this] { return other().sees(name); }));
        run();
        settle();
        EXPECT_FALSE(activation_->ownsName());
    }
    EXPECT_TRUE(eventually([this] { return activation_->ownsName(); }));
    EXPECT_EQ(startSecond(), InstanceAnswer::activated);
    EXPECT_EQ(tokens_.size(), 1);
}

TEST_F(InstanceActivationTest, NobodyTakesTheNameAway) {
    runWithName();
    const QDBusPendingCall pending = other().connection().asyncCall(BusCall{
        "org.freedesktop.DBus",
        "/org/freedesktop/DBus",
        "org.freedesktop.DBus",
        "RequestName",
        {QString(name), 2U}}.message());  // in place of the holder
    ASSERT_TRUE(eventually([&] { return pending.isFinished(); }));
    EXPECT_TRUE(hasArrived(other()));
    EXPECT_TRUE(activation_->ownsName());
}

TEST_F(InstanceActivationTest, TheNameIsTakenAgainWhenTheBusReturns) {
    runWithName();
    daemon_->kill();
    EXPECT_TRUE(eventually([this] { return !activation_->ownsName(); }));
    daemon_->start();
    EXPECT_TRUE(eventually([this] { return activation_->ownsName(); }));
    EXPECT_EQ(startSecond({{"XDG_ACTIVATION_TOKEN", "again"}}), InstanceAnswer::activated);
    EXPECT_EQ(tokens_, QStringList("again"));
}

TEST_F(InstanceActivationTest, WithoutABusThereIsNoName) {
    bus_ = std::make_unique<BusConnection>(QString(), test::quickTiming);
    run();
    bus_->open();
    settle();
    EXPECT_FALSE(activation_->ownsName());
}

TEST_F(InstanceActivationTest, AFloodOfSecondStartsLeavesNoneUnheard) {
    runWithName();
    const QDBusMessage message =
        BusCall{name, path, interface, "Activate", {QVariantMap()}}.message();
    for (int count = 0; count < 1000; ++count)
        other().connection().send(message);
    EXPECT_TRUE(eventually([this] { return tokens_.size() == 1000; }));
}

}  // namespace
}  // namespace brimwatch
