// What RTF words change while a text is read: the formatting in force, saved and restored with each group.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/text/ParagraphStyle.h"

namespace platform {

// Character formatting in the words' own units and numbers.
struct RTFReadCharacters {
    std::int32_t font = -1;           // number in the font table; -1 the document's default
    std::int32_t milliPoints = 12000; // thousandths of a point
    bool bold = false, italic = false, hidden = false;
    std::int32_t color = 0, background = 0;
    std::int32_t underline = 0, underlineColor = 0;
    std::int32_t strikethrough = 0, strikethroughColor = 0;
    std::int32_t superscript = 0;
    std::int32_t baselineHalves = 0;
    std::int32_t kernTwips = 0;
    bool kernGiven = false;
    std::int32_t strokeWidth = 0, strokeColor = 0;
    bool shadow = false;
    std::int32_t shadowX = 0, shadowY = 0, shadowRadius = 0, shadowOpacity = 85, shadowColor = 0;
    std::int32_t obliqueness = 0, expansion = 0;
    std::int32_t ligature = 1;
    bool highlighted = false;
    std::int32_t highlightScheme = 0;
    std::size_t link = 0; // 1-based number of the reader's list of links, 0 none

    friend bool operator==(const RTFReadCharacters&, const RTFReadCharacters&) = default;
};

struct RTFReadParagraph {
    ParagraphStyle style = plainStyle(); // lists and blocks are left to the text builder
    TextTab nextTab = leftTab();         // what the words before \tx said of it
    std::int32_t leftTwips = 0, firstTwips = 0;
    std::int32_t lineTwips = 0;
    bool lineIsMultiple = false;
    std::int32_t list = 0, level = 0; // \ls, \ilvl
    bool inTable = false;             // \intbl
    std::int32_t tableDepth = 0;      // \itap

    std::size_t depth() const {
        const std::int32_t given = tableDepth > 0 ? tableDepth : 0;
        return static_cast<std::size_t>(inTable && given == 0 ? 1 : given);
    }

    // The style behind \pard: no tabs, left to right.
    static ParagraphStyle plainStyle() {
        ParagraphStyle style;
        style.tabStops.clear();
        style.baseWritingDirection = WritingDirection::leftToRight;
        return style;
    }

    static TextTab leftTab() { return {TextAlignment::left, 0, false}; }

    friend bool operator==(const RTFReadParagraph&, const RTFReadParagraph&) = default;
};

} // namespace platform
