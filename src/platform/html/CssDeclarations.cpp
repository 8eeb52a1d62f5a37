// A table says for each property which rule reads its value; a rule adds longhands to the list or, for a value that is
// not valid, adds none.
#include "platform/html/CssDeclarations.h"

#include <array>
#include <cstddef>
#include <memory_resource>
#include <unordered_map>
#include <utility>

#include "platform/html/CssProperties.h"

namespace platform {

namespace {

using P = CssProperty;

struct PropertyRow {
    std::string_view name;
    P property; // of an edge's shorthand: that edge's style; of all edges: the top
    CssPropertyReader rule;
};

constexpr auto kProperties = std::to_array<PropertyRow>({
    {"font", P::fontSize, readFont},
    {"font-family", P::fontFamily, readFontFamily},
    {"font-size", P::fontSize, readFontSize},
    {"font-style", P::fontStyle, readFontStyle},
    {"font-weight", P::fontWeight, readFontWeight},
    {"font-variant", P::fontVariantLigatures, readFontVariant},
    {"font-variant-ligatures", P::fontVariantLigatures, readFontVariant},
    {"color", P::color, readColor},
    {"direction", P::direction, readKeyword},
    {"unicode-bidi", P::unicodeBidi, readKeyword},
    {"white-space", P::whiteSpace, readKeyword},
    {"-webkit-nbsp-mode", P::nbspMode, readKeyword},
    {"text-align", P::textAlign, readKeyword},
    {"text-indent", P::textIndent, readIndent},
    {"text-transform", P::textTransform, readKeyword},
    {"text-decoration", P::textDecorationLine, readTextDecoration},
    {"text-decoration-line", P::textDecorationLine, readTextDecoration},
    {"-webkit-text-decoration", P::textDecorationLine, readTextDecoration},
    {"-webkit-text-decoration-line", P::textDecorationLine, readTextDecoration},
    {"text-shadow", P::textShadow, readTextShadow},
    {"vertical-align", P::verticalAlign, readVerticalAlign},
    {"list-style", P::listStyleType, readListStyle},
    {"list-style-type", P::listStyleType, readListStyleType},
    {"display", P::display, readKeyword},
    {"float", P::cssFloat, readKeyword},
    {"position", P::position, readKeyword},
    {"background", P::backgroundColor, readBackground},
    {"background-color", P::backgroundColor, readColor},
    {"margin", P::marginTop, readMargins},
    {"margin-top", P::marginTop, readMargin},
    {"margin-right", P::marginRight, readMargin},
    {"margin-bottom", P::marginBottom, readMargin},
    {"margin-left", P::marginLeft, readMargin},
    {"margin-block-start", P::marginTop, readMargin},
    {"margin-block-end", P::marginBottom, readMargin},
    {"margin-inline-start", P::marginLeft, readMargin},
    {"margin-inline-end", P::marginRight, readMargin},
    {"padding", P::paddingTop, readPaddings},
    {"padding-top", P::paddingTop, readPadding},
    {"padding-right", P::paddingRight, readPadding},
    {"padding-bottom", P::paddingBottom, readPadding},
    {"padding-left", P::paddingLeft, readPadding},
    {"border", P::borderTopStyle, readBorderOfAll},
    {"border-top", P::borderTopStyle, readBorderOfEdge},
    {"border-right", P::borderRightStyle, readBorderOfEdge},
    {"border-bottom", P::borderBottomStyle, readBorderOfEdge},
    {"border-left", P::borderLeftStyle, readBorderOfEdge},
    {"border-style", P::borderTopStyle, readBorderStyles},
    {"border-width", P::borderTopWidth, readBorderWidths},
    {"border-color", P::borderTopColor, readBorderColors},
    {"border-top-style", P::borderTopStyle, readBorderStyle},
    {"border-right-style", P::borderRightStyle, readBorderStyle},
    {"border-bottom-style", P::borderBottomStyle, readBorderStyle},
    {"border-left-style", P::borderLeftStyle, readBorderStyle},
    {"border-top-width", P::borderTopWidth, readBorderWidth},
    {"border-right-width", P::borderRightWidth, readBorderWidth},
    {"border-bottom-width", P::borderBottomWidth, readBorderWidth},
    {"border-left-width", P::borderLeftWidth, readBorderWidth},
    {"border-top-color", P::borderTopColor, readColor},
    {"border-right-color", P::borderRightColor, readColor},
    {"border-bottom-color", P::borderBottomColor, readColor},
    {"border-left-color", P::borderLeftColor, readColor},
    {"width", P::width, readWidth},
    {"min-width", P::minWidth, readWidth},
    {"max-width", P::maxWidth, readWidth},
    {"border-collapse", P::borderCollapse, readKeyword},
    {"empty-cells", P::emptyCells, readKeyword},
    {"table-layout", P::tableLayout, readKeyword},
    {"hyphens", P::hyphens, readKeyword},
    {"-webkit-hyphens", P::hyphens, readKeyword},
});

const PropertyRow* propertyNamed(std::string_view name) {
    static const auto& index = *[] {
        auto* made = new std::unordered_map<std::string_view, const PropertyRow*>;
        for (const PropertyRow& entry : kProperties) made->emplace(entry.name, &entry);
        return made;
    }();
    const auto found = index.find(name);
    return found == index.end() ? nullptr : found->second;
}

// The longhands that a row sets, for the words that every property takes.
void addToAll(CssLonghands& to, const PropertyRow& entry, CssValueKind kind) {
    const auto first = static_cast<std::size_t>(entry.property);
    const bool isEdges = entry.name == "margin" || entry.name == "padding" || entry.name == "border-style" ||
                         entry.name == "border-width" || entry.name == "border-color";
    if (entry.name == "font") {
        for (const P part : {P::fontFamily, P::fontSize, P::fontStyle, P::fontWeight})
            to.add(part, CssValue::ofKind(kind));
    } else if (entry.name == "border") {
        for (auto i = static_cast<std::size_t>(P::borderTopStyle); i <= static_cast<std::size_t>(P::borderLeftColor);
             ++i)
            to.add(static_cast<P>(i), CssValue::ofKind(kind));
    } else {
        for (std::size_t edge = 0; edge < (isEdges ? 4U : 1U); ++edge)
            to.add(static_cast<P>(first + edge), CssValue::ofKind(kind));
    }
}

constexpr std::size_t kUsualTokens = 16; // of a declaration; few have more

void trim(std::pmr::vector<CssToken>& tokens) {
    while (!tokens.empty() && tokens.back().kind == CssTokenKind::whitespace) tokens.pop_back();
}

bool takeImportant(std::pmr::vector<CssToken>& tokens) {
    trim(tokens);
    if (tokens.empty() || !tokens.back().isName("important")) return false;
    std::size_t mark = tokens.size() - 1;
    while (mark > 0 && tokens[mark - 1].kind == CssTokenKind::whitespace) --mark;
    if (mark == 0 || !tokens[mark - 1].is('!')) return false;
    tokens.resize(mark - 1);
    trim(tokens);
    return true;
}

} // namespace

void appendCssDeclaration(CssDeclarations& declarations, std::string_view property, std::span<const CssToken> value,
                          bool important) {
    const PropertyRow* entry = propertyNamed(property);
    CssItems items(value);
    if (!entry || items.atEnd()) return;
    CssLonghands to{declarations, important};
    if (value.size() == 1 || (value.size() == 2 && value[0].kind == CssTokenKind::whitespace)) {
        const CssToken& only = items.peek();
        if (only.isName("inherit")) return addToAll(to, *entry, CssValueKind::inherit);
        if (only.isName("initial") || only.isName("revert")) return addToAll(to, *entry, CssValueKind::initial);
        if (only.isName("unset") || only.isName("revert-layer")) return addToAll(to, *entry, CssValueKind::unset);
    }
    const std::size_t before = declarations.size();
    if (!entry->rule(to, entry->property, items)) declarations.resize(before, {P::count, false, {}});
}

CssDeclarations cssDeclarations(std::string_view text) {
    CssDeclarations declarations;
    CssTokenizer tokenizer(text);
    std::array<std::byte, kUsualTokens * sizeof(CssToken)> room;
    std::pmr::monotonic_buffer_resource memory(room.data(), room.size());
    std::pmr::vector<CssToken> value(&memory);
    value.reserve(kUsualTokens);
    CssToken token = tokenizer.next();
    while (token.kind != CssTokenKind::end) {
        while (token.kind == CssTokenKind::whitespace || token.is(';')) token = tokenizer.next();
        const std::string_view name = token.kind == CssTokenKind::identifier ? token.text : std::string_view();
        token = tokenizer.next();
        while (!name.empty() && token.kind == CssTokenKind::whitespace) token = tokenizer.next();
        const bool isDeclaration = !name.empty() && token.is(':');
        if (isDeclaration) token = tokenizer.next();
        value.clear();
        bool isValid = isDeclaration;
        int depth = 0;
        for (; token.kind != CssTokenKind::end && (depth > 0 || !token.is(';')); token = tokenizer.next()) {
            if (token.kind == CssTokenKind::function || token.is('(') || token.is('[') || token.is('{')) ++depth;
            if ((token.is(')') || token.is(']') || token.is('}')) && depth > 0) --depth;
            if (token.kind == CssTokenKind::badString) isValid = false;
            if (isDeclaration) value.push_back(token);
        }
        if (!isValid) continue;
        const bool important = takeImportant(value);
        appendCssDeclaration(declarations, name, value, important);
    }
    return declarations;
}

} // namespace platform
