#include "programs/export/MarkdownExport.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "programs/export/MarkdownTable.h"
#include "richtext/TextEditing.h"
#include "styles/QLTNoteTextStyle.h"
#include "util/Markdown.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::ParagraphStyle;
using platform::Range;
using platform::TextAttachmentReference;
using platform::TextList;

namespace {

constexpr std::u16string_view kHardBreak = u"\\\n";
constexpr std::size_t kListIndent = 4; // at least; what every reader takes for a deeper level
constexpr std::int64_t kDeepestHeading = 6;

// The first cell of a table that the paragraph stands in.
const platform::TextTableBlock* cellOf(const ParagraphStyle& style) {
    for (const auto& block : style.textBlocks)
        if (const auto* cell = dynamic_cast<const platform::TextTableBlock*>(block.get())) return cell;
    return nullptr;
}

bool isNumbered(const TextList& list) {
    constexpr std::array kNumbered{platform::kTextListMarkerDecimal, std::string_view("alpha}"),
                                   std::string_view("latin}"),       std::string_view("roman}"),
                                   platform::kTextListMarkerOctal,   std::string_view("hexadecimal}")};
    return std::ranges::any_of(
        kNumbered, [&](std::string_view token) { return list.markerFormat().find(token) != std::string::npos; });
}

class MarkdownWriter {
  public:
    MarkdownWriter(const AttributedString& text, const FileLink& fileLink) : text_(text), fileLink_(fileLink) {
        for (std::int64_t level = 1; level <= 3; ++level)
            if (const auto style = QLTNoteTextStyle::styleForParagraphHeaderLevel(level); style && style->identifier())
                headingStyles_.emplace(*style->identifier(), level);
    }

    std::u16string run() {
        for (std::size_t position = 0; position < text_.length();) {
            const platform::Line paragraph = platform::paragraphAt(text_.string(), position);
            addParagraph(paragraph.contents);
            position = paragraph.enclosing.end();
        }
        endTable();
        endCode();
        if (!out_.empty()) out_ += u'\n';
        return std::move(out_);
    }

  private:
    enum class Block { none, item, other };

    void add(Block block, std::u16string_view markdown) {
        if (!out_.empty()) out_ += block == Block::item && last_ == Block::item ? u"\n" : u"\n\n";
        out_ += markdown;
        last_ = block;
    }

    void addParagraph(Range range) {
        const ParagraphStyle& style = paragraphStyleAt(text_, std::min(range.location, text_.length() - 1));
        const platform::TextTableBlock* cell = cellOf(style);
        if (!cell || cell->table.get() != table_) endTable();
        if (cell) return addToTable(*cell, style, range);
        if (isCodeBlock(range, style)) return addCodeLine(range);
        endCode();
        if (range.length == 0) {
            last_ = Block::none;
            return;
        }
        // A divider is a block of its own, wherever it stands.
        std::size_t start = range.location;
        for (const AttachmentRun& run : attachmentsInRange(text_, range)) {
            if (!dynamic_cast<const QLTDividerTextAttachment*>(run.attachment.get())) continue;
            addPart({start, run.range.location - start}, style);
            add(Block::other, QLTDividerReplacementString);
            start = run.range.end();
        }
        addPart({start, range.end() - start}, style);
    }

    std::u16string spans(Range range, std::u16string indent, bool inHeading = false) const {
        MarkdownSpanOptions options;
        options.lineBreak = inHeading ? u" " : kHardBreak;
        options.inHeading = inHeading;
        options.indent = std::move(indent);
        return markdownSpans(text_, range, fileLink_, options);
    }

    void addPart(Range range, const ParagraphStyle& style) {
        if (range.length == 0) return;
        if (const auto box = checkboxAt(range.location)) return addChecklistItem(range, *box);
        if (!style.textLists.empty()) return addListItem(range, style);
        levels_.clear();
        if (const std::int64_t level = headingLevelOf(range, style)) {
            const std::u16string heading = spans(range, {}, true);
            if (!heading.empty())
                add(Block::other, std::u16string(static_cast<std::size_t>(level), u'#') + u" " + heading);
            return;
        }
        const std::u16string paragraph = spans(range, {});
        if (!paragraph.empty()) add(Block::other, escapedAtLineStart(paragraph));
    }

    std::int64_t headingLevelOf(Range range, const ParagraphStyle& style) const {
        if (style.headerLevel > 0) return std::min<std::int64_t>(style.headerLevel, kDeepestHeading);
        const AttributeValue* identifier = text_.attributeAt(QLTNoteTextStyleIdentifierKey, range.location);
        const auto* name = identifier ? std::get_if<std::u16string>(identifier) : nullptr;
        const auto level = name ? headingStyles_.find(*name) : headingStyles_.end();
        return level == headingStyles_.end() ? 0 : level->second;
    }

    // ---- lists

    std::shared_ptr<QLTChecklistTextAttachment> checkboxAt(std::size_t position) const {
        const AttributeValue* value = text_.attributeAt(platform::kAttachmentAttributeName, position);
        const auto* attachment = value ? std::get_if<TextAttachmentReference>(value) : nullptr;
        return attachment ? std::dynamic_pointer_cast<QLTChecklistTextAttachment>(*attachment) : nullptr;
    }

