// Colors as notes use them: the five highlight colors, comparison to within rounding, the storable and the hexadecimal
// form, and the tests for white, black and dark.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Result.h"
#include "platform/base/Value.h"
#include "platform/graphics/Color.h"
#include "platform/graphics/Geometry.h"

namespace platform {
class Image;
}

namespace quillet {

// A highlight color's number, as text attributes hold it; 0 is no highlight color.
using HighlightColorType = std::uint64_t;

inline constexpr HighlightColorType kNoHighlightColorType = 0;

// Makes the highlight colors known by name. The functions below do so themselves; a program that reads archives
// calls it before, so that a highlight color in an archive is found under its name.
void registerHighlightColorAssets();

platform::Color yellowHighlightColor();
platform::Color greenHighlightColor();
platform::Color blueHighlightColor();
platform::Color pinkHighlightColor();
platform::Color purpleHighlightColor();

// In the order of the types 1 to 5.
std::vector<platform::Color> allHighlightColors();
std::vector<std::u16string> allHighlightColorNames(); // localized
inline constexpr std::array<HighlightColorType, 5> allHighlightColorTypes{1, 2, 3, 4, 5};

// Nothing for another number than 1 to 5.
std::optional<platform::Color> colorForHighlightColorType(HighlightColorType type);
// The first type whose color is equal to this one, or 0.
HighlightColorType highlightColorType(const platform::Color& color);

// What text highlighted in this color gets: a pale background under text in the color itself.
platform::Color highlightBackgroundColor(const platform::Color& color);
platform::Color highlightForegroundColor(const platform::Color& color);

// A dictionary of the device RGB components "red", "green", "blue", "alpha", each 0 to 1. Read back in single
// precision, a missing component as 0. A pattern, which has no components, is written as opaque black: text in it
// then follows the text color.
platform::Dictionary propertyListRepresentation(const platform::Color& color);
platform::Color colorFromPropertyListRepresentation(const platform::Dictionary& representation);

// "#336699", alpha left out; nothing for a pattern. Components are cut, not rounded: 0.5 is 7f.
std::optional<std::string> hexadecimalString(const platform::Color& color);
// The same components, opaque, as a component color.
platform::Color colorSuitableForHexNoAlpha(const platform::Color& color);

// A decimal number with three digits behind the point.
struct DecimalNumber {
    std::int64_t thousandths = 0;
    std::string stringValue() const; // "0.124"; no zeros at the end
    friend bool operator==(const DecimalNumber&, const DecimalNumber&) = default;
};
// The component as six decimals say it, rounded to three, ties away from zero. An error for one that is not finite or
// passes 12 digits before the point.
platform::Result<DecimalNumber> decimalNumberForColorComponent(double component);

// Two catalog colors of one catalog are equal whatever their components; all others when every device RGB component
// differs by at most the double-precision epsilon. Both names answer the same.
bool isEqualToColorQLTVersion(const platform::Color& color, const platform::Color& other);
bool isEqualToColorTesseralVersion(const platform::Color& color, const platform::Color& other);

// Equal to the platform's white or black, or to that of its color lists.
bool isWhiteColor(const platform::Color& color);
bool isBlackColor(const platform::Color& color);
// Mostly opaque and of a brightness below 0.65.
bool isDarkColorQuillet(const platform::Color& color);

// From the color lists "Apple" and "Crayons"; plain white or black when the list lacks them.
platform::Color appleWhiteColor();
platform::Color appleBlackColor();
platform::Color crayonsWhiteColor();
platform::Color crayonsBlackColor();

// The accent color, a little darker.
platform::Color linkTextColor();

// A round swatch with a darker rim; white without a color. @sel menuImageForColor:size:
platform::Image menuImageForColor(const std::optional<platform::Color>& color, platform::Size size);

} // namespace quillet
