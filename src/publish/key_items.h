// The items of the key store that hold the keys for phones.
#pragma once

#include "platform/key_store.h"

namespace brimwatch {

inline KeyItem sharedKeyItem() {
    return {.service = "net.quillmoor.brimwatch.sync",
            .account = "limits-key-v1",
            .label = "Brimwatch? 동기화 키"};
}

inline KeyItem phoneKeyItem() {
    return {.service = "net.quillmoor.brimwatch.sync",
            .account = "phone-key-v1",
            .label = "Brimwatch? 폰 연결 키"};
}

}  // namespace brimwatch
