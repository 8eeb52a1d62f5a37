#include "platform/html/HTMLWriter.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/html/HTMLReader.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

std::string written(const AttributedString& text) {
    auto page = htmlDataFromAttributedString(text);
    EXPECT_TRUE(page.has_value());
    return page.value_or("");
}

AttributedString readBack(const std::string& page) {
    auto read = attributedStringFromHTMLData(page);
    EXPECT_TRUE(read.has_value());
    return read ? read->text : AttributedString();
}

// What stands between the body's tags.
std::string body(const std::string& page) {
    const std::size_t start = page.find("<body>\n") + 7;
    return page.substr(start, page.find("</body>") - start);
}

AttributedString plain(std::u16string_view text) {
    return AttributedString(std::u16string(text));
}

TEST(HTMLWriter, WritesTheGoldenTexts) {
    for (const auto& golden : tests::goldenCases("html-writer")) {
        SCOPED_TRACE(golden.name);
        const std::string page = tests::readFile(golden.directory / "input.html");
        tests::expectGolden(golden, "expected.html", written(readBack(page)));
    }
}

TEST(HTMLWriter, FramesThePage) {
    const auto page = htmlDataFromAttributedString(plain(u"a"), {.title = "A & B", .prefixSpaces = 2});
    ASSERT_TRUE(page.has_value());
    EXPECT_EQ(*page, "<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"http://www.w3.org/TR/html4/strict.dtd\">\n"
                     "<html>\n<head>\n"
                     "  <meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\">\n"
                     "  <meta http-equiv=\"Content-Style-Type\" content=\"text/css\">\n"
                     "  <title>A &amp; B</title>\n"
                     "  <meta name=\"Generator\" content=\"Cocoa HTML Writer\">\n"
                     "  <meta name=\"CocoaVersion\" content=\"2685.7\">\n"
                     "  <style type=\"text/css\">\n"
                     "    p.p1 {margin: 0.0px 0.0px 0.0px 0.0px; font: 12.0px Helvetica}\n"
                     "  </style>\n"
                     "</head>\n<body>\n<p class=\"p1\">a</p>\n</body>\n</html>\n");
}

TEST(HTMLWriter, WritesTextOfEveryKind) {
    const struct {
        std::u16string_view text;
        std::string_view body;
    } cases[] = {
        {u"", ""},
        {u"a", "<p class=\"p1\">a</p>\n"},
        {u"a\n", "<p class=\"p1\">a</p>\n"},
        {u"a\n\nb", "<p class=\"p1\">a</p>\n<p class=\"p2\"><br></p>\n<p class=\"p1\">b</p>\n"},
        {u"a\u2028b", "<p class=\"p1\">a<br>b</p>\n"},
        {u"<&>\"", "<p class=\"p1\">&lt;&amp;&gt;\"</p>\n"},
        {u"a b", "<p class=\"p1\">a b</p>\n"},
        {u" a", "<p class=\"p1\"><span class=\"Apple-converted-space\">\u00A0</span>a</p>\n"},
        {u"a  b", "<p class=\"p1\">a<span class=\"Apple-converted-space\">\u00A0\u00A0</span>b</p>\n"},
        {u"a ", "<p class=\"p1\">a<span class=\"Apple-converted-space\">\u00A0</span></p>\n"},
        {u"a\tb", "<p class=\"p1\">a<span class=\"Apple-tab-span\">\t</span>b</p>\n"},
        {u"é\u00A0☃", "<p class=\"p1\">é\u00A0☃</p>\n"},
        {u"a\u0001b", "<p class=\"p1\">ab</p>\n"},
    };
    for (const auto& [text, expected] : cases) EXPECT_EQ(body(written(plain(text))), expected) << utf8FromUTF16(text);
}

TEST(HTMLWriter, GivesAnEmptyParagraphTheHeightOfItsFont) {
    EXPECT_NE(written(plain(u"\n")).find("font: 12.0px Helvetica; min-height: 14.0px}"), std::string::npos);
}

TEST(HTMLWriter, WritesAttachmentsInTheirTwoForms) {
    const struct {
        std::string name;
        std::string_view body;
    } cases[] = {
        {"a b.png", "<img src=\"file:///a%20b.png\" alt=\"a b.png\">"},
        {"Bücher.jpg", "<img src=\"file:///B%C3%BCcher.jpg\" alt=\"Bücher.jpg\">"},
        {"plan.pdf", "<img src=\"file:///plan.pdf\" alt=\"plan.pdf\">"},
        {"notes.txt", "<object data=\"file:///notes.txt\">notes.txt</object>"},
        {"R&D.zip", "<object data=\"file:///R&D.zip\">R&D.zip</object>"},
        {"unknown", "<object data=\"file:///unknown\">unknown</object>"},
        {"", ""},
    };
    for (const auto& [name, expected] : cases) {
        auto wrapper = FileWrapper::regularFile(Data("x"));
        wrapper->setPreferredFilename(name);
        const auto text = AttributedString::withAttachment(std::make_shared<TextAttachment>(wrapper));
        EXPECT_EQ(body(written(text)), "<p class=\"p1\">" + std::string(expected) + "</p>\n");
    }
}

TEST(HTMLWriter, GoesOnWithTheNumbersOfAListThatATableParts) {
    const AttributedString read = readBack("<ol><li>a<table><tr><td>b</table></li><li>c</li></ol>");
    EXPECT_EQ(utf8FromUTF16(readBack(written(read)).string()), utf8FromUTF16(read.string()));
}

