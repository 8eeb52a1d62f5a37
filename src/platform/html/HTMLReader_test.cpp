#include "platform/html/HTMLReader.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/text/TextAttachment.h"
#include "platform/text/TextDump.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {
namespace {

TEST(HTMLReader, ReadsTheGoldenPages) {
    for (const auto& golden : tests::goldenCases("html")) {
        SCOPED_TRACE(golden.name);
        const URL directory = URL::fileURLWithPath(golden.directory.string(), true);
        const URL page = directory.appendingPathComponent("input.html");
        const auto read = attributedStringFromHTMLFile(page, {.baseURL = directory, .readAccessURL = directory});
        ASSERT_TRUE(read.has_value());
        tests::expectGolden(golden, "expected.dump", textDump(read->text));
    }
}

TEST(HTMLReader, ResolvesAddressesAgainstTheBase) {
    const URL base = *URL::fromString("https://e.org/a/page.html");
    const auto read =
        attributedStringFromHTMLData("<base href='../b/'><a href='c?d'>x</a>", {.baseURL = base, .readAccessURL = {}});
    ASSERT_TRUE(read.has_value());
    const URL* link = read->text.attributesAt(0).find<URL>(kLinkAttributeName);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->absoluteString(), "https://e.org/b/c?d");
}

TEST(HTMLReader, SaysOnceInTheLogWhatItDoesNotFetch) {
    std::vector<std::string> entries;
    const auto before = setSystemLogSink([&](std::string_view entry) { entries.emplace_back(entry); });
    const auto read = attributedStringFromHTMLData("<img src='https://e.org/x.png'>");
    setSystemLogSink(before);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(entries, std::vector<std::string>{"Not fetched: https://e.org/x.png"});
}

TEST(HTMLReader, GivesTheDocumentAttributesOfThePageThatAreWanted) {
    HTMLReadOptions options;
    options.readsDocumentAttributes = true;
    const auto read = attributedStringFromHTMLData(
        "<title>T</title><meta name=AUTHOR content=me><meta name=keywords content='a, b'>"
        "<meta name=CreationTime content=2024-05-01T09:15:02Z><meta name=ModificationTime content=yesterday>"
        "<body bgcolor=#ff0000>x",
        options);
    ASSERT_TRUE(read.has_value());
    const Dictionary& found = read->documentAttributes;
    EXPECT_EQ(found.at("DocumentType").utf8(), "NSHTML");
    EXPECT_EQ(found.at("NSTitleDocumentAttribute").utf8(), "T");
    EXPECT_EQ(found.at("NSAuthorDocumentAttribute").utf8(), "me");
    EXPECT_EQ(found.at("NSKeywordsDocumentAttribute"), Value(Array{Value("a"), Value("b")}));
    EXPECT_EQ(found.at("NSCreationTimeDocumentAttribute").as<Date>()->iso8601(), "2024-05-01T09:15:02Z");
    EXPECT_FALSE(found.contains("NSModificationTimeDocumentAttribute"));
    EXPECT_EQ(found.at("BackgroundColor").utf8(), "#ff0000");
    EXPECT_EQ(read->text.attributesAt(0).find(kBackgroundColorAttributeName), nullptr);
}

TEST(HTMLReader, NamesTheFileThatItCannotRead) {
    const auto read = attributedStringFromHTMLFile(URL::fileURLWithPath("/no/such/page.html"));
    ASSERT_FALSE(read.has_value());
    EXPECT_NE(read.error().description().find("page.html"), std::string::npos);
}

// The page's own body has a size in pixels; text in the fixed-width family grows by the same factor as without one.
TEST(HTMLReader, EnlargesFixedWidthTextInThePageOfNotes) {
    std::ifstream file(tests::sourceDirectory() / "data/Template.html");
    std::string page((std::istreambuf_iterator<char>(file)), {});
    const auto replace = [&page](std::string_view from, std::string_view to) {
        const std::size_t at = page.find(from);
        ASSERT_NE(at, std::string::npos) << from;
        page.replace(at, from.size(), to);
    };
    replace("/* QLT FONT-FAMILY */", "HelveticaNeue");
    replace("/* QLT FONT-SIZE */", "24px");
    replace("<!-- QLTBODY -->", "<div>a <code>b</code> <code style='font-size:12px'>c</code></div><pre>  d\te</pre>"
                                "<div style='font-family:Monaco,monospace'>f</div>");
    const auto read = attributedStringFromHTMLData(page);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->text.string(), u"a b c\n  d\te\nf\n");
    const std::pair<std::size_t, std::string> fonts[] = {
        {0, "HelveticaNeue 24"}, {2, "Courier 26"}, {4, "Courier 12"}, {8, "Courier 26"}, {12, "Monaco 24"},
    };
    for (const auto& [at, expected] : fonts) {
        const Font* font = read->text.attributesAt(at).find<Font>(kFontAttributeName);
        ASSERT_NE(font, nullptr);
        EXPECT_EQ(fmt::format("{} {}", font->fontName(), font->pointSize()), expected) << at;
    }
}

