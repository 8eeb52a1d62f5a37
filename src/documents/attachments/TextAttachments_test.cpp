// The three attachment classes and the questions to any attachment.
#include "documents/attachments/AttachmentCoding.h"
#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistAttachmentCell.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachmentCell.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "documents/attachments/QLTFileAttachmentCell.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/files/FileWrapper.h"
#include "platform/plist/PropertyList.h"
#include "tests/support/StylesFixture.h"

using namespace quillet;
using platform::ArchivedObject;
using platform::AttributedString;
using platform::Data;
using platform::FileWrapper;
using platform::TextAttachment;

namespace {

class Attachments : public StylesFixture {
  protected:
    void SetUp() override {
        StylesFixture::SetUp();
        registerArchivableAttachmentClasses();
    }
};

using FileAttachments = Attachments;
using ChecklistAttachments = Attachments;
using DividerAttachments = Attachments;
using AttachmentExtensions = Attachments;

std::shared_ptr<FileWrapper> file(std::string name, std::string bytes = "bytes", bool extensionHidden = false) {
    auto wrapper = FileWrapper::regularFile(Data(std::move(bytes)));
    wrapper->setPreferredFilename(std::move(name));
    wrapper->setFileAttributes({.modificationDate = {}, .extensionHidden = extensionHidden});
    return wrapper;
}

std::string pdf(const char* name) {
    return tests::readFile(tests::sourceDirectory() / "tests/data/pdf" / name);
}

template<class T>
std::shared_ptr<T> throughArchive(const std::shared_ptr<T>& object) {
    using namespace platform;
    const auto data = KeyedArchiver::archivedData(object, KeyedArchiver::Coding::secure);
    if (!data) return nullptr;
    UnarchiveOptions options;
    options.allowedClasses = {"NSTextAttachment", "NSTextAttachmentCell", "NSFileWrapper"};
    const auto read = unarchivedObject(data->bytes(), options);
    return read ? read->template asMutable<T>() : nullptr;
}

} // namespace

TEST_F(Attachments, ConstantsAreThoseOfStoredNotes) {
    EXPECT_EQ(QLTChecklistType, "com.tesseral.checklist");
    EXPECT_EQ(QLTDividerTextAttachmentType, "com.tesseral.quillet.note.divider");
    EXPECT_EQ(QLTChecklistOnValueReplacementString, u"\u2713 ");
    EXPECT_EQ(QLTChecklistOffValueReplacementString, u"\u25E6 ");
    EXPECT_EQ(QLTDividerReplacementString, u"***");
    EXPECT_EQ(QLTChecklistImageDimension, 18);
    EXPECT_EQ(QLTChecklistRightBorder, 2);
    EXPECT_EQ(QLTChecklistMaxIndentationLevel, 5u);
    EXPECT_EQ(QLTDividerTextAttachmentCellSize, 1);
    EXPECT_EQ(QLTDividerTextAttachmentCellBorderSize, 7);
}

TEST_F(FileAttachments, AreForEveryTypeButThoseShownInPlace) {
    const struct {
        std::optional<std::string_view> type;
        bool uses;
    } kCases[] = {
        {"public.jpeg", false},
        {"com.apple.quicktime-movie", false},
        {"com.adobe.pdf", false},
        {"public.image", false},
        {"public.zip-archive", true},
        {"public.plain-text", true},
        {"public.mp3", true},
        {std::nullopt, false},
        {"org.example.unheard-of", true},
        {"public.mpeg-4", false},
    };
    for (const auto& each : kCases)
        EXPECT_EQ(QLTFileAttachment::shouldUseForFileType(each.type), each.uses) << each.type.value_or("nil");
}

TEST_F(FileAttachments, TakeTheWrapperOfAnotherAttachment) {
    const TextAttachment plain(file("a.zip"));
    const auto attachment = QLTFileAttachment::fileAttachmentWithAttachment(plain);
    EXPECT_EQ(attachment->fileWrapper(), plain.fileWrapper());
    EXPECT_EQ(attachment->className(), "QLTFileAttachment");
    EXPECT_FALSE(
        QLTFileAttachment::fileAttachmentWithAttachment(TextAttachment(Data("x"), "public.data"))->fileWrapper());
    const auto same = attachment->sameClassWithFileWrapper(file("b.zip"));
    EXPECT_EQ(same->className(), "QLTFileAttachment");
    EXPECT_EQ(same->fileWrapper()->preferredFilename(), "b.zip");
}