// What a run says that must survive a page.
struct Piece {
    std::u16string text;
    int traits = 0; // 1 bold, 2 italic, 4 link
    int kind = 0;   // of the paragraph that it ends: 0 none, 1 plain, 2 item, 3 nested item, 4 cell
};

AttributedString assembled(const std::vector<Piece>& pieces) {
    AttributedString text;
    auto outer = std::make_shared<TextList>("{disc}"), inner = std::make_shared<TextList>("{decimal}");
    std::int64_t number = 1;
    auto table = std::make_shared<TextTable>();
    table->numberOfColumns = 1;
    std::int64_t row = 0;
    int before = 0;
    for (const Piece& piece : pieces) {
        ParagraphStyle style;
        std::u16string marker;
        // A list or table that something else parted is another one when it comes again.
        if ((piece.kind == 2 || piece.kind == 3) && before != 2 && before != 3) {
            outer = std::make_shared<TextList>("{disc}");
            inner = std::make_shared<TextList>("{decimal}");
            number = 1;
        }
        if (piece.kind == 4 && before != 4) {
            table = std::make_shared<TextTable>();
            table->numberOfColumns = 1;
            row = 0;
        }
        if (piece.kind == 2 || piece.kind == 3) style.textLists.push_back(outer);
        if (piece.kind == 2) marker = u"\t\u2022\t";
        if (piece.kind == 3) {
            style.textLists.push_back(inner);
            marker = u"\t" + inner->markerForItemNumber(number++) + u"\t";
        }
        if (piece.kind == 4) style.textBlocks.push_back(std::make_shared<TextTableBlock>(table, row++, 1, 0, 1));
        before = piece.kind;
        constexpr std::string_view kFaces[] = {"Helvetica", "Helvetica-Bold", "Helvetica-Oblique",
                                               "Helvetica-BoldOblique"};
        std::vector<AttributeSet::Entry> entries{
            {kFontAttributeName, Font(kFaces[piece.traits & 3], 12)},
            {kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style)}};
        const auto bare = std::make_shared<const AttributeSet>(entries);
        if (piece.traits & 4)
            entries.emplace_back(kLinkAttributeName, *URL::fromString("https://example.org/a?b=1&c=2"));
        text.append(marker, bare);
        text.append(piece.text, std::make_shared<const AttributeSet>(std::move(entries)));
        text.append(u"\n", bare);
    }
    return text;
}

// One line a run of equal looks: link, bold, italic, lists and cells by kind.
std::string looks(const AttributedString& text) {
    std::string out;
    std::string last;
    bool inMarker = false; // the only tabs here are those around markers
    for (std::size_t i = 0; i < text.length(); ++i) {
        const AttributeSet& set = text.attributesAt(i);
        const char16_t unit = text.string()[i];
        std::string now;
        // Newlines and markers belong to their paragraph, not to a run.
        const Font* font = set.find<Font>(kFontAttributeName);
        if (unit == u'\t') inMarker = !inMarker;
        if (unit != u'\n' && unit != u'\t' && !inMarker && font)
            now += (font->traits() & kBoldFontTrait ? "b" : "") +
                   std::string(font->traits() & kItalicFontTrait ? "i" : "");
        if (const URL* link = set.find<URL>(kLinkAttributeName))
            now += unit == u'\n' ? "" : "<" + link->absoluteString() + ">";
        if (const auto* style = set.find<ParagraphStyleReference>(kParagraphStyleAttributeName)) {
            for (const auto& list : (*style)->textLists) now += list->markerFormat();
            for (const auto& block : (*style)->textBlocks)
                now += "[" + std::to_string(dynamic_cast<const TextTableBlock&>(*block).startingRow) + "]";
        }
        if (now != last && unit != u' ') out += "|" + (last = now) + "|";
        out += utf8FromUTF16(std::u16string(1, unit));
    }
    return out;
}

TEST(HTMLWriter, PagesKeepTextLinksFacesListsAndTables) {
    const auto ok = rc::check("read(write(text)) says the same", [] {
        const auto piece = rc::gen::map(rc::gen::tuple(rc::gen::container<std::u16string>(rc::gen::elementOf(
                                                           std::u16string(u"ab  <&>\"'.\u00A0\u2028é漢x1"))),
                                                       rc::gen::inRange(0, 8), rc::gen::inRange(0, 5)),
                                        [](const std::tuple<std::u16string, int, int>& parts) {
                                            Piece made{std::get<0>(parts), std::get<1>(parts), std::get<2>(parts)};
                                            while (!made.text.empty() && made.text.back() == u'\u2028')
                                                made.text.pop_back(); // a block's end takes it
                                            return made;
                                        });
        const auto pieces = *rc::gen::container<std::vector<Piece>>(piece);
        const AttributedString text = assembled(pieces);
        const AttributedString again = readBack(written(text));
        RC_ASSERT(utf8FromUTF16(again.string()) == utf8FromUTF16(text.string()));
        RC_ASSERT(looks(again) == looks(text));
    });
    EXPECT_TRUE(ok);
}

TEST(HTMLWriter, KeepsTheTextOfEveryGoldenPageOfTheReader) {
    for (const auto& golden : tests::goldenCases("html")) {
        const AttributedString text = readBack(tests::readFile(golden.directory / "input.html"));
        std::u16string expected = text.string(), actual = readBack(written(text)).string();
        if (!expected.empty() && !expected.ends_with(u'\n')) expected += u'\n';
        std::erase(expected, kAttachmentCharacter); // files are not found again
        std::erase(actual, kAttachmentCharacter);
        EXPECT_EQ(utf8FromUTF16(actual), utf8FromUTF16(expected)) << golden.name << "\n" << body(written(text));
    }
}

} // namespace
} // namespace platform
