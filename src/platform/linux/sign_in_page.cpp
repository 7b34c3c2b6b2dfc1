#include "platform/linux/sign_in_page.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <utility>

#include "platform/linux/cloud_user_token.h"

namespace brimwatch {
namespace {

constexpr qint64 longestHead = 16'384;
constexpr int mostVisitors = 8;
constexpr std::chrono::seconds longestVisit{10};
constexpr std::string_view endOfHead = "\r\n\r\n";
constexpr std::string_view tokenName = "ckWebAuthToken=";

constexpr int found = 200;
constexpr int badRequest = 400;
constexpr int notFound = 404;
constexpr int wrongMethod = 405;
constexpr int wrongHost = 421;
constexpr int headTooLarge = 431;

std::string_view lineOf(std::string_view text) {
    return text.substr(0, text.find("\r\n"));
}

bool isSameText(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return std::tolower(static_cast<unsigned char>(a)) ==
               std::tolower(static_cast<unsigned char>(b));
    });
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The value of the header `Host`, or nothing if there is not exactly one.
std::optional<std::string_view> hostOf(std::string_view head) {
    std::optional<std::string_view> host;
    while (!head.empty()) {
        const std::string_view line = lineOf(head);
        head.remove_prefix(std::min(head.size(), line.size() + 2));
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || !isSameText(line.substr(0, colon), "Host")) continue;
        if (host) return std::nullopt;
        host = trimmed(line.substr(colon + 1));
    }
    return host;
}

SignInRequest turnedAway(int status) {
    return {.status = status};
}

SecretBytes percentDecoded(std::string_view text) {
    QByteArray decoded = QByteArray::fromPercentEncoding(
        QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    SecretBytes bytes(
        std::string_view(decoded.constData(), static_cast<std::size_t>(decoded.size())));
    decoded.fill('\0');
    return bytes;
}

SignInRequest readQuery(std::string_view query) {
    std::optional<std::string_view> token;
    while (!query.empty()) {
        const std::string_view item = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), item.size() + 1));
        if (!item.starts_with(tokenName)) continue;
        if (token) return turnedAway(badRequest);
        token = item.substr(tokenName.size());
    }
    if (!token) return turnedAway(badRequest);
    SecretBytes decoded = percentDecoded(*token);
    if (!CloudUserToken::isPlausible(decoded.view())) return turnedAway(badRequest);
    return {.status = found, .token = std::move(decoded)};
}

QByteArray pageText(int status) {
    const char* const text = status == found
                                 ? "로그인했어요. 이 창은 닫아도 돼요."
                                 : "로그인하지 못했어요. Brimwatch? 설정에서 다시 해 주세요.";
    return QByteArray("<!doctype html><html><meta charset=\"utf-8\"><title>Brimwatch?</title><p>") +
           QCoreApplication::translate("Brimwatch", text).toUtf8() + "</p></html>\n";
}

QByteArray response(int status) {
    const QByteArray page = pageText(status);
    return "HTTP/1.1 " + QByteArray::number(status) + (status == found ? " OK" : " Refused") +
           "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: " +
           QByteArray::number(page.size()) +
           "\r\nCache-Control: no-store\r\nReferrer-Policy: no-referrer\r\n"
           "Content-Security-Policy: default-src 'none'\r\nConnection: close\r\n\r\n" +
           page;
}

}  // namespace

std::optional<SignInAddress> SignInAddress::parse(std::string_view address) {
    const QUrl url(QString::fromUtf8(address.data(), static_cast<qsizetype>(address.size())),
                   QUrl::StrictMode);
    const QString host = url.host();
    const bool isLoopback = host == QLatin1String("127.0.0.1") ||
                            host == QLatin1String("localhost") || host == QLatin1String("::1");
    const int port = url.port();
    if (!url.isValid() || url.scheme() != QLatin1String("http") || !isLoopback || port <= 0 ||
        !url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment())
        return std::nullopt;
    const std::string path = url.path(QUrl::FullyEncoded).toStdString();
    return SignInAddress{.host = host.toStdString(),
                         .authority = url.authority(QUrl::FullyEncoded).toStdString(),
                         .port = static_cast<quint16>(port),
                         .path = path.empty() ? "/" : path};
}