TEST_F(FileAttachments, ViewableInPlaceAreImagesMoviesAndOpenPDF) {
    const struct {
        const char* name;
        std::string bytes;
        bool viewable;
    } kCases[] = {
        {"a.jpg", "", true},
        {"a.mov", "", true},
        {"a.zip", "", false},
        {"a.txt", "", false},
        {"a.mp3", "", false},
        {"name", "", false},
        {"open.pdf", pdf("open.pdf"), true},
        {"owner.pdf", pdf("owner-password.pdf"), true},
        {"user.pdf", pdf("user-password.pdf"), false},
        {"damaged.pdf", "junk", true},
    };
    for (const auto& each : kCases)
        EXPECT_EQ(QLTFileAttachment(file(each.name, each.bytes)).canViewInPlace(), each.viewable) << each.name;
    EXPECT_FALSE(QLTFileAttachment().canViewInPlace());
}

TEST_F(FileAttachments, CellIsMadeOnceAndFollowsTheFile) {
    QLTFileAttachment attachment(file("first.zip"));
    EXPECT_FALSE(attachment.fileAttachmentCell());
    const auto cell = attachment.attachmentCell();
    EXPECT_EQ(cell, attachment.attachmentCell());
    EXPECT_EQ(cell, attachment.cell()) << "it is the attachment's cell for everybody";
    EXPECT_EQ(cell, attachment.fileAttachmentCell());
    EXPECT_EQ(cell->attachment(), &attachment);
    EXPECT_EQ(attachment.fileAttachmentCell()->filenameString().string(), u"first.zip");
    attachment.setFileWrapper(file("second.pdf"));
    EXPECT_EQ(attachment.fileAttachmentCell()->filenameString().string(), u"second.pdf");
}

TEST_F(FileAttachments, CellOutlivesItsAttachment) {
    auto attachment = std::make_unique<QLTFileAttachment>(file("first.zip"));
    const auto cell = attachment->attachmentCell();
    attachment.reset();
    EXPECT_EQ(cell->attachment(), nullptr);
    EXPECT_EQ(cell->cellSize().width, 32);
}

TEST_F(FileAttachments, KeepFileAndFlagInArchives) {
    for (const bool converts : {false, true}) {
        auto attachment = std::make_shared<QLTFileAttachment>(file("a.zip", "contents"));
        attachment->setConvertToInPlaceOnMac(converts);
        const auto read = throughArchive(attachment);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->convertToInPlaceOnMac(), converts);
        ASSERT_TRUE(read->fileWrapper());
        EXPECT_EQ(read->fileWrapper()->preferredFilename(), "a.zip");
        EXPECT_EQ(read->fileWrapper()->regularFileContents(), Data("contents"));
    }
}

TEST_F(ChecklistAttachments, BeginUntickedAndOutermost) {
    const auto box = std::make_shared<QLTChecklistTextAttachment>();
    EXPECT_FALSE(box->isOn());
    EXPECT_EQ(box->indentationLevel(), 0u);
    EXPECT_EQ(box->fileType(), "com.tesseral.checklist");
    EXPECT_EQ(box->replacementString(), u"\u25E6 ");
    EXPECT_EQ(box->attachmentCell()->attachment(), box.get());
    box->setOn(true);
    EXPECT_EQ(box->replacementString(), u"\u2713 ");
    EXPECT_EQ(box->dumpDescription(), "on indent 0");
    EXPECT_EQ(displayName(*box), "");
    box->setFileWrapper(file("named.txt"));
    EXPECT_EQ(displayName(*box), "");
}

TEST_F(ChecklistAttachments, StateIsTheCells) {
    const auto box = std::make_shared<QLTChecklistTextAttachment>();
    box->checklistCell()->setOn(true);
    EXPECT_TRUE(box->isOn());
    box->setAttachmentCell(std::make_shared<QLTDividerTextAttachmentCell>());
    EXPECT_FALSE(box->isOn()) << "another kind of cell";
    EXPECT_EQ(box->attachmentCell()->className(), "QLTChecklistAttachmentCell");
    box->setOn(true);
    EXPECT_TRUE(box->checklistCell()->isOn());
}

