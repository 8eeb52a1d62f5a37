// Which converter a note goes to, and what its entry says.
#include "service/NoteDispatch.h"

#include "conversion/ConversionErrors.h"
#include "conversion/NoteOutput.h"
#include "platform/base/Error.h"
#include "tests/support/NoteFixture.h"

namespace quillet {
namespace {

using platform::Result;
using platform::Value;

class NoteDispatch : public NoteFixture {
  protected:
    Result<ItemEntry> dispatch(std::string_view content) {
        item_.contentData = content;
        NoteOutput output(destinationURL());
        return getItemDict(item_, output);
    }
    // The name of the file that the note became, or the error.
    std::string written(std::string_view content) {
        const auto entry = dispatch(content);
        if (!entry) return entry.error().description();
        const auto url = platform::URL::fromString(entry->at("fileURL").utf8());
        EXPECT_TRUE(std::filesystem::exists(url->path()));
        std::string name = url->lastPathComponent();
        std::filesystem::remove_all(destination_ / name);
        return name;
    }
};

// One attachment alone becomes a plain file; anything beside it makes a note.
TEST_F(NoteDispatch, WritesASingleAttachmentAsAFile) {
    item_.title = u"Ticket";
    addResource("data", "application/pdf", u"q3.pdf");
    const struct {
        std::string_view before, after;
        bool isFile;
    } rows[] = {
        {"", "", true},
        {"<br/>", "<br/>", true},
        {"<div>", "</div>", true},
        {"<div><br/></div><div><br/>", "<br/></div><br/>", true},
        {" \n\t", "\n", true},
        {"<div>\n", "\n</div>\n<div></div>", true},
        {"<!-- a comment -->", "", true},
        {"<div><!-- a comment -->", "</div>", true},
        {"", "<span></span>", true}, // the first child is the attachment: what follows is not looked at
        {"", "<table></table>", true},
        {"<span></span>", "", false},
        {"<span>", "</span>", false},
        {"<p>", "</p>", false},
        {"<div><div>", "</div></div>", false},
        {"<div><span></span>", "</div>", false},
        {"<div>", "</div><div><hr/></div>", false},
        {"<div><hr/></div><div>", "</div><div><br/></div>", false},
        {"<div>", "</div><hr/>", false},
        {"<en-todo/>", "", false},
        {"text", "", false},
        {"", "text", false},
        {"<div>", "text</div>", false},
        {"&nbsp;", "", true}, // white space too
        {"<div>", "</div><div><en-media hash=\"x\"/></div>", false},
        {"<br/>", "<en-media hash=\"x\"/>", false},
        {"", "<en-media hash=\"x\"/>", true},
    };
    for (const auto& row : rows) {
        const std::string content =
            "<en-note>" + std::string(row.before) + media("data") + std::string(row.after) + "</en-note>";
        EXPECT_EQ(written(content), row.isFile ? "Ticket.pdf" : "Ticket.qltnote") << content;
    }
}

TEST_F(NoteDispatch, WritesANoteForTwoAttachmentsOrNone) {
    item_.title = u"Note";
    EXPECT_EQ(written("<en-note></en-note>"), "Note.qltnote");
    addResource("data", "application/pdf", u"q3.pdf");
    EXPECT_EQ(written("<en-note></en-note>"), "Note.qltnote");
    EXPECT_EQ(written("<en-note><div></div></en-note>"), "Note.qltnote");
    addResource("more", "application/pdf", u"q4.pdf");
    EXPECT_EQ(written("<en-note>" + media("data") + "</en-note>"), "Note.qltnote");
}

TEST_F(NoteDispatch, MakesANoteWhenTheSingleAttachmentHasNoBytes) {
    item_.title = u"Ticket";
    item_.resources.emplace_back().mime = "application/pdf";
    EXPECT_EQ(written("<en-note><en-media hash=\"x\"/></en-note>"), "Ticket.qltnote");
    EXPECT_EQ(written("<en-note><div><en-media hash=\"x\"/></div></en-note>"), "Ticket.qltnote");
}

TEST_F(NoteDispatch, SendsClippingsToPages) {
    item_.title = u"Clip";
    const struct {
        std::string_view source;
        bool asNotes;
        std::string_view expected;
    } rows[] = {
        {"web.clip", false, "Clip.html"},    {"web.clip7", false, "Clip.html"},      {"web.clip", true, "Clip.qltnote"},
        {"Web.clip", false, "Clip.qltnote"}, {"my web.clip", false, "Clip.qltnote"}, {"web", false, "Clip.qltnote"},
        {"", false, "Clip.qltnote"},
    };
    for (const auto& row : rows) {
        item_.noteAttributes.source = row.source;
        item_.saveWebClippingsAsNotes = row.asNotes;
        EXPECT_EQ(written("<en-note>x</en-note>"), row.expected) << row.source;
    }
    EXPECT_FALSE(hasLogged("Couldn't create HTML"));
}

TEST_F(NoteDispatch, MakesANoteOfAClippingThatCannotBeAPage) {
    item_.title = u"Clip";
    item_.noteAttributes.source = "web.clip";
    addResource("data", "application/pdf", u"q3.pdf");
    EXPECT_EQ(written("<en-note>x" + media("data") + "</en-note>"), "Clip.qltnote");
    EXPECT_TRUE(hasLogged("Couldn't create HTML, creating note instead."));
}

TEST_F(NoteDispatch, MakesANoteOfAClippingWhoseTagSaysThatAnImageIsNone) {
    item_.title = u"Clip";
    item_.noteAttributes.source = "web.clip";
    addResource("data", "image/png", u"q3.pdf");
    ASSERT_TRUE(dispatch("<en-note>x" + media("data", "type=\"application/pdf\"") + "</en-note>"));
    EXPECT_TRUE(hasLogged("Couldn't create HTML, creating note instead."));
    EXPECT_EQ(outputs(), std::vector<std::string>{"Clip.qltnote"});
    EXPECT_EQ(tests::readFile(destination_ / "Clip.qltnote" / "q3.pdf"), "data");
}

TEST_F(NoteDispatch, FailsAClippingForAnyOtherError) {
    item_.title = u"Clip";
    item_.noteAttributes.source = "web.clip";
    const auto entry = dispatch("<en-note><en-todos/></en-note>");
    ASSERT_FALSE(entry);
    EXPECT_EQ(entry.error().domain, EvernoteXMLItemErrorDomain);
    EXPECT_EQ(entry.error().code, kInvalidTagErrorCode);
    EXPECT_TRUE(outputs().empty());
    EXPECT_FALSE(hasLogged("Couldn't create HTML"));
}

TEST_F(NoteDispatch, MakesAnEntryOfWhatTheNoteHas) {
    item_.title = u"Title \n";
    item_.noteAttributes.sourceURL = "https://example.org/a b";
    item_.tags = {u"b", u"", u"a"};
    const auto entry = dispatch("<en-note>x</en-note>");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->at("name"), Value("Title \n")); // as read
    EXPECT_EQ(entry->at("identifier"), Value(item_.identifier));
    EXPECT_EQ(entry->at("source"), Value("https://example.org/a b"));
    EXPECT_EQ(entry->at("tags"), Value(platform::Array{Value("b"), Value(""), Value("a")}));
    EXPECT_TRUE(entry->at("fileURL").utf8().starts_with("file:///"));
    EXPECT_EQ(entry->size(), 5U);
}

TEST_F(NoteDispatch, LeavesOutWhatTheNoteHasNot) {
    const auto entry = dispatch("<en-note>x</en-note>");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->size(), 3U);
    EXPECT_EQ(entry->at("name"), Value(""));
}

