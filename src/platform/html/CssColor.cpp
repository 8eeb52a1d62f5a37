// Each function's arguments are brought into one list of components first; then one small conversion each. Components
// of the older forms are whole 255ths, as everywhere; the wide forms keep their fractions and are clipped.
#include "platform/html/CssColor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace platform {

namespace {

struct NamedColor {
    std::string_view name;
    std::uint32_t rgb;
};

constexpr auto kNamedColors = std::to_array<NamedColor>({
    {"aliceblue", 0xF0F8FF},
    {"antiquewhite", 0xFAEBD7},
    {"aqua", 0x00FFFF},
    {"aquamarine", 0x7FFFD4},
    {"azure", 0xF0FFFF},
    {"beige", 0xF5F5DC},
    {"bisque", 0xFFE4C4},
    {"black", 0x000000},
    {"blanchedalmond", 0xFFEBCD},
    {"blue", 0x0000FF},
    {"blueviolet", 0x8A2BE2},
    {"brown", 0xA52A2A},
    {"burlywood", 0xDEB887},
    {"cadetblue", 0x5F9EA0},
    {"canvas", 0xFFFFFF},
    {"canvastext", 0x000000},
    {"chartreuse", 0x7FFF00},
    {"chocolate", 0xD2691E},
    {"coral", 0xFF7F50},
    {"cornflowerblue", 0x6495ED},
    {"cornsilk", 0xFFF8DC},
    {"crimson", 0xDC143C},
    {"cyan", 0x00FFFF},
    {"darkblue", 0x00008B},
    {"darkcyan", 0x008B8B},
    {"darkgoldenrod", 0xB8860B},
    {"darkgray", 0xA9A9A9},
    {"darkgreen", 0x006400},
    {"darkgrey", 0xA9A9A9},
    {"darkkhaki", 0xBDB76B},
    {"darkmagenta", 0x8B008B},
    {"darkolivegreen", 0x556B2F},
    {"darkorange", 0xFF8C00},
    {"darkorchid", 0x9932CC},
    {"darkred", 0x8B0000},
    {"darksalmon", 0xE9967A},
    {"darkseagreen", 0x8FBC8F},
    {"darkslateblue", 0x483D8B},
    {"darkslategray", 0x2F4F4F},
    {"darkslategrey", 0x2F4F4F},
    {"darkturquoise", 0x00CED1},
    {"darkviolet", 0x9400D3},
    {"deeppink", 0xFF1493},
    {"deepskyblue", 0x00BFFF},
    {"dimgray", 0x696969},
    {"dimgrey", 0x696969},
    {"dodgerblue", 0x1E90FF},
    {"firebrick", 0xB22222},
    {"floralwhite", 0xFFFAF0},
    {"forestgreen", 0x228B22},
    {"fuchsia", 0xFF00FF},
    {"gainsboro", 0xDCDCDC},
    {"ghostwhite", 0xF8F8FF},
    {"gold", 0xFFD700},
    {"goldenrod", 0xDAA520},
    {"gray", 0x808080},
    {"green", 0x008000},
    {"greenyellow", 0xADFF2F},
    {"grey", 0x808080},
    {"honeydew", 0xF0FFF0},
    {"hotpink", 0xFF69B4},
    {"indianred", 0xCD5C5C},
    {"indigo", 0x4B0082},
    {"ivory", 0xFFFFF0},
    {"khaki", 0xF0E68C},
    {"lavender", 0xE6E6FA},
    {"lavenderblush", 0xFFF0F5},
    {"lawngreen", 0x7CFC00},
    {"lemonchiffon", 0xFFFACD},
    {"lightblue", 0xADD8E6},
    {"lightcoral", 0xF08080},
    {"lightcyan", 0xE0FFFF},
    {"lightgoldenrodyellow", 0xFAFAD2},
    {"lightgray", 0xD3D3D3},
    {"lightgreen", 0x90EE90},
    {"lightgrey", 0xD3D3D3},
    {"lightpink", 0xFFB6C1},
    {"lightsalmon", 0xFFA07A},
    {"lightseagreen", 0x20B2AA},
    {"lightskyblue", 0x87CEFA},
    {"lightslategray", 0x778899},
    {"lightslategrey", 0x778899},
    {"lightsteelblue", 0xB0C4DE},
    {"lightyellow", 0xFFFFE0},
    {"lime", 0x00FF00},
    {"limegreen", 0x32CD32},
    {"linen", 0xFAF0E6},
    {"linktext", 0x0000EE},
    {"magenta", 0xFF00FF},
    {"maroon", 0x800000},
    {"mediumaquamarine", 0x66CDAA},
    {"mediumblue", 0x0000CD},
    {"mediumorchid", 0xBA55D3},
    {"mediumpurple", 0x9370DB},
    {"mediumseagreen", 0x3CB371},
    {"mediumslateblue", 0x7B68EE},
    {"mediumspringgreen", 0x00FA9A},
    {"mediumturquoise", 0x48D1CC},
    {"mediumvioletred", 0xC71585},
    {"midnightblue", 0x191970},
    {"mintcream", 0xF5FFFA},
    {"mistyrose", 0xFFE4E1},
    {"moccasin", 0xFFE4B5},
    {"navajowhite", 0xFFDEAD},
    {"navy", 0x000080},
    {"oldlace", 0xFDF5E6},
    {"olive", 0x808000},
    {"olivedrab", 0x6B8E23},
    {"orange", 0xFFA500},
    {"orangered", 0xFF4500},
    {"orchid", 0xDA70D6},
    {"palegoldenrod", 0xEEE8AA},
    {"palegreen", 0x98FB98},
    {"paleturquoise", 0xAFEEEE},
    {"palevioletred", 0xDB7093},
    {"papayawhip", 0xFFEFD5},
    {"peachpuff", 0xFFDAB9},
    {"peru", 0xCD853F},
    {"pink", 0xFFC0CB},
    {"plum", 0xDDA0DD},
    {"powderblue", 0xB0E0E6},
    {"purple", 0x800080},
    {"rebeccapurple", 0x663399},
    {"red", 0xFF0000},
    {"rosybrown", 0xBC8F8F},
    {"royalblue", 0x4169E1},
    {"saddlebrown", 0x8B4513},
    {"salmon", 0xFA8072},
    {"sandybrown", 0xF4A460},
    {"seagreen", 0x2E8B57},
    {"seashell", 0xFFF5EE},
    {"sienna", 0xA0522D},
    {"silver", 0xC0C0C0},
    {"skyblue", 0x87CEEB},
    {"slateblue", 0x6A5ACD},
    {"slategray", 0x708090},
    {"slategrey", 0x708090},
    {"snow", 0xFFFAFA},
    {"springgreen", 0x00FF7F},
    {"steelblue", 0x4682B4},
    {"tan", 0xD2B48C},
    {"teal", 0x008080},
    {"thistle", 0xD8BFD8},
    {"tomato", 0xFF6347},
    {"turquoise", 0x40E0D0},
    {"violet", 0xEE82EE},
    {"wheat", 0xF5DEB3},
    {"white", 0xFFFFFF},
    {"whitesmoke", 0xF5F5F5},
    {"windowtext", 0x000000},
    {"yellow", 0xFFFF00},
    {"yellowgreen", 0x9ACD32},
});
static_assert(std::ranges::is_sorted(kNamedColors, {}, &NamedColor::name));

CssRGBA fromNumber(std::uint32_t rgb, double alpha = 1) {
    return {((rgb >> 16) & 0xFF) / 255.0, ((rgb >> 8) & 0xFF) / 255.0, (rgb & 0xFF) / 255.0, alpha};
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<CssRGBA> fromHash(std::string_view digits) {
    if (std::ranges::any_of(digits, [](char c) { return hexValue(c) < 0; })) return std::nullopt;
    const bool isShort = digits.size() == 3 || digits.size() == 4;
    if (!isShort && digits.size() != 6 && digits.size() != 8) return std::nullopt;
    const std::size_t width = isShort ? 1 : 2;
    std::array<double, 4> parts{0, 0, 0, 1};
    for (std::size_t i = 0; i < digits.size() / width; ++i) {
        const int high = hexValue(digits[i * width]), low = hexValue(digits[i * width + width - 1]);
        parts[i] = (high * 16 + low) / 255.0;
    }
    return CssRGBA{parts[0], parts[1], parts[2], parts[3]};
}

std::optional<CssRGBA> fromName(std::string_view name) {
    if (name == "transparent") return CssRGBA{0, 0, 0, 0};
    const auto found = std::ranges::lower_bound(kNamedColors, name, {}, &NamedColor::name);
    if (found == kNamedColors.end() || found->name != name) return std::nullopt;
    return fromNumber(found->rgb);
}

// One argument of a color function. `none` is 0.
struct Component {
    double value = 0;
    bool isPercentage = false;
    bool isAngle = false;

    // A percentage as a share of `whole`; a number as it is.
    double of(double whole) const { return isPercentage ? value / 100 * whole : value; }
};

struct Arguments {
    std::string_view space; // of color(); "" elsewhere
    std::array<Component, 3> components;
    double alpha = 1;
};

double inDegrees(double value, std::string_view unit) {
    if (unit == "rad") return value * 180 / std::numbers::pi;
    if (unit == "grad") return value * 0.9;
    if (unit == "turn") return value * 360;
    return value;
}

std::optional<Component> component(const CssToken& token) {
    switch (token.kind) {
    case CssTokenKind::number:
        return Component{token.number};
    case CssTokenKind::percentage:
        return Component{token.number, true};
    case CssTokenKind::dimension:
        if (token.text != "deg" && token.text != "rad" && token.text != "grad" && token.text != "turn")
            return std::nullopt;
        return Component{inDegrees(token.number, token.text), false, true};
    case CssTokenKind::identifier:
        return token.text == "none" ? std::optional(Component{}) : std::nullopt;
    default:
        return std::nullopt;
    }
}

// "1, 2, 3, .5" or "1 2 3 / .5"; the closing bracket may be missing at the end of the text.
std::optional<Arguments> arguments(std::span<const CssToken> tokens, std::size_t& at, bool hasSpace) {
    Arguments made;
    bool behindSlash = false, hasComma = false;
    std::size_t count = 0;
    for (; at < tokens.size(); ++at) {
        const CssToken& token = tokens[at];
        if (token.kind == CssTokenKind::whitespace) continue;
        if (token.is(')')) {
            ++at;
            break;
        }
        if (token.is(',')) {
            hasComma = true;
            continue;
        }
        if (token.is('/')) {
            behindSlash = true;
            continue;
        }
        if (hasSpace && made.space.empty() && token.kind == CssTokenKind::identifier) {
            made.space = token.text;
            continue;
        }
        const auto value = component(token);
        if (!value) return std::nullopt;
        if (behindSlash || (hasComma && count == made.components.size())) {
            made.alpha = std::clamp(value->of(1), 0.0, 1.0);
        } else {
            if (count == made.components.size()) return std::nullopt;
            made.components[count++] = *value;
        }
    }
    if (count != made.components.size()) return std::nullopt;
    return made;
}

double wholePart(double value) { // of 0 to 1
    return std::round(std::clamp(value, 0.0, 1.0) * 255) / 255;
}

CssRGBA rounded(double red, double green, double blue, double alpha) {
    return {wholePart(red), wholePart(green), wholePart(blue), alpha};
}

CssRGBA fromHSL(double hue, double saturation, double lightness, double alpha) {
    hue = std::fmod(std::fmod(hue, 360) + 360, 360);
    const auto channel = [&](double n) {
        const double k = std::fmod(n + hue / 30, 12);
        const double a = saturation * std::min(lightness, 1 - lightness);
        return lightness - a * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
    };
    return rounded(channel(0), channel(8), channel(4), alpha);
}

CssRGBA fromHWB(double hue, double white, double black, double alpha) {
    if (white + black >= 1) {
        const double gray = white / (white + black);
        return rounded(gray, gray, gray, alpha);
    }
    const CssRGBA pure = fromHSL(hue, 1, 0.5, 1);
    const auto mixed = [&](double channel) { return channel * (1 - white - black) + white; };
    return rounded(mixed(pure.red), mixed(pure.green), mixed(pure.blue), alpha);
}

double gammaEncoded(double linear) {
    const double size = std::abs(linear);
    const double encoded = size > 0.0031308 ? 1.055 * std::pow(size, 1 / 2.4) - 0.055 : 12.92 * size;
    return std::clamp(linear < 0 ? -encoded : encoded, 0.0, 1.0);
}

double gammaDecoded(double encoded) {
    const double size = std::abs(encoded);
    const double linear = size > 0.04045 ? std::pow((size + 0.055) / 1.055, 2.4) : size / 12.92;
    return encoded < 0 ? -linear : linear;
}

CssRGBA fromLinear(double red, double green, double blue, double alpha) {
    return {gammaEncoded(red), gammaEncoded(green), gammaEncoded(blue), alpha};
}

// CIE XYZ with the white of D65.
CssRGBA fromXYZ(double x, double y, double z, double alpha) {
    return fromLinear(3.2409699419045213 * x - 1.5373831775700935 * y - 0.4986107602930033 * z,
                      -0.9692436362808798 * x + 1.8759675015077206 * y + 0.0415550574071756 * z,
                      0.0556300796969937 * x - 0.2039769588889766 * y + 1.0569715142428786 * z, alpha);
}

CssRGBA fromXYZD50(double x, double y, double z, double alpha) { // Bradford adaptation
    return fromXYZ(0.9554734527042182 * x - 0.0230985368742614 * y + 0.0632593086610217 * z,
                   -0.0283697069632081 * x + 1.0099954580058226 * y + 0.0210413989669430 * z,
                   0.0123140016883199 * x - 0.0205076964334779 * y + 1.3303659366080753 * z, alpha);
}

CssRGBA fromLab(double lightness, double a, double b, double alpha) {
    constexpr double kKappa = 24389.0 / 27, kEpsilon = 216.0 / 24389;
    const double fy = (lightness + 16) / 116, fx = a / 500 + fy, fz = fy - b / 200;
    const auto inverse = [&](double f) { return f * f * f > kEpsilon ? f * f * f : (116 * f - 16) / kKappa; };
    const double y = lightness > kKappa * kEpsilon ? fy * fy * fy : lightness / kKappa;
    return fromXYZD50(inverse(fx) * 0.3457 / 0.3585, y, inverse(fz) * (1 - 0.3457 - 0.3585) / 0.3585, alpha);
}

CssRGBA fromOklab(double lightness, double a, double b, double alpha) {
    const auto cube = [](double v) { return v * v * v; };
    const double l = cube(lightness + 0.3963377773761749 * a + 0.2158037573099136 * b);
    const double m = cube(lightness - 0.1055613458156586 * a - 0.0638541728258133 * b);
    const double s = cube(lightness - 0.0894841775298119 * a - 1.2914855480194092 * b);
    return fromLinear(4.0767416360759583 * l - 3.3077115392580629 * m + 0.2309699031821043 * s,
                      -1.2684379732850315 * l + 2.6097573492876882 * m - 0.3413193760026570 * s,
                      -0.0041960761386756 * l - 0.7034186179359362 * m + 1.7076146940746117 * s, alpha);
}

std::optional<CssRGBA> fromSpace(const Arguments& given) {
    const double a = given.components[0].of(1), b = given.components[1].of(1), c = given.components[2].of(1);
    if (given.space == "srgb")
        return CssRGBA{std::clamp(a, 0.0, 1.0), std::clamp(b, 0.0, 1.0), std::clamp(c, 0.0, 1.0), given.alpha};
    if (given.space == "srgb-linear") return fromLinear(a, b, c, given.alpha);
    if (given.space == "xyz" || given.space == "xyz-d65") return fromXYZ(a, b, c, given.alpha);
    if (given.space == "xyz-d50") return fromXYZD50(a, b, c, given.alpha);
    if (given.space == "display-p3") {
        const double red = gammaDecoded(a), green = gammaDecoded(b), blue = gammaDecoded(c);
        return fromXYZ(0.4865709486482162 * red + 0.2656676931690931 * green + 0.1982172852343625 * blue,
                       0.2289745640697488 * red + 0.6917385218365064 * green + 0.0792869140937450 * blue,
                       0.0451133818589026 * green + 1.0439443689009760 * blue, given.alpha);
    }
    return std::nullopt;
}

std::optional<CssRGBA> fromFunction(std::string_view name, std::span<const CssToken> tokens, std::size_t& at) {
    const auto given = arguments(tokens, at, name == "color");
    if (!given) return std::nullopt;
    const auto& [x, y, z] = std::tie(given->components[0], given->components[1], given->components[2]);
    const double alpha = given->alpha;
    const auto polar = [&](double chroma) {
        const double angle = z.value * std::numbers::pi / 180;
        return std::pair(chroma * std::cos(angle), chroma * std::sin(angle));
    };
    if (name == "rgb" || name == "rgba") return rounded(x.of(255) / 255, y.of(255) / 255, z.of(255) / 255, alpha);
    if (name == "hsl" || name == "hsla")
        return fromHSL(x.value, std::clamp(y.value / 100, 0.0, 1.0), std::clamp(z.value / 100, 0.0, 1.0), alpha);
    if (name == "hwb")
        return fromHWB(x.value, std::clamp(y.value / 100, 0.0, 1.0), std::clamp(z.value / 100, 0.0, 1.0), alpha);
    const double lightness =
        std::clamp(x.of(name.starts_with("ok") ? 1 : 100), 0.0, name.starts_with("ok") ? 1.0 : 100.0);
    if (name == "lab") return fromLab(lightness, y.of(125), z.of(125), alpha);
    if (name == "oklab") return fromOklab(lightness, y.of(0.4), z.of(0.4), alpha);
    if (name == "lch") {
        const auto [a, b] = polar(std::max(0.0, y.of(150)));
        return fromLab(lightness, a, b, alpha);
    }
    if (name == "oklch") {
        const auto [a, b] = polar(std::max(0.0, y.of(0.4)));
        return fromOklab(lightness, a, b, alpha);
    }
    if (name == "color") return fromSpace(*given);
    return std::nullopt;
}

} // namespace

std::optional<CssRGBA> cssColor(std::span<const CssToken> tokens, std::size_t& at) {
    if (at >= tokens.size()) return std::nullopt;
    const CssToken& token = tokens[at++];
    if (token.kind == CssTokenKind::hash) return fromHash(token.text);
    if (token.kind == CssTokenKind::identifier) return fromName(token.text);
    if (token.kind == CssTokenKind::function) return fromFunction(token.text, tokens, at);
    return std::nullopt;
}

std::optional<CssRGBA> legacyColor(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    const std::string lower = asciiLowerCase(text.substr(0, 128));
    if (lower.empty() || lower == "transparent") return std::nullopt;
    if (const auto named = fromName(lower)) return named;
    if (lower.size() == 4 && lower[0] == '#')
        if (const auto color = fromHash(std::string_view(lower).substr(1))) return color;
    std::string digits;
    for (const char c : lower.starts_with('#') ? lower.substr(1) : lower) digits += hexValue(c) < 0 ? '0' : c;
    while (digits.empty() || digits.size() % 3 != 0) digits += '0';
    std::size_t length = digits.size() / 3;
    std::array<std::string, 3> parts{digits.substr(0, length), digits.substr(length, length),
                                     digits.substr(2 * length)};
    for (std::string& part : parts)
        if (length > 8) part = part.substr(length - 8);
    length = std::min<std::size_t>(length, 8);
    while (length > 2 && std::ranges::all_of(parts, [](const std::string& part) { return part[0] == '0'; })) {
        for (std::string& part : parts) part.erase(0, 1);
        --length;
    }
    std::array<double, 3> values{};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string& part = parts[i];
        values[i] = (part.size() == 1 ? hexValue(part[0]) : hexValue(part[0]) * 16 + hexValue(part[1])) / 255.0;
    }
    return CssRGBA{values[0], values[1], values[2], 1};
}

} // namespace platform