TEST_F(ChecklistAttachments, IndentByLevelInTheBodyStyle) {
    const struct {
        std::uint64_t level;
        double indent;
    } kCases[] = {{0, 20}, {1, 38}, {2, 56}, {5, 110}};
    const auto box = std::make_shared<QLTChecklistTextAttachment>();
    for (const auto& each : kCases) {
        box->setIndentationLevel(each.level);
        platform::ParagraphStyle expected = *QLTNoteTextStyle::bodyNoteTextStyle()->paragraphStyle();
        expected.headIndent = each.indent;
        expected.firstLineHeadIndent = -each.indent;
        EXPECT_EQ(*box->checklistParagraphStyle(), expected) << each.level;
    }
    EXPECT_EQ(box->attributedString().string(), u"\uFFFC");
    EXPECT_EQ(box->attributedString().attributesAt(0),
              (platform::AttributeSet{{platform::kAttachmentAttributeName, platform::TextAttachmentReference(box)},
                                      {platform::kParagraphStyleAttributeName, box->checklistParagraphStyle()}}));
}

TEST_F(ChecklistAttachments, ArchivesKeepStateAndLevelButNoFileType) {
    for (const bool on : {false, true}) {
        auto box = std::make_shared<QLTChecklistTextAttachment>();
        box->setOn(on);
        box->setIndentationLevel(3);
        const auto read = throughArchive(box);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->isOn(), on);
        EXPECT_EQ(read->indentationLevel(), 3u);
        EXPECT_EQ(read->fileType(), "");
        EXPECT_EQ(read->attachmentCell()->attachment(), read.get());
    }
}

TEST_F(ChecklistAttachments, CellStateIsArchivedWithThem) {
    auto box = std::make_shared<QLTChecklistTextAttachment>();
    box->setOn(true);
    const auto cell = throughArchive(box->checklistCell());
    ASSERT_TRUE(cell);
    EXPECT_TRUE(cell->isOn());
    const auto data = platform::KeyedArchiver::archivedData(box, platform::KeyedArchiver::Coding::plain);
    ASSERT_TRUE(data);
    EXPECT_NE(data->bytes().find("QLTChecklistAttachmentCellOn"), std::string_view::npos);
}

TEST_F(ChecklistAttachments, CopyIsANewOneInTheSameState) {
    auto box = std::make_shared<QLTChecklistTextAttachment>();
    box->setOn(true);
    box->setIndentationLevel(2);
    const auto copy = box->copy();
    EXPECT_NE(copy, box);
    EXPECT_NE(copy->checklistCell(), box->checklistCell());
    EXPECT_TRUE(copy->isOn());
    EXPECT_EQ(copy->indentationLevel(), 2u);
    EXPECT_EQ(copy->fileType(), "com.tesseral.checklist");
}

TEST_F(ChecklistAttachments, TravelOnThePasteboardInTwoForms) {
    for (const bool on : {false, true}) {
        auto box = std::make_shared<QLTChecklistTextAttachment>();
        box->setOn(on);
        box->setIndentationLevel(4);
        platform::Pasteboard pasteboard;
        pasteboard.writeObject(*box);
        EXPECT_EQ(pasteboard.types(), (std::vector<std::string>{"com.tesseral.checklist", "public.utf8-plain-text"}));
        EXPECT_EQ(pasteboard.stringForType("public.utf8-plain-text"), on ? u"\u2713 " : u"\u25E6 ");
        EXPECT_EQ(QLTChecklistTextAttachment::readableTypesForPasteboard(),
                  std::vector<std::string>{"com.tesseral.checklist"});
        const auto* form = pasteboard.propertyListForType(QLTChecklistType);
        ASSERT_TRUE(form);
        const auto pasted = QLTChecklistTextAttachment::initWithPasteboardPropertyList(*form, QLTChecklistType);
        ASSERT_TRUE(pasted);
        EXPECT_EQ(pasted->isOn(), on);
        EXPECT_EQ(pasted->indentationLevel(), 4u);
        EXPECT_FALSE(QLTChecklistTextAttachment::initWithPasteboardPropertyList(*form, "public.utf8-plain-text"));
        EXPECT_TRUE(box->pasteboardPropertyListForType("public.html").isNull());
    }
    for (const platform::Value& bad : {platform::Value(), platform::Value("text"), platform::Value(Data("junk"))})
        EXPECT_FALSE(QLTChecklistTextAttachment::initWithPasteboardPropertyList(bad, QLTChecklistType));
}

