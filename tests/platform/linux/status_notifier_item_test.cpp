#include "platform/linux/status_notifier_item.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <limits>

#include "platform/linux/notifier_types.h"
#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

constexpr int smallest = std::numeric_limits<int>::min();

class StatusNotifierItemTest : public test::PanelTest {
  protected:
    void SetUp() override {
        PanelTest::SetUp();
        startPanel();
        meetBus();
        item_ = std::make_unique<StatusNotifierItem>("net.example.item", "/MenuBar");
        QObject::connect(item_.get(), &StatusNotifierItem::activated, item_.get(),
                         [this](QPoint position, const QString& token) {
                             clicks_.push_back({position, token});
                         });
        ASSERT_TRUE(item_->exportOn(*connection_));
        signals_ = std::make_unique<test::SignalLog>(panel_->connection(), service_);
        ASSERT_EQ(call("ContextMenu", {1, 1}).type(), QDBusMessage::ReplyMessage);
        clicks_.clear();
    }

    void meetBus() {
        connection_.emplace(busAddress());
        ASSERT_TRUE(test::eventuallyInLoop([this] { return connection_->isOpen(); }));
        service_ = QString::fromStdString(connection_->name());
    }

    QVariant property(const QString& name) { return panel_->property(service_, name); }
    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        return panel_->callItem(service_, method, arguments);
    }
    QDBusMessage properties(const QString& method, const QVariantList& arguments) {
        return panel_->call(service_, "/StatusNotifierItem", "org.freedesktop.DBus.Properties",
                            method, arguments);
    }
    NotifierPixmaps pixmaps() { return qdbus_cast<NotifierPixmaps>(property("IconPixmap")); }
    static QImage square(const QColor& color) {
        QImage picture(22, 22, QImage::Format_ARGB32_Premultiplied);
        picture.fill(color);
        return picture;
    }
    // Counts after all that was sent has come: signals and replies keep their order.
    int count(const QString& signal) {
        property("Id");
        QCoreApplication::processEvents();
        return signals_->count(signal);
    }

    std::optional<EventLoopBus> connection_;
    std::unique_ptr<StatusNotifierItem> item_;
    std::unique_ptr<test::SignalLog> signals_;
    std::vector<std::pair<QPoint, QString>> clicks_;
    QString service_;
};

struct ExpectedProperty {
    const char* name;
    const char* signature;
    QVariant value;
};

// Those of which the value is another type on the bus are compared below.
const std::vector<ExpectedProperty> expectedProperties = {
    {"Category", "s", "ApplicationStatus"},
    {"Id", "s", "net.example.item"},
    {"Title", "s", "Brimwatch? 42%"},
    {"Status", "s", "Active"},
    {"WindowId", "i", 0},
    {"IconThemePath", "s", ""},
    {"IconName", "s", ""},
    {"IconPixmap", "a(iiay)", {}},
    {"IconAccessibleDesc", "s", "Brimwatch? 42%"},
    {"OverlayIconName", "s", ""},
    {"OverlayIconPixmap", "a(iiay)", {}},
    {"AttentionIconName", "s", ""},
    {"AttentionIconPixmap", "a(iiay)", {}},
    {"AttentionMovieName", "s", ""},
    {"ToolTip", "(sa(iiay)ss)", {}},
    {"ItemIsMenu", "b", false},
    {"Menu", "o", {}},
    {"XAyatanaLabel", "s", "42%"},
    {"XAyatanaLabelGuide", "s", "100%"},
    {"XAyatanaOrderingIndex", "u", 0U},
};

QString signatureOf(const QVariant& value) {
    if (value.metaType() == QMetaType::fromType<QDBusArgument>())
        return value.value<QDBusArgument>().currentSignature();
    return QDBusMetaType::typeToSignature(value.metaType());
}

TEST_F(StatusNotifierItemTest, HasEachPropertyInItsType) {
    item_->setTitle("Brimwatch? 42%");
    item_->setLabel("42%");
    item_->setPicture(square(Qt::red));
    const QDBusMessage reply = properties("GetAll", {"org.kde.StatusNotifierItem"});
    const auto all = qdbus_cast<QVariantMap>(reply.arguments().constFirst());
    EXPECT_EQ(all.size(), static_cast<qsizetype>(expectedProperties.size()));
    for (const ExpectedProperty& expected : expectedProperties) {
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(signatureOf(all.value(expected.name)), expected.signature);
        EXPECT_EQ(signatureOf(property(expected.name)), expected.signature);
        if (!expected.value.isValid()) continue;
        EXPECT_EQ(all.value(expected.name), expected.value);
        EXPECT_EQ(property(expected.name), expected.value);
    }
}

TEST_F(StatusNotifierItemTest, NamesItsMenu) {
    EXPECT_EQ(property("Menu").value<QDBusObjectPath>().path(), "/MenuBar");
}

