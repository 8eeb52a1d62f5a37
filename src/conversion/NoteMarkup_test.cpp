// From note markup to the page: media, checkboxes, encrypted blocks, shapes, the template.
#include "conversion/NoteMarkup.h"

#include <chrono>
#include <cstdlib>
#include <new>
#include <optional>
#include <string>

#include <fmt/core.h>

#include "conversion/ConversionErrors.h"
#include "conversion/NoteScratch.h"
#include "platform/base/Error.h"
#include "platform/defaults/UserDefaults.h"
#include "tests/support/NoteFixture.h"
#include "tests/support/PeakMemory.h"

namespace quillet {
namespace {

using platform::Error;
using platform::Result;

constexpr std::string_view kPDF = "%PDF-1.4 not much of one";

std::string between(std::string_view text, std::string_view before, std::string_view after) {
    const std::size_t start = text.find(before);
    const std::size_t end = text.rfind(after);
    if (start == text.npos || end == text.npos) return "no body in: " + std::string(text);
    return std::string(text.substr(start + before.size(), end - start - before.size()));
}

class NoteMarkup : public NoteFixture {
  protected:
    void SetUp() override {
        NoteFixture::SetUp();
        directory_.emplace(platform::OutputDirectory::openURL(destinationURL()).value());
        scratchDirectory_.emplace(*directory_, item_.identifier);
    }

    Result<std::string> inner(std::string_view markup, UseInlineImages inlineImages = UseInlineImages::yes) {
        return XMLStringFromNoteElement(item_, *scratchDirectory_, *noteDocument(markup).rootElement(), inlineImages);
    }
    std::string innerText(std::string_view markup, UseInlineImages inlineImages = UseInlineImages::yes) {
        const auto made = inner(markup, inlineImages);
        return made ? *made : made.error().description();
    }
    Result<std::string> page(std::string_view markup, ConvertDividers dividers = ConvertDividers::yes) {
        return noteXHTMLStringFromNoteElement(item_, *scratchDirectory_, *noteDocument(markup).rootElement(),
                                              UseInlineImages::yes, dividers);
    }
    // What stands in the page's body, without white space at its ends.
    std::string body(std::string_view markup, ConvertDividers dividers = ConvertDividers::yes) {
        const auto made = page(markup, dividers);
        if (!made) return made.error().description();
        std::string text = between(*made, "<body>", "</body>");
        text.erase(0, text.find_first_not_of(" \n"));
        text.erase(text.find_last_not_of(" \n") + 1);
        return text;
    }
    std::vector<std::string> scratchFiles() const {
        const std::filesystem::path directory = destination_ / item_.identifier;
        return std::filesystem::exists(directory) ? namesIn(directory) : std::vector<std::string>();
    }

    static std::string marker(std::string_view name) {
        return fmt::format("***QLTATTACHMENT  {}  QLTATTACHMENT***", name);
    }

