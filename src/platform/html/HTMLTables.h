// The tables that are open while the HTML reader walks a page: where the next cell goes, and what it looks like.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/html/CssStyle.h"
#include "platform/text/TextTable.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

class HTMLTables {
  public:
    explicit HTMLTables(const HTMLDocument& page) : page_(page) {}

    bool empty() const { return open_.empty(); }
    std::size_t depth() const { return open_.size(); }
    void enterTable(HTMLDocument::NodeIndex element, const CssStyle& style);
    // A table that the page does not have, for a cell outside any.
    void enterAnonymousTable();
    void leaveTable() { open_.pop_back(); }
    void enterRow(const CssStyle& style);
    // The width that a column gives its cells.
    void addColumns(HTMLDocument::NodeIndex element, const CssStyle& style);
    // The block of the next cell, in the innermost table.
    std::shared_ptr<TextTableBlock> addCell(HTMLDocument::NodeIndex element, const CssStyle& style);

  private:
    struct OpenTable {
        std::shared_ptr<TextTable> table;
        double cellMargin = 0; // half of what lies between cells
        std::int64_t row = -1;
        std::int64_t column = 0;                // the first that may be free in this row
        std::vector<std::int64_t> coveredUntil; // by column: the first row that no cell from above covers
        std::vector<double> columnWidths;       // of col elements, 0 for none
        std::optional<Color> rowBackground;
    };

    std::int64_t number(HTMLDocument::NodeIndex element, HTMLAttribute name, std::int64_t least,
                        std::int64_t most) const;

    struct ColorHash {
        std::size_t operator()(const CssRGBA& color) const;
    };
    const Color& color(const CssRGBA& color);
    void setBox(TextBlock& block, const CssStyle& style);

    const HTMLDocument& page_;
    std::vector<OpenTable> open_;
    std::unordered_map<CssRGBA, Color, ColorHash> colors_; // a cell has five; thousands of cells share them
};

} // namespace platform
