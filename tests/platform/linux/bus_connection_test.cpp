#include "platform/linux/bus_connection.h"

#include "harness/environment_list.h"
#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

using test::EnvironmentList;

class BusConnectionTest : public test::PanelTest {};

TEST_F(BusConnectionTest, GoesWhereTheEnvironmentSays) {
    const EnvironmentList environment = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/some/bus"},
                                         {"XDG_RUNTIME_DIR", folder_.path()}};
    EXPECT_EQ(sessionBusAddress(environment.view()), "unix:path=/some/bus");
}

TEST_F(BusConnectionTest, GoesToTheBusOfTheUserElse) {
    const EnvironmentList environment = {{"XDG_RUNTIME_DIR", folder_.path()},
                                         {"DBUS_SESSION_BUS_ADDRESS", ""}};
    EXPECT_EQ(sessionBusAddress(environment.view()), busAddress());
}

TEST_F(BusConnectionTest, EscapesThePathOfTheBusOfTheUser) {
    const std::string odd = folder_.file("with, comma;~");
    test::writeFile(odd + "/bus", "");
    const EnvironmentList environment = {{"XDG_RUNTIME_DIR", odd}};
    EXPECT_EQ(sessionBusAddress(environment.view()),
              QString::fromStdString("unix:path=" + folder_.file("with%2C%20comma%3B%7E/bus")));
}

TEST_F(BusConnectionTest, GoesNowhereElse) {
    EXPECT_FALSE(sessionBusAddress(EnvironmentList({}).view()));
    EXPECT_FALSE(sessionBusAddress(EnvironmentList({{"XDG_RUNTIME_DIR", "."}}).view()));
    EXPECT_FALSE(sessionBusAddress(EnvironmentList({{"XDG_RUNTIME_DIR", "/nowhere"}}).view()));
}

TEST_F(BusConnectionTest, IsNobodyElsesAndClosedWhenItGoes) {
    startPanel();
    QString first;
    {
        BusConnection one(busAddress());
        BusConnection other(busAddress());
        ASSERT_TRUE(one->isConnected());
        first = one->baseService();
        EXPECT_NE(first, other->baseService());
    }
    ASSERT_TRUE(test::eventuallyInLoop([&] {
        return panel_
                   ->call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                          "NameHasOwner", {first})
                   .arguments() == QVariantList{false};
    }));
}

TEST_F(BusConnectionTest, TellsThatNobodyAnswers) {
    killBus();
    EXPECT_FALSE(BusConnection(busAddress())->isConnected());
    EXPECT_FALSE(BusConnection("nonsense")->isConnected());
}

}  // namespace
}  // namespace brimwatch
