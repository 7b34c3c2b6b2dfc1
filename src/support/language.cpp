#include "support/language.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>

namespace brimwatch {
namespace {

#include "support/languages.inc"  // made of the files in translations/

constexpr std::size_t placeCount = 10;
constexpr int deepestPlace = 3;
using Places = std::array<std::string_view, placeCount>;

bool isPlaceAt(std::string_view text, std::size_t index) {
    return text[index] == '%' && index + 1 < text.size() && text[index + 1] >= '1' &&
           text[index + 1] <= '9';
}

std::size_t findPlace(std::string_view text) {
    for (std::size_t index = 0; index < text.size(); ++index)
        if (isPlaceAt(text, index)) return index;
    return std::string_view::npos;
}

// What fills the places of the key in the text, which ends where the next words of the key begin.
std::optional<Places> placesOf(std::string_view key, std::string_view text) {
    Places places;
    std::size_t place = findPlace(key);
    if (place == std::string_view::npos || !text.starts_with(key.substr(0, place))) {
        return std::nullopt;
    }
    text.remove_prefix(place);
    while (place != std::string_view::npos) {
        const auto number = static_cast<std::size_t>(key[place + 1] - '0');
        key.remove_prefix(place + 2);
        place = findPlace(key);
        const std::string_view words = key.substr(0, place);
        const std::size_t end =
            place == std::string_view::npos ? text.size() - words.size() : text.find(words);
        if (text.size() < words.size() || end > text.size() || !text.substr(end).starts_with(words))
            return std::nullopt;
        places.at(number) = text.substr(0, end);
        if (places.at(number).empty()) return std::nullopt;
        text.remove_prefix(end + words.size());
    }
    return places;
}

const Translation* findKey(const Language& language, std::string_view key) {
    const auto found = std::lower_bound(
        language.translations.begin(), language.translations.end(), key,
        [](const Translation& entry, std::string_view wanted) { return entry.key < wanted; });
    return found != language.translations.end() && found->key == key ? &*found : nullptr;
}

std::string translatedTo(std::string_view korean, const Language& language, int depth);

std::string filled(std::string_view text, const Places& places, const Language& language,
                   int depth) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (isPlaceAt(text, index)) {
            const auto number = static_cast<std::size_t>(text[++index] - '0');
            result += translatedTo(places.at(number), language, depth + 1);
        } else {
            result += text[index];
        }
    }
    return result;
}

std::string lineByLine(std::string_view text, const Language& language, int depth) {
    std::string result;
    std::size_t end = 0;
    while ((end = text.find('\n')) != std::string_view::npos) {
        result += translatedTo(text.substr(0, end), language, depth) + '\n';
        text.remove_prefix(end + 1);
    }
    return result + translatedTo(text, language, depth);
}

std::string translatedTo(std::string_view korean, const Language& language, int depth) {
    if (const Translation* entry = findKey(language, korean)) return std::string(entry->text);
    if (depth > deepestPlace) return std::string(korean);
    if (korean.find('\n') != std::string_view::npos) return lineByLine(korean, language, depth);
    const Translation* longest = nullptr;
    for (const Translation& entry : language.translations) {
        const bool isLonger = longest == nullptr || entry.key.size() > longest->key.size();
        if (isLonger && placesOf(entry.key, korean)) longest = &entry;
    }
    if (longest == nullptr) return std::string(korean);
    return filled(longest->text, *placesOf(longest->key, korean), language, depth);
}

}  // namespace

std::span<const Language> allLanguages() {
    return languages;
}

const Language& languageOfCode(std::string_view code) {
    const auto* const found =
        std::find_if(languages.begin(), languages.end(),
                     [code](const Language& language) { return language.code == code; });
    return found != languages.end() ? *found : languages[0];
}

std::string translatedText(std::string_view korean, const Language& language) {
    return translatedTo(korean, language, 0);
}

std::string localeOf(const Language& language, std::string_view locale) {
    std::string result(language.code);
    const std::size_t region = locale.find('_');
    if (region == std::string_view::npos) return result;
    const std::string_view rest = locale.substr(region);
    return result.append(rest.substr(0, rest.find_first_of(".@")));
}

}  // namespace brimwatch
