// Repairs of text that an HTML reader made: blank lines between paragraphs, tables that end the text, list markers that
// are only in the attributes or only in the characters. In place, one pass over the text each.
#pragma once

#include "platform/base/Range.h"

namespace platform {
class AttributedString;
}

namespace quillet {

// Inserts a blank line after each paragraph of the range when the range has none anywhere, taking over from paragraph
// spacing. The range grown by what was inserted. @sel cleanupHTMLNewlinesInRange:
platform::Range cleanupHTMLNewlinesInRange(platform::AttributedString& text, platform::Range range);

// Appends a newline outside the table when the text ends in one, so that there is somewhere to type.
void fixTrailingTables(platform::AttributedString& text);

// Writes each list paragraph's marker into the text where it is missing; only when the text system keeps no markers in
// the text itself.
void addTextMarkersIfNecessary(platform::AttributedString& text);

// Gives list-styled paragraphs with a typed marker (bullet, hyphen, number with full stop, between tabs) a list of
// their own.
void checkForTextListsAndConvertIfNecessary(platform::AttributedString& text);

} // namespace quillet
