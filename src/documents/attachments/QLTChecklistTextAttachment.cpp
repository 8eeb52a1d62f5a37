#include "documents/attachments/QLTChecklistTextAttachment.h"

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistAttachmentCell.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/text/TextCoding.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

using platform::AttributedString;
using platform::Value;

namespace {

constexpr std::string_view kOnKey = "on", kIndentationLevelKey = "indentationLevel";

} // namespace

QLTChecklistTextAttachment::QLTChecklistTextAttachment() {
    setFileType(std::string(QLTChecklistType));
    attachmentCell();
}

QLTChecklistTextAttachment::~QLTChecklistTextAttachment() {
    if (cell() && cell()->attachment() == this) cell()->setAttachment(nullptr);
}

std::shared_ptr<QLTChecklistTextAttachment>
QLTChecklistTextAttachment::initWithCoder(const platform::ArchivedFields& fields) {
    auto attachment = std::make_shared<QLTChecklistTextAttachment>();
    attachment->setFileType(std::nullopt);
    attachment->setOn(fields.decodeBool(kOnKey));
    attachment->setIndentationLevel(static_cast<std::uint64_t>(fields.decodeInteger(kIndentationLevelKey)));
    return attachment;
}

void QLTChecklistTextAttachment::encodeWithCoder(platform::KeyedArchiver& archiver) const {
    platform::encodeTextAttachment(archiver, *this);
    archiver.encodeObject("NSCell", std::dynamic_pointer_cast<QLTChecklistAttachmentCell>(cell()));
    archiver.encodeBool(kOnKey, isOn());
    archiver.encodeInteger(kIndentationLevelKey, static_cast<std::int64_t>(indentationLevel_));
}

std::shared_ptr<QLTChecklistTextAttachment> QLTChecklistTextAttachment::copy() const {
    auto other = std::make_shared<QLTChecklistTextAttachment>();
    other->setOn(isOn());
    other->setIndentationLevel(indentationLevel_);
    return other;
}

const QLTChecklistAttachmentCell* QLTChecklistTextAttachment::installedCell() const {
    return dynamic_cast<const QLTChecklistAttachmentCell*>(cell().get());
}

bool QLTChecklistTextAttachment::isOn() const {
    const QLTChecklistAttachmentCell* installed = installedCell();
    return installed && installed->isOn(); // a new cell would be off
}

void QLTChecklistTextAttachment::setOn(bool on) {
    checklistCell()->setOn(on);
}

std::u16string_view QLTChecklistTextAttachment::replacementString() const {
    return isOn() ? QLTChecklistOnValueReplacementString : QLTChecklistOffValueReplacementString;
}

platform::ParagraphStyleReference QLTChecklistTextAttachment::checklistParagraphStyle() const {
    const double indent = QLTChecklistImageDimension * static_cast<double>(indentationLevel_) +
                          QLTChecklistImageDimension + QLTChecklistRightBorder;
    auto style = std::make_shared<platform::ParagraphStyle>(*QLTNoteTextStyle::bodyNoteTextStyle()->paragraphStyle());
    style->headIndent = indent;
    style->firstLineHeadIndent = -indent;
    return style;
}

AttributedString QLTChecklistTextAttachment::attributedString() {
    AttributedString text = AttributedString::withAttachment(shared_from_this());
    text.addAttribute(platform::kParagraphStyleAttributeName, checklistParagraphStyle(), {0, text.length()});
    return text;
}

std::string QLTChecklistTextAttachment::dumpDescription() const {
    return std::string(isOn() ? "on" : "off") + " indent " + std::to_string(indentationLevel_);
}

std::shared_ptr<platform::TextAttachment>
QLTChecklistTextAttachment::sameClassWithFileWrapper(std::shared_ptr<platform::FileWrapper> fileWrapper) const {
    auto other = std::make_shared<QLTChecklistTextAttachment>();
    other->setFileWrapper(std::move(fileWrapper));
    return other;
}

std::shared_ptr<platform::TextAttachmentCell> QLTChecklistTextAttachment::attachmentCell() {
    return checklistCell();
}

std::shared_ptr<QLTChecklistAttachmentCell> QLTChecklistTextAttachment::checklistCell() {
    auto installed = std::dynamic_pointer_cast<QLTChecklistAttachmentCell>(cell());
    if (installed) return installed;
    installed = std::make_shared<QLTChecklistAttachmentCell>();
    installed->setAttachment(this);
    setAttachmentCell(installed);
    return installed;
}

std::vector<std::string> QLTChecklistTextAttachment::writableTypes() const {
    return {std::string(QLTChecklistType), std::string(platform::kPasteboardTypeString)};
}

Value QLTChecklistTextAttachment::pasteboardPropertyListForType(std::string_view type) const {
    if (type == platform::kPasteboardTypeString) return replacementString();
    if (type != QLTChecklistType) return {};
    auto archive = platform::KeyedArchiver::archivedData(shared_from_this(), platform::KeyedArchiver::Coding::plain);
    return archive ? Value(*std::move(archive)) : Value();
}

std::vector<std::string> QLTChecklistTextAttachment::readableTypesForPasteboard() {
    return {std::string(QLTChecklistType)};
}

std::shared_ptr<QLTChecklistTextAttachment>
QLTChecklistTextAttachment::initWithPasteboardPropertyList(const Value& value, std::string_view type) {
    const auto* data = value.as<platform::Data>();
    if (type != QLTChecklistType || !data) return nullptr;
    platform::UnarchiveOptions options;
    options.requiresSecureCoding = false;
    const auto object = platform::unarchivedObject(data->bytes(), options);
    return object ? object->asMutable<QLTChecklistTextAttachment>() : nullptr;
}

} // namespace quillet
