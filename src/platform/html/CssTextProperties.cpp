// Text, lists and backgrounds.
#include "platform/html/CssProperties.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace platform {

namespace {

using P = CssProperty;

CssValue listStyleOf(const CssToken& token) {
    return cssKeyword(P::listStyleType, token).value_or(CssValue::ofKeyword(CssListStyle::other));
}

} // namespace

bool readIndent(CssLonghands& to, P property, CssItems& items) {
    auto value = cssLength(items.peek(), true, true);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

// "underline dotted red": the lines count, style and color only have to be valid.
bool readTextDecoration(CssLonghands& to, P property, CssItems& items) {
    static constexpr std::array<std::string_view, 8> kOther{"solid", "double", "dotted",    "dashed",
                                                            "wavy",  "auto",   "from-font", "blink"};
    std::uint8_t lines = 0;
    bool isNone = false;
    while (!items.atEnd()) {
        const CssToken& token = items.peek();
        std::uint8_t line = 0;
        if (token.isName("underline")) line = kCssUnderline;
        if (token.isName("line-through")) line = kCssLineThrough;
        if (token.isName("overline")) line = kCssOverline;
        if ((lines & line) != 0) return false;
        lines |= line;
        if (token.isName("none")) {
            isNone = true;
        } else if (line == 0 && std::ranges::find(kOther, token.text) == kOther.end() &&
                   !cssLength(token, true, true)) {
            if (!items.color()) return false;
            continue;
        }
        items.advance();
    }
    if (isNone && lines != 0) return false;
    to.add(property, CssValue::ofKeyword(lines));
    return true;
}

bool readVerticalAlign(CssLonghands& to, P property, CssItems& items) {
    auto value = cssKeyword(property, items.peek());
    if (!value) value = cssLength(items.peek(), true, true);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

// Offsets, blur, spread and a color; only the first shadow counts.
bool readTextShadow(CssLonghands& to, P property, CssItems& items) {
    if (items.peek().isName("none")) {
        items.advance();
        to.add(property, CssValue::ofKind(CssValueKind::shadow));
        return items.atEnd();
    }
    auto shadow = std::make_shared<CssShadow>();
    std::vector<double> lengths;
    while (!items.atEnd() && !items.peek().is(',')) {
        if (const auto length = cssLength(items.peek(), false, true)) {
            constexpr double kEm = 12; // near enough for a shadow
            lengths.push_back(length->number * (length->unit == CssUnit::px ? 1 : kEm));
            items.advance();
        } else if (const auto color = items.color()) {
            shadow->usesCurrentColor = color->kind == CssValueKind::currentColor;
            shadow->color = color->color;
        } else {
            return false;
        }
    }
    if (lengths.size() < 2 || lengths.size() > 3) return false;
    shadow->x = lengths[0];
    shadow->y = lengths[1];
    shadow->blur = lengths.size() > 2 ? lengths[2] : 0;
    CssValue value = CssValue::ofKind(CssValueKind::shadow);
    value.shadow = std::move(shadow);
    to.add(property, std::move(value));
    return true;
}

bool readListStyleType(CssLonghands& to, P property, CssItems& items) {
    if (items.peek().kind != CssTokenKind::identifier && items.peek().kind != CssTokenKind::string) return false;
    to.add(property, listStyleOf(items.peek()));
    items.advance();
    return items.atEnd();
}

bool readListStyle(CssLonghands& to, P property, CssItems& items) {
    CssValue type = CssValue::ofKeyword(CssListStyle::disc);
    while (!items.atEnd()) {
        const CssToken& token = items.peek();
        if (token.kind == CssTokenKind::function) {
            items.skipFunction();
            continue;
        }
        if (token.kind == CssTokenKind::identifier || token.kind == CssTokenKind::string) {
            if (token.text != "inside" && token.text != "outside") type = listStyleOf(token);
        } else if (token.kind != CssTokenKind::url) {
            return false;
        }
        items.advance();
    }
    to.add(property, std::move(type));
    return true;
}

// Only the color counts; the rest has to look like a background.
bool readBackground(CssLonghands& to, P property, CssItems& items) {
    static constexpr std::array<std::string_view, 22> kOther{
        "none",    "repeat", "repeat-x",   "repeat-y",    "no-repeat",   "space",  "round",  "scroll",
        "fixed",   "local",  "left",       "right",       "top",         "bottom", "center", "cover",
        "contain", "auto",   "border-box", "padding-box", "content-box", "text"};
    CssValue color = CssValue::ofColor({0, 0, 0, 0});
    while (!items.atEnd()) {
        const CssToken& token = items.peek();
        if (token.kind == CssTokenKind::url || token.is(',') || token.is('/') || cssLength(token, true, true) ||
            (token.kind == CssTokenKind::identifier && std::ranges::find(kOther, token.text) != kOther.end())) {
            items.advance();
        } else if (auto found = items.color()) {
            color = std::move(*found);
        } else if (token.kind == CssTokenKind::function &&
                   (token.text == "url" || token.text.find("gradient") != std::string::npos ||
                    token.text.ends_with("image-set"))) {
            items.skipFunction();
        } else {
            return false;
        }
    }
    to.add(property, std::move(color));
    return true;
}

} // namespace platform
