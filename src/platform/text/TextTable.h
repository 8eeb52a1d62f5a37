// Counterparts of NSTextBlock, NSTextTable and NSTextTableBlock. Blocks have identity: all paragraphs of a cell share
// its block, all cells of a table share the table.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/graphics/Color.h"

namespace platform {

enum class BlockVerticalAlignment : std::uint8_t { top, middle, bottom, baseline };
enum class BlockLayer : std::uint8_t { padding, border, margin };
enum class BlockEdge : std::uint8_t { left, top, right, bottom };
enum class BlockDimension : std::uint8_t { width, minimumWidth, maximumWidth, height, minimumHeight, maximumHeight };

// A length of a block: points, or a percentage of what encloses it.
struct BlockLength {
    double value = 0;
    bool isPercentage = false;
    friend bool operator==(const BlockLength&, const BlockLength&) = default;
};

class TextBlock {
  public:
    virtual ~TextBlock() = default;

    std::array<BlockLength, 6> dimensions;            // by BlockDimension
    std::array<std::array<BlockLength, 4>, 3> widths; // by BlockLayer, then BlockEdge
    BlockVerticalAlignment verticalAlignment = BlockVerticalAlignment::top;
    std::optional<Color> backgroundColor;
    std::array<std::optional<Color>, 4> borderColors; // by BlockEdge

    BlockLength& width(BlockLayer layer, BlockEdge edge) {
        return widths[static_cast<std::size_t>(layer)][static_cast<std::size_t>(edge)];
    }
    const BlockLength& width(BlockLayer layer, BlockEdge edge) const {
        return widths[static_cast<std::size_t>(layer)][static_cast<std::size_t>(edge)];
    }
    BlockLength& dimension(BlockDimension which) { return dimensions[static_cast<std::size_t>(which)]; }
    const BlockLength& dimension(BlockDimension which) const { return dimensions[static_cast<std::size_t>(which)]; }
};

class TextTable : public TextBlock {
  public:
    std::int64_t numberOfColumns = 0;
    bool collapsesBorders = false;
    bool hidesEmptyCells = false;
    bool fixedLayout = false;
};

class TextTableBlock : public TextBlock {
  public:
    TextTableBlock(std::shared_ptr<TextTable> inTable, std::int64_t row, std::int64_t rows, std::int64_t column,
                   std::int64_t columns)
        : table(std::move(inTable)), startingRow(row), rowSpan(rows), startingColumn(column), columnSpan(columns) {}

    std::shared_ptr<TextTable> table;
    std::int64_t startingRow, rowSpan; // 0-based
    std::int64_t startingColumn, columnSpan;
};

} // namespace platform
