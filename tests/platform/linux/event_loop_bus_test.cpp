#include "platform/linux/event_loop_bus.h"

#include <csignal>
#include <filesystem>
#include <iterator>
#include <optional>

#include "harness/environment_list.h"
#include "platform/linux/bus_link.h"
#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

class EventLoopBusTest : public test::PanelTest {
  protected:
    void connectToBus() {
        connection_.emplace(busAddress());
        QObject::connect(&*connection_, &EventLoopBus::closed, &*connection_,
                         [this] { ++closings_; });
        ASSERT_TRUE(test::eventuallyInLoop([this] { return connection_->isOpen(); }));
    }
    BusMessage question(const char* service, const char* method) {
        return connection_->newCall(service, "/", "net.example", method);
    }
    static std::size_t threadCount() {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
    }

    std::optional<EventLoopBus> connection_;
    int closings_ = 0;
};

TEST_F(EventLoopBusTest, HasANameOfItsOwnAndGoesWithItsOwner) {
    startPanel();
    connectToBus();
    EventLoopBus other(busAddress());
    ASSERT_TRUE(test::eventuallyInLoop([&] { return other.isOpen(); }));
    const std::string name = connection_->name();
    EXPECT_NE(name, other.name());
    connection_.reset();
    EXPECT_TRUE(test::eventuallyInLoop([&] {
        return panel_
                   ->call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                          "NameHasOwner", {QString::fromStdString(name)})
                   .arguments() == QVariantList{false};
    }));
}

TEST_F(EventLoopBusTest, StartsNoThread) {
    const std::size_t before = threadCount();
    connectToBus();
    EXPECT_EQ(threadCount(), before);
}

TEST_F(EventLoopBusTest, TellsLaterThatNobodyIsThere) {
    killBus();
    for (const QString& address :
         {busAddress(), QStringLiteral("nonsense"), QStringLiteral("unix:path="), QString()}) {
        closings_ = 0;
        connection_.emplace(address);
        QObject::connect(&*connection_, &EventLoopBus::closed, &*connection_,
                         [this] { ++closings_; });
        EXPECT_EQ(closings_, 0);
        EXPECT_TRUE(test::eventuallyInLoop([this] { return closings_ > 0; }))
            << address.toStdString();
        EXPECT_EQ(closings_, 1);
        EXPECT_FALSE(connection_->isOpen());
    }
}

TEST_F(EventLoopBusTest, TellsOnceThatItsBusDied) {
    connectToBus();
    killBus();
    EXPECT_TRUE(test::eventuallyInLoop([this] { return closings_ > 0; }));
    connection_->send(connection_->newSignal("/", "net.example", "Late"));
    QCoreApplication::processEvents();
    EXPECT_EQ(closings_, 1);
    EXPECT_EQ(connection_->name(), "");
}

TEST_F(EventLoopBusTest, GivesTheAnswerEvenIfItIsAnError) {
    connectToBus();
    std::string error;
    connection_->call(
        question("net.example.Nobody", "Ask"), &*connection_,
        [&](sd_bus_message* answer) { error = sd_bus_message_get_error(answer)->name; });
    EXPECT_TRUE(test::eventuallyInLoop([&] { return !error.empty(); }));
    EXPECT_EQ(error, "org.freedesktop.DBus.Error.ServiceUnknown");
}

TEST_F(EventLoopBusTest, GivesNoAnswerToWhoIsGone) {
    connectToBus();
    int answers = 0;
    {
        const QObject gone;
        connection_->call(question("net.example.Nobody", "Ask"), &gone,
                          [&](sd_bus_message*) { answers += 100; });
    }
    connection_->call(question("net.example.Nobody", "Ask"), &*connection_,
                      [&](sd_bus_message*) { ++answers; });
    EXPECT_TRUE(test::eventuallyInLoop([&] { return answers != 0; }));
    EXPECT_EQ(answers, 1);
}

TEST_F(EventLoopBusTest, MayGoWhileAnAnswerIsHeard) {
    connectToBus();
    connection_->call(question("net.example.Nobody", "Ask"), &*connection_,
                      [this](sd_bus_message*) { connection_.reset(); });
    EXPECT_TRUE(test::eventuallyInLoop([this] { return !connection_; }));
}

TEST_F(EventLoopBusTest, MayGoWithQuestionsThatNobodyAnswered) {
    connectToBus();
    connection_->call(question("net.example.Nobody", "Ask"), &*connection_,
                      [](sd_bus_message*) { FAIL(); });
    connection_.reset();
    QCoreApplication::processEvents();
}

TEST_F(EventLoopBusTest, DropsWhatIsSentBeforeItIsOpen) {
    connection_.emplace(busAddress());
    EXPECT_EQ(connection_->newSignal("/", "net.example", "Early"), nullptr);
    EXPECT_EQ(question("net.example", "Early"), nullptr);
    connection_->send(nullptr);
    connection_->call(nullptr, &*connection_, [](sd_bus_message*) { FAIL(); });
    EXPECT_TRUE(test::eventuallyInLoop([this] { return connection_->isOpen(); }));
}

class BusLinkTest : public EventLoopBusTest {
  protected:
    void open() {
        environment_.set("DBUS_SESSION_BUS_ADDRESS", busAddress().toStdString());
        link_.emplace(environment_.view(), 20ms);
        QObject::connect(&*link_, &BusLink::opened, &*link_, [this] { ++openings_; });
        QObject::connect(&*link_, &BusLink::missing, &*link_, [this] { ++losses_; });
        link_->open();
    }

    test::EnvironmentList environment_ = {};
    std::optional<BusLink> link_;
    int openings_ = 0;
    int losses_ = 0;
};

// It takes connections, since the system does that for it.
TEST_F(BusLinkTest, DoesNotWaitForABusThatIsStopped) {
    bus_->signal(SIGSTOP);
    open();
    EXPECT_EQ(link_->connection(), nullptr);
    EXPECT_TRUE(test::eventuallyInLoop([this] { return losses_ > 0; }));
    EXPECT_EQ(openings_, 0);
    bus_->signal(SIGCONT);
    EXPECT_TRUE(test::eventuallyInLoop([this] { return openings_ > 0; }));
    EXPECT_NE(link_->connection(), nullptr);
    EXPECT_EQ(losses_, 1);
}

TEST_F(BusLinkTest, HasAnotherConnectionToTheNextBus) {
    open();
    for (int i = 1; i < 4; ++i) {
        ASSERT_TRUE(test::eventuallyInLoop([&] { return openings_ == i; }));
        killBus();
        ASSERT_TRUE(test::eventuallyInLoop([&] { return losses_ == i; }));
        EXPECT_EQ(link_->connection(), nullptr);
        startBus();
    }
}

TEST_F(BusLinkTest, SaysAtOnceThatTheEnvironmentNamesNone) {
    link_.emplace(environment_.view(), 20ms);
    QObject::connect(&*link_, &BusLink::missing, &*link_, [this] { ++losses_; });
    link_->open();
    EXPECT_EQ(losses_, 1);
}

}  // namespace
}  // namespace brimwatch
