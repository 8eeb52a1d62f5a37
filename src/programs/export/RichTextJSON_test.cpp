#include "programs/export/RichTextJSON.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "platform/graphics/Font.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using nlohmann::json;
using platform::AttributedString;
using platform::Color;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::TextList;
using platform::Value;

class RichTextJSON : public NoteFileFixture {
  protected:
    static json attribute(platform::AttributeName name, platform::AttributeValue value) {
        const json form = json::parse(richTextJSON(with(name, std::move(value), u"x")));
        return form["runs"][0]["attributes"][name.string()];
    }
    static json style(const ParagraphStyle& paragraph) {
        return attribute(platform::kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(paragraph));
    }
};

TEST_F(RichTextJSON, HoldsTextRunsAndAttachments) {
    const AttributedString text =
        joined(plain(u"a\U0001F600"), attached("p.png", "pixels"), checkbox(true, 2), plain(u"z"));
    EXPECT_EQ(json::parse(richTextJSON(text)), json::parse(R"({
        "text": "a😀\uFFFC\uFFFCz",
        "runs": [{"location": 0, "length": 3, "attributes": {}},
                 {"location": 3, "length": 1, "attributes": {"NSAttachment": 0}},
                 {"location": 4, "length": 1, "attributes": {"NSAttachment": 1, "NSParagraphStyle":
                     {"firstLineHeadIndent": -56, "headIndent": 56, "defaultTabInterval": 28}}},
                 {"location": 5, "length": 1, "attributes": {}}],
        "attachments": [{"location": 3, "class": "NSTextAttachment", "name": "p.png", "type": "public.png", "size": 6},
                        {"location": 4, "class": "QLTChecklistTextAttachment", "name": "",
                         "type": "com.tesseral.checklist", "size": 0, "on": true, "indentationLevel": 2}]})"));
    EXPECT_EQ(richTextJSON({}), R"({"text":"","runs":[],"attachments":[]})");
}

TEST_F(RichTextJSON, HoldsTheNoteAttributes) {
    const platform::Dictionary attributes{{"data", Value(platform::Data("bytes"))},
                                          {"date", Value(platform::Date::fromUnixTime(1714554902))},
                                          {"ranges", Value(platform::Array{Value("{0, 3}")})},
                                          {"yes", Value(true)}};
    EXPECT_EQ(
        json::parse(richTextJSON({}, Value(attributes)))["noteAttributes"],
        json::parse(R"({"data": "Ynl0ZXM=", "date": "2024-05-01T09:15:02Z", "ranges": ["{0, 3}"], "yes": true})"));
    EXPECT_TRUE(json::parse(richTextJSON({}, Value()))["noteAttributes"].is_null());
}

TEST_F(RichTextJSON, WritesValuesByTheirKind) {
    EXPECT_EQ(attribute(platform::kKernAttributeName, 0.5), json(0.5));
    EXPECT_EQ(attribute(platform::kUnderlineStyleAttributeName, std::int64_t{9}), json(9));
    EXPECT_EQ(attribute(platform::kTextEffectAttributeName, std::u16string(u"e\xD800")), json("e\uFFFD"));
    EXPECT_EQ(attribute(platform::kLinkAttributeName, *platform::URL::fromString("https://example.org/")),
              json("https://example.org/"));
    EXPECT_EQ(attribute(platform::kFontAttributeName, platform::Font("Menlo-Regular", 11)),
              json::parse(R"({"name": "Menlo-Regular", "size": 11})"));
    EXPECT_EQ(attribute(platform::kForegroundColorAttributeName, Color::sRGB(1, 0.5, 0, 0.25)),
              json::parse(R"({"red": 1, "green": 0.5, "blue": 0, "alpha": 0.25})"));
    EXPECT_EQ(
        attribute(platform::kForegroundColorAttributeName, Color::textColor()),
        json::parse(R"({"red": 0, "green": 0, "blue": 0, "alpha": 1, "catalog": "System", "name": "textColor"})"));
    EXPECT_TRUE(attribute(platform::kForegroundColorAttributeName, Color::pattern()).is_null());
    EXPECT_EQ(attribute(platform::kWritingDirectionAttributeName, std::vector<std::int64_t>{1, 2}), json({1, 2}));
    EXPECT_EQ(attribute(platform::kShadowAttributeName, platform::Shadow{1, 2, 3, std::nullopt}),
              json::parse(R"({"offsetX": 1, "offsetY": 2, "blurRadius": 3})"));
}

