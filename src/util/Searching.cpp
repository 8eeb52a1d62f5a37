#include "util/Searching.h"

#include <algorithm>

#include "platform/foundation/Capitalization.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/LocalizedSearch.h"

namespace quillet {

using platform::CharacterSet;

std::u16string smartCapitalizedString(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t start = 0;;) {
        const std::size_t end = std::min(text.find(u' ', start), text.size());
        const std::u16string_view word = text.substr(start, end - start);
        const bool hasUppercase =
            platform::findFirstOf(word, CharacterSet::uppercaseLetter()) != std::u16string_view::npos;
        if (hasUppercase || word.empty()) {
            result += word;
        } else {
            result += platform::localizedCapitalized(word);
        }
        if (end == text.size()) return result;
        result += u' ';
        start = end + 1;
    }
}

std::vector<platform::Range> localizedStandardRangesOfString(std::u16string_view text, std::u16string_view searched) {
    std::vector<platform::Range> ranges;
    if (searched.size() >= text.size()) return ranges;
    platform::LocalizedSearch search(text, searched);
    // The bound is "less than", not "at most": a match that only just fits behind the last one is not reported.
    for (std::size_t end = 0; searched.size() + end < text.size();) {
        const auto range = search.next();
        if (!range) break;
        ranges.push_back(*range);
        end = range->end();
    }
    return ranges;
}

bool hasPrefixIgnoringWhitespace(std::u16string_view text, std::u16string_view prefix) {
    return text.starts_with(prefix) || platform::trimmed(text, CharacterSet::whitespace()).starts_with(prefix);
}

bool hasCaseInsensitivePrefix(std::u16string_view text, std::u16string_view prefix) {
    return platform::localizedStandardHasPrefix(text, prefix);
}

} // namespace quillet
