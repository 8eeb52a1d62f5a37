// A color in an archive is the number of its space and its components as text ("0.5 0.25 1"). Two things need more.
//
// sRGB has no number of its own: it is a custom space. "NSRGB" then holds the same color in generic RGB, for readers
// that know no custom spaces, and "NSComponents" the components in the space that "NSCustomColorSpace" names. The
// shorter way, device RGB with NSRGB alone, would tie a note's colors to a display, and they would come back in another
// space than they went. The space is named by its number; its ICC profile, which serves spaces without one, is left
// out.
//
// A catalog color holds its names and, for readers that lack the catalog, the component color that it stands for.
//
// A color that cannot be made sense of reads as nil: text loses that color, not its characters.

#include <array>
#include <charconv>
#include <cmath>

#include <fmt/compile.h>
#include <fmt/format.h>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/base/UTF16.h"
#include "platform/graphics/ArchivableGraphicsClasses.h"
#include "platform/graphics/Color.h"

namespace platform {

namespace {

// Values of "NSColorSpace".
enum SpaceNumber : std::int64_t {
    kCalibratedRGB = 1, // and every custom RGB space
    kDeviceRGB = 2,
    kCalibratedWhite = 3, // and every custom gray space
    kDeviceWhite = 4,
    kDeviceCMYK = 5,
    kCatalog = 6,
    kPattern = 10
};

struct SpaceRow {
    ColorSpace space;
    SpaceNumber number;
    std::string_view key;
    std::size_t components; // without alpha
};
constexpr std::array kSpaces{
    SpaceRow{ColorSpace::calibratedRGB, kCalibratedRGB, "NSRGB", 3},
    SpaceRow{ColorSpace::deviceRGB, kDeviceRGB, "NSRGB", 3},
    SpaceRow{ColorSpace::calibratedWhite, kCalibratedWhite, "NSWhite", 1},
    SpaceRow{ColorSpace::deviceWhite, kDeviceWhite, "NSWhite", 1},
    SpaceRow{ColorSpace::deviceCMYK, kDeviceCMYK, "NSCMYK", 4},
};

// Counterpart of NSColorSpace, as far as archives name one.
struct CustomSpace {
    std::int64_t number = 0;         // "NSID"
    std::int64_t extendedNumber = 0; // "NSSpaceID", of the spaces that came later
};
constexpr std::int64_t kSRGBNumber = 7;
constexpr std::int64_t kExtendedSRGBNumber = 14;

using Numbers = std::array<double, 5>;

// The components as they are written, without a way through the heap.
using NumbersText = fmt::memory_buffer;

std::string_view viewOf(const NumbersText& text) {
    return {text.data(), text.size()};
}

// Most components are 0 or 1. The others are written as the format says.
template<class Format>
void appendNumber(NumbersText& text, double number, Format format) {
    if (text.size() > 0) text.push_back(' ');
    if (number == 1 || (number == 0 && !std::signbit(number)))
        text.push_back(number == 1 ? '1' : '0');
    else
        fmt::format_to(fmt::appender(text), format, number);
}

// As many digits as it takes to read the same double back: these numbers are the color itself.
void appendExactly(NumbersText& text, double number) {
    appendNumber(text, number, FMT_COMPILE("{}"));
}

// "r g b", alpha behind them when it is not 1, and a NUL.
NumbersText exactText(const double* components, std::size_t count, double alpha) {
    NumbersText text;
    for (std::size_t i = 0; i < count; ++i) appendExactly(text, components[i]);
    if (alpha != 1) appendExactly(text, alpha);
    text.push_back('\0');
    return text;
}

NumbersText textForOldReaders(const Color::RGBA& color) {
    constexpr auto kFormat = FMT_COMPILE("{:.10g}");
    NumbersText text;
    for (const double component : {color.red, color.green, color.blue}) appendNumber(text, component, kFormat);
    if (color.alpha != 1) appendNumber(text, color.alpha, kFormat);
    text.push_back('\0');
    return text;
}

// The numbers of a text, at most five; what follows the first that is none does not count. Alpha is 1 when missing.
Numbers numbersFrom(std::string_view text, std::size_t components) {
    Numbers numbers{};
    numbers[components] = 1;
    const char* position = text.data();
    const char* const end = position + text.size();
    for (std::size_t i = 0; i <= components; ++i) {
        while (position != end && (*position == ' ' || *position == '\t' || *position == '\n')) ++position;
        double number = 0;
        const auto [rest, error] = std::from_chars(position, end, number);
        if (error != std::errc() || !std::isfinite(number)) break;
        numbers[i] = number;
        position = rest;
    }
    return numbers;
}

Color componentColor(ColorSpace space, const Numbers& n) {
    switch (space) {
    case ColorSpace::calibratedRGB:
        return Color::calibratedRGB(n[0], n[1], n[2], n[3]);
    case ColorSpace::deviceRGB:
        return Color::deviceRGB(n[0], n[1], n[2], n[3]);
    case ColorSpace::calibratedWhite:
        return Color::calibratedWhite(n[0], n[1]);
    case ColorSpace::deviceWhite:
        return Color::deviceWhite(n[0], n[1]);
    case ColorSpace::deviceCMYK:
        return Color::deviceCMYK(n[0], n[1], n[2], n[3], n[4]);
    default:
        return Color::sRGB(n[0], n[1], n[2], n[3]);
    }
}

void encodeSRGB(KeyedArchiver& archiver, const Color& color) {
    NumbersText components;
    for (std::size_t i = 0; i < 4; ++i) appendExactly(components, color.components()[i]);
    archiver.encodeInteger("NSColorSpace", kCalibratedRGB);
    archiver.encodeBytes("NSRGB", viewOf(textForOldReaders(*color.genericRGB())));
    archiver.encodeBytes("NSComponents", viewOf(components));
    static const auto& space = *new auto(std::make_shared<const CustomSpace>(CustomSpace{kSRGBNumber, 0}));
    archiver.encodeObject("NSCustomColorSpace", space);
}

void encodeColor(KeyedArchiver& archiver, const Color& color) {
    if (color.space() == ColorSpace::pattern) return archiver.encodeInteger("NSColorSpace", kPattern);
    if (color.space() == ColorSpace::sRGB) return encodeSRGB(archiver, color);
    if (color.isCatalogColor()) {
        archiver.encodeInteger("NSColorSpace", kCatalog);
        archiver.encodeStringObject("NSCatalogName", color.catalogNameComponent());
        archiver.encodeStringObject("NSColorName", color.colorNameComponent());
        archiver.encodePlace("NSColor", archiver.placeOfNew(*color.usingComponents()));
        return;
    }
    for (const SpaceRow& row : kSpaces) {
        if (row.space != color.space()) continue;
        archiver.encodeInteger("NSColorSpace", row.number);
        archiver.encodeBytes(row.key,
                             viewOf(exactText(color.components().data(), row.components, color.alphaComponent())));
    }
}

bool namesSRGB(const CustomSpace& space) {
    return space.number == kSRGBNumber || space.extendedNumber == kExtendedSRGBNumber;
}

Result<ArchivedObject> decodeCatalogColor(const ArchivedFields& fields) {
    const auto catalogName = fields.decodeString("NSCatalogName");
    const auto colorName = fields.decodeString("NSColorName");
    if (!catalogName || !colorName) return ArchivedObject();
    const auto resolved = fields.decode<Color>("NSColor");
    const auto fallback = resolved ? resolved->rgba() : std::nullopt;
    return ArchivedObject(std::make_shared<const Color>(Color::catalog(
        utf8FromUTF16(*catalogName), utf8FromUTF16(*colorName), fallback.value_or(Color::RGBA{0, 0, 0, 1}))));
}

Result<ArchivedObject> decodeColor(const ArchivedFields& fields) {
    const std::int64_t number = fields.decodeInteger("NSColorSpace");
    if (number == kCatalog) return decodeCatalogColor(fields);
    if (number == kPattern) return ArchivedObject(std::make_shared<const Color>(Color::pattern()));
    if (number == kCalibratedRGB) {
        const auto space = fields.decode<CustomSpace>("NSCustomColorSpace");
        const auto components = fields.decodeBytes("NSComponents");
        if (space && components && namesSRGB(*space))
            return ArchivedObject(
                std::make_shared<const Color>(componentColor(ColorSpace::sRGB, numbersFrom(*components, 3))));
    }
    for (const SpaceRow& row : kSpaces) {
        if (row.number != number) continue;
        auto bytes = fields.decodeBytes(row.key);
        if (!bytes && number == kDeviceCMYK) bytes = fields.decodeBytes("NSCYMK"); // another maker's spelling
        if (!bytes) return ArchivedObject();
        return ArchivedObject(
            std::make_shared<const Color>(componentColor(row.space, numbersFrom(*bytes, row.components))));
    }
    return ArchivedObject();
}

void encodeCustomSpace(KeyedArchiver& archiver, const CustomSpace& space) {
    if (space.number != 0) archiver.encodeInteger("NSID", space.number);
    if (space.extendedNumber != 0) archiver.encodeInteger("NSSpaceID", space.extendedNumber);
}

Result<ArchivedObject> decodeCustomSpace(const ArchivedFields& fields) {
    return ArchivedObject(std::make_shared<const CustomSpace>(
        CustomSpace{fields.decodeInteger("NSID"), fields.decodeInteger("NSSpaceID")}));
}

} // namespace

std::vector<ArchivableClass> archivableColorClasses() {
    return {
        {"NSColor", {"NSColor", "NSObject"}, {}, typeid(Color), true, encoderOf<Color>(encodeColor), decodeColor},
        {"NSColorSpace",
         {"NSColorSpace", "NSObject"},
         {},
         typeid(CustomSpace),
         true,
         encoderOf<CustomSpace>(encodeCustomSpace),
         decodeCustomSpace},
    };
}

} // namespace platform
