// The numbers of a block stand under "NSParam0" to "NSParam19": its six dimensions first (3 is not used), then the
// edges of its three layers. One word says which of them are percentages, and holds the vertical alignment.

#include <ranges>

#include <fmt/format.h>

#include "platform/archive/ArchivedFields.h"
#include "platform/archive/KeyedArchiver.h"
#include "platform/text/ArchivableTextClasses.h"
#include "platform/text/TextTable.h"

namespace platform {

namespace {

constexpr std::array<unsigned, 6> kDimensionParameters{0, 1, 2, 4, 5, 6};
constexpr unsigned kFirstEdgeParameter = 8;
constexpr unsigned kAlignmentShift = 30;

// Calls body(number of the parameter, its length) for every parameter of the block, in ascending order.
template<class Block, class Body>
void forEachParameter(Block& block, Body&& body) {
    for (std::size_t i = 0; i < kDimensionParameters.size(); ++i) body(kDimensionParameters[i], block.dimensions[i]);
    unsigned parameter = kFirstEdgeParameter;
    for (auto& layer : block.widths)
        for (auto& edge : layer) body(parameter++, edge);
}

std::string parameterKey(unsigned parameter) {
    return fmt::format("NSParam{}", parameter);
}

void encodeBlock(KeyedArchiver& archiver, const TextBlock& block) {
    std::uint32_t types = static_cast<std::uint32_t>(block.verticalAlignment) << kAlignmentShift;
    forEachParameter(block, [&](unsigned parameter, const BlockLength& length) {
        if (length.value != 0) archiver.encodeDouble(parameterKey(parameter), length.value);
        if (length.isPercentage) types |= 1U << parameter;
    });
    if (types != 0) archiver.encodeInteger("NSValueTypes", types);
    if (block.backgroundColor) archiver.encodePlace("NSBackgroundColor", archiver.placeOfNew(*block.backgroundColor));
    if (block.borderColors == std::array<std::optional<Color>, 4>{}) return;
    archiver.encodeArrayOfPlaces("NSBorderColors",
                                 block.borderColors | std::views::transform([&](const std::optional<Color>& color) {
                                     return color ? archiver.placeOfNew(*color) : archiver.placeOf(Value());
                                 }));
}

void decodeBlock(const ArchivedFields& fields, TextBlock& block) {
    // Some writers store the word as a signed one.
    const auto types = static_cast<std::uint32_t>(fields.decodeInteger("NSValueTypes"));
    block.verticalAlignment = static_cast<BlockVerticalAlignment>(types >> kAlignmentShift);
    forEachParameter(block, [&](unsigned parameter, BlockLength& length) {
        length.value = fields.decodeLength(parameterKey(parameter));
        length.isPercentage = (types >> parameter & 1U) != 0;
    });
    if (const auto color = fields.decode<Color>("NSBackgroundColor")) block.backgroundColor = *color;
    const auto colors = fields.decode<ObjectArray>("NSBorderColors");
    for (std::size_t i = 0; colors && i < colors->size() && i < block.borderColors.size(); ++i)
        if (const auto color = (*colors)[i].as<Color>()) block.borderColors[i] = *color;
}

// Bits of "NSTableFlags".
constexpr std::int64_t kCollapsesBorders = 1;
constexpr std::int64_t kHidesEmptyCells = 2;
constexpr std::int64_t kFixedLayout = 4;

void encodeTable(KeyedArchiver& archiver, const TextTable& table) {
    encodeBlock(archiver, table);
    archiver.encodeInteger("NSNumCols", table.numberOfColumns);
    archiver.encodeInteger("NSTableFlags", (table.collapsesBorders ? kCollapsesBorders : 0) |
                                               (table.hidesEmptyCells ? kHidesEmptyCells : 0) |
                                               (table.fixedLayout ? kFixedLayout : 0));
}

void encodeTableBlock(KeyedArchiver& archiver, const TextTableBlock& block) {
    encodeBlock(archiver, block);
    archiver.encodeObject("NSTable", block.table);
    archiver.encodeInteger("NSRowNum", block.startingRow);
    archiver.encodeInteger("NSRowSpan", block.rowSpan);
    archiver.encodeInteger("NSColNum", block.startingColumn);
    archiver.encodeInteger("NSColSpan", block.columnSpan);
}

Result<ArchivedObject> decodePlainBlock(const ArchivedFields& fields) {
    const auto block = std::make_shared<TextBlock>();
    decodeBlock(fields, *block);
    return ArchivedObject(block);
}

Result<ArchivedObject> decodeTable(const ArchivedFields& fields) {
    const auto table = std::make_shared<TextTable>();
    decodeBlock(fields, *table);
    table->numberOfColumns = fields.decodeInteger("NSNumCols");
    const std::int64_t flags = fields.decodeInteger("NSTableFlags");
    table->collapsesBorders = (flags & kCollapsesBorders) != 0;
    table->hidesEmptyCells = (flags & kHidesEmptyCells) != 0;
    table->fixedLayout = (flags & kFixedLayout) != 0;
    return ArchivedObject(table);
}

// A cell without a table reads as nil: its paragraphs then stand outside the table.
Result<ArchivedObject> decodeTableBlock(const ArchivedFields& fields) {
    auto table = fields.decodeObject("NSTable").asMutable<TextTable>();
    if (!table) return ArchivedObject();
    const auto block = std::make_shared<TextTableBlock>(
        std::move(table), fields.decodeInteger("NSRowNum"), fields.decodeInteger("NSRowSpan"),
        fields.decodeInteger("NSColNum"), fields.decodeInteger("NSColSpan"));
    decodeBlock(fields, *block);
    return ArchivedObject(block);
}

} // namespace

std::vector<ArchivableClass> archivableTextBlockClasses() {
    ClassRegistry::shared().addBase<TextTable, TextBlock>();
    ClassRegistry::shared().addBase<TextTableBlock, TextBlock>();
    return {
        {"NSTextBlock",
         {"NSTextBlock", "NSObject"},
         {},
         typeid(TextBlock),
         true,
         encoderOf<TextBlock>(encodeBlock),
         decodePlainBlock},
        {"NSTextTable",
         {"NSTextTable", "NSTextBlock", "NSObject"},
         {},
         typeid(TextTable),
         true,
         encoderOf<TextTable>(encodeTable),
         decodeTable},
        {"NSTextTableBlock",
         {"NSTextTableBlock", "NSTextBlock", "NSObject"},
         {},
         typeid(TextTableBlock),
         true,
         encoderOf<TextTableBlock>(encodeTableBlock),
         decodeTableBlock},
    };
}

} // namespace platform