    std::optional<platform::OutputDirectory> directory_;
    std::optional<NoteScratch> scratchDirectory_;
};

// ---- media

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

TEST_F(NoteMarkup, PutsAnImageInPlaceOfItsTag) {
    addResource(pngBytes(), "image/png", u"a.png");
    std::string base64;
    platform::appendBase64(base64, pngBytes());
    const std::string hash = "hash=\"" + md5Of(pngBytes()) + "\"";
    const std::string source = "src=\"data:image/png;base64," + base64 + "\"></img>";
    const struct {
        std::string tag, expected;
    } rows[] = {
        {"<en-media " + hash + " type=\"image/png\"/>", "<img " + source},
        {"<en-media " + hash + " type=\"image/png\"></en-media>", "<img " + source},
        {"<en-media " + hash + " type=\"image/png\">x<b>y</b></en-media>", "<img " + source},
        {"<en-media " + hash + "/>", "<img " + source}, // the resource's own type
        {"<en-media type=\"image/png\" " + hash + " width=\"300\"/>", "<img width=\"300\" " + source},
        {"<en-media height=\"50px\" " + hash + " width=\"100%\"/>", "<img width=\"100%\" height=\"50px\" " + source},
        {"<en-media style=\"--x:1;\" " + hash + " height=\"\"/>", "<img height=\"\" " + source},
        {"<en-media alt=\"a > b / &lt;\" " + hash + "/>", "<img " + source},
    };
    for (const auto& row : rows) EXPECT_EQ(innerText("<en-note>1" + row.tag + "2</en-note>"), "1" + row.expected + "2");
    EXPECT_TRUE(scratchFiles().empty());
}

TEST_F(NoteMarkup, TakesTheTypeOfTheTagForTheImage) {
    addResource(pngBytes(), "application/octet-stream", u"a.png");
    EXPECT_TRUE(innerText("<en-note>" + media(pngBytes(), "type=\"image/jpeg\"") + "</en-note>")
                    .starts_with("<img src=\"data:image/jpeg;base64,"));
    EXPECT_EQ(innerText("<en-note>" + media(pngBytes()) + "</en-note>"), marker("a.png"));
    EXPECT_EQ(innerText("<en-note>" + media(pngBytes(), "type=\"\"") + "</en-note>"), marker("a%201.png"));
}

TEST_F(NoteMarkup, WritesImagesThatAreNotInline) {
    addResource(pngBytes(), "image/png", u" my image.png\n");
    const std::string tag = media(pngBytes(), "width=\"3\"");
    EXPECT_EQ(innerText("<en-note>" + tag + tag + "</en-note>", UseInlineImages::no),
              "<img width=\"3\" src=\"my image.png\"></img><img width=\"3\" src=\"my image 1.png\"></img>");
    EXPECT_EQ(scratchFiles(), (std::vector<std::string>{"my image 1.png", "my image.png"}));
    EXPECT_EQ(tests::readFile(destination_ / item_.identifier / "my image.png"), pngBytes());
}

TEST_F(NoteMarkup, PutsAMarkerInPlaceOfAnyOtherAttachment) {
    const struct {
        std::u16string filename;
        std::string mime, encoded, file;
    } rows[] = {
        {u"q3.pdf", "application/pdf", "q3.pdf", "q3.pdf"},
        {u"  q 4.pdf\n", "application/pdf", "q%204.pdf", "q 4.pdf"},
        {u"R&D <1>.pdf", "application/pdf", "R&amp;D%20%3C1%3E.pdf", "R&D <1>.pdf"},
        {u"100%.pdf", "application/pdf", "100%25.pdf", "100%.pdf"},
        {u"a%20b.pdf", "application/pdf", "a%2520b.pdf", "a%20b.pdf"},
        {u"Übersicht 京.pdf", "application/pdf", "%C3%9Cbersicht%20%E4%BA%AC.pdf", "Übersicht 京.pdf"},
        {u"x QLTATTACHMENT***.pdf", "application/pdf", "x%20QLTATTACHMENT***.pdf", "x QLTATTACHMENT***.pdf"},
        {u".hidden", "text/plain", ".hidden", ".hidden"},
        {u"wrong.pdf", "image/webp-not", "wrong.pdf", "wrong.pdf"},
        // Not one path component: made into one.
        {u"../../etc/passwd", "text/plain", "---..-etc-passwd", "---..-etc-passwd"},
        {u"dir/in side.txt", "text/plain", "dir-in%20side.txt", "dir-in side.txt"},
        {u"..", "text/plain", "--", "--"},
        {u".", "text/plain", "-", "-"},
        {u"/", "text/plain", "-%201", "- 1"}, // the hyphen is taken
    };
    int number = 0;
    for (const auto& row : rows) {
        const std::string bytes = std::to_string(++number);
        addResource(bytes, row.mime, row.filename);
        EXPECT_EQ(innerText("<en-note>" + media(bytes) + "</en-note>"), marker(row.encoded));
        EXPECT_EQ(tests::readFile(destination_ / item_.identifier / row.file), bytes);
    }
    EXPECT_EQ(outputs().size(), 1U); // nothing beside the scratch directory
}

TEST_F(NoteMarkup, NamesANamelessAttachmentByItsIdentifier) {
    const struct {
        std::u16string filename;
        std::string mime, extension;
    } rows[] = {
        {u"", "application/pdf", ".pdf"},
        {u" \n\t", "application/zip", ".zip"},
        {u"", "", ""},
        {u"", "application/x-never-heard-of", ""},
    };
    int number = 0;
    for (const auto& row : rows) {
        const std::string bytes = std::to_string(++number);
        const std::string identifier = addResource(bytes, row.mime, row.filename).identifier;
        EXPECT_EQ(innerText("<en-note>" + media(bytes) + "</en-note>"), marker(identifier + row.extension)) << row.mime;
    }
    const std::string identifier = addResource(pngBytes(), "image/png", u"").identifier;
    EXPECT_EQ(innerText("<en-note>" + media(pngBytes()) + "</en-note>", UseInlineImages::no),
              "<img src=\"" + identifier + ".png\"></img>");
}

TEST_F(NoteMarkup, GivesEachOccurrenceAFileOfItsOwn) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    addResource(kPDF, "application/pdf", u"same bytes.pdf"); // the first with a hash wins
    const std::string tag = media(kPDF);
    EXPECT_EQ(innerText("<en-note>" + tag + tag + tag + "</en-note>"),
              marker("a.pdf") + marker("a%201.pdf") + marker("a%202.pdf"));
    EXPECT_EQ(scratchFiles(), (std::vector<std::string>{"a 1.pdf", "a 2.pdf", "a.pdf"}));
}

TEST_F(NoteMarkup, SaysThatAnAttachmentIsMissing) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    const std::string upper = "<en-media hash=\"" + std::string(32, 'A') + "\" type=\"image/png\"/>";
    EXPECT_EQ(innerText("<en-note><p>a " + upper + " b</p></en-note>"), "<p>a [Missing Attachment] b</p>");
    EXPECT_EQ(innerText("<en-note><en-media type=\"image/png\"/></en-note>"), "[Missing Attachment]");
    EXPECT_EQ(innerText("<en-note><en-media hash=\"\"/></en-note>"), "[Missing Attachment]");
    EXPECT_TRUE(scratchFiles().empty());
}

