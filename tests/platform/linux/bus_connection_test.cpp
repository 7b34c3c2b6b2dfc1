#include "platform/linux/bus_connection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "harness/environment_list.h"
#include "platform/linux/bus_test.h"
#include "platform/linux/bus_values.h"

namespace brimwatch {
namespace {

using test::FakeService;

TEST(BusAddressTest, IsTheOneOfTheEnvironment) {
    const test::EnvironmentList environment = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/a"},
                                               {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/b"},
                                               {"XDG_RUNTIME_DIR", "/run/user/7"}};
    EXPECT_EQ(sessionBusAddress(environment.view()), "unix:path=/a");
    EXPECT_EQ(systemBusAddress(environment.view()), "unix:path=/b");
}

TEST(BusAddressTest, OfTheSessionLiesInTheRuntimeFolderOtherwise) {
    test::EnvironmentList environment = {{"XDG_RUNTIME_DIR", "/run/user/7"}};
    EXPECT_EQ(sessionBusAddress(environment.view()), "unix:path=/run/user/7/bus");
    environment.set("DBUS_SESSION_BUS_ADDRESS", "");
    EXPECT_EQ(sessionBusAddress(environment.view()), "unix:path=/run/user/7/bus");
    environment.set("XDG_RUNTIME_DIR", "/a b,c;d=e%~\xc3\xa4");
    EXPECT_EQ(sessionBusAddress(environment.view()),
              "unix:path=/a%20b%2Cc%3Bd%3De%25%7E%C3%A4/bus");
}

TEST(BusAddressTest, OfTheSessionIsNothingWhereNothingNamesIt) {
    test::EnvironmentList environment = {{"DISPLAY", ":0"}};
    EXPECT_TRUE(sessionBusAddress(environment.view()).isEmpty());
    environment.set("XDG_RUNTIME_DIR", "relative");
    EXPECT_TRUE(sessionBusAddress(environment.view()).isEmpty());
}

TEST(BusAddressTest, OfTheSystemIsTheUsualOneOtherwise) {
    test::EnvironmentList environment = {{"HOME", "/"}};
    EXPECT_EQ(systemBusAddress(environment.view()), "unix:path=/run/dbus/system_bus_socket");
    environment.set("DBUS_SYSTEM_BUS_ADDRESS", "");
    EXPECT_EQ(systemBusAddress(environment.view()), "unix:path=/run/dbus/system_bus_socket");
}

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;

TEST(BusPausesTest, GrowToTheLongest) {
    BusPauses pauses(milliseconds(10), milliseconds(50));
    std::vector<milliseconds> waited;
    for (int count = 0; count < 5; ++count)
        waited.push_back(pauses.afterFailure());
    EXPECT_EQ(waited, (std::vector{milliseconds(10), milliseconds(20), milliseconds(40),
                                   milliseconds(50), milliseconds(50)}));
}

TEST(BusPausesTest, AreShortAgainAfterALongConnection) {
    BusPauses pauses(milliseconds(10), milliseconds(50));
    pauses.afterFailure();
    pauses.afterFailure();
    EXPECT_EQ(pauses.afterConnection(milliseconds(50)), milliseconds(40));
    EXPECT_EQ(pauses.afterConnection(milliseconds(51)), milliseconds(10));
    EXPECT_EQ(pauses.afterFailure(), milliseconds(20));
}

TEST(BusPausesTest, WithoutABusAMachineWakesThreeTimesAnHour) {
    const BusConnection::Timing timing;
    BusPauses pauses(timing.firstPause, timing.longestPause);
    milliseconds untilThen{0};
    while (untilThen < hours(1))
        untilThen += pauses.afterFailure();
    EXPECT_GE(pauses.afterFailure(), minutes(20));
    EXPECT_GE(pauses.afterConnection(minutes(1)), minutes(20));
}

class BusConnectionTest : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        count();
    }
    void TearDown() override {
        service_.reset();
        test::BusTest::TearDown();
    }

    void count() {
        QObject::connect(bus_.get(), &BusConnection::connected, [this] { ++connects_; });
        QObject::connect(bus_.get(), &BusConnection::disconnected, [this] { ++losses_; });
    }
    void dieAndReturn() {
        daemon_->kill();
        ASSERT_TRUE(eventually([this] { return !bus_->isConnected(); }));
        daemon_->start();
        ASSERT_TRUE(eventually([this] { return bus_->isConnected(); }));
    }
    FakeService& service() {
        if (!service_) service_.emplace(daemon_->address());
        return *service_;
    }
    BusCall callOf(const QString& method) {
        return {service().uniqueName(), "/object", "net.example.Fake", method};
    }

    std::optional<FakeService> service_;
    QObject context_;
    int connects_ = 0;
    int losses_ = 0;
};

