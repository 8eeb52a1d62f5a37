// What golden cases cannot say: real files, long names, levels out of range.
#include "richtext/Checklists.h"

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/text/AttributedString.h"
#include "richtext/RichTextCase.h"
#include "tests/support/StylesFixture.h"

namespace quillet {

using platform::AttributedString;
using platform::Data;
using platform::FileWrapper;
using platform::TextAttachment;
using platform::TextAttachmentReference;

namespace {

using Checklists = StylesFixture;
using FilesInText = StylesFixture;

TextAttachmentReference attachmentAt(const AttributedString& text, std::size_t position) {
    return std::get<TextAttachmentReference>(*text.attributeAt(platform::kAttachmentAttributeName, position));
}

AttributedString withFile(std::string name, std::string bytes) {
    auto wrapper = FileWrapper::regularFile(Data(std::move(bytes)));
    wrapper->setPreferredFilename(std::move(name));
    return AttributedString::withAttachment(std::make_shared<TextAttachment>(std::move(wrapper)));
}

} // namespace

TEST_F(Checklists, MarkdownOfADamagedLevelIsLimited) {
    const auto box = std::make_shared<QLTChecklistTextAttachment>();
    box->setIndentationLevel(std::uint64_t{1} << 63);
    AttributedString text = AttributedString::withAttachment(box);
    convertChecklistAttachmentsToMarkdownSyntax(text);
    EXPECT_EQ(text.string(), std::u16string(400, u' ') + u"- [ ] ");
}

TEST_F(Checklists, ListsOfADamagedLevelAreThoseOfTheItemBefore) {
    for (const std::uint64_t level : {std::uint64_t{6}, ~std::uint64_t{0}}) {
        const auto box = std::make_shared<QLTChecklistTextAttachment>();
        box->setIndentationLevel(level);
        AttributedString text = AttributedString::withAttachment(box);
        convertChecklistAttachmentsToTextLists(text);
        const auto* style =
            text.attributesAt(0).find<platform::ParagraphStyleReference>(platform::kParagraphStyleAttributeName);
        ASSERT_TRUE(style);
        EXPECT_EQ((*style)->textLists.size(), 1U);
    }
}

TEST_F(Checklists, EachConversionMakesNewBoxes) {
    AttributedString text(u"\t✓\ta\n\t✓\tb");
    AttributedString other = text;
    convertTextListsToChecklistAttachments(text);
    convertTextListsToChecklistAttachments(other);
    EXPECT_NE(attachmentAt(text, 0), attachmentAt(text, 3));
    EXPECT_NE(attachmentAt(text, 0), attachmentAt(other, 0));
}

TEST_F(FilesInText, OnlyAPDFBehindAPasswordBecomesAFileAttachment) {
    const struct {
        const char* name;
        bool isReplaced;
    } kRows[] = {{"user-password.pdf", true}, {"owner-password.pdf", false}, {"open.pdf", false}};
    for (const auto& row : kRows) {
        const auto path = tests::sourceDirectory() / "tests/data/pdf" / row.name;
        ASSERT_TRUE(std::filesystem::exists(path));
        AttributedString text = withFile(row.name, tests::readFile(path));
        const auto wrapper = attachmentAt(text, 0)->fileWrapper();
        replaceFileAttachmentsInRange(text, {0, 1});
        const auto attachment = attachmentAt(text, 0);
        EXPECT_EQ(std::dynamic_pointer_cast<QLTFileAttachment>(attachment) != nullptr, row.isReplaced) << row.name;
        EXPECT_EQ(attachment->fileWrapper(), wrapper);
    }
}

TEST_F(FilesInText, OneAttachmentOnSeveralCharactersBecomesOneCharacter) {
    AttributedString text = textFromDump("\"\\ufffc\\ufffc\"  attachment A1 NSTextAttachment \"a.zip\" 1 bytes\n");
    replaceFileAttachmentsInRange(text, {0, 2});
    EXPECT_EQ(text.string(), u"\uFFFC");
}

TEST_F(FilesInText, NamesOf256UnitsAreCutAndShorterOnesStay) {
    const struct {
        std::u16string name;
        std::size_t units;
    } kRows[] = {
        {std::u16string(255, u'a'), 255},
        {std::u16string(256, u'a'), 255},
        {std::u16string(1000, u'ü'), 255},
        {std::u16string(251, u'/') + u".txt", 255},
        {u"a:b/c", 5},
        {u"", 0},
    };
    for (const auto& row : kRows) {
        AttributedString text = withFile(platform::utf8FromUTF16(row.name), "bytes");
        fixLengthOfAttachmentFilenames(text);
        const auto name = platform::utf16FromUTF8(attachmentAt(text, 0)->fileWrapper()->preferredFilename());
        EXPECT_EQ(name.size(), row.units) << platform::utf8FromUTF16(row.name);
        EXPECT_TRUE(row.name.size() >= 256 || name == row.name);
    }
}

TEST_F(FilesInText, LongNamesOfEveryClassAreMadeSafe) {
    auto wrapper = FileWrapper::regularFile(Data("bytes"));
    wrapper->setPreferredFilename(std::string(300, ':') + "a");
    AttributedString text = AttributedString::withAttachment(std::make_shared<QLTFileAttachment>(wrapper));
    fixLengthOfAttachmentFilenames(text);
    EXPECT_EQ(wrapper->preferredFilename().find(':'), std::string::npos);
}

} // namespace quillet
