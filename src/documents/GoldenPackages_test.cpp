// Whole packages, byte by byte as they lie on disk: tests/golden/packages/<case>/input.qltnote is what this program
// wrote once, and what it must go on reading; expected.txt shows what is in it. QUILLET_ACCEPT=1 writes both anew.
#include <functional>
#include <map>

#include <gtest/gtest.h>

#include "documents/QLTNoteFile.h"
#include "platform/foundation/URL.h"
#include "platform/graphics/Font.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "richtext/highlights/Highlights.h"
#include "tests/support/Golden.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using platform::AttributedString;
using platform::Color;
using platform::FileWrapper;
using platform::Font;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::TextAttachment;
using platform::URL;
using platform::Value;

class GoldenPackages : public NoteFileFixture {
  protected:
    static AttributedString styledParagraph(std::u16string_view text, const ParagraphStyle& style) {
        return with(platform::kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style), text);
    }
    static AttributedString inFont(std::string_view name, double size, std::u16string_view text) {
        return with(platform::kFontAttributeName, Font(name, size), text);
    }

    static void attachments(QLTNoteFile& note) {
        note.setNoteText(joined(plain(u"Two photos "), attached("photo.png", "pixels"),
                                attached("photo.png", "other pixels"), plain(u"\nA file "),
                                attached<QLTFileAttachment>("Report 2024.zip", "zipped"), plain(u"\nA recording "),
                                attached("voice memo.m4a", "noise"), plain(u"\nNames "), attached("TXT.rtf", "no text"),
                                attached("noteattributes", "none"), attached("Käse №1.txt", "cheese"), plain(u"\n")));
    }
    static void checklist(QLTNoteFile& note) {
        note.setNoteText(joined(plain(u"To do\n"), checkbox(true, 0), plain(u"bread\n"), checkbox(false, 0),
                                plain(u"milk\n"), checkbox(false, 1), plain(u"two litres\n"), checkbox(true, 5),
                                plain(u"deep\n")));
    }
    static void dividers(QLTNoteFile& note) {
        note.setNoteText(joined(divider(), plain(u"\nabove\n"), divider(), plain(u"\nbelow\n"), divider()));
    }
    static void highlights(QLTNoteFile& note) {
        AttributedString text;
        for (const std::int64_t type : {1, 2, 3, 4, 5, 999})
            text.append(with(QLTHighlightTextAttributeName, type, u"marked "));
        note.setNoteText(joined(text, plain(u"unmarked\n")));
        note.setBackgroundColor(Color::deviceRGB(0.98, 0.95, 0.8));
        note.setShowSmallImages(true);
        note.setDrawingDataByAttachmentKey(platform::Dictionary{{"drawing", Value(platform::Data("strokes"))}});
    }
    static void styles(QLTNoteFile& note) {
        ParagraphStyle heading;
        heading.headerLevel = 1;
        heading.alignment = platform::TextAlignment::center;
        AttributedString link =
            with(platform::kLinkAttributeName, *URL::fromString("https://example.org/a?b=c"), u"a link");
        link.addAttribute(platform::kUnderlineStyleAttributeName, std::int64_t{1}, {0, link.length()});
        AttributedString title = styledParagraph(u"Heading\n", heading);
        title.addAttribute(platform::kFontAttributeName, Font("Helvetica-Bold", 24), {0, title.length()});
        note.setNoteText(joined(title, inFont("Helvetica", 12, u"Body "),
                                inFont("Helvetica-BoldOblique", 12, u"bold italic "),
                                inFont("Menlo-Regular", 11, u"code "), link,
                                with(platform::kForegroundColorAttributeName, Color::deviceRGB(1, 0, 0), u" red"),
                                plain(u" astral \U0001F600 and \u2028 a line separator\n")));
    }
    static void listsAndTables(QLTNoteFile& note) {
        const auto list = std::make_shared<platform::TextList>(platform::kTextListMarkerDisc);
        const auto inner = std::make_shared<platform::TextList>("{decimal}.");
        ParagraphStyle outerItem, innerItem;
        outerItem.textLists = {list};
        innerItem.textLists = {list, inner};
        AttributedString text =
            joined(styledParagraph(u"\t•\tone\n", outerItem), styledParagraph(u"\t1.\tinner\n", innerItem),
                   styledParagraph(u"\t•\ttwo\n", outerItem));
        const auto table = std::make_shared<platform::TextTable>();
        table->numberOfColumns = 2;
        for (std::int64_t cell = 0; cell < 4; ++cell) {
            ParagraphStyle style;
            style.textBlocks = {std::make_shared<platform::TextTableBlock>(table, cell / 2, 1, cell % 2, 1)};
            text.append(styledParagraph(u"cell\n", style));
        }
        note.setNoteText(joined(text, plain(u"end\n")));
    }

    static const std::map<std::string, std::function<void(QLTNoteFile&)>>& cases() {
        static const std::map<std::string, std::function<void(QLTNoteFile&)>> all{{"empty", [](QLTNoteFile&) {}},
                                                                                  {"attachments", attachments},
                                                                                  {"checklist", checklist},
                                                                                  {"dividers", dividers},
                                                                                  {"highlights", highlights},
                                                                                  {"styles", styles},
                                                                                  {"lists-and-tables", listsAndTables}};
        return all;
    }

    static std::string shown(const FileWrapper& package) {
        std::string text;
        for (const std::string& name : entryNames(package))
            text += name + " " + std::to_string(package.childNamed(name)->regularFileContents().size()) + " bytes\n";
        text += "-- NoteAttributes\n" + *platform::xmlDataFromPropertyList(attributesOf(package));
        text += "-- TXT.rtf\n" + contentsOf(package, "TXT.rtf") + "\n";
        text += "-- NoteText\n" + platform::textDump(archivedTextOf(package));
        text += "-- as read\n" + platform::textDump(noteFrom(package)->noteText());
        return text;
    }
};

