// From a page to rich text: what markers become, and what stays text.
#include "conversion/RichTextImport.h"

#include <chrono>
#include <string>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "platform/files/FileWrapper.h"
#include "tests/support/NoteMarkupFixture.h"

namespace quillet {
namespace {

using platform::AttributedString;
using platform::Result;
using platform::TextAttachment;

// The text with what stands at each attachment: [x] [ ] for checkboxes, [-] for dividers, [file NAME] and [NAME].
std::string shown(const AttributedString& text) {
    std::string out;
    for (std::size_t position = 0; position < text.length(); ++position) {
        const char16_t unit = text.string()[position];
        const auto* value = text.attributeAt(platform::kAttachmentAttributeName, position);
        if (unit != platform::kAttachmentCharacter || !value) {
            out += platform::utf8FromUTF16(std::u16string_view(&unit, 1));
            continue;
        }
        const TextAttachment& attachment = *std::get<platform::TextAttachmentReference>(*value);
        if (const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(&attachment)) {
            out += box->isOn() ? "[x]" : "[ ]";
        } else if (dynamic_cast<const QLTDividerTextAttachment*>(&attachment)) {
            out += "[-]";
        } else {
            const bool isFile = dynamic_cast<const QLTFileAttachment*>(&attachment);
            const std::string name = attachment.fileWrapper() ? attachment.fileWrapper()->preferredFilename() : "none";
            out += (isFile ? "[file " : "[") + name + "]";
        }
    }
    return out;
}

class RichTextImport : public NoteMarkupFixture {
  protected:
    // Writes a resource of that name into the scratch directory.
    void write(std::u16string_view name, std::string_view bytes) {
        ASSERT_TRUE(scratchDirectory_->writeResource(addResource(bytes, "", name), name));
    }
    std::string withAttachments(std::u16string_view text) {
        AttributedString rich{std::u16string(text)};
        const auto replaced = replaceAttachmentMarkers(rich, *scratchDirectory_);
        return replaced ? shown(rich) : replaced.error().description();
    }
    Result<ImportedPage> import(std::string_view markup) {
        NotePage page = notePageFromNoteElement(item_, *scratchDirectory_, *noteDocument(markup).rootElement(),
                                                UseInlineImages::yes, ConvertDividers::yes)
                            .value();
        return importRichText(*scratchDirectory_, page, [] {});
    }
    std::string imported(std::string_view markup) {
        const auto made = import(markup);
        return made && made->text ? shown(*made->text) : "failed";
    }
};

TEST_F(RichTextImport, ChoosesTheAttachmentByTheType) {
    const struct {
        std::u16string name;
        std::string expected;
    } rows[] = {
        {u"a.zip", "[file a.zip]"}, {u"a.txt", "[file a.txt]"},   {u"a.mp3", "[file a.mp3]"},
        {u"a.pdf", "[a.pdf]"},      {u"A.PDF", "[A.PDF]"},        {u"a.png", "[a.png]"},
        {u"a.mov", "[a.mov]"},      {u"a.qqq", "[file a.qqq]"},   {u"README", "[file README]"},
        {u".pdf", "[file .pdf]"},   {u"Vol. 2", "[file Vol. 2]"},
    };
    for (const auto& row : rows) {
        write(row.name, "data");
        const std::u16string name = row.name == u"Vol. 2" ? u"Vol.%202" : row.name;
        EXPECT_EQ(withAttachments(u"a***QLTATTACHMENT " + name + u" QLTATTACHMENT***b"), "a" + row.expected + "b");
    }
}

TEST_F(RichTextImport, FindsFilesUnderTheirUnencodedNames) {
    write(u"a b.zip", "1");
    write(u"100%.zip", "2");
    write(u"京.zip", "3");
    EXPECT_EQ(withAttachments(u"***QLTATTACHMENT a%20b.zip QLTATTACHMENT***\n***QLTATTACHMENT 100%25.zip "
                              u"QLTATTACHMENT******QLTATTACHMENT %E4%BA%AC.zip QLTATTACHMENT***"),
              "[file a b.zip]\n[file 100%.zip][file 京.zip]");
}

TEST_F(RichTextImport, LeavesAnOpenFenceAsText) {
    for (const std::u16string_view text :
         {u"***QLTATTACHMENT ", u"***QLTATTACHMENT a.zip", u" QLTATTACHMENT***", u"***QLTATTACHMENTa QLTATTACHMENT***",
          u"a.zip QLTATTACHMENT*** ***QLTATTACHMENT "})
        EXPECT_EQ(withAttachments(text), platform::utf8FromUTF16(text));
}

TEST_F(RichTextImport, GivesAFenceNothingButTheNotesOwnFiles) {
    tests::writeFile(scratch_ / "secret", "s");
    write(u"own.zip", "1");
    tests::writeFile(destination_ / item_.identifier / "planted", "p");
    for (const std::u16string_view name : {u"../secret", u"..%2F..%2Fsecret", u"/etc/passwd", u"%2Fetc%2Fpasswd",
                                           u"planted", u"", u".", u"..", u"%00"}) {
        AttributedString text(u"***QLTATTACHMENT " + std::u16string(name) + u" QLTATTACHMENT***");
        const auto replaced = replaceAttachmentMarkers(text, *scratchDirectory_);
        ASSERT_FALSE(replaced) << platform::utf8FromUTF16(name);
        EXPECT_EQ(replaced.error().code, 260);
    }
}

TEST_F(RichTextImport, SetsCheckboxesAtTheStartOfLinesOnly) {
    const struct {
        std::u16string text;
        std::string expected;
    } rows[] = {
        {u"✓ done", "[x]done"},
        {u"◦ open", "[ ]open"},
        {u"✓ ", "[x]"},
        {u"✓ a\n◦ b\r\n✓ c\u2028◦ d", "[x]a\n[ ]b\r\n[x]c\u2028[ ]d"},
        {u"a ✓ b", "a ✓ b"},
        {u" ✓ b", " ✓ b"},
        {u"✓b", "✓b"},
        {u"✓", "✓"},
        {u"✓ ✓ a", "[x]✓ a"},
        {u"✓\u00A0a", "✓\u00A0a"},
        {u"", ""},
    };
    for (const auto& row : rows) {
        AttributedString text(row.text);
        replaceCheckboxMarkers(text);
        EXPECT_EQ(shown(text), row.expected);
    }
}

TEST_F(RichTextImport, PutsDividersOnLinesOfTheirOwn) {
    const struct {
        std::u16string text;
        std::string expected;
    } rows[] = {
        {u"***QLTDIVIDER***", "[-]"},
        {u"a\n***QLTDIVIDER***\nb", "a\n[-]\nb"},
        {u"a***QLTDIVIDER***b", "a\n[-]\nb"},
        {u"***QLTDIVIDER***b", "[-]\nb"},
        {u"a***QLTDIVIDER***\nb", "a\n[-]\n\nb"}, // an empty line behind the divider
        {u"***QLTDIVIDER******QLTDIVIDER***", "[-]\n***QLTDIVIDER***"},
        {u"a ***QLTDIVIDER*** b ***QLTDIVIDER***\n***QLTDIVIDER***", "a \n[-]\n b ***QLTDIVIDER***\n[-]"},
        {u"***QLTDIVIDER**", "***QLTDIVIDER**"},
    };
    for (const auto& row : rows) {
        AttributedString text(row.text);
        replaceDividerMarkers(text);
        EXPECT_EQ(shown(text), row.expected);
    }
}

TEST_F(RichTextImport, ReadsThePageAndPutsEverythingInPlace) {
    addResource("zip", "application/zip", u"a b.zip");
    addResource(pngBytes(), "image/png", u" pic/ture.png");
    EXPECT_EQ(
        imported("<en-note><div>text</div><div><en-todo checked=\"true\"/>done</div><div><en-todo/>open</div><div>x" +
                 media("zip") + "y</div><hr/><div>" + media(pngBytes()) + "</div></en-note>"),
        "text\n[x]done\n[ ]open\nx[file a b.zip]y\n[-]\n[pic-ture.png]\n");
}

TEST_F(RichTextImport, KeepsTheTextOfANoteWhateverItsTitle) {
    for (const std::u16string_view title :
         {u"<!--", u"-->", u"<![CDATA[", u"</html>", u"</body>", u"<textarea>", u"<b>", u"<style>", u"a & b < c",
          u"<base href='x'>", u"***QLTDIVIDER***"}) {
        item_.title = title;
        EXPECT_EQ(imported("<en-note><div><en-todo/>a</div></en-note>"), "[ ]a\n") << platform::utf8FromUTF16(title);
    }
}

TEST_F(RichTextImport, MakesTheScratchDirectoryForAttachmentsAlone) {
    addResource(pngBytes(), "image/png", u"a.png");
    ASSERT_TRUE(import("<en-note>x" + media(pngBytes()) + "</en-note>"));
    EXPECT_TRUE(outputs().empty());
    addResource("zip", "application/zip", u"a.zip");
    ASSERT_TRUE(import("<en-note>x" + media("zip") + "</en-note>"));
    EXPECT_EQ(namesIn(destination_ / item_.identifier), std::vector<std::string>{"a.zip"});
    ASSERT_TRUE(scratchDirectory_->remove());
    EXPECT_FALSE(std::filesystem::exists(destination_ / item_.identifier));
}

TEST_F(RichTextImport, FindsAttachmentsInTextThatIsShownInAnotherForm) {
    addResource("zip", "application/zip", u"An a\u00E4.zip");
    const std::string tag = media("zip");
    EXPECT_EQ(imported("<en-note>a<pre>b " + tag + " c</pre></en-note>"), "a\nb [file An aä.zip] c\n");
    EXPECT_EQ(imported("<en-note><div style=\"text-transform:uppercase\">b " + tag + "</div></en-note>"),
              "B [file An aä 1.zip]\n");
    EXPECT_EQ(imported("<en-note><div style=\"text-transform:capitalize\">b " + tag + "</div></en-note>"),
              "B [file An aä 2.zip]\n");
    EXPECT_EQ(imported("<en-note><div style=\"text-transform:lowercase\">B " + tag + "</div>" + tag + "</en-note>"),
              "b [file An aä 3.zip]\n[file An aä 4.zip]");
}

TEST_F(RichTextImport, LeavesLowerCaseFencesAroundOtherWordsAsText) {
    write(u"a.zip", "1");
    EXPECT_EQ(withAttachments(u"***qltattachment b.zip qltattachment*** ***qltattachment a.zip qltattachment***"),
              "***qltattachment b.zip qltattachment*** [file a.zip]");
    EXPECT_EQ(withAttachments(u"***qltattachment a.zip qltattachment***"), "***qltattachment a.zip qltattachment***")
        << "all files are in the text already";
}

TEST_F(RichTextImport, FindsAttachmentsInTheCapitalsOfTheLocale) {
    environment_->localeIdentifier = "tr_TR";
    addResource("zip", "application/zip", u"ilk \u0131 i.zip");
    const std::string tag = media("zip");
    EXPECT_EQ(imported("<en-note><div style=\"text-transform:uppercase\">" + tag + "</div></en-note>"),
              "[file ilk ı i.zip]\n");
    EXPECT_EQ(imported("<en-note><div style=\"text-transform:capitalize\">" + tag + "</div></en-note>"),
              "[file ilk ı i 1.zip]\n");
}

// "ß" is encoded in a marker, so that no style makes "SS" of it.
TEST_F(RichTextImport, TakesNoFileForOneOfOtherLettersThatAreNotASCII) {
    write(u"mass.zip", "1");
    write(u"ma\u00DF.zip", "2");
    EXPECT_EQ(withAttachments(u"***QLTATTACHMENT MA%C3%9F.ZIP QLTATTACHMENT***"), "[file maß.zip]");
    EXPECT_TRUE(withAttachments(u"***QLTATTACHMENT MA%C3%A4.ZIP QLTATTACHMENT***").contains("No such file"));
}

TEST_F(RichTextImport, FindsManyFilesInAnotherCaseInLinearTime) {
    const std::u16string longName(200, u'n');
    constexpr int kCount = 5'000;
    std::u16string markers;
    for (int index = 0; index < kCount; ++index) {
        const std::u16string number = platform::utf16FromUTF8(std::to_string(index));
        write(longName + number, "x");
        markers += u"***QLTATTACHMENT N" + longName.substr(1) + number + u" QLTATTACHMENT***";
    }
    AttributedString text{std::move(markers)};
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(replaceAttachmentMarkers(text, *scratchDirectory_));
    EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 10);
    EXPECT_EQ(text.length(), std::size_t{kCount});
}

TEST_F(RichTextImport, TakesAFileInAnotherCaseOnlyWhenThereIsNoneOfThatName) {
    write(u"A.zip", "1");
    write(u"a.zip", "2");
    EXPECT_EQ(withAttachments(u"***QLTATTACHMENT a.zip QLTATTACHMENT******QLTATTACHMENT A.zip QLTATTACHMENT***"
                              u"***QLTATTACHMENT A.ZIP QLTATTACHMENT***"),
              "[file a.zip][file A.zip][file A.zip]");
}

TEST_F(RichTextImport, SaysWhichAttachmentsThePageHides) {
    const std::string kOtherPNG = pngBytes() + "more";
    addResource("zip", "application/zip", u"hidden.zip");
    addResource(pngBytes(), "image/png", u"hidden.png");
    addResource("seen", "application/zip", u"seen twice.zip");
    addResource(kOtherPNG, "image/png", u"seen twice.png");
    const std::string tags = media("zip") + media(pngBytes()) + media("seen") + media(kOtherPNG);
    EXPECT_EQ(imported("<en-note>" + media(kOtherPNG) + "<div style=\"display:none\">" + tags + "</div>a" +
                       media("seen") + "</en-note>"),
              "[seen twice.png]a[file seen twice 1.zip]");
    EXPECT_EQ(log_, (std::vector<std::string>{
                        "The note does not show its attachment \"hidden.zip\", which is left out.",
                        "The note does not show its attachment \"hidden.png\", which is left out.",
                    }));
}

TEST_F(RichTextImport, ResolvesRelativeAddressesAgainstTheScratchDirectory) {
    addResource("zip", "application/zip", u"a.zip");
    tests::writeFile(destination_ / "b.zip", "somebody's");
    const auto made = import("<en-note>" + media("zip") +
                             "<img src=\"a.zip\"/><img src=\"../b.zip\"/><a href=\"c/d\">e</a></en-note>");
    ASSERT_TRUE(made && made->text);
    EXPECT_EQ(shown(*made->text), "[file a.zip][a.zip][none]e");
    const auto* link = made->text->attributeAt(platform::kLinkAttributeName, made->text->length() - 1);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(std::get<platform::URL>(*link).absoluteString(), scratchDirectory_->url().absoluteString() + "c/d");
}

TEST_F(RichTextImport, DatesAttachedFilesWithTheTimeOfTheImport) {
    write(u"a.zip", "1");
    const auto wrapper = scratchDirectory_->fileWrapper("a.zip");
    ASSERT_TRUE(wrapper);
    EXPECT_EQ((*wrapper)->fileAttributes().modificationDate, environment_->now());
}

TEST_F(RichTextImport, FailsWhenTheNameOfItsScratchDirectoryIsTaken) {
    tests::writeFile(destination_ / item_.identifier, "somebody's");
    addResource("zip", "application/zip", u"a.zip");
    EXPECT_TRUE(import("<en-note>x</en-note>"));
    const auto page = notePageFromNoteElement(item_, *scratchDirectory_,
                                              *noteDocument("<en-note>" + media("zip") + "</en-note>").rootElement(),
                                              UseInlineImages::yes, ConvertDividers::yes);
    ASSERT_FALSE(page);
    EXPECT_EQ(page.error().code, 516);
    EXPECT_EQ(tests::readFile(destination_ / item_.identifier), "somebody's");
}

} // namespace
} // namespace quillet
