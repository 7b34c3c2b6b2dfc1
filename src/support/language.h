// The languages in which the program speaks. The Korean texts of the sources are the keys, and what
// is read where a language has no other; files, histories and what goes to phones hold nothing
// else, since texts are translated when they are drawn.
//
// A language is a file in `translations/`, which is compiled in. A key may hold places, "%1" to
// "%9", for what stands in a text that was put together. Any thread.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace brimwatch {

struct Translation {
    std::string_view key;
    std::string_view text;
};

struct Language {
    std::string_view code;                      // as in the setting, "ko"
    std::string_view name;                      // in itself, "한국어"
    std::span<const Translation> translations;  // by the bytes of their keys
};

// Korean first.
std::span<const Language> allLanguages();
// Korean for any other code.
const Language& languageOfCode(std::string_view code);

// The text in that language: of the key that it is, else of each of its lines, else of the longest
// key whose places it fills (with what stands in them translated as well), else as it is.
std::string translatedText(std::string_view korean, const Language& language);

// The locale in which that language speaks of times and numbers: of the region of the locale, as in
// "en_DE" of "de_DE.UTF-8", and without one of no region, as in "en" of "C".
std::string localeOf(const Language& language, std::string_view locale);

}  // namespace brimwatch
