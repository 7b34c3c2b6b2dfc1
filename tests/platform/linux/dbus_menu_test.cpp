#include "platform/linux/dbus_menu.h"

#include <limits>

#include "platform/linux/dbus_menu_types.h"
#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

using Row = StatusItem::MenuRow;
using Kind = Row::Kind;

const std::vector<Row> rows = {{Kind::text, 0, "Claude 42%"},
                               {Kind::text, 0, "Codex 7%"},
                               {Kind::separator, 0, ""},
                               {Kind::command, 1, "열기"},
                               {Kind::command, 2, "snake_case"}};

class DBusMenuTest : public test::PanelTest {
  protected:
    void SetUp() override {
        PanelTest::SetUp();
        startPanel();
        connection_.emplace(busAddress());
        ASSERT_TRUE(test::eventuallyInLoop([this] { return connection_->isOpen(); }));
        menu_ = std::make_unique<DBusMenu>();
        QObject::connect(menu_.get(), &DBusMenu::opened, menu_.get(), [this] {
            ++openings_;
            if (whenOpened_) whenOpened_();
        });
        QObject::connect(menu_.get(), &DBusMenu::commandChosen, menu_.get(),
                         [this](int id) { chosen_.push_back(id); });
        ASSERT_TRUE(menu_->exportOn(*connection_));
        service_ = QString::fromStdString(connection_->name());
        signals_ = std::make_unique<test::SignalLog>(panel_->connection(), service_);
        menu_->setRows(rows);
        layout();
        signals_->clear();
    }

    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        return panel_->callMenu(service_, method, arguments);
    }
    QDBusMessage getLayout(int parent, int depth, const QStringList& names = {}) {
        return call("GetLayout", {parent, depth, names});
    }
    DBusMenuLayout layout() {
        const QDBusMessage reply = getLayout(0, -1);
        EXPECT_EQ(reply.signature(), "u(ia{sv}av)");
        revision_ = reply.arguments().at(0).toUInt();
        return qdbus_cast<DBusMenuLayout>(reply.arguments().at(1));
    }
    QList<int> ids() {
        QList<int> found;
        for (const DBusMenuLayout& child : layout().children)
            found.append(child.id);
        return found;
    }
    QDBusMessage send(int id, const QString& event) {
        return call("Event", {id, event, QVariant::fromValue(QDBusVariant(0)), 0U});
    }
    int count(const QString& signal) {
        layout();
        QCoreApplication::processEvents();
        return signals_->count(signal);
    }

    std::optional<EventLoopBus> connection_;
    std::unique_ptr<DBusMenu> menu_;
    std::unique_ptr<test::SignalLog> signals_;
    std::function<void()> whenOpened_;
    std::vector<int> chosen_;
    int openings_ = 0;
    uint revision_ = 0;
    QString service_;
};

TEST_F(DBusMenuTest, ListsItsRowsBelowARootFromTopToBottom) {
    const DBusMenuLayout root = layout();
    EXPECT_EQ(root.id, 0);
    EXPECT_EQ(root.properties, QVariantMap({{"children-display", "submenu"}}));
    ASSERT_EQ(root.children.size(), 5);
    const QVariantMap text = {{"label", "Claude 42%"}, {"enabled", false}};
    EXPECT_EQ(root.children[0].properties, text);
    EXPECT_EQ(root.children[2].properties, QVariantMap({{"type", "separator"}}));
    EXPECT_EQ(root.children[3].properties, QVariantMap({{"label", "열기"}}));
    EXPECT_EQ(root.children[4].properties, QVariantMap({{"label", "snake__case"}}));
    for (const DBusMenuLayout& child : root.children)
        EXPECT_TRUE(child.children.isEmpty());
}

TEST_F(DBusMenuTest, GivesEveryRowAnIdOfItsOwn) {
    const QList<int> found = ids();
    EXPECT_EQ(QSet<int>(found.begin(), found.end()).size(), 5);
    EXPECT_FALSE(found.contains(0));
}

TEST_F(DBusMenuTest, GivesOnlyWhatIsAskedFor) {
    const auto bare = qdbus_cast<DBusMenuLayout>(getLayout(0, 0).arguments().at(1));
    EXPECT_TRUE(bare.children.isEmpty());
    const auto labels = qdbus_cast<DBusMenuLayout>(getLayout(0, 1, {"label"}).arguments().at(1));
    EXPECT_TRUE(labels.properties.isEmpty());
    ASSERT_EQ(labels.children.size(), 5);
    EXPECT_EQ(labels.children[0].properties, QVariantMap({{"label", "Claude 42%"}}));
    const int command = ids()[3];
    const auto row = qdbus_cast<DBusMenuLayout>(getLayout(command, -1).arguments().at(1));
    EXPECT_EQ(row.id, command);
    EXPECT_EQ(row.properties, QVariantMap({{"label", "열기"}}));
}

