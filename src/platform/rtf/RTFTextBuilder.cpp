#include "platform/rtf/RTFTextBuilder.h"

#include <algorithm>
#include <array>

#include "platform/base/UTF16.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

constexpr std::size_t kMaximumTableDepth = 32;

template<class T>
std::optional<Color> colorOf(const RTFReadColors& colors, T index) {
    return index > 0 ? colors.color(index) : std::nullopt;
}

} // namespace

std::size_t RTFTextBuilder::addLink(std::string_view address) {
    if (auto url = URL::fromString(address))
        links_.emplace_back(*std::move(url));
    else
        links_.emplace_back(utf16FromUTF8(address));
    return links_.size();
}

void RTFTextBuilder::append(std::u16string_view text, const RTFReadCharacters& characters) {
    if (text.empty() || characters.hidden) return;
    paragraph_ += text;
    if (!runs_.empty() && !runs_.back().attachment && runs_.back().characters == characters)
        runs_.back().end = paragraph_.size();
    else
        runs_.push_back({paragraph_.size(), characters, nullptr});
}

void RTFTextBuilder::appendAttachment(TextAttachmentReference attachment, const RTFReadCharacters& characters) {
    paragraph_ += kAttachmentCharacter;
    runs_.push_back({paragraph_.size(), characters, std::move(attachment)});
}

void RTFTextBuilder::endParagraph(const RTFReadParagraph& paragraph, const RTFReadCharacters& characters) {
    RTFReadCharacters shown = characters;
    shown.hidden = false;
    append(u"\n", shown);
    flush(paragraph);
    behindNestedRow_ = false;
}

// Styles are shared by neighbours: the same object for the same words, lists and cells.
ParagraphStyleReference RTFTextBuilder::styleFor(const RTFReadParagraph& paragraph) {
    std::vector<const TextTableBlock*> blocks;
    for (const Level& level : levels_) blocks.push_back(level.block.get());
    if (lastStyle_ && lastParagraph_ == paragraph && lastBlocks_ == blocks) return lastStyle_;

    auto style = std::make_shared<ParagraphStyle>(paragraph.style);
    style->headIndent = paragraph.leftTwips / kTwipsAPoint;
    style->firstLineHeadIndent = (paragraph.leftTwips + paragraph.firstTwips) / kTwipsAPoint;
    constexpr double kLineUnits = 240;
    if (paragraph.lineIsMultiple)
        style->lineHeightMultiple = paragraph.lineTwips / kLineUnits;
    else if (paragraph.lineTwips < 0)
        style->minimumLineHeight = style->maximumLineHeight = -paragraph.lineTwips / kTwipsAPoint;
    else if (paragraph.lineTwips > 0)
        style->minimumLineHeight = paragraph.lineTwips / kTwipsAPoint;
    style->textLists = lists_.chain(paragraph.list, paragraph.level);
    for (const Level& level : levels_) style->textBlocks.push_back(level.block);
    lastParagraph_ = paragraph;
    lastBlocks_ = std::move(blocks);
    lastStyle_ = std::move(style);
    return lastStyle_;
}

namespace {

// One attribute a line, in the order in which the writer says them.
class SetMaker {
  public:
    SetMaker(const RTFReadCharacters& from, const RTFReadColors& colors) : from_(from), colors_(colors) {}

    std::vector<AttributeSet::Entry>& entries() { return entries_; }

    void colors() {
        color(kForegroundColorAttributeName, from_.color);
        color(kBackgroundColorAttributeName, from_.background);
        if (from_.underline != 0) {
            add(kUnderlineStyleAttributeName, std::int64_t{from_.underline});
            color(kUnderlineColorAttributeName, from_.underlineColor);
        }
        if (from_.strikethrough != 0) {
            add(kStrikethroughStyleAttributeName, std::int64_t{from_.strikethrough});
            color(kStrikethroughColorAttributeName, from_.strikethroughColor);
        }
    }

