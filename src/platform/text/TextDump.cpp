// One walk over the runs writes their lines and numbers the shared objects as they come up; a second part lists those
// objects. Attributes have a fixed order (the table kWriters); names outside it follow in the order of their spelling.

#include "platform/text/TextDump.h"

#include <array>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>

#include "platform/files/FileWrapper.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextDumpValues.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {

namespace {

// Numbers objects in the order in which they are first asked for, from 1.
template<class T>
class Numbering {
  public:
    std::size_t operator()(const std::shared_ptr<T>& object) {
        const auto [entry, isNew] = numbers_.try_emplace(object.get(), objects_.size() + 1);
        if (isNew) objects_.push_back(object);
        return entry->second;
    }
    const std::vector<std::shared_ptr<T>>& objects() const { return objects_; }

  private:
    std::unordered_map<const T*, std::size_t> numbers_;
    std::vector<std::shared_ptr<T>> objects_;
};

class Dump {
  public:
    std::string text(const AttributedString& text);

  private:
    std::string run(const AttributeSet& set);
    std::string value(const AttributeValue& value);
    std::string paragraphStyle(const ParagraphStyle* style);
    std::string attachment(const TextAttachmentReference& attachment);
    std::string list(const std::shared_ptr<TextList>& list);
    std::string block(const TextBlock& block) const;
    std::string objects();

