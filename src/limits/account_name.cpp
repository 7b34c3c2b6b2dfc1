#include "limits/account_name.h"

#include <algorithm>

#include "support/paths.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr std::string_view defaultName = "default";

std::string_view withoutLeadingDots(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of('.'), text.size()));
}

std::string_view withoutOuterHyphens(std::string_view text) {
    const std::size_t first = text.find_first_not_of('-');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of('-') - first + 1);
}

std::string withHyphensForOtherCharacters(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const DecodedScalar decoded = decodeUtf8(text);
        if (decoded.valid && isAccountKeyCharacter(decoded.scalar)) {
            result += text.substr(0, decoded.length);
        } else {
            result += '-';
        }
        text.remove_prefix(decoded.length);
    }
    return result;
}

}  // namespace

std::string derivedAccountName(std::optional<std::string_view> path, std::string_view prefix) {
    std::string_view name = lastPathComponent(path.value_or(""));
    if (name.empty()) name = prefix;
    if (name.starts_with(prefix) && name.substr(prefix.size()).starts_with('-')) {
        name.remove_prefix(prefix.size() + 1);
    } else if (name == prefix || name == withoutLeadingDots(prefix)) {
        name = defaultName;
    }
    const std::string cleaned = withHyphensForOtherCharacters(withoutLeadingDots(name));
    const std::string_view trimmed = withoutOuterHyphens(cleaned);
    return std::string(trimmed.empty() ? defaultName : trimmed);
}

}  // namespace brimwatch
