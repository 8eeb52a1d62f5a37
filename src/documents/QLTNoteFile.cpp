#include "documents/QLTNoteFile.h"

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/StringTable.h"
#include "richtext/TextEditing.h"
#include "richtext/highlights/Highlights.h"
#include "styles/QLTNoteTextStyle.h"
#include "styles/base/Colors.h"
#include "styles/base/NoteBackgroundColor.h"

namespace quillet {

using platform::AttributeName;
using platform::Color;
using platform::Dictionary;
using platform::Value;

QLTNoteFile::QLTNoteFile()
    : backgroundColor_(defaultNoteBackgroundColor()), documentAttributes_{{"DocumentType", Value("NSRTFD")}} {}

std::optional<Color> QLTNoteFile::backgroundColor() const {
    if (backgroundColor_ && (isWhiteColor(*backgroundColor_) || isBlackColor(*backgroundColor_)))
        return Color::textBackgroundColor();
    return backgroundColor_;
}

std::u16string QLTNoteFile::newNoteName() {
    return platform::utf16FromUTF8(platform::localizedString("New Note"));
}

std::u16string QLTNoteFile::newNoteFileName() {
    return platform::appendingPathExtension(newNoteName(), platform::utf16FromUTF8(QLTNoteFileExtension));
}

const Dictionary& QLTNoteFile::defaultPreferences() {
    static const Dictionary preferences{
        {"QLTNoteConvertImportedHTMLFiles", Value(true)},
        {"QLTNoteConvertImportedPlainTextFiles", Value(true)},
        {"QLTNoteOnlyShareNameToReminders", Value(true)},
        {"QLTNoteLinkUnderline", Value(true)},
    };
    return preferences;
}

const std::vector<AttributeName>& QLTNoteFile::allowedAttributeNames() {
    static const std::vector<AttributeName> names{
        QLTHighlightTextAttributeName,
        QLTNoteTextStyleIdentifierKey,
        platform::kFontAttributeName,
        platform::kParagraphStyleAttributeName,
        platform::kForegroundColorAttributeName,
        platform::kBackgroundColorAttributeName,
        platform::kLigatureAttributeName,
        platform::kKernAttributeName,
        platform::kStrikethroughStyleAttributeName,
        platform::kUnderlineStyleAttributeName,
        platform::kStrokeColorAttributeName,
        platform::kStrokeWidthAttributeName,
        platform::kShadowAttributeName,
        platform::kTextEffectAttributeName,
        platform::kAttachmentAttributeName,
        platform::kLinkAttributeName,
        platform::kBaselineOffsetAttributeName,
        platform::kUnderlineColorAttributeName,
        platform::kStrikethroughColorAttributeName,
        platform::kObliquenessAttributeName,
        platform::kExpansionAttributeName,
        platform::kWritingDirectionAttributeName,
        platform::kVerticalGlyphFormAttributeName,
    };
    return names;
}

std::vector<std::shared_ptr<platform::FileWrapper>> QLTNoteFile::fileAttachments() const {
    std::vector<std::shared_ptr<platform::FileWrapper>> wrappers;
    for (const AttachmentRun& run : attachmentsOf(noteText_))
        if (run.attachment->fileWrapper() && !dynamic_cast<const QLTChecklistTextAttachment*>(run.attachment.get()) &&
            !dynamic_cast<const QLTDividerTextAttachment*>(run.attachment.get()))
            wrappers.push_back(run.attachment->fileWrapper());
    return wrappers;
}

} // namespace quillet
