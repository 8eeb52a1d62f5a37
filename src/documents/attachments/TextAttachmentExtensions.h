// Questions to any text attachment.
#pragma once

#include <string>

namespace platform {
class TextAttachment;
}

namespace quillet {

// A PDF that opens only with a password that is not empty. Reads the document's bytes.
bool isPasswordProtectedPDF(const platform::TextAttachment& attachment);

// The file's name, in UTF-8, without its extension when the file hides it; "" for an attachment without a name, and
// for every checkbox.
std::string displayName(const platform::TextAttachment& attachment);

} // namespace quillet
