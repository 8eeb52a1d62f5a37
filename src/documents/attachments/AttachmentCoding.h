// Attachments of notes in keyed archives.
#pragma once

namespace quillet {

// QLTFileAttachment, QLTChecklistTextAttachment with its cell, and QLTDividerTextAttachment; rich text as well.
void registerArchivableAttachmentClasses();

} // namespace quillet
