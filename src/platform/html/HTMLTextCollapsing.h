// White space that collapses: from a page's UTF-8 to the units that are written, in one pass.
#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

// Writes well-formed UTF-8 (other bytes become U+FFFD) as UTF-16, each stretch of white space as one blank, or as none
// at the very start when that `dropsLeading`. There must be room for as many units as the text has bytes and
// kCollapsingRoom more, and all of them may be written to. Returns how many units count.
inline constexpr std::size_t kCollapsingRoom = 16;
std::size_t writeCollapsed(std::string_view utf8, bool dropsLeading, char16_t* out);

} // namespace platform
