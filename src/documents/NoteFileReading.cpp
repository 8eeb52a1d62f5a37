// Reading a note package. A package may come from anywhere: its parts are taken one by one, what is missing or damaged
// is said, and the text that is left is brought to the form that the editor works with (adaptive colors, dividers and
// checkboxes as objects, highlights in their colors).
#include "documents/QLTNoteFile.h"

#include <algorithm>
#include <map>
#include <utility>

#include "documents/NoteTextArchive.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/StringFormat.h"
#include "platform/foundation/StringTable.h"
#include "platform/plist/PropertyList.h"
#include "platform/rtf/RTFReader.h"
#include "richtext/Checklists.h"
#include "richtext/ImportCleanup.h"
#include "richtext/TextEditing.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/Colors.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::Color;
using platform::Dictionary;
using platform::Error;
using platform::FileWrapper;
using platform::Range;
using platform::Result;
using platform::TextAttachment;
using platform::TextAttachmentReference;
using platform::TextEdit;
using platform::Value;

namespace {

constexpr std::string_view kNotAPackage = platform::localizable("Note file is not a file package.");
constexpr std::string_view kUnreadable = platform::localizable("The note file could not be read.");
constexpr std::string_view kInvalid = platform::localizable("File is not a valid note file.");
constexpr std::string_view kCouldNotDecode = "Could not decode note text: %@";
constexpr std::string_view kAttemptingRecovery = "Attempting to recover note from RTFD: %@";

Error noteFileError(QLTNoteFileErrorCode code, std::string_view message) {
    return Error::withDescription(QLTNoteFileErrorDomain, code, platform::localizedString(message));
}

// What the children of a package hold.
struct PackageParts {
    bool hasText = false; // an entry "NoteText" was met
    std::optional<AttributedString> text;
    std::optional<Error> textError;
    std::optional<Dictionary> attributes; // nothing where they are missing or damaged
    std::map<std::string, std::shared_ptr<FileWrapper>, std::less<>> files;
};

PackageParts partsOf(const FileWrapper& package) {
    PackageParts parts;
    for (const auto& [name, child] : package.fileWrappers()) {
        if (name == kNoteTextEntry) {
            parts.hasText = true;
            // An empty archive is an empty note, whatever else lies in the package.
            if (!child->isDirectory() && child->regularFileContents().empty()) {
                parts.text.emplace();
                break;
            }
            Result<AttributedString> text = noteTextFromArchive(child->regularFileContents().bytes());
            if (text) {
                parts.text = *std::move(text);
            } else {
                platform::systemLog(platform::formatted(kCouldNotDecode, {text.error().description()}));
                parts.textError = std::move(text).error();
            }
        } else if (name == kNoteAttributesEntry) {
            Result<Value> plist = platform::propertyListFromData(child->regularFileContents().bytes());
            if (const Dictionary* dictionary = plist ? plist->as<Dictionary>() : nullptr)
                parts.attributes = *dictionary;
        } else {
            parts.files.emplace(name, child);
        }
    }
    return parts;
}

// The attachment as the editor wants to have it, from the stored file; null when it stays as it is.
TextAttachmentReference restoredAttachment(const TextAttachmentReference& attachment, const PackageParts& parts) {
    if (dynamic_cast<const QLTChecklistTextAttachment*>(attachment.get())) return nullptr;
    if (!attachment->fileWrapper()) return nullptr;
    const auto stored = parts.files.find(attachment->fileWrapper()->preferredFilename());
    if (stored == parts.files.end()) return nullptr;

    TextAttachmentReference restored = attachment->sameClassWithFileWrapper(stored->second);
    if (const auto* file = dynamic_cast<const QLTFileAttachment*>(attachment.get())) {
        if (!file->convertToInPlaceOnMac()) return restored;
        restored = std::make_shared<TextAttachment>(stored->second);
    }
    // What cannot be shown in the text is a file again, even where it was meant to be shown there.
    const auto type = platform::UTType::typeWithIdentifier(restored->fileType());
    const bool isAudio = type && type->conformsTo(platform::kUTTypeAudio);
    if (isAudio || isPasswordProtectedPDF(*restored)) return QLTFileAttachment::fileAttachmentWithAttachment(*restored);
    return restored;
}

void restoreAttachments(AttributedString& text, const PackageParts& parts) {
    std::vector<TextEdit> edits;
    for (const AttachmentRun& run : attachmentsOf(text))
        if (TextAttachmentReference restored = restoredAttachment(run.attachment, parts))
            edits.push_back(attachmentEdit(text, run.range, std::move(restored)));
    text.applyEdits(edits);
}

void removeWhiteBackgrounds(AttributedString& text) {
    text.transformAttributes({0, text.length()}, [](const AttributeSet::Reference& attributes, Range) {
        const Color* background = attributes->find<Color>(platform::kBackgroundColorAttributeName);
        if (!background || !isWhiteColor(*background)) return attributes;
        return AttributeSet::Reference(
            std::make_shared<const AttributeSet>(attributes->without(platform::kBackgroundColorAttributeName)));
    });
}

// Gives the paragraph of each checkbox its style; of several in one paragraph the last one's counts. A paragraph is
// looked for and rewritten once, however many boxes it holds.
void styleChecklistParagraphs(AttributedString& text) {
    std::vector<StyledRange> paragraphs;
    const QLTChecklistTextAttachment* last = nullptr; // in the paragraph that is listed last
    const auto styleParagraph = [&] {
        if (last) paragraphs.back().second = last->checklistParagraphStyle();
    };
    const std::vector<AttachmentRun> attachments = attachmentsOf(text);
    for (const AttachmentRun& run : attachments) {
        const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(run.attachment.get());
        if (!box) continue;
        if (!last || run.range.location >= paragraphs.back().first.end()) {
            styleParagraph();
            paragraphs.emplace_back(platform::paragraphAt(text.string(), run.range.location).enclosing, nullptr);
        }
        last = box;
    }
    styleParagraph();
    setParagraphStyles(text, paragraphs);
}

// From the last to the first, so that a range still counts in the text as it was written; one that reaches the end of
// the text stays text.
void restoreDividers(AttributedString& text, const Dictionary& attributes) {
    const Value* stored = platform::find(attributes, "dividerRanges");
    const auto* ranges = stored ? stored->as<platform::Array>() : nullptr;
    if (!ranges) return;
    std::vector<TextEdit> edits;
    std::size_t limit = text.length();
    for (auto value = ranges->rbegin(); value != ranges->rend(); ++value) {
        if (!value->as<std::u16string>()) continue;
        const Range range = platform::rangeFromString(value->utf8());
        if (range.location >= limit || range.length > limit - range.location) continue;
        if (range.end() >= text.length()) continue;
        edits.push_back({range, AttributedString::withAttachment(std::make_shared<QLTDividerTextAttachment>())});
        limit = range.location;
    }
    std::ranges::reverse(edits);
    text.applyEdits(edits);
}

AttributeSet withHighlightColors(const AttributeSet& attributes, std::int64_t type) {
    const auto color = colorForHighlightColorType(static_cast<std::uint64_t>(type));
    if (!color) return attributes;
    return attributes.with(platform::kBackgroundColorAttributeName, highlightBackgroundColor(*color))
        .with(platform::kForegroundColorAttributeName, highlightForegroundColor(*color));
}

void restoreHighlights(AttributedString& text, bool usesColorTypes) {
    text.transformAttributes({0, text.length()}, [&](const AttributeSet::Reference& attributes, Range) {
        const AttributeValue* value = attributes->find(QLTHighlightTextAttributeName);
        if (!isHighlight(value)) return attributes;
        const std::int64_t type = platform::integerValue(*value);
        if (usesColorTypes) {
            if (type == kHighlightInOwnColors) return attributes;
            return AttributeSet::Reference(
                std::make_shared<const AttributeSet>(withHighlightColors(*attributes, type)));
        }
        const Color* background = attributes->find<Color>(platform::kBackgroundColorAttributeName);
        const std::uint64_t derived = background ? highlightColorType(*background) : 0;
        if (derived == 0) return attributes;
        return AttributeSet::Reference(std::make_shared<const AttributeSet>(
            attributes->with(QLTHighlightTextAttributeName, static_cast<std::int64_t>(derived))));
    });
}

bool booleanUnder(const Dictionary& attributes, std::string_view key) {
    const Value* value = platform::find(attributes, key);
    return value && value->boolValue();
}

} // namespace

