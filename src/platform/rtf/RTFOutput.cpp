#include "platform/rtf/RTFOutput.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"

namespace platform {

namespace {

// Bytes 0x80 to 0x9F of Windows-1252; 0 where the code page has nothing. Above, bytes are the characters' numbers.
constexpr std::array<char16_t, 32> kWindows1252{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

constexpr char16_t kBullet = 0x2022;
constexpr std::string_view kHexDigits = "0123456789abcdef";

// What is not written as it is.
using NotPlain = StopUnits<char16_t, u' ', u'~', u'\\', u'{', u'}'>;

constexpr std::size_t kLongestSpecial = 12; // "\uc0\u65535 "

char* putEscaped(char byte, char* out) {
    const auto value = static_cast<unsigned char>(byte);
    *out++ = '\\';
    *out++ = '\'';
    *out++ = kHexDigits[value >> 4];
    *out++ = kHexDigits[value & 15];
    return out;
}

// The low bytes of one block. A vector of the compiler's, which left to itself moves them one by one.
void narrowBlock(const char16_t* units, char* out) {
    using Units [[gnu::vector_size(16)]] = std::uint16_t;
    using Bytes [[gnu::vector_size(8)]] = std::uint8_t;
    static_assert(sizeof(Bytes) == NotPlain::kBlock);
    Units block;
    std::memcpy(&block, units, sizeof block);
    const auto bytes = __builtin_convertvector(block, Bytes);
    std::memcpy(out, &bytes, sizeof bytes);
}

// Writes what goes out as it is, up to the first unit that does not, and gives its length; there is room for the whole
// text. A block is narrowed as a whole and counts as far as it is plain; the last one ends with the text.
std::size_t putPlain(std::u16string_view text, char* out) {
    constexpr std::size_t kBlock = NotPlain::kBlock;
    if (text.size() < kBlock) {
        std::size_t length = 0;
        for (; length < text.size() && !NotPlain::stops(text[length]); ++length)
            out[length] = static_cast<char>(text[length]);
        return length;
    }
    for (std::size_t start = 0;; start = std::min(start + kBlock, text.size() - kBlock)) {
        narrowBlock(text.data() + start, out + start);
        const std::size_t length = NotPlain::lengthInBlock(text.data() + start);
        if (length < kBlock || start + kBlock == text.size()) return start + length;
    }
}

} // namespace

char windows1252Byte(char16_t unit) {
    if (unit >= 0xA0 && unit <= 0xFF) return static_cast<char>(unit);
    if (unit < 0x100) return 0;
    const auto* const found = std::ranges::find(kWindows1252, unit);
    return found == kWindows1252.end() ? '\0' : static_cast<char>(0x80 + (found - kWindows1252.begin()));
}

void RTFOutput::word(std::string_view name, std::int64_t number) {
    constexpr std::size_t kMostDigits = 20;
    const std::size_t before = bytes_.size();
    bytes_.resize_and_overwrite(before + name.size() + kMostDigits, [&](char* bytes, std::size_t size) {
        char* const out = bytes + before + name.copy(bytes + before, name.size());
        if (number >= 0 && number < 10) { // as most are
            *out = static_cast<char>('0' + number);
            return static_cast<std::size_t>(out + 1 - bytes);
        }
        // Short numbers take fewer steps in a short type.
        const auto result = number >= 0 && number <= std::numeric_limits<std::uint32_t>::max()
                                ? std::to_chars(out, bytes + size, static_cast<std::uint32_t>(number))
                                : std::to_chars(out, bytes + size, number);
        return static_cast<std::size_t>(result.ptr - bytes);
    });
}

void RTFOutput::text(std::u16string_view text) {
    const char16_t* next = text.data();
    const char16_t* const end = next + text.size();
    while (next != end) {
        const auto left = static_cast<std::size_t>(end - next);
        const std::size_t before = bytes_.size();
        bytes_.resize_and_overwrite(before + left + left / 8 + 4 * kLongestSpecial, [&](char* bytes, std::size_t room) {
            const auto [out, read] = put(next, end, bytes + before, bytes + room);
            next = read;
            return static_cast<std::size_t>(out - bytes);
        });
    }
}

// Names and addresses mostly go out as they are.
void RTFOutput::text(std::string_view utf8) {
    using NotPlainByte = StopUnits<char, ' ', '~', '\\', '{', '}'>;
    if (lengthBefore<NotPlainByte>(utf8) == utf8.size()) return raw(utf8);
    text(utf16FromUTF8(utf8));
}

// Writes the text up to its end, or up to where the room gets short; gives the end of what it wrote and of what it
// read.
std::pair<char*, const char16_t*> RTFOutput::put(const char16_t* next, const char16_t* end, char* out,
                                                 const char* limit) {
    while (next != end) {
        const std::size_t plain = putPlain(std::u16string_view(next, end), out);
        out += plain;
        next += plain;
        if (next == end) break;
        if (limit - out < end - next + static_cast<std::ptrdiff_t>(kLongestSpecial)) break;
        const char16_t unit = *next++;
        if (unit == '\r' && next != end && *next == '\n') continue;
        out = putSpecial(unit, out);
    }
    return {out, next};
}

char* RTFOutput::putSpecial(char16_t unit, char* out) {
    switch (unit) {
    case '\t':
        *out++ = '\t';
        return out;
    case '\\':
    case '{':
    case '}':
        *out++ = '\\';
        *out++ = static_cast<char>(unit);
        return out;
    case '\n':
    case '\r':
        return std::ranges::copy(std::string_view("\\\n"), out).out;
    case '\f':
        return std::ranges::copy(std::string_view("\\page "), out).out;
    default:
        break;
    }
    if (unit < 0x80) return putEscaped(static_cast<char>(unit), out);
    // The bullet is in the code page too, but goes out as Unicode, in list markers and in text alike.
    const char byte = unit == kBullet ? '\0' : windows1252Byte(unit);
    if (byte != 0) return putEscaped(byte, out);
    if (!std::exchange(skipsNoReplacement_, true)) out = std::ranges::copy(std::string_view("\\uc0"), out).out;
    out = std::ranges::copy(std::string_view("\\u"), out).out;
    out = std::to_chars(out, out + 5, static_cast<unsigned>(unit)).ptr;
    *out++ = ' ';
    return out;
}

void RTFOutput::bytes(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte == '\\' || byte == '{' || byte == '}') {
            bytes_ += '\\';
            bytes_ += byte;
        } else if (byte >= 0x20 && byte < 0x7F) {
            bytes_ += byte;
        } else {
            std::array<char, kLongestSpecial> escaped;
            bytes_.append(escaped.data(), putEscaped(byte, escaped.data()));
        }
    }
}

bool RTFOutput::enterGroup() {
    return std::exchange(skipsNoReplacement_, false);
}

} // namespace platform
