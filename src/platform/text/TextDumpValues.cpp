#include "platform/text/TextDumpValues.h"

#include <array>
#include <cmath>

#include <fmt/format.h>

#include "platform/base/UTF16.h"

namespace platform {

std::string number(double value) {
    return fmt::format("{}", value);
}

std::string quoted(std::u16string_view text) {
    std::string out = "\"";
    std::size_t plainStart = 0;
    const auto flush = [&](std::size_t end) { out += utf8FromUTF16(text.substr(plainStart, end - plainStart)); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (isHighSurrogate(unit) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
            ++i;
            continue;
        }
        const bool invisible = unit < 0x20 || (unit >= 0x7F && unit <= 0xA0) || unit == 0xAD ||
                               (unit >= 0x2000 && unit <= 0x200F) || (unit >= 0x2028 && unit <= 0x202F) ||
                               (unit >= 0x2060 && unit <= 0x206F) || unit == 0xFEFF || unit >= 0xFFFC ||
                               (unit & 0xF800) == 0xD800;
        if (!invisible && unit != u'"' && unit != u'\\') continue;
        flush(i);
        plainStart = i + 1;
        switch (unit) {
        case u'\n':
            out += "\\n";
            break;
        case u'\t':
            out += "\\t";
            break;
        case u'\r':
            out += "\\r";
            break;
        case u'"':
            out += "\\\"";
            break;
        case u'\\':
            out += "\\\\";
            break;
        default:
            out += fmt::format("\\u{:04x}", static_cast<unsigned>(unit));
        }
    }
    flush(text.size());
    return out + '"';
}

std::string quoted(std::string_view utf8) {
    return quoted(utf16FromUTF8(utf8));
}

std::string describe(const Color& color) {
    struct SpaceName {
        ColorSpace space;
        std::string_view prefix;
        std::size_t components; // without alpha
    };
    static constexpr std::array<SpaceName, 6> kSpaces{{{ColorSpace::sRGB, "", 3},
                                                       {ColorSpace::deviceRGB, "device ", 3},
                                                       {ColorSpace::calibratedRGB, "generic ", 3},
                                                       {ColorSpace::calibratedWhite, "white", 1},
                                                       {ColorSpace::deviceWhite, "device white", 1},
                                                       {ColorSpace::deviceCMYK, "cmyk", 4}}};
    if (color.space() == ColorSpace::pattern) return "pattern";
    if (color.isCatalogColor())
        return color.catalogNameComponent() == color.colorNameComponent()
                   ? color.colorNameComponent()
                   : color.catalogNameComponent() + "/" + color.colorNameComponent();
    for (const SpaceName& space : kSpaces) {
        if (space.space != color.space()) continue;
        std::string out(space.prefix);
        bool isWhole = space.components == 3;
        for (std::size_t i = 0; i < 3 && isWhole; ++i) {
            const double value = color.components()[i] * 255;
            isWhole = value >= 0 && value <= 255 && std::abs(value - std::round(value)) < 1e-4;
        }
        if (isWhole) {
            out += '#';
            for (std::size_t i = 0; i < 3; ++i)
                out += fmt::format("{:02X}", static_cast<unsigned>(std::lround(color.components()[i] * 255)));
        } else {
            if (space.components == 3) out += "rgb";
            for (std::size_t i = 0; i < space.components; ++i) out += " " + number(color.components()[i]);
        }
        if (color.alphaComponent() != 1) out += fmt::format(" alpha {}", color.alphaComponent());
        return out;
    }
    return {};
}

std::string describe(const Shadow& shadow) {
    std::string out = fmt::format("{},{} blur {}", shadow.offsetX(), shadow.offsetY(), shadow.blurRadius());
    if (shadow.color()) out += " " + describe(*shadow.color());
    return out;
}

} // namespace platform
