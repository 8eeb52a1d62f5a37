#include "platform/html/HTMLStyleRules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

#include <fmt/format.h>

namespace platform {

namespace {

// Edges as style text orders them.
constexpr std::array<BlockEdge, 4> kEdges{BlockEdge::top, BlockEdge::right, BlockEdge::bottom, BlockEdge::left};

void add(std::string& declarations, std::string_view property, std::string_view value) {
    if (!declarations.empty()) declarations += "; ";
    fmt::format_to(std::back_inserter(declarations), "{}: {}", property, value);
}

std::string blockLengths(const TextBlock& block, BlockLayer layer) {
    std::string text;
    for (const BlockEdge edge : kEdges) {
        const BlockLength& length = block.width(layer, edge);
        text += (text.empty() ? "" : " ") +
                (length.isPercentage ? fmt::format("{:.1f}%", length.value) : htmlLength(length.value));
    }
    return text;
}

bool hasLayer(const TextBlock& block, BlockLayer layer) {
    for (const BlockEdge edge : kEdges)
        if (block.width(layer, edge).value != 0) return true;
    return false;
}

std::string borderColors(const TextBlock& block) {
    std::string text;
    for (const BlockEdge edge : kEdges) {
        const auto& color = block.borderColors[static_cast<std::size_t>(edge)];
        text += (text.empty() ? "" : " ") + (color ? htmlColor(*color) : std::string("#000000"));
    }
    return text;
}

void addBox(std::string& declarations, const TextBlock& block) {
    if (block.backgroundColor) add(declarations, "background-color", htmlColor(*block.backgroundColor));
    if (hasLayer(block, BlockLayer::margin)) add(declarations, "margin", blockLengths(block, BlockLayer::margin));
    if (hasLayer(block, BlockLayer::border)) {
        add(declarations, "border-style", "solid");
        add(declarations, "border-width", blockLengths(block, BlockLayer::border));
        add(declarations, "border-color", borderColors(block));
    }
}

std::string_view alignmentName(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::right:
        return "right";
    case TextAlignment::center:
        return "center";
    case TextAlignment::justified:
        return "justify";
    default:
        return "";
    }
}

std::string colorOf(const AttributeSet& run, AttributeName name) {
    const Color* color = run.find<Color>(name);
    return color ? htmlColor(*color) : std::string();
}

} // namespace

std::string HTMLStyleRules::className(std::string_view element, std::string_view prefix,
                                      const std::string& declarations) {
    std::string& made = classes_[fmt::format("{} {}", element, declarations)];
    if (made.empty()) {
        made = fmt::format("{}{}", prefix, ++counters_[std::string(prefix)]);
        rules_.push_back(fmt::format("{}.{} {{{}}}", element, made, declarations));
    }
    return made;
}

std::string HTMLStyleRules::paragraphClass(std::string_view element, const std::string& declarations) {
    const std::size_t number = paragraphNumbers_.try_emplace(declarations, paragraphNumbers_.size() + 1).first->second;
    std::string& made = classes_[fmt::format("{} {}", element, declarations)];
    if (made.empty()) {
        made = fmt::format("{}{}", element, number);
        rules_.push_back(fmt::format("{}.{} {{{}}}", element, made, declarations));
    }
    return made;
}

std::string HTMLStyleRules::text(std::string_view indent) const {
    std::string text;
    static constexpr std::array<std::string_view, 7> kOrder{"p.", "li.", "span.", "table.", "td.", "ol.", "ul."};
    for (const std::string_view element : kOrder) {
        for (const std::string& rule : rules_)
            if (rule.starts_with(element)) fmt::format_to(std::back_inserter(text), "{}{}\n", indent, rule);
        if (element == "span." && usesTabs_)
            fmt::format_to(std::back_inserter(text), "{}span.Apple-tab-span {{white-space:pre}}\n", indent);
    }
    return text;
}

std::string htmlLength(double points) {
    return fmt::format("{:.1f}px", points == 0 ? 0.0 : points);
}

std::string htmlColor(const Color& color) {
    const auto rgba = color.rgba();
    if (!rgba) return {};
    const auto byte = [](double component) { return std::lround(std::clamp(component, 0.0, 1.0) * 255); };
    if (rgba->alpha < 1)
        return fmt::format("rgba({}, {}, {}, {:.3g})", byte(rgba->red), byte(rgba->green), byte(rgba->blue),
                           rgba->alpha);
    return fmt::format("#{:02x}{:02x}{:02x}", byte(rgba->red), byte(rgba->green), byte(rgba->blue));
}

