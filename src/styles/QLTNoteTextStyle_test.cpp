#include "styles/QLTNoteTextStyle.h"

#include <algorithm>

#include "richtext/highlights/Highlights.h"
#include "styles/base/Colors.h"
#include "tests/support/StylesFixture.h"

using namespace quillet;
using platform::AttributeName;
using platform::AttributeSet;
using platform::Color;
using platform::Font;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::TextAlignment;

namespace {

using Style = QLTNoteTextStyle;
const Color kRed = Color::sRGB(1, 0, 0);

ParagraphStyleReference paragraph(double headIndent, double lineSpacing = 0) {
    ParagraphStyle style;
    style.headIndent = headIndent;
    style.lineSpacing = lineSpacing;
    return std::make_shared<const ParagraphStyle>(style);
}

class NoteTextStyle : public StylesFixture {};

} // namespace

TEST_F(NoteTextStyle, FactorySettings) {
    const struct {
        std::int64_t type;
        Style::Reference style;
        const char16_t *identifier, *name;
        const char* font;
        double size;
        double paragraphSpacing, lineSpacing, tabInterval;
        int headerLevel;
        bool toParagraph, resets;
    } kCases[] = {
        {1, Style::defaultTitleNoteTextStyle(), u"QLTNoteStyleIdentifierTitle", u"Title", "HelveticaNeue-Bold", 17, 0,
         0, 0, 1, true, true},
        {2, Style::defaultHeadingNoteTextStyle(), u"QLTNoteStyleIdentifierHeading", u"Heading", "HelveticaNeue-Bold",
         14, 2, 0, 0, 2, true, true},
        {4, Style::defaultSubheadingNoteTextStyle(), u"QLTNoteStyleIdentifierSubheading", u"Subheading",
         "HelveticaNeue-Bold", 13, 2, 0, 0, 3, true, true},
        {0, Style::defaultBodyNoteTextStyle(), u"QLTNoteStyleIdentifierBody", u"Body", "HelveticaNeue", 12, 0, 0, 28, 0,
         false, false},
        {3, Style::defaultMonospacedNoteTextStyle(), u"QLTNoteStyleIdentifierMonospace", u"Monospaced", "Menlo-Regular",
         12, 0, 1, 0, 0, false, false},
    };
    for (const auto& each : kCases) {
        const Style& style = *each.style;
        EXPECT_EQ(style.type(), each.type);
        EXPECT_EQ(style.identifier(), each.identifier);
        EXPECT_EQ(style.name(), each.name);
        EXPECT_EQ(style.font(), Font(each.font, each.size));
        EXPECT_EQ(style.fontName(), each.font);
        EXPECT_EQ(style.fontSize(), each.size);
        ParagraphStyle expected;
        expected.paragraphSpacing = each.paragraphSpacing;
        expected.lineSpacing = each.lineSpacing;
        expected.defaultTabInterval = each.tabInterval;
        expected.headerLevel = each.headerLevel;
        EXPECT_EQ(*style.paragraphStyle(), expected) << each.font << each.type;
        EXPECT_EQ(style.applyToParagraph(), each.toParagraph);
        EXPECT_EQ(style.resetOnNewLine(), each.resets);
        EXPECT_EQ(style.foregroundColor(), Color::textColor());
        EXPECT_EQ(style.underlineStyle(), 0);
        EXPECT_EQ(style.strikethrough(), 0);
        EXPECT_FALSE(style.storedName());
        EXPECT_FALSE(style.shouldSaveToDefaults());
        EXPECT_NE(Style::defaultStyleForType(each.type), Style::defaultStyleForType(each.type)) << "never cached";
    }
    for (const std::int64_t type : {-1, 5, 9999}) EXPECT_FALSE(Style::defaultStyleForType(type));
}

TEST_F(NoteTextStyle, AFreshStyleFallsBackToThePlatform) {
    const Style style;
    EXPECT_EQ(style.font(), Font::userFont(12));
    EXPECT_EQ(style.paragraphStyle(), ParagraphStyle::defaultParagraphStyle());
    EXPECT_EQ(style.foregroundColor(), Style::standardForegroundColor());
    EXPECT_EQ(style.type(), Style::kBodyType);
}

TEST_F(NoteTextStyle, BecomingCustomDrawsAnIdentifierOnce) {
    Style style;
    EXPECT_EQ(style.identifier(), u"QLTNoteStyleIdentifierBody");
    style.setType(Style::kBodyType);
    EXPECT_EQ(identifiers_, 0);
    style.setType(Style::kCustomType);
    EXPECT_EQ(style.identifier(), u"00000000-0000-0000-0000-000000000001");
    EXPECT_FALSE(style.name());
    style.setName(u"Quote");
    EXPECT_EQ(style.name(), u"Quote");
    style.setType(Style::kTitleType);
    EXPECT_EQ(style.name(), u"Title") << "the stored name counts for nothing";
    EXPECT_EQ(style.identifier(), u"QLTNoteStyleIdentifierTitle");
    style.setType(Style::kCustomType);
    EXPECT_EQ(style.identifier(), u"00000000-0000-0000-0000-000000000001") << "kept";
}

