#include "platform/text/TextAttachment.h"

#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"

namespace platform {

TextAttachment::TextAttachment(std::shared_ptr<FileWrapper> fileWrapper) : fileWrapper_(std::move(fileWrapper)) {}

TextAttachment::TextAttachment(std::optional<Data> contents, std::string_view fileType)
    : contents_(std::move(contents)) {
    if (!fileType.empty()) ownFileType_ = fileType;
}

std::shared_ptr<TextAttachment>
TextAttachment::sameClassWithFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) const {
    return std::make_shared<TextAttachment>(std::move(fileWrapper));
}

void TextAttachment::setFileWrapper(std::shared_ptr<FileWrapper> fileWrapper) {
    fileWrapper_ = std::move(fileWrapper);
}

std::string TextAttachment::fileType() const {
    if (ownFileType_) return *ownFileType_;
    if (!fileWrapper_) return {};
    const std::string& name = fileWrapper_->preferredFilename();
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return {};
    const auto type = UTType::typeWithFilenameExtension(std::string_view(name).substr(dot + 1));
    return type ? type->identifier() : std::string();
}

} // namespace platform
