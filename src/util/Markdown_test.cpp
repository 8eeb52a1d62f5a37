#include "util/Markdown.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/RegularExpression.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::URL;
using platform::utf8FromUTF16;

TEST(Markdown, RecognisesLists) {
    using enum MarkdownListType;
    struct Row {
        std::u16string_view line;
        MarkdownListType type;
        std::u16string_view bullet;
        std::int64_t number;
    };
    for (const Row& row : {
             Row{u"* a", bulleted, u"* ", -1},
             Row{u"+ a", bulleted, u"+ ", -1},
             Row{u"- a", bulleted, u"- ", -1},
             Row{u"  * word", bulleted, u"  * ", -1},
             Row{u"> - quote item", bulleted, u"> - ", -1},
             Row{u"\t> + a", bulleted, u"\t> + ", -1},
             Row{u"- ", bulleted, u"- ", -1},
             Row{u" -a - b", bulleted, u" -a - ", -1},
             Row{u"*", none, u"?", -1},
             Row{u"-", none, u"?", -1},
             Row{u"", none, u"?", -1},
             Row{u" > ", none, u"?", -1},
             Row{u"word", none, u"?", -1},
             Row{u"12. step", numbered, u"12. ", 12},
             Row{u"> 3. step", numbered, u"> 3. ", 3},
             Row{u"12.step", none, u"?", -1},
             Row{u"12 a. b", numbered, u"12 a. ", 12},
             Row{u"  12 step", numbered, u"  12 step. ", 12}, // no ". ", but the indentation hides that
             Row{u"99999999999999999999. x", numbered, u"99999999999999999999. ", 9223372036854775807},
             Row{u"-12. x", none, u"?", -1},
             Row{u"٣. x", none, u"?", -1},
         }) {
        std::u16string bullet = u"?";
        std::int64_t number = -1;
        EXPECT_EQ(getListTypeAndCurrentBullet(row.line, &bullet, &number), row.type) << utf8FromUTF16(row.line);
        EXPECT_EQ(bullet, row.bullet) << utf8FromUTF16(row.line);
        EXPECT_EQ(number, row.number) << utf8FromUTF16(row.line);
        EXPECT_EQ(getListTypeAndCurrentBullet(row.line), row.type);
    }
}

TEST(Markdown, RecognisesEmphasis) {
    struct Row {
        std::u16string_view span, strong, emphasized; // the markers, "" for none
    };
    for (const Row& row : {
             Row{u"**bold**", u"**", u""},
             Row{u"__bold__", u"__", u""},
             Row{u"***both***", u"**", u"*"},
             Row{u"___both___", u"__", u"_"},
             Row{u"**_both_**", u"**", u"_"},
             Row{u"*one*", u"", u"*"},
             Row{u"_one_", u"", u"_"},
             Row{u"*one_", u"", u""},
             Row{u"**one__", u"", u""},
             Row{u"*", u"", u"*"},
             Row{u"**", u"**", u""},
             Row{u"***", u"**", u""},
             Row{u"****", u"**", u""},
             Row{u"", u"", u""},
         }) {
        std::u16string_view strong;
        std::u16string_view emphasized;
        EXPECT_EQ(isStrong(row.span, &strong), !row.strong.empty());
        EXPECT_EQ(isEmphasized(row.span, &emphasized), !row.emphasized.empty());
        EXPECT_EQ(strong, row.strong) << utf8FromUTF16(row.span);
        EXPECT_EQ(emphasized, row.emphasized) << utf8FromUTF16(row.span);
    }
}

TEST(Markdown, RecognisesStrikesHighlightsAndHeadings) {
    EXPECT_TRUE(isStruckthrough(u"~a~"));
    EXPECT_TRUE(isStruckthrough(u"~~a~~"));
    EXPECT_FALSE(isStruckthrough(u"~a"));
    EXPECT_TRUE(isHighlighted(u"<mark>a</mark>"));
    EXPECT_FALSE(isHighlighted(u"<mark>a"));
    EXPECT_FALSE(isHighlighted(u"<MARK>a</MARK>"));
    struct Row {
        std::u16string_view line;
        std::size_t level;
    };
    for (const Row& row : {Row{u"", 0}, Row{u"#", 0}, Row{u"a", 0}, Row{u"##", 1}, Row{u"###", 2}, Row{u"#tag", 1},
                           Row{u"## Title", 2}, Row{u"########", 7}, Row{u" # a", 0}, Row{u"a#", 0}})
        EXPECT_EQ(headingLevel(row.line), row.level) << utf8FromUTF16(row.line);
}

