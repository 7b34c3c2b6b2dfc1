// A settings store that lives in memory and counts what reaches it.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/settings_store.h"
#include "support/json_reader.h"
#include "support/json_writer.h"

namespace brimwatch::test {

class MemorySettingsStore final : public SettingsStore {
  public:
    // The keys that were given another value or removed, in order.
    std::vector<std::string> changes;
    // The keys that somebody set or removed, changed or not, in order.
    std::vector<std::string> writes;
    // What every change ends with, if set; it is seen all the same, as of a disk that is full.
    std::optional<std::error_code> error;

    void put(const std::string& key, std::string_view json) { values_[key] = *parseJson(json); }
    // As JSON text, empty if there is none.
    std::string stored(const std::string& key) const {
        const auto value = values_.find(key);
        return value != values_.end() ? writeJson(value->second, JsonLayout::compact) : "";
    }

    std::optional<JsonValue> json(std::string_view key) const override {
        const auto value = values_.find(key);
        if (value == values_.end() || value->second.isNull()) return std::nullopt;
        return value->second;
    }
    FileResult<void> setJson(std::string_view key, JsonValue value) override {
        writes.emplace_back(key);
        JsonValue& stored = values_[std::string(key)];
        if (stored != value) changes.emplace_back(key);
        stored = std::move(value);
        return outcome();
    }
    FileResult<void> remove(std::string_view key) override {
        writes.emplace_back(key);
        if (values_.erase(std::string(key)) != 0) changes.emplace_back(key);
        return outcome();
    }
    FileResult<void> flush() override { return {}; }

  private:
    FileResult<void> outcome() const {
        if (error) return tl::unexpected(*error);
        return {};
    }

    std::map<std::string, JsonValue, std::less<>> values_;
};

}  // namespace brimwatch::test
