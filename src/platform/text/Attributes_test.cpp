#include "platform/text/Attributes.h"

#include <limits>
#include <set>

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(AttributeNames, AreKnownWhenTheProgramHasThem) {
    EXPECT_EQ(AttributeName::known("NSFont"), kFontAttributeName);
    EXPECT_EQ(AttributeName::known("NSSpellingState"), kSpellingStateAttributeName);
    EXPECT_FALSE(AttributeName::known("MADEAttribute"));
    EXPECT_FALSE(AttributeName::known("MADEAttribute")) << "asking does not make it known";
    EXPECT_FALSE(AttributeName::known(""));
}

TEST(AttributeNames, AreOneForEverySpelling) {
    EXPECT_EQ(AttributeName("NSFont"), kFontAttributeName);
    EXPECT_EQ(&AttributeName("NSFont").string(), &kFontAttributeName.string());
    EXPECT_FALSE(AttributeName("nsfont") == kFontAttributeName);
}

TEST(AttributeValues, CompareByWhatTheySay) {
    const auto style = [](double indent) {
        ParagraphStyle changed;
        changed.headIndent = indent;
        return std::make_shared<const ParagraphStyle>(changed);
    };
    const auto attachment = [] { return std::make_shared<TextAttachment>(); };
    const auto one = attachment();
    struct Row {
        AttributeValue a, b;
        bool equal;
    };
    const double kNaN = std::numeric_limits<double>::quiet_NaN();
    const Row kRows[] = {
        {std::int64_t{2}, 2.0, true},
        {std::int64_t{2}, 2.5, false},
        {2.0, std::int64_t{2}, true},
        {std::numeric_limits<std::int64_t>::max(), 9223372036854775808.0, false},
        {std::int64_t{9007199254740993}, 9007199254740992.0, false},
        {kNaN, kNaN, true},
        {std::int64_t{0}, kNaN, false},
        {std::int64_t{1}, std::u16string(u"1"), false},
        {style(1), style(1), true},
        {style(1), style(2), false},
        {one, one, true},
        {one, attachment(), false},
        {Font("Helvetica", 12), Font("Helvetica", 12), true},
        {Font("Helvetica", 12), Font("Helvetica", 13), false},
        {Color::sRGB(1, 0, 0), Color::deviceRGB(1, 0, 0), false},
    };
    int number = 0;
    for (const Row& row : kRows) {
        EXPECT_EQ(equalAttributeValues(row.a, row.b), row.equal) << number;
        EXPECT_EQ(equalAttributeValues(row.b, row.a), row.equal) << number;
        ++number;
    }
}

