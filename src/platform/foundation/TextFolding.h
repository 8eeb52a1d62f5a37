// Text made equal where a comparison is to see no difference: case, diacritics, width. Not collation: "ø" and "o" are
// two letters, "é" and "e" differ by a mark only.
#pragma once

#include <string>
#include <string_view>

namespace platform {

struct FoldingOptions {
    bool ignoreCase = false;       // full case folding of Unicode: "ß" and "SS" are equal
    bool ignoreDiacritics = false; // marks that combine with any letter; vowel signs of Indic and Thai stay
    bool ignoreWidth = false;      // full and half width forms are their ordinary characters
    bool turkic = false;           // case pairs I-ı and İ-i instead of I-i
};

// Canonically decomposed as well. Lone surrogates stay. Linear.
std::u16string foldedText(std::u16string_view text, FoldingOptions options);

// What one code point folds to, appended to `out`; nothing for a mark that is ignored.
void appendFolded(char32_t point, FoldingOptions options, std::u16string& out);

// The code point at `position`, which moves behind it. A lone surrogate is its own code point.
char32_t takeCodePoint(std::u16string_view text, std::size_t& position);

// Canonical decomposition (NFD).
std::u16string decomposedText(std::u16string_view text);

// Counterpart of the comparison of file names that ignores case, diacritics and width, whatever the locale.
bool equalAsFilenames(std::u16string_view a, std::u16string_view b);

// Counterpart of caseInsensitiveCompare: as equality, whatever the locale.
bool equalIgnoringCase(std::u16string_view a, std::u16string_view b);

} // namespace platform
