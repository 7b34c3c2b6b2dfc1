#include "platform/linux/portal_folder_picker.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include "platform/linux/folders_fixture.h"

namespace brimwatch {
namespace {

using Folder = std::optional<std::string>;

constexpr const char* portalName = "org.freedesktop.portal.Desktop";

struct OtherPicker final : FolderPicker {
    void pick(QWindow& parent, const QString& title, Picked picked) override {
        EXPECT_EQ(parent.title(), "settings");
        titles.append(title);
        last = std::move(picked);
    }
    QStringList titles;
    Picked last;
};

class PortalFolderPickerTest : public test::FoldersTest {
  protected:
    void SetUp() override {
        test::FoldersTest::SetUp();
        window_ = std::make_unique<QWindow>();
        window_->setTitle("settings");
        picker_.emplace(*bus_, other_);
    }
    void TearDown() override {
        picker_.reset();
        window_.reset();
        portal_.reset();
        test::FoldersTest::TearDown();
    }

    void providePortal(quint32 version = 3) {
        portal_ = own(portalName);
        portal_->handle(
            [this, version](const QDBusMessage& call) { return answer(call, version); });
        // The picker hears of it behind whatever the bus says to us.
        ASSERT_TRUE(eventuallyInLoop([this] { return portal_->sees(portalName); }));
        ASSERT_TRUE(hasHeard());
    }
    bool hasHeard() {
        for (int round = 0; round < 3; ++round) {
            bool isAnswered = false;
            QObject context;
            bus_->call({.service = "org.freedesktop.DBus",
                        .path = "/",
                        .interface = "org.freedesktop.DBus.Peer",
                        .method = "Ping"},
                       &context, [&](const QDBusMessage&) { isAnswered = true; });
            if (!eventuallyInLoop([&] { return isAnswered; })) return false;
        }
        return true;
    }
    QDBusMessage answer(const QDBusMessage& call, quint32 version) {
        if (call.member() == "Get")
            return call.createReply(QVariant::fromValue(QDBusVariant(QVariant(version))));
        if (call.member() == "Close") {
            closed_.append(call.path());
            return call.createReply();
        }
        questions_.append(call.arguments());
        if (!error_.isEmpty()) return call.createErrorReply(error_, "no");
        const QVariantMap options = qdbus_cast<QVariantMap>(call.arguments().at(2));
        QString sender = bus_->connection().baseService().mid(1);
        request_ = "/org/freedesktop/portal/desktop/request/" + sender.replace('.', '_') + '/' +
                   options.value("handle_token").toString();
        if (!otherRequest_.isEmpty()) request_ = otherRequest_;
        return call.createReply(QVariant::fromValue(QDBusObjectPath(request_)));
    }
    void respond(quint32 response, const QStringList& uris) {
        portal_->say(request_, "org.freedesktop.portal.Request", "Response",
                     {response, QVariantMap{{"uris", uris}}});
    }
    void pick() {
        picker_->pick(*window_, "title", [this](Folder folder) { answers_.push_back(folder); });
    }
    bool isAsked() {
        return eventuallyInLoop([this] { return questions_.size() == 1; });
    }
    bool isAnswered() {
        return eventuallyInLoop([this] { return !answers_.empty(); });
    }

