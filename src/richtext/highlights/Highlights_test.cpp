#include "richtext/highlights/Highlights.h"

#include <gtest/gtest.h>

#include "platform/text/AttributedString.h"
#include "styles/base/Colors.h"

using namespace quillet;
using platform::AttributedString;
using platform::AttributeSet;
using platform::Color;
using platform::kBackgroundColorAttributeName;
using platform::kForegroundColorAttributeName;
using platform::kTextHighlightColorSchemeAttributeName;
using platform::kTextHighlightStyleAttributeName;

namespace {

const Color kRed = Color::sRGB(1, 0, 0);

AttributeSet::Reference shared(AttributeSet set) {
    return std::make_shared<const AttributeSet>(std::move(set));
}

// Text of one run.
AttributedString run(AttributeSet set) {
    return AttributedString(u"text", shared(std::move(set)));
}

AttributeSet platformHighlight(std::u16string_view scheme) {
    return {{kTextHighlightStyleAttributeName, std::u16string(kTextHighlightStyleDefault)},
            {kTextHighlightColorSchemeAttributeName, u"NSTextHighlightColorScheme" + std::u16string(scheme)}};
}

AttributeSet noteHighlight(std::int64_t type) {
    const Color color = colorForHighlightColorType(static_cast<HighlightColorType>(type)).value_or(kRed);
    return {{QLTHighlightTextAttributeName, type},
            {kBackgroundColorAttributeName, highlightBackgroundColor(color)},
            {kForegroundColorAttributeName, highlightForegroundColor(color)}};
}

AttributeSet colored(const Color& color) {
    return {{kForegroundColorAttributeName, color}};
}

const struct {
    std::int64_t type;
    const char16_t* scheme;
} kTypes[] = {{1, u"Orange"}, {2, u"Mint"}, {3, u"Blue"}, {4, u"Pink"}, {5, u"Purple"}};

} // namespace

TEST(Highlights, PlatformSchemesBecomeTypesAndKeepTheirAttributes) {
    for (const auto& each : kTypes) {
        AttributedString text = run(platformHighlight(each.scheme));
        convertNSTextHighlightsToQuilletHighlights(text);
        EXPECT_EQ(text, run(platformHighlight(each.scheme).merging(noteHighlight(each.type)))) << each.type;
    }
}

TEST(Highlights, DefaultAndUnknownSchemesBecomeTypeOne) {
    for (const char16_t* scheme : {u"Default", u"Yellow", u"", u"orange"}) {
        AttributedString text = run(platformHighlight(scheme).merging(colored(kRed)));
        convertNSTextHighlightsToQuilletHighlights(text);
        EXPECT_EQ(text, run(platformHighlight(scheme).merging(noteHighlight(1))));
    }
}

TEST(Highlights, WithoutSchemeOrWithAnotherStyleTheRunStays) {
    const AttributeSet schemeOnly = platformHighlight(u"Mint").without(kTextHighlightStyleAttributeName);
    const AttributeSet kUnchanged[] = {
        platformHighlight(u"Mint").without(kTextHighlightColorSchemeAttributeName),
        schemeOnly,
        schemeOnly.with(kTextHighlightStyleAttributeName, std::u16string(u"Other")),
        schemeOnly.with(kTextHighlightStyleAttributeName, std::int64_t{1}),
        {},
    };
    for (const AttributeSet& set : kUnchanged) {
        AttributedString text = run(set);
        convertNSTextHighlightsToQuilletHighlights(text);
        EXPECT_EQ(text, run(set));
    }
}

TEST(Highlights, SchemesWithinOneHighlightAreConvertedEachByItself) {
    AttributedString text = run(platformHighlight(u"Mint"));
    text.append(run(platformHighlight(u"Pink").without(kTextHighlightColorSchemeAttributeName)));
    text.append(run(platformHighlight(u"Purple")));
    AttributedString expected = run(platformHighlight(u"Mint").merging(noteHighlight(2)));
    expected.append(run(platformHighlight(u"Pink").without(kTextHighlightColorSchemeAttributeName)));
    expected.append(run(platformHighlight(u"Purple").merging(noteHighlight(5))));
    convertNSTextHighlightsToQuilletHighlights(text);
    EXPECT_EQ(text, expected);
}

TEST(Highlights, TypesBecomeSchemesAndLoseTheirColors) {
    for (const auto& each : kTypes) {
        AttributedString text = run(noteHighlight(each.type));
        convertQuilletHighlightsToNSTextHighlights(text);
        EXPECT_EQ(text, run(platformHighlight(each.scheme))) << each.type;
    }
}

TEST(Highlights, OtherTypesBecomeTheDefaultScheme) {
    for (const std::int64_t type : {std::int64_t{6}, std::int64_t{7}, kHighlightInOwnColors, std::int64_t{-1}}) {
        AttributedString text = run(noteHighlight(type));
        convertQuilletHighlightsToNSTextHighlights(text);
        EXPECT_EQ(text, run(platformHighlight(u"Default"))) << type;
    }
    AttributedString fraction = run(noteHighlight(1).with(QLTHighlightTextAttributeName, 0.5));
    convertQuilletHighlightsToNSTextHighlights(fraction);
    EXPECT_EQ(fraction, run(platformHighlight(u"Default"))) << "true as a boolean, 0 as an integer";
}

