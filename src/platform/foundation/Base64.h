// Base64 (RFC 4648, section 4).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The bytes of a base64 text. Characters outside the alphabet are skipped, wherever they stand. What is left must be a
// multiple of four characters, with "=" only as the last one or two; otherwise nothing. Bits that the last characters
// have over are ignored. A text without one character of the alphabet is no bytes. One pass.
std::optional<std::string> base64Decoded(std::string_view text);

// Without line breaks.
std::string base64Encoded(std::string_view bytes);

// The same, written behind what `text` holds: a data: URL is built without a second copy.
void appendBase64(std::string& text, std::string_view bytes);

// How many characters the encoding of so many bytes has.
constexpr std::size_t base64EncodedSize(std::size_t byteCount) {
    return (byteCount + 2) / 3 * 4;
}

} // namespace platform
