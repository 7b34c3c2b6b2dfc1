// The stored limits memory: what it takes it writes and reads back as the same value, and every
// file in it can be remembered and shown as if it had gone through its bytes.

#include <cstdint>
#include <string_view>

#include "harness/stored_json.h"
#include "limits/limits_memory.h"
#include "require.h"

namespace {

using brimwatch::LimitsFile;
using brimwatch::LimitsMemory;
using brimwatch::SubscriptionLimits;

// The first file's own time stands for the clock.
void requireThatFilesCanBeRemembered(const LimitsMemory& stored) {
    LimitsMemory memory = stored;
    for (const auto& [id, file] : stored.files) {
        const std::int64_t now = stored.files.begin()->second.updatedAt;
        const LimitsFile believed = memory.remember(file, now);
        REQUIRE(memory.files.at(file.id()) == believed);
        REQUIRE(SubscriptionLimits::fromFile(believed) ==
                SubscriptionLimits::fromFileData(believed.encode()));
        // An entry under a key that is not its own may stand for another account.
        if (believed.id() != file.id()) continue;
        REQUIRE(memory.remember(believed, now).windows == believed.windows);
    }
    REQUIRE(brimwatch::test::decode<LimitsMemory>(brimwatch::test::encode(memory)) == memory);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto memory = brimwatch::test::decode<LimitsMemory>(
        std::string_view(reinterpret_cast<const char*>(data), size));
    if (!memory) return 0;
    REQUIRE(brimwatch::test::decode<LimitsMemory>(brimwatch::test::encode(*memory)) == memory);
    requireThatFilesCanBeRemembered(*memory);
    return 0;
}
