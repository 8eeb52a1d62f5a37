#include "styles/base/ParagraphStyles.h"

#include <gtest/gtest.h>

#include "platform/graphics/Font.h"

using namespace quillet;
using platform::ParagraphStyle;
using platform::TextAlignment;
using platform::TextTab;

TEST(ParagraphStyles, OffersTwelveLineHeightMultiples) {
    constexpr std::array<double, 12> kExpected{0.5, 0.6, 0.7, 0.8, 0.9, 1.0, 1.1, 1.2, 1.3, 1.4, 1.5, 2.0};
    EXPECT_EQ(userInterfaceLineHeightMultiples, kExpected);
}

TEST(ParagraphStyles, ListStyleHangsTextAt36AndKeepsDefaultTabsBeyond56) {
    const ParagraphStyle style = listParagraphStyle();
    EXPECT_EQ(style.firstLineHeadIndent, 0);
    EXPECT_EQ(style.headIndent, 36);
    EXPECT_EQ(style.defaultTabInterval, 36);
    std::vector<TextTab> expected{{TextAlignment::natural, 11}, {TextAlignment::natural, 36}};
    for (double location = 84; location <= 336; location += 28) expected.push_back({TextAlignment::left, location});
    EXPECT_EQ(style.tabStops, expected);
    ParagraphStyle plain = style;
    plain.tabStops = ParagraphStyle::defaultTabStops();
    plain.headIndent = plain.defaultTabInterval = 0;
    EXPECT_EQ(plain, *ParagraphStyle::defaultParagraphStyle()) << "nothing else changes";
}

TEST(ParagraphStyles, MarkersOfTheThreeListStyles) {
    const struct {
        std::uint64_t style;
        std::int64_t item;
        std::u16string_view marker;
    } kCases[] = {
        {1, 7, u"\t\u2022\t"}, {2, 7, u"\t\u2043\t"}, {3, 12, u"\t12.\t"}, {3, 0, u"\t0.\t"},
        {3, -4, u"\t-4.\t"},   {0, 12, u""},          {4, 12, u""},        {999, 1, u""},
    };
    for (const auto& each : kCases)
        EXPECT_EQ(listMarkerForListStyle(static_cast<ListStyle>(each.style), each.item), each.marker) << each.style;
}

TEST(ParagraphStyles, RecognisesListParagraphs) {
    const struct {
        const char* what;
        double firstLine, head;
        std::vector<TextTab> tabs;
        bool isList;
    } kCases[] = {
        {"list style", 0, 36, {{TextAlignment::natural, 11}}, true},
        {"hanging by 36, other tabs", 36, 72, {{TextAlignment::left, 28}}, true},
        {"hanging by 36, no tabs", 0, 36, {}, true},
        {"default", 0, 0, ParagraphStyle::defaultTabStops(), false},
        {"hanging by 35", 0, 35, {{TextAlignment::natural, 11}}, false},
        {"list tabs without indent", 0, 0, {{TextAlignment::natural, 11}}, false},
        {"indented as a whole", 36, 36, {{TextAlignment::natural, 11}}, false},
        {"negative first line", -18, 18, {}, true},
    };
    for (const auto& each : kCases) {
        ParagraphStyle style;
        style.firstLineHeadIndent = each.firstLine;
        style.headIndent = each.head;
        style.tabStops = each.tabs;
        EXPECT_EQ(isListParagraphStyle(style), each.isList) << each.what;
    }
    EXPECT_TRUE(isListParagraphStyle(listParagraphStyle()));
}

constexpr double ParagraphStyle::* kSpacing[] = {
    &ParagraphStyle::lineHeightMultiple,     &ParagraphStyle::lineSpacing,       &ParagraphStyle::paragraphSpacing,
    &ParagraphStyle::paragraphSpacingBefore, &ParagraphStyle::minimumLineHeight, &ParagraphStyle::maximumLineHeight,
};

TEST(ParagraphStyles, LineSpacingMatchesToWithinRounding) {
    for (const auto property : kSpacing) {
        ParagraphStyle style, other;
        style.*property = 1;
        EXPECT_FALSE(lineSpacingMatchesStyle(style, other));
        other.*property = 1 + 2.220446049250313e-16;
        EXPECT_TRUE(lineSpacingMatchesStyle(style, other));
        other.*property = 1 + 2 * 2.220446049250313e-16;
        EXPECT_FALSE(lineSpacingMatchesStyle(style, other));
    }
}

TEST(ParagraphStyles, EqualityLeavesOutIndentsAndTabs) {
    ParagraphStyle style, other;
    other.headIndent = other.firstLineHeadIndent = 20;
    other.tabStops.clear();
    EXPECT_TRUE(isEqualToParagraphStyle(style, other));
    other.alignment = TextAlignment::center;
    EXPECT_FALSE(isEqualToParagraphStyle(style, other));
    other.alignment = style.alignment;
    other.lineSpacing = 1;
    EXPECT_FALSE(isEqualToParagraphStyle(style, other));
}

TEST(ParagraphStyles, ScalesLengthsButNotTheMultiple) {
    ParagraphStyle style = listParagraphStyle();
    double value = 1;
    for (const auto property : kSpacing) style.*property = value++;
    const ParagraphStyle scaled = scaledParagraphStyle(style, 2);
    value = 1;
    for (const auto property : kSpacing) {
        const double factor = property == &ParagraphStyle::lineHeightMultiple ? 1 : 2;
        EXPECT_EQ(scaled.*property, factor * value++);
    }
    EXPECT_EQ(scaled.headIndent, 36);
    EXPECT_EQ(scaledParagraphStyle(ParagraphStyle(), 2).maximumLineHeight, 0) << "no limit stays no limit";
}

TEST(ParagraphStyles, LineSpacingIsTransferredAlone) {
    ParagraphStyle source = listParagraphStyle(), style;
    double value = 1;
    for (const auto property : kSpacing) source.*property = value++;
    ParagraphStyle expected;
    value = 1;
    for (const auto property : kSpacing) expected.*property = value++;
    applyLineSpacingFromStyle(style, source);
    EXPECT_EQ(style, expected);
}

TEST(ParagraphStyles, LineHeightRoundsUpInSinglePrecision) {
    EXPECT_EQ(lineHeight(10.5, -3.25, 0), 14);
    EXPECT_EQ(lineHeight(12, -4, 1), 17);
    EXPECT_EQ(lineHeight(12, -5.0000000001, 0), 17) << "the excess is lost in single precision";
    EXPECT_EQ(lineHeight(12, -5.00001, 0), 18);
    const platform::Font font("Helvetica", 12);
    EXPECT_EQ(lineHeight(font), lineHeight(font.ascender(), font.descender(), font.leading()));
}