    void position() {
        if (from_.superscript != 0) add(kSuperscriptAttributeName, std::int64_t{from_.superscript});
        if (from_.baselineHalves != 0) add(kBaselineOffsetAttributeName, from_.baselineHalves / 2.0);
        if (from_.kernGiven || from_.kernTwips != 0) add(kKernAttributeName, from_.kernTwips / kTwipsAPoint);
        if (from_.obliqueness != 0) add(kObliquenessAttributeName, from_.obliqueness / kSkewUnits);
        if (from_.expansion != 0) add(kExpansionAttributeName, from_.expansion / kSkewUnits);
        if (from_.ligature != 1) add(kLigatureAttributeName, std::int64_t{from_.ligature});
    }

    void effects() {
        const auto stroke = colorOf(colors_, from_.strokeColor);
        if (from_.strokeWidth != 0 || stroke) add(kStrokeWidthAttributeName, from_.strokeWidth / kStrokeUnitsAPercent);
        if (stroke) add(kStrokeColorAttributeName, *stroke);
        if (from_.shadow) {
            constexpr double kOpaque = 255;
            const Color color = colorOf(colors_, from_.shadowColor).value_or(Color::black());
            add(kShadowAttributeName,
                Shadow{from_.shadowX / kTwipsAPoint, from_.shadowY / kTwipsAPoint, from_.shadowRadius / kTwipsAPoint,
                       color.withAlphaComponent(std::clamp(from_.shadowOpacity / kOpaque, 0.0, 1.0))});
        }
        if (!from_.highlighted) return;
        add(kTextHighlightStyleAttributeName, utf16FromUTF8(kHighlightStyleDefault));
        const auto* const scheme =
            std::ranges::find(kRTFHighlightSchemes, from_.highlightScheme, &RTFHighlightScheme::number);
        const std::string_view name =
            scheme == std::end(kRTFHighlightSchemes) ? kRTFHighlightSchemes[0].name : scheme->name;
        add(kTextHighlightColorSchemeAttributeName, utf16FromUTF8(std::string(kHighlightSchemePrefix).append(name)));
    }

    void add(AttributeName name, AttributeValue value) { entries_.emplace_back(name, std::move(value)); }

  private:
    void color(AttributeName name, std::int32_t index) {
        if (auto color = colorOf(colors_, index)) add(name, *std::move(color));
    }

    const RTFReadCharacters& from_;
    const RTFReadColors& colors_;
    std::vector<AttributeSet::Entry> entries_;
};

} // namespace

AttributeSet::Reference RTFTextBuilder::attributesFor(const PendingRun& run, const ParagraphStyleReference& style) {
    if (!run.attachment && lastSet_ && lastSetStyle_ == style && lastCharacters_ == run.characters) return lastSet_;
    SetMaker maker(run.characters, colors_);
    constexpr double kMilli = 1000;
    maker.add(kFontAttributeName, fonts_.font(run.characters.font, run.characters.bold, run.characters.italic,
                                              run.characters.milliPoints / kMilli));
    maker.add(kParagraphStyleAttributeName, style);
    maker.colors();
    maker.position();
    maker.effects();
    if (run.characters.link != 0) maker.add(kLinkAttributeName, links_[run.characters.link - 1]);
    if (run.attachment) maker.add(kAttachmentAttributeName, run.attachment);
    auto set = std::make_shared<const AttributeSet>(std::move(maker.entries()));
    if (run.attachment) return set;
    lastCharacters_ = run.characters;
    lastSetStyle_ = style;
    lastSet_ = set;
    return set;
}

void RTFTextBuilder::flush(const RTFReadParagraph& paragraph) {
    if (runs_.empty()) return;
    const std::size_t depth = std::min(paragraph.depth(), kMaximumTableDepth);
    closeLevels(depth);
    openLevels(depth);
    const ParagraphStyleReference style = styleFor(paragraph);
    if (!foreignMarker_.empty()) {
        const AttributeSet::Reference attributes = attributesFor(runs_.front(), style);
        const auto& lists = style->textLists;
        const bool bullet =
            !lists.empty() && lists.back()->markerForItemNumber(1) == lists.back()->markerForItemNumber(2);
        if (lists.empty())
            text_.append(foreignMarker_, attributes);
        else
            text_.append(u"\t" + (bullet ? lists.back()->markerForItemNumber(1) : foreignMarker_) + u"\t", attributes);
        foreignMarker_.clear();
    }
    std::size_t start = 0;
    for (const PendingRun& run : runs_) {
        text_.append(std::u16string_view(paragraph_).substr(start, run.end - start), attributesFor(run, style));
        start = run.end;
    }
    paragraph_.clear();
    runs_.clear();
}