TEST_F(NoteTextStyle, UnknownTypesAreNamedLikeCustomOnes) {
    for (const std::int64_t type : {std::int64_t{-1}, std::int64_t{5}, std::int64_t{10000}}) {
        Style style;
        style.setName(u"Odd");
        style.setType(type);
        EXPECT_FALSE(style.identifier());
        EXPECT_EQ(style.name(), u"Odd");
        EXPECT_FALSE(style.shouldSaveToDefaults());
        EXPECT_EQ(style.attributes().find(QLTNoteTextStyleIdentifierKey), nullptr);
    }
    EXPECT_EQ(identifiers_, 0);
}

TEST_F(NoteTextStyle, FontNameAndSizeReplaceTheFont) {
    Style style;
    style.setFontName("Menlo-Bold");
    EXPECT_EQ(style.font(), Font("Menlo-Bold", 12));
    style.setFontSize(20);
    EXPECT_EQ(style.font(), Font("Menlo-Bold", 20));
    style.setFontName("NoSuchFontAnywhere-Heavy");
    EXPECT_FALSE(style.storedFont());
    EXPECT_EQ(style.font(), Font::userFont(12));
    EXPECT_EQ(Style::keyPathsForValuesAffectingFontName(), std::vector<std::string_view>{"font"});
    EXPECT_EQ(Style::keyPathsForValuesAffectingFontSize(), std::vector<std::string_view>{"font"});
}

TEST_F(NoteTextStyle, BlackAndWhiteAreNeverStored) {
    Style style;
    for (const Color& color : {Color::black(), Color::white(), crayonsWhiteColor(), Color::textColor()}) {
        style.setForegroundColor(kRed);
        EXPECT_EQ(style.foregroundColor(), kRed);
        style.setForegroundColor(color);
        EXPECT_EQ(style.foregroundColor(), Color::textColor());
        environment_->darkAppearance = true;
        EXPECT_EQ(style.foregroundColor(), Color::textColor());
        environment_->darkAppearance = false;
    }
    style.setForegroundColor(kRed);
    style.setForegroundColor(std::nullopt);
    EXPECT_EQ(style.foregroundColor(), Color::textColor());
}

TEST_F(NoteTextStyle, OtherAllowedAttributesDependOnTheParagraphFlagUnlessSet) {
    Style style;
    const auto forText = style.otherAllowedAttributeNames();
    EXPECT_EQ(forText, (Style::AttributeNames{platform::kBackgroundColorAttributeName, platform::kLigatureAttributeName,
                                              platform::kAttachmentAttributeName, platform::kLinkAttributeName,
                                              platform::kWritingDirectionAttributeName,
                                              platform::kVerticalGlyphFormAttributeName,
                                              platform::kParagraphStyleAttributeName, QLTNoteTextStyleIdentifierKey}));
    style.setApplyToParagraph(true);
    const auto forParagraphs = style.otherAllowedAttributeNames();
    EXPECT_EQ(forParagraphs.size(), 7u);
    EXPECT_EQ(std::ranges::count(forParagraphs, platform::kParagraphStyleAttributeName), 0);
    style.setOtherAllowedAttributeNames(Style::AttributeNames{platform::kKernAttributeName});
    EXPECT_EQ(style.otherAllowedAttributeNames(), Style::AttributeNames{platform::kKernAttributeName});
    EXPECT_EQ(style.copy()->otherAllowedAttributeNames().size(), 7u) << "not copied";
}

TEST_F(NoteTextStyle, CopiesEverythingElse) {
    Style style;
    style.setType(Style::kCustomType);
    style.setName(u"Quote");
    style.setFont(Font("Menlo-Bold", 9));
    style.setParagraphStyle(paragraph(20));
    style.setUnderlineStyle(2);
    style.setStrikethrough(9);
    style.setForegroundColor(kRed);
    style.setResetOnNewLine(true);
    style.setApplyToParagraph(true);
    const Style::Reference copy = style.copy();
    EXPECT_EQ(copy->attributes(), style.attributes());
    EXPECT_EQ(copy->name(), u"Quote");
    EXPECT_EQ(copy->customStyleIdentifier(), style.customStyleIdentifier());
    EXPECT_TRUE(copy->resetOnNewLine());
    EXPECT_TRUE(copy->applyToParagraph());
    EXPECT_TRUE(copy->matchesStyle(style));
}

