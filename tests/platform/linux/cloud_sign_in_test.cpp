#include "platform/linux/cloud_sign_in.h"

#include <gtest/gtest.h>

#include <QTcpSocket>

#include "platform/linux/cloud_test.h"

namespace brimwatch {
namespace {

using End = CloudSignInResult::End;
using test::RecordServer;
using PendingSignIn = test::Pending<CloudSignInResult>;

class CloudSignInTest : public test::CloudTest {
  protected:
    void SetUp() override {
        CloudTest::SetUp();
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost)));
        port_ = server.serverPort();
        server.close();
        makeSignIn();
    }
    void TearDown() override {
        signIn_.reset();
        settle();
        CloudTest::TearDown();
    }
    CloudSignIn::Surroundings surroundings() {
        return {.container = container(),
                .returnAddress = "http://127.0.0.1:" + std::to_string(port_) + "/signed-in",
                .openUrl = [this](const QUrl& page) {
                    pages_ << page.toString(QUrl::FullyEncoded);
                    return true;
                }};
    }
    void makeSignIn() { signIn_.emplace(surroundings(), *token_); }
    bool isPageOpen(qsizetype count = 1) {
        return eventually([&] { return pages_.size() == count; });
    }
    // What a browser does at the end.
    void bringToken(const std::string& token) const {
        QTcpSocket browser;
        browser.connectToHost(QHostAddress(QHostAddress::LocalHost), port_);
        browser.write("GET /signed-in?ckWebAuthToken=" +
                      QByteArray::fromStdString(token).toPercentEncoding() +
                      " HTTP/1.1\r\nHost: 127.0.0.1:" + QByteArray::number(port_) + "\r\n\r\n");
        EXPECT_TRUE(
            eventually([&] { return browser.state() == QAbstractSocket::UnconnectedState; }));
        answer_ = browser.readAll();
    }
    CloudSignInResult end(const PendingSignIn& pending) const {
        EXPECT_TRUE(eventually([&] { return pending.isDone(); }));
        return pending.result();
    }

    quint16 port_ = 0;
    std::optional<CloudSignIn> signIn_;
    QStringList pages_;
    mutable QByteArray answer_;
};

TEST_F(CloudSignInTest, TheBrowserBringsTheTokenWhichIsStored) {
    const PendingSignIn pending(signIn_->signIn());
    EXPECT_TRUE(signIn_->isUnderWay());
    ASSERT_TRUE(isPageOpen());
    EXPECT_EQ(pages_.front(), RecordServer::signInPage);
    const std::string token = server_->signIn("me");
    bringToken(token);
    EXPECT_EQ(end(pending).end, End::signedIn);
    EXPECT_FALSE(signIn_->isUnderWay());
    EXPECT_TRUE(answer_.startsWith("HTTP/1.1 200 "));
    EXPECT_EQ(storedToken(), token);
    EXPECT_EQ(keys_.labels.begin()->second, "Brimwatch? iCloud 로그인");
    EXPECT_EQ(keys_.calls, (std::vector<std::string>{"update!", "add!"}));
    EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::available);
}

TEST_F(CloudSignInTest, TheQuestionForThePageTellsNoUser) {
    CloudTest::signIn("me");
    const PendingSignIn pending(signIn_->signIn());
    ASSERT_TRUE(isPageOpen());
    EXPECT_EQ(server_->requests().back().userToken(), "");
    EXPECT_EQ(server_->requests().back().operation, "users/caller");
}

TEST_F(CloudSignInTest, ASecondPressStartsAnew) {
    const PendingSignIn first(signIn_->signIn());
    ASSERT_TRUE(isPageOpen(1));
    const PendingSignIn second(signIn_->signIn());
    EXPECT_EQ(end(first).end, End::cancelled);
    ASSERT_TRUE(isPageOpen(2));
    bringToken(server_->signIn("me"));
    EXPECT_EQ(end(second).end, End::signedIn);
}

TEST_F(CloudSignInTest, ASecondPressBeforeThePageOpensStartsAnewToo) {
    const PendingSignIn first(signIn_->signIn());
    const PendingSignIn second(signIn_->signIn());
    EXPECT_EQ(end(first).end, End::cancelled);
    ASSERT_TRUE(isPageOpen(1));
    bringToken(server_->signIn("me"));
    EXPECT_EQ(end(second).end, End::signedIn);
}

TEST_F(CloudSignInTest, WhoDoesNotComeBackInTimeIsNotSignedIn) {
    CloudSignIn::Surroundings hasty = surroundings();
    hasty.giveUpAfter = std::chrono::milliseconds(20);
    signIn_.emplace(hasty, *token_);
    const PendingSignIn pending(signIn_->signIn());
    EXPECT_EQ(end(pending).end, End::notAnswered);
    QTcpServer next;
    EXPECT_TRUE(next.listen(QHostAddress(QHostAddress::LocalHost), port_));
}