TEST_F(StatusNotifierItemTest, TellsTheTooltipInItsTitleAndDescription) {
    item_->setTitle("Brimwatch? 42%");
    item_->setDescription("Claude 42%\nCodex 7%");
    const auto toolTip = qdbus_cast<NotifierToolTip>(property("ToolTip"));
    EXPECT_EQ(toolTip.iconName, "");
    EXPECT_TRUE(toolTip.pixmaps.isEmpty());
    EXPECT_EQ(toolTip.title, "Brimwatch? 42%");
    EXPECT_EQ(toolTip.description, "Claude 42%\nCodex 7%");
}

TEST_F(StatusNotifierItemTest, DescribesEveryMethodPropertyAndSignal) {
    const QDBusMessage reply = panel_->call(service_, "/StatusNotifierItem",
                                            "org.freedesktop.DBus.Introspectable", "Introspect");
    const QString document = reply.arguments().constFirst().toString();
    for (const ExpectedProperty& expected : expectedProperties) {
        const QString line = QStringLiteral("<property name=\"%1\" type=\"%2\" access=\"read\">");
        EXPECT_TRUE(document.contains(line.arg(expected.name, expected.signature)))
            << expected.name;
    }
    for (const char* method :
         {"Activate", "SecondaryActivate", "ContextMenu", "Scroll", "ProvideXdgActivationToken"})
        EXPECT_TRUE(document.contains(QStringLiteral("<method name=\"%1\">").arg(method)))
            << method;
    for (const char* signal : {"NewTitle", "NewIcon", "NewToolTip"})
        EXPECT_TRUE(document.contains(QStringLiteral("<signal name=\"%1\">").arg(signal)))
            << signal;
    EXPECT_TRUE(document.contains("<interface name=\"org.kde.StatusNotifierItem\">"));
}

TEST_F(StatusNotifierItemTest, HasThePictureInOneSizeByteByByte) {
    QImage picture(22, 22, QImage::Format_ARGB32);
    QByteArray expected;
    for (int y = 0; y < 22; ++y) {
        for (int x = 0; x < 22; ++x) {
            picture.setPixel(x, y, qRgba(x * 11, y * 11, 7, 255 - x - y));
            for (const int part : {255 - x - y, x * 11, y * 11, 7})
                expected.append(static_cast<char>(part));
        }
    }
    item_->setPicture(picture);
    const NotifierPixmaps found = pixmaps();
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0].width, 22);
    EXPECT_EQ(found[0].height, 22);
    EXPECT_EQ(found[0].bytes, expected);
}

TEST_F(StatusNotifierItemTest, HasNoPictureBeforeTheFirst) {
    EXPECT_TRUE(pixmaps().isEmpty());
}

TEST_F(StatusNotifierItemTest, TellsOfAFrameOnlyIfAPixelDiffers) {
    QImage picture = square(Qt::red);
    item_->setPicture(picture);
    item_->setPicture(picture);
    item_->setPicture(square(Qt::red).convertToFormat(QImage::Format_ARGB32));
    EXPECT_EQ(count("NewIcon"), 1);
    picture.setPixel(21, 21, 0xff00ff00);
    item_->setPicture(picture);
    EXPECT_EQ(count("NewIcon"), 2);
    EXPECT_EQ(pixmaps()[0].bytes.last(4), QByteArray::fromHex("ff00ff00"));
    item_->setPicture(picture.copy(0, 0, 11, 11));
    EXPECT_EQ(count("NewIcon"), 3);
}

TEST_F(StatusNotifierItemTest, KeepsNoPixelThatItsOwnerDrawsOverLater) {
    QByteArray memory(22 * 22 * 4, '\x7f');
    const QImage picture(reinterpret_cast<const uchar*>(memory.constData()), 22, 22,
                         QImage::Format_ARGB32);
    item_->setPicture(picture);
    memory.fill('\0');
    EXPECT_EQ(pixmaps()[0].bytes, QByteArray(22 * 22 * 4, '\x7f'));
}

TEST_F(StatusNotifierItemTest, TellsOfTextsOnlyWhenTheyChange) {
    for (int i = 0; i < 2; ++i) {
        item_->setTitle("Brimwatch? 42%");
        item_->setLabel("42%");
        item_->setDescription("Claude");
    }
    EXPECT_EQ(count("NewTitle"), 1);
    EXPECT_EQ(count("XAyatanaNewLabel"), 1);
    EXPECT_EQ(count("NewToolTip"), 2);
    EXPECT_EQ(count("NewIcon"), 0);
    EXPECT_EQ(signals_->last("XAyatanaNewLabel"), QVariantList({"42%", "100%"}));
    item_->setLabel("");
    EXPECT_EQ(count("XAyatanaNewLabel"), 2);
    EXPECT_EQ(signals_->last("XAyatanaNewLabel"), QVariantList({"", ""}));
}

TEST_F(StatusNotifierItemTest, HearsOfAClickAndItsPlace) {
    EXPECT_EQ(call("Activate", {1155, 13}).type(), QDBusMessage::ReplyMessage);
    ASSERT_EQ(clicks_.size(), 1U);
    EXPECT_EQ(clicks_[0].first, QPoint(1155, 13));
    EXPECT_EQ(clicks_[0].second, "");
}

