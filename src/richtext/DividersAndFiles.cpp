// The conversions of dividers and of file attachments; checkboxes are in Checklists.cpp.
#include <algorithm>

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/text/AttributedString.h"
#include "richtext/Checklists.h"
#include "richtext/TextEditing.h"
#include "util/FileNames.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::Range;
using platform::TextEdit;

namespace {

// Names of this many units and more are cut.
constexpr std::size_t kOverlongFilename = 256;

bool isFileByType(const platform::TextAttachment& attachment) {
    const std::string type = attachment.fileType();
    return !type.empty() && QLTFileAttachment::shouldUseForFileType(type);
}

} // namespace

void convertDividersToText(AttributedString& text) {
    std::vector<TextEdit> edits;
    AttributedString form; // one for all: it takes a look at the user's styles to make
    for (const AttachmentRun& run : attachmentsOf(text)) {
        if (!dynamic_cast<const QLTDividerTextAttachment*>(run.attachment.get())) continue;
        if (form.empty()) form = QLTDividerTextAttachment::replacementString();
        edits.push_back({run.range, form});
    }
    text.applyEdits(edits);
    // From the start of the text, not from the divider: an attachment among the first characters is lost with it.
    text.removeAttribute(platform::kAttachmentAttributeName, {0, form.length()});
}

void convertTextToDividers(AttributedString& text) {
    std::vector<TextEdit> edits;
    const std::u16string_view characters = text.string();
    for (const platform::Line& line : platform::linesOf(characters))
        if (characters.substr(line.contents.location, line.contents.length) == QLTDividerReplacementString)
            edits.push_back({line.contents, std::make_shared<QLTDividerTextAttachment>()->attributedString()});
    text.applyEdits(edits);
}

void replaceFileAttachmentsInRange(AttributedString& text, Range range) {
    std::vector<TextEdit> edits;
    for (const AttachmentRun& run : attachmentsInRange(text, range)) {
        const platform::TextAttachment& attachment = *run.attachment;
        if (!attachment.fileWrapper() && !attachment.contents()) continue;
        if (!isFileByType(attachment) && !isPasswordProtectedPDF(attachment)) continue;
        // Contents without a wrapper do not come along.
        auto file = std::make_shared<QLTFileAttachment>();
        file->setFileWrapper(attachment.fileWrapper());
        TextEdit edit = attachmentEdit(text, {run.range.location, 1}, std::move(file));
        edit.range = run.range;
        edits.push_back(std::move(edit));
    }
    text.applyEdits(edits);
}

void fixLengthOfAttachmentFilenames(AttributedString& text) {
    for (const AttachmentRun& run : attachmentsOf(text)) {
        const auto& wrapper = run.attachment->fileWrapper();
        if (!wrapper) continue;
        const std::u16string name = platform::utf16FromUTF8(wrapper->preferredFilename());
        if (name.size() >= kOverlongFilename)
            wrapper->setPreferredFilename(platform::utf8FromUTF16(stringSanitizedForFileName(name)));
    }
}

} // namespace quillet
