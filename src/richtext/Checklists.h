// Checklist items, dividers and file attachments between their two forms: objects inside note text, and the list
// paragraphs, asterisks and generic attachments of text that comes from or goes elsewhere. All work in place, in one
// pass over the text.
#pragma once

#include <vector>

#include "platform/base/Range.h"

namespace platform {
class AttributedString;
}

namespace quillet {

struct AttachmentRun;

// Check and circle list paragraphs, and lines with such a typed marker, become checklist attachments.
void convertTextListsToChecklistAttachments(platform::AttributedString& text);

// Checklist attachments become list paragraphs with a check or circle marker.
void convertChecklistAttachmentsToTextLists(platform::AttributedString& text);

// Checklist attachments become "- [x] " or "- [ ] ", four blanks a level before it.
void convertChecklistAttachmentsToMarkdownSyntax(platform::AttributedString& text);

// Divider attachments become "***". As soon as there is one, the text's first three characters lose their attachment.
void convertDividersToText(platform::AttributedString& text);

// Checklist attachments to text lists and dividers to text, in a text of which all attachments are known already.
void convertChecklistsAndDividersToText(platform::AttributedString& text,
                                        const std::vector<AttachmentRun>& attachments);

// Lines that read exactly "***" become divider attachments.
void convertTextToDividers(platform::AttributedString& text);

// Generic attachments in the range become the note's own file attachments where their type asks for it.
// @sel replaceFileAttachmentsInRange:
void replaceFileAttachmentsInRange(platform::AttributedString& text, platform::Range range);

// Attachment names of 256 units or more are made safe, which also cuts them.
void fixLengthOfAttachmentFilenames(platform::AttributedString& text);

} // namespace quillet
