#include "platform/linux/own_bus.h"

#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

class OwnBusTest : public test::PanelTest {};

TEST_F(OwnBusTest, IsNobodyElsesAndClosedWhenItGoes) {
    startPanel();
    QString first;
    {
        OwnBus one(busAddress());
        OwnBus other(busAddress());
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

TEST_F(OwnBusTest, TellsThatNobodyAnswers) {
    killBus();
    EXPECT_FALSE(OwnBus(busAddress())->isConnected());
    EXPECT_FALSE(OwnBus("nonsense")->isConnected());
}

}  // namespace
}  // namespace brimwatch
