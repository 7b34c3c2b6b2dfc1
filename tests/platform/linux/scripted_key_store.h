// A key store in memory, whose calls a test can watch and answer.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/key_store.h"

namespace brimwatch::test {

class ScriptedKeyStore : public KeyStore {
  public:
    KeyStatus add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override {
        if (const auto status = begin("add", prompt)) return *status;
        labels[nameOf(item)] = item.label;
        return values.try_emplace(nameOf(item), value).second ? key_status::success
                                                              : key_status::duplicateItem;
    }
    Match copyMatching(const KeyItem& item, KeyPrompt prompt) override {
        if (const auto status = begin("copy", prompt)) return {.status = *status};
        const auto found = values.find(nameOf(item));
        if (found == values.end()) return {.status = key_status::itemNotFound};
        return {.value = found->second};
    }
    KeyStatus update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override {
        if (const auto status = begin("update", prompt)) return *status;
        const auto found = values.find(nameOf(item));
        if (found == values.end()) return key_status::itemNotFound;
        found->second = value;
        return key_status::success;
    }
    KeyStatus remove(const KeyItem& item, KeyPrompt prompt) override {
        if (const auto status = begin("remove", prompt)) return *status;
        return values.erase(nameOf(item)) == 1 ? key_status::success : key_status::itemNotFound;
    }

    static std::string nameOf(const KeyItem& item) { return item.service + ' ' + item.account; }

    std::map<std::string, SecretBytes> values;
    std::map<std::string, std::string> labels;
    std::vector<std::string> calls;  // as in "add" or, with prompts allowed, "add!"
    // Asked before each call, it may answer in place of the store.
    std::function<std::optional<KeyStatus>(const std::string& call)> answer;

  private:
    std::optional<KeyStatus> begin(const std::string& call, KeyPrompt prompt) {
        calls.push_back(prompt == KeyPrompt::allowed ? call + '!' : call);
        return answer ? answer(calls.back()) : std::nullopt;
    }
};

}  // namespace brimwatch::test
