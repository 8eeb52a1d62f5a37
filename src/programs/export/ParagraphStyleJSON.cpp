#include "programs/export/ParagraphStyleJSON.h"

#include <array>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace quillet {

using json = nlohmann::ordered_json;
using platform::BlockEdge;
using platform::BlockLayer;
using platform::BlockLength;
using platform::ParagraphStyle;
using platform::TextBlock;

namespace {

// By TextAlignment, BlockVerticalAlignment.
constexpr std::array<std::string_view, 5> kAlignments{"left", "right", "center", "justified", "natural"};
constexpr std::array<std::string_view, 4> kVerticalAlignments{"top", "middle", "bottom", "baseline"};

template<class Enumeration, std::size_t count>
std::string nameOf(const std::array<std::string_view, count>& names, Enumeration value) {
    const auto index = static_cast<std::size_t>(value);
    return index < count ? std::string(names[index]) : std::string();
}

// The lengths of a paragraph style, in the order in which they are written.
struct Length {
    const char* key;
    double ParagraphStyle::* member;
};
constexpr Length kLengths[] = {
    {"firstLineHeadIndent", &ParagraphStyle::firstLineHeadIndent},
    {"headIndent", &ParagraphStyle::headIndent},
    {"tailIndent", &ParagraphStyle::tailIndent},
    {"lineSpacing", &ParagraphStyle::lineSpacing},
    {"paragraphSpacing", &ParagraphStyle::paragraphSpacing},
    {"paragraphSpacingBefore", &ParagraphStyle::paragraphSpacingBefore},
    {"lineHeightMultiple", &ParagraphStyle::lineHeightMultiple},
    {"minimumLineHeight", &ParagraphStyle::minimumLineHeight},
    {"maximumLineHeight", &ParagraphStyle::maximumLineHeight},
    {"defaultTabInterval", &ParagraphStyle::defaultTabInterval},
};

// Points as a number, a share of what is around as "50%".
json jsonFromLength(const BlockLength& length) {
    if (!length.isPercentage) return length.value;
    return json(length.value).dump() + "%";
}

json jsonFromEdges(const TextBlock& block, BlockLayer layer) {
    json edges = json::array();
    for (const BlockEdge edge : {BlockEdge::left, BlockEdge::top, BlockEdge::right, BlockEdge::bottom})
        edges.push_back(jsonFromLength(block.width(layer, edge)));
    return edges;
}

json jsonFromBlock(const TextBlock& block, ParagraphObjects& objects) {
    json form{{"id", objects.blocks.numberOf(&block)}};
    if (const auto* cell = dynamic_cast<const platform::TextTableBlock*>(&block)) {
        form["table"] = objects.tables.numberOf(cell->table.get());
        form["row"] = cell->startingRow;
        form["rowSpan"] = cell->rowSpan;
        form["column"] = cell->startingColumn;
        form["columnSpan"] = cell->columnSpan;
    }
    if (block.backgroundColor) form["backgroundColor"] = jsonFromColor(*block.backgroundColor);
    form["padding"] = jsonFromEdges(block, BlockLayer::padding);
    form["border"] = jsonFromEdges(block, BlockLayer::border);
    form["margin"] = jsonFromEdges(block, BlockLayer::margin);
    form["verticalAlignment"] = nameOf(kVerticalAlignments, block.verticalAlignment);
    const BlockLength& width = block.dimension(platform::BlockDimension::width);
    if (width != BlockLength()) form["width"] = jsonFromLength(width);
    return form;
}

json jsonFromTabStops(const ParagraphStyle& style) {
    json stops = json::array();
    for (const platform::TextTab& tab : style.tabStops)
        stops.push_back(
            {{"location", tab.location}, {"alignment", tab.decimal ? "decimal" : nameOf(kAlignments, tab.alignment)}});
    return stops;
}

json jsonFromLists(const ParagraphStyle& style, ParagraphObjects& objects) {
    json lists = json::array();
    for (const auto& list : style.textLists)
        lists.push_back({{"id", objects.lists.numberOf(list.get())},
                         {"markerFormat", list->markerFormat()},
                         {"startingItemNumber", list->startingItemNumber()}});
    return lists;
}

} // namespace

json jsonFromColor(const platform::Color& color) {
    const auto components = color.rgba();
    if (!components) return nullptr;
    json form{{"red", components->red},
              {"green", components->green},
              {"blue", components->blue},
              {"alpha", components->alpha}};
    if (color.isCatalogColor()) {
        form["catalog"] = color.catalogNameComponent();
        form["name"] = color.colorNameComponent();
    }
    return form;
}

json jsonFromParagraphStyle(const ParagraphStyle& style, ParagraphObjects& objects) {
    const ParagraphStyle& usual = *ParagraphStyle::defaultParagraphStyle();
    json form = json::object();
    if (style.alignment != usual.alignment) form["alignment"] = nameOf(kAlignments, style.alignment);
    for (const Length& length : kLengths)
        if (style.*length.member != usual.*length.member) form[length.key] = style.*length.member;
    if (style.headerLevel != usual.headerLevel) form["headerLevel"] = style.headerLevel;
    if (style.baseWritingDirection != usual.baseWritingDirection)
        form["baseWritingDirection"] =
            style.baseWritingDirection == platform::WritingDirection::rightToLeft ? "rightToLeft" : "leftToRight";
    if (style.tabStops != usual.tabStops) form["tabStops"] = jsonFromTabStops(style);
    if (!style.textLists.empty()) form["textLists"] = jsonFromLists(style, objects);
    if (!style.textBlocks.empty()) {
        form["textBlocks"] = json::array();
        for (const auto& block : style.textBlocks) form["textBlocks"].push_back(jsonFromBlock(*block, objects));
    }
    return form;
}

} // namespace quillet
