// The views of a text that stay in memory; those for mail are in MailViews.cpp.
#include "richtext/AttachmentViews.h"

#include <algorithm>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/PathString.h"
#include "richtext/Checklists.h"
#include "richtext/ImportCleanup.h"
#include "richtext/TextEditing.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/Colors.h"
#include "util/FileNames.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeValue;
using platform::CharacterSet;
using platform::Color;
using platform::FileWrapper;
using platform::Line;
using platform::Range;
using platform::TextEdit;

namespace {

using Views = std::vector<std::u16string_view>;

std::u16string_view trimmedSlice(const AttributedString& text, Range range) {
    return platform::trimmed(std::u16string_view(text.string()).substr(range.location, range.length),
                             CharacterSet::whitespaceAndNewline());
}

// The trimmed text of each run of the attribute whose value counts, without empty ones.
template<class Counts>
Views stringsOfRuns(const AttributedString& text, platform::AttributeName name, Counts counts) {
    Views strings;
    text.enumerateAttribute(name, {0, text.length()}, [&](const AttributeValue* value, Range range) {
        if (!counts(value)) return;
        if (const auto string = trimmedSlice(text, range); !string.empty()) strings.push_back(string);
    });
    return strings;
}

Views checklistItems(const AttributedString& text, bool on) {
    Views items;
    Line line;
    std::u16string_view trimmedLine;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(run.attachment.get());
        if (!box || box->isOn() != on) continue;
        // Boxes of one line share its bounds, which are looked for once.
        if (!line.enclosing.contains(run.range.end())) {
            line = platform::lineAt(text.string(), run.range.end());
            trimmedLine = trimmedSlice(text, line.enclosing);
        }
        if (line.enclosing.length > 0) items.push_back(trimmedLine);
    }
    return items;
}

std::u16string nameOf(const platform::TextAttachment& attachment) {
    const auto& wrapper = attachment.fileWrapper();
    if (!wrapper) return {};
    return platform::utf16FromUTF8(wrapper->filename().empty() ? wrapper->preferredFilename() : wrapper->filename());
}

// The attachment's name without extension, as words of a file name.
std::u16string wordsOf(const platform::TextAttachment& attachment) {
    return platform::utf16FromUTF8(platform::deletingPathExtension(displayName(attachment)));
}

} // namespace

bool containsFileAttachments(const AttributedString& text) {
    bool found = false;
    text.enumerateAttribute(
        platform::kAttachmentAttributeName, {0, text.length()}, [&](const AttributeValue* value, Range) {
            const auto* object = value ? std::get_if<platform::TextAttachmentReference>(value) : nullptr;
            found = object && *object && (*object)->fileWrapper();
            return !found;
        });
    return found;
}

std::vector<std::shared_ptr<FileWrapper>> fileAttachments(const AttributedString& text) {
    std::vector<std::shared_ptr<FileWrapper>> files;
    for (const AttachmentRun& run : attachmentsOf(text))
        if (run.attachment->fileWrapper()) files.push_back(run.attachment->fileWrapper());
    return files;
}

AttributedString attributedStringWithoutAttachments(const AttributedString& text) {
    std::vector<TextEdit> edits;
    for (const AttachmentRun& run : attachmentsOf(text)) edits.push_back({run.range, {}});
    AttributedString copy = text;
    copy.applyEdits(edits);
    return copy;
}

AttributedString attributedStringByReplacingAttachmentsWithNames(const AttributedString& text) {
    std::vector<TextEdit> edits;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        const std::u16string name = nameOf(*run.attachment);
        auto attributes = attributesWithoutAttachment(text, run.range.location);
        edits.push_back({run.range, AttributedString(name.empty() ? name : u'[' + name + u']', std::move(attributes))});
    }
    AttributedString copy = text;
    copy.applyEdits(edits);
    return copy;
}

AttributedString stringWithTextListMarkers(const AttributedString& text) {
    AttributedString copy = text;
    addTextMarkersIfNecessary(copy);
    return copy;
}

AttributedString attributedStringWithFileAttachments(const AttributedString& text) {
    AttributedString copy = text;
    replaceFileAttachmentsInRange(copy, {0, copy.length()});
    return copy;
}

AttributedString attributedStringConvertedToDynamicColors(const AttributedString& text) {
    AttributedString copy = text;
    convertToDynamicColors(copy);
    return copy;
}

AttributedString attributedStringConvertedFromDynamicColors(const AttributedString& text) {
    return attributedStringConvertedToDynamicColors(text);
}

Views highlightedStrings(const AttributedString& text) {
    return stringsOfRuns(text, QLTHighlightTextAttributeName, isHighlight);
}

Views stringsWithBackgroundColor(const AttributedString& text) {
    return stringsOfRuns(text, platform::kBackgroundColorAttributeName, [](const AttributeValue* value) {
        const auto* color = value ? std::get_if<Color>(value) : nullptr;
        return color && !isEqualToColorQLTVersion(*color, Color::white()) &&
               !isEqualToColorQLTVersion(*color, Color::textBackgroundColor());
    });
}

Views outstandingChecklistItems(const AttributedString& text) {
    return checklistItems(text, false);
}

Views completedChecklistItems(const AttributedString& text) {
    return checklistItems(text, true);
}

std::u16string generateName(const AttributedString& text) {
    const std::u16string_view characters = text.string();
    std::u16string words;
    std::size_t copied = 0;
    for (const AttachmentRun& run : attachmentsOf(text)) {
        const std::u16string name = wordsOf(*run.attachment);
        if (name.empty()) continue;
        words.append(characters, copied, run.range.location - copied).append(name);
        copied = run.range.end();
        if (copied < characters.size() && !CharacterSet::whitespaceAndNewline().containsUnit(characters[copied]))
            words += u' ';
    }
    return generateFilename(words.append(characters.substr(copied)));
}

} // namespace quillet