Result<std::unique_ptr<QLTNoteFile>> QLTNoteFile::initWithFileURL(const platform::URL& fileURL) {
    std::unique_ptr<QLTNoteFile> note(new QLTNoteFile(Blank{}));
    TRY(note->readFileAtURL(fileURL));
    return note;
}

Result<std::unique_ptr<QLTNoteFile>> QLTNoteFile::initWithFileWrapper(const FileWrapper& wrapper) {
    std::unique_ptr<QLTNoteFile> note(new QLTNoteFile(Blank{}));
    TRY(note->readFileWrapper(wrapper));
    return note;
}

Result<> QLTNoteFile::readFileWrapper(const FileWrapper& wrapper) {
    if (!wrapper.isDirectory())
        return platform::failure(noteFileError(QLTNoteFileInvalidFormatErrorCode, kNotAPackage));
    PackageParts parts = partsOf(wrapper);
    if (parts.attributes) takeAttributes(*parts.attributes);
    // The attributes count even where the text has to come from the RTFD part.
    if ((!parts.text || !parts.hasText) && parts.files.contains(kRTFDTextEntry))
        return platform::failure(noteFileError(QLTNoteFileRecoverFromRTFDErrorCode, kUnreadable));

    if (!parts.text) {
        noteText_ = AttributedString();
        if (parts.textError) return platform::failure(*std::move(parts.textError));
        return platform::failure(noteFileError(QLTNoteFileInvalidFormatErrorCode, kInvalid));
    }
    AttributedString text = *std::move(parts.text);
    restoreAttachments(text, parts);
    convertToDynamicColors(text);
    checkForTextListsAndConvertIfNecessary(text);
    removeWhiteBackgrounds(text);
    styleChecklistParagraphs(text);
    const Dictionary attributes = std::move(parts.attributes).value_or(Dictionary());
    restoreDividers(text, attributes);
    restoreHighlights(text, booleanUnder(attributes, "usesColorTypes"));
    noteText_ = std::move(text);
    return {};
}

