#include "documents/attachments/TextAttachmentExtensions.h"

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/PathString.h"
#include "platform/graphics/PDFDocument.h"
#include "platform/text/TextAttachment.h"

namespace quillet {

bool isPasswordProtectedPDF(const platform::TextAttachment& attachment) {
    const auto type = platform::UTType::typeWithIdentifier(attachment.fileType());
    if (!type || !type->conformsTo(platform::kUTTypePDF)) return false;
    const auto& wrapper = attachment.fileWrapper();
    const platform::PDFDocument document(wrapper ? wrapper->regularFileContents()
                                                 : attachment.contents().value_or(platform::Data()));
    return document.isLocked() && !document.unlockWithPassword("");
}

std::string displayName(const platform::TextAttachment& attachment) {
    const auto& wrapper = attachment.fileWrapper();
    if (!wrapper || dynamic_cast<const QLTChecklistTextAttachment*>(&attachment)) return {};
    std::string name = wrapper->preferredFilename().empty() ? wrapper->filename() : wrapper->preferredFilename();
    if (wrapper->fileAttributes().extensionHidden && !platform::pathExtension(name).empty())
        return platform::deletingPathExtension(name);
    return name;
}

} // namespace quillet
