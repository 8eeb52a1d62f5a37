// A file in a note's text that is shown as an icon with its name.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "platform/text/TextAttachment.h"

namespace quillet {

class QLTFileAttachmentCell;

class QLTFileAttachment : public platform::TextAttachment {
  public:
    QLTFileAttachment() = default;
    explicit QLTFileAttachment(std::shared_ptr<platform::FileWrapper> fileWrapper);
    ~QLTFileAttachment() override;

    // Every type but images, movies and PDF, which are shown as they are; no type, no.
    static bool shouldUseForFileType(std::optional<std::string_view> fileType);
    // A file attachment with the same file wrapper.
    static std::shared_ptr<QLTFileAttachment> fileAttachmentWithAttachment(const TextAttachment& attachment);

    // Whether the content can be shown in the text: images, movies, and PDF that opens without a password.
    bool canViewInPlace() const;
    // To be shown as content when opened on a desktop.
    bool convertToInPlaceOnMac() const { return convertToInPlaceOnMac_; }
    void setConvertToInPlaceOnMac(bool converts) { convertToInPlaceOnMac_ = converts; }

    const std::shared_ptr<QLTFileAttachmentCell>& fileAttachmentCell() const { return fileAttachmentCell_; }
    void setFileAttachmentCell(std::shared_ptr<QLTFileAttachmentCell> cell) { fileAttachmentCell_ = std::move(cell); }

    std::string_view className() const override { return "QLTFileAttachment"; }
    std::shared_ptr<TextAttachment>
    sameClassWithFileWrapper(std::shared_ptr<platform::FileWrapper> fileWrapper) const override;
    // The cell takes icon and name from the new file at once.
    void setFileWrapper(std::shared_ptr<platform::FileWrapper> fileWrapper) override;
    // Made at first use.
    std::shared_ptr<platform::TextAttachmentCell> attachmentCell() override;

  private:
    bool convertToInPlaceOnMac_ = false;
    std::shared_ptr<QLTFileAttachmentCell> fileAttachmentCell_;
};

} // namespace quillet