TEST_F(NoteTextStyle, MatchesWhatTheTextHas) {
    const Style::Reference body = Style::defaultBodyNoteTextStyle(), title = Style::defaultTitleNoteTextStyle();
    const AttributeSet bodySet = body->attributes(), titleSet = title->attributes();
    const AttributeName paragraphKey = platform::kParagraphStyleAttributeName;
    ParagraphStyle centred = *title->paragraphStyle();
    centred.alignment = TextAlignment::center;
    const auto centredTitle = std::make_shared<const ParagraphStyle>(centred);
    const struct {
        const char* what;
        const Style* style;
        AttributeSet text;
        bool matches;
    } kCases[] = {
        {"own attributes", body.get(), bodySet, true},
        {"nothing", body.get(), {}, false},
        {"only ignored attributes",
         body.get(),
         {{QLTNoteTextStyleIdentifierKey, std::u16string(u"x")},
          {platform::kBackgroundColorAttributeName, kRed},
          {platform::kLinkAttributeName, std::u16string(u"https://example.org")}},
         false},
        {"only a paragraph style, which Body ignores", body.get(), {{paragraphKey, paragraph(7)}}, false},
        {"no underline or strikethrough", body.get(),
         bodySet.without(platform::kUnderlineStyleAttributeName).without(platform::kStrikethroughStyleAttributeName),
         true},
        {"font alone", body.get(), {{platform::kFontAttributeName, body->font()}}, true},
        {"other font", body.get(), bodySet.with(platform::kFontAttributeName, title->font()), false},
        {"other size", body.get(), bodySet.with(platform::kFontAttributeName, body->font().withSize(13)), false},
        {"other color", body.get(), bodySet.with(platform::kForegroundColorAttributeName, kRed), false},
        {"underlined", body.get(), bodySet.with(platform::kUnderlineStyleAttributeName, std::int64_t{1}), false},
        {"underline 0.5 reads as 0", body.get(), bodySet.with(platform::kUnderlineStyleAttributeName, 0.5), true},
        {"struck", body.get(), bodySet.with(platform::kStrikethroughStyleAttributeName, std::int64_t{1}), false},
        {"other identifier, which is ignored", body.get(),
         bodySet.with(QLTNoteTextStyleIdentifierKey, std::u16string(u"x")), true},
        {"further attribute", body.get(), bodySet.with(platform::kKernAttributeName, 1.0), true},
        {"Body: any paragraph style", body.get(), bodySet.with(paragraphKey, paragraph(7, 3)), true},
        {"Title: its paragraph style", title.get(), titleSet, true},
        {"Title: centred", title.get(), titleSet.with(paragraphKey, centredTitle), false},
        {"Title: no paragraph style", title.get(), titleSet.without(paragraphKey), true},
        {"Title: paragraph style alone", title.get(), {{paragraphKey, title->paragraphStyle()}}, true},
        {"Title: no paragraph style at all", title.get(), {{paragraphKey, ParagraphStyleReference()}}, false},
    };
    for (const auto& each : kCases) EXPECT_EQ(each.style->matchesAttributes(each.text), each.matches) << each.what;
}

TEST_F(NoteTextStyle, WithoutIgnoredNamesOnlyLineSpacingCountsForTextStyles) {
    const Style::Reference body = Style::defaultBodyNoteTextStyle();
    const AttributeSet set = body->attributes();
    const AttributeName key = platform::kParagraphStyleAttributeName;
    EXPECT_TRUE(body->matchesAttributes(set.with(key, paragraph(50)), {}));
    EXPECT_FALSE(body->matchesAttributes(set.with(key, paragraph(50, 1)), {}));
    EXPECT_FALSE(body->matchesAttributes(set.with(QLTNoteTextStyleIdentifierKey, std::u16string(u"x")), {}));
}

TEST_F(NoteTextStyle, StylesMatchOnlyWithEqualIdentifiers) {
    const Style::Reference body = Style::defaultBodyNoteTextStyle();
    const Style::Reference custom = Style::customStyleFromAttributes(body->attributes());
    EXPECT_TRUE(body->matchesStyle(*Style::defaultBodyNoteTextStyle()));
    EXPECT_FALSE(custom->matchesStyle(*body));
    EXPECT_FALSE(body->matchesStyle(*custom));
    EXPECT_FALSE(body->matchesStyle(*Style::defaultMonospacedNoteTextStyle()));
}

