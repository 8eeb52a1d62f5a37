#include "platform/text/TextAttachment.h"

#include "platform/files/FileWrapper.h"

namespace platform {

TextAttachment::TextAttachment(std::shared_ptr<FileWrapper> fileWrapper) : fileWrapper_(std::move(fileWrapper)) {}

TextAttachment::TextAttachment(std::optional<Data> contents, std::string_view fileType)
    : contents_(std::move(contents)), fileType_(fileType) {}

std::shared_ptr<TextAttachment>
TextAttachment::sameClassWithFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) const {
    return std::make_shared<TextAttachment>(std::move(fileWrapper));
}

void TextAttachment::setFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) {
    fileWrapper_ = std::move(fileWrapper);
}

} // namespace platform
