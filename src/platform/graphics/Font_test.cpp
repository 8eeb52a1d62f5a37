#include "platform/graphics/Font.h"

#include <gtest/gtest.h>

#include "platform/graphics/FontTable.h"

namespace platform {
namespace {

TEST(Fonts, TakeTheNearestFaceOfAFamily) {
    struct Row {
        std::string_view family;
        std::uint32_t traits;
        int weight;
        std::string_view face;
    };
    constexpr std::uint32_t kBoth = kBoldFontTrait | kItalicFontTrait;
    const Row kRows[] = {
        {"Helvetica Neue", 0, 5, "HelveticaNeue"},
        {"helvetica neue", kBoldFontTrait, 5, "HelveticaNeue-Bold"},
        {"HelveticaNeue", kItalicFontTrait, 5, "HelveticaNeue-Italic"},
        {"HelveticaNeue-Bold", kItalicFontTrait, 5, "HelveticaNeue-BoldItalic"},
        {"HelveticaNeue-Light", 0, 5, "HelveticaNeue-Light"},
        {"Helvetica Neue", 0, 0, "HelveticaNeue-UltraLight"},
        {"Helvetica Neue", 0, 15, "HelveticaNeue-Bold"},
        {"Helvetica", kBoth, 9, "Helvetica-BoldOblique"},
        {"Times", 0, 5, "Times-Roman"},
        {"Times", kBoth, 5, "Times-BoldItalic"},
        {"Courier", kItalicFontTrait, 5, "Courier-Oblique"},
        {"Arial", kBoldFontTrait, 5, "Arial-BoldMT"},
        {"Times New Roman", kItalicFontTrait, 5, "TimesNewRomanPS-ItalicMT"},
        {"Courier New", 0, 9, "CourierNewPS-BoldMT"},
        {"Trebuchet MS", kBoth, 5, "Trebuchet-BoldItalic"},
        {"Gill Sans", 0, 8, "GillSans-SemiBold"},
        {"Menlo", 0, 5, "Menlo-Regular"},
        {"Monaco", kBoth, 9, "Monaco"},
        {"Georgia", kItalicFontTrait, 5, "Georgia-Italic"},
        {"Verdana", kBoldFontTrait, 5, "Verdana-Bold"},
        {".AppleSystemUIFont", 0, 5, ".SFNS-Regular"},
    };
    for (const Row& row : kRows) {
        const std::optional<Font> font = fontWithFamily(row.family, row.traits, row.weight, 13);
        ASSERT_TRUE(font.has_value()) << row.family;
        EXPECT_EQ(font->fontName(), row.face) << row.family << ' ' << row.traits << ' ' << row.weight;
        EXPECT_EQ(font->pointSize(), 13);
    }
    EXPECT_FALSE(fontWithFamily("No Such Family", 0, 5, 12));
}

TEST(Fonts, KeepNameAndSizeOfUnknownFonts) {
    const Font font("FuturaBQ-Book", 17.5);
    EXPECT_EQ(font.fontName(), "FuturaBQ-Book");
    EXPECT_EQ(font.pointSize(), 17.5);
    EXPECT_EQ(font.weight(), 5);
    EXPECT_EQ(font.withSize(9), Font("FuturaBQ-Book", 9));
    EXPECT_NE(font, Font("FuturaBQ-Heavy", 17.5));
}

TEST(Fonts, ANameIsOneObjectAsLongAsAFontHasIt) {
    const Font kept("Invented-0", 12);
    for (int i = 0; i < 1000; ++i) {
        const std::string name = "Invented-" + std::to_string(i);
        const Font font(name, 12);
        EXPECT_EQ(font.fontName(), name);
        EXPECT_EQ(font, Font(name, 12));
    }
    EXPECT_EQ(kept, Font("Invented-0", 12)) << "though many were asked for since";
    EXPECT_EQ(Font("Invented-999", 12), Font("Invented-999", 12));
    EXPECT_EQ(kept.fontName(), "Invented-0");
}

TEST(Fonts, MeasureByTheTable) {
    struct Row {
        std::string_view name;
        double ascender, descender, leading; // at 12 points
    };
    const Row kRows[] = {
        {"Helvetica", 9.2402, -2.7598, 0},
        {"HelveticaNeue", 11.424, -2.556, 0.336},
        {"Times-Roman", 9, -3, 0},
        {"TimesNewRomanPSMT", 10.6934, -2.5957, 0.5098},
        {".SFNS-Regular", 11.6016, -2.5313, 0},
        {"Menlo-Bold", 11.1387, -2.8301, 0},
    };
    for (const Row& row : kRows) {
        const Font font(row.name, 12);
        EXPECT_NEAR(font.ascender(), row.ascender, 1e-4) << row.name;
        EXPECT_NEAR(font.descender(), row.descender, 1e-4) << row.name;
        EXPECT_NEAR(font.leading(), row.leading, 1e-4) << row.name;
    }
}

TEST(Fonts, OutsideTheTableMeasureLikeTheUserFontUnlessInstalled) {
    const Font font("NoSuchFontAnywhere-Regular", 12);
    EXPECT_FALSE(Font::named("NoSuchFontAnywhere-Regular", 12));
    EXPECT_EQ(font.familyName(), "NoSuchFontAnywhere-Regular");
    EXPECT_EQ(font.ascender(), Font::userFont(12).ascender());
    EXPECT_EQ(font.traits(), 0u);

    const std::optional<Font> installed = Font::named("DejaVuSansMono-Bold", 12);
    if (!installed) GTEST_SKIP() << "this machine has no DejaVu fonts";
    EXPECT_EQ(installed->familyName(), "DejaVu Sans Mono");
    EXPECT_EQ(installed->traits(), kBoldFontTrait | kFixedPitchFontTrait);
    EXPECT_EQ(installed->weight(), 9);
    EXPECT_NEAR(installed->ascender(), 12 * 1901.0 / 2048, 1e-9); // its "hhea" table, the same as Menlo's
}

TEST(Fonts, ChangeOneTraitWithinTheirFamily) {
    const Font regular("HelveticaNeue", 12);
    const Font bold = convertFontToHaveTrait(regular, kBoldFontTrait);
    EXPECT_EQ(bold, Font("HelveticaNeue-Bold", 12));
    EXPECT_EQ(convertFontToHaveTrait(bold, kItalicFontTrait), Font("HelveticaNeue-BoldItalic", 12));
    EXPECT_EQ(convertFontToNotHaveTrait(bold, kBoldFontTrait), regular);
    EXPECT_EQ(convertFontToHaveTrait(Font("HelveticaNeue-Light", 12), kItalicFontTrait),
              Font("HelveticaNeue-LightItalic", 12));
    const Font monaco("Monaco", 10);
    EXPECT_EQ(convertFontToHaveTrait(monaco, kBoldFontTrait), monaco);
    const Font unknown("NoSuchFont", 10);
    EXPECT_EQ(convertFontToHaveTrait(unknown, kBoldFontTrait), unknown);
}

TEST(Fonts, KnowFamiliesByAnySpelling) {
    EXPECT_EQ(knownFontFamily("times new roman"), "Times New Roman");
    EXPECT_EQ(knownFontFamily("HelveticaNeue-Light"), "Helvetica Neue");
    EXPECT_FALSE(knownFontFamily("Comic Neue"));
    EXPECT_FALSE(knownFontFamily(""));
}

TEST(Fonts, EveryFaceOfTheTableIsFoundUnderItsOwnName) {
    for (const FontFamily& family : fontFamilies()) {
        EXPECT_GT(family.metrics.unitsPerEm, 0);
        for (const FontFace& face : family.faces) {
            const std::optional<Font> font = Font::named(face.postScriptName, 12);
            ASSERT_TRUE(font.has_value()) << face.postScriptName;
            EXPECT_EQ(font->familyName(), family.name);
            EXPECT_EQ(font->traits(), face.traits);
            EXPECT_EQ(font->weight(), face.weight);
        }
    }
}

} // namespace
} // namespace platform
