#include "platform/rtf/RTFReadRows.h"

#include <algorithm>
#include <map>
#include <optional>

#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

constexpr std::int64_t kUnsaidWidth = 1440;   // of a cell that no head describes, twips
constexpr std::int64_t kMostEvenColumns = 64; // how far the number of even columns is looked for

// The right edges of a row's cells, ascending, one a cell.
std::vector<std::int64_t> edgesOf(const RTFReadRow& row) {
    std::vector<std::int64_t> edges;
    std::int64_t edge = std::min(row.definition.left, 0);
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
        const std::int64_t said = i < row.definition.cells.size() ? row.definition.cells[i].right : edge + kUnsaidWidth;
        edge = std::max(said, edge + 1);
        edges.push_back(edge);
    }
    return edges;
}

// The columns of a table: column k ends at edges[k].
std::vector<std::int64_t> evenColumns(std::int64_t count) {
    std::vector<std::int64_t> edges;
    for (std::int64_t column = 1; column <= count; ++column) edges.push_back(kTableWidthTwips * column / count);
    return edges;
}

std::vector<std::int64_t> columnsOf(const std::vector<std::vector<std::int64_t>>& rows, bool even) {
    std::vector<std::int64_t> edges;
    for (const auto& row : rows) edges.insert(edges.end(), row.begin(), row.end());
    std::ranges::sort(edges);
    edges.erase(std::ranges::unique(edges).begin(), edges.end());
    const auto count = static_cast<std::int64_t>(edges.size());
    for (std::int64_t columns = count; even && columns <= std::max(count, kMostEvenColumns); ++columns) {
        std::vector<std::int64_t> tried = evenColumns(columns);
        if (std::ranges::includes(tried, edges)) return tried;
    }
    return edges;
}

std::int64_t columnEndingAt(const std::vector<std::int64_t>& columns, std::int64_t edge) {
    return std::ranges::lower_bound(columns, edge) - columns.begin();
}

void takeLooks(TextTableBlock& block, const TextBlock& from) {
    block.dimensions = from.dimensions;
    block.widths = from.widths;
    block.verticalAlignment = from.verticalAlignment;
    block.backgroundColor = from.backgroundColor;
    block.borderColors = from.borderColors;
}

} // namespace

void placeCells(TextTable& table, std::vector<RTFReadRow>& rows) {
    if (rows.empty()) return;
    const std::int32_t flags = rows.front().definition.flags;
    table.collapsesBorders = flags > 0 && (flags & 1) != 0;
    table.hidesEmptyCells = flags > 0 && (flags & 2) != 0;
    table.fixedLayout = flags > 0 && (flags & 4) != 0;

    std::vector<std::vector<std::int64_t>> edges;
    edges.reserve(rows.size());
    for (const RTFReadRow& row : rows) edges.push_back(edgesOf(row));
    const std::vector<std::int64_t> columns = columnsOf(edges, flags >= 0);
    table.numberOfColumns = static_cast<std::int64_t>(columns.size());

    std::map<std::int64_t, TextTableBlock*> above; // the cell that ends a column's stack so far, by first column
    for (std::size_t row = 0; row < rows.size(); ++row) {
        std::int64_t column = 0;
        TextTableBlock* left = nullptr;
        for (std::size_t i = 0; i < rows[row].cells.size(); ++i) {
            RTFReadCell& cell = rows[row].cells[i];
            const std::int64_t end = columnEndingAt(columns, edges[row][i]) + 1;
            const RTFCellDefinition* said =
                i < rows[row].definition.cells.size() ? &rows[row].definition.cells[i] : nullptr;
            cell.block->startingRow = static_cast<std::int64_t>(row);
            cell.block->startingColumn = column;
            cell.block->columnSpan = end - column;
            if (said) takeLooks(*cell.block, said->block);
            const auto head = above.find(column);
            if (said && said->continuesLeft && left) {
                left->columnSpan = end - left->startingColumn;
                cell.merged = true;
            } else if (said && said->continuesAbove && head != above.end()) {
                head->second->rowSpan = static_cast<std::int64_t>(row) - head->second->startingRow + 1;
                cell.merged = true;
            } else {
                left = above[column] = cell.block.get();
            }
            column = end;
        }
    }
}

} // namespace platform