TEST_F(NoteTextStyle, SavesCustomAndChangedStyles) {
    Style custom;
    custom.setType(Style::kCustomType);
    EXPECT_TRUE(custom.shouldSaveToDefaults());
    for (const std::int64_t type : {0, 1, 2, 3, 4}) {
        const Style::Reference style = Style::defaultStyleForType(type);
        EXPECT_FALSE(style->shouldSaveToDefaults());
        style->setFontSize(40);
        EXPECT_TRUE(style->shouldSaveToDefaults());
    }
    const Style::Reference body = Style::defaultBodyNoteTextStyle();
    body->setParagraphStyle(paragraph(50));
    EXPECT_FALSE(body->shouldSaveToDefaults()) << "indents of a text style do not count";
}

TEST_F(NoteTextStyle, ApplyingKeepsAllowedAttributesAndHighlights) {
    const Style::Reference title = Style::defaultTitleNoteTextStyle();
    const AttributeSet own = title->attributes();
    const AttributeSet colors{{platform::kForegroundColorAttributeName, kRed},
                              {platform::kBackgroundColorAttributeName, kRed}};
    const auto highlighted = [&](std::int64_t type) { return colors.with(QLTHighlightTextAttributeName, type); };
    const AttributeSet background{{platform::kBackgroundColorAttributeName, kRed}};
    const struct {
        const char* what;
        AttributeSet text, expected;
    } kCases[] = {
        {"nothing", {}, own},
        {"colors without a highlight", colors, own.merging(background)},
        {"type 0", highlighted(0), own.merging(background)},
        {"type 1", highlighted(1), own.merging(highlighted(1))},
        {"type 999", highlighted(999), own.merging(highlighted(999))},
        {"highlight without colors",
         {{QLTHighlightTextAttributeName, std::int64_t{2}}},
         own.without(platform::kForegroundColorAttributeName).with(QLTHighlightTextAttributeName, std::int64_t{2})},
        {"link, own identifier, kern, font",
         {{platform::kLinkAttributeName, std::u16string(u"x")},
          {QLTNoteTextStyleIdentifierKey, std::u16string(u"other")},
          {platform::kKernAttributeName, 1.0},
          {platform::kFontAttributeName, Font("Menlo-Bold", 3)}},
         own.with(platform::kLinkAttributeName, std::u16string(u"x"))
             .with(QLTNoteTextStyleIdentifierKey, std::u16string(u"other"))},
        {"paragraph style", {{platform::kParagraphStyleAttributeName, paragraph(9, 9)}}, own},
    };
    for (const auto& each : kCases)
        EXPECT_EQ(title->attributesWithOtherAttributes(each.text), each.expected) << each.what;
}

TEST_F(NoteTextStyle, ATextStyleChangesOnlyTheLineSpacingOfParagraphs) {
    const Style::Reference style = Style::defaultMonospacedNoteTextStyle(); // line spacing 1
    const AttributeName key = platform::kParagraphStyleAttributeName;
    EXPECT_EQ(style->attributesWithOtherAttributes({{key, paragraph(50, 7)}}),
              style->attributes().with(key, paragraph(50, 1)));
    EXPECT_EQ(style->attributesWithOtherAttributes({}), style->attributes());
}

TEST_F(NoteTextStyle, CustomStyleTakesTheAttributesOfText) {
    const Style::Reference style = Style::customStyleFromAttributes({
        {platform::kFontAttributeName, Font("Menlo-Bold", 9)},
        {platform::kParagraphStyleAttributeName, paragraph(9)},
        {platform::kForegroundColorAttributeName, kRed},
        {platform::kUnderlineStyleAttributeName, std::int64_t{1}},
        {platform::kStrikethroughStyleAttributeName, 2.0},
    });
    EXPECT_EQ(style->type(), Style::kCustomType);
    EXPECT_EQ(style->name(), u"New Style");
    EXPECT_EQ(style->identifier(), u"00000000-0000-0000-0000-000000000001");
    EXPECT_EQ(style->font(), Font("Menlo-Bold", 9));
    EXPECT_EQ(*style->paragraphStyle(), *paragraph(9));
    EXPECT_EQ(style->foregroundColor(), kRed);
    EXPECT_EQ(style->underlineStyle(), 1);
    EXPECT_EQ(style->strikethrough(), 2);
    const Style::Reference empty =
        Style::customStyleFromAttributes({{platform::kForegroundColorAttributeName, Color::black()}});
    EXPECT_EQ(empty->foregroundColor(), Color::textColor());
    EXPECT_FALSE(empty->storedFont());
    EXPECT_EQ(empty->underlineStyle(), 0);
}

TEST_F(NoteTextStyle, ScaleFactorsOfTextSizes) {
    const struct {
        std::int64_t size;
        double scale;
    } kCases[] = {{1, 1}, {2, 13.0 / 12}, {3, 1.25}, {4, 17.0 / 12}, {0, 0.875}, {5, 0.875}, {-1, 0.875}};
    for (const auto& each : kCases) EXPECT_EQ(Style::scaleFactorForNoteTextSize(each.size), each.scale) << each.size;
}
