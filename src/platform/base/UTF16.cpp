// Own code rather than ICU's: the base stands below the libraries, and runs of ASCII, which is most of a note's
// markup, are copied without a table.
#include "platform/base/UTF16.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kIllFormed = 0xFFFFFFFF;

// The range that the byte after `lead` must lie in (Unicode 15, table 3-7); later ones are 80 to BF.
struct SecondByte {
    unsigned char low, high;
};

constexpr SecondByte secondByteAfter(unsigned char lead) {
    switch (lead) {
    case 0xE0:
        return {0xA0, 0xBF};
    case 0xED:
        return {0x80, 0x9F};
    case 0xF0:
        return {0x90, 0xBF};
    case 0xF4:
        return {0x80, 0x8F};
    default:
        return {0x80, 0xBF};
    }
}

constexpr int sequenceLength(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 0;
}

// Decodes the non-ASCII sequence at `position` and moves behind it, or behind its maximal ill-formed part.
char32_t takeSequence(std::string_view bytes, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(bytes[position++]);
    const int length = sequenceLength(lead);
    if (length == 0) return kIllFormed;
    char32_t point = lead & (0x7Fu >> length);
    SecondByte allowed = secondByteAfter(lead);
    for (int i = 1; i < length; ++i) {
        if (position == bytes.size()) return kIllFormed;
        const auto byte = static_cast<unsigned char>(bytes[position]);
        if (byte < allowed.low || byte > allowed.high) return kIllFormed;
        allowed = {0x80, 0xBF};
        point = (point << 6) | (byte & 0x3Fu);
        ++position;
    }
    return point;
}

// How many bytes at the start are ASCII; looks at eight of them at once.
std::size_t asciiLength(std::string_view bytes) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::size_t length = 0;
    for (; length + sizeof(std::uint64_t) <= bytes.size(); length += sizeof(std::uint64_t)) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + length, sizeof word);
        if (word & kHighBits) break;
    }
    while (length < bytes.size() && static_cast<unsigned char>(bytes[length]) < 0x80) ++length;
    return length;
}

void appendUTF8(std::string& out, char32_t point) {
    if (point < 0x80) {
        out += static_cast<char>(point);
    } else if (point < 0x800) {
        out += static_cast<char>(0xC0 | (point >> 6));
        out += static_cast<char>(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        out += static_cast<char>(0xE0 | (point >> 12));
        out += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (point & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (point >> 18));
        out += static_cast<char>(0x80 | ((point >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (point & 0x3F));
    }
}

} // namespace

char32_t takeCodePoint(std::string_view bytes, std::size_t& position) {
    const char32_t point = takeSequence(bytes, position);
    return point == kIllFormed ? kReplacement : point;
}

std::u16string utf16FromUTF8(std::string_view bytes) {
    std::u16string text;
    // Every unit stands for one byte at least.
    text.resize_and_overwrite(bytes.size(), [&](char16_t* const begin, std::size_t) {
        char16_t* out = begin;
        for (std::size_t i = 0; i < bytes.size();) {
            const std::size_t ascii = asciiLength(bytes.substr(i));
            out = std::copy_n(bytes.data() + i, ascii, out);
            i += ascii;
            if (i == bytes.size()) break;
            out = putCodePoint(out, takeCodePoint(bytes, i));
        }
        return static_cast<std::size_t>(out - begin);
    });
    return text;
}

std::string utf8FromUTF16(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
        } else if (isHighSurrogate(text[i]) || isLowSurrogate(text[i])) {
            point = kReplacement;
        }
        appendUTF8(bytes, point);
    }
    return bytes;
}

bool isValidUTF8(std::string_view bytes) {
    for (std::size_t i = asciiLength(bytes); i < bytes.size(); i += asciiLength(bytes.substr(i)))
        if (takeSequence(bytes, i) == kIllFormed) return false;
    return true;
}

} // namespace platform
