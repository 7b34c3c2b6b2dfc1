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

    EnvironmentList(const EnvironmentList& other) : entries_(other.entries_) { point(); }
    EnvironmentList& operator=(const EnvironmentList& other) {
        entries_ = other.entries_;
        point();
        return *this;
    }
    ~EnvironmentList() = default;

    // In place of any former value.
    void set(const std::string& name, const std::string& value) {
        std::erase_if(entries_,
                      [&](const std::string& entry) { return entry.starts_with(name + '='); });
        entries_.push_back(name + '=' + value);
        point();
    }

    // Good until the next change.
    const char* const* entries() const { return pointers_.data(); }
    Environment view() const { return Environment(entries()); }

  private:
    void point() {
        pointers_.clear();
        for (const std::string& entry : entries_)
            pointers_.push_back(entry.c_str());
        pointers_.push_back(nullptr);
    }

    std::vector<std::string> entries_;
    std::vector<const char*> pointers_ = {nullptr};
};

}  // namespace brimwatch::test
