// Counterpart of NLTokenizer with the unit "sentence" (Unicode Standard Annex #29). Root rules, so that the result does
// not depend on the locale.
#pragma once

#include <optional>
#include <string_view>

#include "platform/base/Range.h"

namespace platform {

// The sentence that holds `position`, with the blanks after it. Nothing when the position is at or beyond the end, or
// when the sentence is white space only. Reads the text only as far as the sentence goes, one before it included.
std::optional<Range> sentenceRangeAt(std::u16string_view text, std::size_t position);

} // namespace platform