TEST(AttributeValues, ConvertBetweenNumbers) {
    EXPECT_EQ(integerValue(-2.9), -2);
    EXPECT_EQ(integerValue(std::u16string(u"7")), 0);
    EXPECT_EQ(integerValue(1e300), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(integerValue(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(doubleValue(std::int64_t{3}), 3.0);
    EXPECT_EQ(doubleValue(Font("Helvetica", 12)), 0.0);
}

TEST(Shadows, AreEqualByValue) {
    const Shadow shadow(1, -2, 3, Color::black());
    EXPECT_EQ(shadow, Shadow(1, -2, 3, Color::black()));
    EXPECT_NE(shadow, Shadow(0, -2, 3, Color::black()));
    EXPECT_NE(shadow, Shadow(1, 2, 3, Color::black()));
    EXPECT_NE(shadow, Shadow(1, -2, 0, Color::black()));
    EXPECT_NE(shadow, Shadow(1, -2, 3, std::nullopt));
    EXPECT_TRUE(equalAttributeValues(shadow, Shadow(1, -2, 3, Color::black())));
}

TEST(AttributeValues, OfEqualValueHaveEqualHashes) {
    EXPECT_EQ(hashOf(AttributeValue(std::int64_t{3})), hashOf(AttributeValue(3.0)));
    EXPECT_EQ(hashOf(AttributeValue(Color::black())), hashOf(AttributeValue(Color::black())));
    EXPECT_NE(hashOf(AttributeValue(Color::black())), hashOf(AttributeValue(Color::white())));
    const auto style = std::make_shared<const ParagraphStyle>(), same = std::make_shared<const ParagraphStyle>();
    EXPECT_EQ(hashOf(AttributeValue(style)), hashOf(AttributeValue(same)));
    const AttributeSet set{{kKernAttributeName, 1.0}, {kParagraphStyleAttributeName, style}};
    EXPECT_EQ(hashOf(set),
              hashOf(AttributeSet{{kKernAttributeName, std::int64_t{1}}, {kParagraphStyleAttributeName, same}}));
    EXPECT_NE(hashOf(set), hashOf(set.with(kKernAttributeName, 2.0)));
}

TEST(AttributeSets, SortByNameAndKeepTheLaterOfTwo) {
    const AttributeSet set{
        {kKernAttributeName, std::int64_t{1}}, {kFontAttributeName, 2.0}, {kKernAttributeName, std::int64_t{3}}};
    ASSERT_EQ(set.entries().size(), 2u);
    EXPECT_EQ(set.entries()[0].first, kFontAttributeName);
    EXPECT_EQ(*set.find<std::int64_t>(kKernAttributeName), 3);
    EXPECT_EQ(set.find(kLinkAttributeName), nullptr);
}

TEST(AttributeSets, ChangeIntoCopies) {
    const AttributeSet set{{kKernAttributeName, std::int64_t{1}}, {kSuperscriptAttributeName, std::int64_t{1}}};
    EXPECT_EQ(set.with(kKernAttributeName, 1.0), set);
    EXPECT_EQ(set.with(kFontAttributeName, 2.0).without(kFontAttributeName), set);
    EXPECT_EQ(set.without(kFontAttributeName), set);
    for (const AttributeName name :
         {kFontAttributeName, kLinkAttributeName, kKernAttributeName, kUnderlineStyleAttributeName})
        EXPECT_EQ(AttributeSet(set).with(name, 2.0), set.with(name, 2.0)); // in place
    const AttributeSet other{{kFontAttributeName, 5.0}, {kKernAttributeName, std::int64_t{9}}};
    const AttributeSet merged = set.merging(other);
    EXPECT_EQ(merged, (AttributeSet{{kFontAttributeName, 5.0},
                                    {kKernAttributeName, std::int64_t{9}},
                                    {kSuperscriptAttributeName, std::int64_t{1}}}));
    EXPECT_EQ(AttributeSet().merging(set), set);
    EXPECT_EQ(set.merging(AttributeSet()), set);
}

TEST(ParagraphStyles, HaveTwelveTabStopsByDefault) {
    const ParagraphStyle& style = *ParagraphStyle::defaultParagraphStyle();
    ASSERT_EQ(style.tabStops.size(), 12u);
    EXPECT_EQ(style.tabStops.front(), (TextTab{TextAlignment::left, 28}));
    EXPECT_EQ(style.tabStops.back(), (TextTab{TextAlignment::left, 336}));
    EXPECT_EQ(style.alignment, TextAlignment::natural);
}

// Tables of attribute values would be slow if those of a text that differ in one thing had one hash.
TEST(AttributeValues, HashesTellParagraphStylesAndShadowsApart) {
    using Length = double ParagraphStyle::*;
    const Length lengths[] = {&ParagraphStyle::firstLineHeadIndent, &ParagraphStyle::headIndent,
                              &ParagraphStyle::tailIndent,          &ParagraphStyle::lineSpacing,
                              &ParagraphStyle::paragraphSpacing,    &ParagraphStyle::paragraphSpacingBefore,
                              &ParagraphStyle::lineHeightMultiple,  &ParagraphStyle::minimumLineHeight,
                              &ParagraphStyle::maximumLineHeight,   &ParagraphStyle::defaultTabInterval};
    std::set<std::size_t> hashes;
    std::size_t count = 0;
    const auto add = [&](AttributeValue value) {
        hashes.insert(hashOf(value));
        EXPECT_EQ(hashes.size(), ++count);
    };
    add(ParagraphStyle::defaultParagraphStyle());
    for (const Length length : lengths) {
        ParagraphStyle style;
        style.*length = 3;
        add(std::make_shared<const ParagraphStyle>(style));
    }
    ParagraphStyle tabbed;
    tabbed.tabStops.back().location += 1;
    add(std::make_shared<const ParagraphStyle>(tabbed));
    add(Shadow(1, 2, 3, std::nullopt));
    add(Shadow(2, 2, 3, std::nullopt));
    add(Shadow(1, 3, 3, std::nullopt));
    add(Shadow(1, 2, 4, std::nullopt));
    add(Shadow(1, 2, 3, Color::black()));
    add(std::vector<std::int64_t>{1});
    add(std::vector<std::int64_t>{2});
}

} // namespace
} // namespace platform
