// A key store in memory, whose calls can be made to fail.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/key_store.h"

namespace brimwatch::test {

class MemoryKeyStore : public KeyStore {
  public:
    KeyStatus add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override {
        if (const auto status = begin("add", item, prompt)) return *status;
        if (!values.try_emplace(nameOf(item), value).second) return key_status::duplicateItem;
        labels[nameOf(item)] = item.label;
        return key_status::success;
    }

    // A careless one: it shows what it has also where it fails.
    Match copyMatching(const KeyItem& item, KeyPrompt prompt) override {
        const auto status = begin("copy", item, prompt);
        const auto found = values.find(nameOf(item));
        if (found == values.end()) return {.status = status.value_or(key_status::itemNotFound)};
        return {.status = status.value_or(key_status::success), .value = found->second};
    }

    KeyStatus update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override {
        if (const auto status = begin("update", item, prompt)) return *status;
        const auto found = values.find(nameOf(item));
        if (found == values.end()) return key_status::itemNotFound;
        found->second = value;
        return key_status::success;
    }

    KeyStatus remove(const KeyItem& item, KeyPrompt prompt) override {
        if (const auto status = begin("remove", item, prompt)) return *status;
        return values.erase(nameOf(item)) == 1 ? key_status::success : key_status::itemNotFound;
    }

    static std::string nameOf(const KeyItem& item) { return item.service + '/' + item.account; }

    std::map<std::string, SecretBytes> values;
    std::map<std::string, std::string> labels;
    std::vector<std::string> calls;
    // Asked before each call, it may answer in place of the store, or change what is in it.
    std::function<std::optional<KeyStatus>(const std::string& call)> answer;

  private:
    std::optional<KeyStatus> begin(const char* call, const KeyItem& item, KeyPrompt prompt) {
        EXPECT_EQ(prompt, KeyPrompt::forbidden);
        EXPECT_EQ(item.service, "net.quillmoor.brimwatch.sync");
        calls.emplace_back(call);
        return answer ? answer(call) : std::nullopt;
    }
};

}  // namespace brimwatch::test
