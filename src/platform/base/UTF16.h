// The two conversions between UTF-8 bytes and UTF-16 text, named nowhere else.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

// Ill-formed bytes become U+FFFD, one for each maximal ill-formed part (Unicode 15, section 3.9). Linear.
std::u16string utf16FromUTF8(std::string_view bytes);

// A lone surrogate becomes U+FFFD: UTF-8 cannot hold it. Linear.
std::string utf8FromUTF16(std::u16string_view text);

// Whether the bytes are well-formed UTF-8 (no surrogates, no overlong forms).
bool isValidUTF8(std::string_view bytes);

// The code point of the non-ASCII bytes at `position`, which moves behind them; of ill-formed ones U+FFFD, and then
// behind their maximal ill-formed part.
char32_t takeCodePoint(std::string_view bytes, std::size_t& position);

// Writes a code point as one unit or two; returns where the next one goes.
constexpr char16_t* putCodePoint(char16_t* out, char32_t point) {
    if (point < 0x10000) {
        *out++ = static_cast<char16_t>(point);
    } else {
        *out++ = static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10));
        *out++ = static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF));
    }
    return out;
}

constexpr bool isHighSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool isLowSurrogate(char16_t unit) {
    return (unit & 0xFC00) == 0xDC00;
}

} // namespace platform
