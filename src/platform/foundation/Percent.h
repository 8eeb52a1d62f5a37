// Percent-encoding of bytes (RFC 3986, section 2.1). Digits are upper-case hexadecimal.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Counterpart of encoding with URLPathAllowedCharacterSet: every byte is encoded but letters, digits, and
// - . _ ~ ! $ & ' ( ) * + , : = @ /. A ";" is encoded, as the platform does, although a path may hold one.
std::string percentEncodedForURLPath(std::string_view utf8);

// Every percent sequence as its byte. Nothing when a "%" is not followed by two hexadecimal digits, or the bytes
// that come out are no UTF-8.
std::optional<std::string> removingPercentEncoding(std::string_view encoded);

// Every well-formed percent sequence as its byte, whatever the bytes; another "%" stays.
std::string percentDecodedBytes(std::string_view encoded);

// Whether `text` has a "%" and two hexadecimal digits at `position`.
bool isPercentSequence(std::string_view text, std::size_t position);

// Adds "%" and two digits.
void appendPercentEncoded(std::string& out, char byte);

} // namespace platform
