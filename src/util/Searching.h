// Searching and capitalizing text the way a user expects.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Range.h"

namespace quillet {

// Each word between single spaces that has no upper-case letter, capitalized in the environment's locale; the others,
// and every space, stay ("hello iPhone" → "Hello iPhone").
std::u16string smartCapitalizedString(std::u16string_view text);

// The matches that ignore case and diacritics, in order, without overlap. A search string as long as what is left of
// the text is not looked for any more: "ab" is found once in "abab" and not at all in "ab".
// @sel localizedStandardRangesOfString:
std::vector<platform::Range> localizedStandardRangesOfString(std::u16string_view text, std::u16string_view searched);

// Whether the text, or the text without spaces and tabs at its ends, begins with the prefix.
// @sel hasPrefixIgnoringWhitespace:
bool hasPrefixIgnoringWhitespace(std::u16string_view text, std::u16string_view prefix);

// Ignores diacritics as well as case; false for an empty prefix, which no search finds.
// @sel hasCaseInsensitivePrefix:
bool hasCaseInsensitivePrefix(std::u16string_view text, std::u16string_view prefix);

} // namespace quillet
