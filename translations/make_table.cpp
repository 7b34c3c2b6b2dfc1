// Makes the table of all languages (src/support/language.cpp) out of the files in this folder:
// make_table TABLE LANGUAGE.po... They are files of gettext's kind, whose header names the language
// by its code (`Language`) and in itself (`X-Language-Name`).
//
// A text that is missing, there twice, or has other places than its key ends the build with a line
// that says where.

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

struct LanguageFile {
    std::string code;
    std::string name;
    std::map<std::string, std::string> texts;  // by their keys
};

[[noreturn]] void fail(const std::string& place, const std::string& text) {
    throw std::runtime_error(place + ": " + text);
}

// The text between the quotes of a line, without its escapes.
std::string unquoted(const std::string& line, const std::string& place) {
    const std::size_t begin = line.find('"');
    const std::size_t end = line.rfind('"');
    if (begin == std::string::npos || begin == end) fail(place, "no text in quotes");
    std::string text;
    for (std::size_t index = begin + 1; index < end; ++index) {
        if (line[index] != '\\') {
            text += line[index];
        } else if (++index; line[index] == 'n') {
            text += '\n';
        } else if (line[index] == '"' || line[index] == '\\') {
            text += line[index];
        } else {
            fail(place, "an escape that is none");
        }
    }
    return text;
}

std::set<std::string> placesIn(const std::string& text) {
    std::set<std::string> places;
    for (std::size_t index = 0; index + 1 < text.size(); ++index)
        if (text[index] == '%' && text[index + 1] >= '1' && text[index + 1] <= '9')
            places.insert(text.substr(index, 2));
    return places;
}

std::string headerField(const std::string& header, const std::string& name,
                        const std::string& place) {
    const std::size_t begin = header.find(name + ": ");
    if (begin == std::string::npos) fail(place, "no header field " + name);
    const std::size_t value = begin + name.size() + 2;
    return header.substr(value, header.find('\n', value) - value);
}

class Reader {
  public:
    explicit Reader(std::string path) : path_(std::move(path)) {}

    LanguageFile read() {
        std::ifstream file(path_);
        if (!file) fail(path_, "can't be read");
        std::string line;
        for (int number = 1; std::getline(file, line); ++number)
            take(line, path_ + ':' + std::to_string(number));
        finishEntry();
        const auto header = language_.texts.find("");
        if (header == language_.texts.end()) fail(path_, "no header");
        language_.code = headerField(header->second, "Language", path_);
        language_.name = headerField(header->second, "X-Language-Name", path_);
        language_.texts.erase(header);
        return language_;
    }

  private:
    void take(const std::string& line, const std::string& place) {
        if (line.empty() || line.front() == '#') return;
        if (line.starts_with("msgid ")) {
            finishEntry();
            place_ = place;
            key_.emplace(unquoted(line, place));
        } else if (line.starts_with("msgstr ") && key_) {
            text_.emplace(unquoted(line, place));
        } else if (line.front() == '"' && key_) {
            (text_ ? *text_ : *key_) += unquoted(line, place);
        } else {
            fail(place, "neither key nor text");
        }
    }

    void finishEntry() {
        if (!key_) return;
        if (!text_ || text_->empty()) fail(place_, "no text");
        if (placesIn(*key_) != placesIn(*text_)) fail(place_, "other places than its key");
        if (!language_.texts.emplace(*key_, *text_).second) fail(place_, "there twice");
        key_.reset();
        text_.reset();
    }

    std::string path_;
    std::string place_;
    std::optional<std::string> key_;
    std::optional<std::string> text_;
    LanguageFile language_;
};

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char character : text) {
        if (character == '\n') {
            result += "\\n";
            continue;
        }
        if (character == '"' || character == '\\') result += '\\';
        result += character;
    }
    return result + '"';
}

void write(std::ostream& table, const std::map<std::string, LanguageFile>& languages) {
    for (const auto& [code, language] : languages) {
        table << "constexpr auto " << code << "Translations = std::to_array<Translation>({\n";
        for (const auto& [key, text] : language.texts)
            table << "    {" << quoted(key) << ", " << quoted(text) << "},\n";
        table << "});\n";
    }
    table
        << "constexpr auto languages = std::to_array<Language>({\n    {\"ko\", \"한국어\", {}},\n";
    for (const auto& [code, language] : languages) {
        table << "    {" << quoted(code) << ", " << quoted(language.name) << ", " << code
              << "Translations},\n";
    }
    table << "});\n";
}

void run(const std::string& tablePath, int count, char** files) {
    std::map<std::string, LanguageFile> languages;
    for (int index = 0; index < count; ++index) {
        LanguageFile language = Reader(files[index]).read();
        const std::string code = language.code;
        const bool isCode = code != "ko" && !code.empty() &&
                            std::all_of(code.begin(), code.end(),
                                        [](char letter) { return letter >= 'a' && letter <= 'z'; });
        if (!isCode || !languages.emplace(code, std::move(language)).second)
            fail(files[index], "not a language of its own: " + code);
    }
    std::ofstream table(tablePath);
    write(table, languages);
    if (!table.flush()) fail(tablePath, "can't be written");
}

}  // namespace

int main(int count, char** arguments) {
    try {
        if (count < 2) fail("make_table", "no table named");
        run(arguments[1], count - 2, arguments + 2);
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return EXIT_FAILURE;
    }
}
