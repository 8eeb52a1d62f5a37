#include "platform/text/TextDump.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/files/FileWrapper.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

using Entries = std::vector<AttributeSet::Entry>;

AttributeSet::Reference setOf(Entries entries) {
    return std::make_shared<const AttributeSet>(std::move(entries));
}

std::string dumpOf(std::u16string text, Entries entries) {
    return textDump(AttributedString(std::move(text), setOf(std::move(entries))));
}

// What the HTML reader gives every run and every paragraph.
AttributeSet htmlRun(const Font& font, const ParagraphStyle& changed) {
    ParagraphStyle style = changed;
    style.baseWritingDirection = WritingDirection::leftToRight;
    style.tabStops.clear();
    style.defaultTabInterval = 36;
    return AttributeSet{{kFontAttributeName, font},
                        {kKernAttributeName, std::int64_t{0}},
                        {kStrokeWidthAttributeName, std::int64_t{0}},
                        {kStrokeColorAttributeName, Color::sRGB(0, 0, 0)},
                        {kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style)}};
}

AttributeSet::Reference shared(const AttributeSet& set) {
    return std::make_shared<const AttributeSet>(set);
}

// The text of the worked example in docs/formats/text-dump.md.
AttributedString workedExample() {
    const Font times("Times-Roman", 12);
    const Color blue = Color::sRGB(0, 0, 238.0 / 255);
    AttributedString text;
    text.append(u"Ships: ", shared(htmlRun(times, {})));
    const AttributeSet link = htmlRun(times, {})
                                  .with(kForegroundColorAttributeName, blue)
                                  .with(kStrokeColorAttributeName, blue)
                                  .with(kUnderlineStyleAttributeName, std::int64_t{1})
                                  .with(kLinkAttributeName, *URL::fromString("https://example.org/ships"));
    text.append(u"list", shared(link));
    text.append(u"\n", shared(htmlRun(times, {})));

    ParagraphStyle item;
    item.headIndent = 36;
    item.tabStops = {{TextAlignment::left, 11}, {TextAlignment::natural, 36}};
    item.defaultTabInterval = 36;
    item.baseWritingDirection = WritingDirection::leftToRight;
    item.textLists = {std::make_shared<TextList>(kTextListMarkerDisc)};
    const auto itemStyle = std::make_shared<const ParagraphStyle>(item);
    text.append(u"\t\u2022\t", setOf({{kFontAttributeName, times}, {kParagraphStyleAttributeName, itemStyle}}));
    text.append(u"barque\n", shared(htmlRun(times, {}).with(kParagraphStyleAttributeName, itemStyle)));

    const auto table = std::make_shared<TextTable>();
    table->numberOfColumns = 1;
    const auto cell = std::make_shared<TextTableBlock>(table, 0, 1, 0, 1);
    cell->widths[static_cast<std::size_t>(BlockLayer::padding)].fill({1, false});
    cell->verticalAlignment = BlockVerticalAlignment::middle;
    cell->borderColors.fill(Color::sRGB(0, 0, 0));
    ParagraphStyle cellStyle;
    cellStyle.textBlocks = {cell};
    text.append(u"cell\n", shared(htmlRun(Font("Times-Bold", 12), cellStyle)));

    auto wrapper = FileWrapper::regularFile(Data("three"));
    wrapper->setPreferredFilename("plan.pdf");
    text.append(AttributedString::withAttachment(std::make_shared<TextAttachment>(wrapper)));
    return text;
}

TEST(TextDump, DocumentShowsTheWorkedExampleAsItIs) {
    const std::string page = tests::readFile(tests::sourceDirectory() / "docs/formats/text-dump.md");
    const std::string dump = textDump(workedExample());
    EXPECT_NE(page.find("```\n" + dump + "```\n"), std::string::npos) << dump;
}

TEST(TextDump, EmptyTextHasNoLines) {
    EXPECT_EQ(textDump(AttributedString()), "");
}

TEST(TextDump, EscapesWhatTheEyeMisses) {
    struct Row {
        std::u16string text;
        std::string line;
    };
    const Row kRows[] = {
        {u"a\tb\n", R"("a\tb\n")"},
        {u"\r\u2028\u2029", R"("\r\u2028\u2029")"},
        {u"\u00a0\u200b\ufffc\ufeff", R"("\u00a0\u200b\ufffc\ufeff")"},
        {u"\"\\", R"("\"\\")"},
        {std::u16string(1, u'\0') + u"\x1b", R"("\u0000\u001b")"},
        {u"é \U0001F600 \u2022", "\"é \U0001F600 \u2022\""},
        {std::u16string{u'x', 0xD83D, u'y', 0xDE00}, R"("x\ud83dy\ude00")"},
    };
    for (const Row& row : kRows) EXPECT_EQ(dumpOf(row.text, {}), row.line + "\n");
}

