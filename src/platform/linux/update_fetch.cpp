#include "platform/linux/update_fetch.h"

#include <QNetworkRequest>
#include <QUrl>
#include <utility>

#include "platform/linux/appcast.h"

namespace brimwatch {
namespace {

constexpr int redirectLimit = 5;
constexpr int okStatus = 200;
constexpr int firstRedirect = 300;
constexpr int firstError = 400;

// Whatever stands before an "@" would be sent as credentials.
bool isFetchable(const QUrl& url) {
    return url.isValid() && url.scheme() == QLatin1String("https") && !url.host().isEmpty() &&
           url.userInfo().isEmpty();
}

QNetworkRequest networkRequest(const QUrl& url, const UpdateRequest& request,
                               const QByteArray& userAgent) {
    QNetworkRequest result(url);
    // Qt would send every header on to wherever a redirect leads.
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                        QNetworkRequest::ManualRedirectPolicy);
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    for (const auto attribute :
         {QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::CookieSaveControlAttribute,
          QNetworkRequest::AuthenticationReuseAttribute})
        result.setAttribute(attribute, QNetworkRequest::Manual);
    // The length that the feed tells is that of the bytes as they are.
    result.setRawHeader("Accept-Encoding", "identity");
    result.setRawHeader("User-Agent", userAgent);
    for (const auto& [name, value] : request.headers)
        result.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    return result;
}

}  // namespace

UpdateFetch::UpdateFetch(QNetworkAccessManager& network, Order order)
    : network_(network), order_(std::move(order)) {
    for (QTimer* const timer : {&silence_, &whole_, &doneSoon_})
        timer->setSingleShot(true);
    const auto late = [this] { finish(End::failed); };
    QObject::connect(&silence_, &QTimer::timeout, &silence_, late);
    QObject::connect(&whole_, &QTimer::timeout, &whole_, late);
    QObject::connect(&doneSoon_, &QTimer::timeout, &doneSoon_, [this] {
        const auto done = std::move(order_.done);
        done(end_);
    });
    silence_.setInterval(order_.silence);
    whole_.start(order_.whole);
    send(order_.request);
}

UpdateFetch::~UpdateFetch() {
    dropReply();
}

void UpdateFetch::send(UpdateRequest request) {
    if (!order_.permit(request)) return finish(End::refused);
    const QUrl url(QString::fromStdString(request.url), QUrl::StrictMode);
    if (!isFetchable(url)) return finish(End::failed);
    url_ = request.url;
    reply_ = network_.get(networkRequest(url, request, order_.userAgent));
    silence_.start();
    QObject::connect(reply_, &QNetworkReply::readyRead, &silence_, [this] { read(); });
    QObject::connect(reply_, &QNetworkReply::finished, &silence_, [this] { replyFinished(); });
}

void UpdateFetch::read() {
    silence_.start();
    const int status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray bytes = reply_->readAll();
    if (status != okStatus) return;
    byteCount_ += bytes.size();
    if (byteCount_ > order_.byteLimit || !order_.take(bytes)) finish(End::rejected);
}

void UpdateFetch::replyFinished() {
    const int status = reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply_->error() == QNetworkReply::NoError && status >= firstRedirect && status < firstError)
        return follow();
    if (reply_->bytesAvailable() > 0) read();
    if (doneSoon_.isActive()) return;
    const bool isFetched = reply_->error() == QNetworkReply::NoError && status == okStatus;
    finish(isFetched ? End::fetched : End::failed);
}

void UpdateFetch::follow() {
    const std::string location = reply_->rawHeader("Location").toStdString();
    if (location.empty() || ++redirects_ > redirectLimit) return finish(End::failed);
    dropReply();
    send({.url = resolvedAddress(url_, location), .headers = {}});
}

void UpdateFetch::finish(End end) {
    if (doneSoon_.isActive()) return;
    end_ = end;
    silence_.stop();
    whole_.stop();
    dropReply();
    doneSoon_.start();
}

void UpdateFetch::dropReply() {
    if (reply_ == nullptr) return;
    QNetworkReply* const reply = std::exchange(reply_, nullptr);
    reply->disconnect(&silence_);
    reply->abort();
    reply->deleteLater();
}

}  // namespace brimwatch
