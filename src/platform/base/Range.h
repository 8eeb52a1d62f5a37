// Counterpart of NSRange: a stretch of text in UTF-16 units.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

namespace platform {

inline constexpr std::size_t kNotFound = std::numeric_limits<std::size_t>::max();

struct Range {
    std::size_t location = 0;
    std::size_t length = 0;

    constexpr std::size_t end() const { return location + length; }
    constexpr bool contains(std::size_t position) const { return position >= location && position < end(); }

    friend constexpr bool operator==(const Range&, const Range&) = default;
};

// Counterpart of NSStringFromRange: "{12, 3}".
std::string stringFromRange(Range range);

// Counterpart of NSRangeFromString: the first two runs of digits; a missing one is 0, one too large for size_t is
// the largest size_t.
Range rangeFromString(std::string_view text);

} // namespace platform
