// Counterpart of localizedStandardRangeOfString: finds text as a user expects it, ignoring case and diacritics in the
// environment's locale (which matters for the Turkic dotless i).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Range.h"
#include "platform/foundation/TextFolding.h"

namespace platform {

// One search through one text, from match to match. Linear in the text, whatever is searched.
class LocalizedSearch {
  public:
    // Neither view is kept.
    LocalizedSearch(std::u16string_view text, std::u16string_view searched);

    // The next match that does not overlap the one before, in units of the text; marks after the last letter belong to
    // it. A match never begins or ends inside a character ("s" is not found in "ß"). Nothing matches an empty string.
    std::optional<Range> next();

  private:
    Range rangeInText(std::size_t foldedStart, std::size_t foldedEnd) const;
    bool isCharacterBoundary(std::size_t folded) const;

    std::u16string folded_;
    std::vector<std::size_t> origins_; // of each folded unit, the position in the text of the character that it is from
    std::size_t textLength_;
    std::u16string pattern_;
    std::vector<std::size_t> borders_; // of each prefix of the pattern, the longest proper prefix that is its suffix
    std::size_t position_ = 0;
};

// Whether the first match is at position 0; false for an empty prefix.
bool localizedStandardHasPrefix(std::u16string_view text, std::u16string_view prefix);

} // namespace platform
