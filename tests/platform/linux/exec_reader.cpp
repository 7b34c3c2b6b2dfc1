#include "platform/linux/exec_reader.h"

#include <map>
#include <stdexcept>

namespace brimwatch::test {
namespace {

const std::string reserved = " \t\n\"'\\><~|&;$*?#()`";

char next(const std::string& text, std::size_t& at) {
    if (at >= text.size()) throw std::runtime_error("cut short");
    return text[at++];
}

std::string withoutStringEscapes(const std::string& value) {
    const std::map<char, char> meanings = {
        {'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'\\', '\\'}};
    std::string text;
    for (std::size_t at = 0; at < value.size();) {
        const char character = next(value, at);
        text += character == '\\' ? meanings.at(next(value, at)) : character;
    }
    return text;
}

std::string quotedArgument(const std::string& text, std::size_t& at) {
    std::string argument;
    for (char character = next(text, at); character != '"'; character = next(text, at)) {
        if (character == '`' || character == '$') throw std::runtime_error("unescaped");
        if (character == '\\') {
            character = next(text, at);
            if (std::string("\"`$\\").find(character) == std::string::npos) {
                throw std::runtime_error("odd escape");
            }
        }
        argument += character;
    }
    if (at < text.size() && text[at] != ' ') throw std::runtime_error("quoted by halves");
    return argument;
}

std::string plainArgument(const std::string& text, std::size_t& at) {
    std::string argument;
    while (at < text.size() && text[at] != ' ') {
        if (reserved.find(text[at]) != std::string::npos) throw std::runtime_error("reserved");
        argument += text[at++];
    }
    return argument;
}

std::string withoutFieldCodes(const std::string& argument) {
    std::string text;
    for (std::size_t at = 0; at < argument.size();) {
        const char character = next(argument, at);
        if (character == '%' && next(argument, at) != '%') throw std::runtime_error("field code");
        text += character;
    }
    return text;
}

}  // namespace

std::vector<std::string> readExec(const std::string& value) {
    const std::string text = withoutStringEscapes(value);
    std::vector<std::string> arguments;
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == ' ') {
            ++at;
        } else if (text[at] == '"') {
            arguments.push_back(withoutFieldCodes(quotedArgument(text, ++at)));
        } else {
            arguments.push_back(withoutFieldCodes(plainArgument(text, at)));
        }
    }
    return arguments;
}

}  // namespace brimwatch::test
