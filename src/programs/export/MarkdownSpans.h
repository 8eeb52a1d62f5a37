// The inside of one paragraph as Markdown: emphasis, links, code, highlights, attachments, and characters that would
// otherwise mean something.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/base/Range.h"
#include "platform/text/AttributedString.h"

namespace quillet {

// Where the file of that name (UTF-8) lies, seen from the Markdown file: a percent-encoded relative address.
using FileLink = std::function<std::string(std::string_view name)>;

struct MarkdownSpanOptions {
    std::u16string_view lineBreak; // for a line break inside the paragraph
    bool inTable = false;          // a bar would end the cell
    bool inHeading = false;        // which is bold by itself
    std::u16string indent;         // of the lines after a line break
};

// The range of the text, which holds no paragraph end. Blanks at its ends are left out: they would make it code.
std::u16string markdownSpans(const platform::AttributedString& text, platform::Range range, const FileLink& fileLink,
                             const MarkdownSpanOptions& options);

// With a backslash before every character that begins a block at the start of a line ("# ", "> ", "- ", "1. ").
std::u16string escapedAtLineStart(std::u16string_view line);

// Whether the font of these attributes has letters of one width.
bool isCode(const platform::AttributeSet& attributes);

} // namespace quillet
