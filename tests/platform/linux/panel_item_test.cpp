#include "platform/linux/panel_item.h"

#include <sys/prctl.h>

#include <limits>

#include "platform/linux/dbus_menu_types.h"
#include "platform/linux/number_picture.h"
#include "platform/linux/panel_item_fixture.h"

namespace brimwatch {
namespace {

using test::PanelItemTest;
using Kind = StatusItem::MenuRow::Kind;

TEST_F(PanelItemTest, StandsInThePanelThatIsThere) {
    startPanel();
    makeItem("LXQt");
    item_->setPicture(square(Qt::red));
    EXPECT_TRUE(panel_->items().isEmpty()) << "it is not to be shown yet";
    EXPECT_FALSE(item_->isVisible());
    item_->show();
    ASSERT_TRUE(hasItems(1));
    EXPECT_EQ(panel_->idOf(panel_->items()[0]), test::ringId);
    EXPECT_EQ(pixmapOf(ring()).bytes.first(4), QByteArray::fromHex("ffff0000"));
    EXPECT_TRUE(becomesVisible(true));
}

TEST_F(PanelItemTest, LeavesAnEmptyPlaceWithoutAPicture) {
    startPanel();
    showItem();
    ASSERT_TRUE(hasItems(1));
    EXPECT_EQ(pixmapOf(ring()).width, 22);
    EXPECT_EQ(pixmapOf(ring()).bytes, QByteArray(22 * 22 * 4, '\0'));
    item_->setPicture(square(Qt::red));
    EXPECT_NE(pixmapOf(ring()).bytes, QByteArray(22 * 22 * 4, '\0'));
    item_->setPicture({});
    EXPECT_EQ(pixmapOf(ring()).bytes, QByteArray(22 * 22 * 4, '\0'));
}

TEST_F(PanelItemTest, TellsTheNumberInEveryText) {
    startPanel();
    showItem("LXQt");
    ASSERT_TRUE(hasItems(1));
    const QString service = ring();
    EXPECT_EQ(panel_->property(service, "Title"), "Brimwatch?");
    EXPECT_EQ(panel_->property(service, "XAyatanaLabel"), "");
    item_->setTitle("42%");
    item_->setMenu({{Kind::text, 0, "Claude <work> & home"},
                    {Kind::separator, 0, ""},
                    {Kind::text, 0, "Codex 7%"},
                    {Kind::command, 1, "열기"}});
    EXPECT_EQ(panel_->property(service, "Title"), "Brimwatch? 42%");
    EXPECT_EQ(panel_->property(service, "IconAccessibleDesc"), "Brimwatch? 42%");
    EXPECT_EQ(panel_->property(service, "XAyatanaLabel"), "42%");
    const auto toolTip = qdbus_cast<NotifierToolTip>(panel_->property(service, "ToolTip"));
    EXPECT_EQ(toolTip.title, "Brimwatch? 42%");
    EXPECT_EQ(toolTip.description, "Claude &lt;work&gt; &amp; home\nCodex 7%");
}

TEST_F(PanelItemTest, SendsNoFrameThatLooksLikeTheLast) {
    startPanel();
    showItem();
    ASSERT_TRUE(hasItems(1));
    item_->setPicture(square(Qt::red));
    settle();
    test::SignalLog told(panel_->connection(), ring());
    for (int i = 0; i < 5; ++i)
        item_->setPicture(square(Qt::red));
    settle();
    EXPECT_EQ(told.count("NewIcon"), 0);
    item_->setPicture(square(Qt::blue));
    settle();
    EXPECT_EQ(told.count("NewIcon"), 1);
}

TEST_F(PanelItemTest, KeepsThePixelsOfAPictureThatIsDrawnOver) {
    startPanel();
    showItem();
    QByteArray memory(22 * 22 * 4, '\x7f');
    const QImage picture(reinterpret_cast<uchar*>(memory.data()), 22, 22, QImage::Format_ARGB32);
    item_->setPicture(picture);
    memory.fill('\x20');
    item_->setPicture(picture);
    ASSERT_TRUE(hasItems(1));
    EXPECT_EQ(pixmapOf(ring()).bytes, QByteArray(22 * 22 * 4, '\x20'));
}

TEST_F(PanelItemTest, HoldsTheNumberInASecondItem) {
    startPanel();
    makeItem("LXQt");
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    EXPECT_EQ(panel_->idOf(panel_->items()[0]), test::ringId);
    EXPECT_EQ(panel_->idOf(panel_->items()[1]), test::numberId);
    NotifierPixmap expected;
    writePixmap(numberSquare("42", item_->look()), expected);
    EXPECT_EQ(pixmapOf(number()), expected);
    EXPECT_EQ(panel_->property(number(), "XAyatanaLabel"), "");
    EXPECT_EQ(panel_->property(number(), "Title"), "Brimwatch? 42%");
}

TEST_F(PanelItemTest, ComesLastWherePanelsPutNewItemsOnTheLeft) {
    startPanel();
    showItem("XFCE");
    ASSERT_TRUE(hasItems(2));
    EXPECT_EQ(panel_->idOf(panel_->items()[0]), test::numberId);
    EXPECT_EQ(panel_->idOf(panel_->items()[1]), test::ringId);
    EXPECT_EQ(panel_->property(ring(), "Status"), "Active");
}

TEST_F(PanelItemTest, HidesTheItemOfAMissingNumberOnceSuchAPanelKnowsIt) {
    startPanel();
    showItem("XFCE");
    ASSERT_TRUE(hasItems(2));
    const QString service = number();
    const auto isPassive = [&] { return panel_->property(service, "Status") == "Passive"; };
    EXPECT_TRUE(test::eventuallyInLoop(isPassive));
    test::SignalLog told(panel_->connection(), service);
    item_->setTitle("42%");
    item_->setTitle("41%");
    settle();
    EXPECT_EQ(told.count("NewStatus"), 1);
    EXPECT_EQ(told.last("NewStatus"), QVariantList{"Active"});
    EXPECT_FALSE(isPassive());
    item_->setTitle("");
    EXPECT_TRUE(isPassive());
    EXPECT_EQ(panel_->items().size(), 2);
}

TEST_F(PanelItemTest, ChangesTheSecondItemOnlyWithTheNumber) {
    startPanel();
    makeItem("LXQt");
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    test::SignalLog told(panel_->connection(), number());
    for (const Qt::GlobalColor color : {Qt::red, Qt::blue, Qt::green})
        item_->setPicture(square(color));
    item_->setTitle("42%");
    settle();
    EXPECT_EQ(told.count("NewIcon"), 0);
    item_->setTitle("41%");
    settle();
    EXPECT_EQ(told.count("NewIcon"), 1);
}

TEST_F(PanelItemTest, TakesTheSecondItemAwayWithTheNumber) {
    startPanel();
    makeItem("KDE");
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    item_->setTitle("");
    EXPECT_TRUE(test::eventuallyInLoop([this] { return number().isEmpty(); }));
    item_->setTitle("7%");
    ASSERT_TRUE(hasItems(3));
    EXPECT_FALSE(number().isEmpty());
}

TEST_F(PanelItemTest, HasNoSecondItemWhereThePanelShowsLabels) {
    startPanel();
    makeItem("ubuntu:GNOME");
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(1));
    settle();
    EXPECT_EQ(panel_->items().size(), 1);
    EXPECT_EQ(pixmapOf(ring()).width, 22);
    EXPECT_EQ(panel_->property(ring(), "XAyatanaLabel"), "42%");
}

// The program that shows the items is this one.
class PanelItemInWaybar : public PanelItemTest {
  protected:
    PanelItemInWaybar() { ::prctl(PR_SET_NAME, "waybar"); }
    ~PanelItemInWaybar() override { ::prctl(PR_SET_NAME, "panel_test"); }

