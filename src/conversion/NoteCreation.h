// The three kinds of output for one note, and what each carries besides its bytes.
#pragma once

#include "platform/base/Result.h"
#include "platform/foundation/URL.h"

namespace platform {
class XMLElement;
struct ResourceValues;
} // namespace platform

namespace quillet {

struct EvernoteXMLItem;
class NoteOutput;
class NoteScratch;

// A note package; when the HTML reader fails and every resource is an image, the page itself. Returns the URL of what
// was written. @sel createNoteForElement:error:
platform::Result<platform::URL> createNoteForElement(EvernoteXMLItem& item, NoteScratch& scratch, NoteOutput& output,
                                                     const platform::XMLElement& noteElement);

// A self-contained HTML page. Error 1002 when a resource is no image; nothing is written then.
// @sel createHTMLForElement:error:
platform::Result<platform::URL> createHTMLForElement(EvernoteXMLItem& item, NoteScratch& scratch, NoteOutput& output,
                                                     const platform::XMLElement& noteElement);

// The note's first resource as a plain file named after the note. @sel processSingleResource:error:
platform::Result<platform::URL> processSingleResource(EvernoteXMLItem& item, NoteOutput& output);

// What an output of the note carries as file attributes: dates and tags where the note has them, the hidden extension
// always.
platform::ResourceValues resourceValuesForItem(const EvernoteXMLItem& item);

} // namespace quillet
