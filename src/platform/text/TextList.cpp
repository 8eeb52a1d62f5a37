#include "platform/text/TextList.h"

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/base/UTF16.h"

namespace platform {

namespace {

std::string decimal(std::int64_t number) {
    return std::to_string(number);
}

std::string inBase(std::int64_t number, unsigned base, std::string_view digits) {
    // The magnitude in unsigned arithmetic: the smallest integer has no positive counterpart.
    auto magnitude = static_cast<std::uint64_t>(number);
    if (number < 0) magnitude = 0 - magnitude;
    std::string text;
    do {
        text += digits[magnitude % base];
        magnitude /= base;
    } while (magnitude > 0);
    if (number < 0) text += '-';
    std::reverse(text.begin(), text.end());
    return text;
}

std::string octal(std::int64_t number) {
    return inBase(number, 8, "01234567");
}
std::string lowerHexadecimal(std::int64_t number) {
    return inBase(number, 16, "0123456789abcdef");
}
std::string upperHexadecimal(std::int64_t number) {
    return inBase(number, 16, "0123456789ABCDEF");
}

// a … z, aa, ab …: digits without a zero.
std::string letters(std::int64_t number, char first) {
    if (number < 1) return decimal(number);
    std::string text;
    for (; number > 0; number = (number - 1) / 26) text += static_cast<char>(first + (number - 1) % 26);
    std::reverse(text.begin(), text.end());
    return text;
}

std::string lowerAlpha(std::int64_t number) {
    return letters(number, 'a');
}
std::string upperAlpha(std::int64_t number) {
    return letters(number, 'A');
}

// Roman digits as CSS Counter Styles 3 has them: 1 to 3999, the decimal number outside.
std::string upperRoman(std::int64_t number) {
    struct Digit {
        std::int64_t value;
        std::string_view text;
    };
    static constexpr std::array<Digit, 13> kDigits{{{1000, "M"},
                                                    {900, "CM"},
                                                    {500, "D"},
                                                    {400, "CD"},
                                                    {100, "C"},
                                                    {90, "XC"},
                                                    {50, "L"},
                                                    {40, "XL"},
                                                    {10, "X"},
                                                    {9, "IX"},
                                                    {5, "V"},
                                                    {4, "IV"},
                                                    {1, "I"}}};
    if (number < 1 || number > 3999) return decimal(number);
    std::string text;
    for (const Digit& digit : kDigits)
        for (; number >= digit.value; number -= digit.value) text += digit.text;
    return text;
}

std::string lowerRoman(std::int64_t number) {
    std::string text = upperRoman(number);
    for (char& digit : text)
        if (digit >= 'A' && digit <= 'Z') digit = static_cast<char>(digit - 'A' + 'a');
    return text;
}

struct Symbol {
    std::string_view token;
    char16_t glyph;
};
constexpr std::array kSymbols{
    Symbol{kTextListMarkerDisc, 0x2022},   Symbol{kTextListMarkerCircle, 0x25E6},
    Symbol{kTextListMarkerSquare, 0x25AA}, Symbol{kTextListMarkerHyphen, 0x2043},
    Symbol{kTextListMarkerCheck, 0x2713},  Symbol{kTextListMarkerDiamond, 0x25C6},
    Symbol{kTextListMarkerBox, 0x25AB},
};

struct Numbering {
    std::string_view token;
    std::string (*text)(std::int64_t number);
};
constexpr std::array kNumberings{
    Numbering{kTextListMarkerDecimal, decimal},
    Numbering{kTextListMarkerLowercaseAlpha, lowerAlpha},
    Numbering{kTextListMarkerLowercaseLatin, lowerAlpha},
    Numbering{kTextListMarkerUppercaseAlpha, upperAlpha},
    Numbering{kTextListMarkerUppercaseLatin, upperAlpha},
    Numbering{kTextListMarkerLowercaseRoman, lowerRoman},
    Numbering{kTextListMarkerUppercaseRoman, upperRoman},
    Numbering{kTextListMarkerOctal, octal},
    Numbering{kTextListMarkerLowercaseHexadecimal, lowerHexadecimal},
    Numbering{kTextListMarkerUppercaseHexadecimal, upperHexadecimal},
};

// What stands for a token, braces included; an unknown token stands for itself.
std::u16string textForToken(std::string_view token, std::int64_t number) {
    for (const Symbol& symbol : kSymbols)
        if (symbol.token == token) return std::u16string(1, symbol.glyph);
    for (const Numbering& numbering : kNumberings)
        if (numbering.token == token) return utf16FromUTF8(numbering.text(number));
    return utf16FromUTF8(token);
}

std::atomic<bool> includesMarkers{true};

} // namespace

std::u16string TextList::markerForItemNumber(std::int64_t number) const {
    const std::string_view format = markerFormat_;
    const std::size_t open = format.find('{');
    const std::size_t close = open == std::string_view::npos ? open : format.find('}', open);
    if (close == std::string_view::npos) return utf16FromUTF8(format);
    return utf16FromUTF8(format.substr(0, open)) + textForToken(format.substr(open, close + 1 - open), number) +
           utf16FromUTF8(format.substr(close + 1));
}

bool TextList::includesTextListMarkers() {
    return includesMarkers;
}

void TextList::setIncludesTextListMarkers(bool includes) {
    includesMarkers = includes;
}

} // namespace platform
