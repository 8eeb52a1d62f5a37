// Plain markup: what is read without the parser gives the tree that the parser would have given.
#include "platform/xml/PlainMarkup.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/core.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/xml/HTMLTidy.h"
#include "platform/xml/XMLDocument.h"
#include "tests/support/QuietLogFixture.h"

namespace platform {
namespace {

using PlainXML = QuietLogFixture;
using PlainHTML = QuietLogFixture;

constexpr std::string_view kRefused = "refused";

std::string plainXML(std::string_view xml) {
    XMLTreeBuilder builder;
    if (!readPlainXML(xml, builder)) return std::string(kRefused);
    return builder.documentWithRoot("").XMLString();
}

// What the parser makes of it: a comment behind the root is not plain, and leaves no trace.
std::string parsedXML(std::string_view xml) {
    const auto document = XMLDocument::initWithXMLString(std::string(xml) + "<!-- -->", XMLDocumentParsing::strict);
    return document ? document->XMLString() : document.error().localizedDescription();
}

std::string plainHTML(std::string_view page) {
    XMLTreeBuilder builder;
    if (!readPlainHTML(page, builder)) return std::string(kRefused);
    return builder.documentWithRoot("html").XMLString();
}

std::string parsedHTML(std::string_view page) {
    XMLTreeBuilder builder;
    if (!readHTML(std::string(page), ImpliedTags::added, builder)) return "error";
    return builder.documentWithRoot("html").XMLString();
}

std::string pageOf(std::string_view body) {
    return fmt::format("<!DOCTYPE html>\n<html><head><title>T</title></head><body>{}</body></html>\n", body);
}

TEST_F(PlainXML, IsReadLikeTheParserReadsIt) {
    for (const std::string_view xml : {
             "<a/>",
             "<a></a >\n",
             "<en-note>text</en-note>",
             "<a b='1' c=\"2\"/>",
             "<a  b='\"&lt;&gt;&amp;'\n c=\"&#65;&#xE9;x\" ></a>",
             "<a>&amp;&lt;&gt;&quot;\"'&#65;&#x2028;\xC3\xA9\t\n</a>",
             "<a> <b/> x <b>y</b></a>",
             "<?xml version=\"1.0\"?><a/>",
             "<?xml version='1.0' encoding='utf-8'?>\n<a/>",
             "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?> <a/>",
             "<?xml version=\"1.0\" standalone=\"yes\" ?><a/>",
             "<!DOCTYPE a><a/>",
             "<!DOCTYPE en-note SYSTEM \"http://xml.example.com/pub/enml2.dtd\">\n<en-note/>",
             "<!DOCTYPE a PUBLIC \"-//X//Y Z//EN\" \"a.dtd\" ><a/>",
             "<A-b_9>\xC2\xA0\xEF\xBC\x81\xF0\x9F\x98\x80</A-b_9>",
         }) {
        EXPECT_NE(plainXML(xml), kRefused) << xml;
        EXPECT_EQ(plainXML(xml), parsedXML(xml)) << xml;
    }
}

TEST(PlainText, HasNoControlsAndNothingOfTheFirstPlanesEnd) {
    for (const std::string_view text :
         {"", "a\tb\n~", "\xC2\xA0", "\xEF\xBE\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"})
        EXPECT_TRUE(isPlainText(text)) << text;
    for (const std::string_view text : {"\r", "\x7F", "\x1F", "\xC2\x80", "\xC2\x9F", "\xEF\xBF\x80", "\xEF\xBF\xBC",
                                        "\xEF\xBF\xBF", "\xFF", "\xC2", "a\xED\xA0\x80", "\xC0\x80"})
        EXPECT_FALSE(isPlainText(text)) << text;
}

TEST_F(PlainXML, LeavesEverythingElseToTheParser) {
    for (const std::string_view xml : {
             "",
             "text",
             " <a/>",
             "\xEF\xBB\xBF<a/>",
             "<a>",
             "<a></b>",
             "<a></ab>",
             "<ab></a>",
             "<a></a b>",
             "<a><b></b c></a>",
             "<a></>",
             "<a/><b/>",
             "<a/>x",
             "</a>",
             "<a><!-- c --></a>",
             "<a><![CDATA[x]]></a>",
             "<a><?p d?></a>",
             "<a>]]></a>",
             "<a>&unknown;</a>",
             "<a>& </a>",
             "<a>&#13;</a>",
             "<a>&#xFFFF;</a>",
             "<a>&#xD800;</a>",
             "<a>&#65</a>",
             "<a b='x\ny'/>",
             "<a b='x\ty'/>",
             "<a b='<'/>",
             "<a b='&x;'/>",
             "<a b=1/>",
             "<a b/>",
             "<a b='1'c='2'/>",
             "<a b='1' b='2'/>",
             "<a b = '1'/>",
             "<a xmlns='u'/>",
             "<a xml:space='preserve'/>",
             "<o:a/>",
             "<a o:b='1'/>",
             "<a>\r</a>",
             "<a>\x01</a>",
             "<a>\xC3</a>",
             "<a>\xC2\x80</a>",
             "<a>\xC2\x85</a>",
             "<a>\xC2\x9F</a>",
             "<a>\xEF\xBF\xBE</a>",
             "<?xml version='1.1'?><a/>",
             "<?xml version='1.0' encoding='UTF-16'?><a/>",
             "<?xml version='1.0' standalone='maybe'?><a/>",
             "<?xml version='1.0'standalone='yes'?><a/>",
             "<?xml version='1.0' encoding='UTF-8'standalone='yes'?><a/>",
             "<?xml-stylesheet href='x'?><a/>",
             "<!DOCTYPE a [<!ENTITY e 'x'>]><a/>",
             "<!DOCTYPE a PUBLIC 'x'><a/>",
             "<!DOCTYPE a PUBLIC '{x}' 'a.dtd'><a/>",
             "<!DOCTYPE a SYSTEM 'a.dtd#b'><a/>",
             "<!-- c --><a/>",
         })
        EXPECT_EQ(plainXML(xml), kRefused) << xml;
    std::string attributes;
    for (int i = 0; i < 65; ++i) attributes += fmt::format(" a{}=''", i);
    EXPECT_EQ(plainXML("<a" + attributes + "/>"), kRefused);
}

TEST_F(PlainXML, RefusesWhatIsTooDeep) {
    const auto nested = [](std::size_t depth) {
        std::string xml;
        for (std::size_t i = 0; i < depth; ++i) xml += "<a>";
        for (std::size_t i = 0; i < depth; ++i) xml += "</a>";
        return xml;
    };
    EXPECT_NE(plainXML(nested(XMLParser::kMaximumDepth)), kRefused);
    EXPECT_EQ(plainXML(nested(XMLParser::kMaximumDepth + 1)), kRefused);
}

TEST_F(PlainHTML, IsReadLikeTheParserReadsIt) {
    for (const std::string_view body : {
             "",
             "\ntext &amp; &lt;b&gt; &quot;\xC3\xA9\n",
             "<div>a</div>\n<div><br /></div>",
             "a<br></br>b<br>c<hr></hr><img src=\"x\" alt=\"\"></img>",
             "<div style=\"color:red;\"><span lang='de'>a</span><b>b<i>c</i></b></div>",
             "<ul><li>a</li><li><ul><li>b</li></ul></li></ul>",
             "<table width=\"1\"><tbody><tr><td>a</td><td><div>b</div></td></tr></tbody></table>",
             "<p>a</p><p>b</p><h1>c</h1><blockquote><blockquote>d</blockquote></blockquote>",
             "<a href=\"http://example.com/?a=1&amp;b=2\">l</a>",
             "<pre>\n a\n  b</pre>",
             "<dl><dt>a</dt><dd>b</dd></dl>",
             "<div/>x",
         }) {
        const std::string page = pageOf(body);
        EXPECT_NE(plainHTML(page), kRefused) << body;
        EXPECT_EQ(plainHTML(page), parsedHTML(page)) << body;
    }
    for (const std::string_view page : {
             "<!DOCTYPE html><html><head></head><body></body></html>",
             "<!DOCTYPE html>\n<html lang=\"de\">\n<head>\n<meta charset=\"UTF-8\" />\n<title>a &amp; b</title>\n"
             "<style type=\"text/css\">\nbody { a: \"&lt;>\"; }\n</style>\n</head>\n<body>\n</body>\n</html>\n",
         }) {
        EXPECT_NE(plainHTML(page), kRefused) << page;
        EXPECT_EQ(plainHTML(page), parsedHTML(page)) << page;
    }
}

TEST_F(PlainHTML, LeavesEverythingElseToTheParser) {
    for (const std::string_view body : {
             "<p><div>a</div></p>",
             "<p>a<p>b</p></p>",
             "<li>a<li>b</li></li>",
             "<a href='x'>a<a href='y'>b</a></a>",
             "<b>a<i>b</b>c</i>",
             "<div>a",
             "<div>a</div b>",
             "<div>a</div",
             "<b>a</big>",
             "<br></br a>",
             "a</div>",
             "a</p>",
             "<DIV>a</DIV>",
             "<div STYLE='x'>a</div>",
             "<custom>a</custom>",
             "<script>a</script>",
             "<style>a</style>",
             "<form>a</form>",
             "<title>a</title>",
             "<body>a</body>",
             "<html>a</html>",
             "<!-- c -->",
             "a &nbsp; b",
             "a &apos; b",
             "a & b",
             "a < b",
             "&#65;",
             "<div title='a\tb'>c</div>",
             "<div a=b>c</div>",
             "<div a>c</div>",
             "a\rb",
             "\xC2\x85",
         })
        EXPECT_EQ(plainHTML(pageOf(body)), kRefused) << body;
    for (const std::string_view page : {
             "",
             "a",
             "<html><head></head><body></body></html>",
             "<!DOCTYPE html SYSTEM 'about:legacy-compat'><html><head></head><body></body></html>",
             "<!DOCTYPE html><body></body>",
             "<!DOCTYPE html><html><body></body></html>",
             "<!DOCTYPE html><html>a<head></head><body></body></html>",
             "<!DOCTYPE html><html><head>a</head><body></body></html>",
             "<!DOCTYPE html><html><head></head><head></head><body></body></html>",
             "<!DOCTYPE html><html><head></head><body></body><body></body></html>",
             "<!DOCTYPE html><html><head></head><body></body></html>a",
             "<!DOCTYPE html><html><head><title><b>a</b></title></head><body></body></html>",
             "<!DOCTYPE html><html><head><style>a</b></style></head><body></body></html>",
             "<!DOCTYPE html><html><head><style>a",
             "<!DOCTYPE html><html><head><style><body></style></head><body>x</body></html>",
             "<!DOCTYPE html><html><head><style>a<![CDATA[b>c]]></style></head><body>x</body></html>",
             "<!DOCTYPE html><html><head><style>a < b</style></head><body>x</body></html>",
         })
        EXPECT_EQ(plainHTML(page), kRefused) << page;
}

// Where there may only be blanks, the library takes a thousand of them for text; names it cuts after a hundred bytes.
TEST_F(PlainHTML, LeavesManyBlanksAndLongNamesToTheParser) {
    const auto refuses = [](std::string_view before, std::size_t blanks, std::string_view behind) {
        return plainHTML(fmt::format("<!DOCTYPE html>{}{}{}", before, std::string(blanks, ' '), behind)) == kRefused;
    };
    for (const auto& [before, behind] : {std::pair("<html>", "<head></head><body>x</body></html>"),
                                         std::pair("<html><head>", "</head><body>x</body></html>"),
                                         std::pair("<html><head></head>", "<body>x</body></html>"),
                                         std::pair("<html><head></head><body>x</body>", "</html>"),
                                         std::pair("<html><head></head><body>x</body></html>", "")}) {
        EXPECT_FALSE(refuses(before, 500, behind)) << before;
        EXPECT_TRUE(refuses(before, 501, behind)) << before;
    }
    EXPECT_FALSE(refuses("<html><head></head><body>", 5'000, "</body></html>"));
    const auto named = [](std::size_t length) {
        return pageOf(fmt::format("<p {}=\"1\">x</p>", std::string(length, 'a')));
    };
    EXPECT_EQ(plainHTML(named(64)), parsedHTML(named(64)));
    EXPECT_EQ(plainHTML(named(65)), kRefused);
}

constexpr auto kTags = std::to_array<std::string_view>(
    {"a",      "abbr",   "b",        "big",    "blockquote", "br",     "caption", "center",   "cite",   "code",
     "dd",     "del",    "div",      "dl",     "dt",         "em",     "font",    "h1",       "h2",     "h6",
     "hr",     "i",      "img",      "ins",    "kbd",        "li",     "ol",      "p",        "pre",    "q",
     "s",      "small",  "span",     "strike", "sub",        "strong", "sup",     "td",       "tbody",  "table",
     "tfoot",  "th",     "thead",    "tr",     "tt",         "u",      "ul",      "object",   "form",   "script",
     "select", "option", "frameset", "head",   "body",       "title",  "custom",  "textarea", "button", "var"});

// The library has its own mind about which element ends at the start of which other.
TEST_F(PlainHTML, EveryElementInEveryOtherIsReadLikeTheParserReadsIt) {
    std::size_t plain = 0;
    for (const auto outer : kTags) {
        for (const auto inner : kTags) {
            const std::string page = pageOf(fmt::format("<{0}>a<{1}>b</{1}>c</{0}>d", outer, inner));
            const std::string read = plainHTML(page);
            if (read == kRefused) continue;
            ++plain;
            EXPECT_EQ(read, parsedHTML(page)) << outer << " " << inner;
        }
    }
    EXPECT_GT(plain, 1'000U); // most may
}

// Markup that is plain more often than not: elements, references and texts, closed in order or not.
std::string someMarkup(bool isPage) {
    static constexpr auto kTexts =
        std::to_array<std::string_view>({"a", " ", "\n", "&amp;", "&lt;", "&quot;", "&#65;", "\xC3\xA9", "\"", "&gt;",
                                         "]]>", "&", "<!-- c -->", "'", "\xC2\xA0"});
    static constexpr auto kAttributes = std::to_array<std::string_view>(
        {"", "", "", " a=\"1\"", " style='x: &quot;y&quot;'", " a=''", " b=\"&#65;\"", "  id=\"\xC3\xA9\" "});
    std::string markup;
    std::vector<std::string_view> open;
    const auto count = *rc::gen::inRange(1, 40);
    for (int i = 0; i < count; ++i) {
        const auto kind = *rc::gen::inRange(0, 100);
        if (kind < 35) {
            markup += *rc::gen::elementOf(kTexts);
        } else if (kind < 65) {
            const auto tag = isPage ? *rc::gen::elementOf(kTags) : kTags.at(static_cast<std::size_t>(kind % 3));
            markup += fmt::format("<{}{}", tag, *rc::gen::elementOf(kAttributes));
            if (kind < 38) {
                markup += "/>";
            } else {
                markup += '>';
                open.push_back(tag);
            }
        } else if (kind < 99 && !open.empty()) {
            markup += fmt::format("</{}>", open.back());
            open.pop_back();
        } else if (kind == 99) {
            markup += "</b>";
        }
    }
    for (; !open.empty(); open.pop_back()) markup += fmt::format("</{}>", open.back());
    return markup;
}

TEST_F(PlainXML, OfAnyKindIsReadLikeTheParserReadsIt) {
    EXPECT_TRUE(rc::check([] {
        const std::string xml = "<r>" + someMarkup(false) + "</r>";
        const std::string read = plainXML(xml);
        RC_CLASSIFY(read != kRefused, "plain");
        if (read != kRefused) RC_ASSERT(read == parsedXML(xml));
    }));
}

TEST_F(PlainHTML, OfAnyKindIsReadLikeTheParserReadsIt) {
    EXPECT_TRUE(rc::check([] {
        const std::string page = pageOf(someMarkup(true));
        const std::string read = plainHTML(page);
        RC_CLASSIFY(read != kRefused, "plain");
        if (read != kRefused) RC_ASSERT(read == parsedHTML(page));
    }));
}

} // namespace
} // namespace platform
