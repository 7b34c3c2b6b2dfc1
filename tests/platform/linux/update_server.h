// A server of updates on a loopback port, over HTTPS with a certificate of its own, that does what
// a test says. While it lives, the process trusts that certificate. It runs in the event loop of
// the test. Main thread, while there is an application.
#pragma once

#include <QPointer>
#include <QSslConfiguration>
#include <QSslServer>
#include <QTcpSocket>
#include <map>
#include <string>
#include <vector>

namespace brimwatch::test {

class UpdateServer {
  public:
    enum class Delivery { whole, half, headOnly, never };
    enum class Trust { trusted, trustedAsAnother, unknown };

    struct Reply {
        int status = 200;
        std::string body = {};
        std::vector<std::string> headers = {};  // "Name: value"
        Delivery delivery = Delivery::whole;
        bool tellsLength = true;
    };
    struct Request {
        std::string path;
        std::map<std::string, std::string> headers;  // names in lower case
    };

    explicit UpdateServer(Trust trust = Trust::trusted);
    UpdateServer(const UpdateServer&) = delete;
    UpdateServer& operator=(const UpdateServer&) = delete;
    ~UpdateServer();

    // "127.0.0.1:PORT", and that with "https://" before it.
    std::string host() const;
    std::string origin() const { return "https://" + host(); }

    // What it answers at that path, query included; anything else is not found.
    void serve(const std::string& path, Reply reply) { replies_[path] = std::move(reply); }
    // Answers nothing more until `resume`.
    void pause() { isPaused_ = true; }
    void resume();
    const std::vector<Request>& requests() const { return requests_; }
    std::size_t countOf(const std::string& path) const;

  private:
    void accept();
    void read(QTcpSocket& visitor);
    void answer(QTcpSocket& visitor, const Reply& reply);

    QSslConfiguration former_;
    QSslServer server_;
    std::map<std::string, Reply> replies_;
    std::vector<Request> requests_;
    bool isPaused_ = false;
    std::vector<std::pair<QPointer<QTcpSocket>, Reply>> waiting_;
};

}  // namespace brimwatch::test