    void showItemWithNumber() {
        startPanel();
        makeItem("sway");
        item_->setPicture(square(Qt::red));
        item_->setTitle("42%");
        item_->show();
        ASSERT_TRUE(hasItems(1));
        settle();
    }
};

TEST_F(PanelItemInWaybar, HoldsTheNumberInAWidePicture) {
    showItemWithNumber();
    EXPECT_EQ(panel_->items().size(), 1);
    const NotifierPixmap wide = pixmapOf(ring());
    EXPECT_EQ(wide.height, 22);
    EXPECT_GT(wide.width, 44);
    EXPECT_EQ(wide.bytes.first(4), QByteArray::fromHex("ffff0000"));
    EXPECT_DOUBLE_EQ(item_->look().scale, 1);
    EXPECT_TRUE(item_->look().isDark);
    item_->setTitle("");
    EXPECT_EQ(pixmapOf(ring()).width, 22);
}

TEST_F(PanelItemInWaybar, MovesAWidePictureWithItsPixels) {
    showItemWithNumber();
    const NotifierPixmap before = pixmapOf(ring());
    test::SignalLog told(panel_->connection(), ring());
    item_->setPicture(square(Qt::red));
    item_->setPicture(square(Qt::blue));
    settle();
    EXPECT_EQ(told.count("NewIcon"), 1);
    EXPECT_EQ(pixmapOf(ring()).width, before.width);
    EXPECT_EQ(pixmapOf(ring()).bytes.first(4), QByteArray::fromHex("ff0000ff"));
}

TEST_F(PanelItemInWaybar, AsksWhoSaysThatItShowsTheItems) {
    test::OwnConnection host(busAddress());
    ASSERT_TRUE(host->registerService("org.kde.StatusNotifierHost-1-test"));
    showItemWithNumber();
    EXPECT_GT(pixmapOf(ring()).width, 44);
}

TEST_F(PanelItemTest, TellsWhereItWasClicked) {
    startPanel();
    makeItem();
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    panel_->callItem(ring(), "ProvideXdgActivationToken", {"token"});
    panel_->callItem(ring(), "Activate", {12, 34});
    panel_->callItem(number(), "Activate", {56, 78});
    ASSERT_EQ(clicks_.size(), 2U);
    EXPECT_EQ(clicks_[0].first, QPoint(12, 34));
    EXPECT_EQ(clicks_[0].second, "token");
    EXPECT_EQ(clicks_[1].first, QPoint(56, 78));
}

TEST_F(PanelItemTest, BelievesNoPlaceOffTheScreens) {
    startPanel();
    showItem();
    ASSERT_TRUE(hasItems(1));
    constexpr int largest = std::numeric_limits<int>::max();
    for (const int place : {-1, 100000, largest, -largest - 1})
        panel_->callItem(ring(), "Activate", {place, 10});
    ASSERT_EQ(clicks_.size(), 4U);
    for (const auto& [position, token] : clicks_)
        EXPECT_FALSE(position);
}

TEST_F(PanelItemTest, BelievesNoPlaceOnWayland) {
    environment_.set("WAYLAND_DISPLAY", "wayland-0");
    startPanel();
    showItem();
    ASSERT_TRUE(hasItems(1));
    panel_->callItem(ring(), "Activate", {12, 34});
    ASSERT_EQ(clicks_.size(), 1U);
    EXPECT_FALSE(clicks_[0].first);
}

TEST_F(PanelItemTest, HasTheSameMenuOnBothItems) {
    startPanel();
    makeItem();
    item_->setTitle("42%");
    item_->setMenu({{Kind::command, 5, "열기"}});
    item_->show();
    ASSERT_TRUE(hasItems(2));
    for (const QString& service : {ring(), number()}) {
        const QDBusMessage reply = panel_->callMenu(service, "GetLayout", {0, -1, QStringList()});
        const auto layout = qdbus_cast<DBusMenuLayout>(reply.arguments().at(1));
        ASSERT_EQ(layout.children.size(), 1);
        EXPECT_EQ(layout.children[0].properties.value("label"), "열기");
        panel_->callMenu(service, "AboutToShow", {0});
        panel_->callMenu(
            service, "Event",
            {layout.children[0].id, "clicked", QVariant::fromValue(QDBusVariant(0)), 0U});
    }
    EXPECT_EQ(openings_, 2);
    EXPECT_EQ(chosen_, (std::vector<int>{5, 5}));
}

TEST_F(PanelItemTest, MayLoseTheNumberByAClickOnIt) {
    startPanel();
    makeItem("LXQt");
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    QObject::connect(item_.get(), &StatusItem::activated, application_.get(),
                     [this] { item_->setTitle(""); });
    panel_->callItem(number(), "Activate", {1, 2});
    EXPECT_TRUE(test::eventuallyInLoop([this] { return number().isEmpty(); }));
    EXPECT_FALSE(ring().isEmpty());
}

TEST_F(PanelItemTest, FollowsTheDesktopBetweenLightAndDark) {
    startPanel();
    showItem("KDE");
    EXPECT_FALSE(item_->look().isDark);
    EXPECT_LT(item_->look().ink.lightness(), 80);
    appearance_.choose(true);
    EXPECT_EQ(looks_, 1);
    EXPECT_TRUE(item_->look().isDark);
    EXPECT_GT(item_->look().ink.lightness(), 200);
}

TEST_F(PanelItemTest, IsDarkInTheBarOfGnomeWhateverTheDesktopIs) {
    makeItem("GNOME");
    EXPECT_TRUE(item_->look().isDark);
    appearance_.choose(true);
    appearance_.choose(false);
    EXPECT_EQ(looks_, 0);
}

// Stands where the desktop keeps its settings.
class FakeXfconf : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.xfce.Xfconf")

