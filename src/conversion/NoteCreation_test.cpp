// The three kinds of output: their names, what they hold, what they carry, how they fail.
#include "conversion/NoteCreation.h"

#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

#include "conversion/ConversionErrors.h"
#include "conversion/NoteOutput.h"
#include "conversion/NoteScratch.h"
#include "documents/QLTNoteFile.h"
#include "platform/base/Error.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/ResourceValues.h"
#include "tests/support/NoteFixture.h"

namespace quillet {
namespace {

using platform::Date;
using platform::Result;
using platform::URL;

class NoteCreation : public NoteFixture {
  protected:
    using Creation = Result<URL> (*)(EvernoteXMLItem&, NoteScratch&, NoteOutput&, const platform::XMLElement&);

    Result<URL> make(Creation creation, std::string_view markup) {
        NoteOutput output(destinationURL());
        NoteScratch scratch(*output.directory().value(), item_.identifier);
        return creation(item_, scratch, output, *noteDocument(markup).rootElement());
    }
    // The file name of the note made of the markup, or the error.
    std::string noteName(std::string_view markup) { return shown(make(createNoteForElement, markup)); }
    std::string pageName(std::string_view markup) { return shown(make(createHTMLForElement, markup)); }
    std::string singleName() {
        NoteOutput output(destinationURL());
        return shown(processSingleResource(item_, output));
    }
    static std::string shown(const Result<URL>& made) {
        if (!made) return made.error().description();
        EXPECT_TRUE(std::filesystem::exists(made->path())) << made->path();
        return made->lastPathComponent();
    }
    platform::ResourceValues valuesOf(std::string_view name) const {
        return platform::resourceValuesOfItemAtURL(URL::fileURLWithPath((destination_ / name).string())).value();
    }
};

// ---- notes

TEST_F(NoteCreation, WritesAPackageNamedAfterTheNote) {
    item_.title = u"Shopping";
    EXPECT_EQ(noteName("<en-note><div>Milk</div></en-note>"), "Shopping.qltnote");
    EXPECT_EQ(namesIn(destination_ / "Shopping.qltnote"),
              (std::vector<std::string>{"NoteAttributes", "NoteText", "TXT.rtf"}));
    EXPECT_NE(tests::readFile(destination_ / "Shopping.qltnote" / "TXT.rtf").find("Milk"), std::string::npos);
    EXPECT_NE(tests::readFile(destination_ / "Shopping.qltnote" / "NoteText").find("Milk"), std::string::npos);
    EXPECT_EQ(outputs(), std::vector<std::string>{"Shopping.qltnote"});
}

TEST_F(NoteCreation, MakesFileNamesOfTitles) {
    const struct {
        std::u16string title;
        std::string expected;
    } rows[] = {
        {u"", "Untitled.qltnote"},
        {u" \n ", "Untitled 1.qltnote"},
        {u"a/b:c~d", "a-b-c-d.qltnote"},
        {u"../../etc/passwd", "---..-etc-passwd.qltnote"},
        {u"..", "---qltnote"},
        {u".hidden", "-hidden.qltnote"},
        {u"Ends in white space \n", "Ends in white space .qltnote"},
        {u"Vol. 2", "Vol. 2.qltnote"},
        {u"Vol. 2", "Vol. 2 1.qltnote"},
        {u"Vol. 2", "Vol. 2 2.qltnote"},
        {u"*?\"<>|\\", "*?\"<>|\\.qltnote"},
        {u"京都 🍵", "京都 🍵.qltnote"},
        {u"/", "-.qltnote"},
        {u"//", "--.qltnote"},
        {u"a/", "a.qltnote"},
    };
    for (const auto& row : rows) {
        item_.title = row.title;
        EXPECT_EQ(noteName("<en-note>x</en-note>"), row.expected);
    }
}

TEST_F(NoteCreation, CutsLongTitlesAndNumbersThem) {
    for (const std::u16string& unit : {std::u16string(u"t"), std::u16string(u"京"), std::u16string(u"🍵")}) {
        item_.title.clear();
        for (int index = 0; index < 300; ++index) item_.title += unit;
        std::vector<std::string> names;
        for (int index = 0; index < 3; ++index) names.push_back(noteName("<en-note>x</en-note>"));
        for (const auto& name : names) {
            EXPECT_LE(name.size(), 255U) << name;
            EXPECT_TRUE(name.ends_with(".qltnote")) << name;
        }
        EXPECT_TRUE(names[1].ends_with(" 1.qltnote")) << names[1];
        EXPECT_TRUE(names[2].ends_with(" 2.qltnote")) << names[2];
    }
    EXPECT_EQ(outputs().size(), 9U);
}

TEST_F(NoteCreation, NeverReplacesWhatIsThere) {
    item_.title = u"Taken";
    tests::writeFile(destination_ / "Taken.qltnote", "a file of somebody's");
    std::filesystem::create_symlink("/nonexistent", destination_ / "Taken 1.qltnote");
    std::filesystem::create_directory_symlink("/tmp", destination_ / "Taken 2.qltnote");
    EXPECT_EQ(noteName("<en-note>x</en-note>"), "Taken 3.qltnote");
    EXPECT_EQ(tests::readFile(destination_ / "Taken.qltnote"), "a file of somebody's");
}

TEST_F(NoteCreation, TurnsMarkersIntoAttachments) {
    item_.title = u"All";
    addResource(kPDF, "application/pdf", u"a b.pdf");
    addResource("data", "application/zip", u"c&d.zip");
    EXPECT_EQ(noteName("<en-note><div><en-todo checked=\"true\"/>done</div><div>" + media(kPDF) + "</div><hr/><div>" +
                       media("data") + "</div></en-note>"),
              "All.qltnote");
    EXPECT_EQ(namesIn(destination_ / "All.qltnote"),
              (std::vector<std::string>{"NoteAttributes", "NoteText", "TXT.rtf", "a b.pdf", "c&d.zip"}));
    EXPECT_EQ(tests::readFile(destination_ / "All.qltnote" / "c&d.zip"), "data");
}

// A fence in the text names a file like one that the conversion made; it gets nothing but what the note brought along.
TEST_F(NoteCreation, FailsForAFenceInTheTextThatNamesAnotherFile) {
    tests::writeFile(destination_ / "private.txt", "secret");
    for (const std::string_view name :
         {"..%2Fprivate.txt", "%2Fetc%2Fpasswd", "../private.txt", "private.txt", "", "%zz"}) {
        item_.title = u"Hostile";
        const auto made = make(createNoteForElement, "<en-note><div>***QLTATTACHMENT " + std::string(name) +
                                                         " QLTATTACHMENT***</div></en-note>");
        if (name.empty()) continue; // the reader joins the two blanks, and no fence is left
        ASSERT_FALSE(made) << name;
        EXPECT_EQ(made.error().domain, platform::kCocoaErrorDomain);
        EXPECT_EQ(made.error().code, 260);
    }
    EXPECT_EQ(noteName("<en-note><div>***QLTATTACHMENT without an end</div></en-note>"), "Hostile 1.qltnote");
    EXPECT_EQ(tests::readFile(destination_ / "private.txt"), "secret");
}

TEST_F(NoteCreation, LeavesNothingOfANoteThatFails) {
    item_.title = u"Broken";
    addResource(kPDF, "application/pdf", u"a.pdf");
    EXPECT_FALSE(make(createNoteForElement,
                      "<en-note>" + media(kPDF) + "<en-media hash=\"x\"><en-media hash=\"y\"/></en-media></en-note>"));
    EXPECT_TRUE(outputs().empty());
}

// ---- pages in place of notes

// Makes the HTML reader fail: it logs the address of a remote image, and the log throws.
class FailingReader {
  public:
    FailingReader() {
        saved_ = platform::setSystemLogSink([this](std::string_view entry) {
            if (entry.find("example.org") != entry.npos) throw std::runtime_error("the reader is broken");
            log += std::string(entry) + "\n";
        });
    }
    ~FailingReader() { platform::setSystemLogSink(saved_); }
    FailingReader(const FailingReader&) = delete;
    FailingReader& operator=(const FailingReader&) = delete;

