#include "platform/rtf/RTFOutput.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "platform/base/TextScan.h"

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

} // namespace

char windows1252Byte(char16_t unit) {
    if (unit >= 0xA0 && unit <= 0xFF) return static_cast<char>(unit);
    if (unit < 0x100) return 0;
    const auto* const found = std::ranges::find(kWindows1252, unit);
    return found == kWindows1252.end() ? '\0' : static_cast<char>(0x80 + (found - kWindows1252.begin()));
}

void RTFOutput::word(std::string_view name, std::int64_t number) {
    if (number >= 0 && number < 10) { // as most are
        bytes_ += name;
        bytes_ += static_cast<char>('0' + number);
        return;
    }
    std::array<char, 24> digits;
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number);
    bytes_ += name;
    bytes_.append(digits.data(), result.ptr);
}

void RTFOutput::text(std::u16string_view text) {
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t end = position + lengthBefore<NotPlain>(text.substr(position));
        const std::size_t before = bytes_.size();
        bytes_.resize(before + (end - position));
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(position),
                       text.begin() + static_cast<std::ptrdiff_t>(end), bytes_.data() + before,
                       [](char16_t unit) { return static_cast<char>(unit); });
        position = end;
        if (end == text.size()) return;
        const char16_t unit = text[position++];
        if (unit == '\r' && position < text.size() && text[position] == '\n') continue;
        special(unit);
    }
}

void RTFOutput::special(char16_t unit) {
    switch (unit) {
    case '\t':
        bytes_ += '\t';
        return;
    case '\\':
    case '{':
    case '}':
        bytes_ += '\\';
        bytes_ += static_cast<char>(unit);
        return;
    case '\n':
    case '\r':
        bytes_ += "\\\n";
        return;
    case '\f':
        bytes_ += "\\page ";
        return;
    default:
        break;
    }
    if (unit < 0x80) return escaped(static_cast<char>(unit));
    // The bullet is in the code page too, but goes out as Unicode, in list markers and in text alike.
    const char byte = unit == kBullet ? '\0' : windows1252Byte(unit);
    if (byte != 0) return escaped(byte);
    unicode(unit);
}

void RTFOutput::unicode(char16_t unit) {
    if (!std::exchange(skipsNoReplacement_, true)) bytes_ += "\\uc0";
    word("\\u", unit);
    bytes_ += ' ';
}

void RTFOutput::escaped(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    bytes_ += "\\'";
    bytes_ += kHexDigits[value >> 4];
    bytes_ += kHexDigits[value & 15];
}

void RTFOutput::bytes(std::string_view bytes) {
    for (const char byte : bytes) {
        if (byte == '\\' || byte == '{' || byte == '}') {
            bytes_ += '\\';
            bytes_ += byte;
        } else if (byte >= 0x20 && byte < 0x7F) {
            bytes_ += byte;
        } else {
            escaped(byte);
        }
    }
}

bool RTFOutput::enterGroup() {
    return std::exchange(skipsNoReplacement_, false);
}

} // namespace platform
