// Tables in a text are blocks of paragraph styles; in RTF they are rows of cells, each row with a head that lists its
// cells in advance. So the paragraphs are walked twice by the same rules: once to collect the rows, once to write.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/text/TextTable.h"

namespace platform {

struct ParagraphStyle;
class RTFColorTable;
class RTFOutput;

// Cells around a paragraph, outermost first; tables deeper than RTF readers go are left flat.
using RTFCellChain = std::vector<const TextTableBlock*>;
RTFCellChain cellChain(const ParagraphStyle& style);
std::size_t tableDepth(const ParagraphStyle& style);

// What happens between two paragraphs, in this order. Depths are 1-based.
class RTFTableEvents {
  public:
    virtual ~RTFTableEvents() = default;
    virtual void beginRow(std::size_t depth, const TextTable& table, bool first) = 0;
    virtual void beginCell(std::size_t depth, const TextTableBlock& block) = 0;
    virtual void endCell(std::size_t depth) = 0;
    virtual void endRow(std::size_t depth, bool last) = 0;
};

// Follows the chains of successive paragraphs. A cell of the same table that does not lie to the right of the cell
// before, in the same row, begins a new row; a table ends when the text leaves it, and begins anew when it comes back.
class RTFTableWalk {
  public:
    explicit RTFTableWalk(RTFTableEvents& events) : events_(events) {}

    // The next paragraph's chain; empty outside of tables and behind the text.
    void moveTo(const RTFCellChain& chain);
    // How many of the open cells the chain stays in.
    std::size_t sharedDepth(const RTFCellChain& chain) const;
    std::size_t depth() const { return open_.size(); }

  private:
    struct Level {
        const TextTable* table;
        const TextTableBlock* block; // null between two cells
        std::int64_t row, column;
    };
    void begin(const TextTableBlock& block);

    RTFTableEvents& events_;
    std::vector<Level> open_;
};

struct RTFTableRow {
    std::size_t table = 0; // numbers the tables as the walk meets them
    std::vector<const TextTableBlock*> blocks;
    bool first = false, last = false;
};

// The first walk: rows in the order in which they begin.
class RTFTablePlan : public RTFTableEvents {
  public:
    void beginRow(std::size_t depth, const TextTable& table, bool first) override;
    void beginCell(std::size_t depth, const TextTableBlock& block) override;
    void endCell(std::size_t) override {}
    void endRow(std::size_t depth, bool last) override;

    const RTFTableRow& row(std::size_t index) const { return rows_[index]; }
    std::int64_t columnsOf(const RTFTableRow& row) const { return columns_[row.table]; }

  private:
    std::vector<RTFTableRow> rows_;
    std::vector<std::int64_t> columns_;  // by table
    std::vector<std::size_t> openRows_;  // by depth
    std::vector<std::size_t> openTable_; // by depth
};

// A cell as a row has it: one of the text, the lower part of one above, or a hole (neither).
struct RTFTableSlot {
    const TextTableBlock* block = nullptr;
    bool continues = false; // the block began in a row above
    std::int64_t right = 0; // column behind it
};

// The slots of a table's rows, row after row.
class RTFTableSlots {
  public:
    std::vector<RTFTableSlot> next(const RTFTableRow& row);

  private:
    struct Span {
        const TextTableBlock* block;
        std::int64_t column, end, rowsLeft;
    };
    std::vector<Span> spans_; // cells that reach further down, by column
};

// From \trowd to the last \cellx.
void writeRowHead(const RTFTableRow& row, const std::vector<RTFTableSlot>& slots, std::int64_t columns,
                  std::size_t depth, RTFColorTable& colors, RTFOutput& out);

} // namespace platform
