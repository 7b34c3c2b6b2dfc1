#include "limits/usage_name.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <memory>

namespace brimwatch {
namespace {

constexpr int longestName = 40;

icu::UnicodeString withSingleBlanks(const icu::UnicodeString& text) {
    icu::UnicodeString result;
    bool blankIsDue = false;
    for (int32_t index = 0; index < text.length(); index = text.moveIndex32(index, 1)) {
        const UChar32 scalar = text.char32At(index);
        if (u_isUWhiteSpace(scalar) != 0) {
            blankIsDue = !result.isEmpty();
            continue;
        }
        if (blankIsDue) result.append(u' ');
        blankIsDue = false;
        result.append(scalar);
    }
    return result;
}

void cutToLongestName(icu::UnicodeString& text) {
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), error));
    if (U_FAILURE(error) != 0) return;
    characters->setText(text);
    const int32_t end = characters->next(longestName);
    if (end != icu::BreakIterator::DONE) text.truncate(end);
}

}  // namespace

std::optional<std::string> normalizedUsageName(std::string_view name) {
    icu::UnicodeString text = withSingleBlanks(icu::UnicodeString::fromUTF8(
        icu::StringPiece(name.data(), static_cast<int32_t>(name.size()))));
    cutToLongestName(text);
    if (text.isEmpty()) return std::nullopt;
    std::string result;
    text.toUTF8String(result);
    return result;
}

}  // namespace brimwatch