TEST(Markdown, ReadsLinks) {
    struct Row {
        std::u16string_view span;
        std::optional<MarkdownLink> link, image;
    };
    const auto link = [](std::u16string target, std::u16string text,
                         std::optional<std::u16string> title = std::nullopt) {
        return MarkdownLink{std::move(target), std::move(text), std::move(title)};
    };
    for (const Row& row : {
             Row{u"[x](y)", link(u"y", u"x"), {}},
             Row{u"[x](y \"t\")", link(u"y", u"x", u"t"), {}},
             Row{u" [x]( y  \"a b\" )\u00A0", link(u"y", u"x", u"a b"), {}},
             Row{u"![x](y \"t\")", {}, link(u"y", u"x", u"t")},
             Row{u"[a]b](y)", link(u"y", u"a]b"), {}},
             Row{u"![a]b](y)", {}, link(u"y", u"a")},
             Row{u"[a](b)(c)", link(u"c", u"a"), {}},
             Row{u"![a](b)(c)", {}, link(u"b", u"a")},
             Row{u"[x](a b)", link(u"a b", u"x"), {}},
             Row{u"[x](a\"b)", link(u"a\"b", u"x"), {}},
             Row{u"[](())", link(u")", u""), {}}, // the last "(" and the last ")"
             Row{u"[]()", link(u"", u""), {}},
             Row{u"[x)(", {}, {}},
             Row{u"[x](", {}, {}},
             Row{u"[x]", {}, {}},
             Row{u"(y)[x]", {}, {}},
             Row{u"[(x)]", {}, {}},
             Row{u"![(x)]", {}, {}},
             Row{u"", {}, {}},
         }) {
        EXPECT_EQ(getLink(row.span), row.link) << utf8FromUTF16(row.span);
        EXPECT_EQ(getImageLink(row.span), row.image) << utf8FromUTF16(row.span);
    }
}

TEST(Markdown, MakesLinks) {
    EXPECT_EQ(markdownLinkWithText(u"x", u"y", u"t"), u"[x](y \"t\")");
    EXPECT_EQ(markdownLinkWithText(u"x", u"y", u""), u"[x](y)");
    EXPECT_EQ(markdownImageLinkWithAltText(u"x", u"y", u"t"), u"![x](y \"t\")");
    EXPECT_EQ(markdownImageLinkWithAltText(u"%@", u"%ld", u""), u"![%@](%ld)");
}

TEST(Markdown, RemovesImages) {
    struct Row {
        std::u16string_view text, expected;
    };
    for (const Row& row : {
             Row{u"a ![x](y) b", u"a  b"},
             Row{u"a ![x][y] b", u"a  b"},
             Row{u"![x](y) and ![z](w) end", u" end"},
             Row{u"![x](y)\n![x\n](y)", u"\n![x\n](y)"},
             Row{u"![x](y) (z)!", u"!"},
             Row{u"[x](y)", u"[x](y)"},
             Row{u"![x]", u"![x]"},
             Row{u"", u""},
         })
        EXPECT_EQ(markdownByRemovingImages(row.text), row.expected) << utf8FromUTF16(row.text);
}

TEST(Markdown, ImagesAreWhatThePatternsMatch) {
    const auto inlineImage = platform::RegularExpression::withPattern(u"\\!\\[.*\\]\\(.*\\)");
    const auto reference = platform::RegularExpression::withPattern(u"\\!\\[.*\\]\\[.*\\]");
    EXPECT_TRUE(rc::check([&] {
        const auto text = *rc::gen::container<std::u16string>(
            rc::gen::element<char16_t>(u'!', u'[', u']', u'[', u']', u'(', u')', u'a', u'\n', u'\v', u'\r', 0xD800));
        const auto expected = reference->replacingMatches(*inlineImage->replacingMatches(text, u""), u"");
        RC_ASSERT(markdownByRemovingImages(text) == *expected);
    }));
}

TEST(Markdown, ListsChecklistItems) {
    using Items = std::vector<std::u16string_view>;
    const std::u16string_view text = u"- [x] done\r\n* [ ]  open \n+ [x]\n - [X] no\n[x] no\n-[x] no\n- [x]x\u2028tail";
    EXPECT_EQ(completedChecklistItems(text), (Items{u"done", u"x"}));
    EXPECT_EQ(outstandingChecklistItems(text), (Items{u"open"}));
    EXPECT_EQ(completedChecklistItems(u"- [x] a - [x] b"), (Items{u"a - [x] b", u"b"}));
    EXPECT_EQ(completedChecklistItems(u"- [x]"), Items{});
    EXPECT_EQ(completedChecklistItems(u""), Items{});
    EXPECT_EQ(completedChecklistItems(u"- [x] a\fb"), (Items{u"a\fb"}));
    EXPECT_EQ(outstandingChecklistItems(u"- [ ] - [ ] "), (Items{u"- [ ]"}));
}

