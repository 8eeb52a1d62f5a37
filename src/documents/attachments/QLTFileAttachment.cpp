#include "documents/attachments/QLTFileAttachment.h"

#include <algorithm>

#include "documents/attachments/QLTFileAttachmentCell.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/files/UTType.h"

namespace quillet {

using platform::FileWrapper;
using platform::UTType;

QLTFileAttachment::QLTFileAttachment(std::shared_ptr<FileWrapper> fileWrapper)
    : TextAttachment(std::move(fileWrapper)) {}

QLTFileAttachment::~QLTFileAttachment() {
    if (fileAttachmentCell_ && fileAttachmentCell_->attachment() == this) fileAttachmentCell_->setAttachment(nullptr);
}

bool QLTFileAttachment::shouldUseForFileType(std::optional<std::string_view> fileType) {
    if (!fileType) return false;
    const auto type = UTType::typeWithIdentifier(*fileType);
    constexpr std::string_view kShownInPlace[] = {platform::kUTTypeImage, platform::kUTTypeMovie, platform::kUTTypePDF};
    return !type ||
           std::ranges::none_of(kShownInPlace, [&](std::string_view shown) { return type->conformsTo(shown); });
}

std::shared_ptr<QLTFileAttachment> QLTFileAttachment::fileAttachmentWithAttachment(const TextAttachment& attachment) {
    return std::make_shared<QLTFileAttachment>(attachment.fileWrapper());
}

bool QLTFileAttachment::canViewInPlace() const {
    const auto type = UTType::typeWithIdentifier(fileType());
    if (!type) return false;
    if (type->conformsTo(platform::kUTTypePDF)) return !isPasswordProtectedPDF(*this);
    return type->conformsTo(platform::kUTTypeImage) || type->conformsTo(platform::kUTTypeMovie);
}

std::shared_ptr<platform::TextAttachment>
QLTFileAttachment::sameClassWithFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) const {
    return std::make_shared<QLTFileAttachment>(std::move(fileWrapper));
}

void QLTFileAttachment::setFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) {
    TextAttachment::setFileWrapper(std::move(fileWrapper));
    if (fileAttachmentCell_) fileAttachmentCell_->setAttachment(this);
}

std::shared_ptr<platform::TextAttachmentCell> QLTFileAttachment::attachmentCell() {
    if (!fileAttachmentCell_) {
        fileAttachmentCell_ = std::make_shared<QLTFileAttachmentCell>();
        fileAttachmentCell_->setAttachment(this);
        setAttachmentCell(fileAttachmentCell_);
    }
    return fileAttachmentCell_;
}

} // namespace quillet
