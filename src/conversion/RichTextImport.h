// From a note's page to its rich text: the page is read on the main thread, then the markers in it become objects.
#pragma once

#include <optional>

#include "conversion/NotePage.h"
#include "platform/base/Result.h"
#include "platform/text/AttributedString.h"

namespace quillet {

struct EvernoteXMLItem;
class NoteScratch;

// What reading a page gave: its text, or, when the HTML reader failed, that reader's error. The note can still be kept
// as a page then.
struct ImportedPage {
    std::optional<platform::AttributedString> text;
    std::optional<platform::Error> readerError;
};

// Writes the page into the scratch directory, reads it, and puts attachments in the place of markers. The page's
// document is used up. Errors: the page cannot be written, or an attachment that a marker names cannot be read.
platform::Result<ImportedPage> importRichText(EvernoteXMLItem& item, NoteScratch& scratch, NotePage& page);

// The steps on the text itself, in the order in which they run.
platform::Result<> replaceAttachmentMarkers(platform::AttributedString& text, const NoteScratch& scratch);
void replaceCheckboxMarkers(platform::AttributedString& text);
void replaceDividerMarkers(platform::AttributedString& text);

} // namespace quillet
