#include "conversion/MediaTags.h"

#include <map>
#include <optional>
#include <set>
#include <utility>

#include "conversion/ConversionErrors.h"
#include "conversion/MarkupScan.h"
#include "conversion/NoteScratch.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/base/SystemLog.h"
#include "platform/files/UTType.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/Percent.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/StringTable.h"
#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLWriter.h"
#include "util/FileNames.h"

namespace quillet {

using platform::Error;
using platform::Result;
using platform::XMLDocument;
using platform::XMLElement;

namespace {

constexpr std::string_view kMediaOpening = "<en-media ";
constexpr std::string_view kMediaClosing = "</en-media>";
constexpr std::string_view kInvalidMediaTag = platform::localizable("Invalid media tag.");
constexpr std::string_view kMissingAttachment = platform::localizable("[Missing Attachment]");
constexpr std::string_view kNoHash = "Couldn't get hash: %@";
constexpr std::string_view kTextInside = "Text inside a tag %@ is left out: %@";
constexpr std::string_view kNotInText = "The note does not show its attachment \"%@\", which is left out.";

// The tag ends in "/>" or with the first end tag behind it. No ">" stands inside a value, so that the first one ends
// the start tag.
std::optional<std::size_t> mediaTagEnd(std::string_view markup, std::size_t start) {
    const std::size_t close = markup.find('>', start);
    if (close == std::string_view::npos) return std::nullopt;
    if (markup[close - 1] == '/') return close + 1;
    const std::size_t end = markup.find(kMediaClosing, close);
    if (end == std::string_view::npos) return std::nullopt;
    return end + kMediaClosing.size();
}

// The note's resources by hash. A resource is hashed when a tag first asks for one that is not among those before it.
class ResourcesByHash {
  public:
    explicit ResourcesByHash(EvernoteXMLItem& item) : item_(item) {}

    // The first resource with that hash; one whose hash cannot be had is passed over. Null when there is none.
    EvernoteXMLResource* find(std::string_view hash) {
        for (;;) {
            if (const auto known = byHash_.find(hash); known != byHash_.end()) return known->second;
            if (hashed_ == item_.resources.size()) return nullptr;
            EvernoteXMLResource& next = item_.resources[hashed_++];
            if (Result<std::string> own = next.md5Hash()) {
                byHash_.try_emplace(*std::move(own), &next);
            } else {
                platform::systemLog(platform::formatted(kNoHash, {own.error().description()}));
            }
        }
    }

  private:
    EvernoteXMLItem& item_;
    std::size_t hashed_ = 0; // how many of the resources are in the map or were passed over
    std::map<std::string, EvernoteXMLResource*, std::less<>> byHash_;
};

// The resource's own name, or its identifier with the type's extension.
std::u16string attachmentName(const EvernoteXMLResource& resource, const std::optional<platform::UTType>& type) {
    const std::u16string name = stringByTrimmingWhitespace(resource.attributes.filename);
    if (!name.empty()) return name;
    const std::u16string identifier = platform::utf16FromUTF8(resource.identifier);
    const auto extension = type ? type->preferredFilenameExtension() : std::nullopt;
    return extension ? platform::appendingPathExtension(identifier, platform::utf16FromUTF8(*extension)) : identifier;
}

class MediaReplacer {
  public:
    MediaReplacer(EvernoteXMLItem& item, NoteScratch& scratch, UseInlineImages useInlineImages, InlineImages& images)
        : resources_(item), scratch_(scratch), useInlineImages_(useInlineImages), images_(images) {}

    Result<> replace(std::string_view tag, std::string& out) {
        const XMLDocument document = TRY(XMLElement::initWithXMLString(tag));
        const XMLElement& media = *document.rootElement();
        reportTextInside(media);
        const auto hash = media.attributeForName("hash");
        EvernoteXMLResource* resource = hash ? resources_.find(*hash) : nullptr;
        if (!resource) {
            out += platform::localizedString(kMissingAttachment);
            return {};
        }
        shown_.insert(resource);
        const std::string mime(media.attributeForName("type").value_or(resource->mime));
        const auto type = platform::UTType::typeWithMIMEType(mime);
        const std::u16string name = attachmentName(*resource, type);
        if (type && type->conformsTo(platform::kUTTypeImage)) return appendImage(media, *resource, mime, name, out);
        return appendMarker(*resource, name, out);
    }

    // An attachment that no tag asks for goes nowhere.
    void reportWhatIsUnshown(const EvernoteXMLItem& item) const {
        for (const EvernoteXMLResource& resource : item.resources)
            if (!shown_.contains(&resource)) reportUnshown(resource);
    }

  private:
    Result<> appendImage(const XMLElement& media, EvernoteXMLResource& resource, const std::string& mime,
                         const std::u16string& name, std::string& out) {
        XMLDocument document = XMLDocument::withRootElement("img");
        XMLElement& image = *document.rootElement();
        for (const std::string_view size : {"width", "height"})
            if (const auto value = media.attributeForName(size)) image.setAttribute(size, *value);
        if (useInlineImages_ == UseInlineImages::yes) {
            TRY(resource.getContentData());
            image.setAttribute("src", images_.addSlot({mime, &resource}));
        } else {
            image.setAttribute("src", TRY(scratch_.writeResource(resource, name)));
        }
        platform::writeXML(image, out);
        return {};
    }

    // The name is escaped for markup: a path may hold "&", which the page must give back as it is.
    Result<> appendMarker(EvernoteXMLResource& resource, const std::u16string& name, std::string& out) {
        const std::string written = TRY(scratch_.writeResource(resource, name));
        out += kAttachmentOpeningFence;
        out += ' ';
        platform::appendEscapedText(platform::percentEncodedForURLPath(written), out);
        out += ' ';
        out += kAttachmentClosingFence;
        return {};
    }

    ResourcesByHash resources_;
    NoteScratch& scratch_;
    UseInlineImages useInlineImages_;
    InlineImages& images_;
    std::set<const EvernoteXMLResource*> shown_;
};

} // namespace

Result<std::string> replaceMediaTags(std::string markup, EvernoteXMLItem& item, NoteScratch& scratch,
                                     UseInlineImages useInlineImages, InlineImages& images) {
    MediaReplacer replacer(item, scratch, useInlineImages, images);
    std::string rewritten =
        TRY(rewriteTags(std::move(markup),
                        {.opening = kMediaOpening,
                         .findEnd = mediaTagEnd,
                         .replace = [&](std::string_view tag, std::string& out) { return replacer.replace(tag, out); },
                         .missingEnd =
                             [] {
                                 return Error::withDescription(EvernoteXMLItemErrorDomain, kInvalidTagErrorCode,
                                                               platform::localizedString(kInvalidMediaTag));
                             }}));
    replacer.reportWhatIsUnshown(item);
    return rewritten;
}

void reportUnshown(const EvernoteXMLResource& resource) {
    const std::u16string name = attachmentName(resource, platform::UTType::typeWithMIMEType(resource.mime));
    platform::systemLog(platform::formatted(kNotInText, {platform::utf8FromUTF16(name)}));
}

void reportTextInside(const XMLElement& tag) {
    if (tag.children().empty()) return;
    const std::u16string text = stringByTrimmingWhitespace(platform::utf16FromUTF8(tag.stringValue()));
    if (!text.empty())
        platform::systemLog(platform::formatted(kTextInside, {tag.name(), platform::utf8FromUTF16(text)}));
}

} // namespace quillet
