#include <algorithm>

#include <gtest/gtest.h>

#include "documents/QLTNoteFile.h"
#include "platform/graphics/Font.h"
#include "platform/rtf/RTFReader.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/NoteBackgroundColor.h"
#include "tests/support/NoteFileFixture.h"

namespace quillet {
namespace {

using platform::AttributedString;
using platform::AttributeName;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::Color;
using platform::Dictionary;
using platform::FileWrapper;
using platform::TextAttachment;
using platform::TextAttachmentReference;
using platform::Value;

using Names = std::vector<std::string>;

class NoteFile : public NoteFileFixture {};
class NoteFileWriting : public NoteFileFixture {};

// ---- properties

TEST_F(NoteFile, StartsEmptyWithTheDefaultBackground) {
    const QLTNoteFile note;
    EXPECT_TRUE(note.noteText().empty());
    EXPECT_EQ(note.documentAttributes(), (Dictionary{{"DocumentType", Value("NSRTFD")}}));
    EXPECT_EQ(note.backgroundColor(), Color::textBackgroundColor());
    EXPECT_FALSE(note.showSmallImages());
    EXPECT_FALSE(note.drawingDataByAttachmentKey());
}

TEST_F(NoteFile, ReadsWhiteAndBlackAsTheSystemBackground) {
    const std::pair<std::optional<Color>, std::optional<Color>> cases[] = {
        {Color::white(), Color::textBackgroundColor()},
        {Color::black(), Color::textBackgroundColor()},
        {Color::deviceRGB(1, 0, 0), Color::deviceRGB(1, 0, 0)},
        {std::nullopt, std::nullopt},
    };
    for (const auto& [stored, read] : cases) {
        QLTNoteFile note;
        note.setBackgroundColor(stored);
        EXPECT_EQ(note.backgroundColor(), read);
    }
}

TEST_F(NoteFile, NamesAndTypes) {
    EXPECT_EQ(QLTNoteFile::newNoteName(), u"New Note");
    EXPECT_EQ(QLTNoteFile::newNoteFileName(), u"New Note.qltnote");
    EXPECT_EQ(QLTNoteFile::fileType(), "com.tesseral.quillet.note");
    EXPECT_EQ(QLTNoteFileExtension, "qltnote");
    EXPECT_EQ(QLTNoteFileErrorDomain, "QLTNoteFileErrorDomain");
    EXPECT_EQ(QLTNoteFileInvalidFormatErrorCode, 10001);
    EXPECT_EQ(QLTNoteFileRecoverFromRTFDErrorCode, 10002);
}

TEST_F(NoteFile, DefaultPreferencesAreOn) {
    EXPECT_EQ(QLTNoteFile::defaultPreferences(), (Dictionary{{"QLTNoteConvertImportedHTMLFiles", Value(true)},
                                                             {"QLTNoteConvertImportedPlainTextFiles", Value(true)},
                                                             {"QLTNoteOnlyShareNameToReminders", Value(true)},
                                                             {"QLTNoteLinkUnderline", Value(true)}}));
}

TEST_F(NoteFile, ListsTheFilesOfItsAttachments) {
    QLTNoteFile note;
    note.setNoteText(joined(attached("one.txt", "1"), checkbox(true, 0), divider(),
                            attached<QLTFileAttachment>("two.zip", "2"),
                            AttributedString::withAttachment(std::make_shared<TextAttachment>())));
    Names names;
    for (const auto& wrapper : note.fileAttachments()) names.push_back(wrapper->preferredFilename());
    EXPECT_EQ(names, (Names{"one.txt", "two.zip"}));
}

TEST_F(NoteFile, ExportsItsTextInThePlatformsOwnForms) {
    QLTNoteFile note;
    AttributedString highlighted = with(QLTHighlightTextAttributeName, std::int64_t{2}, u"marked");
    note.setNoteText(joined(plain(u"Text\n"), checkbox(true, 0), plain(u"done\n"), divider(), plain(u"\n"), highlighted,
                            with(platform::kForegroundColorAttributeName, Color::textColor(), u"black")));
    const AttributedString exported = note.noteTextSuitableForExport();
    EXPECT_EQ(exported.string(), u"Text\n\t✓\tdone\n***\nmarkedblack");
    const std::size_t marked = exported.string().find(u"marked"), black = exported.string().find(u"black");
    EXPECT_FALSE(exported.attributeAt(QLTHighlightTextAttributeName, marked));
    EXPECT_TRUE(exported.attributeAt(platform::kTextHighlightStyleAttributeName, marked));
    EXPECT_EQ(*exported.attributesAt(black).find<Color>(platform::kForegroundColorAttributeName), Color::black());
    EXPECT_EQ(note.noteText().string().find(u'✓'), std::u16string::npos) << "the note's own text stays";
}

// ---- the package

TEST_F(NoteFileWriting, LaysOutThePackage) {
    const auto package = packageOf(joined(plain(u"See "), attached("photo.png", "pixels"), plain(u" and "),
                                          attached<QLTFileAttachment>("Report.zip", "zipped")));
    EXPECT_TRUE(package->isDirectory());
    EXPECT_EQ(entryNames(*package), (Names{"NoteAttributes", "NoteText", "Report.zip", "TXT.rtf", "photo.png"}));
    EXPECT_EQ(contentsOf(*package, "photo.png"), "pixels");
    EXPECT_EQ(contentsOf(*package, "Report.zip"), "zipped");
    EXPECT_TRUE(contentsOf(*package, "NoteText").starts_with("bplist00"));
    EXPECT_TRUE(contentsOf(*package, "NoteAttributes").starts_with("bplist00"));
    EXPECT_TRUE(contentsOf(*package, "TXT.rtf").starts_with("{\\rtf1"));
    for (const auto& [name, child] : package->fileWrappers()) EXPECT_EQ(child->preferredFilename(), name);
}

TEST_F(NoteFileWriting, WritesTheAttributesOfANote) {
    QLTNoteFile note;
    note.setBackgroundColor(std::nullopt);
    EXPECT_EQ(attributesOf(*packageOf(note)), (Dictionary{{"appIdentifier", Value("org.example.notes")},
                                                          {"appVersion", Value("1.2")},
                                                          {"showSmallImages", Value(false)},
                                                          {"dividerRanges", Value(platform::Array())},
                                                          {"usesColorTypes", Value(true)}}));

    const Dictionary drawings{{"key", Value(platform::Data("drawing"))}};
    note.setShowSmallImages(true);
    note.setDrawingDataByAttachmentKey(drawings);
    note.setBackgroundColor(Color::deviceRGB(1, 0.5, 0));
    note.setNoteText(joined(plain(u"12345678901\n"), divider(), plain(u"\n"), divider()));
    EXPECT_EQ(attributesOf(*packageOf(note)),
              (Dictionary{{"appIdentifier", Value("org.example.notes")},
                          {"appVersion", Value("1.2")},
                          {"showSmallImages", Value(true)},
                          {"dividerRanges", Value(platform::Array{Value("{12, 3}"), Value("{16, 3}")})},
                          {"drawingsData", Value(drawings)},
                          {"usesColorTypes", Value(true)},
                          {"backgroundColor", Value(propertyListRepresentation(Color::deviceRGB(1, 0.5, 0)))}}));
}

TEST_F(NoteFileWriting, WritesTheSystemBackgroundAsWhite) {
    const Dictionary white = propertyListRepresentation(Color::white());
    const Color colors[] = {Color::white(), Color::black(), Color::textBackgroundColor(), Color::deviceRGB(1, 1, 1)};
    for (const bool dark : {false, true}) {
        environment_->darkAppearance = dark;
        for (const Color& color : colors) {
            QLTNoteFile note;
            note.setBackgroundColor(color);
            EXPECT_EQ(*platform::find(attributesOf(*packageOf(note)), "backgroundColor"), Value(white));
        }
    }
}

TEST_F(NoteFileWriting, KeepsOnlyTheAllowedAttributes) {
    // One value of the right kind a name; the two at the end are not stored.
    const std::vector<std::pair<AttributeName, AttributeValue>> allowed{
        {QLTHighlightTextAttributeName, std::int64_t{1}},
        {QLTNoteTextStyleIdentifierKey, std::u16string(u"style")},
        {platform::kFontAttributeName, platform::Font("Helvetica", 12)},
        {platform::kParagraphStyleAttributeName, platform::ParagraphStyle::defaultParagraphStyle()},
        {platform::kForegroundColorAttributeName, Color::deviceRGB(1, 0, 0)},
        {platform::kBackgroundColorAttributeName, Color::deviceRGB(0, 1, 0)},
        {platform::kLigatureAttributeName, std::int64_t{1}},
        {platform::kKernAttributeName, 0.5},
        {platform::kStrikethroughStyleAttributeName, std::int64_t{1}},
        {platform::kUnderlineStyleAttributeName, std::int64_t{1}},
        {platform::kStrokeColorAttributeName, Color::deviceRGB(0, 0, 1)},
        {platform::kStrokeWidthAttributeName, 2.5},
        {platform::kShadowAttributeName, platform::Shadow{1, 2, 3, std::nullopt}},
        {platform::kTextEffectAttributeName, std::u16string(u"effect")},
        {platform::kAttachmentAttributeName, TextAttachmentReference(std::make_shared<TextAttachment>())},
        {platform::kLinkAttributeName, *platform::URL::fromString("https://example.org/")},
        {platform::kBaselineOffsetAttributeName, 3.5},
        {platform::kUnderlineColorAttributeName, Color::deviceRGB(0, 1, 1)},
        {platform::kStrikethroughColorAttributeName, Color::deviceRGB(1, 1, 0)},
        {platform::kObliquenessAttributeName, 0.25},
        {platform::kExpansionAttributeName, 0.75},
        {platform::kWritingDirectionAttributeName, std::vector<std::int64_t>{1}},
        {platform::kVerticalGlyphFormAttributeName, std::int64_t{1}},
    };
    std::vector<AttributeName> names;
    for (const auto& [name, value] : allowed) names.push_back(name);
    EXPECT_EQ(QLTNoteFile::allowedAttributeNames(), names);

    std::vector<AttributeSet::Entry> entries(allowed.begin(), allowed.end());
    entries.emplace_back(platform::kToolTipAttributeName, std::u16string(u"tip"));
    entries.emplace_back(platform::kSuperscriptAttributeName, std::int64_t{1});
    const AttributedString text(u"\uFFFC", std::make_shared<const AttributeSet>(entries));
    const AttributedString archived = archivedTextOf(*packageOf(text));
    EXPECT_EQ(archived.attributesAt(0).entries().size(), allowed.size());
    for (const auto& [name, value] : allowed) EXPECT_TRUE(archived.attributeAt(name, 0)) << name.string();
    EXPECT_FALSE(archived.attributeAt(platform::kToolTipAttributeName, 0));
    EXPECT_FALSE(archived.attributeAt(platform::kSuperscriptAttributeName, 0));
}

TEST_F(NoteFileWriting, ArchivesAttachmentsAsEmptyPlaceholders) {
    platform::FileAttributes attributes;
    attributes.extensionHidden = true;
    attributes.posixPermissions = 0600;
    const auto wrapper = file("Report.zip", "zipped");
    wrapper->setFileAttributes(attributes);
    auto attachment = std::make_shared<QLTFileAttachment>(wrapper);
    const AttributedString archived = archivedTextOf(*packageOf(AttributedString::withAttachment(attachment)));
    const auto placeholder = attachmentAt(archived, 0);
    ASSERT_TRUE(placeholder && placeholder->fileWrapper());
    EXPECT_EQ(placeholder->className(), "QLTFileAttachment");
    EXPECT_EQ(placeholder->fileWrapper()->preferredFilename(), "Report.zip");
    EXPECT_TRUE(placeholder->fileWrapper()->regularFileContents().empty());
    EXPECT_EQ(placeholder->fileWrapper()->fileAttributes().posixPermissions, 0600u);
    EXPECT_EQ(wrapper->regularFileContents().bytes(), "zipped") << "the note's own attachment keeps its contents";
}

TEST_F(NoteFileWriting, ADirectoryBecomesAPlaceholderFileAndStaysADirectoryOnDisk) {
    auto folder = FileWrapper::directory({{"inner.txt", file("inner.txt", "in")}});
    folder->setPreferredFilename("Folder.bundle");
    const auto package = packageOf(AttributedString::withAttachment(std::make_shared<QLTFileAttachment>(folder)));
    const auto placeholder = attachmentAt(archivedTextOf(*package), 0);
    EXPECT_FALSE(placeholder->fileWrapper()->isDirectory());
    const auto entry = package->childNamed("Folder.bundle");
    ASSERT_TRUE(entry && entry->isDirectory());
    EXPECT_EQ(contentsOf(*entry, "inner.txt"), "in");
}

TEST_F(NoteFileWriting, AnAttachmentWithoutANameStaysAsItIs) {
    auto unnamed = FileWrapper::regularFile(platform::Data("bytes"));
    const auto package = packageOf(AttributedString::withAttachment(std::make_shared<TextAttachment>(unnamed)));
    const auto archived = attachmentAt(archivedTextOf(*package), 0);
    ASSERT_TRUE(archived && archived->fileWrapper());
    EXPECT_EQ(archived->fileWrapper()->regularFileContents().bytes(), "bytes");
}

TEST_F(NoteFileWriting, ADividerBecomesCentredTextWithoutAttachment) {
    const AttributedString archived = archivedTextOf(*packageOf(joined(plain(u"a\n"), divider(), plain(u"\nb"))));
    EXPECT_EQ(archived.string(), u"a\n***\nb");
    EXPECT_FALSE(attachmentAt(archived, 2));
    const auto& style =
        std::get<platform::ParagraphStyleReference>(*archived.attributeAt(platform::kParagraphStyleAttributeName, 2));
    EXPECT_EQ(style->alignment, platform::TextAlignment::center);
}

TEST_F(NoteFileWriting, ACheckboxIsArchivedWithTheText) {
    const AttributedString archived = archivedTextOf(*packageOf(joined(checkbox(true, 3), plain(u"done"))));
    const auto box = std::dynamic_pointer_cast<QLTChecklistTextAttachment>(attachmentAt(archived, 0));
    ASSERT_TRUE(box);
    EXPECT_TRUE(box->isOn());
    EXPECT_EQ(box->indentationLevel(), 3u);
}

TEST_F(NoteFileWriting, ArchivesFixedColors) {
    const AttributedString archived =
        archivedTextOf(*packageOf(with(platform::kForegroundColorAttributeName, Color::textColor(), u"text")));
    EXPECT_EQ(*archived.attributesAt(0).find<Color>(platform::kForegroundColorAttributeName), Color::black());
}

// ---- names

struct NameCase {
    std::string name;     // of the attachment
    std::string expected; // in the package; "*" stands for an identifier
};

TEST_F(NoteFileWriting, GivesEveryAttachmentANameOfItsOwn) {
    const std::string longName = std::string(300, 'n') + ".png";
    const NameCase cases[] = {
        {"photo.png", "photo.png"},
        {"photo.png", "*.png"},
        {"photo.png", "*.png"},
        {"Photo.png", "Photo.png"},
        {"no extension", "no extension"},
        {"no extension", "*"},
        {"TXT.rtf", "*.rtf"},
        {"txt.RTF", "*.RTF"},
        {"NoteText", "*"},
        {"notetext", "*"},
        {"NOTEATTRIBUTES", "*"},
        {"NoteAttributes", "*"},
        {"NoteText.txt", "NoteText.txt"},
        {"a/b.txt", "a-b.txt"},
        {std::string("nul\0.txt", 8), "nul.txt"},
        {longName, std::string(251, 'n') + ".png"},
        {longName, "*.png"},
    };
    AttributedString text;
    for (const NameCase& each : cases) text.append(attached(each.name, "contents of " + each.name));
    const auto package = packageOf(text);
    const AttributedString archived = archivedTextOf(*package);
    const auto rtfd = platform::attributedStringFromRTFD(*package);
    ASSERT_TRUE(rtfd) << rtfd.error().description();
    ASSERT_EQ(rtfd->length(), std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const std::string name = attachmentAt(archived, i)->fileWrapper()->preferredFilename();
        const std::size_t star = cases[i].expected.find('*');
        if (star == std::string::npos) {
            EXPECT_EQ(name, cases[i].expected) << cases[i].name;
        } else {
            EXPECT_EQ(name.size(), 36 + cases[i].expected.size() - 1) << cases[i].name << " became " << name;
            EXPECT_TRUE(name.starts_with("00000000-0000-0000-0000-0000000000")) << name;
            EXPECT_TRUE(name.ends_with(cases[i].expected.substr(1))) << name;
        }
        EXPECT_EQ(contentsOf(*package, name), "contents of " + cases[i].name);
        EXPECT_EQ(attachmentAt(*rtfd, i)->fileWrapper()->preferredFilename(), name) << "the name in TXT.rtf";
    }
    EXPECT_EQ(package->fileWrappers().size(), std::size(cases) + 3);
}

TEST_F(NoteFileWriting, AnIdentifierThatIsANameAlreadyIsNotTakenTwice) {
    const platform::UUID first = environment_->newUUID();
    environment_->newUUID = [taken = first, count = std::uint8_t{}]() mutable {
        platform::UUID next = taken;
        next.bytes.front() = static_cast<std::uint8_t>(count++ / 2); // each twice
        return next;
    };
    const std::string name = first.string() + ".png";
    const auto package =
        packageOf(joined(attached(name, "1"), attached("a.png", "2"), attached("a.png", "3"), attached("a.png", "4")));
    const AttributedString archived = archivedTextOf(*package);
    for (std::size_t i = 0; i < archived.length(); ++i)
        EXPECT_EQ(contentsOf(*package, attachmentAt(archived, i)->fileWrapper()->preferredFilename()),
                  std::to_string(i + 1));
}

TEST_F(NoteFileWriting, ARenamedAttachmentForgetsItsNameOnDisk) {
    const auto second = file("a.txt", "2");
    second->setFilename("a.txt");
    const auto package = packageOf(
        joined(attached("a.txt", "1"), AttributedString::withAttachment(std::make_shared<TextAttachment>(second))));
    const std::string renamed = attachmentAt(archivedTextOf(*package), 1)->fileWrapper()->preferredFilename();
    ASSERT_TRUE(package->childNamed(renamed));
    EXPECT_EQ(package->childNamed(renamed)->filename(), "");
    EXPECT_EQ(second->filename(), "a.txt");
}

TEST_F(NoteFileWriting, LeavesTheNotesOwnAttachmentsTheirNames) {
    QLTNoteFile note;
    note.setNoteText(joined(attached("a.txt", "1"), attached("a.txt", "2")));
    packageOf(note);
    for (const auto& wrapper : note.fileAttachments()) EXPECT_EQ(wrapper->preferredFilename(), "a.txt");
}

} // namespace
} // namespace quillet
