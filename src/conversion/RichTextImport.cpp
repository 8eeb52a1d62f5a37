#include "conversion/RichTextImport.h"

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <utility>

#include "conversion/MediaTags.h"
#include "conversion/NoteMarkup.h"
#include "conversion/NoteScratch.h"
#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/base/ByteSearch.h"
#include "platform/base/TextScan.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Capitalization.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/Percent.h"
#include "platform/html/HTMLReader.h"
#include "platform/operations/OperationQueue.h"
#include "platform/xml/HTMLDocument.h"
#include "service/operations/OperationQueueWaits.h"
#include "util/FileNames.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::FileWrapper;
using platform::Range;
using platform::Result;
using platform::TextAttachment;
using platform::TextEdit;

namespace {

constexpr std::size_t kManyNodes = 20'000; // of a page: some megabytes

// The bytes behind an inline image's address. The attachment gets the resource's name; without one the reader's.
std::optional<platform::HTMLResource> imageBehind(InlineImages& images, std::string_view address) {
    InlineImage* image = images.imageAt(address);
    if (!image) return std::nullopt;
    image->isShown = true;
    Result<platform::Data> bytes = image->resource->getContentData();
    if (!bytes) return std::nullopt;
    const std::u16string name = stringByTrimmingWhitespace(image->resource->attributes.filename);
    return platform::HTMLResource{*std::move(bytes), image->mimeType,
                                  platform::utf8FromUTF16(stringSanitizedForFileName(name))};
}

platform::Error readerError(const std::exception& exception) {
    return platform::Error::withDescription(platform::kCocoaErrorDomain,
                                            static_cast<std::int64_t>(platform::CocoaError::fileReadUnknown),
                                            exception.what());
}

// On the main thread.
Result<ImportedPage> readPage(NotePage& page, const platform::HTMLReadOptions& options) {
    TRY(page.parse());
    try {
        auto tree = platform::HTMLDocument::fromPrintedPage(page.document());
        // The two trees of a large page would take too much memory.
        if (!tree || tree->size() > kManyNodes) page.markup();
        auto read = tree ? platform::attributedStringFromHTMLDocument(*std::move(tree), options)
                         : platform::attributedStringFromHTMLData(page.markup(), options);
        if (!read) return ImportedPage{std::nullopt, std::move(read).error()};
        return ImportedPage{std::move(read->text), std::nullopt};
    } catch (const std::exception& exception) { // memory that runs out, for one: the page itself may still be kept
        return ImportedPage{std::nullopt, readerError(exception)};
    }
}

// HTML is read on the main thread only; this thread waits for it.
Result<ImportedPage> readPageOnMainQueue(NotePage& page, const platform::URL& directory,
                                         const std::function<void()>& meanwhile) {
    platform::HTMLReadOptions options;
    options.baseURL = directory;
    options.readAccessURL = directory;
    options.resourceForURL = [&page](std::string_view address) { return imageBehind(page.images, address); };
    std::optional<Result<ImportedPage>> read;
    std::exception_ptr thrown;
    const auto readOrCatch = [&] {
        try {
            read.emplace(readPage(page, options));
        } catch (...) { // the note's to end of, not the main thread's
            thrown = std::current_exception();
        }
    };
    addOperationWithBlockAndWaitUntilFinished(platform::OperationQueue::mainQueue(), readOrCatch, meanwhile);
    if (thrown) std::rethrow_exception(thrown);
    return *std::move(read);
}

// A page may hide an attachment with what is around it, or change its marker past recognition.
void reportHidden(const InlineImages& images, const NoteScratch& scratch) {
    std::map<const EvernoteXMLResource*, bool> isShown; // anywhere in the note; in the order of the resources
    for (const InlineImage& image : images.all()) isShown[image.resource] |= image.isShown;
    for (const auto& [name, file] : scratch.files()) isShown[file.resource] |= file.isUsed;
    for (const auto& [resource, isSo] : isShown)
        if (!isSo) reportUnshown(*resource);
}

// PDFs, images and movies are shown in the text itself, everything else as a file.
std::shared_ptr<TextAttachment> attachmentFor(const std::shared_ptr<FileWrapper>& wrapper) {
    const std::string extension = platform::pathExtension(std::string_view(wrapper->preferredFilename()));
    const auto type = extension.empty() ? platform::UTType::typeWithIdentifier(platform::kUTTypeData)
                                        : platform::UTType::typeWithFilenameExtension(extension);
    if (type && !type->conformsTo(platform::kUTTypePDF) &&
        QLTFileAttachment::shouldUseForFileType(type->identifier())) {
        auto file = std::make_shared<QLTFileAttachment>();
        file->setFileWrapper(wrapper);
        return file;
    }
    return std::make_shared<TextAttachment>(wrapper);
}

// What a marker is that names none of the note's files: a mistake, or words of the note's own.
enum class Unresolved { isError, isText };

// What stands around the name in a marker.
struct Fences {
    std::u16string opening, closing;
};

Result<> replaceMarkersBetween(const Fences& fences, Unresolved unresolved, AttributedString& text,
                               NoteScratch& scratch) {
    const std::u16string& characters = text.string();
    std::vector<TextEdit> edits;
    std::size_t start = platform::findLiteral(characters, fences.opening);
    while (start != std::u16string::npos) {
        const std::size_t nameStart = start + fences.opening.size();
        const std::size_t nameEnd = characters.find(fences.closing, nameStart);
        if (nameEnd == std::u16string::npos) break;
        // In preformatted text the blanks around the name are still two. Its own are encoded.
        const std::string encoded =
            platform::utf8FromUTF16(stringByTrimmingWhitespace(characters.substr(nameStart, nameEnd - nameStart)));
        const auto file = scratch.fileWrapper(platform::removingPercentEncoding(encoded).value_or(encoded));
        if (!file && unresolved == Unresolved::isError) return platform::failure(file.error());
        const std::size_t end = nameEnd + fences.closing.size();
        if (file) edits.push_back({{start, end - start}, AttributedString::withAttachment(attachmentFor(*file))});
        start = platform::findLiteral(characters, fences.opening, end);
    }
    text.applyEdits(edits);
    return {};
}

} // namespace