// Text, rows and footers on one level; every table part costs its table's columns and no more.
TEST(HTMLReader, StaysLinearOnHostileTables) {
    std::string covered = "<table>", footers = "<table><tbody><tr><td>x</td></tr></tbody>", wide = "<table><tr>";
    for (int i = 0; i < 3'000; ++i) {
        covered += "<tr>";
        for (int column = 0; column < 17; ++column) covered += "<td colspan=1000 rowspan=65534>";
    }
    for (int i = 0; i < 100'000; ++i) footers += "<tfoot>";
    for (int i = 0; i < 100'000; ++i) wide += "<td colspan=99999999999999999999 rowspan=-5>";
    for (const std::string& page : {covered, footers + "<tbody><tr><td>y", wide}) {
        const auto start = std::chrono::steady_clock::now();
        const auto read = attributedStringFromHTMLData(page);
        ASSERT_TRUE(read.has_value());
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << page.substr(0, 60);
    }
}

TEST(HTMLReader, ReadsNumbersThatNoPageMeans) {
    const std::pair<std::string_view, std::u16string_view> cases[] = {
        {"<ol start='9223372036854775807'><li>a<li>b</ol>", u"\t1\ta\n\t2\tb\n"},
        {"<ol start=' +7'><li>a</ol>", u"\t7\ta\n"},
        {"<ol start=2147483647 type=i><li>a<li>b</ol>", u"\t2147483647\ta\n\t2147483648\tb\n"},
        {"<table border=inf cellspacing=inf cellpadding=nan><td width=inf colspan=inf>a</table>", u"a\n"},
        {"<p style='margin:1e999px 1e308em;font-size:1e308em'>a</p>", u"a\n"},
    };
    for (const auto& [page, expected] : cases) {
        const auto read = attributedStringFromHTMLData(page);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->text.string(), expected) << page;
        EXPECT_EQ(textDump(read->text).find("inf"), std::string::npos) << page;
    }
}

TEST(HTMLReader, ReadsMalformedAddressesOfImagesAsMissing) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"data:", "-"},
        {"data:,", "unknown.txt 0"},
        {"data:image/png", "-"},
        {"data:image/png;base64", "-"},
        {"data:image/png;base64,", "unknown.png 0"},
        {"data:image/png;base64,iVBORw0KGgo", "unknown.png 8"},
        {"data:image/png;base64,iVBO Rw0K\nGgo=", "unknown.png 8"},
        {"data:image/png;base64,%69VBORw0KGgo%3D", "unknown.png 8"},
        {" DATA:IMAGE/PNG;BASE64,iVBORw0KGgo= ", "unknown.png 8"},
        {"data:;base64,YQ==", "unknown.txt 1"},
        {"data:x/y;charset=utf-8,%zz%4", "unknown 5"},
        {"http://[", "-"},
        {"://", "-"},
        {"..", "-"},
        {"/", "-"},
        {"file:///", "-"},
        {"%00", "-"},
    };
    const auto before = setSystemLogSink([](std::string_view) {});
    for (const auto& [address, expected] : cases) {
        const auto read = attributedStringFromHTMLData(fmt::format("<img src=\"{}\">", address));
        ASSERT_TRUE(read.has_value());
        ASSERT_EQ(read->text.string(), u"\uFFFC") << address;
        const auto* attachment = read->text.attributesAt(0).find<TextAttachmentReference>(kAttachmentAttributeName);
        ASSERT_NE(attachment, nullptr);
        const auto wrapper = (*attachment)->fileWrapper();
        const std::string found =
            wrapper ? fmt::format("{} {}", wrapper->preferredFilename(), wrapper->regularFileContents().size()) : "-";
        EXPECT_EQ(found, expected) << address;
    }
    setSystemLogSink(before);
}