TEST(Markdown, ReadsOneChecklistLine) {
    struct Row {
        std::u16string_view line;
        bool found, value;
    };
    for (const Row& row : {
             Row{u"- [x] a", true, true},
             Row{u"- [ ] a", true, false},
             Row{u"        - [x] a", true, true},
             Row{u"text - [ ] a", true, false},
             Row{u"- [ ] - [x] ", true, true},
             Row{u"- [X] a", false, false},
             Row{u"- [x]a", false, false},
             Row{u"", false, false},
         }) {
        bool value = false;
        std::int64_t level = -1;
        EXPECT_EQ(getMarkdownChecklistValue(row.line, &value, &level), row.found) << utf8FromUTF16(row.line);
        EXPECT_EQ(value, row.value);
        EXPECT_EQ(level, row.found ? 0 : -1) << "indentation never raises the level";
        EXPECT_EQ(getMarkdownChecklistValue(row.line), row.found);
    }
}

TEST(Markdown, RelativeLinksWalkFromFolderToFolder) {
    struct Row {
        const char *target, *item, *expected;
    };
    for (const Row& row : {
             Row{"/a/b/x y.png", "/a/b/note.md", "x%20y.png"},
             Row{"/a/b/c/d/x.png", "/a/b/note.md", "c/d/x.png"},
             Row{"/a/x.png", "/a/b/c/note.md", "../../x.png"},
             Row{"/a/b/x.png", "/a/c/note.md", "../b/x.png"},
             Row{"/ä/x;y.png", "/b/note.md", "../%C3%A4/x%3By.png"},
             Row{"/x.png", "/note.md", "x.png"},
         })
        EXPECT_EQ(relativeLinkFor(URL::fileURLWithPath(row.target), URL::fileURLWithPath(row.item)), row.expected);
}

TEST(Markdown, ExtensionsComeFromTheInstalledFile) {
    platform::ScopedEnvironment environment;
    environment->dataDirectory = (tests::sourceDirectory() / "data").string();
    for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP"}) {
        environment->localeIdentifier = locale;
        for (const char16_t* extension : {u"md", u"MD", u"markdown", u"MarkDown", u"mkd", u"mdown"})
            EXPECT_TRUE(isFileExtensionSupportedMarkdownExtension(extension));
        for (const char16_t* extension : {u"", u"txt", u".md", u"mḋ", u"html", u"ｍｄ"})
            EXPECT_FALSE(isFileExtensionSupportedMarkdownExtension(extension));
    }
}

TEST(Markdown, FirstDeclarationOfTheTypeCounts) {
    const auto declaration = [](std::string_view type, platform::Value extensions) {
        platform::Dictionary tags{{"public.filename-extension", std::move(extensions)}};
        return platform::Dictionary{{"UTTypeIdentifier", type}, {"UTTypeTagSpecification", std::move(tags)}};
    };
    const platform::Value list = platform::Array{declaration("public.html", platform::Array{"html"}), 7,
                                                 declaration(QLTMarkdownType, platform::Array{"md", 1, "mkd"}),
                                                 declaration(QLTMarkdownType, platform::Array{"late"})};
    EXPECT_EQ(markdownExtensionsOfDeclarations(platform::Dictionary{{"UTImportedTypeDeclarations", list}}),
              (std::vector<std::u16string>{u"md", u"mkd"}));
    for (const platform::Value& value :
         {platform::Value(), platform::Value(list), platform::Value(platform::Dictionary()),
          platform::Value(platform::Dictionary{{"UTImportedTypeDeclarations", 1}})})
        EXPECT_TRUE(markdownExtensionsOfDeclarations(value).empty());
}

TEST(Markdown, MegabyteTakesNoQuadraticTime) {
    std::u16string markers;
    for (int i = 0; i < 170'000; ++i) markers += u"- [x] ";
    EXPECT_EQ(completedChecklistItems(markers).size(), 169'999u);
    std::u16string openings;
    for (int i = 0; i < 300'000; ++i) openings += u"![](";
    EXPECT_EQ(markdownByRemovingImages(openings), openings);
    const std::u16string blanks(1'000'000, u' ');
    EXPECT_EQ(getListTypeAndCurrentBullet(blanks), MarkdownListType::none);
}

} // namespace
} // namespace quillet
