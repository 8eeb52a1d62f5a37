// File names are limited in bytes of UTF-8 here, not in characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

inline constexpr std::size_t kMaximumNameBytes = 255;

// The name cut to `limit` bytes at the end of a character, never between a base and its combining marks, as long as
// that leaves anything. The extension (what follows the last "." that is not the first character) is kept, unless it
// takes the whole room. The limit leaves `reserved` bytes free, for a number that may follow: a name within
// limit − reserved bytes comes back as it is. Bytes that are no UTF-8 count as characters of their own.
std::string nameLimitedInBytes(std::string_view name, std::size_t reserved = 0, std::size_t limit = kMaximumNameBytes);

} // namespace platform
