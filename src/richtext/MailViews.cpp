// A text as a mail: its HTML with images inside, and its other files beside.
//
// The HTML writer leaves two known forms for attachments, an image's and an object's. One pass over the page looks for
// their openings and takes the file name from the address, so that the time does not grow with the number of files.
#include <optional>
#include <unordered_map>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/Percent.h"
#include "platform/html/HTMLWriter.h"
#include "richtext/AttachmentViews.h"
#include "richtext/TextEditing.h"

namespace quillet {

using platform::AttributedString;
using platform::FileWrapper;
using platform::Result;
using platform::TextAttachment;
using platform::TextAttachmentReference;
using platform::URL;
using platform::UTType;

namespace {

constexpr std::string_view kImageOpening = "<img src=\"file:///";
constexpr std::string_view kObjectOpening = "<object data=\"file:///";
// A type that leaves the choice of decoder to the mail reader.
constexpr std::string_view kUnknownMIMEType = "application/octet-stream";

bool conformsTo(const TextAttachment& attachment, std::string_view type) {
    const auto own = UTType::typeWithIdentifier(attachment.fileType());
    return own && own->conformsTo(type);
}

enum class MailForm : std::uint8_t { inlineImage, removedImage, removedObject };

// What the mail has of one file.
struct MailFile {
    TextAttachmentReference attachment;
    MailForm form;
    std::string name; // as the writer has it inside the form
};

MailForm mailForm(const TextAttachment& attachment) {
    if (conformsTo(attachment, platform::kUTTypeImage)) return MailForm::inlineImage;
    return conformsTo(attachment, platform::kUTTypePDF) ? MailForm::removedImage : MailForm::removedObject;
}

// The writer escapes the one character that would end the place in which the name stands.
std::string nameInForm(std::string_view name, MailForm form) {
    const bool isObject = form == MailForm::removedObject;
    std::string written;
    for (const char c : name) {
        if (c == (isObject ? '<' : '"')) {
            written += isObject ? "&lt;" : "&quot;";
        } else {
            written += c;
        }
    }
    return written;
}

using MailFiles = std::unordered_map<std::string, MailFile>; // by encoded file name

MailFiles mailFiles(const AttributedString& text) {
    std::unordered_map<std::string, TextAttachmentReference> byName;
    for (const AttachmentRun& run : attachmentsOf(text))
        if (const auto& wrapper = run.attachment->fileWrapper(); wrapper && !wrapper->filename().empty())
            byName[wrapper->filename()] = run.attachment;
    MailFiles files;
    for (const auto& [name, attachment] : byName) {
        if (attachment->fileType().empty()) continue;
        const MailForm form = mailForm(*attachment);
        files.emplace(platform::percentEncodedForURLPath(name), MailFile{attachment, form, nameInForm(name, form)});
    }
    return files;
}

void appendInlineImage(std::string& mail, const MailFile& file) {
    const auto type = UTType::typeWithIdentifier(file.attachment->fileType());
    const auto mimeType = type ? type->preferredMIMEType() : std::nullopt;
    mail.append("<img style=\"max-width: 100%\" src=\"data:").append(mimeType.value_or(std::string(kUnknownMIMEType)));
    mail += ";base64,";
    platform::appendBase64(mail, file.attachment->fileWrapper()->regularFileContents().bytes());
    mail.append("\" alt=\"").append(file.name).append("\">");
}

// A known file's form at the start of `page`.
struct FoundForm {
    const MailFile* file;
    std::size_t length;
};

std::optional<FoundForm> formAtStart(std::string_view page, const MailFiles& files) {
    const bool isImage = page.starts_with(kImageOpening);
    if (!isImage && !page.starts_with(kObjectOpening)) return std::nullopt;
    const std::size_t address = (isImage ? kImageOpening : kObjectOpening).size();
    const std::size_t addressEnd = page.find('"', address);
    if (addressEnd == std::string_view::npos) return std::nullopt;
    const auto entry = files.find(std::string(page.substr(address, addressEnd - address)));
    if (entry == files.end() || (entry->second.form == MailForm::removedObject) == isImage) return std::nullopt;
    const std::string rest =
        isImage ? "\" alt=\"" + entry->second.name + "\">" : "\">" + entry->second.name + "</object>";
    if (!page.substr(addressEnd).starts_with(rest)) return std::nullopt;
    return FoundForm{&entry->second, addressEnd + rest.size()};
}

} // namespace

Result<std::string> htmlStringForSharingToMail(const AttributedString& text) {
    const std::string page = TRY(platform::htmlDataFromAttributedString(text));
    const MailFiles files = mailFiles(text);
    if (files.empty()) return page;
    std::string mail;
    std::size_t copied = 0;
    for (std::size_t tag = page.find('<'); tag != std::string::npos; tag = page.find('<', tag)) {
        const auto found = formAtStart(std::string_view(page).substr(tag), files);
        if (!found) {
            ++tag;
            continue;
        }
        mail.append(page, copied, tag - copied);
        if (found->file->form == MailForm::inlineImage) appendInlineImage(mail, *found->file);
        copied = tag += found->length;
    }
    return mail.append(page, copied);
}

std::vector<URL> fileURLsForNonImageAttachmentsWrittenToURL(const AttributedString& text, const URL& directory) {
    std::vector<URL> urls;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        const auto& wrapper = run.attachment->fileWrapper();
        if (!wrapper || !platform::isPathComponent(wrapper->filename()) || run.attachment->fileType().empty()) continue;
        if (conformsTo(*run.attachment, platform::kUTTypeImage)) continue;
        URL url = directory.appendingPathComponent(wrapper->filename(), wrapper->isDirectory());
        if (wrapper->writeToURL(url)) urls.push_back(std::move(url));
    }
    return urls;
}

} // namespace quillet
