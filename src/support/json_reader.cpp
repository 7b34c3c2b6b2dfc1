#include "support/json_reader.h"

#include <algorithm>
#include <cstdint>

#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

constexpr bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr int hexDigitValue(char character) {
    if (isDigit(character)) return character - '0';
    if (character >= 'a' && character <= 'f') return character - 'a' + 10;
    if (character >= 'A' && character <= 'F') return character - 'A' + 10;
    return -1;
}

// One pass over the text. Each function stands before what it reads, returns whether that was
// there, and then stands behind it. A destination that is null means: check it and drop it.
class Reader {
  public:
    explicit Reader(std::string_view text) : rest_(text) {
        if (rest_.starts_with(byteOrderMark)) rest_.remove_prefix(byteOrderMark.size());
        skipBlanks();
    }

    bool readDocument(JsonValue* value) { return readValue(value, 0) && atEnd(); }

    bool readDocument(JsonObject& object, std::initializer_list<std::string_view> wanted) {
        return take('{') && readMembers(&object, &wanted, 1) && atEnd();
    }

  private:
    bool atEnd() {
        skipBlanks();
        return rest_.empty();
    }

    void skipBlanks() {
        const std::size_t count = rest_.find_first_not_of(" \t\n\r");
        rest_.remove_prefix(std::min(count, rest_.size()));
    }

    bool take(char expected) {
        if (!rest_.starts_with(expected)) return false;
        rest_.remove_prefix(1);
        return true;
    }

    bool readValue(JsonValue* value, int depth) {
        if (rest_.empty()) return false;
        switch (rest_.front()) {
            case '{':
                return readObject(value, depth + 1);
            case '[':
                return readArray(value, depth + 1);
            case '"':
                return readStringValue(value);
            case 't':
                return readWord("true", JsonValue(true), value);
            case 'f':
                return readWord("false", JsonValue(false), value);
            case 'n':
                return readWord("null", JsonValue(), value);
            default:
                return readNumber(value);
        }
    }

    bool readWord(std::string_view word, JsonValue meaning, JsonValue* value) {
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        if (value != nullptr) *value = std::move(meaning);
        return true;
    }

    bool readArray(JsonValue* value, int depth) {
        JsonArray elements;
        rest_.remove_prefix(1);
        if (depth > jsonDepthLimit ||
            !readElements(value != nullptr ? &elements : nullptr, depth)) {
            return false;
        }
        if (value != nullptr) *value = std::move(elements);
        return true;
    }

    bool readElements(JsonArray* elements, int depth) {
        skipBlanks();
        if (take(']')) return true;
        do {
            skipBlanks();
            JsonValue element;
            if (!readValue(elements != nullptr ? &element : nullptr, depth)) return false;
            if (elements != nullptr) elements->push_back(std::move(element));
            skipBlanks();
        } while (take(','));
        return take(']');
    }

    bool readObject(JsonValue* value, int depth) {
        JsonObject object;
        rest_.remove_prefix(1);
        if (depth > jsonDepthLimit ||
            !readMembers(value != nullptr ? &object : nullptr, nullptr, depth)) {
            return false;
        }
        if (value != nullptr) *value = std::move(object);
        return true;
    }

    // Stands behind the opening brace. Without a list of wanted keys every member is wanted.
    bool readMembers(JsonObject* object, const std::initializer_list<std::string_view>* wanted,
                     int depth) {
        std::vector<JsonMember> members;
        skipBlanks();
        if (!take('}')) {
            do {
                skipBlanks();
                if (!readMember(object != nullptr ? &members : nullptr, wanted, depth))
                    return false;
                skipBlanks();
            } while (take(','));
            if (!take('}')) return false;
        }
        if (object != nullptr) *object = JsonObject(std::move(members));
        return true;
    }

    bool readMember(std::vector<JsonMember>* members,
                    const std::initializer_list<std::string_view>* wanted, int depth) {
        JsonMember member;
        if (!readString(members != nullptr ? &member.key : nullptr)) return false;
        skipBlanks();
        if (!take(':')) return false;
        skipBlanks();
        const bool keeps = members != nullptr &&
                           (wanted == nullptr ||
                            std::find(wanted->begin(), wanted->end(), member.key) != wanted->end());
        if (!readValue(keeps ? &member.value : nullptr, depth)) return false;
        if (keeps) members->push_back(std::move(member));
        return true;
    }

