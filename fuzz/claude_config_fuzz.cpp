// The tier of any `.claude.json`: reading only the member that counts finds what reading the whole
// document finds.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "claude/claude_tier_reader.h"
#include "require.h"
#include "support/json_reader.h"

namespace {

using namespace brimwatch;

std::optional<std::string> tierIn(const std::optional<JsonObject>& config) {
    const JsonValue* account = config ? config->find("oauthAccount") : nullptr;
    for (const char* key : {"userRateLimitTier", "organizationRateLimitTier"}) {
        const JsonValue* tier = account != nullptr ? account->member(key) : nullptr;
        if (tier != nullptr && tier->string() != nullptr && *tier != JsonValue("")) {
            return *tier->string();
        }
    }
    return std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    REQUIRE(ClaudeTierReader::parseTier(text) == tierIn(parseJsonObject(text)));
    return 0;
}
