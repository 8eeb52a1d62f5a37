// Small tools that every rewriting of rich text here uses: collecting edits for one pass over the text.
#pragma once

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/text/AttributedString.h"

namespace quillet {

// The paragraph style at a position; the platform's default where the text has none.
const platform::ParagraphStyle& paragraphStyleAt(const platform::AttributedString& text, std::size_t position);

// Whether the stretch of text begins with the prefix.
bool beginsWith(std::u16string_view text, platform::Range range, std::u16string_view prefix);

// The attributes at a position save the attachment. Text put in the place of an attachment stands for it and is not it:
// with the attribute still on them, the characters would be read as the object, and written as one.
platform::AttributeSet::Reference attributesWithoutAttachment(const platform::AttributedString& text,
                                                              std::size_t position);

// What characters typed in at a position get: the attributes of the character before, at the start of the text those
// of the one behind. Never an attachment: that stands on its own character only.
platform::AttributeSet::Reference typingAttributes(const platform::AttributedString& text, std::size_t position);

// An insertion, with the attributes of typed-in characters.
platform::TextEdit insertion(const platform::AttributedString& text, std::size_t position,
                             std::u16string_view inserted);

// The edit that puts another attachment on an attachment's characters, all other attributes kept.
platform::TextEdit attachmentEdit(const platform::AttributedString& text, platform::Range range,
                                  platform::TextAttachmentReference attachment);

// Sets each style over its range, in one pass. Ranges ascend and do not overlap.
using StyledRange = std::pair<platform::Range, platform::ParagraphStyleReference>;
void setParagraphStyles(platform::AttributedString& text, const std::vector<StyledRange>& styles);

// Moves both indents so that the text hangs at the next tab stop behind the head indent: one that is set, or else one
// default interval further, or else the default style's first.
void indentToNextTabStop(platform::ParagraphStyle& style);

// One attachment of the text with the characters on which it stands (as a rule one).
struct AttachmentRun {
    platform::Range range;
    platform::TextAttachmentReference attachment;
};

// All attachments in the range, in text order.
std::vector<AttachmentRun> attachmentsInRange(const platform::AttributedString& text, platform::Range range);
std::vector<AttachmentRun> attachmentsOf(const platform::AttributedString& text);

// Every run of one paragraph style, in text order; null where the text has none.
struct ParagraphStyleRun {
    platform::Range range;
    platform::ParagraphStyleReference style;
};
std::vector<ParagraphStyleRun> paragraphStyleRuns(const platform::AttributedString& text, platform::Range range);

} // namespace quillet
