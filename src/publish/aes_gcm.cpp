#include "publish/aes_gcm.h"

#include <openssl/evp.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace brimwatch::aes_gcm {
namespace {

struct FreeContext {
    void operator()(EVP_CIPHER_CTX* context) const { ::EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

enum class Direction { decrypt, encrypt };

const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

unsigned char* bytesOf(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

bool fitsCipher(std::size_t size) {
    return size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

bool start(EVP_CIPHER_CTX* context, const SymmetricKey& key, const unsigned char* nonce,
           Direction direction) {
    return context != nullptr &&
           ::EVP_CipherInit_ex(context, ::EVP_aes_256_gcm(), nullptr, key.bytes().data(), nonce,
                               direction == Direction::encrypt ? 1 : 0) == 1;
}

// As many bytes as there are in the text; the mode has no blocks.
bool transform(EVP_CIPHER_CTX* context, std::string_view text, unsigned char* out) {
    int written = 0;
    return ::EVP_CipherUpdate(context, out, &written, bytesOf(text),
                              static_cast<int>(text.size())) == 1;
}

// For the end of a message, which adds no bytes.
bool finish(EVP_CIPHER_CTX* context) {
    std::array<unsigned char, EVP_MAX_BLOCK_LENGTH> nothing{};
    int written = 0;
    return ::EVP_CipherFinal_ex(context, nothing.data(), &written) == 1;
}

}  // namespace

std::optional<std::string> seal(std::string_view text, const SymmetricKey& key,
                                const Nonce& nonce) {
    if (!fitsCipher(text.size())) return std::nullopt;
    const Context context(::EVP_CIPHER_CTX_new());
    std::string sealed(nonceBytes + text.size() + tagBytes, '\0');
    unsigned char* const out = bytesOf(sealed);
    std::copy(nonce.begin(), nonce.end(), out);
    const bool isSealed =
        start(context.get(), key, nonce.data(), Direction::encrypt) &&
        transform(context.get(), text, out + nonceBytes) && finish(context.get()) &&
        ::EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_GET_TAG, static_cast<int>(tagBytes),
                              out + nonceBytes + text.size()) == 1;
    if (!isSealed) return std::nullopt;
    return sealed;
}

std::optional<std::string> open(std::string_view sealed, const SymmetricKey& key) {
    if (sealed.size() < nonceBytes + tagBytes || !fitsCipher(sealed.size())) return std::nullopt;
    const Context context(::EVP_CIPHER_CTX_new());
    const std::string_view ciphertext =
        sealed.substr(nonceBytes, sealed.size() - nonceBytes - tagBytes);
    std::string tag(sealed.substr(sealed.size() - tagBytes));
    std::string text(ciphertext.size(), '\0');
    const bool isOpen = start(context.get(), key, bytesOf(sealed), Direction::decrypt) &&
                        transform(context.get(), ciphertext, bytesOf(text)) &&
                        ::EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_GCM_SET_TAG,
                                              static_cast<int>(tagBytes), tag.data()) == 1 &&
                        finish(context.get());
    if (!isOpen) return std::nullopt;
    return text;
}

}  // namespace brimwatch::aes_gcm
