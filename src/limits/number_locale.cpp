#include "limits/number_locale.h"

#include <unicode/numfmt.h>

#include <algorithm>
#include <string_view>

namespace brimwatch {

icu::Locale numberLocale(const std::string& identifier) {
    const icu::Locale wanted = icu::Locale::createCanonical(identifier.c_str());
    const std::string_view language = wanted.getLanguage();
    int32_t count = 0;
    const icu::Locale* known = icu::NumberFormat::getAvailableLocales(count);
    const bool isKnown = std::any_of(known, known + count, [language](const icu::Locale& locale) {
        return language == locale.getLanguage();
    });
    return isKnown && !language.empty() ? wanted : icu::Locale::getRoot();
}

}  // namespace brimwatch
