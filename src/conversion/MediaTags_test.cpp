// What becomes of media tags: images, markers of attachments, words for what is missing, and files.
#include "conversion/MediaTags.h"

#include <string>

#include "conversion/ConversionErrors.h"
#include "tests/support/NoteMarkupFixture.h"

namespace quillet {
namespace {

using platform::Error;
using platform::Result;

class MediaTags : public NoteMarkupFixture {};

TEST_F(MediaTags, PutsAnImageInPlaceOfItsTag) {
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

TEST_F(MediaTags, TakesTheTypeOfTheTagForTheImage) {
    addResource(pngBytes(), "application/octet-stream", u"a.png");
    EXPECT_TRUE(innerText("<en-note>" + media(pngBytes(), "type=\"image/jpeg\"") + "</en-note>")
                    .starts_with("<img src=\"data:image/jpeg;base64,"));
    EXPECT_EQ(innerText("<en-note>" + media(pngBytes()) + "</en-note>"), marker("a.png"));
    EXPECT_EQ(innerText("<en-note>" + media(pngBytes(), "type=\"\"") + "</en-note>"), marker("a%201.png"));
}

TEST_F(MediaTags, WritesImagesThatAreNotInline) {
    addResource(pngBytes(), "image/png", u" my image.png\n");
    const std::string tag = media(pngBytes(), "width=\"3\"");
    EXPECT_EQ(innerText("<en-note>" + tag + tag + "</en-note>", UseInlineImages::no),
              "<img width=\"3\" src=\"my image.png\"></img><img width=\"3\" src=\"my image 1.png\"></img>");
    EXPECT_EQ(scratchFiles(), (std::vector<std::string>{"my image 1.png", "my image.png"}));
    EXPECT_EQ(tests::readFile(destination_ / item_.identifier / "my image.png"), pngBytes());
}

TEST_F(MediaTags, PutsAMarkerInPlaceOfAnyOtherAttachment) {
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

TEST_F(MediaTags, NamesANamelessAttachmentByItsIdentifier) {
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

TEST_F(MediaTags, GivesEachOccurrenceAFileOfItsOwn) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    addResource(kPDF, "application/pdf", u"same bytes.pdf"); // the first with a hash wins
    const std::string tag = media(kPDF);
    EXPECT_EQ(innerText("<en-note>" + tag + tag + tag + "</en-note>"),
              marker("a.pdf") + marker("a%201.pdf") + marker("a%202.pdf"));
    EXPECT_EQ(scratchFiles(), (std::vector<std::string>{"a 1.pdf", "a 2.pdf", "a.pdf"}));
}

TEST_F(MediaTags, SaysThatAnAttachmentIsMissing) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    const std::string upper = "<en-media hash=\"" + std::string(32, 'A') + "\" type=\"image/png\"/>";
    EXPECT_EQ(innerText("<en-note><p>a " + upper + " b</p></en-note>"), "<p>a [Missing Attachment] b</p>");
    EXPECT_EQ(innerText("<en-note><en-media type=\"image/png\"/></en-note>"), "[Missing Attachment]");
    EXPECT_EQ(innerText("<en-note><en-media hash=\"\"/></en-note>"), "[Missing Attachment]");
    EXPECT_TRUE(scratchFiles().empty());
}

TEST_F(MediaTags, SaysWhichAttachmentsTheNoteDoesNotShow) {
    addResource(kPDF, "application/pdf", u" shown.pdf");
    addResource(kPDF, "application/pdf", u"same bytes.pdf"); // the first with a hash is the one that is shown
    addResource("zip", "application/zip", u"");
    EXPECT_EQ(innerText("<en-note>" + media(kPDF) + "</en-note>"), marker("shown.pdf"));
    EXPECT_FALSE(hasLogged("\"shown.pdf\""));
    EXPECT_TRUE(hasLogged("The note does not show its attachment \"same bytes.pdf\", which is left out."));
    EXPECT_TRUE(hasLogged("attachment \"" + item_.resources.back().identifier + ".zip\""));
}

TEST_F(MediaTags, SaysThatANoteWithoutMediaShowsNoAttachment) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    EXPECT_EQ(innerText("<en-note>text</en-note>"), "text");
    EXPECT_TRUE(hasLogged("The note does not show its attachment \"a.pdf\", which is left out."));
}

TEST_F(MediaTags, ComparesHashesExactly) {
    addResource(kPDF, "application/pdf", u"a.pdf");
    std::string hash = md5Of(kPDF);
    for (char& digit : hash) digit = static_cast<char>(std::toupper(digit));
    EXPECT_EQ(innerText("<en-note><en-media hash=\"" + hash + "\"/></en-note>"), "[Missing Attachment]");
}

TEST_F(MediaTags, PassesOverAResourceWithoutAHash) {
    item_.resources.emplace_back().mime = "image/png"; // no data at all
    item_.resources.emplace_back().appendBase64Data("AAA");
    addResource(kPDF, "application/pdf", u"a.pdf");
    EXPECT_EQ(innerText("<en-note>" + media(kPDF) + "</en-note>"), marker("a.pdf"));
    EXPECT_TRUE(hasLogged("Couldn't get hash: No content data for resource."));
    EXPECT_TRUE(hasLogged("Couldn't get hash: Invalid content data for resource."));
}

TEST_F(MediaTags, TakesATagWithoutAttributesForNoMedia) {
    EXPECT_EQ(innerText("<en-note>a<en-media/>b</en-note>"), "a<en-media></en-media>b");
}

TEST_F(MediaTags, FailsForATagThatIsNoElement) {
    const auto made = inner("<en-note><en-media hash=\"x\"><en-media hash=\"y\"/></en-media></en-note>");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, platform::kXMLParserErrorDomain);
}

TEST_F(MediaTags, LeavesTextThatLooksLikeTagsAlone) {
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

TEST_F(MediaTags, FailsWhenAnAttachmentCannotBeWritten) {
    addResource("zip", "application/zip", u"first.zip");
    addResource(kPDF, "application/pdf", u"a.pdf");
    ASSERT_TRUE(inner("<en-note>" + media("zip") + "</en-note>"));
    std::filesystem::remove_all(destination_ / item_.identifier);
    const auto made = inner("<en-note>" + media(kPDF) + "</en-note>");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, platform::kCocoaErrorDomain);
    EXPECT_NE(made.error().localizedDescription().find("a.pdf"), std::string::npos);
}

} // namespace
} // namespace quillet