  public:
    explicit FakeXfconf(const QString& address) : connection_(address) {
        EXPECT_TRUE(connection_->registerObject("/org/xfce/Xfconf", this,
                                                QDBusConnection::ExportAllContents));
        EXPECT_TRUE(connection_->registerService("org.xfce.Xfconf"));
    }

    void setDark(bool isDark) {
        isDark_ = isDark;
        emit PropertyChanged("xfce4-panel", "/panels/dark-mode", QDBusVariant(isDark));
        emit PropertyChanged("xfce4-panel", "/panels/panel-1/size", QDBusVariant(7));
        emit PropertyChanged("xsettings", "/panels/dark-mode", QDBusVariant(!isDark));
    }

  public slots:
    QDBusVariant GetProperty(const QString& channel, const QString& name) {
        EXPECT_EQ(channel, "xfce4-panel");
        EXPECT_EQ(name, "/panels/dark-mode");
        return QDBusVariant(isDark_);
    }

  signals:
    void PropertyChanged(const QString& channel, const QString& name, const QDBusVariant& value);

  private:
    test::OwnConnection connection_;
    bool isDark_ = true;
};

TEST_F(PanelItemTest, IsDarkInAPanelOfXfceThatIsSetToBeDark) {
    FakeXfconf settings(busAddress());
    startPanel();
    showItem("XFCE");
    ASSERT_TRUE(test::eventuallyInLoop([this] { return item_->look().isDark; }));
    EXPECT_EQ(looks_, 1);
    settings.setDark(false);
    ASSERT_TRUE(test::eventuallyInLoop([this] { return !item_->look().isDark; }));
    settings.setDark(true);
    ASSERT_TRUE(test::eventuallyInLoop([this] { return item_->look().isDark; }));
    settle();
    EXPECT_EQ(looks_, 3);
}

TEST_F(PanelItemTest, DrawsTheNumberAnewInAnotherInk) {
    startPanel();
    makeItem("KDE");
    item_->setTitle("42%");
    item_->show();
    ASSERT_TRUE(hasItems(2));
    const NotifierPixmap before = pixmapOf(number());
    appearance_.choose(true);
    EXPECT_NE(pixmapOf(number()), before);
}

TEST_F(PanelItemTest, HasPicturesOfAWholeNumberOfPixels) {
    makeItem();
    EXPECT_DOUBLE_EQ(item_->look().scale * 20, 22);
}

}  // namespace
}  // namespace brimwatch

#include "panel_item_test.moc"