    std::unique_ptr<QWindow> window_;
    OtherPicker other_;
    std::unique_ptr<test::FakeService> portal_;
    QList<QVariantList> questions_;
    QStringList closed_;
    QString request_;
    QString otherRequest_;
    QString error_;
    std::vector<Folder> answers_;
    std::optional<PortalFolderPicker> picker_;
};

TEST_F(PortalFolderPickerTest, AsksForAFolderAndGivesThatWhichTheUserChose) {
    providePortal();
    pick();
    ASSERT_TRUE(isAsked());
    EXPECT_EQ(questions_[0].at(0).toString(), "");  // not a window of X11
    EXPECT_EQ(questions_[0].at(1).toString(), "title");
    const QVariantMap options = qdbus_cast<QVariantMap>(questions_[0].at(2));
    EXPECT_EQ(options.value("directory"), true);
    EXPECT_EQ(options.value("modal"), true);
    respond(0, {"file:///home/me/my%20work%20%ED%95%9C"});
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers_, std::vector<Folder>{"/home/me/my work 한"});
    EXPECT_TRUE(other_.titles.isEmpty());
}

TEST_F(PortalFolderPickerTest, GivesAFolderByItsBytes) {
    const std::pair<const char*, const char*> places[] = {
        {"file:///home/me/cod%E9x", "/home/me/cod\xE9x"},
        {"file:///home/me/50%2525%23", "/home/me/50%25#"},
        {"file://localhost/home/me", "/home/me"}};
    for (const auto& [uri, folder] : places) {
        providePortal();
        questions_.clear();
        answers_.clear();
        pick();
        ASSERT_TRUE(isAsked());
        respond(0, {uri});
        ASSERT_TRUE(isAnswered());
        EXPECT_EQ(answers_, std::vector<Folder>{folder}) << uri;
        portal_.reset();
    }
}

TEST_F(PortalFolderPickerTest, GivesNothingIfTheUserChoseNone) {
    for (const quint32 response : {1U, 2U}) {
        providePortal();
        questions_.clear();
        answers_.clear();
        pick();
        ASSERT_TRUE(isAsked());
        respond(response, {"file:///home/me"});
        ASSERT_TRUE(isAnswered());
        EXPECT_EQ(answers_, std::vector<Folder>{std::nullopt});
        portal_.reset();
    }
}

TEST_F(PortalFolderPickerTest, GivesNothingForAPlaceThatIsNoFolderOfThisMachine) {
    for (const char* uri : {"sftp://host/folder", "", "http://127.0.0.1/", "file://host/folder"}) {
        providePortal();
        questions_.clear();
        answers_.clear();
        pick();
        ASSERT_TRUE(isAsked());
        respond(0, {uri});
        ASSERT_TRUE(isAnswered());
        EXPECT_EQ(answers_, std::vector<Folder>{std::nullopt}) << uri;
        portal_.reset();
    }
}

TEST_F(PortalFolderPickerTest, HasAnotherPickerAskWhereThereIsNoPortal) {
    pick();
    EXPECT_EQ(other_.titles, QStringList("title"));
    other_.last("/home/me");
    EXPECT_EQ(answers_, std::vector<Folder>{"/home/me"});
}

TEST_F(PortalFolderPickerTest, HasAnotherPickerAskWhereThePortalKnowsNoFolders) {
    providePortal(2);
    pick();
    EXPECT_TRUE(eventuallyInLoop([&] { return other_.titles == QStringList("title"); }));
    EXPECT_TRUE(questions_.isEmpty());
}

TEST_F(PortalFolderPickerTest, HasAnotherPickerAskIfThePortalRefuses) {
    error_ = "org.freedesktop.portal.Error.Failed";
    providePortal();
    pick();
    EXPECT_TRUE(eventuallyInLoop([&] { return other_.titles == QStringList("title"); }));
}

TEST_F(PortalFolderPickerTest, UnderstandsPortalsThatNameTheRequestThemselves) {
    otherRequest_ = "/org/freedesktop/portal/desktop/request/17";
    providePortal();
    pick();
    ASSERT_TRUE(isAsked());
    ASSERT_TRUE(hasHeard());
    respond(0, {"file:///home/me"});
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers_, std::vector<Folder>{"/home/me"});
}

TEST_F(PortalFolderPickerTest, ListensToItsOwnRequestOnly) {
    providePortal();
    pick();
    ASSERT_TRUE(isAsked());
    ASSERT_TRUE(hasHeard());
    portal_->say("/org/freedesktop/portal/desktop/request/other", "org.freedesktop.portal.Request",
                 "Response", {0U, QVariantMap{{"uris", QStringList("file:///wrong")}}});
    portal_->say(request_, "org.freedesktop.portal.Request", "Response", {QString("what")});
    respond(0, {"file:///right"});
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers_, std::vector<Folder>{"/right"});
}

TEST_F(PortalFolderPickerTest, DropsTheFormerQuestionForANewOne) {
    providePortal();
    pick();
    ASSERT_TRUE(isAsked());
    ASSERT_TRUE(hasHeard());
    const QString former = request_;
    questions_.clear();
    pick();
    ASSERT_TRUE(isAsked());
    ASSERT_TRUE(hasHeard());
    EXPECT_EQ(closed_, QStringList(former));
    portal_->say(former, "org.freedesktop.portal.Request", "Response",
                 {0U, QVariantMap{{"uris", QStringList("file:///former")}}});
    respond(0, {"file:///new"});
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers_, std::vector<Folder>{"/new"});
}

TEST_F(PortalFolderPickerTest, GivesNothingIfThePortalDiesMeanwhile) {
    providePortal();
    pick();
    ASSERT_TRUE(isAsked());
    ASSERT_TRUE(hasHeard());
    portal_->vanish();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers_, std::vector<Folder>{std::nullopt});
}

TEST_F(PortalFolderPickerTest, ClosesTheQuestionAndSaysNothingWhenItGoes) {
    providePortal();
    pick();
    ASSERT_TRUE(isAsked());
    ASSERT_TRUE(hasHeard());
    picker_.reset();
    EXPECT_TRUE(eventuallyInLoop([&] { return closed_ == QStringList(request_); }));
    EXPECT_TRUE(answers_.empty());
}

TEST_F(PortalFolderPickerTest, GivesNothingIfTheWindowWentBeforeItWasAsked) {
    providePortal();
    pick();
    window_.reset();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(answers_, std::vector<Folder>{std::nullopt});
    EXPECT_TRUE(questions_.isEmpty());
    EXPECT_TRUE(other_.titles.isEmpty());
}

}  // namespace
}  // namespace brimwatch
