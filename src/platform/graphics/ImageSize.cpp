// Heads as in PNG (ISO/IEC 15948, section 11.2), GIF89a (logical screen descriptor) and JPEG (ITU-T T.81, annex B).

#include "platform/graphics/ImageSize.h"

#include <cstddef>

namespace platform {

namespace {

std::uint32_t byteAt(std::string_view bytes, std::size_t position) {
    return static_cast<unsigned char>(bytes[position]);
}
std::uint32_t bigEndian16(std::string_view bytes, std::size_t position) {
    return byteAt(bytes, position) << 8 | byteAt(bytes, position + 1);
}
std::uint32_t bigEndian32(std::string_view bytes, std::size_t position) {
    return bigEndian16(bytes, position) << 16 | bigEndian16(bytes, position + 2);
}
std::uint32_t littleEndian16(std::string_view bytes, std::size_t position) {
    return byteAt(bytes, position) | byteAt(bytes, position + 1) << 8;
}

std::optional<ImageSize> unlessEmpty(ImageSize size) {
    if (size.width == 0 || size.height == 0) return std::nullopt;
    return size;
}

std::optional<ImageSize> sizeOfPNG(std::string_view bytes) {
    constexpr std::size_t kHeadLength = 24; // signature, then length, "IHDR", width, height
    if (bytes.size() < kHeadLength || bytes.substr(12, 4) != "IHDR") return std::nullopt;
    return unlessEmpty({bigEndian32(bytes, 16), bigEndian32(bytes, 20)});
}

std::optional<ImageSize> sizeOfGIF(std::string_view bytes) {
    constexpr std::size_t kHeadLength = 10;
    if (bytes.size() < kHeadLength) return std::nullopt;
    return unlessEmpty({littleEndian16(bytes, 6), littleEndian16(bytes, 8)});
}

// A start-of-frame marker: C0 to CF without the Huffman table, arithmetic table and JPG extension markers.
bool startsFrame(std::uint32_t marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}
bool standsAlone(std::uint32_t marker) {
    return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

// Segment after segment up to the frame's; entropy-coded data never stands before it.
std::optional<ImageSize> sizeOfJPEG(std::string_view bytes) {
    std::size_t position = 2;
    while (position + 4 <= bytes.size()) {
        if (byteAt(bytes, position) != 0xFF) return std::nullopt;
        const std::uint32_t marker = byteAt(bytes, position + 1);
        if (marker == 0xFF) { // a fill byte
            ++position;
            continue;
        }
        position += 2;
        if (standsAlone(marker)) continue;
        const std::size_t length = bigEndian16(bytes, position);
        if (startsFrame(marker)) {
            if (position + 7 > bytes.size()) return std::nullopt;
            return unlessEmpty({bigEndian16(bytes, position + 5), bigEndian16(bytes, position + 3)});
        }
        if (length < 2) return std::nullopt;
        position += length;
    }
    return std::nullopt;
}

} // namespace

std::optional<ImageSize> imageSize(std::string_view bytes) {
    if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return sizeOfPNG(bytes);
    if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) return sizeOfGIF(bytes);
    if (bytes.starts_with("\xFF\xD8\xFF")) return sizeOfJPEG(bytes);
    return std::nullopt;
}

} // namespace platform
