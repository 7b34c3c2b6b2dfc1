#include "limits_oracle.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace brimwatch::test {
namespace {

using nlohmann::json;

constexpr std::int64_t hour = 3600;

OracleWindow mergedWindow(const OracleWindow& old, const OracleWindow& next, std::int64_t now,
                          bool& changed) {
    const bool nextLive = next.resetsAt && now < *next.resetsAt;
    if (!old.resetsAt || !next.resetsAt) {
        if (!next.resetsAt || nextLive) changed = true;
        return next;
    }
    const bool oldLive = now < *old.resetsAt;
    if (oldLive && !nextLive) return old;
    if (!oldLive && nextLive) {
        changed = true;
        return next;
    }
    const std::int64_t later = *next.resetsAt - *old.resetsAt;
    if (later > hour) {
        if (nextLive) changed = true;
        return next;
    }
    if (later < -hour) return old;
    if (old.used <= next.used && nextLive) changed = true;
    return {std::max(old.used, next.used), next.resetsAt};
}

std::optional<OracleWindow> shown(const std::map<std::string, OracleWindow>& windows,
                                  const std::string& key) {
    const auto window = windows.find(key);
    if (window == windows.end()) return std::nullopt;
    if (!(window->second.used >= 0 && window->second.used <= 100)) return std::nullopt;
    return window->second;
}

OracleRecord recordOf(const std::string& id, const std::map<std::string, OracleWindow>& windows,
                      std::int64_t updatedAt) {
    return {id, shown(windows, "five_hour"), shown(windows, "seven_day"), updatedAt};
}

}  // namespace

const LimitsOracle::File& LimitsOracle::remember(const std::string& id, File file,
                                                 std::int64_t now) {
    const auto known = known_.find(id);
    if (known == known_.end()) return known_[id] = std::move(file);
    File& old = known->second;
    if (id.starts_with("codex-")) {
        if (old.updatedAt <= file.updatedAt) old = std::move(file);
        return old;
    }
    bool changed = false;
    std::map<std::string, OracleWindow> windows = old.windows;
    for (const auto& [key, next] : file.windows) {
        if (!windows.contains(key)) {
            windows[key] = next;
            if (!next.resetsAt || now < *next.resetsAt) changed = true;
        } else {
            windows[key] = mergedWindow(windows[key], next, now, changed);
        }
    }
    old.windows = windows;
    if (changed && old.updatedAt <= file.updatedAt) old.updatedAt = file.updatedAt;
    return old;
}

const std::vector<OracleRecord>& LimitsOracle::reload(const std::string& folder,
                                                      const std::set<std::string>& wanted,
                                                      std::int64_t now) {
    records_.clear();
    std::set<std::filesystem::path> paths;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename();
        if (name.ends_with(".json") && name[0] != '.') paths.insert(entry.path());
    }
    for (const auto& path : paths) {
        std::ifstream stream(path, std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(stream), {}};
        const json value = json::parse(bytes, nullptr, false);
        if (!value.is_object() || value.value("version", 0) != 1) continue;
        const std::string id =
            value.value("provider", std::string()) + '-' + value.value("account", std::string());
        if (!wanted.contains(id)) continue;
        File file;
        file.updatedAt = value.at("updated_at");
        for (const auto& [key, window] : value.at("windows").items()) {
            OracleWindow& read = file.windows[key];
            read.used = window.at("used_percentage");
            if (window.contains("resets_at")) read.resetsAt = window.at("resets_at");
        }
        const OracleRecord before = recordOf(id, file.windows, file.updatedAt);
        if (!before.fiveHour && !before.sevenDay) continue;
        const File& believed = remember(id, std::move(file), now);
        const OracleRecord record = recordOf(id, believed.windows, believed.updatedAt);
        if (record.fiveHour || record.sevenDay) records_.push_back(record);
    }
    std::sort(records_.begin(), records_.end(),
              [](const OracleRecord& a, const OracleRecord& b) { return a.id < b.id; });
    return records_;
}

std::string LimitsOracle::title() const {
    if (records_.empty()) return {};
    std::int64_t sum = 0;
    for (const OracleRecord& record : records_) {
        const OracleWindow& window = record.sevenDay ? *record.sevenDay : *record.fiveHour;
        // The used percentages of the soak have three decimals at most.
        const auto thousandths = static_cast<std::int64_t>(std::llround(window.used * 1000));
        sum += (100'000 - thousandths) / 1000;
    }
    return std::to_string(sum / static_cast<std::int64_t>(records_.size())) + '%';
}

}  // namespace brimwatch::test
