#include <gtest/gtest.h>

#include "platform/graphics/Font.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "programs/export/MarkdownExport.h"
#include "programs/export/PlainTextExport.h"
#include "richtext/highlights/Highlights.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using platform::AttributedString;
using platform::Font;
using platform::ParagraphStyle;
using platform::TextList;
using platform::TextTable;
using platform::TextTableBlock;
using platform::URL;

class MarkdownExport : public NoteFileFixture {
  protected:
    static std::string markdown(const AttributedString& text) {
        return markdownFromNoteText(text, [](std::string_view name) { return "N/" + std::string(name); });
    }
    static AttributedString inFont(std::string_view name, std::u16string_view text) {
        return with(platform::kFontAttributeName, Font(name, 12), text);
    }
    static AttributedString bold(std::u16string_view text) { return inFont("Helvetica-Bold", text); }
    static AttributedString italic(std::u16string_view text) { return inFont("Helvetica-Oblique", text); }
    static AttributedString both(std::u16string_view text) { return inFont("Helvetica-BoldOblique", text); }
    static AttributedString code(std::u16string_view text) { return inFont("Menlo-Regular", text); }
    static AttributedString struck(std::u16string_view text) {
        return with(platform::kStrikethroughStyleAttributeName, std::int64_t{1}, text);
    }
    static AttributedString marked(std::u16string_view text) {
        return with(QLTHighlightTextAttributeName, std::int64_t{3}, text);
    }
    static AttributedString linked(std::u16string_view text, std::string_view address) {
        return with(platform::kLinkAttributeName, *URL::fromString(address), text);
    }
    static AttributedString styled(AttributedString text, const ParagraphStyle& style) {
        text.addAttribute(platform::kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style),
                          {0, text.length()});
        return text;
    }
    static AttributedString heading(std::int32_t level, std::u16string_view text) {
        ParagraphStyle style;
        style.headerLevel = level;
        return styled(bold(text), style);
    }
    static AttributedString item(std::vector<std::shared_ptr<TextList>> lists, std::u16string_view text) {
        ParagraphStyle style;
        style.textLists = std::move(lists);
        return styled(plain(text), style);
    }
    static AttributedString cell(const std::shared_ptr<TextTable>& table, std::int64_t row, std::int64_t column,
                                 AttributedString text) {
        ParagraphStyle style;
        style.textBlocks = {std::make_shared<TextTableBlock>(table, row, 1, column, 1)};
        return styled(std::move(text), style);
    }
};

struct MarkdownCase {
    AttributedString text;
    std::string expected;
};

TEST_F(MarkdownExport, WritesParagraphsAndSpans) {
    const MarkdownCase cases[] = {
        {{}, ""},
        {plain(u"one"), "one\n"},
        {plain(u"one\ntwo\n\n\nthree\n"), "one\n\ntwo\n\nthree\n"},
        {plain(u"  indented\n\tby a tab \n"), "indented\n\nby a tab\n"},
        {plain(u"line\u2028break"), "line\\\nbreak\n"},
        {joined(plain(u"a "), bold(u"b"), plain(u" c")), "a **b** c\n"},
        {joined(plain(u"a"), bold(u" b "), plain(u"c")), "a **b** c\n"},
        {joined(bold(u"a "), italic(u"b "), both(u"c")), "**a** *b **c***\n"},
        {joined(bold(u"a "), both(u"b "), bold(u"c")), "**a *b* c**\n"},
        {joined(bold(u"a\u2028"), bold(u"b")), "**a\\\nb**\n"},
        {struck(u"gone"), "~gone~\n"},
        {marked(u"seen"), "<mark>seen</mark>\n"},
        {linked(u"the page", "https://example.org/a_(b)"), "[the page](https://example.org/a_%28b%29)\n"},
        {joined(plain(u"x "), linked(u"one ", "https://a.example/"), linked(u"two", "https://b.example/")),
         "x [one](https://a.example/) [two](https://b.example/)\n"},
        {with(platform::kLinkAttributeName, std::u16string(u"https://a.example/b c"), u"t"),
         "[t](https://a.example/b%20c)\n"},
        {joined(plain(u"run "), code(u"a*b"), plain(u" now")), "run `a*b` now\n"},
        {joined(plain(u"run "), code(u"`a``b"), plain(u" now")), "run ``` `a``b ``` now\n"},
        {plain(u" \t \n"), ""},
        {plain(u"bell\u0007 gone"), "bell gone\n"},
    };
    for (const MarkdownCase& each : cases) EXPECT_EQ(markdown(each.text), each.expected);
}

TEST_F(MarkdownExport, EscapesWhatWouldMeanSomething) {
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"a*b* [c] <d> `e` ~f~ \\", "a\\*b\\* \\[c\\] \\<d> \\`e\\` \\~f\\~ \\\\\n"},
        {u"snake_case _edge_", "snake_case \\_edge\\_\n"},
        {u"AT&T & &amp; &#38;", "AT\\&T & \\&amp; \\&#38;\n"},
        {u"# no heading", "\\# no heading\n"},
        {u"> no quote", "\\> no quote\n"},
        {u"- no item", "\\- no item\n"},
        {u"+ no item", "\\+ no item\n"},
        {u"--- no rule", "\\--- no rule\n"},
        {u"=== no heading", "\\=== no heading\n"},
        {u"1. no item", "1\\. no item\n"},
        {u"12) no item", "12\\) no item\n"},
        {u"1.5 litres", "1.5 litres\n"},
        {u"-5 degrees", "-5 degrees\n"},
        {u"a | b", "a | b\n"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(markdown(plain(text)), expected);
}

