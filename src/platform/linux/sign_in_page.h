// The page to which a browser returns after a sign-in, served to this machine alone.
//
// It waits at a fixed address for one request that brings a token, answers it with a plain page and
// is gone. Every other request is turned away: another path or host, another method, a head of more
// than 16 KiB, a query without exactly one token. The token is percent-decoded once. Main thread.
#pragma once

#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/secret_bytes.h"

namespace brimwatch {

// "http://HOST:PORT/PATH", where the host is 127.0.0.1, [::1] or localhost.
struct SignInAddress {
    std::string host;       // as it stands in the address, without the port
    std::string authority;  // with the port
    quint16 port = 0;
    std::string path;

    static std::optional<SignInAddress> parse(std::string_view address);
};

class SignInPage final : public QObject {
  public:
    using TokenArrived = std::function<void(SecretBytes token)>;

    // `arrived` is called once, from the event loop. The page must outlive that call.
    SignInPage(SignInAddress address, TokenArrived arrived);
    SignInPage(const SignInPage&) = delete;
    SignInPage& operator=(const SignInPage&) = delete;
    ~SignInPage() override;

    // Whether the port could be had.
    bool isListening() const { return !servers_.empty(); }
    // Gives up the port; visitors who are there get their answers.
    void close();

  private:
    void listen(const QHostAddress& host);
    void accept(QTcpServer& server);
    void read(QTcpSocket& visitor);
    void answer(QTcpSocket& visitor, std::string_view head);

    SignInAddress address_;
    TokenArrived arrived_;
    std::vector<std::unique_ptr<QTcpServer>> servers_;
};

// The token of a request's head, or the status to turn it away with. For the tests as well.
struct SignInRequest {
    int status = 200;
    SecretBytes token = {};
};
SignInRequest readSignInRequest(std::string_view head, const SignInAddress& address);

}  // namespace brimwatch
