#include "platform/linux/sign_in_page.h"

#include <gtest/gtest.h>

#include <QTcpSocket>
#include <algorithm>
#include <memory>
#include <vector>

#include "platform/linux/application_test.h"

namespace brimwatch {
namespace {

SignInAddress address() {
    return *SignInAddress::parse("http://127.0.0.1:28417/signed-in");
}

std::string head(const std::string& line, const std::string& headers = "Host: 127.0.0.1:28417") {
    return line + "\r\n" + headers;
}

int statusOf(const std::string& text) {
    return readSignInRequest(text, address()).status;
}

std::string tokenOf(const std::string& query) {
    const SignInRequest request =
        readSignInRequest(head("GET /signed-in?" + query + " HTTP/1.1"), address());
    return request.status == 200 ? std::string(request.token.view())
                                 : std::to_string(request.status);
}

TEST(SignInAddressTest, LeadsToAPortOfThisMachine) {
    const auto plain = SignInAddress::parse("http://localhost:80/a/b");
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->host, "localhost");
    EXPECT_EQ(plain->authority, "localhost:80");
    EXPECT_EQ(plain->port, 80);
    EXPECT_EQ(plain->path, "/a/b");
    EXPECT_EQ(SignInAddress::parse("http://127.0.0.1:8080")->path, "/");
    EXPECT_EQ(SignInAddress::parse("http://[::1]:8080/")->host, "::1");
    EXPECT_EQ(SignInAddress::parse("http://[::1]:8080/")->authority, "[::1]:8080");
}

TEST(SignInAddressTest, AnyOtherAddressIsNone) {
    for (const char* text :
         {"", "http://127.0.0.1/a", "https://127.0.0.1:8080/a", "http://10.0.0.1:8080/a",
          "http://example.com:8080/a", "http://0.0.0.0:8080/a", "http://u@127.0.0.1:8080/a",
          "http://127.0.0.1:8080/a?b=c", "http://127.0.0.1:8080/a#b", "http://127.0.0.1:0/a",
          "http://127.0.0.1:70000/a", "127.0.0.1:8080", "http://localhost.example.com:80/"})
        EXPECT_FALSE(SignInAddress::parse(text)) << text;
}

TEST(SignInRequestTest, TheTokenIsPercentDecodedOnce) {
    EXPECT_EQ(tokenOf("ckWebAuthToken=abc"), "abc");
    EXPECT_EQ(tokenOf("ckWebAuthToken=a%2Bb%2Fc%3D%3D"), "a+b/c==");
    EXPECT_EQ(tokenOf("ckWebAuthToken=a+b/c=="), "a+b/c==");
    EXPECT_EQ(tokenOf("ckWebAuthToken=a%252Bb"), "a%2Bb");
    EXPECT_EQ(tokenOf("ckSession=x&ckWebAuthToken=abc&y=z"), "abc");
}

TEST(SignInRequestTest, AQueryWithoutExactlyOneTokenIsBad) {
    for (const char* query :
         {"", "ckWebAuthToken=", "ckWebAuthToken", "token=abc", "ckwebauthtoken=abc",
          "ckWebAuthToken=a&ckWebAuthToken=b", "ckWebAuthToken=a%20b", "ckWebAuthToken=a%0Ab",
          "ckWebAuthToken=%00", "xckWebAuthToken=abc"})
        EXPECT_EQ(tokenOf(query), "400") << query;
    EXPECT_EQ(tokenOf("ckWebAuthToken=" + std::string(8192, 'a')).size(), 8192);
    EXPECT_EQ(tokenOf("ckWebAuthToken=" + std::string(8193, 'a')), "400");
}

TEST(SignInRequestTest, OnlyTheExactPathIsKnown) {
    for (const char* target :
         {"/", "/favicon.ico", "/signed-in/?ckWebAuthToken=a", "/signed-in%2F?ckWebAuthToken=a",
          "/Signed-in?ckWebAuthToken=a", "/a/../signed-in?ckWebAuthToken=a",
          "http://127.0.0.1:28417/signed-in?ckWebAuthToken=a"})
        EXPECT_EQ(statusOf(head("GET " + std::string(target) + " HTTP/1.1")), 404) << target;
    EXPECT_EQ(statusOf(head("GET /signed-in HTTP/1.1")), 400);
}

TEST(SignInRequestTest, OnlyAnOrdinaryVisitCounts) {
    for (const char* method : {"POST", "HEAD", "PUT", "OPTIONS", "get"})
        EXPECT_EQ(statusOf(head(std::string(method) + " /signed-in?ckWebAuthToken=a HTTP/1.1")),
                  405)
            << method;
    for (const char* line : {"", "GET", "GET /signed-in?ckWebAuthToken=a", "GET  HTTP/2",
                             "GET /signed-in?ckWebAuthToken=a SIP/2.0", " "})
        EXPECT_EQ(statusOf(head(line)), 400) << line;
}

TEST(SignInRequestTest, TheHostMustBeTheOneOfTheAddress) {
    const std::string line = "GET /signed-in?ckWebAuthToken=a HTTP/1.1";
    for (const char* headers :
         {"Accept: */*", "Host: evil.example:28417", "Host: 127.0.0.1", "Host: 127.0.0.1:28418",
          "Host:", "Host: 127.0.0.1:28417\r\nHost: 127.0.0.1:28417", "X-Host: 127.0.0.1:28417"})
        EXPECT_EQ(statusOf(head(line, headers)), 421) << headers;
    EXPECT_EQ(statusOf(head(line, "Accept: */*\r\nhOST:127.0.0.1:28417 ")), 200);
}

class SignInPageTest : public test::ApplicationTest {
  protected:
    void SetUp() override {
        ApplicationTest::SetUp();
        // A port that is free now.
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost)));
        authority_ = "127.0.0.1:" + std::to_string(server.serverPort());
        server.close();
        address_ = *SignInAddress::parse("http://" + authority_ + "/signed-in");
        page_.emplace(address_, [this](SecretBytes token) {
            ++arrivals_;
            token_ = std::string(token.view());
        });
        ASSERT_TRUE(page_->isListening());
    }
    void TearDown() override {
        page_.reset();
        settle();
        ApplicationTest::TearDown();
    }
    // What the page says to that, until it closes the connection.
    std::string answerTo(const std::string& request) const {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress(QHostAddress::LocalHost), address_.port);
        socket.write(QByteArray::fromStdString(request));
        const bool isClosed =
            eventually([&] { return socket.state() == QAbstractSocket::UnconnectedState; });
        EXPECT_TRUE(isClosed);
        return socket.readAll().toStdString();
    }
    std::string visit(const std::string& target) const {
        return answerTo("GET " + target + " HTTP/1.1\r\nHost: " + authority_ + "\r\n\r\n");
    }

    std::string authority_;
    SignInAddress address_;
    std::optional<SignInPage> page_;
    int arrivals_ = 0;
    std::string token_;
};

