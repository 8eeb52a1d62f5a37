#include "platform/rtf/RTFAttachments.h"

#include <algorithm>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/graphics/Font.h"
#include "platform/graphics/ImageSize.h"
#include "platform/text/TextAttachment.h"

namespace platform {

namespace {

constexpr double kIconSide = 32;
constexpr double kNameSize = Font::kSmallSystemFontSize;
constexpr double kNameGlyphWidth = 0.55; // of the size: near the middle of what letters of a text face take
constexpr std::string_view kUnnamed = "Attachment";

std::string_view contentsOf(const TextAttachment& attachment) {
    if (const auto& wrapper = attachment.fileWrapper()) return wrapper->regularFileContents().bytes();
    return attachment.contents() ? attachment.contents()->bytes() : std::string_view();
}

bool hasFile(const TextAttachment& attachment) {
    return attachment.fileWrapper() || attachment.contents();
}

std::string preferredName(const TextAttachment& attachment) {
    if (const auto& wrapper = attachment.fileWrapper()) {
        if (!wrapper->preferredFilename().empty()) return wrapper->preferredFilename();
        if (!wrapper->filename().empty()) return wrapper->filename();
    }
    return std::string(kUnnamed);
}

} // namespace

CellSize attachmentCellSize(const RTFDEntry& entry) {
    if (const auto size = imageSize(contentsOf(*entry.attachment)))
        return {static_cast<double>(size->width), static_cast<double>(size->height)};
    const Font font = Font::systemFont(kNameSize);
    const auto letters = static_cast<double>(utf16FromUTF8(entry.name).size());
    return {std::max(kIconSide, letters * kNameSize * kNameGlyphWidth),
            kIconSide + font.ascender() - font.descender() + font.leading()};
}

std::shared_ptr<FileWrapper> fileForEntry(const RTFDEntry& entry) {
    const auto& wrapper = entry.attachment->fileWrapper();
    if (!wrapper) return FileWrapper::regularFile(entry.attachment->contents().value_or(Data()));
    auto file = wrapper->isDirectory() ? FileWrapper::directory(wrapper->fileWrappers())
                                       : FileWrapper::regularFile(wrapper->regularFileContents());
    file->setFileAttributes(wrapper->fileAttributes());
    return file;
}

std::vector<RTFDEntry> rtfdEntriesInRange(const AttributedString& text, Range range) {
    std::vector<RTFDEntry> entries;
    std::shared_ptr<FileWrapper> names; // most texts have nothing to name
    text.enumerateAttribute(kAttachmentAttributeName, range, [&](const AttributeValue* value, Range run) {
        const auto* attachment = value ? std::get_if<TextAttachmentReference>(value) : nullptr;
        if (!attachment || !*attachment || !hasFile(**attachment)) return true;
        for (std::size_t position = run.location; position < run.end(); ++position) {
            if (text.string()[position] != kAttachmentCharacter) continue;
            // The package's own rule for keys gives the names.
            if (!names)
                names = FileWrapper::directory({{std::string(kRTFDTextName), FileWrapper::regularFile(Data())}});
            const auto placeholder = FileWrapper::regularFile(Data());
            placeholder->setPreferredFilename(preferredName(**attachment));
            entries.push_back({position, *attachment, names->addFileWrapper(placeholder)});
        }
        return true;
    });
    return entries;
}

Result<std::shared_ptr<FileWrapper>> rtfdFileWrapperFromRange(const AttributedString& text, Range range,
                                                              const Dictionary& documentAttributes) {
    return rtfdFileWrapperFromRange(text, range, documentAttributes, rtfdEntriesInRange(text, range));
}

} // namespace platform
