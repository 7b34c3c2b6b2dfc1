#include "publish/snapshot_json.h"

#include <cmath>
#include <utility>

#include "publish/limits_wire.h"
#include "support/json_fields.h"
#include "support/json_reader.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

using Snapshot = LimitsCloud::Snapshot;

void appendMac(std::string& json, const Snapshot::Mac& mac) {
    json += R"({"limits":[)";
    for (const SubscriptionLimits& limits : mac.limits) {
        if (&limits != &mac.limits.front()) json += ',';
        appendLimits(json, limits);
    }
    json += R"(],"sentAt":)";
    appendWireNumber(json, unixSeconds(mac.sentAt));
    json += '}';
}

std::optional<Snapshot::Mac> decodeMac(const JsonValue& value) {
    if (value.object() == nullptr) return std::nullopt;
    JsonFields fields(*value.object());
    Snapshot::Mac mac{.sentAt = instantFromUnixSeconds(fields.number("sentAt")), .limits = {}};
    for (const JsonValue& element : fields.array("limits")) {
        if (auto limits = decodeLimits(element)) mac.limits.push_back(*std::move(limits));
    }
    if (!fields.allRead() || !std::isfinite(unixSeconds(mac.sentAt))) return std::nullopt;
    return mac;
}

}  // namespace

std::string encodeSnapshot(const Snapshot& snapshot) {
    std::size_t bytes = 0;
    for (const auto& [id, mac] : snapshot.macs)
        bytes += expectedBytes(mac.limits);
    std::string json;
    json.reserve(bytes);
    json += R"({"macs":{)";
    for (const auto& [id, mac] : snapshot.macs) {
        if (&id != &snapshot.macs.begin()->first) json += ',';
        appendWireText(json, id.text);
        json += ':';
        appendMac(json, mac);
    }
    json += R"(},"version":)";
    json += std::to_string(snapshot.version);
    json += '}';
    return json;
}

std::optional<Snapshot> decodeSnapshot(std::string_view json) {
    const std::optional<JsonObject> object = parseJsonMembers(json, {"version", "macs"});
    if (!object) return std::nullopt;
    JsonFields fields(*object);
    Snapshot snapshot{.version = fields.integer("version"), .macs = {}};
    for (const JsonMember& member : fields.object("macs").members()) {
        std::optional<Snapshot::Mac> mac = decodeMac(member.value);
        if (!mac || !isValidUtf8(member.key)) return std::nullopt;
        snapshot.macs.emplace(MacId{member.key}, *std::move(mac));
    }
    if (!fields.allRead() || snapshot.version != Snapshot::supportedVersion) return std::nullopt;
    return snapshot;
}

}  // namespace brimwatch