TEST_F(StatusNotifierItemTest, GivesATokenToTheNextClickAlone) {
    call("ProvideXdgActivationToken", {"token-1"});
    call("Activate", {0, 0});
    call("Activate", {0, 0});
    ASSERT_EQ(clicks_.size(), 2U);
    EXPECT_EQ(clicks_[0].second, "token-1");
    EXPECT_EQ(clicks_[1].second, "");
}

TEST_F(StatusNotifierItemTest, OpensForPanelsThatDrawNoMenu) {
    call("ContextMenu", {3, 4});
    ASSERT_EQ(clicks_.size(), 1U);
}

TEST_F(StatusNotifierItemTest, AnswersTheOtherWaysOfClickingAndDoesNothing) {
    EXPECT_EQ(call("SecondaryActivate", {1, 2}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("XAyatanaSecondaryActivate", {7U}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("Scroll", {120, "Vertical"}).type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(clicks_.empty());
}

TEST_F(StatusNotifierItemTest, TakesAnyPlace) {
    for (const int place : {smallest, -1, 0, std::numeric_limits<int>::max()})
        EXPECT_EQ(call("Activate", {place, place}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(clicks_.size(), 4U);
}

TEST_F(StatusNotifierItemTest, RefusesArgumentsOfOtherTypes) {
    const std::vector<std::pair<const char*, QVariantList>> calls = {
        {"Activate", {}},
        {"Activate", {1}},
        {"Activate", {"1", "2"}},
        {"Activate", {1, 2, 3}},
        {"Activate", {QVariant::fromValue(QDBusVariant(1)), 2}},
        {"ContextMenu", {1U, 2U}},
        {"SecondaryActivate", {QByteArray("x")}},
        {"Scroll", {"vertical", 1}},
        {"ProvideXdgActivationToken", {1}},
    };
    for (const auto& [method, arguments] : calls) {
        EXPECT_EQ(call(method, arguments).errorName(), "org.freedesktop.DBus.Error.InvalidArgs")
            << method;
    }
    EXPECT_TRUE(clicks_.empty());
}

TEST_F(StatusNotifierItemTest, RefusesWhatItDoesNotHave) {
    EXPECT_EQ(call("Explode", {}).errorName(), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(panel_->call(service_, "/StatusNotifierItem", "net.example.Other", "Activate", {1, 2})
                  .type(),
              QDBusMessage::ErrorMessage);
    EXPECT_TRUE(clicks_.empty());
    const QString item = "org.kde.StatusNotifierItem";
    EXPECT_EQ(properties("Get", {item, "Nothing"}).errorName(),
              "org.freedesktop.DBus.Error.UnknownProperty");
    EXPECT_EQ(properties("Get", {"net.example.Other", "Id"}).errorName(),
              "org.freedesktop.DBus.Error.UnknownProperty");
    EXPECT_EQ(properties("GetAll", {"net.example.Other"}).errorName(),
              "org.freedesktop.DBus.Error.UnknownInterface");
    const QVariant value = QVariant::fromValue(QDBusVariant("x"));
    EXPECT_EQ(properties("Set", {item, "Id", value}).errorName(),
              "org.freedesktop.DBus.Error.PropertyReadOnly");
    for (const QVariantList& arguments : {QVariantList{}, {1}, {item}, {item, 1}, {1, 2, 3}}) {
        EXPECT_EQ(properties("Get", arguments).errorName(),
                  "org.freedesktop.DBus.Error.InvalidArgs");
    }
}

TEST_F(StatusNotifierItemTest, ServesCallersThatNameNoInterface) {
    EXPECT_EQ(panel_->call(service_, "/StatusNotifierItem", {}, "Activate", {1, 2}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_EQ(clicks_.size(), 1U);
    EXPECT_EQ(panel_->call(service_, "/StatusNotifierItem", {}, "Get", {"", "Id"}).type(),
              QDBusMessage::ErrorMessage);
}

TEST_F(StatusNotifierItemTest, MayBeDestroyedByTheClick) {
    QObject::connect(item_.get(), &StatusNotifierItem::activated, application_.get(),
                     [this] { item_.reset(); });
    EXPECT_EQ(call("Activate", {1, 2}).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(test::eventuallyInLoop([this] { return item_ == nullptr; }));
    EXPECT_EQ(call("Activate", {1, 2}).errorName(), "org.freedesktop.DBus.Error.UnknownObject");
}

TEST_F(StatusNotifierItemTest, ChangesQuietlyWhileItsBusIsDead) {
    killBus();
    item_->setTitle("Brimwatch? 7%");
    item_->setPicture(square(Qt::blue));
    startBus();
    startPanel();
    meetBus();
    ASSERT_TRUE(item_->exportOn(*connection_));
    EXPECT_EQ(property("Title"), "Brimwatch? 7%");
    EXPECT_EQ(pixmaps()[0].bytes.first(4), QByteArray::fromHex("ff0000ff"));
}

}  // namespace
}  // namespace brimwatch
