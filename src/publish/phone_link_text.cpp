#include "publish/phone_link_text.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>

namespace brimwatch {

std::string phoneLinkText(const SymmetricKey& key) {
    // Four characters for each three bytes begun, and a NUL.
    std::array<unsigned char, (SymmetricKey::byteCount + 2) / 3 * 4 + 1> base64{};
    ::EVP_EncodeBlock(base64.data(), key.bytes().data(), static_cast<int>(key.bytes().size()));
    std::string code(base64.begin(), base64.end() - 1);
    std::replace(code.begin(), code.end(), '+', '-');
    std::replace(code.begin(), code.end(), '/', '_');
    std::erase(code, '=');
    return "brimwatch://link?v=1&k=" + code;
}

}  // namespace brimwatch