    bool readNumber(JsonValue* value) {
        const std::string_view start = rest_;
        take('-');
        if (!take('0') && !skipDigits()) return false;
        if (take('.') && !skipDigits()) return false;
        if (take('e') || take('E')) {
            if (!take('+')) take('-');
            if (!skipDigits()) return false;
        }
        if (value != nullptr) {
            *value = JsonNumber{std::string(start.substr(0, start.size() - rest_.size()))};
        }
        return true;
    }

    bool skipDigits() {
        std::size_t count = 0;
        while (count < rest_.size() && isDigit(rest_[count]))
            ++count;
        rest_.remove_prefix(count);
        return count > 0;
    }

    bool readStringValue(JsonValue* value) {
        std::string text;
        if (!readString(value != nullptr ? &text : nullptr)) return false;
        if (value != nullptr) *value = std::move(text);
        return true;
    }

    bool readString(std::string* text) {
        if (!take('"')) return false;
        while (!take('"')) {
            if (rest_.empty() || static_cast<unsigned char>(rest_.front()) < 0x20) return false;
            if (!(rest_.front() == '\\' ? readEscape(text) : readPlainRun(text))) return false;
        }
        return true;
    }

    // Everything up to the next quote, backslash or control character.
    bool readPlainRun(std::string* text) {
        std::size_t count = 0;
        while (count < rest_.size()) {
            const auto byte = static_cast<unsigned char>(rest_[count]);
            if (byte < 0x20 || byte == '"' || byte == '\\') break;
            if (byte < 0x80) {
                ++count;
                continue;
            }
            const DecodedScalar decoded = decodeUtf8(rest_.substr(count));
            if (!decoded.valid) return false;
            count += decoded.length;
        }
        if (text != nullptr) text->append(rest_.substr(0, count));
        rest_.remove_prefix(count);
        return true;
    }

    bool readEscape(std::string* text) {
        constexpr std::string_view marks = "\"\\/bfnrtu";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        if (rest_.size() < 2) return false;
        const std::size_t mark = marks.find(rest_[1]);
        if (mark == std::string_view::npos) return false;
        if (marks[mark] == 'u') return readUnicodeEscape(text);
        rest_.remove_prefix(2);
        if (text != nullptr) text->push_back(meanings[mark]);
        return true;
    }

    // A pair of surrogates becomes the one scalar that it stands for.
    bool readUnicodeEscape(std::string* text) {
        std::optional<char32_t> unit = peekUnicodeEscape();
        if (!unit) return false;
        rest_.remove_prefix(unicodeEscapeLength);
        if (isHighSurrogate(*unit)) {
            const std::optional<char32_t> low = peekUnicodeEscape();
            if (low && isLowSurrogate(*low)) {
                rest_.remove_prefix(unicodeEscapeLength);
                unit = 0x10000 + ((*unit - 0xD800) << 10U) + (*low - 0xDC00);
            }
        }
        if (text != nullptr) appendUtf8(*text, *unit);
        return true;
    }

    std::optional<char32_t> peekUnicodeEscape() const {
        if (rest_.size() < unicodeEscapeLength || !rest_.starts_with("\\u")) return std::nullopt;
        char32_t unit = 0;
        for (const char character : rest_.substr(2, 4)) {
            const int digit = hexDigitValue(character);
            if (digit < 0) return std::nullopt;
            unit = unit * 16 + static_cast<char32_t>(digit);
        }
        return unit;
    }

    static constexpr std::size_t unicodeEscapeLength = 6;

    std::string_view rest_;
};

}  // namespace

std::optional<JsonValue> parseJson(std::string_view text) {
    JsonValue value;
    if (!Reader(text).readDocument(&value)) return std::nullopt;
    return value;
}

std::optional<JsonObject> parseJsonMembers(std::string_view text,
                                           std::initializer_list<std::string_view> wanted) {
    JsonObject object;
    if (!Reader(text).readDocument(object, wanted)) return std::nullopt;
    return object;
}

std::optional<JsonObject> parseJsonObject(std::string_view text) {
    std::optional<JsonValue> value = parseJson(text);
    if (!value || value->object() == nullptr) return std::nullopt;
    return std::move(*value->object());
}

}  // namespace brimwatch
