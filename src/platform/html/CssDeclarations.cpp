// A table says for each property which rule reads its value; a rule adds longhands to the list or, for a value that is
// not valid, adds none. Keywords of keyword properties are one table more.
#include "platform/html/CssDeclarations.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>

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

std::optional<CssValue> keywordOf(P property, const CssToken& token) {
    if (token.kind != CssTokenKind::identifier) return std::nullopt;
    for (const KeywordRow& entry : kKeywords)
        if (entry.property == property && entry.name == token.text) return CssValue::ofKeyword(entry.value);
    return std::nullopt;
}

// Absolute lengths in px; the window is 800 by 600.
std::optional<CssValue> lengthOf(const CssToken& token, bool allowsPercentage, bool allowsNegative) {
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

// The tokens of one value, white space left out between items by next().
class Items {
  public:
    explicit Items(std::span<const CssToken> tokens) : tokens_(tokens) { skip(); }
    bool atEnd() const { return at_ >= tokens_.size(); }
    const CssToken& peek() const { return tokens_[at_]; }
    void advance() {
        ++at_;
        skip();
    }
    std::optional<CssValue> color() {
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
    // Past the brackets of a function whose name is the present token.
    void skipFunction() {
        int depth = 0;
        do {
            if (tokens_[at_].kind == CssTokenKind::function || tokens_[at_].is('(')) ++depth;
            if (tokens_[at_].is(')')) --depth;
            ++at_;
        } while (at_ < tokens_.size() && depth > 0);
        skip();
    }

  private:
    void skip() {
        while (at_ < tokens_.size() && tokens_[at_].kind == CssTokenKind::whitespace) ++at_;
    }
    std::span<const CssToken> tokens_;
    std::size_t at_ = 0;
};

struct Parsing {
    CssDeclarations& out;
    bool important;
    void add(P property, CssValue value) { out.push_back({property, important, std::move(value)}); }
};

using Rule = bool (*)(Parsing&, P, Items&);

bool readKeyword(Parsing& to, P property, Items& items) {
    auto value = keywordOf(property, items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

std::optional<CssValue> borderStyleOf(const CssToken& token) {
    return keywordOf(P::borderTopStyle, token); // the four edges share their keywords
}

std::optional<CssValue> borderWidthOf(const CssToken& token) {
    if (token.isName("thin")) return CssValue::ofLength(1);
    if (token.isName("medium")) return CssValue::ofLength(3);
    if (token.isName("thick")) return CssValue::ofLength(5);
    return lengthOf(token, false, false);
}

bool readColor(Parsing& to, P property, Items& items) {
    auto color = items.color();
    if (!color || !items.atEnd()) return false;
    to.add(property, std::move(*color));
    return true;
}

bool readMargin(Parsing& to, P property, Items& items) {
    auto value =
        items.peek().isName("auto") ? CssValue::ofKind(CssValueKind::automatic) : lengthOf(items.peek(), true, true);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readPadding(Parsing& to, P property, Items& items) {
    auto value = lengthOf(items.peek(), true, false);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readWidth(Parsing& to, P property, Items& items) {
    static constexpr std::array<std::string_view, 6> kNoLength{"auto",        "none",        "min-content",
                                                               "max-content", "fit-content", "-webkit-fill-available"};
    const bool isAutomatic = items.peek().kind == CssTokenKind::identifier &&
                             std::ranges::find(kNoLength, items.peek().text) != kNoLength.end();
    auto value = isAutomatic ? CssValue::ofKind(CssValueKind::automatic) : lengthOf(items.peek(), true, false);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readIndent(Parsing& to, P property, Items& items) {
    auto value = lengthOf(items.peek(), true, true);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readBorderStyle(Parsing& to, P property, Items& items) {
    auto value = borderStyleOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readBorderWidth(Parsing& to, P property, Items& items) {
    auto value = borderWidthOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

// One to four values for top, right, bottom, left, each by the rule of the first edge's property.
template<Rule rule>
bool readEdges(Parsing& to, P first, Items& items) {
    CssDeclarations values;
    Parsing single{values, to.important};
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
bool readEdgeColor(Parsing& to, P property, Items& items) {
    auto color = items.color();
    if (color) to.add(property, std::move(*color));
    return color.has_value();
}

// Width, style and color in any order, for the edges [first, last] counted from the top.
bool readBorder(Parsing& to, std::size_t first, std::size_t last, Items& items) {
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

bool readBorderOfAll(Parsing& to, P, Items& items) {
    return readBorder(to, 0, 3, items);
}

bool readBorderOfEdge(Parsing& to, P topStyleOfEdge, Items& items) {
    const auto edge = static_cast<std::size_t>(topStyleOfEdge) - static_cast<std::size_t>(P::borderTopStyle);
    return readBorder(to, edge, edge, items);
}

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

bool readFontWeight(Parsing& to, P property, Items& items) {
    auto value = fontWeightOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

std::optional<CssValue> fontSizeOf(const CssToken& token) {
    if (auto keyword = keywordOf(P::fontSize, token)) return keyword;
    return lengthOf(token, true, false);
}

bool readFontSize(Parsing& to, P property, Items& items) {
    auto value = fontSizeOf(items.peek());
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

bool readFontStyle(Parsing& to, P property, Items& items) {
    auto value = keywordOf(property, items.peek());
    if (!value) return false;
    items.advance();
    if (!items.atEnd() && items.peek().kind == CssTokenKind::dimension) items.advance(); // the angle of oblique
    to.add(property, std::move(*value));
    return items.atEnd();
}

// Names parted by commas: quoted, or of several words.
bool readFontFamily(Parsing& to, P property, Items& items) {
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
                name += (name.empty() ? "" : " ") + items.peek().spelling();
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
bool readFont(Parsing& to, P, Items& items) {
    CssDeclarations values;
    Parsing parts{values, to.important};
    CssValue style = CssValue::ofKeyword(0);
    std::optional<CssValue> weight;
    for (; !items.atEnd(); items.advance()) {
        const CssToken& token = items.peek();
        if (token.isName("normal") || token.isName("small-caps")) continue;
        if (token.kind == CssTokenKind::identifier && token.text.ends_with("condensed")) continue;
        if (token.kind == CssTokenKind::identifier && token.text.ends_with("expanded")) continue;
        if (const auto found = keywordOf(P::fontStyle, token)) {
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

bool readFontVariant(Parsing& to, P property, Items& items) {
    CssValue value = CssValue::ofKeyword(0);
    for (; !items.atEnd(); items.advance()) {
        if (items.peek().kind != CssTokenKind::identifier) return false;
        if (const auto known = keywordOf(property, items.peek())) value = *known;
    }
    to.add(property, std::move(value));
    return true;
}

// "underline dotted red": the lines count, style and color only have to be valid.
bool readTextDecoration(Parsing& to, P property, Items& items) {
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
        } else if (line == 0 && std::ranges::find(kOther, token.text) == kOther.end() && !lengthOf(token, true, true)) {
            if (!items.color()) return false;
            continue;
        }
        items.advance();
    }
    if (isNone && lines != 0) return false;
    to.add(property, CssValue::ofKeyword(lines));
    return true;
}

bool readVerticalAlign(Parsing& to, P property, Items& items) {
    auto value = keywordOf(property, items.peek());
    if (!value) value = lengthOf(items.peek(), true, true);
    if (!value) return false;
    items.advance();
    to.add(property, std::move(*value));
    return items.atEnd();
}

CssValue listStyleOf(const CssToken& token) {
    return keywordOf(P::listStyleType, token).value_or(CssValue::ofKeyword(CssListStyle::other));
}

bool readListStyleType(Parsing& to, P property, Items& items) {
    if (items.peek().kind != CssTokenKind::identifier && items.peek().kind != CssTokenKind::string) return false;
    to.add(property, listStyleOf(items.peek()));
    items.advance();
    return items.atEnd();
}

bool readListStyle(Parsing& to, P property, Items& items) {
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
bool readBackground(Parsing& to, P property, Items& items) {
    static constexpr std::array<std::string_view, 22> kOther{
        "none",    "repeat", "repeat-x",   "repeat-y",    "no-repeat",   "space",  "round",  "scroll",
        "fixed",   "local",  "left",       "right",       "top",         "bottom", "center", "cover",
        "contain", "auto",   "border-box", "padding-box", "content-box", "text"};
    CssValue color = CssValue::ofColor({0, 0, 0, 0});
    while (!items.atEnd()) {
        const CssToken& token = items.peek();
        if (token.kind == CssTokenKind::url || token.is(',') || token.is('/') || lengthOf(token, true, true) ||
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

// Offsets, blur, spread and a color; only the first shadow counts.
bool readTextShadow(Parsing& to, P property, Items& items) {
    if (items.peek().isName("none")) {
        items.advance();
        to.add(property, CssValue::ofKind(CssValueKind::shadow));
        return items.atEnd();
    }
    auto shadow = std::make_shared<CssShadow>();
    std::vector<double> lengths;
    while (!items.atEnd() && !items.peek().is(',')) {
        if (const auto length = lengthOf(items.peek(), false, true)) {
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

struct PropertyRow {
    std::string_view name;
    P property; // of an edge's shorthand: that edge's style; of all edges: the top
    Rule rule;
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
    {"margin", P::marginTop, readEdges<readMargin>},
    {"margin-top", P::marginTop, readMargin},
    {"margin-right", P::marginRight, readMargin},
    {"margin-bottom", P::marginBottom, readMargin},
    {"margin-left", P::marginLeft, readMargin},
    {"margin-block-start", P::marginTop, readMargin},
    {"margin-block-end", P::marginBottom, readMargin},
    {"margin-inline-start", P::marginLeft, readMargin},
    {"margin-inline-end", P::marginRight, readMargin},
    {"padding", P::paddingTop, readEdges<readPadding>},
    {"padding-top", P::paddingTop, readPadding},
    {"padding-right", P::paddingRight, readPadding},
    {"padding-bottom", P::paddingBottom, readPadding},
    {"padding-left", P::paddingLeft, readPadding},
    {"border", P::borderTopStyle, readBorderOfAll},
    {"border-top", P::borderTopStyle, readBorderOfEdge},
    {"border-right", P::borderRightStyle, readBorderOfEdge},
    {"border-bottom", P::borderBottomStyle, readBorderOfEdge},
    {"border-left", P::borderLeftStyle, readBorderOfEdge},
    {"border-style", P::borderTopStyle, readEdges<readBorderStyle>},
    {"border-width", P::borderTopWidth, readEdges<readBorderWidth>},
    {"border-color", P::borderTopColor, readEdges<readEdgeColor>},
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
void addToAll(Parsing& to, const PropertyRow& entry, CssValueKind kind) {
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

void trim(std::vector<CssToken>& tokens) {
    while (!tokens.empty() && tokens.back().kind == CssTokenKind::whitespace) tokens.pop_back();
}

bool takeImportant(std::vector<CssToken>& tokens) {
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

void appendCssDeclaration(CssDeclarations& declarations, std::string_view property, std::vector<CssToken> value,
                          bool important) {
    const PropertyRow* entry = propertyNamed(property);
    Items items(value);
    if (!entry || items.atEnd()) return;
    Parsing to{declarations, important};
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
    CssToken token = tokenizer.next();
    while (token.kind != CssTokenKind::end) {
        while (token.kind == CssTokenKind::whitespace || token.is(';')) token = tokenizer.next();
        const std::string name = token.kind == CssTokenKind::identifier ? token.text : std::string();
        token = tokenizer.next();
        while (!name.empty() && token.kind == CssTokenKind::whitespace) token = tokenizer.next();
        const bool isDeclaration = !name.empty() && token.is(':');
        if (isDeclaration) token = tokenizer.next();
        std::vector<CssToken> value;
        bool isValid = isDeclaration;
        int depth = 0;
        for (; token.kind != CssTokenKind::end && (depth > 0 || !token.is(';')); token = tokenizer.next()) {
            if (token.kind == CssTokenKind::function || token.is('(') || token.is('[') || token.is('{')) ++depth;
            if ((token.is(')') || token.is(']') || token.is('}')) && depth > 0) --depth;
            if (token.kind == CssTokenKind::badString) isValid = false;
            if (isDeclaration) value.push_back(std::move(token));
        }
        if (!isValid) continue;
        const bool important = takeImportant(value);
        appendCssDeclaration(declarations, name, std::move(value), important);
    }
    return declarations;
}

} // namespace platform
