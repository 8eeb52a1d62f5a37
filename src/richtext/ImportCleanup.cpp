#include "richtext/ImportCleanup.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <ranges>

#include "platform/foundation/CharacterSet.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "richtext/TextEditing.h"
#include "styles/base/ParagraphStyles.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::Line;
using platform::ParagraphStyle;
using platform::Range;
using platform::TextEdit;
using platform::TextList;

namespace {

std::u16string_view slice(std::u16string_view text, Range range) {
    return text.substr(range.location, range.length);
}

bool isBlank(std::u16string_view line) {
    return platform::trimmed(line, platform::CharacterSet::whitespaceAndNewline()).empty();
}

bool hasParagraphSpacing(const AttributedString& text, Range range) {
    return std::ranges::any_of(paragraphStyleRuns(text, range), [](const ParagraphStyleRun& run) {
        return run.style && (run.style->paragraphSpacing > 0 || run.style->paragraphSpacingBefore > 0);
    });
}

// A blank last line of the text does not count.
bool hasBlankLine(std::u16string_view text, const std::vector<Line>& lines) {
    return std::ranges::any_of(lines, [&](const Line& line) {
        return isBlank(slice(text, line.contents)) && line.enclosing.end() < text.size();
    });
}

platform::ParagraphStyleReference withoutSpacing(ParagraphStyle style) {
    style.paragraphSpacing = 0;
    style.paragraphSpacingBefore = 0;
    return std::make_shared<const ParagraphStyle>(std::move(style));
}

bool isFollowedByBlankLine(std::u16string_view text, const Line& line) {
    const std::size_t end = line.contents.end();
    return text.size() > end + 2 && text.substr(end, 2) == u"\n\n";
}

} // namespace

Range cleanupHTMLNewlinesInRange(AttributedString& text, Range range) {
    const std::u16string_view characters = text.string();
    const std::vector<Line> lines = platform::linesInRange(characters, range);
    if (hasBlankLine(characters, lines)) return range;

    const bool replacesSpacing = hasParagraphSpacing(text, range);
    bool previousLineIsListItem = false;
    const ParagraphStyle* lastStyle = nullptr;
    std::vector<StyledRange> styles;   // both from the last line to the first
    std::vector<std::size_t> newlines; // where they go
    for (auto line = lines.rbegin(); line != lines.rend(); ++line) {
        if (isBlank(slice(characters, line->contents))) continue;
        const ParagraphStyle& style = paragraphStyleAt(text, line->contents.location);
        if (!style.textLists.empty() && previousLineIsListItem) continue;
        previousLineIsListItem = !style.textLists.empty();

        if (replacesSpacing) {
            styles.emplace_back(line->enclosing, &style == lastStyle ? styles.back().second : withoutSpacing(style));
            lastStyle = &style;
            if (isFollowedByBlankLine(characters, *line)) continue;
        }
        newlines.push_back(line->enclosing.end());
    }
    std::ranges::reverse(styles);
    setParagraphStyles(text, styles);
    std::vector<TextEdit> edits;
    for (const std::size_t position : newlines | std::views::reverse) edits.push_back(insertion(text, position, u"\n"));
    text.applyEdits(edits);
    return {range.location, range.length + newlines.size()};
}

namespace {

// Null outside tables.
const platform::TextTable* outermostTable(const platform::ParagraphStyleReference& style) {
    if (!style || style->textBlocks.empty()) return nullptr;
    const auto* block = dynamic_cast<const platform::TextTableBlock*>(style->textBlocks.front().get());
    return block ? block->table.get() : nullptr;
}

} // namespace

void fixTrailingTables(AttributedString& text) {
    const platform::TextTable* current = nullptr;
    std::size_t end = 0; // of the current table
    for (const auto& [range, style] : paragraphStyleRuns(text, {0, text.length()})) {
        const platform::TextTable* table = outermostTable(style);
        // A table right behind another one is not seen.
        if (table && current && table != current) continue;
        current = table;
        end = range.end();
    }
    if (!current || end != text.length()) return;
    text.append(u"\n", std::make_shared<const AttributeSet>(
                           text.attributesAt(text.length() - 1).without(platform::kParagraphStyleAttributeName)));
}

void addTextMarkersIfNecessary(AttributedString& text) {
    if (TextList::includesTextListMarkers()) return;
    const std::u16string_view characters = text.string();
    std::vector<TextEdit> edits;
    // A list that follows another one directly goes on counting.
    std::int64_t counter = 0;
    for (const auto& [range, style] : paragraphStyleRuns(text, {0, text.length()})) {
        if (!style || style->textLists.empty()) {
            counter = 0;
            continue;
        }
        for (const Line& line : platform::linesInRange(characters, range)) {
            const std::u16string prefix = u"\t" + style->textLists.back()->markerForItemNumber(++counter) + u"\t";
            if (beginsWith(characters, line.contents, prefix)) continue;
            TextEdit marker = insertion(text, line.contents.location, prefix);
            marker.replacement.addAttribute(platform::kParagraphStyleAttributeName, style, {0, prefix.size()});
            edits.push_back(std::move(marker));
        }
    }
    text.applyEdits(edits);
}

namespace {

constexpr std::int64_t kLargestTypedDigits = 3;

// The number of a typed marker at the line's start: tab, one to three digits without a leading zero, full stop, tab,
// with text behind.
std::optional<std::int64_t> typedNumber(std::u16string_view line) {
    if (!line.starts_with(u'\t')) return std::nullopt;
    std::int64_t number = 0;
    std::size_t position = 1;
    for (; position < line.size() && line[position] >= u'0' && line[position] <= u'9'; ++position) {
        if (position > kLargestTypedDigits) return std::nullopt;
        number = number * 10 + (line[position] - u'0');
    }
    if (position == 1 || line[1] == u'0' || !line.substr(position).starts_with(u".\t")) return std::nullopt;
    return position + 2 < line.size() ? std::optional(number) : std::nullopt;
}

// The list that a typed marker stands for; null when the line has none.
std::shared_ptr<TextList> typedList(std::u16string_view line) {
    if (line.starts_with(u"\t•\t")) return std::make_shared<TextList>(platform::kTextListMarkerDisc);
    if (line.starts_with(u"\t-\t")) return std::make_shared<TextList>(platform::kTextListMarkerHyphen);
    const auto number = typedNumber(line);
    if (!number) return nullptr;
    return std::make_shared<TextList>(std::string(platform::kTextListMarkerDecimal) + ".", 0, *number);
}

} // namespace

void checkForTextListsAndConvertIfNecessary(AttributedString& text) {
    const std::u16string_view characters = text.string();
    std::vector<StyledRange> styles;
    for (const auto& [range, style] : paragraphStyleRuns(text, {0, text.length()})) {
        if (!style || !style->textLists.empty() || !isListParagraphStyle(*style)) continue;
        for (const Line& line : platform::linesInRange(characters, range)) {
            const auto list = typedList(slice(characters, line.contents));
            if (!list) continue;
            ParagraphStyle converted = *style;
            converted.textLists.push_back(list);
            styles.emplace_back(line.contents, std::make_shared<const ParagraphStyle>(std::move(converted)));
        }
    }
    setParagraphStyles(text, styles);
}

} // namespace quillet
