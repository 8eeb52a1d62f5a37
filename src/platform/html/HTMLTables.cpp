#include "platform/html/HTMLTables.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <functional>

#include "platform/html/HTMLStyleAttributes.h"

namespace platform {

namespace {

constexpr std::int64_t kMostColumns = 1000; // cells beyond stand in the last; a row costs its table's columns
constexpr std::int64_t kWidestSpan = 1000, kTallestSpan = 65534;
constexpr double kDefaultSpacing = 1; // the attribute's default; style sheets do not count
constexpr double kWidestSpacing = 10'000;
constexpr double kLayoutWidth = 784;

// By edge in style order: top, right, bottom, left.
constexpr std::array<BlockEdge, 4> kEdges{BlockEdge::top, BlockEdge::right, BlockEdge::bottom, BlockEdge::left};

BlockLength blockLength(const CssLength& length) {
    return {length.isAutomatic ? 0 : length.value, length.isPercentage};
}

BlockVerticalAlignment verticalAlignment(CssVerticalAlign align) {
    switch (align) {
    case CssVerticalAlign::top:
    case CssVerticalAlign::textTop:
        return BlockVerticalAlignment::top;
    case CssVerticalAlign::bottom:
    case CssVerticalAlign::textBottom:
        return BlockVerticalAlignment::bottom;
    case CssVerticalAlign::middle:
        return BlockVerticalAlignment::middle;
    default:
        return BlockVerticalAlignment::baseline;
    }
}

bool isAbsolute(const CssLength& length) {
    return !length.isAutomatic && !length.isPercentage;
}

} // namespace

std::size_t HTMLTables::ColorHash::operator()(const CssRGBA& color) const {
    std::size_t hash = 0;
    for (const double component : {color.red, color.green, color.blue, color.alpha})
        hash = hash * 1099511628211U ^ std::hash<double>()(component);
    return hash;
}

const Color& HTMLTables::color(const CssRGBA& color) {
    const auto known = colors_.find(color);
    return known != colors_.end() ? known->second : colors_.emplace(color, colorFromCss(color)).first->second;
}

void HTMLTables::setBox(TextBlock& block, const CssStyle& style) {
    for (std::size_t i = 0; i < kEdges.size(); ++i) {
        block.width(BlockLayer::padding, kEdges[i]) = blockLength(style.padding[i]);
        block.width(BlockLayer::border, kEdges[i]) = {style.borderWidth[i], false};
        block.width(BlockLayer::margin, kEdges[i]) = blockLength(style.margin[i]);
        block.borderColors[static_cast<std::size_t>(kEdges[i])] = color(style.borderColor[i]);
    }
    if (style.background.alpha > 0) block.backgroundColor = color(style.background);
}

std::int64_t HTMLTables::number(HTMLDocument::NodeIndex element, HTMLAttribute name, std::int64_t least,
                                std::int64_t most) const {
    std::int64_t value = least;
    if (const auto text = page_.attribute(element, name)) {
        const std::size_t start = std::min(text->find_first_not_of(" \t\n\r\f+"), text->size());
        const auto status = std::from_chars(text->data() + start, text->data() + text->size(), value).ec;
        if (status == std::errc::result_out_of_range) value = most;
        if (status == std::errc::invalid_argument) value = least;
    }
    return std::clamp(value, least, most);
}

void HTMLTables::enterTable(HTMLDocument::NodeIndex element, const CssStyle& style) {
    OpenTable opened;
    opened.table = std::make_shared<TextTable>();
    TextTable& table = *opened.table;
    setBox(table, style);
    table.collapsesBorders = style.collapsesBorders;
    table.hidesEmptyCells = style.hidesEmptyCells;
    table.fixedLayout = style.fixedTableLayout;
    if (page_.attribute(element, HTMLAttribute::width) && !style.width.isAutomatic)
        table.dimension(BlockDimension::width) = {
            style.width.isPercentage ? style.width.value / 100 * kLayoutWidth : style.width.value, false};
    double spacing = kDefaultSpacing;
    if (const auto text = page_.attribute(element, HTMLAttribute::cellspacing))
        std::from_chars(text->data(), text->data() + text->size(), spacing);
    opened.cellMargin =
        style.collapsesBorders ? 0 : std::clamp(std::isnan(spacing) ? 0 : spacing, 0.0, kWidestSpacing) / 2;
    open_.push_back(std::move(opened));
}

void HTMLTables::enterAnonymousTable() {
    OpenTable opened;
    opened.table = std::make_shared<TextTable>();
    opened.table->borderColors.fill(color({0, 0, 0, 1}));
    opened.cellMargin = kDefaultSpacing / 2;
    open_.push_back(std::move(opened));
}

// Rows that cells from above cover from end to end have no place for a cell.
void HTMLTables::enterRow(const CssStyle& style) {
    if (open_.empty()) return;
    OpenTable& table = open_.back();
    ++table.row;
    if (!table.coveredUntil.empty()) table.row = std::max(table.row, *std::ranges::min_element(table.coveredUntil));
    table.column = 0;
    table.rowBackground.reset();
    if (style.background.alpha > 0) table.rowBackground = color(style.background);
}

void HTMLTables::addColumns(HTMLDocument::NodeIndex element, const CssStyle& style) {
    if (open_.empty()) return;
    std::vector<double>& widths = open_.back().columnWidths;
    const auto count = static_cast<std::size_t>(number(element, HTMLAttribute::span, 1, kWidestSpan));
    const double width = isAbsolute(style.width) ? style.width.value : 0;
    widths.resize(std::min(widths.size() + count, static_cast<std::size_t>(kMostColumns)), width);
}

std::shared_ptr<TextTableBlock> HTMLTables::addCell(HTMLDocument::NodeIndex element, const CssStyle& style) {
    OpenTable& table = open_.back();
    if (table.row < 0) table.row = 0;
    const auto covered = [&](std::int64_t column) {
        return column < static_cast<std::int64_t>(table.coveredUntil.size()) &&
               table.coveredUntil[static_cast<std::size_t>(column)] > table.row;
    };
    while (covered(table.column)) ++table.column;
    const std::int64_t column = std::min(table.column, kMostColumns - 1);
    const std::int64_t columns =
        std::min(number(element, HTMLAttribute::colspan, 1, kWidestSpan), kMostColumns - column);
    const std::int64_t rows = number(element, HTMLAttribute::rowspan, 1, kTallestSpan);
    const auto end = static_cast<std::size_t>(column + columns);
    if (table.coveredUntil.size() < end) table.coveredUntil.resize(end, 0);
    for (auto i = static_cast<std::size_t>(column); i < end; ++i) table.coveredUntil[i] = table.row + rows;
    table.column = column + columns;
    table.table->numberOfColumns = static_cast<std::int64_t>(table.coveredUntil.size());

    auto cell = std::make_shared<TextTableBlock>(table.table, table.row, rows, column, columns);
    setBox(*cell, style);
    for (const BlockEdge edge : kEdges) cell->width(BlockLayer::margin, edge).value += table.cellMargin;
    if (!cell->backgroundColor) cell->backgroundColor = table.rowBackground;
    cell->verticalAlignment = verticalAlignment(style.verticalAlign);
    if (isAbsolute(style.width)) {
        cell->dimension(BlockDimension::width) = {style.width.value, false};
    } else if (static_cast<std::size_t>(column) < table.columnWidths.size()) {
        const double padding = blockLength(style.padding[1]).value + blockLength(style.padding[3]).value;
        const double width = table.columnWidths[static_cast<std::size_t>(column)] - padding;
        cell->dimension(BlockDimension::width) = {std::max(0.0, width), false};
    }
    if (isAbsolute(style.minWidth)) cell->dimension(BlockDimension::minimumWidth) = {style.minWidth.value, false};
    if (isAbsolute(style.maxWidth)) cell->dimension(BlockDimension::maximumWidth) = {style.maxWidth.value, false};
    return cell;
}

} // namespace platform
