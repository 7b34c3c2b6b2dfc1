// The locale that numbers are written in.
#pragma once

#include <unicode/locid.h>

#include <string>

namespace brimwatch {

// From an identifier such as "ko", "hi_IN" or "de_DE.UTF-8". One whose language ICU does not know
// gives the root locale, never the one that the process happens to run in.
icu::Locale numberLocale(const std::string& identifier);

}  // namespace brimwatch
