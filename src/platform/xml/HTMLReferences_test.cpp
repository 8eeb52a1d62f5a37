#include "platform/xml/HTMLReferences.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/xml/HTMLDocument.h"

namespace platform {
namespace {

struct Row {
    std::string page, expected;
};

std::string textOf(const std::string& markup) {
    const auto page = HTMLDocument::parse("<body>" + markup);
    return page ? page->textContent(page->body()) : page.error().localizedDescription();
}

TEST(HTMLReferences, InText) {
    const std::vector<Row> rows{
        {"&apos;&lbrace;&check;&hellip;", "'{✓…"},
        {"&lang;&rang;", "⟨⟩"}, // HTML 4 had others
        {"&AMP;&LT;b&GT;&QUOT;", "&<b>\""},
        {"&Tab;x&NewLine;", "\tx\n"},
        {"&nvlt;&fjlig;&NotEqualTilde;", "<⃒fj≂̸"},
        {"&Afr;&CounterClockwiseContourIntegral;", "𝔄∳"},
        // Without a semicolon: the old names, as the longest prefix.
        {"&nbsp &copy2024 &notit; &notin; &notin", "\u00a0 ©2024 ¬it; ∉ ¬in"},
        {"&ampamp; &ltb&gt &sup1 &frac12x", "&amp; <b> ¹ ½x"},
        {"&apos &check &hellip", "&apos &check &hellip"},
        // Numbers.
        {"&#8364;&#x20ac;&#X20AC;&#128;&#x80;&#8364 x&#x2713", "€€€€€€ x✓"},
        {"&#146;&#150;&#159;&#129;", "’–Ÿ\u0081"},
        {"&#0;&#xD800;&#x110000;&#99999999999999999999;", "\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"&#128512;&#x1F600", "😀😀"},
        // No references.
        {"a & b &; &# &#; &#x; &#xg; &unknown; &unknown &", "a & b &; &# &#; &#x; &#xg; &unknown; &unknown &"},
        {"\u0085|", "\u0085|"},
        {"&&copy;&amp;copy;", "&©&copy;"},
    };
    for (const auto& [page, expected] : rows) EXPECT_EQ(textOf(page), expected) << page;
}

TEST(HTMLReferences, InAttributesBareNamesAreTextBeforeLettersAndEqualsSigns) {
    const std::vector<Row> rows{
        {"x?a=1&copy=2&reg;&lt3", "x?a=1&copy=2®&lt3"},
        {"&copy 2024&copy", "© 2024©"},
        {"&lbrace;&apos;&quot;&#34;&#146;", "{'\"\"’"},
        {"&notit;&notin;", "&notit;∉"},
    };
    for (const auto& [value, expected] : rows) {
        for (const std::string& tag :
             {"<a href=\"" + value + "\">", "<i title='=' ><a x=\"'>\" HREF = \"" + value + "\">"}) {
            const auto page = HTMLDocument::parse("a < b & c<!-- <a href=\" --><p>" + tag + "&copy2");
            ASSERT_TRUE(page.has_value());
            auto node = page->body();
            while (node != HTMLDocument::kNone && (!page->isElement(node) || (*page)[node].tag != HTMLTag::a))
                node = page->following(node, page->body());
            ASSERT_NE(node, HTMLDocument::kNone);
            EXPECT_EQ(page->attribute(node, HTMLAttribute::href), expected) << tag;
            EXPECT_TRUE(page->textContent(page->body()).ends_with("©2")) << tag;
        }
    }
}

TEST(HTMLReferences, LeaveAPageAloneThatTheParserReadsAlike) {
    std::string rewritten = "untouched";
    for (const char* page :
         {"", "&", "a &amp; b&nbsp;&lt;&gt;&quot;&#8364;&#x263a;", "&unknown;", "<a href='?a=1&copy=2'>"}) {
        EXPECT_FALSE(rewriteReferences(page, rewritten)) << page;
        EXPECT_EQ(rewritten, "untouched");
    }
    EXPECT_TRUE(rewriteReferences("&copy;", rewritten));
    EXPECT_EQ(rewritten, "©");
    for (const char* page : {"<", "<a", "<a b=", "<a b='&copyx", "<!--", "<!-- &copyx", "<a b=c&copyx"}) {
        rewriteReferences(page, rewritten);
        rewriteReferences(std::string(page) + "&copyx", rewritten);
    }
}

} // namespace
} // namespace platform
