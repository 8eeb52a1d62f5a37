// Hashtags in text, which the application turns into tags.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Range.h"

namespace quillet {

// One range a name, in the same order. For "#a" the range goes from the number sign to the last unit of the name. In
// "#a#b" the range of "b" begins at the "b" and reaches one unit past it; it may then end one unit behind the text.
struct TagNamesAndRanges {
    std::vector<std::u16string> names;
    std::vector<platform::Range> ranges;

    friend bool operator==(const TagNamesAndRanges&, const TagNamesAndRanges&) = default;
};

// Preference, a boolean: whether a hashtag made of digits only counts.
inline constexpr std::string_view QLTAllowNumericHashtagsKey = "QLTAllowNumericHashtags";

enum class NumericHashtags { ignored, allowed };

// Linear in the text.
// @sel tagNamesAndRangesFromHashtags:
TagNamesAndRanges tagNamesAndRangesFromHashtags(std::u16string_view text, NumericHashtags numeric);
std::set<std::u16string> uniqueTagNamesFromHashtags(std::u16string_view text, NumericHashtags numeric);

// The same by the preference in the standard user defaults.
TagNamesAndRanges tagNamesAndRangesFromHashtags(std::u16string_view text);
std::set<std::u16string> uniqueTagNamesFromHashtags(std::u16string_view text);

} // namespace quillet
