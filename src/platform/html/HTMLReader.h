// Counterpart of NSAttributedString's HTML reader (initWithURL:options:… with an HTML page): a page becomes rich text,
// with the page's styles as character and paragraph attributes, its lists and tables as list and table objects, and
// its images as attachments. Nothing is ever fetched from a network.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Data.h"
#include "platform/base/Result.h"
#include "platform/base/Value.h"
#include "platform/foundation/URL.h"
#include "platform/text/AttributedString.h"

namespace platform {

// Bytes that stand behind an address of the page.
struct HTMLResource {
    Data bytes;
    std::string mimeType;
    std::string name; // what the attachment's file is called; "" for the name that a data: URL gives
};

struct HTMLReadOptions {
    // What relative addresses are resolved against (NSBaseURLDocumentOption). A file's own URL when absent.
    std::optional<URL> baseURL;
    // The directory below which files may be read (NSReadAccessURLDocumentOption). Without it no file is.
    std::optional<URL> readAccessURL;
    // Asked first for the address of each image, as it stands in the page: a caller that has the bytes already need
    // not put them into the page as a data: URL. May be empty.
    std::function<std::optional<HTMLResource>(std::string_view address)> resourceForURL = nullptr;
    // Whether what the page says about itself is wanted.
    bool readsDocumentAttributes = false;
};

// Keys of HTMLDocumentText::documentAttributes.
inline constexpr std::string_view kDocumentTypeDocumentAttribute = "DocumentType"; // "NSHTML"
inline constexpr std::string_view kCharacterEncodingDocumentAttribute = "CharacterEncoding";
inline constexpr std::string_view kTitleDocumentAttribute = "NSTitleDocumentAttribute";
inline constexpr std::string_view kBackgroundColorDocumentAttribute = "BackgroundColor"; // "#rrggbb" or "#rrggbbaa"

class HTMLDocument;

struct HTMLDocumentText {
    AttributedString text;
    Dictionary documentAttributes; // empty unless HTMLReadOptions::readsDocumentAttributes
};

// Fails when the file cannot be read (NSCocoaErrorDomain, with the path) or the page is not to be worked on (a tag with
// more attributes than any page has). Ill-formed markup is no error: it is read as a browser reads it.
Result<HTMLDocumentText> attributedStringFromHTMLFile(const URL& file, const HTMLReadOptions& options = {});
Result<HTMLDocumentText> attributedStringFromHTMLData(std::string_view bytes, const HTMLReadOptions& options = {});
// The same for a page that is a tree already; it cannot fail.
HTMLDocumentText attributedStringFromHTMLDocument(HTMLDocument page, const HTMLReadOptions& options = {});
inline Result<HTMLDocumentText> attributedStringFromHTMLData(const Data& data, const HTMLReadOptions& options = {}) {
    return attributedStringFromHTMLData(data.bytes(), options);
}

} // namespace platform
