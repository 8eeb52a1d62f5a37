#include "conversion/NoteCreation.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "conversion/ConversionErrors.h"
#include "conversion/NoteMarkup.h"
#include "conversion/NoteOutput.h"
#include "conversion/NoteScratch.h"
#include "conversion/RichTextImport.h"
#include "documents/QLTNoteFile.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/ResourceValues.h"
#include "platform/files/UTType.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/StringTable.h"
#include "platform/xml/XMLDocument.h"
#include "util/FileNames.h"

namespace quillet {

using platform::Result;
using platform::URL;

namespace {

constexpr std::string_view kUntitled = platform::localizable("Untitled");
constexpr std::string_view kCouldNotConvert = "Couldn't convert HTML file to note: %@";
constexpr std::string_view kCouldNotCopyFallback = "Couldn't copy fallback HTML file: %@";

bool allResourcesAreImages(const EvernoteXMLItem& item) {
    return std::ranges::all_of(item.resources, [](const auto& resource) {
        return platform::mimeTypeConformsTo(resource.mime, platform::kUTTypeImage);
    });
}

std::u16string withExtension(std::u16string_view name, std::string_view extension) {
    // As a path, a title of slashes alone has no component that could take an extension.
    if (!name.empty() && name.find_first_not_of(u'/') == std::u16string_view::npos)
        return std::u16string(name) + u'.' + platform::utf16FromUTF8(extension);
    return platform::appendingPathExtension(name, platform::utf16FromUTF8(extension));
}

// The file name of a note without a title is as for one called "Untitled".
std::u16string untitled() {
    return platform::utf16FromUTF8(platform::localizedString(kUntitled));
}

bool hasTitle(const EvernoteXMLItem& item) {
    return !stringByTrimmingWhitespace(item.title).empty();
}

std::u16string titleForFileName(const EvernoteXMLItem& item) {
    return hasTitle(item) ? item.title : untitled();
}

// The extension that the HTML type prefers.
std::string pageExtension() {
    return platform::UTType::typeWithIdentifier(platform::kUTTypeHTML)->preferredFilenameExtension().value();
}

// Whether a page holds all that the note brought along. What a tag gave a type that is no image's is in a file, though
// the resource itself may be an image.
bool isSelfContained(const EvernoteXMLItem& item, const NoteScratch& scratch) {
    return allResourcesAreImages(item) && scratch.files().empty();
}

// The page as it was read, kept in place of the note that it could not become.
Result<URL> keepPage(const EvernoteXMLItem& item, const NoteScratch& scratch, NoteOutput& output, NotePage& page,
                     const platform::Error& readerError) {
    platform::systemLog(platform::formatted(kCouldNotConvert, {readerError.description()}));
    if (!isSelfContained(item, scratch)) return platform::failure(noPageError());
    // Deliberately not sanitized: a name that would leave the destination fails the note.
    const std::u16string name = item.title.empty() ? platform::utf16FromUTF8(item.identifier + ".html")
                                                   : withExtension(item.title, pageExtension());
    const std::string markup = TRY(page.images.filledIn(page.markup()));
    Result<URL> copied = output.writeFile(stringByTrimmingWhitespace(name), markup, resourceValuesForItem(item));
    if (!copied) platform::systemLog(platform::formatted(kCouldNotCopyFallback, {copied.error().description()}));
    return copied;
}

} // namespace

Result<URL> createNoteForElement(EvernoteXMLItem& item, NoteScratch& scratch, NoteOutput& output,
                                 const platform::XMLElement& noteElement) {
    NotePage page =
        TRY(notePageFromNoteElement(item, scratch, noteElement, UseInlineImages::yes, ConvertDividers::yes));
    // The disk gets to work while the page is read.
    std::optional<Result<BegunPackage>> package;
    const auto beginPackage = [&] {
        const auto name = withExtension(titleForFileName(item), QLTNoteFileExtension);
        package.emplace(
            output.beginPackage(stringSanitizedForFileName(name), resourceValuesForItem(item), kPackageEntries));
    };
    ImportedPage imported = TRY(importRichText(scratch, page, beginPackage));
    if (!imported.text) {
        package.reset();
        return keepPage(item, scratch, output, page, *imported.readerError);
    }
    QLTNoteFile note;
    note.setNoteText(*std::move(imported.text));
    const auto contents = TRY(note.fileWrapper());
    return output.finishPackage(TRY(*std::move(package)), *contents);
}

Result<URL> createHTMLForElement(EvernoteXMLItem& item, NoteScratch& scratch, NoteOutput& output,
                                 const platform::XMLElement& noteElement) {
    if (!allResourcesAreImages(item)) return platform::failure(noPageError());
    NotePage page = TRY(notePageFromNoteElement(item, scratch, noteElement, UseInlineImages::yes, ConvertDividers::no));
    if (!isSelfContained(item, scratch)) {
        TRY(scratch.remove()); // the note that is made instead takes the names anew
        return platform::failure(noPageError());
    }
    TRY(page.parse());
    const platform::XMLDocument document =
        TRY(platform::XMLDocument::initWithXMLString(page.markup(), platform::XMLDocumentParsing::tidyHTML));
    const std::string markup = TRY(page.images.filledIn(document.page()));
    const std::u16string name = stringSanitizedForFileName(withExtension(titleForFileName(item), pageExtension()));
    return output.writeFile(name, markup, resourceValuesForItem(item));
}

Result<URL> processSingleResource(EvernoteXMLItem& item, NoteOutput& output) {
    EvernoteXMLResource& resource = item.resources.front();
    const std::u16string filename = stringByTrimmingWhitespace(resource.attributes.filename);
    std::u16string name = untitled();
    if (hasTitle(item))
        name = platform::appendingPathExtension(item.title, platform::pathExtension(std::u16string_view(filename)));
    if (platform::pathExtension(std::u16string_view(name)).empty() && !resource.mime.empty()) {
        const auto type = platform::UTType::typeWithMIMEType(resource.mime);
        if (const auto extension = type ? type->preferredFilenameExtension() : std::nullopt)
            name = withExtension(name, *extension);
    }
    const platform::Data bytes = TRY(resource.getContentData());
    return output.writeFile(stringSanitizedForFileName(name), bytes.bytes(), resourceValuesForItem(item));
}

platform::ResourceValues resourceValuesForItem(const EvernoteXMLItem& item) {
    platform::ResourceValues values;
    values.hasHiddenExtension = true;
    values.creationDate = item.created;
    values.contentModificationDate = item.updated;
    if (!item.tags.empty()) values.tagNames = item.tags;
    return values;
}

} // namespace quillet
