// The records that an export is read into: one note at a time, with its resources.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "enex/EvernoteXMLResource.h"
#include "platform/base/Date.h"
#include "platform/base/Value.h"
#include "platform/foundation/URL.h"
#include "platform/foundation/UUID.h"

namespace quillet {

// What the reply says of one written note: "name", "identifier", "source", "tags", "fileURL".
using ItemEntry = platform::Dictionary;

struct EvernoteXMLItemNoteAttributes {
    std::string source;    // how the note was made; a web clipping's begins with "web.clip"
    std::string sourceURL; // the address that the note came from
};

// One note. Lives from its start tag until its end tag has been handled.
struct EvernoteXMLItem {
    // @sel initWithDirectoryURL:
    explicit EvernoteXMLItem(platform::URL directory) : directoryURL(std::move(directory)) {}

    std::string identifier = platform::UUID::random().string(); // names the scratch directory; in the item entry
    platform::URL directoryURL;                                 // where the note's output goes
    std::optional<platform::URL> intermediateHTMLDirectoryURL;  // while the note is being converted
    std::u16string title;                                       // as read, with the white space behind it
    std::string contentData;                                    // the body: the bytes of its CDATA sections
    std::optional<platform::Date> created;                      // nothing when absent or unreadable
    std::optional<platform::Date> updated;
    EvernoteXMLItemNoteAttributes noteAttributes;
    std::vector<std::u16string> tags; // trimmed, in document order
    std::vector<EvernoteXMLResource> resources;
    bool saveWebClippingsAsNotes = false;
};

} // namespace quillet