// Tables

void RTFTextBuilder::openLevels(std::size_t depth) {
    while (levels_.size() < depth) levels_.emplace_back();
    for (Level& level : levels_) {
        if (level.block) continue;
        level.block = std::make_shared<TextTableBlock>(level.table, 0, 1, 0, 1);
        level.cellStart = text_.length();
    }
}

void RTFTextBuilder::closeLevels(std::size_t depth) {
    while (levels_.size() > depth) {
        Level& level = levels_.back();
        // Text of a cell or row that was never ended still has its place in the table.
        if (level.block) level.cells.push_back({level.block, {level.cellStart, text_.length() - level.cellStart}});
        if (!level.cells.empty()) level.rows.push_back({std::move(level.cells), {}});
        placeTable(level);
        levels_.pop_back();
    }
}

void RTFTextBuilder::endCell(const RTFReadParagraph& paragraph, const RTFReadCharacters& characters, bool nested) {
    const std::size_t least = nested ? 2 : 1;
    const std::size_t depth = nested ? std::clamp(paragraph.depth(), least, kMaximumTableDepth) : 1;
    RTFReadParagraph inCell = paragraph;
    inCell.tableDepth = static_cast<std::int32_t>(depth);
    // Behind the last row of a nested table no paragraph of its own needs to end.
    const bool endsInTable = behindNestedRow_ && runs_.empty() && paragraph.depth() > depth;
    if (!endsInTable) endParagraph(inCell, characters);
    closeLevels(depth);
    openLevels(depth);
    behindNestedRow_ = false;
    Level& level = levels_.back();
    level.cells.push_back({std::move(level.block), {level.cellStart, text_.length() - level.cellStart}});
    level.block = nullptr;
}

void RTFTextBuilder::endRow(bool nested, const RTFRowDefinition& row) {
    const std::size_t depth = nested ? levels_.size() : 1;
    if (depth == 0 || levels_.size() < depth || (nested && depth < 2)) return;
    closeLevels(depth);
    Level& level = levels_.back();
    if (level.cells.empty()) return;
    RTFRowDefinition kept;
    kept.flags = row.flags;
    kept.left = row.left;
    kept.last = row.last;
    const std::size_t count = std::min(row.cells.size(), level.cells.size());
    kept.cells.assign(row.cells.begin(), row.cells.begin() + static_cast<std::ptrdiff_t>(count));
    level.rows.push_back({std::move(level.cells), std::move(kept)});
    level.cells.clear();
    behindNestedRow_ = nested;
    if (!row.last) return;
    placeTable(level);
    levels_.pop_back();
}

// The line ends of merged cells without text go again; they say nothing.
void RTFTextBuilder::placeTable(Level& level) {
    placeCells(*level.table, level.rows);
    for (const RTFReadRow& row : level.rows)
        for (std::size_t i = 0; i < std::min(row.cells.size(), row.definition.cells.size()); ++i) {
            const Range range = row.cells[i].range;
            if (row.cells[i].merged && range.length == 1 && text_.string()[range.location] == '\n')
                emptyMergedCells_.push_back(range.location);
        }
}

AttributedString RTFTextBuilder::finish(const RTFReadParagraph& paragraph) {
    flush(paragraph);
    closeLevels(0);
    std::ranges::sort(emptyMergedCells_);
    std::vector<TextEdit> edits;
    edits.reserve(emptyMergedCells_.size());
    for (const std::size_t position : emptyMergedCells_) edits.push_back({{position, 1}, {}});
    text_.applyEdits(edits);
    return std::move(text_);
}

} // namespace platform
