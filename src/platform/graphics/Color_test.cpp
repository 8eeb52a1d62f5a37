#include "platform/graphics/Color.h"

#include <gtest/gtest.h>

#include "platform/foundation/Environment.h"

namespace platform {
namespace {

void expectNear(const std::optional<Color::RGBA>& color, const Color::RGBA& expected, double tolerance) {
    ASSERT_TRUE(color.has_value());
    EXPECT_NEAR(color->red, expected.red, tolerance);
    EXPECT_NEAR(color->green, expected.green, tolerance);
    EXPECT_NEAR(color->blue, expected.blue, tolerance);
    EXPECT_NEAR(color->alpha, expected.alpha, tolerance);
}

TEST(Color, ConvertsEverySpaceToRGB) {
    struct Row {
        Color color;
        Color::RGBA expected;
    };
    const Row kRows[] = {
        {Color::sRGB(0.1, 0.2, 0.3, 0.4), {0.1, 0.2, 0.3, 0.4}},
        {Color::deviceRGB(0.1, 0.2, 0.3), {0.1, 0.2, 0.3, 1}},
        {Color::calibratedWhite(0.25, 0.5), {0.25, 0.25, 0.25, 0.5}},
        {Color::deviceWhite(0.75), {0.75, 0.75, 0.75, 1}},
        {Color::deviceCMYK(1, 0, 0.5, 0.2, 0.9), {0, 0.8, 0.4, 0.9}},
        {Color::black(), {0, 0, 0, 1}},
        {Color::white(), {1, 1, 1, 1}},
    };
    for (const Row& row : kRows) expectNear(row.color.rgba(), row.expected, 1e-12);
}

TEST(Color, GivesTheGenericComponentsThatTextEditorsWriteForSRGB) {
    struct Row {
        double sRGB[3];
        int generic[3];
    };
    const Row kRows[] = {
        {{0, 0.36078, 0.77255}, {7, 68, 184}},
        {{0.84314, 0.22745, 0.28627}, {203, 35, 57}},
        {{0.13333, 0.13333, 0.13333}, {26, 26, 26}},
        {{0, 0, 0}, {0, 0, 0}},
        {{1, 1, 1}, {255, 255, 255}},
    };
    for (const Row& row : kRows) {
        const Color color = Color::sRGB(row.sRGB[0], row.sRGB[1], row.sRGB[2]);
        const std::optional<Color::RGBA> generic = color.genericRGB();
        ASSERT_TRUE(generic.has_value());
        EXPECT_NEAR(generic->red * 255, row.generic[0], 1.1);
        EXPECT_NEAR(generic->green * 255, row.generic[1], 1.1);
        EXPECT_NEAR(generic->blue * 255, row.generic[2], 1.1);
    }
}

TEST(Color, GenericAndSRGBConvertBackAndForth) {
    for (const double red : {0.1, 0.5, 0.9}) {
        for (const double blue : {0.2, 0.6}) {
            const Color::RGBA generic = *Color::sRGB(red, 0.4, blue, 0.7).genericRGB();
            const Color back = Color::calibratedRGB(generic.red, generic.green, generic.blue, generic.alpha);
            expectNear(back.rgba(), {red, 0.4, blue, 0.7}, 1e-9);
            EXPECT_EQ(back.genericRGB(), generic);
        }
    }
}

TEST(Color, PatternConvertsToNothing) {
    const Color pattern = Color::pattern();
    EXPECT_FALSE(pattern.rgba());
    EXPECT_FALSE(pattern.genericRGB());
    EXPECT_FALSE(pattern.usingComponents());
    EXPECT_FALSE(pattern.usingDeviceRGB());
    EXPECT_EQ(pattern.withAlphaComponent(0.5), pattern);
    EXPECT_EQ(pattern.shadowWithLevel(0.5), pattern);
}

TEST(Color, DeviceRGBKeepsTheComponentsOfSRGB) {
    EXPECT_EQ(Color::sRGB(0.1, 0.2, 0.3, 0.4).usingDeviceRGB(), Color::deviceRGB(0.1, 0.2, 0.3, 0.4));
}

TEST(Color, SpacesAreDifferentColors) {
    EXPECT_NE(Color::sRGB(1, 0, 0), Color::deviceRGB(1, 0, 0));
    EXPECT_NE(Color::calibratedWhite(1), Color::deviceWhite(1));
    EXPECT_NE(Color::textColor(), Color::black());
    EXPECT_EQ(Color::textColor(), Color::textColor());
    EXPECT_NE(Color::textColor(), Color::labelColor());
}

TEST(Color, CatalogColorsFollowTheAppearance) {
    struct Row {
        Color color;
        Color::RGBA light, dark;
    };
    const Row kRows[] = {
        {Color::textColor(), {0, 0, 0, 1}, {1, 1, 1, 1}},
        {Color::textBackgroundColor(), {1, 1, 1, 1}, {0.118, 0.118, 0.118, 1}},
        {Color::labelColor(), {0, 0, 0, 0.847}, {1, 1, 1, 0.847}},
        {Color::secondaryLabelColor(), {0, 0, 0, 0.498}, {1, 1, 1, 0.549}},
        {Color::tertiaryLabelColor(), {0, 0, 0, 0.26}, {1, 1, 1, 0.247}},
        {Color::controlAccentColor(), {0, 0.478, 1, 1}, {0.039, 0.518, 1, 1}},
    };
    ScopedEnvironment environment;
    for (const Row& row : kRows) {
        environment->darkAppearance = false;
        EXPECT_EQ(row.color.rgba(), row.light) << row.color.colorNameComponent();
        environment->darkAppearance = true;
        EXPECT_EQ(row.color.rgba(), row.dark) << row.color.colorNameComponent();
        EXPECT_EQ(row.color.catalogNameComponent(), "System");
    }
}

TEST(Color, AssetColorsAreFoundByNameOnceRegistered) {
    EXPECT_FALSE(Color::colorNamed("ColorTestAsset"));
    registerColorAsset("ColorTestAsset", {1, 0, 0, 1}, {0, 1, 0, 1});
    const std::optional<Color> asset = Color::colorNamed("ColorTestAsset");
    ASSERT_TRUE(asset.has_value());
    EXPECT_TRUE(asset->isCatalogColor());
    ScopedEnvironment environment;
    environment->darkAppearance = false;
    EXPECT_EQ(asset->rgba(), (Color::RGBA{1, 0, 0, 1}));
    environment->darkAppearance = true;
    EXPECT_EQ(asset->usingComponents(), Color::sRGB(0, 1, 0));
}

TEST(Color, UnknownCatalogColorsKeepTheComponentsTheyCameWith) {
    EXPECT_FALSE(Color::catalog("System", "noSuchColor"));
    const Color color = Color::catalog("System", "noSuchColor", {0.5, 0.25, 0, 1});
    EXPECT_EQ(color.colorNameComponent(), "noSuchColor");
    EXPECT_EQ(color.rgba(), (Color::RGBA{0.5, 0.25, 0, 1}));
    EXPECT_EQ(Color::catalog("System", "textColor", {0.5, 0.25, 0, 1}), Color::textColor());
}

TEST(Color, CopiesShareTheirPartsAndChangesLeaveThemAlone) {
    const Color color = Color::sRGB(1, 0.5, 0), copy = color;
    EXPECT_EQ(&copy.components(), &color.components());
    EXPECT_EQ(copy.withAlphaComponent(0.5).alphaComponent(), 0.5);
    EXPECT_EQ(copy.shadowWithLevel(1).components()[0], 0);
    EXPECT_EQ(color, Color::sRGB(1, 0.5, 0));
    EXPECT_NE(color, Color::deviceRGB(1, 0.5, 0));
    EXPECT_NE(color, Color::sRGB(1, 0.5, 0.1));
    EXPECT_LE(sizeof(Color), 16U);
}

TEST(Color, AlphaAndShadowKeepTheSpace) {
    EXPECT_EQ(Color::sRGB(1, 0.5, 0).withAlphaComponent(0.15), Color::sRGB(1, 0.5, 0, 0.15));
    EXPECT_EQ(Color::black().withAlphaComponent(0.5), Color::calibratedWhite(0, 0.5));
    EXPECT_EQ(Color::sRGB(1, 0.5, 0, 0.5).shadowWithLevel(0.5), Color::sRGB(0.5, 0.25, 0, 0.5));
    EXPECT_EQ(Color::white().shadowWithLevel(1), Color::black());
    EXPECT_EQ(Color::white().shadowWithLevel(0), Color::white());
    EXPECT_EQ(Color::deviceCMYK(0, 0, 0, 0).shadowWithLevel(1), Color::deviceRGB(0, 0, 0));
    EXPECT_FALSE(Color::controlAccentColor().shadowWithLevel(0.1).isCatalogColor());
}

} // namespace
} // namespace platform