TEST_F(SignInPageTest, TakesTheTokenAndShowsAPlainPageWithoutIt) {
    const std::string answer = visit("/signed-in?ckWebAuthToken=se%2Bcret");
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 200 ")) << answer;
    EXPECT_NE(answer.find("로그인했어요."), std::string::npos);
    EXPECT_NE(answer.find("Cache-Control: no-store"), std::string::npos);
    EXPECT_EQ(answer.find("se+cret"), std::string::npos);
    EXPECT_EQ(answer.find("se%2Bcret"), std::string::npos);
    EXPECT_EQ(token_, "se+cret");
}

TEST_F(SignInPageTest, GivesUpItsPortOnceTheTokenIsThere) {
    visit("/signed-in?ckWebAuthToken=a");
    QTcpServer next;
    EXPECT_TRUE(next.listen(QHostAddress(QHostAddress::LocalHost), address_.port));
}

TEST_F(SignInPageTest, WaitsOnWhereARequestIsNotTheOne) {
    EXPECT_TRUE(visit("/favicon.ico").starts_with("HTTP/1.1 404 "));
    EXPECT_TRUE(visit("/signed-in?error=x").starts_with("HTTP/1.1 400 "));
    EXPECT_TRUE(answerTo("nonsense\r\n\r\n").starts_with("HTTP/1.1 400 "));
    EXPECT_EQ(arrivals_, 0);
    EXPECT_TRUE(visit("/signed-in?ckWebAuthToken=a").starts_with("HTTP/1.1 200 "));
    EXPECT_EQ(arrivals_, 1);
}