TEST_F(GoldenPackages, AreWrittenAsEver) {
    for (const auto& [name, build] : cases()) {
        const tests::GoldenCase golden{name, tests::sourceDirectory() / "tests/golden/packages" / name};
        const auto path = golden.directory / "input.qltnote";
        identifiers_ = 0;
        QLTNoteFile note;
        build(note);
        if (std::getenv("QUILLET_ACCEPT") != nullptr) {
            std::filesystem::remove_all(path);
            std::filesystem::create_directories(golden.directory);
            ASSERT_TRUE(packageOf(note)->writeToURL(URL::fileURLWithPath(path.string(), true)));
        }
        const auto stored = FileWrapper::readingURL(URL::fileURLWithPath(path.string(), true));
        ASSERT_TRUE(stored) << stored.error().description();
        const auto written = packageOf(note);
        EXPECT_EQ(entryNames(*written), entryNames(**stored)) << name;
        for (const std::string& entry : entryNames(**stored))
            if (entry != kNoteAttributesEntry) {
                EXPECT_EQ(contentsOf(*written, entry), contentsOf(**stored, entry)) << name << ": " << entry;
            }
        EXPECT_EQ(attributesOf(*written), attributesOf(**stored)) << name;
        tests::expectGolden(golden, "expected.txt", shown(**stored));
    }
    EXPECT_EQ(tests::goldenCases("packages").size(), cases().size());
}

// Reading settles a text (adaptive colors, styles of checkboxes); what is written then stays the same for good.
TEST_F(GoldenPackages, StayTheSameOnceTheyWereRead) {
    for (const tests::GoldenCase& golden : tests::goldenCases("packages")) {
        const auto stored =
            FileWrapper::readingURL(URL::fileURLWithPath((golden.directory / "input.qltnote").string(), true));
        ASSERT_TRUE(stored);
        identifiers_ = 100;
        const auto once = packageOf(*noteFrom(**stored));
        const auto twice = packageOf(*noteFrom(*once));
        EXPECT_EQ(entryNames(*once), entryNames(*twice)) << golden.name;
        for (const std::string& entry : entryNames(*once))
            EXPECT_EQ(contentsOf(*twice, entry), contentsOf(*once, entry)) << golden.name << ": " << entry;
    }
}

} // namespace
} // namespace quillet
