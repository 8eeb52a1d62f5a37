// From note markup to the page: note tags, checkboxes, encrypted blocks, shapes, the template.
#include "conversion/NoteMarkup.h"

#include <chrono>
#include <cstdlib>
#include <new>
#include <string>

#include <fmt/core.h>

#include "conversion/ConversionErrors.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/support/NoteMarkupFixture.h"
#include "tests/support/PeakMemory.h"

namespace quillet {
namespace {

using platform::Error;
using platform::Result;

class NoteMarkup : public NoteMarkupFixture {};

// ---- note tags

TEST_F(NoteMarkup, OfAnEmptyNoteIsEmpty) {
    EXPECT_EQ(innerText("<en-note></en-note>"), "");
    EXPECT_EQ(innerText("<en-note/>"), "");
    EXPECT_EQ(body("<en-note/>"), "");
}

TEST_F(NoteMarkup, LosesOnlyABareNoteTag) {
    EXPECT_EQ(innerText("<en-note><div>a<br/></div></en-note>"), "<div>a<br></br></div>");
    EXPECT_EQ(innerText("<en-note style=\"color:red\"><div>a</div></en-note>"),
              "<en-note style=\"color:red\"><div>a</div>");
}

TEST_F(NoteMarkup, LosesBareNoteTagsInsideToo) {
    EXPECT_EQ(innerText("<en-note>a<div><en-note>b</en-note></div>c</en-note>"), "a<div>b</div>c");
    EXPECT_EQ(innerText("<en-note><en-note x='1'>b</en-note></en-note>"), "<en-note x=\"1\">b");
    EXPECT_EQ(innerText("<en-note>a<!-- <en-note>b</en-note> --></en-note>"), "a<!-- b -->");
}

TEST_F(NoteMarkup, KeepsTheTagsOfAnotherRoot) {
    EXPECT_EQ(innerText("<div><p>a</p></div>"), "<div><p>a</p></div>");
    EXPECT_EQ(innerText("<div><en-note>a</en-note></div>"), "<div>a</div>");
}

// Whatever of the note's own elements comes last.
TEST_F(NoteMarkup, RewritesEachKindOfTagAmongTheOthers) {
    const std::string tags[] = {"<en-media hash=\"x\"/>", "<en-todo/>", "<en-crypt>x</en-crypt>",
                                "<en-note>i</en-note>", "<!-- <en-note> -->"};
    for (std::size_t last = 0; last < std::size(tags); ++last) {
        std::string markup;
        for (std::size_t i = 1; i <= std::size(tags); ++i) markup += tags[(last + i) % std::size(tags)];
        const std::string made = body("<en-note>" + markup + "</en-note>");
        EXPECT_FALSE(made.contains("en-")) << made;
        for (const std::string_view part : {"[Missing Attachment]", "◦", "********", "i"})
            EXPECT_TRUE(made.contains(part)) << made;
    }
}

TEST_F(NoteMarkup, WithAnUnbalancedNoteTagMakesAPage) {
    const std::string made = body("<en-note style=\"color:red\" bgcolor=\"#fff\"><div>a</div><div>b</div></en-note>");
    EXPECT_EQ(made, "<en-note style=\"color:red\" bgcolor=\"#fff\"><div>a</div><div>b</div>\n</en-note>");
}

// ---- checkboxes and encrypted blocks

TEST_F(NoteMarkup, TurnsCheckboxesIntoMarkers) {
    const struct {
        std::string_view markup, expected;
    } rows[] = {
        {"<en-todo/>a", "◦ a"},
        {"<en-todo checked=\"true\"/>a", "✓ a"},
        {"<en-todo checked='true'></en-todo>a", "✓ a"},
        {"<en-todo checked=\"TRUE\"/>a", "◦ a"},
        {"<en-todo checked=\"true \"/>a", "◦ a"},
        {"<en-todo checked=\"false\"/>a", "◦ a"},
        {"<en-todo checked=\"\"/>a", "◦ a"},
        {"<en-todo id=\"x\" checked=\"true\">dropped<b>too</b></en-todo>a", "✓ a"},
        {"a<en-todo/><en-todo checked=\"true\"/>", "a◦ ✓ "},
    };
    for (const auto& row : rows)
        EXPECT_EQ(body(fmt::format("<en-note><div>{}</div></en-note>", row.markup)),
                  fmt::format("<div>{}</div>", row.expected));
}

TEST_F(NoteMarkup, SaysWhichTextGoesWithATag) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    EXPECT_EQ(body("<en-note><div><en-todo/>a<en-todo> \n</en-todo>b<en-crypt>c</en-crypt>" + media(kPDF) +
                   "</div></en-note>"),
              "<div>◦ a◦ b********" + marker("a.pdf") + "</div>");
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(body("<en-note><div><en-todo checked=\"true\"> buy <b>milk</b></en-todo><en-media hash=\"x\">picture"
                   "</en-media></div></en-note>"),
              "<div>✓ [Missing Attachment]</div>");
    EXPECT_TRUE(hasLogged("Text inside a tag en-todo is left out: buy milk"));
    EXPECT_TRUE(hasLogged("Text inside a tag en-media is left out: picture"));
}

TEST_F(NoteMarkup, SaysThatListItemsLoseTheTicksOfTheirStyles) {
    item_.title = u"List";
    const std::string_view list = "<en-note><ul style=\"--en-todo:true;\"><li style=\"--en-checked:true;\">a</li>"
                                  "<li style=\"--en-checked:false;\">b</li><li>c</li></ul></en-note>";
    ASSERT_TRUE(page(list, ConvertDividers::no)); // as a page, which has the styles in it
    EXPECT_FALSE(hasLogged("List items of the note \"List\" lose their ticks: 1."));
    ASSERT_TRUE(page(list));
    EXPECT_TRUE(hasLogged("List items of the note \"List\" lose their ticks: 1."));
}

TEST_F(NoteMarkup, HidesWhatIsEncrypted) {
    const struct {
        std::string_view markup, expected;
    } rows[] = {
        {"<en-crypt cipher=\"AES\" length=\"128\" hint=\"a > b\">c2VjcmV0</en-crypt>", "********"},
        {"<en-crypt/>", "********"},
        {"a<en-crypt>x</en-crypt>b<en-crypt>y</en-crypt>", "a********b********"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(body(fmt::format("<en-note><div>{}</div></en-note>", row.markup)),
                  fmt::format("<div>{}</div>", row.expected));
}

// The serialised form of a tree always closes its tags, so that a missing end comes from what stands between two
// others.
TEST_F(NoteMarkup, FailsForTagsWithoutAnEnd) {
    const struct {
        std::string markup, message;
    } rows[] = {
        {"<en-note><en-todos/></en-note>", "Invalid todo tag."},
        {"<en-note><en-crypted/></en-note>", "Invalid crypt tag."},
    };
    for (const auto& row : rows) {
        const auto made = page(row.markup);
        ASSERT_FALSE(made) << row.markup;
        EXPECT_EQ(made.error().domain, EvernoteXMLItemErrorDomain);
        EXPECT_EQ(made.error().code, kInvalidTagErrorCode);
        EXPECT_EQ(made.error().localizedDescription(), row.message);
    }
    EXPECT_EQ(page("<en-note><en-crypt>a<en-crypt>b</en-crypt>c</en-crypt></en-note>").error().domain,
              platform::kXMLParserErrorDomain);
}

// ---- shapes and dividers

TEST_F(NoteMarkup, FlattensShapesInOrder) {
    const struct {
        std::string_view markup, expected;
    } rows[] = {
        {"<ul><li><div>a</div></li></ul>", "<li>a</li>"},
        {"<ul><li><div>a</div><div>b</div></li></ul>", "<li>a</div><div>b</li>"},
        {"<ul><li><div style=\"x\">a</div></li></ul>", "<li><div style=\"x\">a</li>"},
        {"<div>a</div><div><br/></div><div>b</div>", "<div>a</div><br /><div>b</div>"},
        {"<div>a</div><div><br/></div><div><br/></div><div>b</div>",
         "<div>a</div><br /><div><br></br></div><div>b</div>"},
        {"<div>a</div><div><br/></div>", "<div>a</div><div><br></br></div>"},
        {"<div>a</div> <div><br/></div><div>b</div>", "<div>a</div> <div><br></br></div><div>b</div>"},
        {"<hr/>", "***QLTDIVIDER***"},
        {"<hr style=\"x\"/>", "<hr style=\"x\"></hr>"},
    };
    for (const auto& row : rows) {
        std::string expected(row.expected);
        if (row.markup.starts_with("<ul>")) expected = "<ul>" + expected + "</ul>";
        // As the page's parser reads the expected form.
        auto document = platform::XMLDocument::initWithXMLString(
            "<html><head></head><body>" + expected + "</body></html>", platform::XMLDocumentParsing::tidyHTML);
        std::string read = between(document->page(), "<body>", "</body>");
        const auto unindented = [](std::string text) {
            std::erase(text, '\n');
            std::string out;
            for (const char c : text)
                if (c != ' ' || (!out.empty() && out.back() != ' ' && out.back() != '>')) out += c;
            return out;
        };
        EXPECT_EQ(unindented(body(fmt::format("<en-note>{}</en-note>", row.markup))), unindented(read)) << row.markup;
    }
}

TEST_F(NoteMarkup, KeepsRulesWithoutDividers) {
    EXPECT_EQ(body("<en-note>a<hr/>b</en-note>", ConvertDividers::no), "a<hr />b");
    EXPECT_EQ(body("<en-note>a<hr/>b</en-note>", ConvertDividers::yes), "a***QLTDIVIDER***b");
}

// ---- the template

TEST_F(NoteMarkup, FillsTheTemplate) {
    item_.title = u"Title";
    const std::string made = page("<en-note>body</en-note>").value();
    EXPECT_NE(made.find("<title>Title</title>"), std::string::npos) << made;
    EXPECT_NE(made.find(QLTNoteTextStyle::bodyNoteTextStyle()->font().fontName()), std::string::npos) << made;
    EXPECT_NE(made.find(fmt::format("font-size: {:.0f}px", QLTNoteTextStyle::bodyNoteTextStyle()->font().pointSize())),
              std::string::npos);
    EXPECT_EQ(made.find("QLT "), std::string::npos);
    EXPECT_EQ(made.find("<!--"), std::string::npos);
}

TEST_F(NoteMarkup, ReplacesEveryMarkerOfTheTemplateButNoneThatTheNoteBrings) {
    environment_->dataDirectory = scratch_.path().string();
    tests::writeFile(scratch_ / "Template.html",
                     "<html><head><title><!-- QLTTITLE --></title></head><body><!-- QLTBODY -->|<!-- QLTBODY -->|<!-- "
                     "QLTTITLE --></body></html>");
    item_.title = u"<!-- QLTBODY -->";
    EXPECT_EQ(body("<en-note>x<!-- QLTTITLE --></en-note>"), "x<!-- QLTTITLE -->|x<!-- QLTTITLE -->|<!-- QLTBODY -->");
}

TEST_F(NoteMarkup, TakesATitleAsItStands) {
    const struct {
        std::u16string title;
        std::string_view expected;
    } rows[] = {
        {u"Fish & chips", "<title>Fish &amp; chips</title>"},
        {u"a < b", "<title>a &lt; b</title>"},
        {u"1 &lt; 2", "<title>1 &lt; 2</title>"},
        {u"List<String>", "<title>List&lt;String&gt;</title>"},
        {u"use <!-- here", "<title>use &lt;!-- here</title>"},
        {u"<![CDATA[", "<title>&lt;![CDATA[</title>"},
        {u"</html>", "<title>&lt;/html&gt;</title>"},
    };
    for (const auto& row : rows) {
        item_.title = row.title;
        const std::string made = page("<en-note>x</en-note>").value();
        EXPECT_NE(made.find(row.expected), std::string::npos) << made;
        EXPECT_EQ(body("<en-note>text</en-note>"), "text");
    }
}

TEST_F(NoteMarkup, FailsWithoutATemplate) {
    environment_->dataDirectory = (scratch_ / "nowhere").string();
    const auto made = page("<en-note>x</en-note>");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, platform::kCocoaErrorDomain);
    EXPECT_EQ(made.error().code, 260);
    EXPECT_NE(made.error().localizedDescription().find("Template.html"), std::string::npos);
}

TEST_F(NoteMarkup, ReadsTheTemplateOfADataDirectoryOnce) {
    const auto pageWith = [&](std::string_view directory) {
        environment_->dataDirectory = (scratch_ / directory).string();
        const auto made = page("<en-note>x</en-note>");
        return made ? *made : made.error().description();
    };
    for (const std::string directory : {"first", "second"}) {
        std::filesystem::create_directory(scratch_ / directory);
        EXPECT_NE(pageWith(directory).find("Template.html"), std::string::npos); // not remembered as missing
        tests::writeFile(scratch_ / directory / "Template.html", "<p>" + directory + "</p><!-- QLTBODY -->");
    }
    EXPECT_NE(pageWith("first").find("<p>first</p>"), std::string::npos);
    std::filesystem::remove(scratch_ / "first" / "Template.html");
    EXPECT_NE(pageWith("first").find("<p>first</p>"), std::string::npos);
    EXPECT_NE(pageWith("second").find("<p>second</p>"), std::string::npos);
}

TEST_F(NoteMarkup, KeepsWhatEvernoteWritesIntoStyles) {
    const std::string_view block = "<div style=\"--en-codeblock:true;box-sizing: border-box;\"><div>a  b</div></div>";
    EXPECT_NE(body(fmt::format("<en-note>{}</en-note>", block)).find("--en-codeblock:true;"), std::string::npos);
}

// ---- cost

TEST_F(NoteMarkup, IsLinearInMediaCheckboxesAndLists) {
    addResource(pngBytes(), "image/png", u"a.png");
    std::string markup = "<en-note>";
    for (int index = 0; index < 20'000; ++index)
        markup += media(pngBytes()) + "<ul><li><div><en-todo/>x</div></li></ul><en-crypt>y</en-crypt><hr/>";
    markup += "</en-note>";
    const auto start = std::chrono::steady_clock::now();
    const auto document = noteDocument(markup);
    NotePage made = notePageFromNoteElement(item_, *scratchDirectory_, *document.rootElement(), UseInlineImages::yes,
                                            ConvertDividers::yes)
                        .value();
    ASSERT_TRUE(made.parse());
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 60);
    EXPECT_GT(made.markup().size(), 1'000'000U);
}

TEST_F(NoteMarkup, NamesManyFilesOfOneNameInLinearTime) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    std::string markup = "<en-note>";
    for (int index = 0; index < 3'000; ++index) markup += media(kPDF);
    const std::string made = innerText(markup + "</en-note>");
    EXPECT_TRUE(made.ends_with(marker("a%202999.pdf"))) << made.substr(made.size() - 100);
    EXPECT_EQ(scratchFiles().size(), 3'000U);
}

TEST_F(NoteMarkup, CarriesALargeImageThroughWithoutManyCopies) {
    constexpr std::size_t kSize = 20'000'000;
    const std::string bytes = pngBytes() + std::string(kSize, 'x');
    addResource(bytes, "image/png", u"large.png");
    [[maybe_unused]] const std::size_t before = tests::peakMemory();
    const std::string made = page("<en-note>" + media(bytes) + "</en-note>").value();
    EXPECT_GT(made.size(), kSize * 4 / 3);
    // The decoded bytes and the page, which grows as it is filled.
#ifndef __SANITIZE_ADDRESS__ // which holds on to what has been freed
    EXPECT_LT(tests::peakMemory() - before, 6 * kSize);
#endif
}

TEST_F(NoteMarkup, PassesADataURLOfTheNoteOn) {
    const std::string url = "data:image/png;base64," + std::string(20'000'000, 'A');
    [[maybe_unused]] const std::size_t before = tests::peakMemory();
    const std::string made = page("<en-note><img src=\"" + url + "\"/></en-note>").value();
    EXPECT_NE(made.find(url), std::string::npos);
#ifndef __SANITIZE_ADDRESS__ // which holds on to what has been freed
    EXPECT_LT(tests::peakMemory() - before, 10 * url.size());
#endif
}

} // namespace
} // namespace quillet