TEST(TextDump, WritesAttributesInFixedOrder) {
    EXPECT_EQ(dumpOf(u"x", {{AttributeName("QLTOwn"), std::int64_t{1}},
                            {kSuperscriptAttributeName, std::int64_t{-1}},
                            {kLinkAttributeName, std::u16string(u"note:1")},
                            {kForegroundColorAttributeName, Color::textColor()},
                            {kFontAttributeName, Font("Helvetica", 12.5)}}),
              "\"x\"  font Helvetica 12.5; color System/textColor; link \"note:1\"; super -1; QLTOwn 1\n");
}

TEST(TextDump, ShowsColorsOfEverySpace) {
    struct Row {
        Color color;
        std::string_view text;
    };
    const Row kRows[] = {
        {Color::sRGB(0.2, 0.4, 0.6), "#336699"},
        {Color::sRGB(0.2, 0.4, 0.6, 0.5), "#336699 alpha 0.5"},
        {Color::sRGB(0.25, 0.4, 0.6), "rgb 0.25 0.4 0.6"},
        {Color::deviceRGB(1, 0, 0), "device #FF0000"},
        {Color::calibratedRGB(1, 0, 0), "generic #FF0000"},
        {Color::calibratedWhite(0.5), "white 0.5"},
        {Color::deviceWhite(0), "device white 0"},
        {Color::deviceCMYK(0, 1, 0.5, 0), "cmyk 0 1 0.5 0"},
        {Color::labelColor(), "System/labelColor"},
        {Color::pattern(), "pattern"},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(dumpOf(u"x", {{kForegroundColorAttributeName, row.color}}),
                  fmt::format("\"x\"  color {}\n", row.text));
}

TEST(TextDump, ShowsKernAndStrokeInFullWhenTheyAreNotTheReadersDefaults) {
    const AttributeSet plain = htmlRun(Font("Times-Roman", 12), {}).without(kParagraphStyleAttributeName);
    EXPECT_EQ(textDump(AttributedString(u"x", shared(plain))), "\"x\"  font Times-Roman 12; html\n");
    EXPECT_EQ(textDump(AttributedString(u"x", shared(plain.with(kKernAttributeName, 1.5)))),
              "\"x\"  font Times-Roman 12; kern 1.5; stroke-width 0; stroke-color #000000\n");
    EXPECT_EQ(textDump(AttributedString(u"x", shared(plain.with(kStrokeColorAttributeName, Color::sRGB(1, 0, 0))))),
              "\"x\"  font Times-Roman 12; kern 0; stroke-width 0; stroke-color #FF0000\n");
}

TEST(TextDump, ShowsOnlyWhatAParagraphStyleChanges) {
    struct Row {
        void (*change)(ParagraphStyle&);
        std::string_view text;
    };
    const Row kRows[] = {
        {[](ParagraphStyle&) {}, "para []"},
        {[](ParagraphStyle& s) { s.alignment = TextAlignment::center; }, "para [center]"},
        {[](ParagraphStyle& s) { s.baseWritingDirection = WritingDirection::rightToLeft; }, "para [rtl]"},
        {[](ParagraphStyle& s) { s.headIndent = 36, s.firstLineHeadIndent = 10, s.tailIndent = -40; },
         "para [first 10; head 36; tail -40]"},
        {[](ParagraphStyle& s) { s.paragraphSpacing = 16.08, s.headerLevel = 1; }, "para [header 1; after 16.08]"},
        {[](ParagraphStyle& s) { s.tabStops.clear(); }, "para [tabs none]"},
        {[](ParagraphStyle& s) { s.tabStops = {{TextAlignment::left, 11}, {TextAlignment::right, 36, true}}; },
         "para [tabs 11,36 decimal]"},
        {[](ParagraphStyle& s) { s.lineBreakMode = LineBreakMode::truncatingTail; }, "para [break tail]"},
    };
    for (const Row& row : kRows) {
        ParagraphStyle style;
        row.change(style);
        EXPECT_EQ(dumpOf(u"x", {{kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style)}}),
                  fmt::format("\"x\"  {}\n", row.text));
    }
}

TEST(TextDump, NumbersSharedObjectsOnce) {
    ParagraphStyle style;
    style.textLists = {std::make_shared<TextList>("{decimal}.", 0, 5)};
    AttributedString text(u"a\n",
                          setOf({{kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style)}}));
    style.textLists.push_back(std::make_shared<TextList>("{disc}"));
    text.append(u"b\n", setOf({{kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style)}}));
    EXPECT_EQ(textDump(text), "\"a\\n\"  para [lists L1{decimal}.]\n"
                              "\"b\\n\"  para [lists L1{decimal}.,L2{disc}]\n"
                              "\n"
                              "L1 {decimal}.; start 5\n"
                              "L2 {disc}\n");
}

TEST(TextDump, AsksDerivedAttachmentsForMore) {
    struct Box : TextAttachment {
        std::string_view className() const override { return "TestBox"; }
        std::string dumpDescription() const override { return "on"; }
    };
    EXPECT_EQ(textDump(AttributedString::withAttachment(std::make_shared<Box>())),
              "\"\\ufffc\"  attachment A1 TestBox without file (on)\n");
}

} // namespace
} // namespace platform