TEST_F(SignInPageTest, AHeadOfMoreThan16KiBIsRefused) {
    const std::string start = "GET /signed-in?ckWebAuthToken=a HTTP/1.1\r\nHost: " + authority_;
    const std::string endless = start + "\r\nX: " + std::string(20'000, 'a');
    EXPECT_TRUE(answerTo(endless).starts_with("HTTP/1.1 431 "));
    EXPECT_EQ(arrivals_, 0);
}

TEST_F(SignInPageTest, ARequestMayComeInPieces) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress(QHostAddress::LocalHost), address_.port);
    EXPECT_TRUE(eventually([&] { return socket.state() == QAbstractSocket::ConnectedState; }));
    for (const std::string& piece :
         {std::string("GET /signed-in?ckWeb"), std::string("AuthToken=a HTTP/1.1\r"),
          "\nHost: " + authority_, std::string("\r\n\r"), std::string("\n")}) {
        EXPECT_EQ(arrivals_, 0);
        socket.write(QByteArray::fromStdString(piece));
        socket.flush();
        settle();
    }
    EXPECT_TRUE(eventually([&] { return arrivals_ == 1; }));
}

TEST_F(SignInPageTest, OfTwoTokensTheFirstCounts) {
    QTcpSocket first;
    QTcpSocket second;
    for (QTcpSocket* socket : {&first, &second})
        socket->connectToHost(QHostAddress(QHostAddress::LocalHost), address_.port);
    EXPECT_TRUE(eventually([&] {
        return first.state() == QAbstractSocket::ConnectedState &&
               second.state() == QAbstractSocket::ConnectedState;
    }));
    settle();
    const QByteArray host = QByteArray::fromStdString(authority_);
    first.write("GET /signed-in?ckWebAuthToken=one HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
    EXPECT_TRUE(eventually([&] { return arrivals_ == 1; }));
    second.write("GET /signed-in?ckWebAuthToken=two HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
    EXPECT_TRUE(eventually([&] { return second.state() == QAbstractSocket::UnconnectedState; }));
    EXPECT_EQ(arrivals_, 1);
    EXPECT_EQ(token_, "one");
}

TEST_F(SignInPageTest, HoldsNoMoreThanAFewVisitors) {
    std::vector<std::unique_ptr<QTcpSocket>> visitors;
    for (int count = 0; count < 20; ++count) {
        visitors.push_back(std::make_unique<QTcpSocket>());
        visitors.back()->connectToHost(QHostAddress(QHostAddress::LocalHost), address_.port);
    }
    const auto connected = [&] {
        return std::count_if(visitors.begin(), visitors.end(), [](const auto& visitor) {
            return visitor->state() == QAbstractSocket::ConnectedState;
        });
    };
    EXPECT_TRUE(eventually([&] { return connected() == 8; }));
    settle();
    EXPECT_EQ(connected(), 8);
}

TEST_F(SignInPageTest, APortThatIsTakenIsTold) {
    const SignInPage second(address_, nullptr);
    EXPECT_FALSE(second.isListening());
}

}  // namespace
}  // namespace brimwatch
