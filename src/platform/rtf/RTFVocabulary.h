// Tables that the RTF writer and reader share, so that what one writes the other reads.
#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

// The words of underline styles: the style attribute's mask, the word without its backslash.
struct RTFUnderlineWord {
    std::int64_t style;
    std::string_view word;
};
inline constexpr RTFUnderlineWord kRTFUnderlineWords[] = {
    {0x0001, "ul"},       {0x0009, "uldb"},      {0x0002, "ulth"},       {0x0101, "uld"},
    {0x0201, "uldash"},   {0x0301, "uldashd"},   {0x0401, "uldashdd"},   {0x0102, "ulthd"},
    {0x0202, "ulthdash"}, {0x0302, "ulthdashd"}, {0x0402, "ulthdashdd"}, {0x8001, "ulw"},
};

// The color schemes of text highlights: the number behind \AppleHilightClrSch, the name's last part.
struct RTFHighlightScheme {
    std::int64_t number;
    std::string_view name;
};
inline constexpr std::string_view kHighlightSchemePrefix = "NSTextHighlightColorScheme";
inline constexpr std::string_view kHighlightStyleDefault = "NSTextHighlightStyleDefault";
inline constexpr RTFHighlightScheme kRTFHighlightSchemes[] = {
    {0, "Default"}, {-1, "Purple"}, {-2, "Pink"}, {-3, "Orange"}, {-4, "Mint"}, {-5, "Blue"},
};

inline constexpr double kTwipsAPoint = 20;
inline constexpr double kStrokeUnitsAPercent = 20;
inline constexpr double kSkewUnits = 2000;
inline constexpr double kDefaultShadowOpacity = 1.0 / 3;
inline constexpr std::int64_t kTableWidthTwips = 8640; // right edge of a table's last cell
inline constexpr std::int64_t kPercentUnits = 50;      // \clwWidth counts fiftieths of a percent

} // namespace platform
