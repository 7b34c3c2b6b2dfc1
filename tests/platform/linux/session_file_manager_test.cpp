#include "platform/linux/session_file_manager.h"

#include "harness/temporary_folder.h"
#include "platform/linux/folders_fixture.h"

namespace brimwatch {
namespace {

constexpr const char* managerName = "org.freedesktop.FileManager1";

class SessionFileManagerTest : public test::FoldersTest {
  protected:
    void SetUp() override {
        test::FoldersTest::SetUp();
        files_.emplace(*bus_, [this](const QUrl& folder) {
            opened_.append(folder.toString());
            return true;
        });
    }
    void TearDown() override {
        files_.reset();
        manager_.reset();
        test::FoldersTest::TearDown();
    }

    void provide(const std::function<QDBusMessage(const QDBusMessage&)>& answer) {
        manager_ = own(managerName);
        manager_->handle(answer);
    }
    void provide() {
        provide([](const QDBusMessage& call) { return call.createReply(); });
    }

    test::TemporaryFolder folder_;
    std::unique_ptr<test::FakeService> manager_;
    QStringList opened_;
    std::optional<SessionFileManager> files_;
};

TEST_F(SessionFileManagerTest, ShowsTheFolderSelectedInTheFileManager) {
    QVariantList arguments;
    QString path;
    provide([&](const QDBusMessage& call) {
        path = call.path() + ' ' + call.interface() + ' ' + call.member();
        arguments = call.arguments();
        return call.createReply();
    });
    files_->reveal("/home/me/my claude #1 한");
    ASSERT_TRUE(eventuallyInLoop([&] { return !arguments.isEmpty(); }));
    EXPECT_EQ(path, "/org/freedesktop/FileManager1 org.freedesktop.FileManager1 ShowItems");
    EXPECT_EQ(arguments.at(0).toStringList(),
              QStringList("file:///home/me/my%20claude%20%231%20%ED%95%9C"));
    EXPECT_EQ(arguments.at(1).toString(), "");
    EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(SessionFileManagerTest, ShowsAFolderWhoseNameIsNoText) {
    QVariantList arguments;
    provide([&](const QDBusMessage& call) {
        arguments = call.arguments();
        return call.createReply();
    });
    files_->reveal("/home/me/cod\xE9 50%25");
    ASSERT_TRUE(eventuallyInLoop([&] { return !arguments.isEmpty(); }));
    EXPECT_EQ(arguments.at(0).toStringList(), QStringList("file:///home/me/cod%E9%2050%2525"));
}

TEST_F(SessionFileManagerTest, HasTheDesktopOpenTheFolderOfAFileWhoseNameIsNoText) {
    test::writeFile(folder_.file("cod\xE9/a\xE9"), "text");
    files_->reveal(folder_.file("cod\xE9/a\xE9"));
    ASSERT_TRUE(eventuallyInLoop([&] { return !opened_.isEmpty(); }));
    const QStringList folder(QString::fromStdString("file://" + folder_.path() + "/cod%E9"));
    EXPECT_EQ(opened_, folder);
    files_->reveal(folder_.file("cod\xE9"));
    ASSERT_TRUE(eventuallyInLoop([&] { return opened_.size() == 2; }));
    EXPECT_EQ(opened_, folder + folder);
}

TEST_F(SessionFileManagerTest, HasTheDesktopOpenTheFolderWhereThereIsNoSuchService) {
    files_->reveal(folder_.path());
    ASSERT_TRUE(eventuallyInLoop([&] { return !opened_.isEmpty(); }));
    EXPECT_EQ(opened_, QStringList(QString::fromStdString("file://" + folder_.path())));
}

TEST_F(SessionFileManagerTest, HasTheDesktopOpenTheFolderOfAFile) {
    test::writeFile(folder_.file("a"), "text");
    files_->reveal(folder_.file("a"));
    ASSERT_TRUE(eventuallyInLoop([&] { return !opened_.isEmpty(); }));
    EXPECT_EQ(opened_, QStringList(QString::fromStdString("file://" + folder_.path())));
}

TEST_F(SessionFileManagerTest, HasTheDesktopOpenTheFolderIfTheServiceRefuses) {
    provide([](const QDBusMessage& call) {
        return call.createErrorReply("org.freedesktop.DBus.Error.UnknownMethod", "no");
    });
    files_->reveal(folder_.path());
    EXPECT_TRUE(eventuallyInLoop([&] { return opened_.size() == 1; }));
}

TEST_F(SessionFileManagerTest, OpensAtOnceWhereThereIsNoBus) {
    BusConnection nowhere{QString()};
    nowhere.open();
    SessionFileManager files(nowhere, [this](const QUrl& folder) {
        opened_.append(folder.toString());
        return false;
    });
    files.reveal(folder_.path());
    EXPECT_EQ(opened_.size(), 1);
}

TEST_F(SessionFileManagerTest, StartsTheServiceIfItDoesNotRun) {
    daemon_.offer(managerName);
    files_->reveal(folder_.path());
    EXPECT_TRUE(eventuallyInLoop([&] { return daemon_.hasStarted(managerName); }));
}

TEST_F(SessionFileManagerTest, ShowsNothingTwiceIfTheServiceIsSlow) {
    BusConnection impatient(daemon_.address(), {.firstPause = std::chrono::milliseconds(5),
                                                .longestPause = std::chrono::milliseconds(40),
                                                .answer = std::chrono::milliseconds(100)});
    impatient.open();
    SessionFileManager files(impatient, [this](const QUrl& folder) {
        opened_.append(folder.toString());
        return true;
    });
    int calls = 0;
    provide([&](const QDBusMessage&) {
        ++calls;
        return QDBusMessage();
    });
    files.reveal(folder_.path());
    ASSERT_TRUE(eventuallyInLoop([&] { return calls == 1; }));
    // The answer to this comes after that of the first is given up.
    bool isAnswered = false;
    QObject context;
    impatient.call({.service = managerName, .path = "/", .interface = "a.b", .method = "c"},
                   &context, [&](const QDBusMessage&) { isAnswered = true; });
    ASSERT_TRUE(eventuallyInLoop([&] { return isAnswered; }));
    EXPECT_TRUE(opened_.isEmpty());
}

TEST_F(SessionFileManagerTest, HasNothingMoreToDoWithAnAnswerThatComesAfterIt) {
    int calls = 0;
    provide([&](const QDBusMessage& call) {
        ++calls;
        return call.createReply();
    });
    files_->reveal(folder_.path());
    files_.reset();
    eventuallyInLoop([] { return true; });
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(opened_.isEmpty());
}

}  // namespace
}  // namespace brimwatch
