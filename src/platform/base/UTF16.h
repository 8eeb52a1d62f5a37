// The two conversions between UTF-8 bytes and UTF-16 text, named nowhere else.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// Ill-formed bytes become U+FFFD, one for each maximal ill-formed part (Unicode 15, section 3.9). Linear.
std::u16string utf16FromUTF8(std::string_view bytes);

// A lone surrogate becomes U+FFFD: UTF-8 cannot hold it. Linear.
std::string utf8FromUTF16(std::u16string_view text);

// Whether the bytes are well-formed UTF-8 (no surrogates, no overlong forms).
bool isValidUTF8(std::string_view bytes);

constexpr bool isHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool isLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace platform
