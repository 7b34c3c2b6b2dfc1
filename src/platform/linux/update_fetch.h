// Fetching the feed and the files of updates: over HTTPS alone, with a limit on time and bytes.
//
// A redirect is a request of its own, without the headers of the one before it, and has to be
// permitted as that was. Nothing is logged: addresses and headers may be a secret. Main thread,
// while there is an application.
#pragma once

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>
#include <chrono>
#include <functional>
#include <string>

#include "platform/update_engine.h"

namespace brimwatch {

class UpdateFetch {
  public:
    enum class End {
        fetched,
        refused,   // by `permit`
        rejected,  // by `take`, or there were too many bytes
        failed,    // whatever went wrong on the way
    };

    struct Order {
        UpdateRequest request;
        // Asked before each request, which it may change.
        std::function<bool(UpdateRequest& request)> permit;
        // Given what comes, piece by piece.
        std::function<bool(const QByteArray& bytes)> take;
        // Called once, from the event loop; may end the fetch.
        std::function<void(End end)> done;
        qint64 byteLimit = 0;
        std::chrono::milliseconds silence{std::chrono::seconds(30)};
        std::chrono::milliseconds whole{std::chrono::minutes(1)};
        QByteArray userAgent = {};
    };

    // Begins at once. The network must outlive it.
    UpdateFetch(QNetworkAccessManager& network, Order order);
    UpdateFetch(const UpdateFetch&) = delete;
    UpdateFetch& operator=(const UpdateFetch&) = delete;
    ~UpdateFetch();

  private:
    void send(UpdateRequest request);
    void read();
    void replyFinished();
    void follow();
    void finish(End end);
    void dropReply();

    QNetworkAccessManager& network_;
    Order order_;
    QNetworkReply* reply_ = nullptr;
    std::string url_;
    qint64 byteCount_ = 0;
    int redirects_ = 0;
    End end_ = End::failed;
    QTimer silence_;
    QTimer whole_;
    QTimer doneSoon_;
};

}  // namespace brimwatch
