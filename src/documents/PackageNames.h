// The names under which a note's attachments lie in its package. One pass gives them, before anything is written, so
// that the marker in TXT.rtf, the placeholder in the archive and the file on disk agree.
#pragma once

#include "platform/text/AttributedString.h"

namespace quillet {

// The text with every attachment that has a named file wrapper under a name of its own: the second of two equal names
// becomes a UUID with the same extension, as does one that would hide a package entry (in any case); what is not one
// path component is made safe, and what is too long for the file system is cut. Attachments whose name stays are the
// very same objects.
platform::AttributedString textWithPackageNames(const platform::AttributedString& text);

// Whether the attachment is a file of the package: it has a file wrapper with a preferred name and is neither a
// checkbox nor a divider.
bool isPackageFile(const platform::TextAttachment& attachment);

} // namespace quillet