TEST_F(BusConnectionTest, NothingHappensBeforeItIsOpened) {
    bus_ = std::make_unique<BusConnection>(daemon_->address(), test::quickTiming);
    count();
    settle();
    EXPECT_FALSE(bus_->isConnected());
    EXPECT_EQ(connects_, 0);
    bus_->open();
    EXPECT_TRUE(bus_->isConnected());
    EXPECT_EQ(connects_, 1);
}

TEST_F(BusConnectionTest, WithoutAnAddressThereNeverIsABus) {
    bus_ = std::make_unique<BusConnection>(QString(), test::quickTiming);
    count();
    bus_->open();
    settle();
    EXPECT_FALSE(bus_->isConnected());
    bus_->call(callOf("Question"), &context_, [](const QDBusMessage&) { FAIL(); });
    bus_->listen({.interface = "net.example.Fake", .name = "Word"}, &context_,
                 [](const QDBusMessage&) { FAIL(); });
    service().say("/object", "net.example.Fake", "Word", {});
    settle();
    EXPECT_EQ(connects_ + losses_, 0);
}

TEST_F(BusConnectionTest, ABusThatDiesIsTold) {
    daemon_->kill();
    EXPECT_TRUE(eventually([this] { return losses_ == 1; }));
    EXPECT_FALSE(bus_->isConnected());
    EXPECT_EQ(connects_, 0);
}

TEST_F(BusConnectionTest, ABusThatComesBackIsFoundEachTime) {
    for (int round = 1; round <= 3; ++round) {
        dieAndReturn();
        EXPECT_EQ(losses_, round);
        EXPECT_EQ(connects_, round);
    }
    service().handle([](const QDBusMessage& call) { return call.createReply("answer"); });
    QString answer;
    bus_->call(callOf("Question"), &context_, [&](const QDBusMessage& message) {
        answer = message.arguments().value(0).toString();
    });
    EXPECT_TRUE(eventually([&] { return answer == "answer"; }));
}

TEST_F(BusConnectionTest, ABusThatComesLateIsFound) {
    daemon_->kill();
    connectToBus(test::quickTiming);
    count();
    EXPECT_FALSE(bus_->isConnected());
    daemon_->start();
    EXPECT_TRUE(eventually([this] { return connects_ == 1; }));
    EXPECT_EQ(losses_, 0);
}

TEST_F(BusConnectionTest, NothingPrintsOrBreaksWithAnAddressThatIsNone) {
    for (const char* address : {"nonsense", "unix:path=", "unix:path=/a~", "tcp:host=256.0.0.1"}) {
        bus_ = std::make_unique<BusConnection>(QString(address), test::quickTiming);
        bus_->open();
        settle();
        EXPECT_FALSE(bus_->isConnected()) << address;
    }
}

TEST_F(BusConnectionTest, AnErrorIsAnAnswer) {
    QString error;
    bus_->call(callOf("Question"), &context_,
               [&](const QDBusMessage& message) { error = message.errorName(); });
    EXPECT_TRUE(eventually([&] { return error == "org.freedesktop.DBus.Error.UnknownMethod"; }));
}

TEST_F(BusConnectionTest, NoAnswerIsAnErrorAfterAWhile) {
    connectToBus(test::impatientTiming);
    service().handle([](const QDBusMessage&) { return QDBusMessage(); });
    QString error;
    bus_->call(callOf("Question"), &context_,
               [&](const QDBusMessage& message) { error = message.errorName(); });
    EXPECT_TRUE(error.isEmpty());
    EXPECT_TRUE(eventually([&] { return error == "org.freedesktop.DBus.Error.NoReply"; }));
    EXPECT_EQ(service().calls(), QStringList("Question"));
}

TEST_F(BusConnectionTest, NoAnswerArrivesOnceItsContextIsGone) {
    service().handle([](const QDBusMessage& call) { return call.createReply("answer"); });
    auto context = std::make_unique<QObject>();
    bus_->call(callOf("Question"), context.get(), [](const QDBusMessage&) { FAIL(); });
    context.reset();
    EXPECT_TRUE(eventually([&] { return service().calls().size() == 1; }));
    EXPECT_TRUE(hasArrived(service()));
}

TEST_F(BusConnectionTest, AnAnswerMayEndItsContext) {
    service().handle([](const QDBusMessage& call) { return call.createReply("answer"); });
    auto context = std::make_unique<QObject>();
    const auto token = std::make_shared<int>(7);
    int answers = 0;
    bus_->call(callOf("Question"), context.get(), [&, token](const QDBusMessage&) {
        context.reset();
        answers += *token;
    });
    EXPECT_TRUE(eventually([&] { return answers == 7; }));
}

