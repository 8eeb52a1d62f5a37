// What all rules share: the keywords of all properties as one table, lengths, colors.
#include "platform/html/CssProperties.h"

#include <array>
#include <string_view>

namespace platform {

namespace {

using P = CssProperty;

struct KeywordRow {
    P property;
    std::string_view name;
    std::uint8_t value;
};

template<class E>
constexpr KeywordRow row(P property, std::string_view name, E value) {
    return {property, name, static_cast<std::uint8_t>(value)};
}

constexpr auto kKeywords = std::to_array<KeywordRow>({
    row(P::display, "none", CssDisplay::none),
    row(P::display, "contents", CssDisplay::contents),
    row(P::display, "inline", CssDisplay::inline_),
    row(P::display, "block", CssDisplay::block),
    row(P::display, "list-item", CssDisplay::listItem),
    row(P::display, "inline-block", CssDisplay::inlineBlock),
    row(P::display, "flow-root", CssDisplay::flowRoot),
    row(P::display, "flex", CssDisplay::flex),
    row(P::display, "inline-flex", CssDisplay::inlineFlex),
    row(P::display, "grid", CssDisplay::grid),
    row(P::display, "inline-grid", CssDisplay::inlineGrid),
    row(P::display, "ruby", CssDisplay::ruby),
    row(P::display, "ruby-text", CssDisplay::rubyText),
    row(P::display, "-webkit-box", CssDisplay::box),
    row(P::display, "-webkit-inline-box", CssDisplay::inlineBox),
    row(P::display, "-webkit-flex", CssDisplay::flex),
    row(P::display, "table", CssDisplay::table),
    row(P::display, "inline-table", CssDisplay::inlineTable),
    row(P::display, "table-row-group", CssDisplay::tableRowGroup),
    row(P::display, "table-header-group", CssDisplay::tableHeaderGroup),
    row(P::display, "table-footer-group", CssDisplay::tableFooterGroup),
    row(P::display, "table-row", CssDisplay::tableRow),
    row(P::display, "table-cell", CssDisplay::tableCell),
    row(P::display, "table-caption", CssDisplay::tableCaption),
    row(P::display, "table-column", CssDisplay::tableColumn),
    row(P::display, "table-column-group", CssDisplay::tableColumnGroup),
    row(P::cssFloat, "none", CssFloat::none),
    row(P::cssFloat, "left", CssFloat::left),
    row(P::cssFloat, "right", CssFloat::right),
    row(P::cssFloat, "inline-start", CssFloat::left),
    row(P::cssFloat, "inline-end", CssFloat::right),
    row(P::position, "static", CssPosition::inFlow),
    row(P::position, "relative", CssPosition::inFlow),
    row(P::position, "sticky", CssPosition::inFlow),
    row(P::position, "-webkit-sticky", CssPosition::inFlow),
    row(P::position, "absolute", CssPosition::outOfFlow),
    row(P::position, "fixed", CssPosition::outOfFlow),
    row(P::whiteSpace, "normal", CssWhiteSpace::normal),
    row(P::whiteSpace, "nowrap", CssWhiteSpace::nowrap),
    row(P::whiteSpace, "pre", CssWhiteSpace::pre),
    row(P::whiteSpace, "pre-wrap", CssWhiteSpace::preWrap),
    row(P::whiteSpace, "pre-line", CssWhiteSpace::preLine),
    row(P::whiteSpace, "break-spaces", CssWhiteSpace::breakSpaces),
    row(P::nbspMode, "normal", 0),
    row(P::nbspMode, "space", 1),
    row(P::textAlign, "start", CssTextAlign::start),
    row(P::textAlign, "end", CssTextAlign::end),
    row(P::textAlign, "left", CssTextAlign::left),
    row(P::textAlign, "right", CssTextAlign::right),
    row(P::textAlign, "center", CssTextAlign::center),
    row(P::textAlign, "justify", CssTextAlign::justify),
    row(P::textAlign, "match-parent", CssTextAlign::matchParent),
    row(P::textAlign, "-webkit-auto", CssTextAlign::start),
    row(P::textAlign, "-webkit-left", CssTextAlign::left),
    row(P::textAlign, "-webkit-right", CssTextAlign::right),
    row(P::textAlign, "-webkit-center", CssTextAlign::center),
    row(P::textTransform, "none", CssTextTransform::none),
    row(P::textTransform, "uppercase", CssTextTransform::uppercase),
    row(P::textTransform, "lowercase", CssTextTransform::lowercase),
    row(P::textTransform, "capitalize", CssTextTransform::capitalize),
    row(P::direction, "ltr", CssDirection::ltr),
    row(P::direction, "rtl", CssDirection::rtl),
    row(P::unicodeBidi, "normal", CssUnicodeBidi::normal),
    row(P::unicodeBidi, "embed", CssUnicodeBidi::embed),
    row(P::unicodeBidi, "bidi-override", CssUnicodeBidi::override_),
    row(P::unicodeBidi, "isolate", CssUnicodeBidi::isolate),
    row(P::unicodeBidi, "-webkit-isolate", CssUnicodeBidi::isolate),
    row(P::unicodeBidi, "isolate-override", CssUnicodeBidi::isolateOverride),
    row(P::unicodeBidi, "plaintext", CssUnicodeBidi::plaintext),
    row(P::verticalAlign, "baseline", CssVerticalAlign::baseline),
    row(P::verticalAlign, "sub", CssVerticalAlign::sub),
    row(P::verticalAlign, "super", CssVerticalAlign::super),
    row(P::verticalAlign, "top", CssVerticalAlign::top),
    row(P::verticalAlign, "text-top", CssVerticalAlign::textTop),
    row(P::verticalAlign, "middle", CssVerticalAlign::middle),
    row(P::verticalAlign, "-webkit-baseline-middle", CssVerticalAlign::middle),
    row(P::verticalAlign, "bottom", CssVerticalAlign::bottom),
    row(P::verticalAlign, "text-bottom", CssVerticalAlign::textBottom),
    row(P::listStyleType, "disc", CssListStyle::disc),
    row(P::listStyleType, "circle", CssListStyle::circle),
    row(P::listStyleType, "square", CssListStyle::square),
    row(P::listStyleType, "decimal", CssListStyle::decimal),
    row(P::listStyleType, "octal", CssListStyle::octal),
    row(P::listStyleType, "lower-roman", CssListStyle::lowerRoman),
    row(P::listStyleType, "upper-roman", CssListStyle::upperRoman),
    row(P::listStyleType, "lower-alpha", CssListStyle::lowerAlpha),
    row(P::listStyleType, "upper-alpha", CssListStyle::upperAlpha),
    row(P::listStyleType, "lower-latin", CssListStyle::lowerLatin),
    row(P::listStyleType, "upper-latin", CssListStyle::upperLatin),
    row(P::listStyleType, "lower-hexadecimal", CssListStyle::lowerHexadecimal),
    row(P::listStyleType, "upper-hexadecimal", CssListStyle::upperHexadecimal),
    row(P::listStyleType, "none", CssListStyle::none),
    row(P::fontStyle, "normal", 0),
    row(P::fontStyle, "italic", 1),
    row(P::fontStyle, "oblique", 1),
    row(P::fontSize, "xx-small", CssFontKeyword::xxSmall),
    row(P::fontSize, "x-small", CssFontKeyword::xSmall),
    row(P::fontSize, "small", CssFontKeyword::small),
    row(P::fontSize, "medium", CssFontKeyword::medium),
    row(P::fontSize, "large", CssFontKeyword::large),
    row(P::fontSize, "x-large", CssFontKeyword::xLarge),
    row(P::fontSize, "xx-large", CssFontKeyword::xxLarge),
    row(P::fontSize, "xxx-large", CssFontKeyword::xxxLarge),
    row(P::fontSize, "-webkit-xxx-large", CssFontKeyword::xxxLarge),
    row(P::fontSize, "smaller", CssFontKeyword::smaller),
    row(P::fontSize, "larger", CssFontKeyword::larger),
    row(P::fontVariantLigatures, "normal", 0),
    row(P::fontVariantLigatures, "common-ligatures", 1),
    row(P::fontVariantLigatures, "no-common-ligatures", 2),
    row(P::fontVariantLigatures, "none", 2),
    row(P::borderCollapse, "separate", 0),
    row(P::borderCollapse, "collapse", 1),
    row(P::emptyCells, "show", 0),
    row(P::emptyCells, "hide", 1),
    row(P::tableLayout, "auto", 0),
    row(P::tableLayout, "fixed", 1),
    row(P::hyphens, "none", 0),
    row(P::hyphens, "manual", 0),
    row(P::hyphens, "auto", 1),
    row(P::borderTopStyle, "none", CssBorderStyle::none),
    row(P::borderTopStyle, "hidden", CssBorderStyle::hidden),
    row(P::borderTopStyle, "dotted", CssBorderStyle::visible),
    row(P::borderTopStyle, "dashed", CssBorderStyle::visible),
    row(P::borderTopStyle, "solid", CssBorderStyle::visible),
    row(P::borderTopStyle, "double", CssBorderStyle::visible),
    row(P::borderTopStyle, "groove", CssBorderStyle::visible),
    row(P::borderTopStyle, "ridge", CssBorderStyle::visible),
    row(P::borderTopStyle, "inset", CssBorderStyle::visible),
    row(P::borderTopStyle, "outset", CssBorderStyle::visible),
});

} // namespace

std::optional<CssValue> cssKeyword(P property, const CssToken& token) {
    if (token.kind != CssTokenKind::identifier) return std::nullopt;
    for (const KeywordRow& entry : kKeywords)
        if (entry.property == property && entry.name == token.text) return CssValue::ofKeyword(entry.value);
    return std::nullopt;
}

// Absolute lengths in px; the window is 800 by 600.
std::optional<CssValue> cssLength(const CssToken& token, bool allowsPercentage, bool allowsNegative) {
    struct UnitRow {
        std::string_view name;
        double factor;
        CssUnit unit;
    };
    static constexpr std::array kUnits{
        UnitRow{"px", 1, CssUnit::px},         UnitRow{"pt", 4.0 / 3, CssUnit::px},
        UnitRow{"em", 1, CssUnit::em},         UnitRow{"rem", 1, CssUnit::rem},
        UnitRow{"pc", 16, CssUnit::px},        UnitRow{"in", 96, CssUnit::px},
        UnitRow{"cm", 96 / 2.54, CssUnit::px}, UnitRow{"mm", 9.6 / 2.54, CssUnit::px},
        UnitRow{"q", 2.4 / 2.54, CssUnit::px}, UnitRow{"ex", 0.5, CssUnit::em},
        UnitRow{"ch", 0.5, CssUnit::em},       UnitRow{"vw", 8, CssUnit::px},
        UnitRow{"vh", 6, CssUnit::px},         UnitRow{"vmin", 6, CssUnit::px},
        UnitRow{"vmax", 8, CssUnit::px},
    };
    if (token.number < 0 && !allowsNegative) return std::nullopt;
    if (token.kind == CssTokenKind::number && token.number == 0) return CssValue::ofLength(0);
    if (token.kind == CssTokenKind::percentage && allowsPercentage)
        return CssValue::ofLength(token.number, CssUnit::percent);
    if (token.kind != CssTokenKind::dimension) return std::nullopt;
    for (const UnitRow& unit : kUnits)
        if (unit.name == token.text) return CssValue::ofLength(token.number * unit.factor, unit.unit);
    return std::nullopt;
}

std::optional<CssValue> CssItems::color() {
    if (peek().isName("currentcolor")) {
        advance();
        return CssValue::ofKind(CssValueKind::currentColor);
    }
    std::size_t at = at_;
    const auto rgba = cssColor(tokens_, at);
    if (!rgba) return std::nullopt;
    at_ = at;
    skip();
    return CssValue::ofColor(*rgba);
}

void CssItems::skipFunction() {
    int depth = 0;
    do {
        if (tokens_[at_].kind == CssTokenKind::function || tokens_[at_].is('(')) ++depth;
        if (tokens_[at_].is(')')) --depth;
        ++at_;
    } while (at_ < tokens_.size() && depth > 0);
    skip();
}

bool readKeyword(CssLonghands& to, P property, CssItems& items) {
    auto value = cssKeyword(property, items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readColor(CssLonghands& to, P property, CssItems& items) {
    auto color = items.color();
    if (!color || !items.atEnd()) return false;
    to.add(property, std::move(*color));
    return true;
}

} // namespace platform
