// From a note's page to its rich text: the page is read on the main thread, then the markers in it become objects.
#pragma once

#include <functional>
#include <optional>

#include "conversion/NotePage.h"
#include "platform/base/Result.h"
#include "platform/text/AttributedString.h"

namespace quillet {

class NoteScratch;

// What reading a page gave: its text, or, when the HTML reader failed, that reader's error. The note can still be kept
// as a page then.
struct ImportedPage {
    std::optional<platform::AttributedString> text;
    std::optional<platform::Error> readerError;
};

// Reads the page, as one that lies in the scratch directory, and puts attachments in the place of markers. The page
// goes to the reader in memory, since nobody else would read a file of it; its document is used up. `meanwhile` runs on
// the calling thread while the main thread reads. An attachment whose marker the page hides is one line of the system
// log. Error: an attachment that a marker names is not there.
platform::Result<ImportedPage> importRichText(NoteScratch& scratch, NotePage& page,
                                              const std::function<void()>& meanwhile);

// The steps on the text itself, in the order in which they run.
platform::Result<> replaceAttachmentMarkers(platform::AttributedString& text, NoteScratch& scratch);
void replaceCheckboxMarkers(platform::AttributedString& text);
void replaceDividerMarkers(platform::AttributedString& text);

} // namespace quillet
