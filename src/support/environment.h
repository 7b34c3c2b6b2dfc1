// The environment that a process was started with, read and never changed.
#pragma once

#include <optional>
#include <string_view>

namespace brimwatch {

// A view of a list of "NAME=value" strings that ends with a null pointer, as `environ` is. The list
// must outlive it.
class Environment {
  public:
    explicit Environment(const char* const* entries) : entries_(entries) {}

    // The first entry of that name.
    std::optional<std::string_view> value(std::string_view name) const;

    const char* const* entries() const { return entries_; }

  private:
    const char* const* entries_;
};

}  // namespace brimwatch
