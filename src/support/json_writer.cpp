#include "support/json_writer.h"

#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";

void appendUnicodeEscape(std::string& out, unsigned unit) {
    out += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        out += hexDigits[(unit >> shift) & 0xFU];
    }
}

void appendControlCharacter(std::string& out, char character) {
    constexpr std::string_view characters = "\b\f\n\r\t";
    constexpr std::string_view marks = "bfnrt";
    const std::size_t index = characters.find(character);
    if (index == std::string_view::npos) {
        appendUnicodeEscape(out, static_cast<unsigned char>(character));
    } else {
        out += '\\';
        out += marks[index];
    }
}

// A surrogate as json_value.h keeps it: ED, then A0 to BF, then any continuation byte.
bool startsWithSurrogate(std::string_view text) {
    return text.size() >= 3 && text[0] == '\xED' && static_cast<unsigned char>(text[1]) >= 0xA0;
}

unsigned surrogateUnit(std::string_view text) {
    const auto second = static_cast<unsigned char>(text[1]);
    const auto third = static_cast<unsigned char>(text[2]);
    return 0xD000U | ((second & 0x3FU) << 6U) | (third & 0x3FU);
}

class Writer {
  public:
    Writer(std::string& out, JsonLayout layout) : out_(out), layout_(layout) {}

    void write(const JsonValue& value, std::size_t depth) {
        if (value.isNull()) out_ += "null";
        if (const bool* boolean = value.boolean()) out_ += *boolean ? "true" : "false";
        if (const JsonNumber* number = value.number()) out_ += number->spelling;
        if (const std::string* text = value.string()) appendJsonString(out_, *text);
        if (const JsonArray* elements = value.array()) writeArray(*elements, depth);
        if (const JsonObject* object = value.object()) writeObject(*object, depth);
    }

  private:
    void writeArray(const JsonArray& elements, std::size_t depth) {
        out_ += '[';
        for (const JsonValue& element : elements) {
            if (&element != &elements.front()) out_ += ',';
            startLine(depth + 1);
            write(element, depth + 1);
        }
        if (!elements.empty()) startLine(depth);
        out_ += ']';
    }

    void writeObject(const JsonObject& object, std::size_t depth) {
        out_ += '{';
        for (const JsonMember& member : object.members()) {
            if (&member != &object.members().front()) out_ += ',';
            startLine(depth + 1);
            appendJsonString(out_, member.key);
            out_ += layout_ == JsonLayout::pretty ? ": " : ":";
            write(member.value, depth + 1);
        }
        if (!object.empty()) startLine(depth);
        out_ += '}';
    }

    void startLine(std::size_t depth) {
        if (layout_ == JsonLayout::compact) return;
        out_ += '\n';
        out_.append(2 * depth, ' ');
    }

    std::string& out_;
    JsonLayout layout_;
};

}  // namespace

void appendJsonString(std::string& out, std::string_view text) {
    out += '"';
    while (!text.empty()) {
        const char character = text.front();
        if (startsWithSurrogate(text)) {
            appendUnicodeEscape(out, surrogateUnit(text));
            text.remove_prefix(3);
            continue;
        }
        if (character == '"' || character == '\\') {
            out += '\\';
            out += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            appendControlCharacter(out, character);
        } else {
            out += character;
        }
        text.remove_prefix(1);
    }
    out += '"';
}

std::string writeJson(const JsonValue& value, JsonLayout layout) {
    std::string out;
    Writer(out, layout).write(value, 0);
    return out;
}

}  // namespace brimwatch
