// Asks the cloud's web interface, one question after the other, since an answer that knows the user
// brings the token for the next.
//
// A question waits for its turn; it ends at its deadline, wherever it is then, and at once with
// `operationCancelled` when the connection is closed or the application quits. Main thread.
#pragma once

#include <QCoroTask>
#include <QDeadlineTimer>
#include <QNetworkAccessManager>
#include <QUrl>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/call_queue.h"
#include "platform/linux/cloud_answer.h"
#include "platform/linux/cloud_container.h"
#include "platform/linux/cloud_user_token.h"

namespace brimwatch {

struct CloudTiming {
    std::chrono::milliseconds silence{std::chrono::seconds(10)};  // without a byte
    std::chrono::milliseconds whole{std::chrono::seconds(20)};
};

struct CloudQuestion {
    std::string operation;            // as in "records/lookup", of the public database
    std::optional<std::string> json;  // posted
};

class CloudConnection {
  public:
    // Nothing that is longer is taken for an answer.
    static constexpr qsizetype answerBytesLimit = 8LL << 20U;

    // Without a token nobody is asked to say who the user is. It must live until `close`.
    CloudConnection(CloudContainer container, CloudUserToken* userToken, CloudTiming timing);
    CloudConnection(const CloudConnection&) = delete;
    CloudConnection& operator=(const CloudConnection&) = delete;
    ~CloudConnection() = default;

    QDeadlineTimer deadline() const { return QDeadlineTimer(timing_.whole); }
    static QCoro::Task<CloudAnswer> ask(std::shared_ptr<CloudConnection> connection,
                                        CloudQuestion question, QDeadlineTimer deadline);
    // The token, `itemNotFound` if nobody is signed in. Not once it is closed.
    KeyStore::Match userToken();
    bool isClosed() const { return queue_.isClosed(); }
    void close();

  private:
    HttpRequest request(const CloudQuestion& question, const SecretBytes& userToken) const;
    HttpExchange::Limits limits(QDeadlineTimer deadline) const;
    QNetworkAccessManager& network();
    CloudAnswer digest(const HttpAnswer& answer, const SecretBytes& userToken);

    CloudContainer container_;
    CloudUserToken* userToken_;
    CloudTiming timing_;
    std::unique_ptr<QNetworkAccessManager> network_;
    CallQueue queue_;
    HttpExchange* exchange_ = nullptr;  // that is under way
};

}  // namespace brimwatch
