#include "richtext/TextEditing.h"

#include <gtest/gtest.h>

#include "platform/text/TextDump.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::ParagraphStyle;
using platform::TextTab;

TEST(TextEditing, StylesOfNeighboursStayApart) {
    const auto centred = std::make_shared<ParagraphStyle>();
    centred->alignment = platform::TextAlignment::center;
    AttributedString text(u"abcd");
    setParagraphStyles(text, {{{1, 1}, ParagraphStyle::defaultParagraphStyle()}, {{2, 1}, centred}});
    EXPECT_EQ(platform::textDump(text), "\"a\"\n\"b\"  para []\n\"c\"  para [center]\n\"d\"\n");
}

TEST(TextEditing, WithoutAStyleTheDefaultCounts) {
    ParagraphStyle spaced;
    spaced.paragraphSpacing = 12;
    AttributedString text(u"ab");
    text.addAttribute(platform::kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(spaced), {1, 1});
    EXPECT_EQ(paragraphStyleAt(text, 0), *ParagraphStyle::defaultParagraphStyle());
    EXPECT_EQ(paragraphStyleAt(text, 1), spaced);
    EXPECT_EQ(paragraphStyleAt(text, 2), *ParagraphStyle::defaultParagraphStyle());
}

TEST(TextEditing, AMissingAttachmentIsNone) {
    AttributedString text(u"ab");
    text.addAttribute(platform::kAttachmentAttributeName, platform::TextAttachmentReference(), {0, 1});
    EXPECT_TRUE(attachmentsOf(text).empty());
}

TEST(TextEditing, IndentsGoToTheNextTabStop) {
    const auto tabs = [](std::initializer_list<double> locations) {
        std::vector<TextTab> stops;
        for (const double location : locations) stops.push_back({platform::TextAlignment::left, location});
        return stops;
    };
    const struct {
        std::vector<TextTab> tabStops;
        double head, first, interval;
        double expectedHead, expectedFirst;
    } kRows[] = {
        {tabs({11, 36, 84}), 36, 0, 36, 84, 48},
        {tabs({11, 36, 84}), 35, 0, 36, 36, 1},
        {tabs({11, 36, 84}), 84, 10, 36, 120, 46}, // none behind: one interval further
        {tabs({84, 50}), 36, 0, 36, 84, 48},       // in their order, not by location
        {{}, 36, 0, 0, 36, 0},                     // an interval of 0 leads nowhere further
        {{}, 0, 5, 0, 28, 33},                     // nothing to go by: the default style's first
        {{}, -36, 0, 36, 28, 64},
        {tabs({0}), -10, 0, 30, 20, 30}, // a stop at 0 is none
        {tabs({0}), -10, 0, 5, 28, 38},
    };
    for (const auto& row : kRows) {
        ParagraphStyle style;
        style.tabStops = row.tabStops;
        style.headIndent = row.head;
        style.firstLineHeadIndent = row.first;
        style.defaultTabInterval = row.interval;
        indentToNextTabStop(style);
        EXPECT_EQ(style.headIndent, row.expectedHead);
        EXPECT_EQ(style.firstLineHeadIndent, row.expectedFirst);
    }
}

} // namespace quillet
