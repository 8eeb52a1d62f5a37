// The five standard styles: identifiers, names and factory settings.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace quillet {

struct StandardStyle {
    std::int64_t type;
    std::u16string_view identifier;
    std::string_view displayName; // key of the string table
    std::int32_t headerLevel;     // 0: none
    std::string_view fontFamily;
    bool bold;
    double fontSize; // points, like the spacings
    double paragraphSpacing, lineSpacing;
    bool tabIntervalOfFirstTab; // the default tab interval is where the default style's first tab stop is
    bool applyToParagraph, resetOnNewLine;
};

// In the order in which they are shown.
std::span<const StandardStyle> standardStyleTable();
// Null for a type that is not a standard one.
const StandardStyle* standardStyleOfType(std::int64_t type);

} // namespace quillet
