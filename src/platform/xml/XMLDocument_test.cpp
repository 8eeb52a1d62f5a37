// Trees: reading well-formed and other markup, the two forms of writing, and the limits.
#include <chrono>
#include <string>
#include <string_view>

#include <fmt/core.h>
#include <gtest/gtest.h>

#include "platform/xml/MarkupText.h"
#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLWriter.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/QuietLogFixture.h"

namespace platform {
namespace {

using StrictXML = QuietLogFixture;
using TidyXML = QuietLogFixture;
using TidyHTML = QuietLogFixture;
using XMLSerialisation = QuietLogFixture;
using XMLTree = QuietLogFixture;

std::string read(std::string_view xml, XMLDocumentParsing parsing) {
    const auto document = XMLDocument::initWithXMLString(xml, parsing);
    if (!document) return fmt::format("error {}", document.error().code);
    return document->XMLString();
}

struct Row {
    std::string_view input, expected;
};

TEST_F(StrictXML, IsPreservedAndWrittenExpanded) {
    const Row rows[] = {
        {"<br/>", "<br></br>"},
        {"<a  b='1'   c=\"2\"/>", "<a b=\"1\" c=\"2\"></a>"},
        {"<a b='\"&lt;&gt;&amp;'/>", "<a b=\"&quot;&lt;&gt;&amp;\"></a>"},
        {"<a>&amp;&lt;&gt;\"'&#65;é</a>", "<a>&amp;&lt;&gt;\"'Aé</a>"},
        {"<a> <b/> x </a>", "<a> <b></b> x </a>"},
        {"<a><!-- c --><![CDATA[<x>]]><?p d?></a>", "<a><!-- c --><![CDATA[<x>]]><?p d?></a>"},
        {"<a>x<!-- c -->y</a>", "<a>x<!-- c -->y</a>"},
        {"<?xml version='1.0' encoding='UTF-16'?><a>é</a>", "<a>é</a>"},
        {"<!DOCTYPE a SYSTEM \"a.dtd\"><a/>", "<!DOCTYPE a SYSTEM \"a.dtd\"><a></a>"},
        {"<a xmlns:o='u'><o:p o:x='1'/></a>", "<a xmlns:o=\"u\"><o:p o:x=\"1\"></o:p></a>"},
        {"<a>&nbsp;&eacute;&hellip;</a>", "<a>\u00A0é…</a>"},
        {"<a b='&nbsp;&euro;'/>", "<a b=\"\u00A0€\"></a>"},
        {"<a>&unknown;</a>", "<a>&amp;unknown;</a>"},
        {"<a><![CDATA[&nbsp;]]></a>", "<a><![CDATA[&nbsp;]]></a>"},
        {"<a>&eacute;<!-- &eacute; --><!-- & -->&eacute;<![CDATA[&eacute;]]><b/>&eacute;</a>",
         "<a>\xC3\xA9<!-- &eacute; --><!-- & -->\xC3\xA9<![CDATA[&eacute;]]><b></b>\xC3\xA9</a>"},
        {"<a b='x&#10;y&#9;'/>", "<a b=\"x&#10;y&#9;\"></a>"},
        {"<a>x&#13;</a>", "<a>x&#13;</a>"},
        {"<a>x & y</a>", "error 68"},
        {"<a><br></a>", "error 76"},
        {"", "error 5"},
        {"<!DOCTYPE a [<!ENTITY e 'x'>]><a/>", "error 1"},
    };
    for (const auto& row : rows) EXPECT_EQ(read(row.input, XMLDocumentParsing::strict), row.expected) << row.input;
}

TEST_F(TidyXML, MakesTheBestOfWhatIsNotWellFormed) {
    const Row rows[] = {
        {"<en-note><p>x</p></en-note>", "<en-note><p>x</p></en-note>"},
        {"<en-note>a & b < c &b=2 &nbsp;</en-note>", "<en-note>a &amp; b &lt; c &amp;b=2 \u00A0</en-note>"},
        {"<en-note>x<br>y</en-note>", "<en-note>x<br></br>y</en-note>"},
        {"<en-note><en-todo checked=true />x<br></en-note>",
         "<en-note><en-todo checked=\"true\"></en-todo>x<br></br></en-note>"},
        {"<en-note><en-media hash=\"1\"/>x & y</en-note>",
         "<en-note><en-media hash=\"1\"></en-media>x &amp; y</en-note>"},
        {"<en-note><ul><li>a<li>b</ul></en-note>", "<en-note><ul><li>a</li><li>b</li></ul></en-note>"},
        {"<en-note>&check;&#146;&copy 1<a href=\"?a&copy=1\">x</a> &</en-note>",
         "<en-note>✓’© 1<a href=\"?a&amp;copy=1\">x</a> &amp;</en-note>"},
        {"<en-note><![CDATA[a<b]]> & c</en-note>", "<en-note>a&lt;b &amp; c</en-note>"},
        {"<en-note><div>never closed", "<en-note><div>never closed</div></en-note>"},
        {"<?xml version='1.0'?><!DOCTYPE en-note SYSTEM \"e.dtd\"><!-- <x> --><en-note a=\"1\">b & c</en-note>",
         "<!DOCTYPE en-note SYSTEM \"e.dtd\"><en-note a=\"1\">b &amp; c</en-note>"},
        {"text alone", "error 4"},
        {"", "error 5"},
    };
    for (const auto& row : rows) EXPECT_EQ(read(row.input, XMLDocumentParsing::tidyXML), row.expected) << row.input;
}

TEST_F(TidyXML, FindsTheNoteByItsName) {
    auto document = XMLDocument::initWithXMLString("<en-note>a & b</en-note>", XMLDocumentParsing::tidyXML);
    ASSERT_TRUE(document);
    ASSERT_NE(document->firstNodeForXPath("en-note"), nullptr);
    EXPECT_EQ(document->firstNodeForXPath("en-note")->stringValue(), "a & b");
    EXPECT_EQ(document->firstNodeForXPath("div"), nullptr);
}

TEST_F(TidyHTML, GivesAWholePage) {
    const Row rows[] = {
        {"<p>x & y", "<html><body><p>x &amp; y</p></body></html>"},
        {"<html><body><en-note style='color:red'>x</body></html>",
         "<html><body><en-note style=\"color:red\">x</en-note></body></html>"},
        {"<html><body>a<![CDATA[<i>]]></body></html>", "<html><body>a&lt;i&gt;</body></html>"},
    };
    for (const auto& row : rows) EXPECT_EQ(read(row.input, XMLDocumentParsing::tidyHTML), row.expected) << row.input;
}

TEST_F(TidyHTML, KeepsListItemsWhole) {
    const Row rows[] = {
        {"<ul><li class='a'><div>x</li><li>y</li></ul><b>z</b>",
         "<ul><li class=\"a\"><div>x</div></li><li>y</li></ul><b>z</b>"},
        {"<div><ul><li>x</div><div>y</li></ul>z</div>", "<div><ul><li>x<div>y</div></li></ul>z</div>"},
        {"<ul><li><div><div>x</li></ul>y", "<ul><li><div><div>x</div></div></li></ul>y"},
        {"<ul><li>a<ul><li><div>x</li></ul></div></li><li>b</li></ul>",
         "<ul><li>a<ul><li><div>x</div></li></ul></li><li>b</li></ul>"},
        {"<ul><li title='</div>'>x<!-- </div> --></li></ul>",
         "<ul><li title=\"&lt;/div&gt;\">x<!-- </div> --></li></ul>"},
        {"<div><ul><li><div>x</div></li></ul></div>y", "<div><ul><li><div>x</div></li></ul></div>y"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(read(row.input, XMLDocumentParsing::tidyHTML),
                  fmt::format("<html><body>{}</body></html>", row.expected))
            << row.input;
}

TEST_F(TidyHTML, KeepsTheDocumentTypeAndARawTitle) {
    const auto document = XMLDocument::initWithXMLString(
        "<!DOCTYPE html><html><head><title>A & B < C</title></head><body>x</body></html>",
        XMLDocumentParsing::tidyHTML);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->documentType(), "<!DOCTYPE html>");
    EXPECT_EQ(document->rootElement()->name(), "html");
    EXPECT_EQ(document->rootElement()->stringValue(), "A & B < Cx");
}

// Whatever a title holds, it stays in the title, and the page stays whole.
TEST_F(TidyHTML, TakesNoMarkupInATitle) {
    for (const std::string_view title :
         {"<!--", "use <!-- here", "<![CDATA[", "<![CDATA[ x ]]>", "<!-- x -->", "</html>", "</head>", "</body>", "<?",
          "<b>x</b>", "<style>", "<script>", "<title>", "&lt;!--", "a < b > c", "<", "<!DOCTYPE html>"}) {
        const auto document = XMLDocument::initWithXMLString(
            fmt::format("<!DOCTYPE html><html><head><!-- <title> --><title lang='en'>{}</title></head><body><p>x<!-- c "
                        "--></p></body></html>",
                        title),
            XMLDocumentParsing::tidyHTML);
        ASSERT_TRUE(document) << title;
        const std::string shown = title == "&lt;!--" ? "<!--" : std::string(title);
        EXPECT_EQ(document->rootElement()->stringValue(), shown + "x");
        EXPECT_TRUE(document->XMLString().ends_with("</title></head><body><p>x<!-- c --></p></body></html>"))
            << document->XMLString();
    }
}

TEST_F(TidyHTML, ReadsAPageWhoseTitleHasNoEnd) {
    for (const std::string_view page :
         {"<html><head><title>a<b</head><body>x</body></html>", "<title>", "<title", "<title <p>x</p>"})
        EXPECT_TRUE(XMLDocument::initWithXMLString(page, XMLDocumentParsing::tidyHTML)) << page;
}

TEST_F(TidyHTML, WritesBothNamesOfADocumentType) {
    for (const std::string_view type :
         {"<!DOCTYPE html SYSTEM \"about:legacy-compat\">", "<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\">",
          "<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"http://www.w3.org/TR/html4/strict.dtd\">"}) {
        const auto document =
            XMLDocument::initWithXMLString(std::string(type) + "<p>a</p>", XMLDocumentParsing::tidyHTML);
        ASSERT_TRUE(document);
        EXPECT_EQ(document->documentType(), type);
    }
}

std::string page(std::string_view html) {
    const auto document = XMLDocument::initWithXMLString(html, XMLDocumentParsing::strict);
    return document ? document->prettyPrintedPage() : "error";
}

TEST_F(XMLSerialisation, WritesPagesThatABrowserReadsAlike) {
    const Row rows[] = {
        {"<p>a<br/>b</p>", "<p>a<br />b</p>\n"},
        {"<p><a name='x'/></p>", "<p><a name=\"x\"></a></p>\n"},
        {"<html><head><title>t</title></head><body><p>a</p><p>b</p></body></html>",
         "<html>\n  <head>\n    <title>t</title>\n  </head>\n  <body>\n    <p>a</p>\n    <p>b</p>\n  "
         "</body>\n</html>\n"},
        {"<div><p>a</p> tail</div>", "<div><p>a</p> tail</div>\n"},
        {"<div><b>a</b><i>b</i></div>", "<div><b>a</b><i>b</i></div>\n"},
        {"<div><p>a</p><i>b</i></div>", "<div><p>a</p><i>b</i></div>\n"},
        {"<pre><div>a</div><div>b</div></pre>", "<pre><div>a</div><div>b</div></pre>\n"},
        {"<div style='white-space:pre'><div><div>a</div></div></div>",
         "<div style=\"white-space:pre\"><div><div>a</div></div></div>\n"},
        {"<style>a &gt; b</style>", "<style>a > b</style>\n"},
        {"<!DOCTYPE html><div/>", "<!DOCTYPE html>\n<div></div>\n"},
    };
    for (const auto& row : rows) EXPECT_EQ(page(row.input), row.expected) << row.input;
}

TEST_F(XMLTree, IsBuiltAndChanged) {
    XMLDocument made = XMLDocument::withRootElement("img");
    XMLElement& image = *made.rootElement();
    image.setAttribute("width", "300");
    image.setAttribute("src", "data:x");
    image.setAttribute("width", "3");
    EXPECT_EQ(image.XMLString(), "<img width=\"3\" src=\"data:x\"></img>");
    EXPECT_EQ(image.attributeForName("src"), "data:x");
    EXPECT_EQ(image.attributeForName("SRC"), std::nullopt);

    auto document = XMLDocument::initWithXMLString("<a><b/>t</a>", XMLDocumentParsing::strict);
    ASSERT_TRUE(document);
    document->wrapRootElement("en-note");
    XMLElement& note = *document->rootElement();
    EXPECT_EQ(note.XMLString(), "<en-note><a><b></b>t</a></en-note>");
    XMLElement* a = note.children().front()->asElement();
    EXPECT_EQ(a->parent(), &note);
    EXPECT_EQ(a->nextSibling(), nullptr);
    a->addText(XMLNodeKind::text, "u");
    a->addNode(XMLNodeKind::comment, "c");
    a->addText(XMLNodeKind::text, "v");
    a->addElement("d").setAttribute("e", "f");
    EXPECT_EQ(note.XMLString(), "<en-note><a><b></b>tu<!--c-->v<d e=\"f\"></d></a></en-note>");
    EXPECT_EQ(note.stringValue(), "tuv");
    EXPECT_EQ(XMLDocument().rootElement(), nullptr);
}

TEST_F(XMLTree, OfOneElementComesFromItsMarkup) {
    const auto element = XMLElement::initWithXMLString("<en-media hash=\"1\" type=\"image/png\"></en-media>");
    ASSERT_TRUE(element);
    EXPECT_EQ(element->rootElement()->attributeForName("hash"), "1");
    EXPECT_FALSE(XMLElement::initWithXMLString("<en-media hash=1></en-media>"));
    EXPECT_FALSE(XMLElement::initWithXMLString("<a/><b/>"));
}

TEST_F(XMLTree, MayBeDeepWithoutRecursion) {
    XMLDocument document;
    for (int i = 0; i < 200'001; ++i) document.wrapRootElement("a");
    EXPECT_EQ(document.rootElement()->XMLString().size(), 200'001U * 7);
    EXPECT_EQ(document.rootElement()->stringValue(), "");
}

TEST_F(XMLTree, HasALimitOfDepthInEachReading) {
    std::string deep;
    for (int i = 0; i < 1'000'000; ++i) deep += "<i>";
    for (const auto parsing : {XMLDocumentParsing::strict, XMLDocumentParsing::tidyXML, XMLDocumentParsing::tidyHTML})
        EXPECT_EQ(read(deep, parsing), "error 1");
    std::string allowed;
    for (int i = 0; i < 5'000; ++i) allowed += "<i>";
    EXPECT_EQ(read(allowed, XMLDocumentParsing::tidyXML).size(), 5'000U * 7);
}

TEST_F(XMLTree, RefusesTooManyAttributesAtOnce) {
    std::string tag = "<a";
    for (int i = 0; i < 1'000'000; ++i) tag += fmt::format(" a{}", i);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(read(tag + ">", XMLDocumentParsing::tidyXML), "error 1");
    EXPECT_EQ(read(tag + ">", XMLDocumentParsing::tidyHTML), "error 1");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(XMLTree, HoldsTextsAndValuesOfAnySize) {
    const std::string large(12U << 20, 'x');
    for (const auto parsing : {XMLDocumentParsing::strict, XMLDocumentParsing::tidyHTML}) {
        const auto document = XMLDocument::initWithXMLString("<p title=\"" + large + "\">" + large + "</p>", parsing);
        ASSERT_TRUE(document);
        EXPECT_EQ(document->rootElement()->stringValue().size(), large.size());
        EXPECT_GT(document->XMLString().size(), 2 * large.size());
    }
}

TEST_F(XMLTree, JoinsManyTextsThatReferencesPartWithoutABlockForEach) {
    constexpr std::size_t kTexts = 20'000, kMostMemory = std::size_t{64} << 20; // a block each would be 1.3 GB
    std::string xml = "<a>";
    for (std::size_t i = 0; i < kTexts; ++i) xml += "<b c=\"&lt;d\">x&amp;y&gt;</b>z";
    xml += "</a>";
    tests::restartPeakMemory();
    const std::size_t before = tests::peakMemory();
    const auto document = XMLDocument::initWithXMLString(std::string(xml), XMLDocumentParsing::strict);
    EXPECT_LT(tests::peakMemory(), before + kMostMemory);
    ASSERT_TRUE(document);
    EXPECT_TRUE(document->XMLString() == xml);
}

TEST(MarkupText, EscapesByTableWhatASearchForEachCharacterFinds) {
    struct Form {
        void (*append)(std::string_view, std::string&);
        std::string_view escaped;
    };
    for (const auto& [append, escaped] :
         {Form{appendEscapedText, "&<>\r"}, Form{appendEscapedAttribute, "&<>\"\t\n\r"}})
        for (int byte = 0; byte < 256; ++byte) {
            const auto character = static_cast<char>(byte);
            std::string out = "before ";
            append(std::string{'a', character, character, 'z'}, out);
            const bool stays = out == std::string("before a") + character + character + 'z';
            EXPECT_EQ(stays, escaped.find(character) == std::string_view::npos) << byte;
            EXPECT_TRUE(stays || (out.starts_with("before a&") && out.ends_with(";z"))) << out;
        }
}

TEST(MarkupText, KnowsTheFirstTag) {
    const Row rows[] = {
        {"<?xml version='1.0'?><!DOCTYPE x><En-Note a='1'>", "en-note"},
        {"a < b <br/>", "br"},
        {"x", ""},
        {"<", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(nameOfFirstTag(row.input), row.expected) << row.input;
}

} // namespace
} // namespace platform
