#include "platform/linux/ed25519_signature.h"

#include <openssl/evp.h>

#include <QByteArray>
#include <memory>
#include <optional>

namespace brimwatch {
namespace {

constexpr qsizetype keyBytes = 32;
constexpr qsizetype signatureBytes = 64;

struct FreeKey {
    void operator()(EVP_PKEY* key) const { ::EVP_PKEY_free(key); }
};
struct FreeContext {
    void operator()(EVP_MD_CTX* context) const { ::EVP_MD_CTX_free(context); }
};

std::optional<QByteArray> decoded(std::string_view base64, qsizetype size) {
    QByteArray text(base64.data(), static_cast<qsizetype>(base64.size()));
    for (const char blank : {' ', '\t', '\r', '\n'})
        text.replace(blank, QByteArray());
    const auto result =
        QByteArray::fromBase64Encoding(text, QByteArray::AbortOnBase64DecodingErrors);
    if (!result || result.decoded.size() != size) return std::nullopt;
    return result.decoded;
}

const unsigned char* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

}  // namespace

bool isEd25519Key(std::string_view base64) {
    return decoded(base64, keyBytes).has_value();
}

bool isEd25519Signature(std::string_view base64) {
    return decoded(base64, signatureBytes).has_value();
}

bool verifyEd25519(std::string_view bytes, std::string_view signatureBase64,
                   std::string_view keyBase64) {
    const std::optional<QByteArray> signature = decoded(signatureBase64, signatureBytes);
    const std::optional<QByteArray> rawKey = decoded(keyBase64, keyBytes);
    if (!signature || !rawKey) return false;
    const std::unique_ptr<EVP_PKEY, FreeKey> key(::EVP_PKEY_new_raw_public_key(
        EVP_PKEY_ED25519, nullptr, bytesOf(*rawKey), static_cast<std::size_t>(rawKey->size())));
    const std::unique_ptr<EVP_MD_CTX, FreeContext> context(::EVP_MD_CTX_new());
    return key && context &&
           ::EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
           ::EVP_DigestVerify(
               context.get(), bytesOf(*signature), static_cast<std::size_t>(signature->size()),
               reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) == 1;
}

}  // namespace brimwatch
