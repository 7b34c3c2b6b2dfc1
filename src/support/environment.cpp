#include "support/environment.h"

namespace brimwatch {

std::optional<std::string_view> Environment::value(std::string_view name) const {
    for (const char* const* entry = entries_; *entry != nullptr; ++entry) {
        std::string_view text = *entry;
        if (!text.starts_with(name)) continue;
        text.remove_prefix(name.size());
        if (text.starts_with('=')) return text.substr(1);
    }
    return std::nullopt;
}

}  // namespace brimwatch
