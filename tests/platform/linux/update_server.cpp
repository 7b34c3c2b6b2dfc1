#include "platform/linux/update_server.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <QHostAddress>
#include <QSslCertificate>
#include <QSslKey>
#include <QSslSocket>
#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace brimwatch::test {
namespace {

struct Identity {
    QSslCertificate certificate;
    QSslKey key;
};

QByteArray contentOf(BIO* memory) {
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory, &bytes);
    const QByteArray content(bytes, size);
    BIO_free(memory);
    return content;
}

void addExtension(X509* certificate, int kind, const char* value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value);
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

// Signed by itself, for the loopback address, from yesterday to tomorrow.
Identity makeIdentity(const char* subject) {
    constexpr long day = 86'400;
    EVP_PKEY* key = EVP_EC_gen("P-256");
    X509* certificate = X509_new();
    X509_set_version(certificate, X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate), day);
    X509_set_pubkey(certificate, key);
    X509_NAME* name = X509_get_subject_name(certificate);
    // Two issuers of one name could not be told apart.
    static int count = 0;
    const std::string own = "test " + std::to_string(++count);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                               reinterpret_cast<const unsigned char*>(own.c_str()), -1, -1, 0);
    X509_set_issuer_name(certificate, name);
    addExtension(certificate, NID_subject_alt_name, subject);
    addExtension(certificate, NID_basic_constraints, "critical,CA:TRUE");
    X509_sign(certificate, key, EVP_sha256());

    BIO* certificateText = BIO_new(BIO_s_mem());
    PEM_write_bio_X509(certificateText, certificate);
    BIO* keyText = BIO_new(BIO_s_mem());
    PEM_write_bio_PrivateKey(keyText, key, nullptr, nullptr, 0, nullptr, nullptr);
    X509_free(certificate);
    EVP_PKEY_free(key);
    return {.certificate = QSslCertificate(contentOf(certificateText)),
            .key = QSslKey(contentOf(keyText), QSsl::Ec)};
}

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

UpdateServer::Request parseHead(const std::string& head) {
    UpdateServer::Request request;
    std::size_t end = head.find("\r\n");
    const std::string line = head.substr(0, end);
    const std::size_t start = line.find(' ') + 1;
    request.path = line.substr(start, line.rfind(' ') - start);
    while (end < head.size()) {
        const std::size_t from = end + 2;
        end = std::min(head.find("\r\n", from), head.size());
        const std::string header = head.substr(from, end - from);
        const std::size_t colon = header.find(": ");
        if (colon != std::string::npos)
            request.headers[lower(header.substr(0, colon))] = header.substr(colon + 2);
    }
    return request;
}

}  // namespace

UpdateServer::UpdateServer(Trust trust) : former_(QSslConfiguration::defaultConfiguration()) {
    const bool isOther = trust == Trust::trustedAsAnother;
    const Identity identity = makeIdentity(isOther ? "IP:127.0.0.2" : "IP:127.0.0.1");
    if (trust != Trust::unknown) {
        QSslConfiguration trusting = former_;
        trusting.addCaCertificate(identity.certificate);
        QSslConfiguration::setDefaultConfiguration(trusting);
    }
    QSslConfiguration own = former_;
    own.setLocalCertificate(identity.certificate);
    own.setPrivateKey(identity.key);
    server_.setSslConfiguration(own);
    if (!server_.listen(QHostAddress(QHostAddress::LocalHost)))
        throw std::runtime_error("no port for a server of updates");
    QObject::connect(&server_, &QTcpServer::pendingConnectionAvailable, &server_,
                     [this] { accept(); });
}

UpdateServer::~UpdateServer() {
    QSslConfiguration::setDefaultConfiguration(former_);
}

std::string UpdateServer::host() const {
    return "127.0.0.1:" + std::to_string(server_.serverPort());
}

std::size_t UpdateServer::countOf(const std::string& path) const {
    return static_cast<std::size_t>(
        std::count_if(requests_.begin(), requests_.end(),
                      [&](const Request& request) { return request.path == path; }));
}

void UpdateServer::resume() {
    isPaused_ = false;
    for (const auto& [visitor, reply] : std::exchange(waiting_, {})) {
        if (visitor) answer(*visitor, reply);
    }
}

void UpdateServer::accept() {
    while (QTcpSocket* visitor = server_.nextPendingConnection()) {
        QObject::connect(visitor, &QTcpSocket::readyRead, &server_,
                         [this, visitor] { read(*visitor); });
        QObject::connect(visitor, &QTcpSocket::disconnected, visitor, &QObject::deleteLater);
        read(*visitor);
    }
}

void UpdateServer::read(QTcpSocket& visitor) {
    const std::string received = visitor.peek(visitor.bytesAvailable()).toStdString();
    const std::size_t end = received.find("\r\n\r\n");
    if (end == std::string::npos) return;
    visitor.read(static_cast<qint64>(end + 4));
    requests_.push_back(parseHead(received.substr(0, end)));
    const auto found = replies_.find(requests_.back().path);
    const Reply reply = found != replies_.end() ? found->second : Reply{.status = 404};
    if (isPaused_) {
        waiting_.emplace_back(&visitor, reply);
    } else {
        answer(visitor, reply);
    }
}

void UpdateServer::answer(QTcpSocket& visitor, const Reply& reply) {
    if (reply.delivery == Delivery::never) return;
    std::string head = "HTTP/1.1 " + std::to_string(reply.status) + " Test\r\n";
    if (reply.tellsLength) {
        head += "Content-Length: " + std::to_string(reply.body.size()) + "\r\n";
    } else {
        head += "Connection: close\r\n";
    }
    for (const std::string& header : reply.headers)
        head += header + "\r\n";
    visitor.write(QByteArray::fromStdString(head + "\r\n"));
    if (reply.delivery == Delivery::headOnly) return;
    const bool isHalf = reply.delivery == Delivery::half;
    visitor.write(QByteArray::fromStdString(isHalf ? reply.body.substr(0, reply.body.size() / 2)
                                                   : reply.body));
    if (isHalf || !reply.tellsLength) visitor.disconnectFromHost();
}

}  // namespace brimwatch::test
