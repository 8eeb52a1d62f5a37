// The tree that is made without parsing must be the tree that parsing makes, for every page that is not refused.
#include <array>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "platform/xml/HTMLDocument.h"
#include "platform/xml/XMLDocument.h"

namespace platform {
namespace {

// The whole of a page, a node a line.
std::string dump(const HTMLDocument& page) {
    std::string text = page.encoding() + (page.quirksMode() ? " quirks\n" : "\n");
    std::vector<std::size_t> levels(page.size());
    for (auto at = page.root(); at != HTMLDocument::kNone; at = page.following(at, page.root())) {
        if (at != page.root()) levels[at] = levels[page[at].parent] + 1;
        text.append(levels[at], ' ');
        if (page.isElement(at)) {
            text += page.name(at);
            for (int name = 0; name < static_cast<int>(HTMLAttribute::none); ++name)
                if (const auto value = page.attribute(at, static_cast<HTMLAttribute>(name)))
                    text.append(" ").append(std::to_string(name)).append("='").append(*value).append("'");
        } else {
            text.append("\"").append(page.text(at)).append("\"");
        }
        text += '\n';
    }
    return text;
}

enum class Outcome { same, different, refused };

Outcome compare(const std::string& markup) {
    const auto document = XMLDocument::initWithXMLString(markup, XMLDocumentParsing::tidyHTML);
    if (!document) return Outcome::refused;
    const std::string page = document->prettyPrintedPage();
    const auto quick = HTMLDocument::fromPrintedPage(*document);
    if (!quick) return Outcome::refused;
    const auto parsed = HTMLDocument::parse(page);
    if (parsed && *parsed == *quick) return Outcome::same;
    ADD_FAILURE() << markup << "\nprinted:\n"
                  << page << "\nparsed:\n"
                  << (parsed ? dump(*parsed) : "") << "\nquick:\n"
                  << dump(*quick);
    return Outcome::different;
}

std::string page(std::string_view body, std::string_view head = "<title>t</title>") {
    return "<!DOCTYPE html><html><head>" + std::string(head) + "</head><body>" + std::string(body) + "</body></html>";
}

TEST(HTMLPrintedPage, IsTheParsedTree) {
    constexpr auto kBodies = std::to_array<std::string_view>({
        "",
        "text",
        "<div>a</div>\n<div>b<br/></div>",
        "<p>a<p>b</p>c",
        "<b>a<i>b</b>c</i>d",
        "<ul><li>a</li><ul><li>b</li></ul></ul>",
        "<ul><li><div>a</div><div>b</div></li></ul>",
        "<table><tr><td>a<td>b</table>",
        "<table><colgroup><col/><col/></colgroup><tbody><tr><th>a</th></tr></tbody></table>",
        "<pre>\n\n a  b\n</pre><textarea>\nx</textarea>",
        "<div style=\"white-space: pre\"> a <div> b </div> </div>",
        "&lt;b&gt; &amp;nbsp; &nbsp; &quot; \xE2\x80\xA8 \xC3\xBC",
        "<a href=\"x?a=1&amp;b=2&quot;\" TITLE='t' class=\"&#10;\">a</a>",
        "<!-- note --><div>a<!-- b -->c</div>",
        "<font color=red size=+1>a<div>b</font>c</div>",
        "<select><option>a<option>b</select><q>c</q><object data=x><p>d</object>",
        "<h1>a</h2><dl><dt>b<dd>c</dl><blockquote>d</blockquote>",
        "<img src=\"a.png\"><hr><input type=text value='&lt;'><embed src=x>",
        "<span></span><div></div><p></p>",
        "<div>a</div></body></html><div>behind</div>\n",
    });
    for (const auto body : kBodies) EXPECT_EQ(compare(page(body)), Outcome::same) << body;
    EXPECT_EQ(compare(page("a", "<meta charset=\"UTF-8\"/><title>a &amp; b</title><style>a > b {}</style>")),
              Outcome::same);
    EXPECT_EQ(compare("<p>quirks<table><tr><td>a"), Outcome::same);
    EXPECT_EQ(compare(page(std::string(5000, 'x') + "<a title=\"" + std::string(9000, 'y') + "\">z</a>")),
              Outcome::same);
}

TEST(HTMLPrintedPage, RefusesWhatTheParserReadsInItsOwnWay) {
    std::string manyAttributes = "<div";
    for (int i = 0; i < 100; ++i) manyAttributes += " a" + std::to_string(i) + "=''";
    std::string deep;
    for (int i = 0; i < 250; ++i) deep += "<div>";
    const auto kPages = std::to_array<std::string>({
        page("<script>a</script>"),
        page("<o:p>a</o:p>"),
        page("a", "<style>a < b</style>"),
        page("a", "<meta charset=\"iso-8859-1\"/>"),
        page("a", "<meta content=\"text/html; charset=iso-8859-1\"/>"),
        page("a", "<meta charsets=\"iso-8859-1\"/>"),
        page("\xC2\x85"),
        page("\x7F"),
        page("a&#13;b"),
        page("<!-- a -- b -->"),
        page("<!--> a -->"),
        page("<!-- a --->"),
        page("<!-- <b> -->"),
        page("<!-- \x7F -->"),
        page("<!--" + std::string(3000, ' ') + "-->"),
        page("<table>a &amp; b<tr><td>c</table>"),
        page(manyAttributes + ">a</div>"),
        page(deep),
        "<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" \"http://www.w3.org/TR/html4/strict.dtd\"><p>a",
        "<html><frameset><frame src=a></frameset></html>",
    });
    for (const std::string& refused : kPages) EXPECT_EQ(compare(refused), Outcome::refused) << refused;
}

TEST(HTMLPrintedPage, LooksAtTextsThatWereAddedToAPlainPage) {
    auto document = XMLDocument::initWithXMLString(page("<p>a</p>"), XMLDocumentParsing::tidyHTML).value();
    EXPECT_TRUE(document.hasPlainTexts());
    EXPECT_TRUE(HTMLDocument::fromPrintedPage(document));
    XMLElement* body = nullptr;
    for (XMLNode* part : document.rootElement()->children()) body = part->asElement();
    ASSERT_TRUE(body && body->name() == "body");
    body->addText(XMLNodeKind::text, "\x7F");
    EXPECT_FALSE(HTMLDocument::fromPrintedPage(document));
}

// Markup put together from pieces at random, more broken than any page.
TEST(HTMLPrintedPage, IsTheParsedTreeOfRandomMarkup) {
    constexpr auto kNames = std::to_array<std::string_view>(
        {"div",   "p",        "b",    "i",        "a",      "span",    "ul",       "ol",      "li",      "table",
         "tr",    "td",       "th",   "tbody",    "thead",  "caption", "colgroup", "h1",      "h3",      "blockquote",
         "pre",   "font",     "code", "center",   "u",      "s",       "em",       "strong",  "sub",     "dl",
         "dt",    "dd",       "form", "select",   "option", "button",  "object",   "address", "section", "title",
         "style", "textarea", "nobr", "q",        "label",  "iframe",  "noscript", "body",    "head",    "html",
         "map",   "ruby",     "rt",   "fieldset", "legend", "marquee", "tt",       "small",   "ins",     "del"});
    constexpr auto kVoid = std::to_array<std::string_view>({"br", "img", "hr", "input", "col", "meta", "wbr", "link"});
    constexpr auto kTexts = std::to_array<std::string_view>(
        {"a", " ", "\n", "text and more", "&amp;", "&nbsp;", "&lt;", "\xC3\xBC", " \t ", "x &gt; y", "&#8232;", "\"'"});
    constexpr auto kAttributes = std::to_array<std::string_view>(
        {"", "", "", " class=\"x\"", " style='white-space: pre-wrap'", " style=\"color: red\"", " href=\"a?b&amp;c\"",
         " align=center", " width=3 height", " checked", " title=\"&quot;&#10;\"", " class='y' class='z'"});
    std::mt19937 random(20240610);
    const auto oneOf = [&](const auto& list) { return list[random() % list.size()]; };
    int same = 0;
    constexpr int kRounds = 3000;
    for (int round = 0; round < kRounds; ++round) {
        std::string body;
        std::vector<std::string_view> open;
        for (std::size_t pieces = random() % 40; pieces > 0; --pieces) {
            switch (random() % 8) {
            case 0:
            case 1:
                open.push_back(oneOf(kNames));
                body.append("<").append(open.back()).append(oneOf(kAttributes)).append(">");
                break;
            case 2:
                body.append("<").append(oneOf(kVoid)).append(oneOf(kAttributes)).append("/>");
                break;
            case 3: // in order
            case 4:
                if (open.empty()) break;
                body.append("</").append(open.back()).append(">");
                open.pop_back();
                break;
            case 5: // out of order
                if (random() % 4 == 0) body.append("</").append(oneOf(kNames)).append(">");
                break;
            default:
                body += oneOf(kTexts);
            }
        }
        const Outcome outcome = compare(random() % 8 == 0 ? body : page(body));
        ASSERT_NE(outcome, Outcome::different);
        same += outcome == Outcome::same ? 1 : 0;
    }
    EXPECT_GT(same, kRounds / 2);
}

} // namespace
} // namespace platform