// A face that bold and italic do not lead to is written by its own name.
std::string htmlFont(const Font& font) {
    std::string family = font.familyName();
    const auto plain = fontWithFamily(family, font.traits() & (kBoldFontTrait | kItalicFontTrait),
                                      (font.traits() & kBoldFontTrait) ? 9 : 5, font.pointSize());
    if (!plain || plain->fontName() != font.fontName()) family = font.fontName();
    const bool needsQuotes =
        family.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-") !=
        std::string::npos;
    std::string name;
    for (const char c : family)
        if (c != '\'' && c != '\\' && c != '<' && static_cast<unsigned char>(c) >= 0x20) name += c;
    return htmlLength(font.pointSize()) + (needsQuotes ? " '" + name + "'" : " " + name);
}

// Three old families get 15 % more, which screens without it would set too tight.
double htmlLineHeight(const Font& font) {
    const double height = std::round(font.ascender()) + std::round(-font.descender());
    const std::string family = font.familyName();
    constexpr double kExtra = 0.15;
    if (family == "Times" || family == "Helvetica" || family == "Courier")
        return height + std::floor(kExtra * height + 0.5);
    return height + std::round(font.leading());
}

std::string paragraphDeclarations(const ParagraphStyle& style, const HTMLParagraphLook& look, double minimumHeight) {
    std::string text;
    const double right = style.tailIndent < 0 ? -style.tailIndent : 0;
    add(text, "margin",
        fmt::format("{} {} {} {}", htmlLength(style.paragraphSpacingBefore), htmlLength(right),
                    htmlLength(style.paragraphSpacing), htmlLength(style.textLists.empty() ? style.headIndent : 0)));
    if (const auto name = alignmentName(style.alignment); !name.empty()) add(text, "text-align", name);
    if (style.textLists.empty() && style.firstLineHeadIndent != style.headIndent)
        add(text, "text-indent", htmlLength(style.firstLineHeadIndent - style.headIndent));
    if (style.minimumLineHeight > 0) add(text, "line-height", htmlLength(style.minimumLineHeight));
    add(text, "font", look.font);
    if (!look.color.empty()) add(text, "color", look.color);
    if (!look.stroke.empty()) add(text, "-webkit-text-stroke", look.stroke);
    if (!look.background.empty()) add(text, "background-color", look.background);
    if (minimumHeight > 0) add(text, "min-height", htmlLength(minimumHeight));
    return text;
}

std::string spanDeclarations(const AttributeSet& run, const HTMLParagraphLook& look) {
    std::string text;
    const Font* font = run.find<Font>(kFontAttributeName);
    if (const std::string name = htmlFont(font ? *font : Font::userFont(12)); name != look.font)
        add(text, "font", name);
    const AttributeValue* superscript = run.find(kSuperscriptAttributeName);
    const AttributeValue* baseline = run.find(kBaselineOffsetAttributeName);
    if (superscript && integerValue(*superscript) != 0) {
        add(text, "vertical-align", integerValue(*superscript) > 0 ? "super" : "sub");
    } else if (baseline && doubleValue(*baseline) != 0) {
        add(text, "vertical-align", htmlLength(doubleValue(*baseline)));
    }
    const AttributeValue* underline = run.find(kUnderlineStyleAttributeName);
    const AttributeValue* strike = run.find(kStrikethroughStyleAttributeName);
    std::string lines = underline && integerValue(*underline) != 0 ? "underline" : "";
    if (strike && integerValue(*strike) != 0) lines += lines.empty() ? "line-through" : " line-through";
    if (!lines.empty()) add(text, "text-decoration", lines);
    if (const AttributeValue* kern = run.find(kKernAttributeName)) {
        if (doubleValue(*kern) == 0) {
            add(text, "font-kerning", "none");
        } else {
            add(text, "letter-spacing", htmlLength(doubleValue(*kern)));
        }
    }
    if (const std::string color = colorOf(run, kForegroundColorAttributeName); color != look.color)
        add(text, "color", color.empty() ? "#000000" : color);
    if (const std::string color = colorOf(run, kBackgroundColorAttributeName);
        color != look.background && !color.empty())
        add(text, "background-color", color);
    if (const std::string color = colorOf(run, kStrokeColorAttributeName); color != look.stroke && !color.empty())
        add(text, "-webkit-text-stroke", "0px " + color);
    return text;
}

std::string cellDeclarations(const TextTableBlock& cell) {
    std::string text;
    if (const BlockLength& width = cell.dimension(BlockDimension::width); width.value > 0)
        add(text, "width", width.isPercentage ? fmt::format("{:.1f}%", width.value) : htmlLength(width.value));
    addBox(text, cell);
    add(text, "padding", blockLengths(cell, BlockLayer::padding));
    return text;
}

std::string tableDeclarations(const TextTable& table) {
    std::string text;
    addBox(text, table);
    if (table.collapsesBorders) add(text, "border-collapse", "collapse");
    if (table.hidesEmptyCells) add(text, "empty-cells", "hide");
    if (table.fixedLayout) add(text, "table-layout", "fixed");
    return text;
}

} // namespace platform
