// Counterpart of NSStringEncoding: bytes of the usual encodings as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

// The values are the platform's.
enum class TextEncoding : std::uint32_t {
    ascii = 1,
    japaneseEUC = 3,
    utf8 = 4,
    isoLatin1 = 5,
    shiftJIS = 8,
    isoLatin2 = 9,
    utf16 = 10, // with a byte order mark; big-endian without one
    windowsCP1251 = 11,
    windowsCP1252 = 12,
    windowsCP1253 = 13,
    windowsCP1254 = 14,
    windowsCP1250 = 15,
    iso2022JP = 21,
    macOSRoman = 30,
    utf16BigEndian = 0x90000100,
    utf16LittleEndian = 0x94000100,
};

// Nothing when the bytes are not valid in the encoding, or the encoding is none of those above.
std::optional<std::u16string> decodedText(std::string_view bytes, TextEncoding encoding);

} // namespace platform
