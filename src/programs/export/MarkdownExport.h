// A note's text as Markdown (CommonMark with pipe tables, strikes, task lists and <mark>).
#pragma once

#include <string>

#include "platform/text/AttributedString.h"
#include "programs/export/MarkdownSpans.h"

namespace quillet {

// In UTF-8, ending in a line break unless it is empty. A paragraph is a block of its own; items of lists and checklists
// follow each other without a blank line. Linear in the text's length.
std::string markdownFromNoteText(const platform::AttributedString& text, const FileLink& fileLink);

} // namespace quillet
