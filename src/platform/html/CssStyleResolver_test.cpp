#include "platform/html/CssStyleResolver.h"

#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace platform {
namespace {

std::string rgb(const CssRGBA& color) {
    return fmt::format("{:02x}{:02x}{:02x}", static_cast<int>(color.red * 255), static_cast<int>(color.green * 255),
                       static_cast<int>(color.blue * 255));
}

TEST(CssStyles, AreSharedByElementsThatSayTheSame) {
    const auto page = HTMLDocument::parse("<!DOCTYPE html><body><p style='color:red'>a<p style='color:red'>b<p>c");
    ASSERT_TRUE(page.has_value());
    CssStyleResolver resolver(*page);
    const CssStyle* body = resolver.style(page->body(), resolver.style(page->root(), nullptr));
    const auto first = (*page)[page->body()].first, second = (*page)[first].next;
    EXPECT_EQ(resolver.style(first, body), resolver.style(second, body));
    EXPECT_NE(resolver.style(first, body), resolver.style((*page)[second].next, body));
}

// Equal styles around them are not enough to share a style: a rule may ask where the elements stand.
TEST(CssStyles, AreNotSharedAcrossARuleForThePlace) {
    const auto page = HTMLDocument::parse("<!DOCTYPE html><style>#i p b, x-y p b {color: red} x-y {color: blue}</style>"
                                          "<div><p><b>a</b></div><div id=i><p><b>b</b></div><x-y><p>c</p></x-y><x-z>d");
    ASSERT_TRUE(page.has_value());
    CssStyleResolver resolver(*page);
    const CssStyle* body = resolver.style(page->body(), resolver.style(page->root(), nullptr));
    std::string colors;
    for (auto outer = (*page)[page->body()].first; outer != HTMLDocument::kNone; outer = (*page)[outer].next) {
        const CssStyle* style = resolver.style(outer, body);
        for (auto at = (*page)[outer].first; at != HTMLDocument::kNone && page->isElement(at); at = (*page)[at].first)
            style = resolver.style(at, style);
        colors += rgb(style->color) + " ";
    }
    EXPECT_EQ(colors, "000000 ff0000 0000ff 000000 ");
}

// Of the innermost first children of what stands in the body.
std::vector<const CssStyle*> innermostStyles(CssStyleResolver& resolver, const HTMLDocument& page) {
    const CssStyle* body = resolver.style(page.body(), resolver.style(page.root(), nullptr));
    std::vector<const CssStyle*> styles;
    for (auto outer = page[page.body()].first; outer != HTMLDocument::kNone; outer = page[outer].next) {
        styles.push_back(resolver.style(outer, body));
        for (auto at = page[outer].first; at != HTMLDocument::kNone && page.isElement(at); at = page[at].first)
            styles.back() = resolver.style(at, styles.back());
    }
    return styles;
}

TEST(CssStyles, AreNotSharedAcrossARuleForAnyElement) {
    const auto page = HTMLDocument::parse("<!DOCTYPE html><style>#i * {color: red}</style>"
                                          "<div><p>a</p></div><div id=i><p>b</p></div>");
    ASSERT_TRUE(page.has_value());
    CssStyleResolver resolver(*page);
    const auto styles = innermostStyles(resolver, *page);
    ASSERT_EQ(styles.size(), 2U);
    EXPECT_EQ(rgb(styles[0]->color), "000000");
    EXPECT_EQ(rgb(styles[1]->color), "ff0000");
}

// A table says how wide its cells' edges are, which have no attributes themselves.
TEST(CssStyles, OfCellsAreNotSharedAcrossTables) {
    const auto page = HTMLDocument::parse("<!DOCTYPE html><table><tr><td>a</td></tr></table>"
                                          "<table cellpadding=9><tr><td>b</td></tr></table>"
                                          "<table cellpadding=9><tr><th>c</th></tr></table>"
                                          "<table><tr><th>d</th></tr></table>");
    ASSERT_TRUE(page.has_value());
    CssStyleResolver resolver(*page);
    std::vector<double> paddings;
    for (const CssStyle* style : innermostStyles(resolver, *page)) paddings.push_back(style->padding[0].value);
    EXPECT_EQ(paddings, (std::vector<double>{1, 9, 9, 1}));
}

} // namespace
} // namespace platform