TEST_F(MarkdownExport, WritesHeadingsWithoutTheirBoldness) {
    EXPECT_EQ(markdown(joined(heading(1, u"One\n"), heading(3, u"Three\n"), heading(9, u"Deep\n"), plain(u"text"))),
              "# One\n\n### Three\n\n###### Deep\n\ntext\n");
    EXPECT_EQ(markdown(AttributedString(u"Style\n", std::make_shared<const platform::AttributeSet>(
                                                        QLTNoteTextStyle::headingNoteTextStyle()->attributes()))),
              "## Style\n");
}

TEST_F(MarkdownExport, NestsLists) {
    const auto bullets = std::make_shared<TextList>(platform::kTextListMarkerDisc);
    const auto numbers = std::make_shared<TextList>("{decimal}.", 0, 99);
    const auto deep = std::make_shared<TextList>(platform::kTextListMarkerSquare);
    EXPECT_EQ(markdown(joined(item({bullets}, u"\t•\tone\n"), item({bullets, numbers}, u"\t99.\tfirst\n"),
                              item({bullets, numbers}, u"\t100.\tsecond\u2028line\n"),
                              item({bullets, numbers, deep}, u"\t▪\tdeep\n"), item({bullets}, u"no marker\n"),
                              plain(u"after"))),
              "- one\n    99. first\n    100. second\\\n         line\n         - deep\n- no marker\n\nafter\n");
    EXPECT_EQ(markdown(item({bullets, numbers, deep}, u"\t▪\tno parents\n")), "- no parents\n");
}

TEST_F(MarkdownExport, WritesChecklistsAndDividers) {
    EXPECT_EQ(markdown(joined(checkbox(true, 0), plain(u"done\n"), checkbox(false, 0), plain(u"open\n"),
                              checkbox(true, 2), plain(u"deep\n"), divider(), plain(u"\nafter"), divider())),
              "- [x] done\n- [ ] open\n        - [x] deep\n\n***\n\nafter\n\n***\n");
}

TEST_F(MarkdownExport, LinksFilesAndImages) {
    AttributedString linkedImage = attached("b.png", "");
    linkedImage.addAttribute(platform::kLinkAttributeName, *URL::fromString("https://example.org/"), {0, 1});
    AttributedString remote = AttributedString::withAttachment(std::make_shared<platform::TextAttachment>());
    remote.addAttribute(platform::kLinkAttributeName, *URL::fromString("https://example.org/i.png"), {0, 1});
    EXPECT_EQ(markdown(joined(attached("a [1].png", ""), plain(u"\n"), attached<QLTFileAttachment>("c (2).zip", ""),
                              plain(u"\n"), linkedImage, plain(u"\n"), remote, plain(u"\n\uFFFC"))),
              "![a \\[1\\].png](N/a%20[1].png)\n\n[c (2).zip](N/c%20%282%29.zip)\n\n"
              "[![b.png](N/b.png)](https://example.org/)\n\n![](https://example.org/i.png)\n");
}

TEST_F(MarkdownExport, FencesCode) {
    EXPECT_EQ(markdown(joined(plain(u"text\n"), code(u"if (a) {\n    b();\n\n}\n\n"), plain(u"more\n"))),
              "text\n\n```\nif (a) {\n    b();\n\n}\n```\n\nmore\n");
    EXPECT_EQ(markdown(code(u"```\n")), "````\n```\n````\n");
}

TEST_F(MarkdownExport, DrawsTablesWithPipes) {
    const auto table = std::make_shared<TextTable>(), other = std::make_shared<TextTable>();
    EXPECT_EQ(
        markdown(joined(plain(u"before\n"), cell(table, 0, 0, plain(u"a|b\n")), cell(table, 0, 1, bold(u"head\n")),
                        cell(table, 1, 0, plain(u"one\n")), cell(table, 1, 0, plain(u"two\n")),
                        cell(table, 1, 1, code(u"c|d\n")), cell(other, 0, 0, plain(u"\n")), plain(u"after"))),
        "before\n\n| a\\|b | **head** |\n| --- | --- |\n| one<br>two | `c\\|d` |\n\n| |\n| --- |\n\nafter\n");
}

TEST_F(MarkdownExport, TablesFromOutsideStayBounded) {
    const auto table = std::make_shared<TextTable>();
    AttributedString text;
    for (std::int64_t i = 0; i < 1000; ++i)
        text.append(cell(table, i * 1'000'000'000'000, -i * 1'000'000'000'000, plain(u"x\n")));
    EXPECT_LT(markdown(text).size(), 1'000'000u);
}

TEST_F(MarkdownExport, PlainTextHasNamesAndMarks) {
    const AttributedString text =
        joined(plain(u"one\r\ntwo\u2028three\u001b[2J\n"), checkbox(true, 1), plain(u"done\n"), checkbox(false, 0),
               plain(u"open\n"), divider(), plain(u"\n"), attached<QLTFileAttachment>("a\u202e.zip", "12345"));
    EXPECT_EQ(plainTextFromNoteText(text), "one\ntwo\nthree[2J\n✓ done\n◦ open\n***\n[a.zip]\n");
    EXPECT_EQ(plainTextFromNoteText({}), "");
    EXPECT_EQ(attachmentList(text), "a\\u{202e}.zip  public.zip-archive  5 bytes\n");
}

} // namespace
} // namespace quillet
