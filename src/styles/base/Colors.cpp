// Forms and comparison of colors. A color without components (a pattern) has no device RGB form; each function says
// what stands in.
#include "styles/base/Colors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include <fmt/format.h>

#include "platform/graphics/ColorList.h"
#include "platform/graphics/GraphicsContext.h"
#include "platform/graphics/Image.h"

namespace quillet {

using platform::Color;
using RGBA = platform::Color::RGBA;

namespace {

constexpr std::string_view kRed = "red", kGreen = "green", kBlue = "blue", kAlpha = "alpha";
// The largest single-precision number below 256: full intensity is 255, and every digit has an equal share.
constexpr double kHexadecimalScale = 255.99998474121094;
constexpr double kDarkestLightBrightness = 0.65;
constexpr double kShadowLevel = 0.1;

double singlePrecision(const platform::Dictionary& representation, std::string_view key) {
    const platform::Value* value = platform::find(representation, key);
    return value ? static_cast<float>(value->doubleValue()) : 0;
}

// Two digits; a component outside 0 to 1 has the digits that its integer has.
std::string hexadecimalDigits(double component) {
    constexpr double kLimit = std::numeric_limits<int>::max();
    const double scaled = std::isnan(component) ? 0 : std::clamp(component * kHexadecimalScale, -kLimit, kLimit);
    return fmt::format("{:02x}", static_cast<unsigned>(static_cast<int>(scaled)));
}

bool equalToWithinRounding(double a, double b) {
    return std::abs(a - b) <= std::numeric_limits<double>::epsilon();
}

Color colorFromList(std::string_view list, std::string_view key, const Color& fallback) {
    return platform::colorWithKey(list, key).value_or(fallback);
}

} // namespace

platform::Dictionary propertyListRepresentation(const Color& color) {
    const RGBA components = color.rgba().value_or(RGBA{});
    return {{std::string(kRed), components.red},
            {std::string(kGreen), components.green},
            {std::string(kBlue), components.blue},
            {std::string(kAlpha), components.alpha}};
}

Color colorFromPropertyListRepresentation(const platform::Dictionary& representation) {
    return Color::sRGB(singlePrecision(representation, kRed), singlePrecision(representation, kGreen),
                       singlePrecision(representation, kBlue), singlePrecision(representation, kAlpha));
}

std::optional<std::string> hexadecimalString(const Color& color) {
    const auto components = color.rgba();
    if (!components) return std::nullopt;
    return "#" + hexadecimalDigits(components->red) + hexadecimalDigits(components->green) +
           hexadecimalDigits(components->blue);
}

Color colorSuitableForHexNoAlpha(const Color& color) {
    const RGBA components = color.rgba().value_or(RGBA{});
    return Color::sRGB(components.red, components.green, components.blue);
}

std::string DecimalNumber::stringValue() const {
    const auto magnitude = thousandths < 0 ? -thousandths : thousandths;
    std::string text = fmt::format("{}{}.{:03}", thousandths < 0 ? "-" : "", magnitude / 1000, magnitude % 1000);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.')) text.pop_back();
    return text;
}

platform::Result<DecimalNumber> decimalNumberForColorComponent(double component) {
    constexpr double kLimit = 1e12;
    if (!(std::abs(component) < kLimit))
        return platform::failure(platform::Error::withDescription("NSDecimalNumberOverflowException", 0,
                                                                  fmt::format("{} is no color component.", component)));
    std::string digits = fmt::format("{:.6f}", component); // "0.123500" → 123500 millionths
    std::erase(digits, '.');
    const std::int64_t millionths = std::stoll(digits);
    return DecimalNumber{(millionths + (millionths < 0 ? -500 : 500)) / 1000};
}

bool isEqualToColorQLTVersion(const Color& color, const Color& other) {
    if (color.isCatalogColor() && other.isCatalogColor() &&
        color.catalogNameComponent() == other.catalogNameComponent())
        return true;
    const auto a = color.rgba(), b = other.rgba();
    if (!a || !b) return color == other;
    return equalToWithinRounding(a->red, b->red) && equalToWithinRounding(a->green, b->green) &&
           equalToWithinRounding(a->blue, b->blue) && equalToWithinRounding(a->alpha, b->alpha);
}

bool isEqualToColorTesseralVersion(const Color& color, const Color& other) {
    return isEqualToColorQLTVersion(color, other);
}

bool isWhiteColor(const Color& color) {
    return isEqualToColorQLTVersion(color, Color::white()) || isEqualToColorQLTVersion(color, appleWhiteColor()) ||
           isEqualToColorQLTVersion(color, crayonsWhiteColor());
}

bool isBlackColor(const Color& color) {
    return isEqualToColorQLTVersion(color, Color::black()) || isEqualToColorQLTVersion(color, appleBlackColor()) ||
           isEqualToColorQLTVersion(color, crayonsBlackColor());
}

bool isDarkColorQuillet(const Color& color) {
    const auto components = color.rgba();
    if (!components) return false;
    const double brightness = (299 * components->red + 587 * components->green + 114 * components->blue) / 1000;
    return components->alpha > 0.5 && brightness < kDarkestLightBrightness;
}

Color appleWhiteColor() {
    return colorFromList("Apple", "White", Color::white());
}
Color appleBlackColor() {
    return colorFromList("Apple", "Black", Color::black());
}
Color crayonsWhiteColor() {
    return colorFromList("Crayons", "Snow", Color::white());
}
Color crayonsBlackColor() {
    return colorFromList("Crayons", "Licorice", Color::black());
}

Color linkTextColor() {
    return Color::controlAccentColor().shadowWithLevel(kShadowLevel);
}

platform::Image menuImageForColor(const std::optional<Color>& color, platform::Size size) {
    constexpr double kMargin = 2, kRimInset = 0.5, kRimWidth = 1;
    const Color fill = color.value_or(Color::white());
    return platform::Image::drawn(size, [&](platform::GraphicsContext& context) {
        const platform::Rect swatch = platform::Rect{{0, 0}, size}.inset(kMargin, kMargin);
        context.fillOval(swatch, fill);
        context.strokeOval(swatch.inset(kRimInset, kRimInset), kRimWidth, fill.shadowWithLevel(kShadowLevel));
    });
}

} // namespace quillet
