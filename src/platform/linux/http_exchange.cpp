#include "platform/linux/http_exchange.h"

#include <QNetworkRequest>

namespace brimwatch {
namespace {

QNetworkRequest networkRequest(const QUrl& url) {
    QNetworkRequest request(url);
    // A followed redirect would carry the query, and with it the token, to another host.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute})
        request.setAttribute(attribute, QNetworkRequest::Manual);
    // Ciphertext does not get shorter, and nothing that unpacks to more than it seems can come.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

std::unique_ptr<QNetworkReply> send(QNetworkAccessManager& network, const HttpRequest& request) {
    QNetworkRequest head = networkRequest(request.url);
    if (!request.json) return std::unique_ptr<QNetworkReply>(network.get(head));
    head.setHeader(QNetworkRequest::ContentTypeHeader, QByteArray("application/json"));
    return std::unique_ptr<QNetworkReply>(network.post(head, *request.json));
}

}  // namespace

HttpExchange::HttpExchange(QNetworkAccessManager& network, const HttpRequest& request,
                           const Limits& limits)
    : answerBytesLimit_(limits.answerBytes),
      wait_([this] { finish(HttpAnswer::End::cancelled); }),
      reply_(send(network, request)) {
    silence_.setSingleShot(true);
    silence_.setInterval(limits.silence);
    deadline_.setSingleShot(true);
    watch();
    silence_.start();
    deadline_.start(static_cast<int>(limits.deadline.remainingTime()));
}

HttpExchange::~HttpExchange() {
    finish(HttpAnswer::End::cancelled);
}

void HttpExchange::watch() {
    const auto bytesPassed = [this] { silence_.start(); };
    QObject::connect(&silence_, &QTimer::timeout, &silence_,
                     [this] { finish(HttpAnswer::End::silent); });
    QObject::connect(&deadline_, &QTimer::timeout, &deadline_,
                     [this] { finish(HttpAnswer::End::late); });
    QObject::connect(reply_.get(), &QNetworkReply::uploadProgress, &silence_, bytesPassed);
    QObject::connect(reply_.get(), &QNetworkReply::metaDataChanged, &silence_, bytesPassed);
    QObject::connect(reply_.get(), &QNetworkReply::readyRead, &silence_, [this] { read(); });
    QObject::connect(reply_.get(), &QNetworkReply::finished, &silence_, [this] {
        read();
        finish(HttpAnswer::End::answered);
    });
}

void HttpExchange::read() {
    if (isOver_) return;
    silence_.start();
    answer_.body += reply_->read(answerBytesLimit_ + 1 - answer_.body.size());
    if (answer_.body.size() > answerBytesLimit_) finish(HttpAnswer::End::tooLarge);
}

void HttpExchange::finish(HttpAnswer::End end) {
    if (isOver_) return;
    isOver_ = true;
    silence_.stop();
    deadline_.stop();
    answer_.end = end;
    noteHeaders();
    reply_->disconnect(&silence_);
    reply_->abort();
    wait_.end();
}

void HttpExchange::noteHeaders() {
    answer_.error = reply_->error();
    answer_.status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer_.userToken = reply_->rawHeader("X-Apple-CloudKit-Web-Auth-Token");
    answer_.retryAfter = reply_->rawHeader("Retry-After");
}

}  // namespace brimwatch
