#include "service/NoteDispatch.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "conversion/ConversionErrors.h"
#include "conversion/NoteCreation.h"
#include "conversion/NoteOutput.h"
#include "conversion/NoteScratch.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/base/SystemLog.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/URL.h"
#include "platform/xml/XMLDocument.h"

namespace quillet {

using platform::Dictionary;
using platform::Result;
using platform::URL;
using platform::Value;
using platform::XMLDocument;
using platform::XMLElement;
using platform::XMLNode;

namespace {

constexpr std::string_view kNoteElement = "en-note";
constexpr std::string_view kMediaElement = "en-media";
constexpr std::string_view kBreakElement = "br";
constexpr std::string_view kDivisionElement = "div";

// How the source of a web clipping begins.
constexpr std::string_view kWebClippingSource = "web.clip";

constexpr std::string_view kCreatingNoteInstead = "Couldn't create HTML, creating note instead.";

Dictionary entryFor(const EvernoteXMLItem& item) {
    Dictionary entry;
    entry.emplace(kNameItemKey, Value(item.title));
    entry.emplace(kIdentifierItemKey, Value(item.identifier));
    if (!item.noteAttributes.sourceURL.empty()) entry.emplace(kSourceItemKey, Value(item.noteAttributes.sourceURL));
    if (!item.tags.empty()) entry.emplace(kTagsItemKey, Value(platform::Array(item.tags.begin(), item.tags.end())));
    return entry;
}

// The note element: the document's en-note, or a new one around whatever stands in its place.
const XMLElement& noteElementOf(XMLDocument& document) {
    if (!document.firstNodeForXPath(kNoteElement)) document.wrapRootElement(kNoteElement);
    return *document.rootElement();
}

bool isBlank(const XMLElement& element) {
    const std::u16string text = platform::utf16FromUTF8(element.stringValue());
    return platform::trimmed(text, platform::CharacterSet::whitespaceAndNewline()).empty();
}

// What a division holds besides line breaks.
struct DivisionContents {
    std::size_t mediaCount = 0;
    bool hasOtherContent = false;
};

DivisionContents contentsOfDivision(const XMLElement& division) {
    DivisionContents contents;
    for (const auto& child : division.children()) {
        const std::string_view name = child->name();
        if (name.empty() || name == kBreakElement) continue;
        if (name != kMediaElement) {
            contents.hasOtherContent = true;
            break;
        }
        ++contents.mediaCount;
    }
    return contents;
}

// Whether the note's markup is one attachment, directly or inside divisions, among line breaks only.
bool holdsOneMediaOnly(const XMLElement& note) {
    std::size_t mediaCount = 0;
    bool hasOtherContent = false;
    for (const auto& child : note.children()) {
        const std::string_view name = child->name();
        if (name.empty() || name == kBreakElement) continue;
        if (name == kMediaElement) {
            ++mediaCount;
        } else if (name == kDivisionElement) {
            const DivisionContents contents = contentsOfDivision(*child->asElement());
            mediaCount += contents.mediaCount;
            hasOtherContent = hasOtherContent || contents.hasOtherContent;
        } else {
            return false;
        }
    }
    return !hasOtherContent && mediaCount == 1;
}

// The note as a plain file, when it is nothing but one attachment. A failure is no error: the note is converted like
// any other then.
std::optional<URL> writeSingleAttachment(EvernoteXMLItem& item, NoteOutput& output, const XMLElement& note) {
    if (item.resources.size() != 1 || !isBlank(note)) return std::nullopt;
    const bool startsWithMedia = !note.children().empty() && note.children().front()->name() == kMediaElement;
    if (startsWithMedia)
        if (Result<URL> written = processSingleResource(item, output)) return *std::move(written);
    if (!holdsOneMediaOnly(note)) return std::nullopt;
    Result<URL> written = processSingleResource(item, output);
    return written ? std::optional(*std::move(written)) : std::nullopt;
}

Result<URL> convert(EvernoteXMLItem& item, NoteScratch& scratch, NoteOutput& output, const XMLElement& note) {
    const bool isWebClipping = item.noteAttributes.source.starts_with(kWebClippingSource);
    if (item.saveWebClippingsAsNotes || !isWebClipping) return createNoteForElement(item, scratch, output, note);

    Result<URL> page = createHTMLForElement(item, scratch, output, note);
    const bool cannotBePage =
        !page && page.error().domain == EvernoteXMLItemErrorDomain && page.error().code == kNoPageErrorCode;
    if (!cannotBePage) return page;
    platform::systemLog(kCreatingNoteInstead);
    return createNoteForElement(item, scratch, output, note);
}

} // namespace

Result<ItemEntry> getItemDict(EvernoteXMLItem& item, NoteOutput& output) {
    Dictionary entry = entryFor(item);
    XMLDocument document = TRY(XMLDocument::initWithXMLString(item.contentData, platform::XMLDocumentParsing::tidyXML));
    const XMLElement& note = noteElementOf(document);

    std::optional<URL> written = writeSingleAttachment(item, output, note);
    if (!written) {
        NoteScratch scratch(*TRY(output.directory()), item.identifier);
        item.intermediateHTMLDirectoryURL = scratch.url();
        Result<URL> converted = convert(item, scratch, output, note);
        // A scratch directory that stays behind is reported in place of the converter's own error.
        Result<> removed = scratch.remove();
        if (!converted) return platform::failure(removed ? std::move(converted).error() : std::move(removed).error());
        if (!removed) platform::systemLog(removed.error().description());
        written = *std::move(converted);
    }
    entry.emplace(kFileURLItemKey, Value(written->absoluteString()));
    return entry;
}

} // namespace quillet
