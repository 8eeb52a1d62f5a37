#include "platform/rtf/RTFTableRows.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFTables.h"
#include "platform/rtf/RTFVocabulary.h"
#include "platform/text/ParagraphStyle.h"

namespace platform {

namespace {

constexpr std::size_t kMaximumTableDepth = 32;
constexpr std::int64_t kMaximumColumns = 4096; // finer columns would share their edges
constexpr double kLargestTwips = 1e8;

std::int64_t firstColumn(const TextTableBlock& block) {
    return std::clamp<std::int64_t>(block.startingColumn, 0, kMaximumColumns - 1);
}
std::int64_t endColumn(const TextTableBlock& block) {
    return std::min(firstColumn(block) + std::clamp<std::int64_t>(block.columnSpan, 1, kMaximumColumns),
                    kMaximumColumns);
}

std::int64_t twips(double points) {
    return std::isnan(points) ? 0 : std::llround(std::clamp(points * kTwipsAPoint, 0.0, kLargestTwips));
}

} // namespace

RTFCellChain cellChain(const ParagraphStyle& style) {
    RTFCellChain chain;
    for (const auto& block : style.textBlocks) {
        const auto* cell = dynamic_cast<const TextTableBlock*>(block.get());
        if (cell && cell->table && chain.size() < kMaximumTableDepth) chain.push_back(cell);
    }
    return chain;
}

std::size_t tableDepth(const ParagraphStyle& style) {
    return style.textBlocks.empty() ? 0 : cellChain(style).size();
}

std::size_t RTFTableWalk::sharedDepth(const RTFCellChain& chain) const {
    std::size_t shared = 0;
    while (shared < open_.size() && shared < chain.size() && open_[shared].block == chain[shared]) ++shared;
    return shared;
}

void RTFTableWalk::moveTo(const RTFCellChain& chain) {
    const std::size_t shared = sharedDepth(chain);
    for (std::size_t depth = open_.size(); depth > shared; --depth) {
        Level& level = open_.back();
        if (level.block) events_.endCell(depth);
        level.block = nullptr;
        const bool staysInTable =
            depth == shared + 1 && chain.size() > shared && chain[shared]->table.get() == level.table;
        if (staysInTable) break;
        events_.endRow(depth, true);
        open_.pop_back();
    }
    for (std::size_t index = shared; index < chain.size(); ++index) begin(*chain[index]);
}

void RTFTableWalk::begin(const TextTableBlock& block) {
    const bool inTable = !open_.empty() && !open_.back().block;
    if (!inTable) {
        open_.push_back({block.table.get(), nullptr, block.startingRow, block.startingColumn});
        events_.beginRow(open_.size(), *block.table, true);
    } else if (Level& level = open_.back(); block.startingRow != level.row || block.startingColumn <= level.column) {
        events_.endRow(open_.size(), false);
        events_.beginRow(open_.size(), *block.table, false);
    }
    Level& level = open_.back();
    level.block = &block;
    level.row = block.startingRow;
    level.column = block.startingColumn;
    events_.beginCell(open_.size(), block);
}

void RTFTablePlan::beginRow(std::size_t depth, const TextTable& table, bool first) {
    openRows_.resize(depth);
    openTable_.resize(depth);
    if (first) {
        openTable_.back() = columns_.size();
        columns_.push_back(std::clamp<std::int64_t>(table.numberOfColumns, 1, kMaximumColumns));
    }
    openRows_.back() = rows_.size();
    rows_.push_back({openTable_.back(), {}, first, false});
}

void RTFTablePlan::beginCell(std::size_t depth, const TextTableBlock& block) {
    RTFTableRow& row = rows_[openRows_[depth - 1]];
    row.blocks.push_back(&block);
    columns_[row.table] = std::max(columns_[row.table], endColumn(block));
}

void RTFTablePlan::endRow(std::size_t depth, bool last) {
    rows_[openRows_[depth - 1]].last = last;
}

std::vector<RTFTableSlot> RTFTableSlots::next(const RTFTableRow& row) {
    std::vector<RTFTableSlot> slots;
    std::vector<Span> reaching;
    std::int64_t column = 0;
    const auto place = [&](Span span, bool continues) {
        const std::int64_t begin = std::max(span.column, column);
        if (begin > column) slots.push_back({nullptr, false, begin});
        column = std::max(span.end, begin + 1);
        slots.push_back({span.block, continues, column});
        span.column = begin;
        span.end = column;
        if (--span.rowsLeft > 0) reaching.push_back(span);
    };
    auto span = spans_.begin();
    for (const TextTableBlock* block : row.blocks) {
        for (; span != spans_.end() && span->column < firstColumn(*block); ++span)
            if (span->column >= column) place(*span, true);
        place({block, firstColumn(*block), endColumn(*block), block->rowSpan}, false);
    }
    for (; span != spans_.end(); ++span)
        if (span->column >= column) place(*span, true);
    spans_ = std::move(reaching);
    return slots;
}

namespace {

struct EdgeWords {
    BlockEdge edge;
    std::string_view border, padding, margin;
};
constexpr EdgeWords kEdgeWords[] = {
    {BlockEdge::top, "\\clbrdrt", "\\clpadt", "\\clmart"},
    {BlockEdge::left, "\\clbrdrl", "\\clpadl", "\\clmarl"},
    {BlockEdge::bottom, "\\clbrdrb", "\\clpadb", "\\clmarb"},
    {BlockEdge::right, "\\clbrdrr", "\\clpadr", "\\clmarr"},
};

std::string_view verticalAlignmentWord(BlockVerticalAlignment alignment) {
    switch (alignment) {
    case BlockVerticalAlignment::middle:
        return "\\clvertalc";
    case BlockVerticalAlignment::bottom:
        return "\\clvertalb";
    default:
        return "\\clvertalt";
    }
}

void writeWidth(const BlockLength& width, RTFOutput& out) {
    const double scale = width.isPercentage ? static_cast<double>(kPercentUnits) / kTwipsAPoint : 1;
    const std::int64_t number = twips(width.value * scale);
    if (number == 0) return;
    out.word("\\clwWidth", number);
    out.raw(width.isPercentage ? "\\clftsWidth2 " : "\\clftsWidth3 ");
}

void writeBorder(const TextBlock& block, const EdgeWords& words, RTFColorTable& colors, RTFOutput& out) {
    const std::int64_t width = twips(block.width(BlockLayer::border, words.edge).value);
    out.raw(words.border);
    if (width == 0) return out.raw("\\brdrnil ");
    out.word("\\brdrs\\brdrw", width);
    if (const auto& color = block.borderColors[static_cast<std::size_t>(words.edge)])
        out.word("\\brdrcf", static_cast<std::int64_t>(colors.indexOf(*color)));
    out.raw(' ');
}

void writeLengths(const TextBlock& block, BlockLayer layer, std::string_view EdgeWords::* word, RTFOutput& out) {
    for (const EdgeWords& words : kEdgeWords) {
        const std::int64_t length = twips(block.width(layer, words.edge).value);
        if (length == 0) continue;
        out.word(words.*word, length);
        out.raw(' ');
    }
}

void writeCell(const RTFTableSlot& slot, bool reachesDown, RTFColorTable& colors, RTFOutput& out) {
    static const TextBlock kHole;
    const TextBlock& block = slot.block && !slot.continues ? *slot.block : kHole;
    if (slot.continues) out.raw("\\clvmrg ");
    if (reachesDown) out.raw("\\clvmgf ");
    out.raw(verticalAlignmentWord(block.verticalAlignment));
    const std::size_t background = block.backgroundColor ? colors.indexOf(*block.backgroundColor) : 0;
    if (background == 0)
        out.raw(" \\clshdrawnil ");
    else
        out.word(" \\clcbpat", static_cast<std::int64_t>(background)), out.raw(' ');
    writeWidth(block.dimension(BlockDimension::width), out);
    writeLengths(block, BlockLayer::margin, &EdgeWords::margin, out);
    for (const EdgeWords& words : kEdgeWords) writeBorder(block, words, colors, out);
    writeLengths(block, BlockLayer::padding, &EdgeWords::padding, out);
}

std::int64_t tableFlags(const TextTable& table) {
    return (table.collapsesBorders ? 1 : 0) | (table.hidesEmptyCells ? 2 : 0) | (table.fixedLayout ? 4 : 0);
}

} // namespace

void writeRowHead(const RTFTableRow& row, const std::vector<RTFTableSlot>& slots, std::int64_t columns,
                  std::size_t depth, RTFColorTable& colors, RTFOutput& out) {
    out.word("\\itap", static_cast<std::int64_t>(depth));
    out.word("\\trowd \\taflags", tableFlags(*row.blocks.front()->table));
    out.raw(" \\trgaph108\\trleft-108 ");
    if (row.first) out.raw("\\trbrdrt\\brdrnil \\trbrdrl\\brdrnil \\trbrdrr\\brdrnil \n");
    // The last row names the top border, not the bottom one: readers expect what has always been written.
    else if (row.last)
        out.raw("\\trbrdrl\\brdrnil \\trbrdrt\\brdrnil \\trbrdrr\\brdrnil \n");
    else
        out.raw("\\trbrdrl\\brdrnil \\trbrdrr\\brdrnil \n");
    for (const RTFTableSlot& slot : slots) {
        const bool reachesDown = slot.block && !slot.continues && slot.block->rowSpan > 1 && !row.last;
        writeCell(slot, reachesDown, colors, out);
        out.word("\\gaph\\cellx", kTableWidthTwips * slot.right / columns);
        out.raw('\n');
    }
}

} // namespace platform
