#include "support/path_text.h"

#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr char32_t firstByteSurrogate = 0xDC00;
constexpr std::size_t surrogateLength = 3;

// The byte that a surrogate at the beginning of the text stands for: ED, B2 or B3, then a
// continuation byte.
std::optional<char> escapedByte(std::string_view text) {
    if (text.size() < surrogateLength || text[0] != '\xED') return std::nullopt;
    if (text[1] != '\xB2' && text[1] != '\xB3') return std::nullopt;
    if ((static_cast<unsigned char>(text[2]) & 0xC0U) != 0x80U) return std::nullopt;
    const unsigned upper = static_cast<unsigned char>(text[1]) & 0x03U;
    const unsigned lower = static_cast<unsigned char>(text[2]) & 0x3FU;
    return static_cast<char>((upper << 6U) | lower);
}

}  // namespace

std::string textFromPath(std::string_view path) {
    std::string text;
    while (!path.empty()) {
        const DecodedScalar decoded = decodeUtf8(path);
        if (decoded.valid) {
            text += path.substr(0, decoded.length);
        } else {
            appendUtf8(text, firstByteSurrogate + static_cast<unsigned char>(path.front()));
        }
        path.remove_prefix(decoded.length);
    }
    return text;
}

std::optional<std::string> pathFromText(std::string_view text) {
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    std::string path;
    while (!text.empty()) {
        const std::optional<char> byte = escapedByte(text);
        path += byte.value_or(text.front());
        text.remove_prefix(byte ? surrogateLength : 1);
    }
    return path;
}

}  // namespace brimwatch
