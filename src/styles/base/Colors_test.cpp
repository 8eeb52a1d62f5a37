#include "styles/base/Colors.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "platform/foundation/Environment.h"
#include "platform/graphics/Image.h"

using namespace quillet;
using platform::Color;
using platform::Dictionary;
using RGBA = platform::Color::RGBA;

namespace {

constexpr double kEpsilon = 2.220446049250313e-16;

Color gray(double value, double alpha = 1) {
    return Color::deviceRGB(value, value, value, alpha);
}

} // namespace

TEST(HighlightColors, FiveTypesEachWithItsNamedColor) {
    const struct {
        HighlightColorType type;
        Color color;
        const char* name;
        RGBA components;
    } kCases[] = {
        {1, yellowHighlightColor(), "YellowHighlightColor", {1, 0.624, 0.04, 1}},
        {2, greenHighlightColor(), "GreenHighlightColor", {0, 0.78, 0.745, 1}},
        {3, blueHighlightColor(), "BlueHighlightColor", {0, 0.478, 1, 1}},
        {4, pinkHighlightColor(), "PinkHighlightColor", {1, 0.176, 0.333, 1}},
        {5, purpleHighlightColor(), "PurpleHighlightColor", {0.686, 0.322, 0.871, 1}},
    };
    ASSERT_EQ(allHighlightColors().size(), std::size(kCases));
    for (const auto& each : kCases) {
        EXPECT_EQ(each.color.colorNameComponent(), each.name);
        EXPECT_EQ(each.color.rgba(), each.components) << each.name;
        EXPECT_EQ(colorForHighlightColorType(each.type), each.color) << each.name;
        EXPECT_EQ(highlightColorType(each.color), each.type) << each.name;
        EXPECT_EQ(highlightColorType(*each.color.usingDeviceRGB()), each.type) << each.name << " by components";
        EXPECT_EQ(allHighlightColors()[each.type - 1], each.color) << each.name;
        EXPECT_EQ(allHighlightColorTypes[each.type - 1], each.type);
        EXPECT_EQ(Color::colorNamed(each.name), each.color);
    }
}

TEST(HighlightColors, TheFirstIsShownAsOrange) {
    EXPECT_EQ(allHighlightColorNames(),
              (std::vector<std::u16string>{u"Orange", u"Green", u"Blue", u"Pink", u"Purple"}));
}

TEST(HighlightColors, OtherNumbersAndOtherColorsHaveNone) {
    EXPECT_FALSE(colorForHighlightColorType(0));
    EXPECT_FALSE(colorForHighlightColorType(6));
    EXPECT_FALSE(colorForHighlightColorType(999));
    EXPECT_FALSE(colorForHighlightColorType(static_cast<HighlightColorType>(-1)));
    EXPECT_EQ(highlightColorType(Color::black()), 0u);
    EXPECT_EQ(highlightColorType(Color::textColor()), 0u);
    EXPECT_EQ(highlightColorType(highlightBackgroundColor(yellowHighlightColor())), 0u) << "paler";
}

TEST(HighlightColors, PaintAPaleBackgroundUnderTheColorItself) {
    const Color color = Color::sRGB(0.2, 0.4, 0.6);
    EXPECT_EQ(highlightBackgroundColor(color), Color::sRGB(0.2, 0.4, 0.6, 0.15));
    EXPECT_EQ(highlightForegroundColor(color), color);
    EXPECT_EQ(highlightBackgroundColor(pinkHighlightColor()).rgba(), (RGBA{1, 0.176, 0.333, 0.15}));
    EXPECT_EQ(highlightForegroundColor(pinkHighlightColor()), pinkHighlightColor());
}

TEST(ColorForms, PropertyListOfRed) {
    const Dictionary red{{"red", 1.0}, {"green", 0.0}, {"blue", 0.0}, {"alpha", 1.0}};
    EXPECT_EQ(propertyListRepresentation(Color::sRGB(1, 0, 0)), red);
    EXPECT_EQ(colorFromPropertyListRepresentation(red).rgba(), (RGBA{1, 0, 0, 1}));
    EXPECT_EQ(propertyListRepresentation(Color::calibratedWhite(0.25, 0.5)),
              (Dictionary{{"red", 0.25}, {"green", 0.25}, {"blue", 0.25}, {"alpha", 0.5}}));
    EXPECT_EQ(propertyListRepresentation(Color::pattern()),
              (Dictionary{{"red", 0.0}, {"green", 0.0}, {"blue", 0.0}, {"alpha", 1.0}}));
}

