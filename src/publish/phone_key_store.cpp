#include "publish/phone_key_store.h"

namespace brimwatch {

SymmetricKey MemoryPhoneKeyStore::addIfAbsent(const SymmetricKey& candidate) {
    if (!key) key = candidate;
    return *key;
}

}  // namespace brimwatch
