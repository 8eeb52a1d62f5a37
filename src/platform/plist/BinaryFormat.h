// The binary property list form, as reader and writer share it: an 8-byte magic, the objects, the offset of each
// object, and a trailer of 32 bytes. Every number is big-endian. An object begins with a marker: the kind in the upper
// half, a size in the lower; the size 15 means that an integer object with the real size follows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform::bplist {

inline constexpr std::string_view kMagic = "bplist00";
inline constexpr std::size_t kTrailerSize = 32;

enum Marker : std::uint8_t {
    falseMarker = 0x08,
    trueMarker = 0x09,
    integerMarker = 0x10, // 2^n bytes
    realMarker = 0x20,    // 2^n bytes
    dateMarker = 0x30,    // 2^n bytes, n is 3
    dataMarker = 0x40,
    asciiMarker = 0x50,
    utf16Marker = 0x60,
    uidMarker = 0x80, // n + 1 bytes
    arrayMarker = 0xA0,
    dictionaryMarker = 0xD0,
};
inline constexpr std::uint8_t kSizeFollows = 0x0F;
inline constexpr std::uint8_t kEightBytes = 3; // n of reals and dates

} // namespace platform::bplist