TEST_F(BusConnectionTest, NoServiceIsStartedByACall) {
    offer("net.example.Sleeping");
    QString error;
    bus_->call({"net.example.Sleeping", "/", "net.example.Fake", "Wake"}, &context_,
               [&](const QDBusMessage& message) { error = message.errorName(); });
    EXPECT_TRUE(eventually([&] {
        return error == "org.freedesktop.DBus.Error.ServiceUnknown" ||
               error == "org.freedesktop.DBus.Error.NameHasNoOwner";
    })) << error.toStdString();
    EXPECT_FALSE(daemon_->hasStarted("net.example.Sleeping"));
}

TEST_F(BusConnectionTest, SignalsArriveOfTheKindThatWasAskedFor) {
    FakeService other(daemon_->address());
    QStringList heard;
    const auto note = [&heard](const QDBusMessage& message) {
        heard << message.arguments().value(0).toString();
    };
    bus_->listen({.service = service().uniqueName(),
                  .path = "/object",
                  .interface = "net.example.Fake",
                  .name = "Word",
                  .firstArgument = "yes"},
                 &context_, note);
    other.say("/object", "net.example.Fake", "Word", {"yes"});
    service().say("/other", "net.example.Fake", "Word", {"yes"});
    service().say("/object", "net.example.Other", "Word", {"yes"});
    service().say("/object", "net.example.Fake", "Other", {"yes"});
    service().say("/object", "net.example.Fake", "Word", {"no"});
    EXPECT_TRUE(hasArrived(other));
    EXPECT_TRUE(hasArrived(service()));
    EXPECT_EQ(heard, QStringList());
    service().say("/object", "net.example.Fake", "Word", {"yes", 7});
    EXPECT_TRUE(hasArrived(service()));
    EXPECT_EQ(heard, QStringList("yes"));
}

TEST_F(BusConnectionTest, NoSignalArrivesOnceItsContextIsGone) {
    auto context = std::make_unique<QObject>();
    int heard = 0;
    bus_->listen({.interface = "net.example.Fake", .name = "Word"}, context.get(),
                 [&](const QDBusMessage&) { ++heard; });
    service().say("/object", "net.example.Fake", "Word", {});
    EXPECT_TRUE(eventually([&] { return heard == 1; }));
    context.reset();
    service().say("/object", "net.example.Fake", "Word", {});
    EXPECT_TRUE(hasArrived(service()));
    EXPECT_EQ(heard, 1);
}

TEST_F(BusConnectionTest, ASignalMayEndItsContext) {
    auto context = std::make_unique<QObject>();
    const auto token = std::make_shared<int>(7);
    int heard = 0;
    bus_->listen({.interface = "net.example.Fake", .name = "Word"}, context.get(),
                 [&, token](const QDBusMessage&) {
                     context.reset();
                     heard += *token;
                 });
    service().say("/object", "net.example.Fake", "Word", {});
    service().say("/object", "net.example.Fake", "Word", {});
    EXPECT_TRUE(hasArrived(service()));
    EXPECT_EQ(heard, 7);
}

// Qt's own ways to a bus, which other parts of a desktop program go: `sessionBus` and
// `connectToBus`.
TEST_F(BusConnectionTest, TheDeathOfTheBusEndsNoProcess) {
    test::Process survivor = test::startCompanion(*daemon_, "survive");
    EXPECT_TRUE(eventually([this] {
        return service().sees("net.example.Survivor") &&
               service().sees("net.example.SecondSurvivor");
    }));
    service_.reset();
    daemon_->kill();
    const test::ProcessResult result = survivor.wait();
    EXPECT_TRUE(result.exitedWith(7)) << result.errorOutput;
}

TEST(BusValuesTest, VariantsWithinVariantsAreUnwrapped) {
    const QVariant inner = QVariant::fromValue(QDBusVariant(QVariant(7U)));
    EXPECT_EQ(unwrapped(QVariant::fromValue(QDBusVariant(inner))), QVariant(7U));
    EXPECT_EQ(unwrapped(QVariant(7U)), QVariant(7U));
    EXPECT_FALSE(unwrapped(QVariant()).isValid());
}

TEST(BusValuesTest, NoTypeIsConvertedIntoAnother) {
    EXPECT_EQ(valueOf<bool>(QVariant(true)), true);
    EXPECT_EQ(valueOf<bool>(QVariant(1)), std::nullopt);
    EXPECT_EQ(valueOf<std::uint32_t>(QVariant(1)), std::nullopt);
    EXPECT_EQ(valueOf<double>(QVariant("1.5")), std::nullopt);
    EXPECT_EQ(valueOf<bool>(QVariant()), std::nullopt);
}

}  // namespace
}  // namespace brimwatch
