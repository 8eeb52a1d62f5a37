// Literal rewriting: which tags are found, what stands in their place, at what cost.
#include "conversion/MarkupScan.h"

#include <chrono>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/Error.h"

namespace quillet {
namespace {

using platform::Result;

// Rewrites "<t…>" to its number, "<t!>" being an error and a tag without ">" having no end.
TagRewriting numbering(std::vector<std::string>& tags) {
    return {.opening = "<t",
            .findEnd = [](std::string_view markup, std::size_t start) -> std::optional<std::size_t> {
                const std::size_t end = markup.find('>', start);
                return end == std::string_view::npos ? std::nullopt : std::optional(end + 1);
            },
            .replace = [&tags](std::string_view tag, std::string& out) -> Result<> {
                if (tag == "<t!>") return platform::failure(platform::Error("Test", 2));
                tags.emplace_back(tag);
                out += std::to_string(tags.size());
                return {};
            },
            .missingEnd = [] { return platform::Error("Test", 1); }};
}

TEST(MarkupScan, ReplacesEachTagOnce) {
    const struct {
        std::string markup, expected;
    } rows[] = {
        {"", ""},
        {"no tag", "no tag"},
        {"<t>", "1"},
        {"a<t>b<t x>c", "a1b2c"},
        {"<t><t><t>", "123"},
        {"<T><u>", "<T><u>"},
        {"<t <t >", "1"},
        {"<!-- <t> --><t>", "<!-- <t> -->1"},
        {"<![CDATA[<t>]]>x<t>", "<![CDATA[<t>]]>x1"},
        {"<?pi <t>?><t>", "<?pi <t>?>1"},
        {"<!-- a --><!-- <t> --><t><!-- <t --><t>", "<!-- a --><!-- <t> -->1<!-- <t -->2"},
        {"<t><!-- <t> never closed", "1<!-- <t> never closed"},
        {"<t <!-- -->x<t>", "1x2"}, // a tag that is under way is not ended by what stands in it
    };
    for (const auto& row : rows) {
        std::vector<std::string> tags;
        const auto rewritten = rewriteTags(row.markup, numbering(tags));
        ASSERT_TRUE(rewritten) << row.markup;
        EXPECT_EQ(*rewritten, row.expected);
    }
}

TEST(MarkupScan, HandsTheWholeTagToItsReplacement) {
    std::vector<std::string> tags;
    ASSERT_TRUE(rewriteTags("x<t a='1'>y<todo>", numbering(tags)));
    EXPECT_EQ(tags, (std::vector<std::string>{"<t a='1'>", "<todo>"}));
}

TEST(MarkupScan, PassesErrorsOn) {
    std::vector<std::string> tags;
    EXPECT_EQ(rewriteTags("a<t>b<t", numbering(tags)).error().code, 1);
    EXPECT_EQ(rewriteTags("a<t!>b<t>", numbering(tags)).error().code, 2);
}

TEST(MarkupScan, LeavesMarkupWithoutTagsWhereItIs) {
    std::string markup(1000, 'x');
    const char* storage = markup.data();
    std::vector<std::string> tags;
    std::string same = rewriteTags(std::move(markup), numbering(tags)).value();
    EXPECT_EQ(same.data(), storage);
    same = replaceAll(std::move(same), "y", "z");
    EXPECT_EQ(same.data(), storage);
}

TEST(MarkupScan, ReplacesLiteralsLeftToRight) {
    const struct {
        std::string markup, literal, replacement, expected;
    } rows[] = {
        {"aaa", "aa", "b", "ba"}, {"abab", "ab", "ab", "abab"}, // what was put in is not looked at
        {"aab", "ab", "b", "ab"}, {"</d><d>-</d><d>-</d><d>", "</d><d>-</d><d>", "!", "!-</d><d>"},
        {"xx", "x", "", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(replaceAll(row.markup, row.literal, row.replacement), row.expected);
}

TEST(MarkupScan, ReplacesSeveralLiteralsInOnePass) {
    const LiteralReplacement rows[] = {{"A", "B"}, {"B", "AAB"}, {"long", "C"}};
    EXPECT_EQ(replaceAll("ABlongA-longB", rows), "BAABCB-CAAB");
    EXPECT_EQ(replaceAll("nothing", rows), "nothing");
    EXPECT_EQ(replaceAll("", rows), "");
}

TEST(MarkupScan, ReplacesSeveralTagsInOnePass) {
    const LiteralReplacement rows[] = {{"<a><b>", "<a>"}, {"</b></a>", "</a>"}, {"<c>", "<c><c>"}, {"</b><b>", ""}};
    EXPECT_EQ(replaceTags("<a><b>x</b></a><a><a><b><b>-<c></b></b></a>", rows), "<a>x</a><a><a><b>-<c><c></b></a>");
    EXPECT_EQ(replaceTags("</b><b></b><b></b></a><", rows), "</a><");
    for (const std::string_view same : {"nothing", "", "<", "<a", "<a><", "< a><b>", "<A><b></b>"})
        EXPECT_EQ(replaceTags(same, rows), same);
}

// A square of these sizes would take minutes.
TEST(MarkupScan, IsLinear) {
    constexpr std::size_t kTags = 300'000;
    const auto timed = [](std::string_view piece) {
        std::string markup;
        for (std::size_t index = 0; index < kTags; ++index) markup += piece;
        std::vector<std::string> tags;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(rewriteTags(std::move(markup), numbering(tags)));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    EXPECT_LT(timed("<t>text"), 20);
    EXPECT_LT(timed("<!-- -->"), 20);
    EXPECT_LT(timed("<!-- <t> --><t>"), 20);
    EXPECT_LT(timed("<![CDATA[ "), 20);
}

} // namespace
} // namespace quillet