TEST_F(DBusMenuTest, TakesAnyDepth) {
    for (const int depth :
         {-1, 1, 1000000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const auto found = qdbus_cast<DBusMenuLayout>(getLayout(0, depth).arguments().at(1));
        EXPECT_EQ(found.children.size(), 5) << depth;
    }
}

TEST_F(DBusMenuTest, GivesPropertiesOfSomeRowsOrOfAll) {
    const QList<int> some = {ids()[0], 12345, ids()[2], ids()[0]};
    const QDBusMessage reply =
        call("GetGroupProperties", {QVariant::fromValue(some), QStringList{}});
    const auto found = qdbus_cast<QList<DBusMenuItem>>(reply.arguments().constFirst());
    ASSERT_EQ(found.size(), 2);
    EXPECT_EQ(found[0].id, some[0]);
    EXPECT_EQ(found[0].properties.value("label"), "Claude 42%");
    EXPECT_EQ(found[1].properties.value("type"), "separator");
    const QDBusMessage all =
        call("GetGroupProperties", {QVariant::fromValue(QList<int>()), QStringList{"type"}});
    EXPECT_EQ(qdbus_cast<QList<DBusMenuItem>>(all.arguments().constFirst()).size(), 6);
}

TEST_F(DBusMenuTest, GivesASingleProperty) {
    const QDBusMessage reply = call("GetProperty", {ids()[3], "label"});
    EXPECT_EQ(reply.arguments().constFirst().value<QDBusVariant>().variant(), "열기");
    EXPECT_EQ(call("GetProperty", {ids()[3], "type"}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call("GetProperty", {12345, "label"}).type(), QDBusMessage::ErrorMessage);
}

TEST_F(DBusMenuTest, TellsWhatMenuItIs) {
    const QDBusMessage reply = panel_->call(service_, "/MenuBar", "org.freedesktop.DBus.Properties",
                                            "GetAll", {"com.canonical.dbusmenu"});
    const QVariantMap expected = {{"Version", 3U},
                                  {"TextDirection", "ltr"},
                                  {"Status", "normal"},
                                  {"IconThemePath", QStringList()}};
    EXPECT_EQ(qdbus_cast<QVariantMap>(reply.arguments().constFirst()), expected);
    const QDBusMessage description =
        panel_->call(service_, "/MenuBar", "org.freedesktop.DBus.Introspectable", "Introspect");
    EXPECT_TRUE(description.arguments().constFirst().toString().contains("GetGroupProperties"));
}

TEST_F(DBusMenuTest, TellsOfTheCommandThatWasClicked) {
    send(ids()[3], "clicked");
    send(ids()[4], "clicked");
    EXPECT_EQ(chosen_, (std::vector<int>{1, 2}));
}

TEST_F(DBusMenuTest, ChoosesNothingByOtherEvents) {
    for (const char* event : {"hovered", "opened", "closed", "", "x-vendor"})
        EXPECT_EQ(send(ids()[3], event).type(), QDBusMessage::ReplyMessage);
    for (const int id : {0, ids()[0], ids()[2]})
        EXPECT_EQ(send(id, "clicked").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(send(12345, "clicked").errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_EQ(send(-3, "clicked").type(), QDBusMessage::ErrorMessage);
    EXPECT_TRUE(chosen_.empty());
}

TEST_F(DBusMenuTest, TakesEventsByTheGroupAndTellsWhichIdsItDoesNotKnow) {
    const QDBusVariant data(0);
    const QList<DBusMenuEvent> events = {
        {ids()[3], "clicked", data, 0}, {777, "clicked", data, 0}, {ids()[4], "clicked", data, 0}};
    const QDBusMessage reply = call("EventGroup", {QVariant::fromValue(events)});
    EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().constFirst()), QList<int>{777});
    EXPECT_EQ(chosen_, (std::vector<int>{1, 2}));
}

TEST_F(DBusMenuTest, IsAnnouncedOnceAtEachOpening) {
    call("AboutToShow", {0});
    send(0, "opened");
    EXPECT_EQ(openings_, 1);
    send(0, "closed");
    send(0, "opened");
    EXPECT_EQ(openings_, 2) << "a panel that does not ask before";
    send(0, "closed");
    call("AboutToShow", {0});
    send(0, "closed");
    send(0, "opened");
    EXPECT_EQ(openings_, 4) << "one that forgot to tell of an opening";
    call("AboutToShowGroup", {QVariant::fromValue(QList<int>{0})});
    EXPECT_EQ(openings_, 5);
    call("AboutToShow", {ids()[3]});
    EXPECT_EQ(openings_, 5);
}

TEST_F(DBusMenuTest, TellsWhetherTheOpeningChangedIt) {
    EXPECT_EQ(call("AboutToShow", {0}).arguments(), QVariantList{false});
    whenOpened_ = [this] { menu_->setRows({{Kind::command, 1, "열기"}}); };
    EXPECT_EQ(call("AboutToShow", {0}).arguments(), QVariantList{true});
    whenOpened_ = [this] { menu_->setRows(rows); };
    const QDBusMessage reply = call("AboutToShowGroup", {QVariant::fromValue(QList<int>{0, 999})});
    EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().at(0)), QList<int>{0});
    EXPECT_EQ(qdbus_cast<QList<int>>(reply.arguments().at(1)), QList<int>{999});
    EXPECT_EQ(call("AboutToShow", {999}).type(), QDBusMessage::ErrorMessage);
}

