// The entry "NoteText" of a note package: the exact text as a keyed archive.
#pragma once

#include <string_view>

#include "platform/base/Data.h"
#include "platform/base/Result.h"
#include "platform/text/AttributedString.h"

namespace quillet {

// Fails where an attribute's value has a class that cannot be archived.
platform::Result<platform::Data> archivedNoteText(platform::AttributedString text);

// Fails (NSCocoaErrorDomain 4864) for what is no archive, and for one whose root is no attributed string.
platform::Result<platform::AttributedString> noteTextFromArchive(std::string_view archive);

} // namespace quillet