TEST(ColorForms, PropertyListFollowsTheAppearance) {
    platform::ScopedEnvironment environment;
    environment->darkAppearance = false;
    EXPECT_EQ(propertyListRepresentation(Color::textColor()).at("red"), platform::Value(0.0));
    environment->darkAppearance = true;
    EXPECT_EQ(propertyListRepresentation(Color::textColor()).at("red"), platform::Value(1.0));
}

TEST(ColorForms, MissingComponentsReadAsZero) {
    EXPECT_EQ(colorFromPropertyListRepresentation({{"red", 1}}).rgba(), (RGBA{1, 0, 0, 0}));
    EXPECT_EQ(colorFromPropertyListRepresentation({}).rgba(), (RGBA{0, 0, 0, 0}));
    EXPECT_EQ(colorFromPropertyListRepresentation({{"red", "0.5"}, {"alpha", true}}).rgba(), (RGBA{0, 0, 0, 1}));
}

TEST(ColorForms, ReadingKeepsSinglePrecision) {
    const Color color = Color::sRGB(0.1, 0.2, 0.3, 0.4);
    const Color read = colorFromPropertyListRepresentation(propertyListRepresentation(color));
    EXPECT_EQ(read.rgba(), (RGBA{0.1f, 0.2f, 0.3f, 0.4f}));
    EXPECT_FALSE(isEqualToColorQLTVersion(read, color));
    EXPECT_EQ(colorFromPropertyListRepresentation(propertyListRepresentation(read)), read) << "only once";
}

TEST(ColorForms, HexadecimalCutsComponents) {
    const struct {
        Color color;
        std::optional<std::string> text;
    } kCases[] = {
        {Color::deviceRGB(0.2, 0.4, 0.6), "#336699"},
        {Color::deviceRGB(1, 0.5, 0), "#ff7f00"},
        {Color::deviceRGB(0.2, 0.4, 0.6, 0), "#336699"},
        {Color::sRGB(1 / 255.0, 254 / 255.0, 0.999), "#01feff"},
        {Color::white(), "#ffffff"},
        {Color::controlAccentColor(), "#007aff"},
        {Color::pattern(), std::nullopt},
        {Color::deviceRGB(std::nan(""), 0, 0), "#000000"},
    };
    for (const auto& each : kCases) EXPECT_EQ(hexadecimalString(each.color), each.text);
}

TEST(ColorForms, SuitableForHexIsOpaqueAndMadeOfComponents) {
    EXPECT_EQ(colorSuitableForHexNoAlpha(Color::deviceRGB(0.2, 0.4, 0.6, 0.1)), Color::sRGB(0.2, 0.4, 0.6));
    EXPECT_EQ(colorSuitableForHexNoAlpha(Color::labelColor()).rgba(), (RGBA{0, 0, 0, 1}));
    EXPECT_FALSE(colorSuitableForHexNoAlpha(blueHighlightColor()).isCatalogColor());
}

TEST(ColorForms, DecimalComponentsHaveThreePlaces) {
    const struct {
        double component;
        const char* text;
    } kCases[] = {
        {0.12345, "0.123"},  {0.1235, "0.124"},    {0, "0"},          {1, "1"},
        {0.5, "0.5"},        {0.9995, "1"},        {0.0005, "0.001"}, {-0.0005, "-0.001"},
        {-0.1234, "-0.123"}, {0.1234999, "0.124"}, {12.25, "12.25"},
    };
    for (const auto& each : kCases) {
        const auto number = decimalNumberForColorComponent(each.component);
        ASSERT_TRUE(number) << each.component;
        EXPECT_EQ(number->stringValue(), each.text) << each.component;
    }
    for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e12, -1e300})
        EXPECT_FALSE(decimalNumberForColorComponent(bad)) << bad;
}

