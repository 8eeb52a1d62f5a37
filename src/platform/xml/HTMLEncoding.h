// From the bytes of a page to clean UTF-8: which encoding they are in, and what the HTML parser must not see.
#pragma once

#include <string>
#include <string_view>

namespace platform {

struct DecodedHTML {
    std::string text;     // well-formed UTF-8 without NUL and CR; CDATA sections became escaped text
    std::string encoding; // what the bytes were read as, lower case
};

// Linear. Bytes that the encoding does not have become U+FFFD.
DecodedHTML decodedHTML(std::string_view bytes);

// Whether a page that declares the encoding is read as UTF-8 when its bytes are. Case does not matter.
bool namesUnicode(std::string_view declared);
// Whether a declaration of the encoding is looked for in the text.
bool mentionsEncoding(std::string_view text);

// The character at one byte 0x80 to 0x9F of Windows-1252.
char16_t windows1252(unsigned char byte);

} // namespace platform
