// JSON texts that a hostile or careless program might write, all of them valid.
#pragma once

#include <string>
#include <vector>

#include "harness/random.h"

namespace brimwatch::test {

class RandomJson {
  public:
    explicit RandomJson(Random& random) : random_(random) {}

    std::string value(int depth = 3) {
        switch (random_.below(depth > 0 ? 6 : 4)) {
            case 0:
                return oneOf({"true", "false", "null"});
            case 1:
                return number();
            case 2:
            case 3:
                return string();
            case 4:
                return array(depth - 1);
            default:
                return object(depth - 1);
        }
    }

    std::string object(int depth) {
        std::vector<std::string> members;
        for (std::size_t count = random_.below(5); count > 0; --count)
            members.push_back(member(string(), value(depth)));
        return object(members);
    }

    std::string object(const std::vector<std::string>& members) {
        return enclosed('{', members, '}');
    }

    std::string member(const std::string& key, const std::string& value) {
        return key + blank() + ':' + blank() + value;
    }

    std::string number() {
        return oneOf({"0", "-0", "1e3", "1E+400", "-1.50", "12345678901234567890", "0.1e-999",
                      "3.14159265358979323846264338327950288", "60", "9007199254740993"});
    }

    std::string string() {
        std::string text = "\"";
        for (std::size_t count = random_.below(4); count > 0; --count)
            text += oneOf({"a",        "env",     "zeta", "한글", "\\ud55c", "\\ud83d\\ude80",
                           "\\ud83d ", "\\udfff", "🚀",    "/",    "\\/",     "\\n",
                           "\\u0000",  "\\\"",    "\\\\", " ",    "'",       "\x7F",
                           "\\uFFFE",  "$(x)"});
        return text + '"';
    }

    std::string oneOf(const std::vector<std::string>& choices) {
        return choices[random_.below(choices.size())];
    }

    std::string blank() { return oneOf({"", "", " ", "\n  ", "\t", "\r\n"}); }

  private:
    std::string array(int depth) {
        std::vector<std::string> elements;
        for (std::size_t count = random_.below(4); count > 0; --count)
            elements.push_back(value(depth));
        return enclosed('[', elements, ']');
    }

    std::string enclosed(char first, const std::vector<std::string>& parts, char last) {
        std::string text(1, first);
        for (const std::string& part : parts) {
            if (&part != &parts.front()) text += ',';
            text += blank() + part + blank();
        }
        return text + last;
    }

    Random& random_;
};

}  // namespace brimwatch::test