void QLTNoteFile::takeAttributes(const Dictionary& attributes) {
    showSmallImages_ = booleanUnder(attributes, "showSmallImages");
    if (const Value* color = platform::find(attributes, "backgroundColor"))
        if (const auto* components = color->as<Dictionary>())
            backgroundColor_ = colorFromPropertyListRepresentation(*components);
    const Value* drawings = platform::find(attributes, "drawingsData");
    const auto* drawingsByKey = drawings ? drawings->as<Dictionary>() : nullptr;
    drawingData_ = drawingsByKey ? std::optional(*drawingsByKey) : std::nullopt;
}

Result<> QLTNoteFile::readFileAtURL(const platform::URL& fileURL) {
    const std::shared_ptr<FileWrapper> wrapper = TRY(FileWrapper::readingURL(fileURL));
    Result<> read = readFileWrapper(*wrapper);
    if (!read && read.error().domain == QLTNoteFileErrorDomain &&
        read.error().code == QLTNoteFileRecoverFromRTFDErrorCode)
        return attemptRecoveryFromRTFD(fileURL, *wrapper);
    return read;
}

Result<> QLTNoteFile::attemptRecoveryFromRTFD(const platform::URL& fileURL, const FileWrapper& package) {
    platform::systemLog(platform::formatted(kAttemptingRecovery, {fileURL.absoluteString()}));
    Result<AttributedString> read = platform::attributedStringFromRTFD(package, {.textListMarkers = true});
    if (!read) {
        Error error = noteFileError(QLTNoteFileInvalidFormatErrorCode, kInvalid);
        error.userInfo.insert_or_assign(std::string(platform::kUnderlyingErrorKey), Value(read.error()));
        return platform::failure(std::move(error));
    }
    AttributedString text = *std::move(read);
    convertToDynamicColors(text);
    replaceFileAttachmentsInRange(text, {0, text.length()});
    convertNSTextHighlightsToQuilletHighlights(text);
    noteText_ = std::move(text);
    return {};
}

} // namespace quillet
