#include "documents/attachments/QLTDividerTextAttachment.h"

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTDividerTextAttachmentCell.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;

namespace {

std::shared_ptr<QLTDividerTextAttachmentCell> makeCell(platform::TextAttachment* attachment) {
    auto cell = std::make_shared<QLTDividerTextAttachmentCell>();
    cell->setAttachment(attachment);
    return cell;
}

} // namespace

QLTDividerTextAttachment::QLTDividerTextAttachment() {
    setFileType(std::string(QLTDividerTextAttachmentType));
    setAttachmentCell(makeCell(this));
}

QLTDividerTextAttachment::QLTDividerTextAttachment(const platform::TextView& textView) : QLTDividerTextAttachment() {
    auto spanning = makeCell(this);
    spanning->setTextView(&textView);
    setAttachmentCell(std::move(spanning));
}

QLTDividerTextAttachment::~QLTDividerTextAttachment() {
    if (cell() && cell()->attachment() == this) cell()->setAttachment(nullptr);
}

AttributedString QLTDividerTextAttachment::attributedString() {
    const auto body = std::make_shared<const AttributeSet>(QLTNoteTextStyle::bodyNoteTextStyle()->attributes().with(
        platform::kForegroundColorAttributeName, platform::Color::textColor()));
    AttributedString text(u"\n", body);
    text.append(AttributedString::withAttachment(shared_from_this()));
    text.append(u"\n", body);
    return text;
}

AttributedString QLTDividerTextAttachment::replacementString() {
    auto centred = std::make_shared<platform::ParagraphStyle>(*platform::ParagraphStyle::defaultParagraphStyle());
    centred->alignment = platform::TextAlignment::center;
    return AttributedString(
        std::u16string(QLTDividerReplacementString),
        std::make_shared<const AttributeSet>(QLTNoteTextStyle::bodyNoteTextStyle()->attributes().with(
            platform::kParagraphStyleAttributeName, platform::ParagraphStyleReference(std::move(centred)))));
}

std::shared_ptr<platform::TextAttachment>
QLTDividerTextAttachment::sameClassWithFileWrapper(std::shared_ptr<platform::FileWrapper> fileWrapper) const {
    auto other = std::make_shared<QLTDividerTextAttachment>();
    other->setFileWrapper(std::move(fileWrapper));
    return other;
}

std::shared_ptr<platform::TextAttachmentCell> QLTDividerTextAttachment::attachmentCell() {
    if (!cell()) setAttachmentCell(makeCell(this));
    return cell();
}

} // namespace quillet
