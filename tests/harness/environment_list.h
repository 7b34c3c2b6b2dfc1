// An environment that a test makes.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "support/environment.h"

namespace brimwatch::test {

class EnvironmentList {
  public:
    EnvironmentList(std::initializer_list<std::pair<std::string, std::string>> variables) {
        for (const auto& [name, value] : variables)
            set(name, value);
    }

    // In place of any former value.
    void set(const std::string& name, const std::string& value) {
        std::erase_if(entries_,
                      [&](const std::string& entry) { return entry.starts_with(name + '='); });
        entries_.push_back(name + '=' + value);
        pointers_.clear();
        for (const std::string& entry : entries_)
            pointers_.push_back(entry.c_str());
        pointers_.push_back(nullptr);
    }

    // Good until the next change.
    const char* const* entries() const { return pointers_.data(); }
    Environment view() const { return Environment(entries()); }

  private:
    std::vector<std::string> entries_;
    std::vector<const char*> pointers_ = {nullptr};
};

}  // namespace brimwatch::test