    void addChecklistItem(Range range, const QLTChecklistTextAttachment& box) {
        levels_.clear();
        std::u16string indent;
        const auto level = std::min(box.indentationLevel(), QLTChecklistMaxIndentationLevel);
        for (std::uint64_t i = 0; i < level; ++i) indent += QLTMarkdownChecklistIndentString;
        const auto marker = box.isOn() ? QLTMarkdownChecklistOnString : QLTMarkdownChecklistOffString;
        const std::u16string item =
            spans({range.location + 1, range.length - 1}, indent + std::u16string(kListIndent, u' '));
        add(Block::item, indent + std::u16string(marker) + item);
    }

    // The text without the marker that the text system keeps in it between two tabs.
    Range withoutMarker(Range range) const {
        const std::u16string_view text = std::u16string_view(text_.string()).substr(range.location, range.length);
        if (!text.starts_with(u'\t')) return range;
        const std::size_t end = text.find(u'\t', 1);
        if (end == std::u16string_view::npos) return range;
        return {range.location + end + 1, range.length - end - 1};
    }

    void addListItem(Range range, const ParagraphStyle& style) {
        // Levels that no item has do not count, or their indentation would make code.
        const std::size_t depth = style.textLists.size();
        while (!levels_.empty() && levels_.back().depth >= depth) levels_.pop_back();
        const std::size_t indent = levels_.empty() ? 0 : levels_.back().contentIndent;

        const TextList& list = *style.textLists.back();
        std::u16string marker(QLTMarkdownBulletDash);
        if (isNumbered(list)) {
            const auto number = numbers_.try_emplace(&list, list.startingItemNumber()).first->second++;
            marker = platform::utf16FromUTF8(std::to_string(std::max<std::int64_t>(number, 0))) + u". ";
        }
        const std::size_t contentIndent = indent + std::max(kListIndent, marker.size());
        levels_.push_back({depth, contentIndent});
        const std::u16string item = spans(withoutMarker(range), std::u16string(contentIndent, u' '));
        add(Block::item, std::u16string(indent, u' ') + marker + escapedAtLineStart(item));
    }

    // ---- tables

    void addToTable(const platform::TextTableBlock& cell, const ParagraphStyle& style, Range range) {
        endCode();
        table_ = cell.table.get();
        const Range content = style.textLists.empty() ? range : withoutMarker(range);
        const MarkdownSpanOptions options{u"<br>", true, false, {}};
        std::u16string paragraph = markdownSpans(text_, content, fileLink_, options);
        if (!style.textLists.empty() && !paragraph.empty())
            paragraph = std::u16string(QLTMarkdownBulletDash) + paragraph;
        cells_.add(cell, paragraph);
    }

    void endTable() {
        if (!table_) return;
        add(Block::other, cells_.markdown());
        cells_ = {};
        table_ = nullptr;
        levels_.clear();
    }

    // ---- code

    // Text in letters of one width and nothing else; an empty line only inside such text.
    bool isCodeBlock(Range range, const ParagraphStyle& style) const {
        if (!style.textLists.empty() || style.headerLevel > 0) return false;
        if (range.length == 0)
            return !code_.empty() && isCode(text_.attributesAt(std::min(range.location, text_.length() - 1)));
        bool isPlainCode = true;
        text_.enumerateAttributes(range, [&](const AttributeSet& attributes, Range) {
            isPlainCode = isCode(attributes) && !attributes.find(platform::kAttachmentAttributeName) &&
                          !attributes.find(platform::kLinkAttributeName);
            return isPlainCode;
        });
        return isPlainCode;
    }

    void addCodeLine(Range range) {
        code_.append(text_.string(), range.location, range.length);
        code_ += u'\n';
    }

    void endCode() {
        while (code_.ends_with(u"\n\n")) code_.pop_back();
        if (code_.empty()) return;
        std::ranges::replace(code_, char16_t{0x2028}, u'\n');
        std::size_t longest = 2, current = 0; // a fence has three at least
        for (const char16_t unit : code_) {
            current = unit == u'`' ? current + 1 : 0;
            longest = std::max(longest, current);
        }
        const std::u16string fence(longest + 1, u'`');
        levels_.clear();
        add(Block::other, fence + u"\n" + code_ + fence);
        code_.clear();
    }

    // A level of the list that the last item stands in.
    struct Level {
        std::size_t depth;         // in the paragraph's text lists
        std::size_t contentIndent; // where the items of the next level begin
    };

    const AttributedString& text_;
    const FileLink& fileLink_;
    std::unordered_map<std::u16string, std::int64_t> headingStyles_; // style identifier → heading level
    std::u16string out_;
    Block last_ = Block::none;
    std::vector<Level> levels_;
    std::unordered_map<const TextList*, std::int64_t> numbers_; // list → number of its next item
    const platform::TextTable* table_ = nullptr;                // that the last paragraph stood in
    MarkdownTable cells_;
    std::u16string code_; // lines gathered for a block
};

} // namespace

std::string markdownFromNoteText(const AttributedString& text, const FileLink& fileLink) {
    return platform::utf8FromUTF16(MarkdownWriter(text, fileLink).run());
}

} // namespace quillet
