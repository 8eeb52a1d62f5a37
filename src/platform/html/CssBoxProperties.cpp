// Margins, padding, borders and widths.
#include "platform/html/CssProperties.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace platform {

namespace {

using P = CssProperty;

std::optional<CssValue> borderStyleOf(const CssToken& token) {
    return cssKeyword(P::borderTopStyle, token); // the four edges share their keywords
}

std::optional<CssValue> borderWidthOf(const CssToken& token) {
    if (token.isName("thin")) return CssValue::ofLength(1);
    if (token.isName("medium")) return CssValue::ofLength(3);
    if (token.isName("thick")) return CssValue::ofLength(5);
    return cssLength(token, false, false);
}

// One to four values for top, right, bottom, left, each by the rule of the first edge's property.
template<CssPropertyReader rule>
bool readEdges(CssLonghands& to, P first, CssItems& items) {
    CssDeclarations values;
    CssLonghands single{values, to.important};
    while (!items.atEnd() && values.size() < 4) {
        const std::size_t before = values.size();
        rule(single, first, items); // its "nothing follows" does not matter here
        if (values.size() != before + 1) return false;
    }
    if (!items.atEnd() || values.empty()) return false;
    constexpr std::array<std::array<std::size_t, 4>, 4> kEdges{
        {{0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}}};
    for (std::size_t edge = 0; edge < 4; ++edge)
        to.add(static_cast<P>(static_cast<std::size_t>(first) + edge), values[kEdges[values.size() - 1][edge]].value);
    return true;
}

// readColor wants to be the last; for edges it must not.
bool readEdgeColor(CssLonghands& to, P property, CssItems& items) {
    auto color = items.color();
    if (color) to.add(property, std::move(*color));
    return color.has_value();
}

// Width, style and color in any order, for the edges [first, last] counted from the top.
bool readBorder(CssLonghands& to, std::size_t first, std::size_t last, CssItems& items) {
    std::optional<CssValue> width, style, color;
    while (!items.atEnd()) {
        if (auto found = style ? std::nullopt : borderStyleOf(items.peek())) {
            style = std::move(found);
            items.advance();
        } else if (auto length = width ? std::nullopt : borderWidthOf(items.peek())) {
            width = std::move(length);
            items.advance();
        } else if (auto rgba = color ? std::nullopt : items.color()) {
            color = std::move(rgba);
        } else {
            return false;
        }
    }
    for (std::size_t edge = first; edge <= last; ++edge) {
        const auto of = [edge](P top) { return static_cast<P>(static_cast<std::size_t>(top) + edge); };
        to.add(of(P::borderTopStyle), style.value_or(CssValue::ofKeyword(CssBorderStyle::none)));
        to.add(of(P::borderTopWidth), width.value_or(CssValue::ofLength(3)));
        to.add(of(P::borderTopColor), color.value_or(CssValue::ofKind(CssValueKind::currentColor)));
    }
    return true;
}

} // namespace

bool readMargin(CssLonghands& to, P property, CssItems& items) {
    auto value =
        items.peek().isName("auto") ? CssValue::ofKind(CssValueKind::automatic) : cssLength(items.peek(), true, true);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readMargins(CssLonghands& to, P property, CssItems& items) {
    return readEdges<readMargin>(to, property, items);
}

bool readPadding(CssLonghands& to, P property, CssItems& items) {
    auto value = cssLength(items.peek(), true, false);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readPaddings(CssLonghands& to, P property, CssItems& items) {
    return readEdges<readPadding>(to, property, items);
}

bool readWidth(CssLonghands& to, P property, CssItems& items) {
    static constexpr std::array<std::string_view, 6> kNoLength{"auto",        "none",        "min-content",
                                                               "max-content", "fit-content", "-webkit-fill-available"};
    const bool isAutomatic = items.peek().kind == CssTokenKind::identifier &&
                             std::ranges::find(kNoLength, items.peek().text) != kNoLength.end();
    auto value = isAutomatic ? CssValue::ofKind(CssValueKind::automatic) : cssLength(items.peek(), true, false);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readBorderStyle(CssLonghands& to, P property, CssItems& items) {
    auto value = borderStyleOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readBorderStyles(CssLonghands& to, P property, CssItems& items) {
    return readEdges<readBorderStyle>(to, property, items);
}

bool readBorderWidth(CssLonghands& to, P property, CssItems& items) {
    auto value = borderWidthOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readBorderWidths(CssLonghands& to, P property, CssItems& items) {
    return readEdges<readBorderWidth>(to, property, items);
}

bool readBorderColors(CssLonghands& to, P property, CssItems& items) {
    return readEdges<readEdgeColor>(to, property, items);
}

bool readBorderOfAll(CssLonghands& to, P, CssItems& items) {
    return readBorder(to, 0, 3, items);
}

bool readBorderOfEdge(CssLonghands& to, P topStyleOfEdge, CssItems& items) {
    const auto edge = static_cast<std::size_t>(topStyleOfEdge) - static_cast<std::size_t>(P::borderTopStyle);
    return readBorder(to, edge, edge, items);
}

} // namespace platform
