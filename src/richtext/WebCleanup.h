// Text taken from a web page made to look like note text: the body font's family, smaller sizes, the label color, and
// blank lines between paragraphs. In place.
#pragma once

#include <optional>
#include <string_view>

#include "platform/base/Range.h"

namespace platform {
class AttributedString;
class Font;
} // namespace platform

namespace quillet {

// Preferences, booleans that are off until set.
inline constexpr std::string_view kCleanUpWebPageNewLinesKey = "QLTTextViewCleanUpWebPageNewLines";
inline constexpr std::string_view kCleanUpWebPageFontSizesKey = "QLTTextViewCleanUpWebPageFontSizes";
inline constexpr std::string_view kCleanUpWebPageColorsKey = "QLTTextViewCleanUpWebPageColors";

// Which cleanups run besides that of the font.
struct WebPageCleanups {
    bool newlines = false; // blank lines between paragraphs
    bool sizes = false;
    bool colors = false;
};

// The whole text, in the body style's font family, with the cleanups that the user's preferences turn on. White space
// at the ends stays.
void cleanupWebPageText(platform::AttributedString& text);

// Everything after the newlines covers those that were inserted as well.
// @sel cleanupTextFromWebPageInRange:withNewFont:includingNewlines:sizes:colors:
void cleanupTextFromWebPageInRange(platform::AttributedString& text, platform::Range range,
                                   const std::optional<platform::Font>& newFont, WebPageCleanups including);

// The font's family in each run's own traits, weight and size. A run without a font stays without one, and all keep
// theirs when the family is unknown. @sel changeFont:inRange:
void changeFont(platform::AttributedString& text, const platform::Font& font, platform::Range range);

// Three quarters of each run's font size, rounded up to whole points. @sel adjustWebPageFontSizesInRange:
void adjustWebPageFontSizesInRange(platform::AttributedString& text, platform::Range range);

} // namespace quillet