SignInRequest readSignInRequest(std::string_view head, const SignInAddress& address) {
    const std::string_view line = lineOf(head);
    const std::size_t afterMethod = line.find(' ');
    const std::size_t afterTarget = line.rfind(' ');
    if (afterTarget == std::string_view::npos || afterTarget <= afterMethod ||
        !line.substr(afterTarget + 1).starts_with("HTTP/1."))
        return turnedAway(badRequest);
    if (line.substr(0, afterMethod) != "GET") return turnedAway(wrongMethod);
    // A page of another name that leads to this machine has no business here.
    const std::optional<std::string_view> host = hostOf(head.substr(line.size()));
    if (!host || !isSameText(*host, address.authority)) return turnedAway(wrongHost);
    const std::string_view target = line.substr(afterMethod + 1, afterTarget - afterMethod - 1);
    const std::size_t mark = target.find('?');
    if (target.substr(0, mark) != address.path) return turnedAway(notFound);
    if (mark == std::string_view::npos) return turnedAway(badRequest);
    return readQuery(target.substr(mark + 1));
}

SignInPage::SignInPage(SignInAddress address, TokenArrived arrived)
    : address_(std::move(address)), arrived_(std::move(arrived)) {
    if (address_.host != "::1") listen(QHostAddress(QHostAddress::LocalHost));
    if (address_.host == "::1") listen(QHostAddress(QHostAddress::LocalHostIPv6));
    // Browsers try either; a machine may have only the first.
    if (address_.host == "localhost" && isListening())
        listen(QHostAddress(QHostAddress::LocalHostIPv6));
}

SignInPage::~SignInPage() = default;

void SignInPage::close() {
    for (const auto& server : servers_)
        server->close();
}

void SignInPage::listen(const QHostAddress& host) {
    auto server = std::make_unique<QTcpServer>();
    if (!server->listen(host, address_.port)) return;
    QTcpServer& listening = *server;
    connect(&listening, &QTcpServer::newConnection, this,
            [this, &listening] { accept(listening); });
    servers_.push_back(std::move(server));
}

void SignInPage::accept(QTcpServer& server) {
    while (QTcpSocket* visitor = server.nextPendingConnection()) {
        if (server.findChildren<QTcpSocket*>().size() > mostVisitors) {
            const std::unique_ptr<QTcpSocket> oneTooMany(visitor);
            continue;
        }
        auto* const visit = std::make_unique<QTimer>(visitor).release();
        visit->setSingleShot(true);
        connect(visit, &QTimer::timeout, visitor, &QTcpSocket::abort);
        visit->start(longestVisit);
        visitor->setReadBufferSize(longestHead + 1);
        connect(visitor, &QTcpSocket::disconnected, visitor, &QObject::deleteLater);
        connect(visitor, &QTcpSocket::readyRead, this, [this, visitor] { read(*visitor); });
    }
}

void SignInPage::read(QTcpSocket& visitor) {
    QByteArray received = visitor.peek(longestHead + 1);
    const std::string_view text(received.constData(), static_cast<std::size_t>(received.size()));
    const std::size_t end = text.find(endOfHead);
    if (end != std::string_view::npos) {
        answer(visitor, text.substr(0, end));
    } else if (received.size() > longestHead) {
        visitor.disconnect(this);
        visitor.write(response(headTooLarge));
        visitor.disconnectFromHost();
    }
    received.fill('\0');
}

void SignInPage::answer(QTcpSocket& visitor, std::string_view head) {
    SignInRequest request = readSignInRequest(head, address_);
    visitor.disconnect(this);
    // What is not read would turn the end of the connection into a reset.
    visitor.readAll();
    visitor.write(response(request.status));
    visitor.flush();  // whoever waits for the token may drop everything next
    visitor.disconnectFromHost();
    if (request.status != found) return;
    close();
    if (arrived_) std::exchange(arrived_, nullptr)(std::move(request.token));
}

}  // namespace brimwatch
