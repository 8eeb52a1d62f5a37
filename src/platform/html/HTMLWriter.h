// Counterpart of NSAttributedString's HTML writer (dataFromRange:documentAttributes:… with the HTML document type):
// rich text becomes a page in UTF-8, one element a line, with one style sheet in its head.
#pragma once

#include <string>

#include "platform/base/Result.h"
#include "platform/text/AttributedString.h"

namespace platform {

struct HTMLWriteOptions {
    std::string title;    // of the page; UTF-8
    int prefixSpaces = 0; // indentation of the head's lines, the style rules get twice as much
};

// Image attachments are written as <img src="file:///NAME" alt="NAME">, all others as
// <object data="file:///NAME">NAME</object>; NAME in the address is percent-encoded. Attachments without a file name
// leave nothing. Linear in the text's length.
Result<std::string> htmlDataFromAttributedString(const AttributedString& text, const HTMLWriteOptions& options = {});

} // namespace platform
