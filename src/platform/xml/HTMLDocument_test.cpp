#include "platform/xml/HTMLDocument.h"

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace platform {
namespace {

// The children of an element as "p('a' b('c'))".
std::string shape(const HTMLDocument& page, HTMLDocument::NodeIndex parent) {
    std::string text;
    std::vector<HTMLDocument::NodeIndex> open;
    for (auto at = page[parent].first; at != HTMLDocument::kNone;) {
        if (!text.empty() && text.back() != '(') text += ' ';
        if (page.isElement(at)) {
            text += page.name(at);
            if (page[at].first != HTMLDocument::kNone) {
                text += '(';
                open.push_back(at);
                at = page[at].first;
                continue;
            }
        } else {
            text += '\'' + std::string(page.text(at)) + '\'';
        }
        while (page[at].next == HTMLDocument::kNone && !open.empty()) {
            text += ')';
            at = open.back();
            open.pop_back();
        }
        at = page[at].next;
    }
    return text;
}

HTMLDocument parsed(std::string_view bytes) {
    auto page = HTMLDocument::parse(bytes);
    EXPECT_TRUE(page.has_value());
    return std::move(*page);
}

std::string bodyShape(std::string_view markup) {
    const HTMLDocument page = parsed("<!DOCTYPE html>" + std::string(markup));
    return shape(page, page.body());
}

struct Case {
    std::string_view markup, tree;
};

TEST(HTMLDocument, BuildsTheTreeOfHTML5) {
    const Case cases[] = {
        // Paragraphs
        {"hello <b>x", "'hello ' b('x')"},
        {"<p>a<div>b</div></p>", "p('a') div('b') p"},
        {"<p>a<p>b", "p('a') p('b')"},
        {"<div><p>a</div>b</p>c", "div(p('a')) 'b' p 'c'"},
        {"<p>a<ul><li>b<li>c</ul>t", "p('a') ul(li('b') li('c')) 't'"},
        {"<p><span>a<div>b</div>c</span></p>", "p(span('a')) div('b') 'c' p"},
        {"<p>a<table><tr><td>b</table>", "p('a') table(tbody(tr(td('b'))))"},
        {"<p>a<h1>b</h2>c", "p('a') h1('b') 'c'"},
        {"<h1>a<h2>b", "h1('a') h2('b')"},
        {"<button><p>a</button>b", "button(p('a')) 'b'"},
        // Mis-nested formatting
        {"<b><i>x</b>y</i>z", "b(i('x')) i('y') 'z'"},
        {"<b>1<p>2</b>3</p>", "b('1') p(b('2') '3')"},
        {"<p><b>a<p>b", "p(b('a')) p(b('b'))"},
        {"<b><i><u>a</b>b", "b(i(u('a'))) i(u('b'))"},
        {"<a>x<a>y</a>z</a>", "a('x') a('y') 'z'"},
        {"<a>1<div>2<a>3", "a('1') div(a('2') a('3'))"},
        {"<font><div>a</font>b</div>c", "font div(font('a') 'b') 'c'"},
        {"<b><span>x</b>y</span>z", "b(span('x')) 'yz'"},
        {"<b><b><b><b><b>x</b></b></b></b></b>y", "b(b(b(b(b('x'))))) 'y'"},
        {"<p><b><b><b><b><b>x<p>y", "p(b(b(b(b(b('x')))))) p(b(b(b('y'))))"},
        {"<i>a</b>c</i>d", "i('ac') 'd'"},
        // Lists
        {"<ul><li>a<ul><li>b</ul><li>c</ul>", "ul(li('a' ul(li('b'))) li('c'))"},
        {"<ul><li>a</li><ul><li>b</li></ul></ul>", "ul(li('a') ul(li('b')))"},
        {"<dl><dt>a<dd>b<dt>c</dl>", "dl(dt('a') dd('b') dt('c'))"},
        {"<ul><li><div>a<li>b</ul>", "ul(li(div('a')) li('b'))"},
        {"<li>a<li>b", "li('a') li('b')"},
        // Tables
        {"<table><tr><td>a<td>b<tr><td>c</table>x", "table(tbody(tr(td('a') td('b')) tr(td('c')))) 'x'"},
        {"<table><td>a</table>", "table(tbody(tr(td('a'))))"},
        {"<table><thead><tr><th>a<tbody><tr><td>b</table>", "table(thead(tr(th('a'))) tbody(tr(td('b'))))"},
        {"<table>x<tr><td>a</table>", "'x' table(tbody(tr(td('a'))))"},
        {"<table><tr><b>x</b><td>a</table>", "b('x') table(tbody(tr(td('a'))))"},
        {"<table> <tr> <td>a</td> </tr> </table>", "table(tbody(tr(td('a'))))"},
        {"<table><col><col><tr><td>a</table>", "table(colgroup(col col) tbody(tr(td('a'))))"},
        {"<table><caption>c<tr><td>a</table>", "table(caption('c') tbody(tr(td('a'))))"},
        {"<td>x</td>y", "'xy'"},
        {"<ul><li>a<table><tr><td>q</li>r</td>s</tr></table>t", "ul(li('a' 's' table(tbody(tr(td('qr')))) 't'))"},
        {"<table><tr><td><b>a<td>c</table>d", "table(tbody(tr(td(b('a')) td('c')))) 'd'"},
        {"<table><tr><td><table><tr><td>i</table>o</table>", "table(tbody(tr(td(table(tbody(tr(td('i')))) 'o'))))"},
        {"<table><tr><td>a</td></tr><table><tr><td>b</table>", "table(tbody(tr(td('a')))) table(tbody(tr(td('b'))))"},
        // Breaks, preformatted text, void elements
        {"a<br></br>b", "'a' br 'b'"},
        {"a<br/>b<hr></hr>c", "'a' br 'b' hr 'c'"},
        {"<pre>\n\nx</pre>", "pre('\nx')"},
        {"<pre>\n</pre>", "pre"},
        {"<pre>\r\nx\r\ny</pre>", "pre('x\ny')"},
        {"<img src=a>b<img>", "img 'b' img"},
        // Characters
        {"&lt;&amp;&nbsp;&eacute;&#x263A;&#150;", "'<&\u00a0é☺–'"},
        {"a&nbsp b&copy c", "'a\u00a0 b© c'"},
        {"a & b &unknown; &x", "'a & b &unknown; &x'"},
        {"a < b <3", "'a < b <3'"},
        {"x<![CDATA[a<b&c]]>y", "'xa<b&cy'"},
        {"a<!-- <b> -->c", "'ac'"},
        {"<o:p>x</o:p><en-note>y</en-note>", "o:p('x') en-note('y')"},
        {"<li>x<!-- c --><li>y", "li('x') li('y')"},
    };
    for (const auto& [markup, tree] : cases) EXPECT_EQ(bodyShape(markup), tree) << markup;
}

TEST(HTMLDocument, KeepsHeadAndBodyApart) {
    const HTMLDocument page = parsed("<html dir=rtl><head><title>a &amp; <b></title><style>p{}</style></head>"
                                     "<body class='x'>y<body class=q>");
    EXPECT_EQ(shape(page, page.head()), "title('a & ') style('p{}')");
    EXPECT_EQ(shape(page, page.body()), "'y'");
    EXPECT_EQ(page.attribute(page.root(), HTMLAttribute::dir), "rtl");
    EXPECT_EQ(page.attribute(page.body(), HTMLAttribute::class_), "x");
}

TEST(HTMLDocument, ResolvesReferencesInAttributes) {
    const HTMLDocument page = parsed("<a HREF=\"x?a=1&amp;b=2&#38;c\" onclick='y'>");
    const auto anchor = page[page.body()].first;
    EXPECT_EQ(page.attribute(anchor, HTMLAttribute::href), "x?a=1&b=2&c");
    EXPECT_EQ(page[anchor].count, 1U) << "attributes that nobody reads are not kept";
}

TEST(HTMLDocument, KeepsLongValuesWhole) {
    const std::string value(20'000'000, 'A');
    const HTMLDocument page = parsed("<img src=\"" + value + "\">");
    EXPECT_EQ(page.attribute(page[page.body()].first, HTMLAttribute::src), value);
}

TEST(HTMLDocument, KeepsLongTextsWhole) {
    const std::string text(11'000'000, 'a');
    EXPECT_EQ(parsed("<p>" + text + "</p>").textContent(2), text);
}

TEST(HTMLDocument, ReadsTheEncodingThatThePageHas) {
    const struct {
        std::string bytes;
        std::string_view text, encoding;
    } cases[] = {
        {"\u00e9", "é", "utf-8"},
        {"\xEF\xBB\xBF\u00e9", "é", "utf-8"},
        {"caf\xE9 \x93", "café “", "windows-1252"},
        {"<meta charset=iso-8859-1>\xE9", "é", "windows-1252"},
        {"<meta http-equiv=x content='text/html; charset=KOI8-R'>\xC1", "а", "koi8-r"},
        {"<meta charset=utf-8>a\xFF", "a\uFFFD", "utf-8"},
        {std::string("\xFF\xFE"
                     "a\0\xE9\0",
                     6),
         "aé", "utf-16le"},
        {std::string("\xFE\xFF\0a", 4), "a", "utf-16be"},
        {"<meta charset=utf-16>\u00e9", "é", "utf-8"},
        {"<meta charset=nonsense>\u00e9", "é", "utf-8"},
        {std::string("a\0b", 3), "ab", "utf-8"},
    };
    for (const auto& [bytes, text, encoding] : cases) {
        const HTMLDocument page = parsed(bytes);
        EXPECT_EQ(page.textContent(page.body()), text);
        EXPECT_EQ(page.encoding(), encoding);
    }
}

TEST(HTMLDocument, SaysNothingOnStandardErrorAboutBytesOfAnotherEncoding) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(parsed("<meta charset=shift_jis>\xFC\xFC<p>a").textContent(2).back(), 'a');
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(HTMLDocument, KeepsAnEmptyAttributeThatComesFirst) {
    const HTMLDocument page = parsed("<p class=''>a");
    EXPECT_EQ(page.attribute(page[page.body()].first, HTMLAttribute::class_), "");
}

TEST(HTMLDocument, TellsQuirksModeByTheDocumentType) {
    const std::pair<std::string_view, bool> cases[] = {
        {"<p>", true},
        {"<!DOCTYPE html>", false},
        {"<!doctype HTML>", false},
        {"<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"http://www.w3.org/TR/html4/strict.dtd\">", false},
        {"<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" \"x.dtd\">", false},
        {"<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">", true},
        {"<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 3.2 Final//EN\">", true},
    };
    for (const auto& [start, quirks] : cases) EXPECT_EQ(parsed(start).quirksMode(), quirks) << start;
}

TEST(HTMLDocument, RefusesATagWithTooManyAttributes) {
    std::string tag = "<p>\n<div";
    for (int i = 0; i < 600; ++i) tag += " attribute" + std::to_string(i);
    const auto page = HTMLDocument::parse(tag + ">");
    ASSERT_FALSE(page.has_value());
    EXPECT_EQ(page.error().localizedDescription(), "line 2: a tag has more than 512 attributes");
    EXPECT_TRUE(HTMLDocument::parse("<img src='" + std::string(600 * 80, ' ') + "'>").has_value());
}

TEST(HTMLDocument, BoundsDepthAndKeepsTheText) {
    std::string page;
    constexpr int kDepth = 100'000;
    for (int i = 0; i < kDepth; ++i) page += "<div>x";
    const HTMLDocument document = parsed(page);
    std::size_t deepest = 0;
    for (HTMLDocument::NodeIndex i = 0; i < document.size(); ++i) {
        std::size_t depth = 0;
        for (auto at = i; document[at].parent != HTMLDocument::kNone; at = document[at].parent) ++depth;
        deepest = std::max(deepest, depth);
    }
    EXPECT_LE(deepest, HTMLDocument::kMaximumDepth);
    EXPECT_EQ(document.textContent(document.body()).size(), static_cast<std::size_t>(kDepth));
}

TEST(HTMLDocument, ClosesOuterElementsBehindADeepNest) {
    std::string page = "<ul><li>";
    for (int i = 0; i < 2000; ++i) page += "<div>";
    for (int i = 0; i < 2000; ++i) page += "</div>";
    const HTMLDocument document = parsed(page + "</li><li>b</li></ul>c");
    const auto list = document[document.body()].first;
    EXPECT_EQ(document.name(document[list].last), "li");
    EXPECT_EQ(document.textContent(document[list].last), "b");
    EXPECT_EQ(document.text(document[document.body()].last), "c");
}

// Each of these makes a careless builder quadratic or worse.
TEST(HTMLDocument, StaysLinearOnHostilePages) {
    const auto repeated = [](std::string_view piece, int times) {
        std::string text;
        for (int i = 0; i < times; ++i) text += piece;
        return text;
    };
    std::string fonts;
    for (int i = 0; i < 400; ++i) fonts += "<font size=" + std::to_string(i) + ">";
    const std::string pages[] = {
        repeated("<b>", 50'000) + repeated("</i>", 50'000),
        repeated("<table><tr><td>", 20'000),
        repeated("<a><div>", 20'000) + repeated("</a>", 20'000),
        fonts + repeated("<p>x", 20'000),
        repeated("<", 500'000),
        repeated("<a \"", 100'000),
        repeated("</p>", 100'000),
        repeated("<![CDATA[x]]>", 50'000),
        repeated("<table>x", 20'000),
        repeated("<li>", 50'000) + repeated("<ul>", 20'000),
    };
    for (const std::string& page : pages) {
        const auto start = std::chrono::steady_clock::now();
        const auto document = HTMLDocument::parse(page); // an error is as good, as long as it comes soon
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20)) << page.substr(0, 40);
        EXPECT_TRUE(!document || document->size() < 2'000'000U) << page.substr(0, 40);
    }
}

} // namespace
} // namespace platform