Result<> replaceAttachmentMarkers(AttributedString& text, NoteScratch& scratch) {
    static const Fences fences{platform::utf16FromUTF8(kAttachmentOpeningFence),
                               platform::utf16FromUTF8(kAttachmentClosingFence)};
    TRY(replaceMarkersBetween(fences, Unresolved::isError, text, scratch));
    const auto isUsed = [](const auto& file) { return file.second.isUsed; };
    if (std::ranges::all_of(scratch.files(), isUsed)) return {};
    // As a style leaves them that shows text in lower case.
    const Fences lowercased{platform::localizedLowercased(fences.opening),
                            platform::localizedLowercased(fences.closing)};
    return replaceMarkersBetween(lowercased, Unresolved::isText, text, scratch);
}

void replaceCheckboxMarkers(AttributedString& text) {
    constexpr std::u16string_view on = QLTChecklistOnValueReplacementString,
                                  off = QLTChecklistOffValueReplacementString;
    using MarkerStarts = platform::StopUnits<char16_t, u'\0', u'\uFFFF', on.front(), off.front()>;
    const std::u16string_view characters = text.string();
    std::vector<TextEdit> edits;
    for (std::size_t at = 0;; ++at) {
        at += platform::lengthBefore<MarkerStarts>(characters.substr(at));
        if (at == characters.size()) break;
        const bool isOn = characters.substr(at).starts_with(on);
        if (!isOn && !characters.substr(at).starts_with(off)) continue;
        if (!platform::startsLine(characters, at)) continue;
        constexpr std::size_t kUsualCount = 16;
        if (edits.empty()) edits.reserve(kUsualCount);
        auto box = std::make_shared<QLTChecklistTextAttachment>();
        box->setOn(isOn);
        edits.push_back({{at, on.size()}, AttributedString::withAttachment(std::move(box))});
    }
    text.applyEdits(edits);
}

// A divider stands on a line of its own. A marker at the end of a longer line gains a newline too, and with it an
// empty line behind the divider.
void replaceDividerMarkers(AttributedString& text) {
    static const std::u16string marker = platform::utf16FromUTF8(kDividerMarker);
    const std::u16string_view characters = text.string();
    if (platform::findLiteral(characters, marker) == std::u16string_view::npos) return; // as in most notes
    std::vector<TextEdit> edits;
    for (const platform::Line& line : platform::linesOf(characters)) {
        const auto contents = characters.substr(line.contents.location, line.contents.length);
        const std::size_t offset = contents.find(marker);
        if (offset == std::u16string_view::npos) continue;
        const Range range{line.contents.location + offset, marker.size()};
        const auto around = std::make_shared<const AttributeSet>(text.attributesAt(range.location));
        AttributedString divider;
        if (offset != 0) divider.append(u"\n", around);
        divider.append(AttributedString::withAttachment(std::make_shared<QLTDividerTextAttachment>()));
        if (contents.size() != marker.size()) divider.append(u"\n", around);
        edits.push_back({range, std::move(divider)});
    }
    text.applyEdits(edits);
}

Result<ImportedPage> importRichText(NoteScratch& scratch, NotePage& page, const std::function<void()>& meanwhile) {
    ImportedPage imported = TRY(readPageOnMainQueue(page, scratch.url(), meanwhile));
    if (!imported.text) return imported;
    AttributedString& text = *imported.text;
    TRY(replaceAttachmentMarkers(text, scratch));
    reportHidden(page.images, scratch);
    replaceCheckboxMarkers(text);
    replaceDividerMarkers(text);
    return imported;
}

} // namespace quillet
