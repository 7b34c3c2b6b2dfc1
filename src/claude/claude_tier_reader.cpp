#include "claude/claude_tier_reader.h"

#include <cstddef>

#include "support/json_reader.h"

namespace brimwatch {
namespace {

// Beyond any that years of use make.
constexpr std::size_t configSizeLimit = 256U << 20U;

}  // namespace

ClaudeTierReader::ClaudeTierReader(FileSystem& files)
    : read([&files](const std::string& path) -> std::optional<std::string> {
          FileResult<std::string> bytes = files.read(path, configSizeLimit);
          if (!bytes) return std::nullopt;
          return *std::move(bytes);
      }),
      files_(files) {}

std::optional<std::string> ClaudeTierReader::tier(const std::string& path) {
    const FileResult<FileStatus> status = files_.status(path);
    if (!status) {
        entries.erase(path);
        return std::nullopt;
    }
    const auto known = entries.find(path);
    if (known != entries.end() &&
        known->second.modifiedNanoseconds == status->modifiedNanoseconds) {
        return known->second.tier;
    }
    const std::optional<std::string> bytes = read(path);
    Entry& entry = entries[path];
    entry = {.modifiedNanoseconds = status->modifiedNanoseconds,
             .tier = bytes ? parseTier(*bytes) : std::nullopt};
    return entry.tier;
}

std::optional<std::string> ClaudeTierReader::parseTier(std::string_view bytes) {
    const std::optional<JsonObject> config = parseJsonMembers(bytes, {"oauthAccount"});
    const JsonValue* account = config ? config->find("oauthAccount") : nullptr;
    if (account == nullptr) return std::nullopt;
    for (const std::string_view key : {"userRateLimitTier", "organizationRateLimitTier"}) {
        const JsonValue* value = account->member(key);
        const std::string* tier = value != nullptr ? value->string() : nullptr;
        if (tier != nullptr && !tier->empty()) return *tier;
    }
    return std::nullopt;
}

}  // namespace brimwatch
