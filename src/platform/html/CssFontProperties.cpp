// Fonts: the shorthand and its longhands.
#include "platform/html/CssProperties.h"

#include <memory>
#include <string>

namespace platform {

namespace {

using P = CssProperty;

std::optional<CssValue> fontWeightOf(const CssToken& token) {
    constexpr double kNormal = 400, kBold = 700;
    CssValue value = CssValue::ofKind(CssValueKind::number);
    if (token.kind == CssTokenKind::number && token.number >= 1 && token.number <= 1000) {
        value.number = token.number;
    } else if (token.isName("normal")) {
        value.number = kNormal;
    } else if (token.isName("bold")) {
        value.number = kBold;
    } else if (token.isName("bolder") || token.isName("lighter")) {
        value = CssValue::ofKeyword(token.text == "bolder" ? 1 : 0);
    } else {
        return std::nullopt;
    }
    return value;
}

std::optional<CssValue> fontSizeOf(const CssToken& token) {
    if (auto keyword = cssKeyword(P::fontSize, token)) return keyword;
    return cssLength(token, true, false);
}

} // namespace

bool readFontWeight(CssLonghands& to, P property, CssItems& items) {
    auto value = fontWeightOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readFontSize(CssLonghands& to, P property, CssItems& items) {
    auto value = fontSizeOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readFontStyle(CssLonghands& to, P property, CssItems& items) {
    auto value = cssKeyword(property, items.peek());
    if (!value) return false;
    items.advance();
    if (!items.atEnd() && items.peek().kind == CssTokenKind::dimension) items.advance(); // the angle of oblique
    to.add(property, std::move(*value));
    return items.atEnd();
}

// Names parted by commas: quoted, or of several words.
bool readFontFamily(CssLonghands& to, P property, CssItems& items) {
    auto families = std::make_shared<CssFamilies>();
    for (bool expectsName = true; expectsName || !items.atEnd();) {
        if (!expectsName) {
            if (!items.peek().is(',')) return false;
            items.advance();
        }
        expectsName = false;
        if (items.atEnd()) return false;
        std::string name;
        if (items.peek().kind == CssTokenKind::string) {
            name = items.peek().text;
            items.advance();
        } else {
            for (; !items.atEnd() && items.peek().kind == CssTokenKind::identifier; items.advance())
                name.append(name.empty() ? "" : " ").append(items.peek().spelling());
            if (name.empty()) return false;
        }
        families->push_back(std::move(name));
    }
    CssValue value = CssValue::ofKind(CssValueKind::families);
    value.families = std::move(families);
    to.add(property, std::move(value));
    return true;
}

// Style, variant, weight and stretch in any order; size[/height]; family.
bool readFont(CssLonghands& to, P, CssItems& items) {
    CssDeclarations values;
    CssLonghands parts{values, to.important};
    CssValue style = CssValue::ofKeyword(0);
    std::optional<CssValue> weight;
    for (; !items.atEnd(); items.advance()) {
        const CssToken& token = items.peek();
        if (token.isName("normal") || token.isName("small-caps")) continue;
        if (token.kind == CssTokenKind::identifier && token.text.ends_with("condensed")) continue;
        if (token.kind == CssTokenKind::identifier && token.text.ends_with("expanded")) continue;
        if (const auto found = cssKeyword(P::fontStyle, token)) {
            style = *found;
        } else if (const auto known = fontWeightOf(token); known && !weight) {
            weight = known;
        } else {
            break;
        }
    }
    if (items.atEnd()) return false;
    auto size = fontSizeOf(items.peek());
    if (!size) return false;
    items.advance();
    if (!items.atEnd() && items.peek().is('/')) {
        items.advance();
        if (items.atEnd()) return false;
        items.advance(); // the line height leaves no trace
    }
    if (items.atEnd() || !readFontFamily(parts, P::fontFamily, items)) return false;
    CssValue normal = CssValue::ofKind(CssValueKind::number);
    normal.number = 400;
    to.add(P::fontStyle, style);
    to.add(P::fontWeight, weight.value_or(normal));
    to.add(P::fontSize, std::move(*size));
    to.add(P::fontVariantLigatures, CssValue::ofKeyword(0));
    to.out.insert(to.out.end(), values.begin(), values.end());
    return true;
}

bool readFontVariant(CssLonghands& to, P property, CssItems& items) {
    CssValue value = CssValue::ofKeyword(0);
    for (; !items.atEnd(); items.advance()) {
        if (items.peek().kind != CssTokenKind::identifier) return false;
        if (const auto known = cssKeyword(property, items.peek())) value = *known;
    }
    to.add(property, std::move(value));
    return true;
}

} // namespace platform