    Numbering<TextList> lists_;
    Numbering<TextBlock> blocks_;
    Numbering<TextTable> tables_;
    Numbering<TextAttachment> attachments_;
};

std::string Dump::list(const std::shared_ptr<TextList>& list) {
    if (!list) return "none";
    return fmt::format("L{}{}", lists_(list), list->markerFormat());
}

constexpr std::array<std::string_view, 5> kAlignments{"left", "right", "center", "justified", "natural"};
constexpr std::array<std::string_view, 6> kLineBreaks{"word", "char", "clip", "head", "tail", "middle"};
constexpr std::array<std::string_view, 4> kVerticalAlignments{"top", "middle", "bottom", "baseline"};

template<std::size_t N, class E>
std::string_view nameOf(const std::array<std::string_view, N>& names, E value) {
    const auto index = static_cast<std::size_t>(value);
    return index < N ? names[index] : "?";
}

std::string describe(const std::vector<TextTab>& tabs) {
    if (tabs.empty()) return "none";
    std::string out;
    for (const TextTab& tab : tabs) {
        if (!out.empty()) out += ',';
        out += number(tab.location);
        if (tab.decimal) {
            out += " decimal";
        } else if (tab.alignment != TextAlignment::left) {
            out += fmt::format(" {}", nameOf(kAlignments, tab.alignment));
        }
    }
    return out;
}

// One line for each property, in the order of the page.
std::string Dump::paragraphStyle(const ParagraphStyle* style) {
    if (!style) return {};
    const ParagraphStyle& base = *ParagraphStyle::defaultParagraphStyle();
    std::vector<std::string> parts;
    const auto addNumber = [&](std::string_view name, double value, double defaultValue) {
        if (value != defaultValue) parts.push_back(fmt::format("{} {}", name, value));
    };
    // What the HTML reader gives every paragraph, in one word.
    const bool isHTML = style->baseWritingDirection == WritingDirection::leftToRight && style->defaultTabInterval == 36;
    if (isHTML) parts.emplace_back("html");
    if (style->alignment != base.alignment) parts.emplace_back(nameOf(kAlignments, style->alignment));
    if (!isHTML && style->baseWritingDirection != base.baseWritingDirection)
        parts.emplace_back(style->baseWritingDirection == WritingDirection::leftToRight ? "ltr" : "rtl");
    addNumber("header", style->headerLevel, base.headerLevel);
    addNumber("first", style->firstLineHeadIndent, base.firstLineHeadIndent);
    addNumber("head", style->headIndent, base.headIndent);
    addNumber("tail", style->tailIndent, base.tailIndent);
    addNumber("before", style->paragraphSpacingBefore, base.paragraphSpacingBefore);
    addNumber("after", style->paragraphSpacing, base.paragraphSpacing);
    addNumber("spacing", style->lineSpacing, base.lineSpacing);
    addNumber("multiple", style->lineHeightMultiple, base.lineHeightMultiple);
    addNumber("min", style->minimumLineHeight, base.minimumLineHeight);
    addNumber("max", style->maximumLineHeight, base.maximumLineHeight);
    if (!isHTML) addNumber("interval", style->defaultTabInterval, base.defaultTabInterval);
    if (style->tabStops != (isHTML ? std::vector<TextTab>() : base.tabStops))
        parts.push_back("tabs " + describe(style->tabStops));
    if (style->lineBreakMode != base.lineBreakMode)
        parts.push_back(fmt::format("break {}", nameOf(kLineBreaks, style->lineBreakMode)));
    addNumber("hyphenation", double{style->hyphenationFactor}, double{base.hyphenationFactor});
    addNumber("tightening", double{style->tighteningFactorForTruncation}, double{base.tighteningFactorForTruncation});
    if (style->allowsDefaultTighteningForTruncation) parts.emplace_back("tightens");
    if (style->usesDefaultHyphenation) parts.emplace_back("hyphenates");
    addNumber("strategy", static_cast<double>(style->lineBreakStrategy), 0);
    if (!style->textLists.empty()) {
        std::string names;
        for (const auto& entry : style->textLists) names += (names.empty() ? "" : ",") + list(entry);
        parts.push_back("lists " + names);
    }
    if (!style->textBlocks.empty()) {
        std::string names;
        for (const auto& entry : style->textBlocks)
            names += fmt::format("{}B{}", names.empty() ? "" : ",", blocks_(entry));
        parts.push_back("blocks " + names);
    }
    return fmt::format("para [{}]", fmt::join(parts, "; "));
}

std::string Dump::attachment(const TextAttachmentReference& attachment) {
    if (!attachment) return "attachment none";
    std::string out = fmt::format("attachment A{} {}", attachments_(attachment), attachment->className());
    if (const auto& wrapper = attachment->fileWrapper()) {
        out += " " + quoted(wrapper->preferredFilename());
        out += wrapper->isDirectory() ? fmt::format(" directory of {}", wrapper->fileWrappers().size())
                                      : fmt::format(" {} bytes", wrapper->regularFileContents().size());
    } else if (attachment->contents()) {
        out += fmt::format(" contents of {} bytes", attachment->contents()->size());
    } else {
        out += " without file";
    }
    if (attachment->ownFileType()) out += " " + *attachment->ownFileType();
    if (const std::string more = attachment->dumpDescription(); !more.empty()) out += " (" + more + ")";
    return out;
}

std::string Dump::value(const AttributeValue& value) {
    struct Describe {
        Dump& dump;
        std::string operator()(std::int64_t integer) const { return std::to_string(integer); }
        std::string operator()(double real) const { return number(real); }
        std::string operator()(const std::u16string& text) const { return quoted(text); }
        std::string operator()(const URL& url) const { return "<" + url.absoluteString() + ">"; }
        std::string operator()(const Font& font) const {
            return fmt::format("{} {}", font.fontName(), font.pointSize());
        }
        std::string operator()(const Color& color) const { return describe(color); }
        std::string operator()(const ParagraphStyleReference& style) const { return dump.paragraphStyle(style.get()); }
        std::string operator()(const TextAttachmentReference& object) const { return dump.attachment(object); }
        std::string operator()(const Shadow& shadow) const { return describe(shadow); }
        std::string operator()(const std::vector<std::int64_t>& numbers) const {
            return fmt::format("[{}]", fmt::join(numbers, ","));
        }
    };
    return std::visit(Describe{*this}, value);
}

struct Label {
    AttributeName name;
    std::string_view label;
};

// Fixed order. The paragraph style comes last of all; kern and stroke have their own word.
const std::vector<Label>& labels() {
    static const auto& table = *new std::vector<Label>{
        {kFontAttributeName, "font"},
        {kForegroundColorAttributeName, "color"},
        {kBackgroundColorAttributeName, "background"},
        {kLinkAttributeName, "link"},
        {kUnderlineStyleAttributeName, "underline"},
        {kUnderlineColorAttributeName, "underline-color"},
        {kStrikethroughStyleAttributeName, "strike"},
        {kStrikethroughColorAttributeName, "strike-color"},
        {kSuperscriptAttributeName, "super"},
        {kBaselineOffsetAttributeName, "baseline"},
        {kKernAttributeName, "kern"},
        {kStrokeWidthAttributeName, "stroke-width"},
        {kStrokeColorAttributeName, "stroke-color"},
        {kLigatureAttributeName, "ligature"},
        {kShadowAttributeName, "shadow"},
        {kTextEffectAttributeName, "effect"},
        {kObliquenessAttributeName, "oblique"},
        {kExpansionAttributeName, "expansion"},
        {kWritingDirectionAttributeName, "direction"},
        {kVerticalGlyphFormAttributeName, "vertical"},
        {kTextHighlightStyleAttributeName, "highlight"},
        {kTextHighlightColorSchemeAttributeName, "highlight-scheme"},
        {kCursorAttributeName, "cursor"},
        {kToolTipAttributeName, "tooltip"},
        {kAttachmentAttributeName, ""},
        {kParagraphStyleAttributeName, ""},
    };
    return table;
}

std::string_view labelOf(AttributeName name) {
    for (const Label& row : labels())
        if (row.name == name) return row.label;
    return name.string();
}

bool hasLabel(AttributeName name) {
    for (const Label& row : labels())
        if (row.name == name) return true;
    return false;
}

// Whether the run has what the HTML reader gives every run: kern 0, stroke width 0, and its own color (black when it
// shows none) as stroke color.
bool hasHTMLDefaults(const AttributeSet& set) {
    const AttributeValue* kern = set.find(kKernAttributeName);
    const AttributeValue* width = set.find(kStrokeWidthAttributeName);
    const Color* stroke = set.find<Color>(kStrokeColorAttributeName);
    if (!kern || !width || !stroke || doubleValue(*kern) != 0 || doubleValue(*width) != 0) return false;
    const Color* color = set.find<Color>(kForegroundColorAttributeName);
    return color ? *stroke == *color : stroke->rgba() == Color::RGBA{0, 0, 0, 1};
}

std::string Dump::run(const AttributeSet& set) {
    std::vector<std::string> parts;
    const bool htmlDefaults = hasHTMLDefaults(set);
    const auto add = [&](AttributeName name, const AttributeValue& attribute) {
        const std::string_view label = labelOf(name);
        parts.push_back(label.empty() ? value(attribute) : fmt::format("{} {}", label, value(attribute)));
    };
    for (const Label& row : labels()) {
        const AttributeValue* attribute = set.find(row.name);
        if (!attribute || row.name == kParagraphStyleAttributeName) continue;
        if (htmlDefaults && row.name == kKernAttributeName) {
            parts.emplace_back("html");
        } else if (!htmlDefaults || (row.name != kStrokeWidthAttributeName && row.name != kStrokeColorAttributeName)) {
            add(row.name, *attribute);
        }
    }
    for (const auto& [name, attribute] : set.entries())
        if (!hasLabel(name)) add(name, attribute);
    if (const AttributeValue* style = set.find(kParagraphStyleAttributeName)) add(kParagraphStyleAttributeName, *style);
    return fmt::format("{}", fmt::join(parts, "; "));
}

std::string describe(const BlockLength& length) {
    return number(length.value) + (length.isPercentage ? "%" : "");
}

// One value when all four edges agree, else left, top, right, bottom.
std::string describe(const std::array<BlockLength, 4>& edges) {
    if (edges[0] == edges[1] && edges[1] == edges[2] && edges[2] == edges[3]) return describe(edges[0]);
    return fmt::format("{},{},{},{}", describe(edges[0]), describe(edges[1]), describe(edges[2]), describe(edges[3]));
}

std::string Dump::block(const TextBlock& block) const {
    static constexpr std::array<std::string_view, 6> kDimensions{"width",  "min-width",  "max-width",
                                                                 "height", "min-height", "max-height"};
    static constexpr std::array<std::string_view, 3> kLayers{"padding", "border", "margin"};
    std::string out;
    for (std::size_t i = 0; i < kDimensions.size(); ++i)
        if (block.dimensions[i].value != 0)
            out += fmt::format("; {} {}", kDimensions[i], describe(block.dimensions[i]));
    for (std::size_t i = 0; i < kLayers.size(); ++i)
        if (block.widths[i] != std::array<BlockLength, 4>{})
            out += fmt::format("; {} {}", kLayers[i], describe(block.widths[i]));
    if (block.verticalAlignment != BlockVerticalAlignment::top)
        out += fmt::format("; {}", nameOf(kVerticalAlignments, block.verticalAlignment));
    if (block.backgroundColor) out += "; background " + describe(*block.backgroundColor);
    const auto& colors = block.borderColors;
    const auto edgeColor = [&](std::size_t i) { return colors[i] ? describe(*colors[i]) : std::string("none"); };
    if (colors[0] == colors[1] && colors[1] == colors[2] && colors[2] == colors[3]) {
        if (colors[0]) out += "; border-color " + edgeColor(0);
    } else {
        out += fmt::format("; border-color {},{},{},{}", edgeColor(0), edgeColor(1), edgeColor(2), edgeColor(3));
    }
    return out;
}

// Start and span of a cell: "1" or "1+2".
std::string span(std::int64_t start, std::int64_t count) {
    return count == 1 ? std::to_string(start) : fmt::format("{}+{}", start, count);
}

std::string Dump::objects() {
    std::string out;
    for (const auto& list : lists_.objects()) {
        out += fmt::format("L{} {}", lists_(list), list->markerFormat());
        if (list->startingItemNumber() != 1) out += fmt::format("; start {}", list->startingItemNumber());
        if (list->listOptions() != 0) out += fmt::format("; options {}", list->listOptions());
        out += '\n';
    }
    std::string blockLines;
    for (const auto& entry : blocks_.objects()) {
        blockLines += fmt::format("B{}", blocks_(entry));
        if (const auto* cell = dynamic_cast<const TextTableBlock*>(entry.get())) {
            blockLines += cell->table ? fmt::format(" T{}", tables_(cell->table)) : std::string(" no table");
            blockLines += fmt::format(" row {} column {}", span(cell->startingRow, cell->rowSpan),
                                      span(cell->startingColumn, cell->columnSpan));
        }
        blockLines += (entry ? block(*entry) : std::string("; none")) + '\n';
    }
    for (const auto& table : tables_.objects()) {
        out += fmt::format("T{} {} columns", tables_(table), table->numberOfColumns);
        if (table->collapsesBorders) out += "; collapsed";
        if (table->hidesEmptyCells) out += "; hides empty cells";
        if (table->fixedLayout) out += "; fixed layout";
        out += block(*table) + '\n';
    }
    return out + blockLines;
}

std::string Dump::text(const AttributedString& text) {
    std::string out;
    text.enumerateAttributes({0, text.length()}, [&](const AttributeSet& set, Range range) {
        const std::string attributes = run(set);
        out += quoted(std::u16string_view(text.string()).substr(range.location, range.length));
        if (!attributes.empty()) out += "  " + attributes;
        out += '\n';
    });
    const std::string shared = objects();
    if (!shared.empty()) out += '\n' + shared;
    return out;
}

} // namespace

std::string textDump(const AttributedString& text) {
    return Dump().text(text);
}

} // namespace platform
