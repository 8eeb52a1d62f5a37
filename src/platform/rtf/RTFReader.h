// Counterpart of NSAttributedString's readers of RTF and RTFD (initWithRTF:documentAttributes: and others): what the
// platform writes and what word processors write becomes rich text. Words and destinations that are not known are
// passed over; a text that ends in the middle gives what was there.
#pragma once

#include <string_view>

#include "platform/base/Result.h"
#include "platform/base/Value.h"
#include "platform/text/AttributedString.h"

namespace platform {

class FileWrapper;

struct RTFReadOptions {
    // Keep list markers ("TAB bullet TAB") in the text, as the platform's first text system has them
    // (TextKit1ListMarkerFormat). Without it a list paragraph says what it is by its style alone.
    bool textListMarkers = true;
};

// Fails (NSCocoaErrorDomain 259, naming line and offset) for bytes that are no RTF, groups nested deeper than any
// writer nests them, and binary data that is cut off. Document attributes are those of RTFWriter.h.
Result<AttributedString> attributedStringFromRTF(std::string_view bytes, const RTFReadOptions& options = {},
                                                 Dictionary* documentAttributes = nullptr);

// A package's text with its files as attachments; a file that the text names and the package lacks leaves nothing.
// Fails also when the wrapper is no directory or has no text.
Result<AttributedString> attributedStringFromRTFD(const FileWrapper& package, const RTFReadOptions& options = {},
                                                  Dictionary* documentAttributes = nullptr);

} // namespace platform