TEST_F(DividerAttachments, StandBetweenTwoLineBreaks) {
    const auto divider = std::make_shared<QLTDividerTextAttachment>();
    EXPECT_EQ(divider->fileType(), "com.tesseral.quillet.note.divider");
    const AttributedString text = divider->attributedString();
    EXPECT_EQ(text.string(), u"\n\uFFFC\n");
    const auto body = QLTNoteTextStyle::bodyNoteTextStyle()->attributes().with(platform::kForegroundColorAttributeName,
                                                                               platform::Color::textColor());
    EXPECT_EQ(text.attributesAt(0), body);
    EXPECT_EQ(text.attributesAt(1), (platform::AttributeSet{{platform::kAttachmentAttributeName,
                                                             platform::TextAttachmentReference(divider)}}));
    EXPECT_EQ(text.attributesAt(2), body);
}

TEST_F(DividerAttachments, BodyColorGivesWayToTheTextColor) {
    QLTNoteTextStyle::bodyNoteTextStyle()->setForegroundColor(platform::Color::sRGB(1, 0, 0));
    const auto color = [](const AttributedString& text) {
        return *text.attributesAt(0).find<platform::Color>(platform::kForegroundColorAttributeName);
    };
    EXPECT_EQ(color(std::make_shared<QLTDividerTextAttachment>()->attributedString()), platform::Color::textColor());
    EXPECT_EQ(color(QLTDividerTextAttachment::replacementString()), platform::Color::sRGB(1, 0, 0));
}

TEST_F(DividerAttachments, PlainFormIsThreeAsterisksCentred) {
    const AttributedString text = QLTDividerTextAttachment::replacementString();
    EXPECT_EQ(text.string(), u"***");
    platform::ParagraphStyle centred;
    centred.alignment = platform::TextAlignment::center;
    EXPECT_EQ(text.attributesAt(0),
              QLTNoteTextStyle::bodyNoteTextStyle()->attributes().with(
                  platform::kParagraphStyleAttributeName,
                  platform::ParagraphStyleReference(std::make_shared<const platform::ParagraphStyle>(centred))));
    EXPECT_EQ(text.runs().size(), 1u);
}

TEST_F(DividerAttachments, CellIsMadeAgainWhenItIsGone) {
    const auto divider = std::make_shared<QLTDividerTextAttachment>();
    const auto cell = divider->attachmentCell();
    EXPECT_EQ(cell->attachment(), divider.get());
    divider->setAttachmentCell(nullptr);
    EXPECT_EQ(divider->attachmentCell()->className(), "QLTDividerTextAttachmentCell");
    const auto read = throughArchive(divider);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->fileType(), "com.tesseral.quillet.note.divider");
}

TEST_F(AttachmentExtensions, OnlyAPDFBehindAUserPasswordIsProtected) {
    const struct {
        const char* name;
        std::string bytes;
        bool isProtected;
    } kCases[] = {
        {"a.pdf", pdf("user-password.pdf"), true},  {"a.pdf", pdf("owner-password.pdf"), false},
        {"a.pdf", pdf("open.pdf"), false},          {"a.pdf", "", false},
        {"a.zip", pdf("user-password.pdf"), false}, {"name", pdf("user-password.pdf"), false},
    };
    for (const auto& each : kCases)
        EXPECT_EQ(isPasswordProtectedPDF(TextAttachment(file(each.name, each.bytes))), each.isProtected) << each.name;
    EXPECT_TRUE(isPasswordProtectedPDF(TextAttachment(Data(pdf("user-password.pdf")), "com.adobe.pdf")));
    EXPECT_FALSE(isPasswordProtectedPDF(TextAttachment(std::nullopt, "com.adobe.pdf")));
    EXPECT_FALSE(isPasswordProtectedPDF(TextAttachment()));
}

TEST_F(AttachmentExtensions, DisplayNameHidesAHiddenExtension) {
    const struct {
        const char *preferred, *filename;
        bool hidden;
        const char* displayed;
    } kCases[] = {
        {"Report.pdf", "", true, "Report"},         {"Report.pdf", "", false, "Report.pdf"},
        {"", "disk.txt", false, "disk.txt"},        {"", "disk.txt", true, "disk"},
        {"Report.pdf", "disk.txt", true, "Report"}, {"name", "", true, "name"},
        {".hidden", "", true, ".hidden"},           {"", "", true, ""},
    };
    for (const auto& each : kCases) {
        const auto wrapper = file(each.preferred, "", each.hidden);
        wrapper->setFilename(each.filename);
        EXPECT_EQ(displayName(TextAttachment(wrapper)), each.displayed) << each.preferred << each.filename;
    }
    EXPECT_EQ(displayName(TextAttachment()), "");
    EXPECT_EQ(displayName(*std::make_shared<QLTDividerTextAttachment>()), "");
}
