#include "platform/linux/appcast_version.h"

#include <algorithm>
#include <string>
#include <vector>

namespace brimwatch {
namespace {

enum class Kind { text, separator, number };

struct Part {
    Kind kind = Kind::text;
    std::string_view text;
};

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// White space and the punctuation of ASCII.
constexpr bool isSeparator(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r') ||
           std::string_view("!\"#%&'()*,-./:;?@[\\]_{}").find(c) != std::string_view::npos;
}

Kind kindOf(char c) {
    if (isDigit(c)) return Kind::number;
    return isSeparator(c) ? Kind::separator : Kind::text;
}

std::vector<Part> partsOf(std::string_view version) {
    std::vector<Part> parts;
    while (!version.empty()) {
        const Kind kind = kindOf(version.front());
        std::size_t length = 1;
        while (kind != Kind::separator && length < version.size() &&
               kindOf(version[length]) == kind)
            ++length;
        parts.push_back({.kind = kind, .text = version.substr(0, length)});
        version.remove_prefix(length);
    }
    return parts;
}

std::string_view withoutSuffix(std::string_view version) {
    const std::size_t hyphen = version.find('-', 1);
    return version.substr(0, hyphen);
}

// How many parts the leading run of numbers and dots has.
std::size_t leadingNumbers(const std::vector<Part>& parts) {
    const auto end = std::find_if(parts.begin(), parts.end(), [](const Part& part) {
        return part.kind != Kind::number && part.text != ".";
    });
    return static_cast<std::size_t>(end - parts.begin());
}

void pad(std::vector<Part>& parts, std::size_t from, std::size_t length) {
    std::vector<Part> padding;
    // A dot stands at every odd place of such a run.
    for (std::size_t at = from; at < length; ++at)
        padding.push_back(at % 2 == 1 ? Part{Kind::separator, "."} : Part{Kind::number, "0"});
    parts.insert(parts.begin() + static_cast<std::ptrdiff_t>(from), padding.begin(), padding.end());
}

// By their values, however large these are.
std::weak_ordering compareNumbers(std::string_view left, std::string_view right) {
    left.remove_prefix(std::min(left.find_first_not_of('0'), left.size()));
    right.remove_prefix(std::min(right.find_first_not_of('0'), right.size()));
    if (left.size() != right.size()) return left.size() <=> right.size();
    return left.compare(right) <=> 0;
}

std::weak_ordering compareParts(const Part& left, const Part& right) {
    if (left.kind != right.kind) return left.kind <=> right.kind;
    if (left.kind == Kind::number) return compareNumbers(left.text, right.text);
    if (left.kind == Kind::text) return left.text.compare(right.text) <=> 0;
    return std::weak_ordering::equivalent;
}

// Which of two versions is higher that are the same until one of them ends: text makes it lower.
bool isLongerHigher(const std::vector<Part>& longer, std::size_t end) {
    return longer[end].kind != Kind::text;
}

}  // namespace

std::weak_ordering compareVersions(std::string_view left, std::string_view right) {
    std::vector<Part> leftParts = partsOf(withoutSuffix(left));
    std::vector<Part> rightParts = partsOf(withoutSuffix(right));
    const std::size_t leftRun = leadingNumbers(leftParts);
    const std::size_t rightRun = leadingNumbers(rightParts);
    pad(leftParts, leftRun, rightRun);
    pad(rightParts, rightRun, leftRun);
    const std::size_t common = std::min(leftParts.size(), rightParts.size());
    for (std::size_t at = 0; at < common; ++at) {
        const std::weak_ordering order = compareParts(leftParts[at], rightParts[at]);
        if (order != std::weak_ordering::equivalent) return order;
    }
    if (leftParts.size() == rightParts.size()) return std::weak_ordering::equivalent;
    const bool isLeftHigher = leftParts.size() > common ? isLongerHigher(leftParts, common)
                                                        : !isLongerHigher(rightParts, common);
    return isLeftHigher ? std::weak_ordering::greater : std::weak_ordering::less;
}

}  // namespace brimwatch