TEST(ColorEquality, CatalogColorsCompareByCatalogAndOthersByComponents) {
    const struct {
        const char* what;
        Color a, b;
        bool equal;
    } kCases[] = {
        {"same", Color::sRGB(1, 0, 0), Color::sRGB(1, 0, 0), true},
        {"other space", Color::sRGB(1, 0, 0), Color::deviceRGB(1, 0, 0), true},
        {"gray and RGB", Color::white(), gray(1), true},
        {"one epsilon off", gray(0.5), Color::deviceRGB(0.5 + kEpsilon, 0.5, 0.5), true},
        {"red off", gray(0.5), Color::deviceRGB(0.5 + 2 * kEpsilon, 0.5, 0.5), false},
        {"green off", gray(0.5), Color::deviceRGB(0.5, 0.5 + 2 * kEpsilon, 0.5), false},
        {"blue off", gray(0.5), Color::deviceRGB(0.5, 0.5, 0.5 + 2 * kEpsilon), false},
        {"alpha off", gray(0.5), gray(0.5, 1 - 2 * kEpsilon), false},
        {"one catalog", Color::textColor(), Color::labelColor(), true},
        {"two assets", yellowHighlightColor(), greenHighlightColor(), false},
        {"asset and system", yellowHighlightColor(), Color::textColor(), false},
        {"catalog and fixed", Color::textColor(), Color::black(), true},
        {"catalog and other fixed", Color::textColor(), Color::white(), false},
        {"pattern", Color::pattern(), Color::black(), false},
    };
    for (const auto& each : kCases) {
        EXPECT_EQ(isEqualToColorQLTVersion(each.a, each.b), each.equal) << each.what;
        EXPECT_EQ(isEqualToColorQLTVersion(each.b, each.a), each.equal) << each.what;
        EXPECT_EQ(isEqualToColorTesseralVersion(each.a, each.b), each.equal) << each.what;
    }
}

TEST(ColorEquality, WhiteBlackAndNeither) {
    platform::ScopedEnvironment environment;
    environment->darkAppearance = false;
    const struct {
        const char* what;
        Color color;
        bool white, black;
    } kCases[] = {
        {"white", Color::white(), true, false},
        {"black", Color::black(), false, true},
        {"apple white", appleWhiteColor(), true, false},
        {"apple black", appleBlackColor(), false, true},
        {"snow", crayonsWhiteColor(), true, false},
        {"licorice", crayonsBlackColor(), false, true},
        {"text color, light", Color::textColor(), false, true},
        {"text background, light", Color::textBackgroundColor(), true, false},
        {"near white", gray(0.999), false, false},
        {"pale white", gray(1, 0.5), false, false},
        {"clear", gray(0, 0), false, false},
        {"red", Color::sRGB(1, 0, 0), false, false},
        {"pattern", Color::pattern(), false, false},
    };
    for (const auto& each : kCases) {
        EXPECT_EQ(isWhiteColor(each.color), each.white) << each.what;
        EXPECT_EQ(isBlackColor(each.color), each.black) << each.what;
    }
    environment->darkAppearance = true;
    EXPECT_TRUE(isWhiteColor(Color::textColor()));
}

TEST(ColorEquality, DarkIsBelowBrightness65AndMostlyOpaque) {
    const struct {
        Color color;
        bool dark;
    } kCases[] = {
        {gray(0.649), true},          {gray(0.649, 0.5), false},     {gray(0.649, 0.51), true}, {gray(0.651), false},
        {Color::sRGB(0, 1, 0), true}, {Color::sRGB(1, 1, 0), false}, {Color::black(), true},    {Color::white(), false},
        {Color::sRGB(1, 0, 1), true}, {Color::pattern(), false},
    };
    for (const auto& each : kCases) EXPECT_EQ(isDarkColorQuillet(each.color), each.dark);
}

TEST(Colors, LinkTextIsADarkerAccent) {
    const RGBA link = *linkTextColor().rgba();
    EXPECT_EQ(link.red, 0);
    EXPECT_NEAR(link.green, 0.478 * 0.9, 1e-12);
    EXPECT_NEAR(link.blue, 0.9, 1e-12);
    EXPECT_EQ(link.alpha, 1);
}

TEST(Colors, MenuImageIsASwatchWithADarkerRim) {
    const platform::Image image = menuImageForColor(Color::sRGB(1, 0, 0), {20, 20});
    EXPECT_EQ(image.size(), (platform::Size{20, 20}));
    EXPECT_EQ(image.pixelAt(10, 10), (RGBA{1, 0, 0, 1}));
    for (const std::size_t edge : {0u, 1u, 18u, 19u}) {
        EXPECT_EQ(image.pixelAt(edge, 10).alpha, 0) << "margin " << edge;
        EXPECT_EQ(image.pixelAt(10, edge).alpha, 0) << "margin " << edge;
    }
    EXPECT_EQ(image.pixelAt(3, 3).alpha, 0) << "round";
    EXPECT_NEAR(image.pixelAt(10, 2).red, 0.9, 0.02) << "rim";
    EXPECT_GT(image.pixelAt(10, 2).alpha, 0.9);
    EXPECT_EQ(menuImageForColor(std::nullopt, {20, 20}).pixelAt(10, 10), (RGBA{1, 1, 1, 1}));
}
