// Counterpart of NSAttributedString's HTML reader (initWithURL:options:… with an HTML page): a page becomes rich text,
// with the page's styles as character and paragraph attributes, its lists and tables as list and table objects, and
// its images as attachments. Nothing is ever fetched from a network.
#pragma once

#include <optional>
#include <string_view>

#include "platform/base/Data.h"
#include "platform/base/Result.h"
#include "platform/base/Value.h"
#include "platform/foundation/URL.h"
#include "platform/text/AttributedString.h"

namespace platform {

struct HTMLReadOptions {
    // What relative addresses are resolved against (NSBaseURLDocumentOption). A file's own URL when absent.
    std::optional<URL> baseURL;
    // The directory below which files may be read (NSReadAccessURLDocumentOption). Without it no file is.
    std::optional<URL> readAccessURL;
};

// Keys of HTMLDocumentText::documentAttributes.
inline constexpr std::string_view kDocumentTypeDocumentAttribute = "DocumentType"; // "NSHTML"
inline constexpr std::string_view kCharacterEncodingDocumentAttribute = "CharacterEncoding";
inline constexpr std::string_view kTitleDocumentAttribute = "NSTitleDocumentAttribute";
inline constexpr std::string_view kBackgroundColorDocumentAttribute = "BackgroundColor"; // "#rrggbb" or "#rrggbbaa"

struct HTMLDocumentText {
    AttributedString text;
    Dictionary documentAttributes;
};

// Fails when the file cannot be read (NSCocoaErrorDomain, with the path) or the page is not to be worked on (a tag with
// more attributes than any page has). Ill-formed markup is no error: it is read as a browser reads it.
Result<HTMLDocumentText> attributedStringFromHTMLFile(const URL& file, const HTMLReadOptions& options = {});
Result<HTMLDocumentText> attributedStringFromHTMLData(std::string_view bytes, const HTMLReadOptions& options = {});
inline Result<HTMLDocumentText> attributedStringFromHTMLData(const Data& data, const HTMLReadOptions& options = {}) {
    return attributedStringFromHTMLData(data.bytes(), options);
}

} // namespace platform
