#include "documents/PackageNames.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>

#include "documents/QLTNoteFile.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/files/ByteLimit.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/UUID.h"
#include "richtext/TextEditing.h"
#include "util/FileNames.h"

namespace quillet {

using platform::AttributedString;
using platform::FileWrapper;
using platform::TextAttachment;

namespace {

bool equalIgnoringASCIICase(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [&](char x, char y) { return lower(x) == lower(y); });
}

bool hidesPackageEntry(std::string_view name) {
    return std::ranges::any_of(kPackageEntries,
                               [&](std::string_view entry) { return equalIgnoringASCIICase(name, entry); });
}

std::string safeComponent(std::string_view name) {
    if (platform::isPathComponent(name)) return platform::nameLimitedInBytes(name);
    std::string text(name);
    std::erase(text, '\0');
    const std::u16string safe = stringSanitizedForFileName(platform::utf16FromUTF8(text));
    return platform::nameLimitedInBytes(platform::utf8FromUTF16(safe));
}

std::string uniqueName(std::string_view name) {
    return platform::nameLimitedInBytes(
        platform::appendingPathExtension(platform::UUID::random().string(), platform::pathExtension(name)));
}

// The wrapper under another name: the platform's own way of duplicating one is through its serialized form, which for a
// file amounts to sharing its bytes.
std::shared_ptr<FileWrapper> renamed(const FileWrapper& wrapper, std::string name) {
    auto copy = std::make_shared<FileWrapper>(wrapper);
    copy->setPreferredFilename(std::move(name));
    copy->setFilename({});
    return copy;
}

} // namespace

bool isPackageFile(const TextAttachment& attachment) {
    return attachment.fileWrapper() && !attachment.fileWrapper()->preferredFilename().empty() &&
           !dynamic_cast<const QLTChecklistTextAttachment*>(&attachment) &&
           !dynamic_cast<const QLTDividerTextAttachment*>(&attachment);
}

AttributedString textWithPackageNames(const AttributedString& text) {
    std::vector<platform::TextEdit> renamings;
    std::set<std::string, std::less<>> taken;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        if (!isPackageFile(*run.attachment)) continue;
        const FileWrapper& wrapper = *run.attachment->fileWrapper();
        std::string key = safeComponent(wrapper.preferredFilename());
        const std::string wanted = key;
        while (key.empty() || hidesPackageEntry(key) || taken.contains(key)) key = uniqueName(wanted);
        if (key != wrapper.preferredFilename())
            renamings.push_back(
                attachmentEdit(text, run.range, run.attachment->sameClassWithFileWrapper(renamed(wrapper, key))));
        taken.insert(std::move(key));
    }
    AttributedString named = text;
    named.applyEdits(renamings);
    return named;
}

} // namespace quillet
