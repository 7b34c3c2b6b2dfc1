#include <unistd.h>

#include <QDBusConnection>

#include "platform/linux/panel_item.h"
#include "platform/linux/panel_item_fixture.h"

namespace brimwatch {
namespace {

// Panels and buses that come late, die and return.
class PanelItemBusTest : public test::PanelItemTest {
  protected:
    void SetUp() override {
        PanelItemTest::SetUp();
        messages_.clear();
        formerHandler_ = qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext& context, const QString& text) {
                if (QByteArray(context.category) == "net.quillmoor.brimwatch.panel")
                    messages_.append(text);
            });
    }
    void TearDown() override { qInstallMessageHandler(formerHandler_); }

    static inline QStringList messages_;

  private:
    QtMessageHandler formerHandler_ = nullptr;
};

TEST_F(PanelItemBusTest, WaitsForAPanelThatComesLate) {
    showItem();
    item_->setPicture(square(Qt::red));
    item_->setTitle("42%");
    EXPECT_TRUE(becomesVisible(false));
    startPanel();
    ASSERT_TRUE(hasItems(2));
    EXPECT_EQ(pixmapOf(ring()).bytes.first(4), QByteArray::fromHex("ffff0000"));
    EXPECT_TRUE(becomesVisible(true));
    EXPECT_EQ(visible_.back(), true);
    EXPECT_TRUE(messages_.isEmpty());
}

TEST_F(PanelItemBusTest, StandsInEveryPanelThatFollowsOneThatDied) {
    startPanel();
    makeItem();
    item_->setTitle("42%");
    item_->show();
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(hasItems(2)) << i;
        EXPECT_FALSE(ring().isEmpty());
        EXPECT_FALSE(number().isEmpty());
        panel_.reset();
        ASSERT_TRUE(becomesVisible(false));
        startPanel();
    }
    ASSERT_TRUE(hasItems(2));
    EXPECT_TRUE(becomesVisible(true));
}

TEST_F(PanelItemBusTest, ShowsInTheNextPanelWhatWasSetBetweenTwo) {
    startPanel();
    showItem();
    ASSERT_TRUE(hasItems(1));
    panel_.reset();
    ASSERT_TRUE(becomesVisible(false));
    item_->setPicture(square(Qt::green));
    item_->setTitle("7%");
    startPanel();
    ASSERT_TRUE(hasItems(2));
    EXPECT_EQ(panel_->property(ring(), "Title"), "Brimwatch? 7%");
    EXPECT_EQ(pixmapOf(ring()).bytes.first(4), QByteArray::fromHex("ff00ff00"));
}

TEST_F(PanelItemBusTest, IsNotVisibleWhereNobodyShowsTheItemsOfAPanel) {
    startPanel();
    showItem();
    ASSERT_TRUE(hasItems(1));
    ASSERT_TRUE(becomesVisible(true));
    panel_->setHasHost(false);
    EXPECT_TRUE(becomesVisible(false));
    panel_->setHasHost(true);
    EXPECT_TRUE(becomesVisible(true));
}

TEST_F(PanelItemBusTest, OutlivesItsBusAndReturnsWithTheNext) {
    startPanel();
    makeItem();
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(becomesVisible(true));
        killBus();
        ASSERT_TRUE(becomesVisible(false));
        item_->setPicture(square(Qt::blue));
        startBus();
        startPanel();
        ASSERT_TRUE(hasItems(2)) << i;
        EXPECT_EQ(pixmapOf(ring()).bytes.first(4), QByteArray::fromHex("ff0000ff"));
    }
    EXPECT_EQ(messages_.size(), 3) << "once for each death";
}

TEST_F(PanelItemBusTest, LooksForABusThatWasNotThereAndSaysSoOnce) {
    killBus();
    showItem();
    EXPECT_FALSE(item_->isVisible());
    for (int i = 0; i < 3; ++i) {
        const qsizetype before = messages_.size();
        item_->setTitle(QString::number(i) + '%');
        EXPECT_EQ(messages_.size(), before);
    }
    startBus();
    startPanel();
    ASSERT_TRUE(hasItems(2));
    EXPECT_EQ(panel_->property(ring(), "Title"), "Brimwatch? 2%");
    EXPECT_EQ(messages_.size(), 1);
}

TEST_F(PanelItemBusTest, GoesFromThePanelWithTheProgram) {
    startPanel();
    makeItem();
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    item_.reset();
    EXPECT_TRUE(test::eventuallyInLoop([this] { return ring().isEmpty() && number().isEmpty(); }));
}

// Other parts of the program use the connection that Qt shares. libdbus would end the program with
// that one, if it were left to. In a process of its own, since that connection can't be had twice.
TEST_F(PanelItemBusTest, OutlivesTheBusOfTheSharedConnectionToo) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto loseSharedBus = [this] {
        qputenv("DBUS_SESSION_BUS_ADDRESS", busAddress().toUtf8());
        QDBusConnection shared = QDBusConnection::sessionBus();
        if (!shared.isConnected()) return 3;
        killBus();
        return test::eventuallyInLoop([&] { return !shared.isConnected(); }) ? 0 : 4;
    };
    EXPECT_EXIT(::_exit(loseSharedBus()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace brimwatch