TEST(Highlights, TypeZeroIsLeftAlone) {
    for (const AttributeSet& set : {noteHighlight(0), colored(kRed), AttributeSet()}) {
        AttributedString text = run(set);
        convertQuilletHighlightsToNSTextHighlights(text);
        EXPECT_EQ(text, run(set));
    }
}

TEST(Highlights, ThereAndBackKeepsTheNoteForm) {
    AttributedString text = run(noteHighlight(4));
    convertQuilletHighlightsToNSTextHighlights(text);
    convertNSTextHighlightsToQuilletHighlights(text);
    EXPECT_EQ(text, run(noteHighlight(4).merging(platformHighlight(u"Pink"))));
}

TEST(Highlights, EmptyTextStaysEmpty) {
    for (const auto convert : {convertNSTextHighlightsToQuilletHighlights, convertQuilletHighlightsToNSTextHighlights,
                               convertToDynamicColors, convertFromDynamicColors}) {
        AttributedString text;
        convert(text);
        EXPECT_EQ(text, AttributedString());
    }
    AttributedString text;
    cleanupTextColorsInRange(text, {0, 0});
    EXPECT_EQ(text, AttributedString());
}

TEST(DynamicColors, BlackAndMissingBecomeTheTextColor) {
    const struct {
        AttributeSet before, after;
    } kCases[] = {
        {{}, colored(Color::textColor())},
        {colored(Color::black()), colored(Color::textColor())},
        {colored(Color::sRGB(0, 0, 0)), colored(Color::textColor())},
        {colored(Color::sRGB(0, 0, 0, 0.5)), colored(Color::sRGB(0, 0, 0, 0.5))},
        {colored(Color::white()), colored(Color::white())},
        {colored(kRed), colored(kRed)},
        {noteHighlight(2), noteHighlight(2)},
    };
    for (const auto& each : kCases) {
        AttributedString text = run(each.before);
        convertToDynamicColors(text);
        EXPECT_EQ(text, run(each.after));
    }
}

TEST(DynamicColors, TheTextColorBecomesBlackAndMissingStays) {
    const struct {
        AttributeSet before, after;
    } kCases[] = {
        {{}, {}},
        {colored(Color::textColor()), colored(Color::black())},
        {colored(kRed), colored(kRed)},
        {colored(Color::white()), colored(Color::white())},
        {noteHighlight(3), noteHighlight(3)},
    };
    for (const auto& each : kCases) {
        AttributedString text = run(each.before);
        convertFromDynamicColors(text);
        EXPECT_EQ(text, run(each.after));
    }
}

TEST(WebColors, EverythingIsLabelColoredAndOnlyHighlightsKeepBackgrounds) {
    const Color yellow = Color::sRGB(1, 1, 0);
    const AttributeSet background{{kBackgroundColorAttributeName, yellow}};
    const AttributeSet label = colored(Color::labelColor());
    AttributedString text = run(colored(kRed).merging(background));
    text.append(run(noteHighlight(1)));
    text.append(run({}));
    AttributedString expected = run(label);
    expected.append(run(noteHighlight(1).merging(label)));
    expected.append(run(label));
    cleanupTextColorsInRange(text, {0, text.length()});
    EXPECT_EQ(text, expected);
}

TEST(WebColors, ABackgroundThatBeginsOnAHighlightStaysOverItsWholeLength) {
    const AttributeSet background{{kBackgroundColorAttributeName, Color::sRGB(1, 1, 0)}};
    const AttributeSet highlighted = background.with(QLTHighlightTextAttributeName, std::int64_t{1});
    const AttributeSet label = colored(Color::labelColor());

    AttributedString begins = run(highlighted);
    begins.append(run(background));
    AttributedString kept = run(highlighted.merging(label));
    kept.append(run(background.merging(label)));
    cleanupTextColorsInRange(begins, {0, begins.length()});
    EXPECT_EQ(begins, kept);

    AttributedString ends = run(background);
    ends.append(run(highlighted));
    AttributedString removed = run(label);
    removed.append(run(label.with(QLTHighlightTextAttributeName, std::int64_t{1})));
    cleanupTextColorsInRange(ends, {0, ends.length()});
    EXPECT_EQ(ends, removed);
}

TEST(WebColors, OnlyTheRangeChangesAndItsStartCountsAsABeginning) {
    const AttributeSet background{{kBackgroundColorAttributeName, Color::sRGB(1, 1, 0)}};
    AttributedString text = run(background);
    text.append(run(background.with(QLTHighlightTextAttributeName, std::int64_t{1})));
    AttributedString expected = text;
    expected.addAttribute(kForegroundColorAttributeName, Color::labelColor(), {4, 2});
    cleanupTextColorsInRange(text, {4, 2});
    EXPECT_EQ(text, expected);
}
