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
    kNull = 0x00,
    kFalse = 0x08,
    kTrue = 0x09,
    kInteger = 0x10, // 2^n bytes
    kReal = 0x20,    // 2^n bytes
    kDate = 0x33,
    kData = 0x40,
    kASCII = 0x50,
    kUTF16 = 0x60,
    kUID = 0x80, // n + 1 bytes
    kArray = 0xA0,
    kDictionary = 0xD0,
};
inline constexpr std::uint8_t kSizeFollows = 0x0F;

} // namespace platform::bplist
