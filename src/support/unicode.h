// UTF-8 (RFC 3629) and the one character class that the program asks for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brimwatch {

struct DecodedScalar {
    char32_t scalar;     // U+FFFD where the bytes are not valid
    std::size_t length;  // bytes taken, at least 1
    bool valid;
};

// The first scalar of a text that is not empty. An invalid sequence takes one byte.
DecodedScalar decodeUtf8(std::string_view text);

bool isValidUtf8(std::string_view text);

// Appends the UTF-8 form. A surrogate is given the three bytes that its number would have.
void appendUtf8(std::string& text, char32_t scalar);

// A letter, a mark or a digit: general category L, M or N (Unicode 15).
bool isUnicodeAlphanumeric(char32_t scalar);

// Whether every scalar may stand in an account key: a letter, mark or digit, or one of ".", "_",
// "-". Invalid UTF-8 may not; an empty text may.
bool holdsOnlyAccountKeyCharacters(std::string_view text);
bool isAccountKeyCharacter(char32_t scalar);

}  // namespace brimwatch
