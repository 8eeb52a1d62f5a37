// What a rich text holds, and copies of it in other forms: its files, the text as mail or with names for attachments,
// highlighted and colored spans, checklist items, a file name. Nothing here changes the text that it is given.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/foundation/URL.h"
#include "platform/text/AttributedString.h"

namespace platform {
class FileWrapper;
}

namespace quillet {

// Checkboxes, dividers and other attachments without a file do not count.
bool containsFileAttachments(const platform::AttributedString& text);
std::vector<std::shared_ptr<platform::FileWrapper>> fileAttachments(const platform::AttributedString& text);

// A page for the body of a mail: images inside it, all other files left out (the function below writes those). Of two
// attachments with one file name the later one's data stands for both.
platform::Result<std::string> htmlStringForSharingToMail(const platform::AttributedString& text);

// Writes every file that is no image, has a name and a type; the addresses of those that could be written. A name that
// is more than one path component is not written.
// @sel fileURLsForNonImageAttachmentsWrittenToURL:
std::vector<platform::URL> fileURLsForNonImageAttachmentsWrittenToURL(const platform::AttributedString& text,
                                                                      const platform::URL& directory);

platform::AttributedString attributedStringWithoutAttachments(const platform::AttributedString& text);
// "[name]" for each attachment; one without a name leaves nothing.
platform::AttributedString attributedStringByReplacingAttachmentsWithNames(const platform::AttributedString& text);
// Rich text, despite its name.
platform::AttributedString stringWithTextListMarkers(const platform::AttributedString& text);
// Generic attachments as the note's own file attachments where their type asks for it.
platform::AttributedString attributedStringWithFileAttachments(const platform::AttributedString& text);
platform::AttributedString attributedStringConvertedToDynamicColors(const platform::AttributedString& text);
// Converts to dynamic colors too, not from them: its callers rely on what it has always given.
platform::AttributedString attributedStringConvertedFromDynamicColors(const platform::AttributedString& text);

// Each highlighted run, each run with a background that is not white and not that of the page: trimmed, without empty
// ones. The strings are views into the text.
std::vector<std::u16string_view> highlightedStrings(const platform::AttributedString& text);
std::vector<std::u16string_view> stringsWithBackgroundColor(const platform::AttributedString& text);

// The line of each checkbox that is off or on, trimmed, the checkbox's own character included. Views into the text: a
// line of many checkboxes would otherwise take memory in the square of its length.
std::vector<std::u16string_view> outstandingChecklistItems(const platform::AttributedString& text);
std::vector<std::u16string_view> completedChecklistItems(const platform::AttributedString& text);

// A file name from the text's first words, attachments standing for their names.
std::u16string generateName(const platform::AttributedString& text);

} // namespace quillet
