// The entry of the library that unpacks updates.

#include "app/unpacking_library.h"

extern "C" __attribute__((visibility("default"))) void brimwatchUnpackUpdate(
    int archive, int folder, const std::atomic<bool>& isCancelled,
    tl::expected<void, brimwatch::UnpackFailure>& result) {
    result = brimwatch::unpackUpdate(archive, folder, isCancelled);
}
