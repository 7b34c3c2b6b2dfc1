// One request over HTTP and its answer.
//
// No redirect is followed, no cookie kept or sent, nothing cached. The exchange ends after a time
// without a byte, at its deadline, at an answer that is too large, or when it is cancelled, which
// the end of the application does, too. Main thread, while there is an application.
#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>
#include <chrono>
#include <memory>
#include <optional>

#include "platform/linux/event_loop_wait.h"

namespace brimwatch {

struct HttpRequest {
    QUrl url;
    std::optional<QByteArray> json = {};  // posted; without it the request is a GET
};

struct HttpAnswer {
    enum class End { answered, silent, late, tooLarge, cancelled };

    End end = End::answered;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    int status = 0;  // 0 where none came
    QByteArray body = {};
    QByteArray userToken = {};  // of the header X-Apple-CloudKit-Web-Auth-Token
    QByteArray retryAfter = {};
};

class HttpExchange {
  public:
    struct Limits {
        std::chrono::milliseconds silence;
        QDeadlineTimer deadline;
        qsizetype answerBytes;
    };

    // Sends at once. The network must outlive it.
    HttpExchange(QNetworkAccessManager& network, const HttpRequest& request, const Limits& limits);
    HttpExchange(const HttpExchange&) = delete;
    HttpExchange& operator=(const HttpExchange&) = delete;
    ~HttpExchange();

    void cancel() { finish(HttpAnswer::End::cancelled); }
    EventLoopWait& wait() { return wait_; }
    // Once the wait is over.
    HttpAnswer takeAnswer() { return std::move(answer_); }

  private:
    void watch();
    void read();
    void finish(HttpAnswer::End end);
    void noteHeaders();

    qsizetype answerBytesLimit_;
    QTimer silence_;
    QTimer deadline_;
    bool isOver_ = false;
    HttpAnswer answer_;
    EventLoopWait wait_;
    std::unique_ptr<QNetworkReply> reply_;
};

}  // namespace brimwatch
