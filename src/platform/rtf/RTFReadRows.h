// Rows and cells of a table as RTF describes them, and the blocks that they become.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/base/Range.h"
#include "platform/text/TextTable.h"

namespace platform {

// A cell as a row's head describes it; the colors are resolved already.
struct RTFCellDefinition {
    TextBlock block;
    bool continuesAbove = false; // \clvmrg: the lower part of a cell
    bool continuesLeft = false;  // \clmrg
    std::int32_t right = 0;      // \cellx, twips
};

struct RTFRowDefinition {
    std::vector<RTFCellDefinition> cells;
    std::int32_t flags = -1; // \taflags, negative when not said
    std::int32_t left = 0;   // \trleft
    bool last = false;       // \lastrow
};

// A cell of the text.
struct RTFReadCell {
    std::shared_ptr<TextTableBlock> block;
    Range range;         // of its paragraphs
    bool merged = false; // a part of another cell without text of its own
};

struct RTFReadRow {
    std::vector<RTFReadCell> cells;
    RTFRowDefinition definition; // of as many cells at most
};

// Gives the blocks of a whole table their rows, columns and looks. Columns are what the right edges of all rows divide
// the table into; rows of our own kind say in edges at even distances how many columns there are.
void placeCells(TextTable& table, std::vector<RTFReadRow>& rows);

} // namespace platform
