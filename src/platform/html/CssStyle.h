// The style that an element has in the end: the computed values of what the HTML reader uses.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/html/CssDeclarations.h"

namespace platform {

struct CssLength {
    double value = 0; // px, or percent
    bool isPercentage = false;
    bool isAutomatic = false;
};

// Edges in the order top, right, bottom, left. Lengths in px, which count as points.
struct CssStyle {
    // Inherited
    std::shared_ptr<const CssFamilies> families; // null: the default family
    double fontSize = 12;
    double fontWeight = 400;
    CssRGBA color{0, 0, 0, 1};
    std::shared_ptr<const CssShadow> shadow;
    CssLength textIndent;
    CssFontKeyword sizeKeyword = CssFontKeyword::medium; // the size when it is still one of the keywords'
    bool sizeIsKeyword = true;
    bool sizeHasFixedFactor = false; // the size was enlarged for the fixed-width family
    bool isItalic = false;
    std::uint8_t ligatures = 0; // 1 on, 2 off
    std::uint8_t listDepth = 0; // lists around, this one included
    bool collapsesBorders = false;
    bool hidesEmptyCells = false;
    bool hyphenates = false;
    bool breaksNbsp = false;
    CssDirection direction = CssDirection::ltr;
    CssWhiteSpace whiteSpace = CssWhiteSpace::normal;
    CssTextAlign textAlign = CssTextAlign::start;
    CssTextTransform textTransform = CssTextTransform::none;
    CssListStyle listStyle = CssListStyle::disc;
    // The element's own
    CssDisplay display = CssDisplay::inline_;
    CssFloat cssFloat = CssFloat::none;
    CssUnicodeBidi unicodeBidi = CssUnicodeBidi::normal;
    CssVerticalAlign verticalAlign = CssVerticalAlign::baseline;
    std::uint8_t decoration = 0; // CssTextDecoration bits
    bool fixedTableLayout = false;
    double verticalOffset = 0; // for CssVerticalAlign::length
    CssRGBA background{0, 0, 0, 0};
    std::array<CssLength, 4> margin, padding;
    std::array<double, 4> borderWidth{};
    std::array<CssRGBA, 4> borderColor{};
    CssLength width{0, false, true}, minWidth{0, false, true}, maxWidth{0, false, true};

    // Which of its resolver's styles this is, from 0: a table of what belongs to styles needs no search.
    std::uint32_t number = 0;

    // Whether the family list is nothing but the generic fixed-width family, which has a default size of its own.
    bool isMonospace() const { return families && families->size() == 1 && families->front() == "monospace"; }
};

// Of each property, the declared value that counts; null where none does.
using CssWinners = std::array<const CssValue*, kCssPropertyCount>;

// Computes a style that has its initial values and what it inherits (inheritCssStyle()) by now. Lengths in "rem" count
// of the root's font size.
void computeCssStyle(CssStyle& style, const CssStyle& parent, const CssWinners& winners, double rootFontSize,
                     bool quirksMode);
// What a child starts from: the inherited half of its parent.
void inheritCssStyle(CssStyle& style, const CssStyle& parent);

} // namespace platform
