// A note's text without any styles, for people and pipes.
#pragma once

#include <string>

#include "platform/text/AttributedString.h"

namespace quillet {

// UTF-8, a line feed after every line. Checkboxes are "✓ " and "◦ ", dividers "***", files their names in brackets;
// what has no name leaves nothing. Control characters, which could act on a terminal, are left out.
std::string plainTextFromNoteText(const platform::AttributedString& text);

// One line for each attachment that has a file: name, type and size.
std::string attachmentList(const platform::AttributedString& text);

} // namespace quillet