TEST_F(RichTextJSON, WritesOnlyWhatAParagraphStyleChanges) {
    EXPECT_EQ(style({}), json::object());
    ParagraphStyle all;
    all.alignment = platform::TextAlignment::center;
    all.firstLineHeadIndent = 1;
    all.headIndent = 2;
    all.tailIndent = -3;
    all.lineSpacing = 4;
    all.paragraphSpacing = 5;
    all.paragraphSpacingBefore = 6;
    all.lineHeightMultiple = 7;
    all.minimumLineHeight = 8;
    all.maximumLineHeight = 9;
    all.defaultTabInterval = 10;
    all.headerLevel = 2;
    all.baseWritingDirection = platform::WritingDirection::rightToLeft;
    all.tabStops = {{platform::TextAlignment::left, 12, false}, {platform::TextAlignment::right, 24, true}};
    EXPECT_EQ(style(all),
              json::parse(R"({"alignment": "center", "firstLineHeadIndent": 1, "headIndent": 2, "tailIndent": -3,
        "lineSpacing": 4, "paragraphSpacing": 5, "paragraphSpacingBefore": 6, "lineHeightMultiple": 7,
        "minimumLineHeight": 8, "maximumLineHeight": 9, "defaultTabInterval": 10, "headerLevel": 2,
        "baseWritingDirection": "rightToLeft",
        "tabStops": [{"location": 12, "alignment": "left"}, {"location": 24, "alignment": "decimal"}]})"));
}

TEST_F(RichTextJSON, NumbersListsAndTablesByIdentity) {
    const auto outer = std::make_shared<TextList>(platform::kTextListMarkerDisc);
    const auto inner = std::make_shared<TextList>("{decimal}.", 0, 3);
    ParagraphStyle first, second;
    first.textLists = {outer};
    second.textLists = {outer, inner};
    const auto table = std::make_shared<platform::TextTable>();
    const auto block = std::make_shared<platform::TextTableBlock>(table, 1, 2, 3, 4);
    block->backgroundColor = Color::sRGB(1, 1, 1);
    block->width(platform::BlockLayer::padding, platform::BlockEdge::left) = {5, false};
    block->width(platform::BlockLayer::border, platform::BlockEdge::bottom) = {1, false};
    block->dimension(platform::BlockDimension::width) = {50, true};
    block->verticalAlignment = platform::BlockVerticalAlignment::middle;
    second.textBlocks = {block, std::make_shared<platform::TextBlock>()};
    const auto paragraph = [](const ParagraphStyle& each) {
        return with(platform::kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(each), u"x");
    };
    const json form = json::parse(richTextJSON(joined(paragraph(first), paragraph(second))));
    const auto styleOf = [&](std::size_t run) { return form["runs"][run]["attributes"]["NSParagraphStyle"]; };
    EXPECT_EQ(styleOf(0),
              json::parse(R"({"textLists": [{"id": 1, "markerFormat": "{disc}", "startingItemNumber": 1}]})"));
    EXPECT_EQ(styleOf(1), json::parse(R"({
        "textLists": [{"id": 1, "markerFormat": "{disc}", "startingItemNumber": 1},
                      {"id": 2, "markerFormat": "{decimal}.", "startingItemNumber": 3}],
        "textBlocks": [{"id": 1, "table": 1, "row": 1, "rowSpan": 2, "column": 3, "columnSpan": 4,
                        "backgroundColor": {"red": 1, "green": 1, "blue": 1, "alpha": 1},
                        "padding": [5, 0, 0, 0], "border": [0, 0, 0, 1], "margin": [0, 0, 0, 0],
                        "verticalAlignment": "middle", "width": "50.0%"},
                       {"id": 2, "padding": [0, 0, 0, 0], "border": [0, 0, 0, 0], "margin": [0, 0, 0, 0],
                        "verticalAlignment": "top"}]})"));
}

} // namespace
} // namespace quillet