    static std::string markup(std::string_view more) {
        return "<en-note><img src=\"https://example.org/x.png\"/>" + std::string(more) + "</en-note>";
    }
    std::string log;

  private:
    platform::SystemLogSink saved_;
};

TEST_F(NoteCreation, KeepsThePageOfANoteThatTheReaderRejects) {
    FailingReader reader;
    item_.title = u"Kept";
    item_.updated = Date::fromUnixTime(1'650'000'000);
    addResource(pngBytes(), "image/png", u"a.png");
    EXPECT_EQ(noteName(FailingReader::markup(media(pngBytes()))), "Kept.html");
    EXPECT_EQ(noteName(FailingReader::markup(media(pngBytes()))), "Kept 1.html");
    const std::string page = tests::readFile(destination_ / "Kept.html");
    EXPECT_NE(page.find("src=\"data:image/png;base64,iVBORw0KGgo"), std::string::npos) << page;
    EXPECT_EQ(valuesOf("Kept.html").contentModificationDate, item_.updated);
    const std::string line = "Couldn't convert HTML file to note: the reader is broken (NSCocoaErrorDomain 256)\n";
    EXPECT_EQ(reader.log, line + line);
    EXPECT_EQ(outputs(), (std::vector<std::string>{"Kept 1.html", "Kept.html"}));
}

TEST_F(NoteCreation, KeepsNoPageWithAnAttachmentThatIsNoImage) {
    FailingReader reader;
    item_.title = u"Lost";
    addResource(kPDF, "application/pdf", u"a.pdf");
    const auto made = make(createNoteForElement, FailingReader::markup(media(kPDF)));
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, EvernoteXMLItemErrorDomain);
    EXPECT_EQ(made.error().code, kNoPageErrorCode);
    EXPECT_TRUE(made.error().userInfo.empty());
    EXPECT_TRUE(reader.log.starts_with("Couldn't convert HTML file to note: "));
    EXPECT_TRUE(outputs().empty());
}

// Unlike every other name, that of a kept page is not sanitized.
TEST_F(NoteCreation, NamesAKeptPageAfterTheNote) {
    const struct {
        std::u16string title;
        std::string expected;
    } rows[] = {
        {u"", item_.identifier + ".html"},
        {u" a:b~c \n", "a:b~c \n.html"},
        {u"…", "….html"},
        {u".x", ".x.html"},
        {u"Vol. 2", "Vol. 2.html"},
        {u"\n ", ".html"},
    };
    for (const auto& row : rows) {
        FailingReader reader;
        item_.title = row.title;
        EXPECT_EQ(noteName(FailingReader::markup("")), row.expected);
    }
}

TEST_F(NoteCreation, FailsForAKeptPageThatWouldLeaveTheDestination) {
    for (const std::u16string_view title : {u"../../x", u"a/b", u"/etc/x"}) {
        FailingReader reader;
        item_.title = title;
        const auto made = make(createNoteForElement, FailingReader::markup(""));
        ASSERT_FALSE(made);
        EXPECT_EQ(made.error().code, 514);
        EXPECT_NE(reader.log.find("Couldn't copy fallback HTML file: "), std::string::npos) << reader.log;
    }
    EXPECT_TRUE(outputs().empty());
}

// ---- attributes

TEST_F(NoteCreation, StampsDatesAndTags) {
    item_.title = u"Stamped";
    item_.created = Date::fromUnixTime(1'600'000'000);
    item_.updated = Date::fromUnixTime(1'650'000'000);
    item_.tags = {u"two words", u"", u"a,b"};
    ASSERT_EQ(noteName("<en-note>x</en-note>"), "Stamped.qltnote");
    const auto values = valuesOf("Stamped.qltnote");
    EXPECT_EQ(values.hasHiddenExtension, true);
    EXPECT_EQ(values.isPackage, true);
    EXPECT_EQ(values.creationDate, item_.created);
    EXPECT_EQ(values.contentModificationDate, item_.updated);
    EXPECT_EQ(values.tagNames, item_.tags);
}

TEST_F(NoteCreation, WritesThePackageWhenItsAttributesAreRefusedAndSaysWhich) {
    item_.title = u"Refused";
    item_.created = Date::fromUnixTime(1'600'000'000);
    item_.tags = {std::u16string(70'000, u'x')}; // longer than any attribute may be
    EXPECT_EQ(noteName("<en-note>x</en-note>"), "Refused.qltnote");
    EXPECT_EQ(valuesOf("Refused.qltnote").creationDate, item_.created);
    ASSERT_EQ(log_.size(), 1U);
    EXPECT_TRUE(log_.front().starts_with("Couldn't set resource values on file://")) << log_.front();
    EXPECT_TRUE(log_.front().contains("/Refused.qltnote: user.xdg.tags (")) << log_.front();
}

TEST_F(NoteCreation, StampsNothingThatTheNoteHasNot) {
    item_.title = u"Plain";
    platform::ResourceValues expected;
    expected.hasHiddenExtension = true;
    EXPECT_EQ(resourceValuesForItem(item_), expected);
}

// No file system takes an attribute of more than 64 KiB.
TEST_F(NoteCreation, NamesAnOutputThatCannotCarryItsAttributesAndKeepsIt) {
    item_.tags = {std::u16string(100'000, u't')};
    addResource(kPDF, "application/pdf", u"q3.pdf");
    item_.title = u"My report";
    EXPECT_EQ(noteName("<en-note>x</en-note>"), "My report.qltnote");
    EXPECT_EQ(singleName(), "My report.pdf");
    for (const std::string_view name : {"My%20report.qltnote", "My%20report.pdf"})
        EXPECT_TRUE(hasLogged("Couldn't set resource values on " + destinationURL().absoluteString() +
                              std::string(name) + ": "));
}

// ---- pages

TEST_F(NoteCreation, WritesAPageWithItsImagesInIt) {
    item_.title = u"Clip";
    addResource(pngBytes(), "image/png", u"a.png");
    EXPECT_EQ(pageName("<en-note><p>" + media(pngBytes()) + "</p><hr/></en-note>"), "Clip.html");
    EXPECT_EQ(pageName("<en-note>second</en-note>"), "Clip 1.html");
    const std::string page = tests::readFile(destination_ / "Clip.html");
    EXPECT_NE(page.find("src=\"data:image/png;base64,iVBORw0KGgo"), std::string::npos) << page;
    EXPECT_NE(page.find("<hr />"), std::string::npos) << page;
    EXPECT_EQ(page.find("quillet-image"), std::string::npos);
    EXPECT_EQ(valuesOf("Clip.html").hasHiddenExtension, true);
    EXPECT_EQ(outputs(), (std::vector<std::string>{"Clip 1.html", "Clip.html"}));
}

TEST_F(NoteCreation, MakesNoPageWithAnAttachmentThatIsNoImage) {
    item_.title = u"Clip";
    addResource(pngBytes(), "image/png", u"a.png");
    addResource(kPDF, "application/pdf", u"a.pdf");
    const auto made = make(createHTMLForElement, "<en-note>x</en-note>");
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error().domain, EvernoteXMLItemErrorDomain);
    EXPECT_EQ(made.error().code, kNoPageErrorCode);
    EXPECT_TRUE(made.error().userInfo.empty());
    EXPECT_TRUE(outputs().empty());
    item_.resources.pop_back();
    item_.resources.front().mime.clear(); // no type is no image
    EXPECT_EQ(make(createHTMLForElement, "<en-note>x</en-note>").error().code, kNoPageErrorCode);
}

// The page would name a file that is not there.
TEST_F(NoteCreation, MakesNoPageWithAnImageThatItsTagGivesAnotherType) {
    item_.title = u"Clip";
    addResource(kPDF, "image/png", u"a.pdf");
    const std::string markup = "<en-note>x" + media(kPDF, "type=\"application/pdf\"") + "</en-note>";
    EXPECT_EQ(make(createHTMLForElement, markup).error().code, kNoPageErrorCode);
    EXPECT_TRUE(outputs().empty());
    FailingReader reader;
    EXPECT_EQ(make(createNoteForElement, FailingReader::markup(markup)).error().code, kNoPageErrorCode);
    EXPECT_TRUE(outputs().empty());
}

// ---- single files

TEST_F(NoteCreation, NamesASingleFileAfterTheNote) {
    const struct {
        std::u16string title, filename;
        std::string mime, expected;
    } rows[] = {
        {u"Report", u"q3.pdf", "application/pdf", "Report.pdf"},
        {u"Report", u" q3.pdf\n", "application/pdf", "Report 1.pdf"},
        {u"", u"photo", "image/jpeg", "Untitled.jpeg"},
        {u"", u"", "image/jpeg", "Untitled 1.jpeg"},
        {u"", u"x.foo", "image/jpeg", "Untitled 2.jpeg"},
        {u"\n  ", u"x.foo", "image/jpeg", "Untitled 3.jpeg"},
        {u"", u"", "", "Untitled"},
        {u"", u"", "application/x-unheard-of", "Untitled 1"},
        {u"Report", u"", "application/pdf", "Report 2.pdf"},
        {u"Report", u"", "", "Report"},
        {u"Vol. 2", u"", "application/pdf", "Vol. 2"}, // has an extension, as paths go
        {u"Vol. 2", u"a.pdf", "application/pdf", "Vol. 2.pdf"},
        {u"a/b", u"../c.d/e.txt", "text/plain", "a-b.txt"},
        {u"Photo", u"wrong.txt", "image/png", "Photo.txt"},
        {u"/", u"q3.pdf", "application/pdf", "-.pdf"},
        {u"Blanks", u" q3.pdf \n", "", "Blanks.pdf"},
    };
    for (const auto& row : rows) {
        item_.resources.clear();
        item_.title = row.title;
        addResource("data", row.mime, row.filename);
        EXPECT_EQ(singleName(), row.expected);
        if (std::filesystem::exists(destination_ / row.expected)) {
            EXPECT_EQ(tests::readFile(destination_ / row.expected), "data");
        }
    }
}

TEST_F(NoteCreation, StampsASingleFile) {
    item_.title = u"Report";
    item_.updated = Date::fromUnixTime(1'650'000'000);
    item_.tags = {u"work"};
    addResource(kPDF, "application/pdf", u"q3.pdf");
    ASSERT_EQ(singleName(), "Report.pdf");
    EXPECT_EQ(valuesOf("Report.pdf").hasHiddenExtension, true);
    EXPECT_EQ(valuesOf("Report.pdf").contentModificationDate, item_.updated);
    EXPECT_EQ(valuesOf("Report.pdf").tagNames, item_.tags);
}

TEST_F(NoteCreation, PassesOnThatAResourceHasNoBytes) {
    item_.title = u"Empty";
    item_.resources.emplace_back();
    NoteOutput output(destinationURL());
    EXPECT_EQ(processSingleResource(item_, output).error().domain, EvernoteXMLResourceErrorDomain);
    EXPECT_TRUE(outputs().empty());
}

// ---- destinations

TEST_F(NoteCreation, FailsWithoutADestination) {
    NoteOutput output(URL::fileURLWithPath((scratch_ / "nowhere").string(), true));
    EXPECT_EQ(output.directory().error().domain, platform::kCocoaErrorDomain);
    const auto made = output.writeFile(u"a.txt", "x", {});
    ASSERT_FALSE(made);
    EXPECT_NE(made.error().localizedDescription().find("nowhere"), std::string::npos);
    EXPECT_TRUE(output.flush());
    output.overwriteLog("a.log", "x"); // no error
    EXPECT_FALSE(std::filesystem::exists(scratch_ / "nowhere"));
}

TEST_F(NoteCreation, FinishesAPackageUnderTheNextNameWhenItsOwnWasTakenMeanwhile) {
    NoteOutput output(destinationURL());
    platform::ResourceValues values;
    values.contentModificationDate = Date::fromUnixTime(1'650'000'000);
    auto package = output.beginPackage(u"Note.qltnote", values, kPackageEntries);
    ASSERT_TRUE(package);
    EXPECT_EQ(package->freeName, "Note.qltnote");
    EXPECT_EQ(namesIn(package->output.path()), (std::vector<std::string>{"NoteAttributes", "NoteText", "TXT.rtf"}));
    tests::writeFile(destination_ / "Note.qltnote", "somebody's");
    const auto text = platform::FileWrapper::regularFile(platform::Data(std::string("text")));
    const auto finished =
        output.finishPackage(*std::move(package), *platform::FileWrapper::directory({{"NoteText", text}}));
    EXPECT_EQ(shown(finished), "Note 1.qltnote");
    EXPECT_EQ(tests::readFile(destination_ / "Note.qltnote"), "somebody's");
    EXPECT_EQ(namesIn(destination_ / "Note 1.qltnote"), std::vector<std::string>{"NoteText"});
    EXPECT_EQ(valuesOf("Note 1.qltnote").contentModificationDate, values.contentModificationDate);
    EXPECT_EQ(valuesOf("Note 1.qltnote").isPackage, true);
}

TEST_F(NoteCreation, LeavesNothingOfAPackageThatIsNotFinished) {
    NoteOutput output(destinationURL());
    {
        const auto package = output.beginPackage(u"Note.qltnote", {}, kPackageEntries);
        ASSERT_TRUE(package);
        EXPECT_EQ(outputs().size(), 1U);
    }
    EXPECT_TRUE(outputs().empty());
}

TEST_F(NoteCreation, FailsForAPageThatCannotBeParsed) {
    environment_->dataDirectory = scratch_.path().string();
    tests::writeFile(scratch_ / "Template.html", "");
    const auto made = make(createNoteForElement, "<en-note>x</en-note>");
    ASSERT_FALSE(made); // not kept as a page: there is none
    EXPECT_TRUE(outputs().empty());
    EXPECT_EQ(made.error().code, make(createHTMLForElement, "<en-note>x</en-note>").error().code);
}

TEST_F(NoteCreation, RefusesNamesThatLeadElsewhere) {
    NoteOutput output(destinationURL());
    for (const std::u16string_view name : {u"../out.txt", u"/tmp/out.txt", u"a/b", u"..", u"."}) {
        const auto made = output.writeFile(name, "x", {});
        ASSERT_FALSE(made);
        EXPECT_EQ(made.error().code, 514);
    }
    EXPECT_TRUE(outputs().empty());
}

TEST_F(NoteCreation, WritesTheLogOverAFileButNotThroughALink) {
    tests::writeFile(scratch_ / "victim", "precious");
    std::filesystem::create_symlink(scratch_ / "victim", destination_ / "link.log");
    ASSERT_EQ(::mkfifo((destination_ / "fifo.log").c_str(), 0600), 0);
    tests::writeFile(destination_ / "old.log", "a long old log");
    NoteOutput output(destinationURL());
    for (const std::string_view name : {"link.log", "fifo.log", "old.log", "new.log"}) output.overwriteLog(name, "new");
    EXPECT_EQ(tests::readFile(scratch_ / "victim"), "precious");
    EXPECT_EQ(tests::readFile(destination_ / "old.log"), "new");
    EXPECT_EQ(tests::readFile(destination_ / "new.log"), "new");
}

} // namespace
} // namespace quillet