TEST_F(NoteDispatch, PutsWhateverStandsThereIntoANote) {
    item_.title = u"Odd";
    EXPECT_EQ(written("<div>no note element</div>"), "Odd.qltnote");
    EXPECT_EQ(written("<EN-NOTE>x</EN-NOTE>"), "Odd.qltnote");
    EXPECT_EQ(written("<en-note><p>not <b>closed</en-note>"), "Odd.qltnote");
    EXPECT_EQ(written("<?xml version=\"1.0\" encoding=\"UTF-8\"?><!DOCTYPE en-note SYSTEM "
                      "\"http://xml.evernote.com/pub/enml2.dtd\"><en-note>&nbsp;&copy;</en-note>"),
              "Odd.qltnote");
}

TEST_F(NoteDispatch, FailsWithoutContent) {
    for (const std::string_view content : {"", " \n", "no markup"}) {
        const auto entry = dispatch(content);
        ASSERT_FALSE(entry) << content;
        EXPECT_EQ(entry.error().domain, platform::kXMLParserErrorDomain);
    }
    EXPECT_TRUE(outputs().empty());
}

TEST_F(NoteDispatch, WorksInADirectoryOfTheNotesOwnAndRemovesIt) {
    item_.title = u"Note";
    addResource("zip", "application/zip", u"a.zip");
    ASSERT_TRUE(dispatch("<en-note>x" + media("zip") + "</en-note>"));
    ASSERT_TRUE(item_.intermediateHTMLDirectoryURL);
    EXPECT_EQ(item_.intermediateHTMLDirectoryURL->path(), (destination_ / item_.identifier).string());
    EXPECT_FALSE(std::filesystem::exists(destination_ / item_.identifier));
}

TEST_F(NoteDispatch, FailsWhenTheScratchDirectoryCannotBeMade) {
    item_.title = u"Note";
    tests::writeFile(destination_ / item_.identifier, "in the way");
    addResource("zip", "application/zip", u"a.zip");
    const auto entry = dispatch("<en-note>x" + media("zip") + "</en-note>");
    ASSERT_FALSE(entry);
    EXPECT_EQ(entry.error().domain, platform::kCocoaErrorDomain);
    EXPECT_EQ(entry.error().code, 516);
    EXPECT_EQ(outputs(), std::vector<std::string>{item_.identifier});
    EXPECT_EQ(tests::readFile(destination_ / item_.identifier), "in the way");
}

} // namespace
} // namespace quillet
