#include "platform/linux/cloud_connection.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <utility>

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(cloudLog, "net.quillmoor.brimwatch.mac.cloud")

QByteArray bytes(std::string_view text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

// With "+", "/" and "=" as well, which a query may hold but this server takes for something else.
QByteArray encoded(std::string_view text) {
    return bytes(text).toPercentEncoding();
}

tl::unexpected<CloudRefusal> ended(HttpAnswer::End end) {
    return tl::unexpected(readCloudAnswer({.end = end}, {}).error());
}

tl::unexpected<CloudRefusal> keyStoreFailed(KeyStatus status) {
    return tl::unexpected(
        CloudRefusal{.error = {.code = cloud_error_code::internalError,
                               .description = "iCloud 로그인을 키 저장소에서 읽지 못했어요 (오류 " +
                                              std::to_string(status) + ")."}});
}

}  // namespace

CloudConnection::CloudConnection(CloudContainer container, CloudUserToken* userToken,
                                 CloudTiming timing)
    : container_(std::move(container)), userToken_(userToken), timing_(timing) {}

QCoro::Task<CloudAnswer> CloudConnection::ask(std::shared_ptr<CloudConnection> connection,
                                              CloudQuestion question, QDeadlineTimer deadline) {
    if (QCoreApplication::instance() == nullptr) co_return ended(HttpAnswer::End::cancelled);
    CallQueue::Ticket ticket(connection->queue_, deadline);
    const EventLoopWait::End turn(ticket.wait());
    co_await turn;
    if (ticket.end() == CallQueue::Ticket::End::late) co_return ended(HttpAnswer::End::late);
    if (ticket.end() != CallQueue::Ticket::End::turn || connection->isClosed())
        co_return ended(HttpAnswer::End::cancelled);

    const KeyStore::Match token = connection->userToken();
    const bool isKnown =
        token.status == key_status::success || token.status == key_status::itemNotFound;
    if (!isKnown) co_return keyStoreFailed(token.status);
    HttpExchange exchange(connection->network(), connection->request(question, token.value),
                          connection->limits(deadline));
    connection->exchange_ = &exchange;
    const EventLoopWait::End answered(exchange.wait());
    co_await answered;
    connection->exchange_ = nullptr;
    if (connection->isClosed()) co_return ended(HttpAnswer::End::cancelled);
    co_return connection->digest(exchange.takeAnswer(), token.value);
}

KeyStore::Match CloudConnection::userToken() {
    if (userToken_ == nullptr) return {.status = key_status::itemNotFound};
    return userToken_->current();
}

void CloudConnection::close() {
    queue_.close();
    if (exchange_ != nullptr) exchange_->cancel();
}

HttpRequest CloudConnection::request(const CloudQuestion& question,
                                     const SecretBytes& userToken) const {
    QByteArray address = bytes(container_.address) + "/database/1/" +
                         encoded(container_.identifier) + '/' + encoded(container_.environment) +
                         "/public/" + bytes(question.operation) +
                         "?ckAPIToken=" + encoded(container_.apiToken);
    if (!userToken.empty()) address += "&ckWebAuthToken=" + encoded(userToken.view());
    HttpRequest request{.url = QUrl::fromEncoded(address, QUrl::StrictMode)};
    if (question.json) request.json = bytes(*question.json);
    return request;
}

HttpExchange::Limits CloudConnection::limits(QDeadlineTimer deadline) const {
    return {.silence = timing_.silence, .deadline = deadline, .answerBytes = answerBytesLimit};
}

QNetworkAccessManager& CloudConnection::network() {
    if (!network_) network_ = std::make_unique<QNetworkAccessManager>();
    return *network_;
}

CloudAnswer CloudConnection::digest(const HttpAnswer& answer, const SecretBytes& userToken) {
    const std::string_view successor(answer.userToken.constData(),
                                     static_cast<std::size_t>(answer.userToken.size()));
    if (!userToken.empty() && CloudUserToken::isPlausible(successor))
        userToken_->succeed(userToken, SecretBytes(successor));
    CloudAnswer read = readCloudAnswer(answer, userToken);
    if (read) return read;
    const CloudRefusal& refusal = read.error();
    if (!userToken.empty() && refusal.serverErrorCode == "AUTHENTICATION_FAILED")
        userToken_->refuse(userToken);
    if (!refusal.supportId.empty())
        qCInfo(cloudLog, "CloudKit 지원 번호 %s", refusal.supportId.c_str());
    return read;
}

}  // namespace brimwatch
