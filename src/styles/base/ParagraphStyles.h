// Paragraph styles as notes use them: the one style of list paragraphs, list markers, line spacing, and the height of
// a font's line. Lengths in points.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/text/ParagraphStyle.h"

namespace platform {
class Font;
}

namespace quillet {

enum class ListStyle : std::uint64_t { none = 0, bullet = 1, hyphen = 2, numbered = 3 };

// The line-height multiples that a user may choose from.
inline constexpr std::array<double, 12> userInterfaceLineHeightMultiples{0.5, 0.6, 0.7, 0.8, 0.9, 1.0,
                                                                         1.1, 1.2, 1.3, 1.4, 1.5, 2.0};

// The style of list and checklist paragraphs: marker at 11, text hanging at 36.
platform::ParagraphStyle listParagraphStyle();

// Tab, marker, tab; "" for a style that is none of the three. @sel listMarkerForListStyle:itemNumber:
std::u16string listMarkerForListStyle(ListStyle listStyle, std::int64_t itemNumber);

// Whether the style is that of a list: indented and tabbed like the list paragraph style, or with wrapped lines that
// hang 36 points to the right of the first.
bool isListParagraphStyle(const platform::ParagraphStyle& style);

// Line spacing is six properties: line-height multiple, line spacing, spacing after and before the paragraph, minimum
// and maximum line height. These match when each differs by no more than rounding does.
bool lineSpacingMatchesStyle(const platform::ParagraphStyle& style, const platform::ParagraphStyle& other);
void applyLineSpacingFromStyle(platform::ParagraphStyle& style, const platform::ParagraphStyle& source);

// Same alignment and matching line spacing; indents, tab stops and lists may differ.
bool isEqualToParagraphStyle(const platform::ParagraphStyle& style, const platform::ParagraphStyle& other);

// Every length of the line spacing times the scale; the line-height multiple is a ratio already and stays.
platform::ParagraphStyle scaledParagraphStyle(const platform::ParagraphStyle& style, double scale);

// Ascender, descender and leading together, rounded up to whole points.
double lineHeight(const platform::Font& font);
double lineHeight(double ascender, double descender, double leading);

} // namespace quillet
