// Conversions between the two forms of highlighted text, and between fixed and dynamic text colors.
//
// A highlight in a note's own form is the attribute QLTHighlightTextAttribute with the highlight color's type, painted
// by a background and a foreground color. The platform's form is a highlight style and a color scheme, which the
// platform paints by itself.
#pragma once

#include <cstdint>

#include "platform/base/Range.h"
#include "platform/text/Attributes.h"

namespace platform {
class AttributedString;
}

namespace quillet {

// An integer: the highlight color type, 1 to 5. A run without it, or with 0, is not highlighted.
inline const platform::AttributeName QLTHighlightTextAttributeName{"QLTHighlightTextAttribute"};
// A highlight in the run's own colors instead of those of a type.
inline constexpr std::int64_t kHighlightInOwnColors = 999;

inline constexpr char16_t kTextHighlightStyleDefault[] = u"NSTextHighlightStyleDefault";
inline constexpr char16_t kTextHighlightColorSchemeDefault[] = u"NSTextHighlightColorSchemeDefault";

// Whether a highlight attribute's value stands for a highlight; null does not.
bool isHighlight(const platform::AttributeValue* value);

// Platform highlights get the note's attribute and colors as well; their own attributes stay. A run without a color
// scheme is left as it is; an unknown scheme is type 1.
void convertNSTextHighlightsToQuilletHighlights(platform::AttributedString& text);

// The note's highlights, with their colors, are replaced by platform highlights; the text color goes too.
void convertQuilletHighlightsToNSTextHighlights(platform::AttributedString& text);

// Text in fixed black, or without a color, gets the dynamic text color.
void convertToDynamicColors(platform::AttributedString& text);
// The dynamic text color becomes fixed black; text without a color stays without one.
void convertFromDynamicColors(platform::AttributedString& text);

// Every character in the label color; backgrounds only where their run begins with a highlight of the note.
void cleanupTextColorsInRange(platform::AttributedString& text, platform::Range range);

} // namespace quillet