// The style sheet is kept from page to page, a thread each.
TEST(HTMLReader, ReadsAPageTheSameWhateverWasReadBefore) {
    const std::vector<std::string> pages{
        "<!DOCTYPE html><p>a<b>b</b><ul><li style='color:red'>c</ul>",
        "<!DOCTYPE html><html style='font-size:20px'><p style='text-indent:2rem'>a<b>b</b>",
        "<!DOCTYPE html><p style='text-indent:2rem'>a<b style='color:red'>b</b>",
        "<p><table><tr><td>a</table><font size=+2>b</font>",
        "<!DOCTYPE html><style>b {color: red}</style><p>a<b>b</b>",
        "<!DOCTYPE html><iframe srcdoc='<b style=color:red>x</b>'></iframe><p>a<b>b</b>",
        "<!DOCTYPE html><p>a<a href='x'>b<u>c</u></a><div align=right>d</div>",
        "<!DOCTYPE html><p>a<bdo dir=rtl>b</bdo><ol><li>c<ul><li>d</ul></ol><table><tr><td>e</table><p>f",
    };
    const auto dump = [](const std::string& page) { return textDump(attributedStringFromHTMLData(page)->text); };
    std::vector<std::string> alone;
    for (const std::string& page : pages) std::thread([&] { alone.push_back(dump(page)); }).join();
    for (std::size_t before = 0; before < pages.size(); ++before)
        for (std::size_t i = 0; i < pages.size(); ++i) {
            dump(pages[before]);
            EXPECT_EQ(dump(pages[i]), alone[i]) << pages[before] << '\n' << pages[i];
        }
}

// Such an element is no cell to the text, but what follows stands in one, and no longer in the list.
TEST(HTMLReader, EndsAListThatAnEmptyCellStandsIn) {
    for (const std::string_view object :
         {"<img src='x.png' style='display:table-cell'>", "<br style='display:table-cell'>"}) {
        const auto read = attributedStringFromHTMLData(fmt::format("<ol><br>{}</ol>after", object));
        ASSERT_TRUE(read.has_value());
        const auto& style = **read->text.attributesAt(read->text.string().find(u"after"))
                                  .find<ParagraphStyleReference>(kParagraphStyleAttributeName);
        EXPECT_TRUE(style.textLists.empty()) << object;
        EXPECT_EQ(style.textBlocks.size(), 1U) << object;
        EXPECT_EQ(style.headIndent, 0) << object;
    }
}

TEST(HTMLReader, TellsTextBeforeInAndBehindAListApart) {
    const auto read = attributedStringFromHTMLData("<body>a<ul style='display:inline'>b</ul>c");
    ASSERT_TRUE(read.has_value());
    const auto lists = [&](char16_t letter) {
        return (*read->text.attributesAt(read->text.string().find(letter))
                     .find<ParagraphStyleReference>(kParagraphStyleAttributeName))
            ->textLists.size();
    };
    EXPECT_EQ((std::array{lists(u'a'), lists(u'b'), lists(u'c')}), (std::array<std::size_t, 3>{0, 1, 0}));
}

TEST(HTMLReader, GivesEqualParagraphsOneStyle) {
    const auto read = attributedStringFromHTMLData("<p>a<bdo dir=rtl>b</bdo><ul><li>c</ul><p>d<b>e</b>");
    ASSERT_TRUE(read.has_value());
    const auto styleAt = [&](char16_t letter) {
        const std::size_t at = read->text.string().find(letter);
        return *read->text.attributesAt(at).find<ParagraphStyleReference>(kParagraphStyleAttributeName);
    };
    for (const char16_t letter : {u'b', u'd', u'e'}) EXPECT_EQ(styleAt(letter), styleAt(u'a'));
    EXPECT_NE(styleAt(u'c'), styleAt(u'a'));
}

TEST(HTMLReader, KeepsTheTextOfADeepNest) {
    constexpr int kDepth = 5'000;
    for (const std::string_view tag : {"div", "b", "ul><li", "table><tr><td", "blockquote", "q", "a href=x"}) {
        std::string page;
        for (int i = 0; i < kDepth; ++i) page += fmt::format("<{}>{}", tag, i % 10);
        const auto read = attributedStringFromHTMLData(page);
        ASSERT_TRUE(read.has_value());
        const std::u16string text = read->text.string();
        // List markers are no digits: a list inside lists has a glyph.
        EXPECT_EQ(std::ranges::count_if(text, [](char16_t c) { return c >= u'0' && c <= u'9'; }), kDepth) << tag;
    }
}

