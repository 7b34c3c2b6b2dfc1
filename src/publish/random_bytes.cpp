#include "publish/random_bytes.h"

#include <openssl/rand.h>

#include <cstdlib>

namespace brimwatch {

void fillWithRandomBytes(std::span<unsigned char> bytes) {
    if (::RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1) std::abort();
}

}  // namespace brimwatch
