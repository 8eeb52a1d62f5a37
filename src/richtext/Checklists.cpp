// Each conversion walks the text as it was, collects what changes, and applies it in one pass. State that the walk
// carries from item to item (the lists of the item before, for example) depends on the items alone, never on text
// already changed.
#include "richtext/Checklists.h"

#include <algorithm>
#include <array>
#include <optional>

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "richtext/TextEditing.h"
#include "styles/base/ParagraphStyles.h"
#include "util/Markdown.h"

namespace quillet {

using platform::AttributedString;
using platform::Line;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::Range;
using platform::TextEdit;
using platform::TextList;

namespace {

// A damaged archive may give any 64-bit number as a level; no more indentation is written than this.
constexpr std::uint64_t kDeepestMarkdownLevel = 100;

using TextLists = std::vector<std::shared_ptr<TextList>>;

// The typed form of a checkbox in a list paragraph: the marker between two tabs.
std::u16string listPrefix(std::string_view markerFormat) {
    return u"\t" + TextList(markerFormat).markerForItemNumber(0) + u"\t";
}

struct ChecklistPrefixes {
    std::u16string ticked = listPrefix(platform::kTextListMarkerCheck);
    std::u16string open = listPrefix(platform::kTextListMarkerCircle);
};

// Whether a line is a checklist item and ticked. Its innermost list or a typed prefix says so, and everything ticked
// goes before everything open: a ticked prefix wins over a circle list.
std::optional<bool> checklistState(const TextList* list, std::u16string_view line, const ChecklistPrefixes& prefixes) {
    const std::string_view format = list ? std::string_view(list->markerFormat()) : std::string_view();
    if (format == platform::kTextListMarkerCheck || line.starts_with(prefixes.ticked)) return true;
    if (format == platform::kTextListMarkerCircle || line.starts_with(prefixes.open)) return false;
    return std::nullopt;
}

std::size_t prefixLength(std::u16string_view line, const ChecklistPrefixes& prefixes) {
    if (line.starts_with(prefixes.ticked)) return prefixes.ticked.size();
    if (line.starts_with(prefixes.open)) return prefixes.open.size();
    return 0;
}

std::shared_ptr<QLTChecklistTextAttachment> checklistBox(bool isOn, std::size_t listCount) {
    auto box = std::make_shared<QLTChecklistTextAttachment>();
    box->setOn(isOn);
    const std::uint64_t level = listCount == 0 ? 0 : listCount - 1;
    box->setIndentationLevel(std::min<std::uint64_t>(QLTChecklistMaxIndentationLevel, level));
    return box;
}

// The lists of an item's paragraph but its own, from those of the item before. Coming back to an outer level keeps one
// ancestor fewer than that level has.
TextLists enclosingLists(const TextLists& previous, std::uint64_t previousLevel, std::uint64_t level) {
    std::size_t kept = previous.size();
    if (level < previousLevel) {
        kept = level == 0 ? 0 : static_cast<std::size_t>(level) - 1;
    } else if (level == previousLevel) {
        kept = previous.size() < 2 ? 0 : previous.size() - 1;
    }
    kept = std::min(kept, previous.size());
    return TextLists(previous.begin(), previous.begin() + static_cast<std::ptrdiff_t>(kept));
}

// What the text form of a checkbox gets of the checkbox's attributes: all but the attachment, in another style.
platform::AttributeSet::Reference formAttributes(const platform::AttributeSet& attributes,
                                                 const ParagraphStyleReference& style) {
    return std::make_shared<const platform::AttributeSet>(
        attributes.without(platform::kAttachmentAttributeName).with(platform::kParagraphStyleAttributeName, style));
}

// Replaces each checkbox among the text's attachments by its text form and gives its line the style that goes with it;
// of two boxes in one line the later one's style stays. `paragraphStyle` gets the style that the line has when it comes
// to the box. Returns the number of boxes.
template<class Form, class Style>
std::size_t replaceChecklistItems(AttributedString& text, const std::vector<AttachmentRun>& attachments, Form textForm,
                                  Style paragraphStyle) {
    std::vector<TextEdit> forms;
    std::vector<ParagraphStyleReference> styles;
    forms.reserve(attachments.size());
    styles.reserve(attachments.size());
    std::size_t styledEnd = 0; // where the line ends to which the last box gave its style
    for (const auto& [range, attachment] : attachments) {
        const auto* const box = dynamic_cast<const QLTChecklistTextAttachment*>(attachment.get());
        if (!box) continue;
        const bool isStyled = range.location < styledEnd;
        styles.push_back(paragraphStyle(*box, isStyled ? *styles.back() : paragraphStyleAt(text, range.location)));
        if (range.end() >= styledEnd) styledEnd = platform::lineAt(text.string(), range.end()).enclosing.end();
        // The form has its style at once, so that its set is not made twice.
        forms.push_back({range, AttributedString(textForm(*box),
                                                 formAttributes(text.attributesAt(range.location), styles.back()))});
    }
    text.applyEdits(forms);

    // The lines are those of the new text: a box that covered a line's end took it away.
    std::vector<StyledRange> lines;
    lines.reserve(forms.size());
    std::size_t oldLength = 0, newLength = 0; // of the forms so far
    for (std::size_t i = 0; i < forms.size(); ++i) {
        const std::size_t start = forms[i].range.location - oldLength + newLength;
        if (lines.empty() || !lines.back().first.contains(start))
            lines.push_back({platform::lineAt(text.string(), start).enclosing, nullptr});
        lines.back().second = std::move(styles[i]);
        oldLength += forms[i].range.length;
        newLength += forms[i].replacement.length();
    }
    setParagraphStyles(text, lines);
    return forms.size();
}

std::size_t replaceChecklistItemsByLists(AttributedString& text, const std::vector<AttachmentRun>& attachments) {
    const ChecklistPrefixes prefixes;
    ParagraphStyle itemStyle = listParagraphStyle();
    indentToNextTabStop(itemStyle);
    std::uint64_t previousLevel = 0;
    TextLists previousLists;
    return replaceChecklistItems(
        text, attachments,
        [&](const QLTChecklistTextAttachment& box) { return box.isOn() ? prefixes.ticked : prefixes.open; },
        [&](const QLTChecklistTextAttachment& box, const ParagraphStyle& current) {
            ParagraphStyle style = itemStyle;
            style.textLists = enclosingLists(previousLists, previousLevel, box.indentationLevel());
            style.textLists.push_back(std::make_shared<TextList>(box.isOn() ? platform::kTextListMarkerCheck
                                                                            : platform::kTextListMarkerCircle));
            previousLists = style.textLists;
            previousLevel = box.indentationLevel();
            style.textBlocks = current.textBlocks;
            return std::make_shared<const ParagraphStyle>(std::move(style));
        });
}

} // namespace

void convertTextListsToChecklistAttachments(AttributedString& text) {
    const ChecklistPrefixes prefixes;
    const std::u16string_view characters = text.string();
    std::vector<TextEdit> boxes;
    std::vector<StyledRange> lines; // in the new text, where each prefix so far is one character
    std::array<ParagraphStyleReference, QLTChecklistMaxIndentationLevel + 1> stylesByLevel;
    std::size_t removed = 0;
    for (const auto& [range, style] : paragraphStyleRuns(text, {0, text.length()})) {
        const TextList* list = style && !style->textLists.empty() ? style->textLists.back().get() : nullptr;
        const std::size_t listCount = style ? style->textLists.size() : 0;
        for (const Line& line : platform::linesInRange(characters, range)) {
            const auto [start, length] = line.contents;
            const auto isOn = checklistState(list, characters.substr(start, length), prefixes);
            if (!isOn) continue;
            const std::size_t prefix = prefixLength(characters.substr(start, length), prefixes);
            const auto box = checklistBox(*isOn, listCount);
            ParagraphStyleReference& boxStyle = stylesByLevel[box->indentationLevel()];
            if (!boxStyle) boxStyle = box->checklistParagraphStyle();
            lines.push_back({{start - removed + boxes.size(), length - prefix + 1}, boxStyle});
            boxes.push_back({{start, prefix}, AttributedString::withAttachment(box)});
            removed += prefix;
        }
    }
    text.applyEdits(boxes);
    setParagraphStyles(text, lines);
}

void convertChecklistAttachmentsToTextLists(AttributedString& text) {
    replaceChecklistItemsByLists(text, attachmentsOf(text));
}

void convertChecklistsAndDividersToText(AttributedString& text, const std::vector<AttachmentRun>& attachments) {
    const std::size_t boxes = replaceChecklistItemsByLists(text, attachments);
    if (boxes < attachments.size()) convertDividersToText(text); // else there are none
}

void convertChecklistAttachmentsToMarkdownSyntax(AttributedString& text) {
    replaceChecklistItems(
        text, attachmentsOf(text),
        [](const QLTChecklistTextAttachment& box) {
            std::u16string form;
            for (std::uint64_t level = std::min(box.indentationLevel(), kDeepestMarkdownLevel); level > 0; --level)
                form += QLTMarkdownChecklistIndentString;
            return form.append(box.isOn() ? QLTMarkdownChecklistOnString : QLTMarkdownChecklistOffString);
        },
        [](const QLTChecklistTextAttachment&, const ParagraphStyle&) {
            return ParagraphStyle::defaultParagraphStyle();
        });
}

} // namespace quillet
