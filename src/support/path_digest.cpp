#include "support/path_digest.h"

#include <openssl/sha.h>

#include <array>

namespace brimwatch {

std::string pathDigest(std::string_view path) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    constexpr std::size_t digestBytes = 6;
    std::array<unsigned char, SHA256_DIGEST_LENGTH> hash{};
    ::SHA256(reinterpret_cast<const unsigned char*>(path.data()), path.size(), hash.data());
    std::string digest;
    for (std::size_t index = 0; index < digestBytes; ++index) {
        digest += hexDigits[hash[index] >> 4U];
        digest += hexDigits[hash[index] & 0xFU];
    }
    return digest;
}

}  // namespace brimwatch
