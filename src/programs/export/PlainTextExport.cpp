#include "programs/export/PlainTextExport.h"

#include <fmt/core.h>

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/CharacterSet.h"
#include "programs/export/FileSize.h"
#include "richtext/TextEditing.h"

namespace quillet {

using platform::AttributedString;
using platform::TextAttachment;

namespace {

std::u16string replacementOf(const TextAttachment& attachment) {
    if (const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(&attachment))
        return std::u16string(box->replacementString());
    if (dynamic_cast<const QLTDividerTextAttachment*>(&attachment)) return std::u16string(QLTDividerReplacementString);
    const std::string name = displayName(attachment);
    return name.empty() ? std::u16string() : u"[" + platform::utf16FromUTF8(name) + u"]";
}

void appendVisible(std::u16string& out, std::u16string_view text) {
    const auto& newline = platform::CharacterSet::newline();
    const auto& control = platform::CharacterSet::control();
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char16_t unit = text[at];
        if (unit == u'\r' && at + 1 < text.size() && text[at + 1] == u'\n') continue;
        if (unit == u'\r' || newline.containsUnit(unit))
            out += u'\n';
        else if (unit == u'\t' || !control.containsUnit(unit))
            out += unit;
    }
}

} // namespace

std::string plainTextFromNoteText(const AttributedString& text) {
    const std::u16string_view characters = text.string();
    std::u16string out;
    std::size_t position = 0;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        appendVisible(out, characters.substr(position, run.range.location - position));
        appendVisible(out, replacementOf(*run.attachment));
        position = run.range.end();
    }
    appendVisible(out, characters.substr(position));
    if (!out.empty() && !out.ends_with(u'\n')) out += u'\n';
    return platform::utf8FromUTF16(out);
}

std::string attachmentList(const AttributedString& text) {
    std::string list;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        const auto& wrapper = run.attachment->fileWrapper();
        if (!wrapper) continue;
        const std::string type = run.attachment->fileType();
        list += fmt::format("{}  {}  {} bytes\n", platform::escapedForTerminal(displayName(*run.attachment)),
                            type.empty() ? "unknown type" : platform::escapedForTerminal(type), sizeOfFiles(*wrapper));
    }
    return list;
}

} // namespace quillet