TEST_F(DBusMenuTest, SendsNewLabelsAloneWhileTheRowsAreTheSame) {
    const QList<int> before = ids();
    std::vector<Row> changed = rows;
    changed[0].label = "Claude 41%";
    menu_->setRows(changed);
    EXPECT_EQ(count("LayoutUpdated"), 0);
    ASSERT_EQ(count("ItemsPropertiesUpdated"), 1);
    const QVariantList arguments = signals_->last("ItemsPropertiesUpdated");
    const auto updated = qdbus_cast<QList<DBusMenuItem>>(arguments.at(0));
    ASSERT_EQ(updated.size(), 1);
    EXPECT_EQ(updated[0].id, before[0]);
    EXPECT_EQ(updated[0].properties.value("label"), "Claude 41%");
    EXPECT_TRUE(qdbus_cast<QList<DBusMenuRemovedProperties>>(arguments.at(1)).isEmpty());
    EXPECT_EQ(ids(), before);
    EXPECT_EQ(layout().children[0].properties.value("label"), "Claude 41%");
}

TEST_F(DBusMenuTest, SendsNothingIfNothingChanged) {
    menu_->setRows(rows);
    EXPECT_EQ(count("LayoutUpdated"), 0);
    EXPECT_EQ(count("ItemsPropertiesUpdated"), 0);
}

TEST_F(DBusMenuTest, RaisesItsRevisionWithEachNewLayoutAndKeepsIds) {
    const QList<int> before = ids();
    const uint formerRevision = revision_;
    std::vector<Row> more = rows;
    more.insert(more.begin() + 2, {Kind::text, 0, "Codex work"});
    menu_->setRows(more);
    EXPECT_EQ(count("LayoutUpdated"), 1);
    EXPECT_GT(revision_, formerRevision);
    EXPECT_EQ(signals_->last("LayoutUpdated"), QVariantList({revision_, 0}));
    const QList<int> after = ids();
    ASSERT_EQ(after.size(), 6);
    EXPECT_EQ(after.first(2), before.first(2));
    EXPECT_EQ(after.last(3), before.last(3));
}

TEST_F(DBusMenuTest, NeverGivesTheIdOfASeparatorToAText) {
    const QList<int> before = ids();
    menu_->setRows({{Kind::separator, 0, ""}, {Kind::text, 0, "x"}, {Kind::command, 2, "y"}});
    const QList<int> after = ids();
    EXPECT_EQ(after, (QList<int>{before[2], before[0], before[4]}));
}

TEST_F(DBusMenuTest, RefusesArgumentsOfOtherTypes) {
    const std::vector<std::pair<const char*, QVariantList>> calls = {
        {"GetLayout", {}},
        {"GetLayout", {0, -1}},
        {"GetLayout", {0U, -1, QStringList()}},
        {"GetLayout", {0, -1, "label"}},
        {"GetGroupProperties", {QStringList{"1"}, QStringList()}},
        {"GetProperty", {"label", 1}},
        {"Event", {1, "clicked", 0, 0U}},
        {"Event", {1, "clicked"}},
        {"EventGroup", {QStringList{"x"}}},
        {"EventGroup", {QVariant::fromValue(QList<int>{1})}},
        {"AboutToShow", {"0"}},
        {"AboutToShowGroup", {0}},
    };
    for (const auto& [method, arguments] : calls) {
        EXPECT_EQ(call(method, arguments).errorName(), "org.freedesktop.DBus.Error.InvalidArgs")
            << method;
    }
    EXPECT_EQ(call("Explode", {}).errorName(), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_TRUE(chosen_.empty());
    EXPECT_EQ(openings_, 0);
}

TEST_F(DBusMenuTest, AnswersListsOfAMillionIdsByWhatItHas) {
    const QList<int> many(1000000, ids()[0]);
    const QDBusMessage reply =
        call("GetGroupProperties", {QVariant::fromValue(many), QStringList{}});
    EXPECT_EQ(qdbus_cast<QList<DBusMenuItem>>(reply.arguments().constFirst()).size(), 1);
}

TEST_F(DBusMenuTest, MayBeDestroyedByWhatItTells) {
    QObject::connect(menu_.get(), &DBusMenu::commandChosen, application_.get(),
                     [this] { menu_.reset(); });
    const QDBusVariant data(0);
    const QList<DBusMenuEvent> events = {{ids()[3], "clicked", data, 0},
                                         {ids()[4], "clicked", data, 0}};
    EXPECT_EQ(call("EventGroup", {QVariant::fromValue(events)}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(test::eventuallyInLoop([this] { return menu_ == nullptr; }));
    EXPECT_EQ(chosen_, std::vector<int>{1});
}

}  // namespace
}  // namespace brimwatch
