#include "support/unicode.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace brimwatch {
namespace {

struct ScalarRange {
    char32_t first;
    char32_t last;
};

constexpr auto alphanumericRanges = std::to_array<ScalarRange>({
#include "support/unicode_alphanumeric_ranges.inc"
});

constexpr DecodedScalar invalidByte = {0xFFFD, 1, false};

constexpr bool isAsciiAlphanumeric(char32_t scalar) {
    return (scalar >= '0' && scalar <= '9') || (scalar >= 'A' && scalar <= 'Z') ||
           (scalar >= 'a' && scalar <= 'z');
}

// How many bytes the sequence takes that a first byte above 0x7F opens, or 0 if it opens none.
constexpr std::size_t sequenceLength(unsigned char first) {
    if (first >= 0xC2 && first <= 0xDF) return 2;
    if (first >= 0xE0 && first <= 0xEF) return 3;
    if (first >= 0xF0 && first <= 0xF4) return 4;
    return 0;
}

constexpr bool fitsLength(char32_t scalar, std::size_t length) {
    if (length == 2) return scalar >= 0x80;
    if (length == 3) return scalar >= 0x800 && !(scalar >= 0xD800 && scalar <= 0xDFFF);
    return scalar >= 0x10000 && scalar <= 0x10FFFF;
}

}  // namespace

DecodedScalar decodeUtf8(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return {first, 1, true};
    const std::size_t length = sequenceLength(first);
    if (length == 0 || text.size() < length) return invalidByte;
    char32_t scalar = first & (0xFFU >> (length + 1));
    for (const char character : text.substr(1, length - 1)) {
        const auto byte = static_cast<unsigned char>(character);
        if ((byte & 0xC0U) != 0x80U) return invalidByte;
        scalar = (scalar << 6U) | (byte & 0x3FU);
    }
    if (!fitsLength(scalar, length)) return invalidByte;
    return {scalar, length, true};
}

bool isValidUtf8(std::string_view text) {
    while (!text.empty()) {
        const DecodedScalar decoded = decodeUtf8(text);
        if (!decoded.valid) return false;
        text.remove_prefix(decoded.length);
    }
    return true;
}

void appendUtf8(std::string& text, char32_t scalar) {
    const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (scalar < 0x80) {
        append(scalar);
        return;
    }
    if (scalar < 0x800) {
        append(0xC0U | (scalar >> 6U));
    } else if (scalar < 0x10000) {
        append(0xE0U | (scalar >> 12U));
        append(0x80U | ((scalar >> 6U) & 0x3FU));
    } else {
        append(0xF0U | (scalar >> 18U));
        append(0x80U | ((scalar >> 12U) & 0x3FU));
        append(0x80U | ((scalar >> 6U) & 0x3FU));
    }
    append(0x80U | (scalar & 0x3FU));
}

bool isUnicodeAlphanumeric(char32_t scalar) {
    if (scalar < 0x80) return isAsciiAlphanumeric(scalar);
    const auto* const behind = std::upper_bound(
        alphanumericRanges.begin(), alphanumericRanges.end(), scalar,
        [](char32_t wanted, const ScalarRange& range) { return wanted < range.first; });
    return behind != alphanumericRanges.begin() && scalar <= std::prev(behind)->last;
}

bool isAccountKeyCharacter(char32_t scalar) {
    return scalar == '.' || scalar == '_' || scalar == '-' || isUnicodeAlphanumeric(scalar);
}

bool holdsOnlyAccountKeyCharacters(std::string_view text) {
    while (!text.empty()) {
        const DecodedScalar decoded = decodeUtf8(text);
        if (!decoded.valid || !isAccountKeyCharacter(decoded.scalar)) return false;
        text.remove_prefix(decoded.length);
    }
    return true;
}

}  // namespace brimwatch