TEST_F(CloudSignInTest, OnlyASecurePageIsOpened) {
    for (const char* page :
         {"http://sign-in.example/", "file:///etc/passwd", "javascript:alert(1)", "https://",
          "https://user@sign-in.example/", "", "/relative", "https:///path"}) {
        server_->answerNext({.status = 421,
                             .body = RecordServer::Json{
                                 {"serverErrorCode", "AUTHENTICATION_REQUIRED"},
                                 {"redirectURL",
                                  page}}.dump()});
        const PendingSignIn pending(signIn_->signIn());
        EXPECT_EQ(end(pending).end, End::serverRefused) << page;
    }
    EXPECT_TRUE(pages_.isEmpty());
}

TEST_F(CloudSignInTest, WhatTheServerRefusesIsTold) {
    server_->answerNext(RecordServer::error(401, "AUTHENTICATION_FAILED", "unknown"));
    const CloudSignInResult refused = end(PendingSignIn(signIn_->signIn()));
    EXPECT_EQ(refused.end, End::serverRefused);
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->code, 8);
    server_->answerNext({.body = R"({"userRecordName":"_a"})"});
    EXPECT_EQ(end(PendingSignIn(signIn_->signIn())).end, End::serverRefused);
}

TEST_F(CloudSignInTest, WithoutABrowserOrAPortItEndsAtOnce) {
    CloudSignIn::Surroundings lacking = surroundings();
    lacking.openUrl = [](const QUrl&) { return false; };
    signIn_.emplace(lacking, *token_);
    EXPECT_EQ(end(PendingSignIn(signIn_->signIn())).end, End::browserMissing);
    QTcpServer taken;
    ASSERT_TRUE(taken.listen(QHostAddress(QHostAddress::LocalHost), port_));
    makeSignIn();
    EXPECT_EQ(end(PendingSignIn(signIn_->signIn())).end, End::addressUnusable);
    EXPECT_TRUE(pages_.isEmpty());
    lacking.returnAddress = "";
    signIn_.emplace(lacking, *token_);
    EXPECT_EQ(end(PendingSignIn(signIn_->signIn())).end, End::addressUnusable);
}

TEST_F(CloudSignInTest, ATokenThatCannotBeStoredHoldsForThisRun) {
    keys_.answer = [](const std::string& call) -> std::optional<KeyStatus> {
        if (call == "update!") return key_status::userCanceled;
        return std::nullopt;
    };
    const PendingSignIn pending(signIn_->signIn());
    ASSERT_TRUE(isPageOpen());
    bringToken(server_->signIn("me"));
    EXPECT_EQ(end(pending).end, End::notStored);
    EXPECT_EQ(pending.result().status, key_status::userCanceled);
    EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::available);
}

TEST_F(CloudSignInTest, SigningOutForgetsTheToken) {
    CloudTest::signIn("me");
    EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::available);
    EXPECT_EQ(signIn_->signOut(), key_status::success);
    EXPECT_EQ(storedToken(), "");
    EXPECT_EQ(wait(database_->accountStatus()), CloudAccountStatus::noAccount);
    EXPECT_EQ(signIn_->signOut(), key_status::success);
    keys_.answer = [](const std::string&) { return key_status::userCanceled; };
    EXPECT_EQ(signIn_->signOut(), key_status::userCanceled);
}

TEST_F(CloudSignInTest, SigningOutEndsTheSignInThatIsUnderWay) {
    const PendingSignIn pending(signIn_->signIn());
    ASSERT_TRUE(isPageOpen());
    signIn_->signOut();
    EXPECT_FALSE(signIn_->isUnderWay());
    EXPECT_EQ(end(pending).end, End::cancelled);
}

TEST_F(CloudSignInTest, ATokenThatCameInTheSameMomentAsTheSignOutIsDropped) {
    const PendingSignIn pending(signIn_->signIn());
    ASSERT_TRUE(isPageOpen());
    QTcpSocket browser;
    browser.connectToHost(QHostAddress(QHostAddress::LocalHost), port_);
    browser.write("GET /signed-in?ckWebAuthToken=a HTTP/1.1\r\nHost: 127.0.0.1:" +
                  QByteArray::number(port_) + "\r\n\r\n");
    // It is over, but who waits for it has not been told.
    EXPECT_TRUE(eventually([&] { return !signIn_->isUnderWay() || pending.isDone(); }));
    if (!pending.isDone()) {
        signIn_->signOut();
        EXPECT_EQ(end(pending).end, End::cancelled);
        EXPECT_EQ(storedToken(), "");
    }
}

TEST_F(CloudSignInTest, ASignInThatGoesEndsWhatIsUnderWay) {
    const PendingSignIn asking(signIn_->signIn());
    signIn_.reset();
    EXPECT_EQ(end(asking).end, End::cancelled);
    makeSignIn();
    const PendingSignIn waiting(signIn_->signIn());
    ASSERT_TRUE(isPageOpen());
    signIn_.reset();
    EXPECT_EQ(end(waiting).end, End::cancelled);
}

TEST_F(CloudSignInTest, TheEndOfTheApplicationEndsItToo) {
    const PendingSignIn pending(signIn_->signIn());
    ASSERT_TRUE(isPageOpen());
    QTimer::singleShot(0, &*application_, &QCoreApplication::quit);
    QCoreApplication::exec();
    EXPECT_EQ(end(pending).end, End::cancelled);
}

}  // namespace
}  // namespace brimwatch