TEST_F(NoteMarkup, SaysWhichAttachmentsTheNoteDoesNotShow) {
    addResource(kPDF, "application/pdf", u" shown.pdf");
    addResource(kPDF, "application/pdf", u"same bytes.pdf"); // the first with a hash is the one that is shown
    addResource("zip", "application/zip", u"");
    EXPECT_EQ(innerText("<en-note>" + media(kPDF) + "</en-note>"), marker("shown.pdf"));
    EXPECT_FALSE(hasLogged("\"shown.pdf\""));
    EXPECT_TRUE(hasLogged("The note does not show its attachment \"same bytes.pdf\", which is left out."));
    EXPECT_TRUE(hasLogged("attachment \"" + item_.resources.back().identifier + ".zip\""));
}

TEST_F(NoteMarkup, SaysThatANoteWithoutMediaShowsNoAttachment) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    EXPECT_EQ(innerText("<en-note>text</en-note>"), "text");
    EXPECT_TRUE(hasLogged("The note does not show its attachment \"a.pdf\", which is left out."));
}

TEST_F(NoteMarkup, ComparesHashesExactly) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    std::string hash = md5Of(kPDF);
    for (char& digit : hash) digit = static_cast<char>(std::toupper(digit));
    EXPECT_EQ(innerText("<en-note><en-media hash=\"" + hash + "\"/></en-note>"), "[Missing Attachment]");
}

TEST_F(NoteMarkup, PassesOverAResourceWithoutAHash) {
    item_.resources.emplace_back().mime = "image/png"; // no data at all
    item_.resources.emplace_back().appendBase64Data("AAA");
    addResource(kPDF, "application/pdf", u"a.pdf");
    EXPECT_EQ(innerText("<en-note>" + media(kPDF) + "</en-note>"), marker("a.pdf"));
    EXPECT_TRUE(hasLogged("Couldn't get hash: No content data for resource."));
    EXPECT_TRUE(hasLogged("Couldn't get hash: Invalid content data for resource."));
}

TEST_F(NoteMarkup, TakesATagWithoutAttributesForNoMedia) {
    EXPECT_EQ(innerText("<en-note>a<en-media/>b</en-note>"), "a<en-media></en-media>b");
}

TEST_F(NoteMarkup, FailsForATagThatIsNoElement) {
    const auto made = inner("<en-note><en-media hash=\"x\"><en-media hash=\"y\"/></en-media></en-note>");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, platform::kXMLParserErrorDomain);
}

TEST_F(NoteMarkup, LeavesTextThatLooksLikeTagsAlone) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    const struct {
        std::string_view markup;
    } rows[] = {
        {"<div>&lt;en-media hash=\"x\"/&gt; &lt;en-todo/&gt;</div>"},
        {"<!-- <en-media hash=\"x\"> /> <en-todo> <en-crypt> -->"},
        {"<div title=\"&lt;en-todo /&gt;\">/&gt;</div>"},
    };
    for (const auto& row : rows) EXPECT_EQ(innerText(fmt::format("<en-note>{}</en-note>", row.markup)), row.markup);
    EXPECT_EQ(body("<en-note><![CDATA[<en-todo/> & <en-media >]]></en-note>"),
              "&lt;en-todo/&gt; &amp; &lt;en-media &gt;");
    EXPECT_EQ(innerText("<en-note>" + media(kPDF) + "<!-- <br/> --></en-note>"), marker("a.pdf") + "<!-- <br/> -->");
}

TEST_F(NoteMarkup, FailsWhenAnAttachmentCannotBeWritten) {
    addResource("zip", "application/zip", u"first.zip");
    addResource(kPDF, "application/pdf", u"a.pdf");
    ASSERT_TRUE(inner("<en-note>" + media("zip") + "</en-note>"));
    std::filesystem::remove_all(destination_ / item_.identifier);
    const auto made = inner("<en-note>" + media(kPDF) + "</en-note>");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, platform::kCocoaErrorDomain);
    EXPECT_NE(made.error().localizedDescription().find("a.pdf"), std::string::npos);
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
