#include "app/unpacking_library.h"

#include "app/own_library.h"

namespace brimwatch {

tl::expected<void, UnpackFailure> unpackByLibrary(int archive, int folder,
                                                  const std::atomic<bool>& isCancelled) {
    auto* unpack = reinterpret_cast<UnpackUpdateInto*>(
        findInOwnLibrary("brimwatch-updates.so", "brimwatchUnpackUpdate"));
    if (unpack == nullptr) return tl::unexpected(UnpackFailure::disk);
    tl::expected<void, UnpackFailure> result;
    unpack(archive, folder, isCancelled, result);
    return result;
}

}  // namespace brimwatch
