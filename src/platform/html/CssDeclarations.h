// Declarations of style text: the properties that the HTML reader uses, their values, and the text's way to both.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/html/CssColor.h"

namespace platform {

// Longhands only. In the order in which values are computed: font size before all that counts in it, color before all
// that may take it.
enum class CssProperty : std::uint8_t {
    // clang-format off
    fontFamily, fontSize, fontStyle, fontWeight, fontVariantLigatures, color,
    direction, unicodeBidi, whiteSpace, nbspMode, textAlign, textIndent, textTransform, textDecorationLine, textShadow,
    verticalAlign, listStyleType, display, cssFloat, position, backgroundColor,
    marginTop, marginRight, marginBottom, marginLeft, paddingTop, paddingRight, paddingBottom, paddingLeft,
    borderTopStyle, borderRightStyle, borderBottomStyle, borderLeftStyle,
    borderTopWidth, borderRightWidth, borderBottomWidth, borderLeftWidth,
    borderTopColor, borderRightColor, borderBottomColor, borderLeftColor,
    width, minWidth, maxWidth, borderCollapse, emptyCells, tableLayout, hyphens, count
    // clang-format on
};
inline constexpr std::size_t kCssPropertyCount = static_cast<std::size_t>(CssProperty::count);

// The keywords of properties that have nothing but keywords; names as in style text.
enum class CssDisplay : std::uint8_t {
    // clang-format off
    none, contents, inline_, block, listItem, inlineBlock, flowRoot, flex, inlineFlex, grid, inlineGrid, ruby, rubyText,
    box, inlineBox, table, inlineTable, tableRowGroup, tableHeaderGroup, tableFooterGroup, tableRow, tableCell,
    tableCaption, tableColumn, tableColumnGroup
    // clang-format on
};
enum class CssFloat : std::uint8_t { none, left, right };
enum class CssPosition : std::uint8_t { inFlow, outOfFlow };
enum class CssWhiteSpace : std::uint8_t { normal, nowrap, pre, preWrap, preLine, breakSpaces };
enum class CssTextAlign : std::uint8_t { start, end, left, right, center, justify, matchParent };
enum class CssTextTransform : std::uint8_t { none, uppercase, lowercase, capitalize };
enum class CssDirection : std::uint8_t { ltr, rtl };
enum class CssUnicodeBidi : std::uint8_t { normal, embed, override_, isolate, isolateOverride, plaintext };
enum class CssVerticalAlign : std::uint8_t { baseline, sub, super, top, textTop, middle, bottom, textBottom, length };
enum class CssListStyle : std::uint8_t {
    // clang-format off
    disc, circle, square, decimal, octal, lowerRoman, upperRoman, lowerAlpha, upperAlpha, lowerLatin, upperLatin,
    lowerHexadecimal, upperHexadecimal, none, other
    // clang-format on
};
enum class CssBorderStyle : std::uint8_t { none, hidden, visible };
enum class CssFontKeyword : std::uint8_t { // sizes; the first eight are absolute
    xxSmall,
    xSmall,
    small,
    medium,
    large,
    xLarge,
    xxLarge,
    xxxLarge,
    smaller,
    larger
};
enum CssTextDecoration : std::uint8_t { kCssUnderline = 1, kCssLineThrough = 2, kCssOverline = 4 };

enum class CssValueKind : std::uint8_t {
    keyword, // in `keyword`
    length,  // `number` in the unit
    number,
    color,
    currentColor,
    families,
    shadow,
    automatic,
    inherit,
    initial,
    unset,
};
enum class CssUnit : std::uint8_t { px, em, rem, percent };

struct CssShadow {
    double x = 0, y = 0, blur = 0; // px, in the unit that follows
    CssRGBA color;
    bool usesCurrentColor = true;
    friend bool operator==(const CssShadow&, const CssShadow&) = default;
};

using CssFamilies = std::vector<std::string>; // as written; generic names in lower case

struct CssValue {
    CssValueKind kind = CssValueKind::keyword;
    CssUnit unit = CssUnit::px;
    std::uint8_t keyword = 0;
    double number = 0;
    CssRGBA color;
    std::shared_ptr<const CssFamilies> families;
    std::shared_ptr<const CssShadow> shadow;

    static CssValue ofKeyword(auto value) {
        CssValue made;
        made.keyword = static_cast<std::uint8_t>(value);
        return made;
    }
    static CssValue ofLength(double number, CssUnit unit = CssUnit::px) {
        CssValue made;
        made.kind = CssValueKind::length;
        made.number = number;
        made.unit = unit;
        return made;
    }
    static CssValue ofColor(const CssRGBA& color) {
        CssValue made;
        made.kind = CssValueKind::color;
        made.color = color;
        return made;
    }
    static CssValue ofKind(CssValueKind kind) {
        CssValue made;
        made.kind = kind;
        return made;
    }
};

struct CssDeclaration {
    CssProperty property;
    bool important = false;
    CssValue value;
};

using CssDeclarations = std::vector<CssDeclaration>;

// "color: red; margin: 0 auto !important". Declarations that are not valid as a whole, or of other properties, are left
// out. Shorthands come out as their longhands. Never fails, linear.
CssDeclarations cssDeclarations(std::string_view text);

// One declaration's value; nothing is added when it is not valid.
void appendCssDeclaration(CssDeclarations& declarations, std::string_view property, std::span<const CssToken> value,
                          bool important);

} // namespace platform