// However deep blocks are nested: a line for each content, and none for a block without.
TEST(HTMLReader, MakesNoLinesOfBlocksWithoutContent) {
    const auto repeated = [](std::string_view piece, int times) {
        std::string text;
        for (int i = 0; i < times; ++i) text += piece;
        return text;
    };
    const struct {
        std::string_view opening, content, closing, after;
        std::u16string_view end; // of the text
    } rows[] = {
        {"<div>", "deep", "</div>", "", u"deep\n"},
        {"<blockquote>", "deep", "</blockquote>", "b", u"deep\nb"},
        {"\n <div>", "deep", "</div>\n ", "", u"deep\n"},
        {"<div>", "a<div>b</div>c", "</div>", "d", u"a\nb\nc\nd"},
        {"<div>", "<div>a<br></div><div>b</div>", "</div>", "", u"a\nb\n"},
        {"<div>", "a<b>b</b><span>c</span>", "</div>", "", u"abc\n"},
        {"<div>", "a<script>x<y</script><style>z</style>b", "</div>", "", u"ab\n"},
        {"<b>", "deep", "</b>", "", u"deep"},
    };
    for (const int depth : {3, 400, 505, 511, 512, 520, 1'400, 3'000, 20'000}) {
        for (const auto& row : rows) {
            const auto read = attributedStringFromHTMLData(repeated(row.opening, depth) + std::string(row.content) +
                                                           repeated(row.closing, depth) + std::string(row.after));
            ASSERT_TRUE(read.has_value());
            EXPECT_EQ(utf8FromUTF16(read->text.string()), utf8FromUTF16(row.end)) << depth << row.opening;
        }
    }
}

TEST(HTMLReader, ReadsAttributesOfAMegabyte) {
    const std::string million(1'000'000, 'a');
    const auto read = attributedStringFromHTMLData("<p class='" + million + "' style='color:red;x:" + million +
                                                   "'><a href='https://e.org/" + million + "'>x</a>");
    ASSERT_TRUE(read.has_value());
    const URL* link = read->text.attributesAt(0).find<URL>(kLinkAttributeName);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->absoluteString().size(), million.size() + 14);
}

TEST(HTMLReader, ReadsDeepPagesInBoundedTime) {
    std::string page;
    for (int i = 0; i < 100'000; ++i) page += i % 3 == 0 ? "<div>" : i % 3 == 1 ? "<ul><li>" : "<table><tr><td>";
    const auto read = attributedStringFromHTMLData(page + "x");
    ASSERT_TRUE(read.has_value());
    EXPECT_NE(read->text.string().find(u'x'), std::u16string::npos);
}

TEST(HTMLReader, ReadsFramedFilesBelowTheDirectoryAlone) {
    const tests::ScratchDirectory scratch;
    std::filesystem::create_directory(scratch / "in");
    tests::writeFile(scratch / "outside.html", "outside");
    tests::writeFile(scratch / "in" / "note.txt", "no page");
    std::filesystem::create_directory(scratch / "in" / "sub");
    tests::writeFile(scratch / "in" / "sub" / "a.html", "<a href='b.html'>a</a>");
    const URL directory = URL::fileURLWithPath((scratch / "in").string(), true);
    const auto read = attributedStringFromHTMLData(
        "1<iframe src='sub/a.html'></iframe><iframe src='../outside.html'></iframe><iframe src='note.txt'></iframe>"
        "<iframe src='none.html'></iframe>2",
        {.baseURL = directory, .readAccessURL = directory});
    ASSERT_TRUE(read);
    EXPECT_EQ(utf8FromUTF16(read->text.string()), "1\na\n2");
    const auto* link = read->text.attributeAt(kLinkAttributeName, 2);
    ASSERT_TRUE(link);
    EXPECT_TRUE(std::get<URL>(*link).absoluteString().ends_with("/in/sub/b.html"));
}

TEST(HTMLReader, EndsWithPagesThatFrameThemselves) {
    const tests::ScratchDirectory scratch;
    const std::string self = "<iframe src='self.html'></iframe>";
    tests::writeFile(scratch / "self.html", "x" + self + self + self);
    const URL directory = URL::fileURLWithPath(scratch.path().string(), true);
    const auto read = attributedStringFromHTMLData(self, {.baseURL = directory, .readAccessURL = directory});
    ASSERT_TRUE(read);
    EXPECT_EQ(std::ranges::count(read->text.string(), u'x'), 1 + 3 + 9 + 27);
    // As often as it likes, but no more than a bounded number of bytes.
    std::string wide = std::string(100'000, 'y');
    for (int i = 0; i < 100; ++i) wide += self;
    tests::writeFile(scratch / "self.html", wide);
    const auto bounded = attributedStringFromHTMLData(self, {.baseURL = directory, .readAccessURL = directory});
    ASSERT_TRUE(bounded);
    EXPECT_LT(bounded->text.length(), std::size_t{17} << 20);
    EXPECT_GT(bounded->text.length(), std::size_t{10} << 20);
}

} // namespace
} // namespace platform
