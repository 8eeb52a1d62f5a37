// A style is computed from the winning declaration of each property, in the order of CssProperty.
#include "platform/html/CssStyle.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace platform {

namespace {

using P = CssProperty;

constexpr std::array<double, 8> kSizes{9, 9, 10, 12, 14, 18, 24, 36};       // by CssFontKeyword, default 12
constexpr std::array<double, 8> kFixedSizes{9, 10, 12, 13, 16, 20, 26, 39}; // default 13
constexpr double kQuirksLargest = 37;
constexpr double kFixedFactor = 13.0 / 12;
constexpr double kStep = 1.2;       // of smaller and larger
constexpr double kSmallestSize = 9; // of keywords
// Beyond these nothing is laid out; without them nested factors would end at infinity.
constexpr double kLargestSize = 1'000'000, kLargestLength = 33'554'428;

// One element's computation.
class Computation {
  public:
    Computation(CssStyle& style, const CssStyle& parent, const CssWinners& winners, double rootFontSize, bool quirks)
        : style_(style), parent_(parent), winners_(winners), rootFontSize_(rootFontSize), quirks_(quirks) {}

    void run() {
        font();
        color();
        keywords();
        lengths();
        borders();
    }

  private:
    const CssValue* winner(P property) const { return winners_[static_cast<std::size_t>(property)]; }
    const CssValue* winner(P top, std::size_t edge) const { return winners_[static_cast<std::size_t>(top) + edge]; }

    // The value to compute; null when the property keeps what the style has (inherited, or its initial value).
    static bool isCommon(const CssValue& value) {
        return value.kind == CssValueKind::inherit || value.kind == CssValueKind::initial ||
               value.kind == CssValueKind::unset;
    }

    // Applies a winner to a member: the common words, else the given way.
    template<class M, class F>
    void apply(const CssValue* value, M CssStyle::* member, bool inherited, F compute) {
        if (!value) return;
        static const CssStyle kInitial;
        if (!isCommon(*value)) {
            style_.*member = compute(*value);
        } else if (value->kind == CssValueKind::inherit || (value->kind == CssValueKind::unset && inherited)) {
            style_.*member = parent_.*member;
        } else {
            style_.*member = kInitial.*member;
        }
    }

    template<class E>
    void applyKeyword(P property, E CssStyle::* member, bool inherited) {
        apply(winner(property), member, inherited, [](const CssValue& value) { return static_cast<E>(value.keyword); });
    }

    double px(const CssValue& value) const {
        double length = value.number;
        if (value.unit == CssUnit::em) length *= style_.fontSize;
        if (value.unit == CssUnit::rem) length *= rootFontSize_;
        return std::clamp(length, -kLargestLength, kLargestLength);
    }
    CssLength length(const CssValue& value) const {
        if (value.kind == CssValueKind::automatic) return {0, false, true};
        if (value.unit == CssUnit::percent) return {value.number, true, false};
        return {px(value), false, false};
    }
    CssRGBA rgba(const CssValue& value) const {
        return value.kind == CssValueKind::currentColor ? style_.color : value.color;
    }

    double keywordSize(CssFontKeyword keyword) const {
        const auto index = static_cast<std::size_t>(keyword);
        if (style_.isMonospace()) return kFixedSizes[index];
        return quirks_ && keyword == CssFontKeyword::xxxLarge ? kQuirksLargest : kSizes[index];
    }

    void font() {
        apply(winner(P::fontFamily), &CssStyle::families, true, [](const CssValue& value) { return value.families; });
        fontSize();
        apply(winner(P::fontWeight), &CssStyle::fontWeight, true, [this](const CssValue& value) {
            if (value.kind == CssValueKind::number) return value.number;
            const double now = parent_.fontWeight;
            const bool bolder = value.keyword == 1;
            if (bolder) return now < 350 ? 400.0 : now < 550 ? 700.0 : std::max(now, 900.0);
            return now < 550 ? std::min(now, 100.0) : now < 750 ? 400.0 : 700.0;
        });
        applyKeyword(P::fontStyle, &CssStyle::isItalic, true);
        applyKeyword(P::fontVariantLigatures, &CssStyle::ligatures, true);
    }

    void setKeywordSize(CssFontKeyword keyword) {
        style_.fontSize = keywordSize(keyword);
        style_.sizeKeyword = keyword;
        style_.sizeIsKeyword = true;
        style_.sizeHasFixedFactor = false; // the keyword's own row says it
    }

    // A size that was given as a number grows where the fixed-width family begins and shrinks again where it ends,
    // unless it was given inside, for that family.
    void scaleForFamily() {
        const bool isFixed = style_.isMonospace();
        if (isFixed == parent_.isMonospace() || isFixed == style_.sizeHasFixedFactor) return;
        style_.fontSize *= isFixed ? kFixedFactor : 1 / kFixedFactor;
        style_.sizeHasFixedFactor = isFixed;
    }

    void fontSize() {
        const CssValue* value = winner(P::fontSize);
        if (!value || value->kind == CssValueKind::inherit || value->kind == CssValueKind::unset) {
            if (!style_.sizeIsKeyword) return scaleForFamily();
            if (style_.isMonospace() != parent_.isMonospace()) style_.fontSize = keywordSize(style_.sizeKeyword);
            return;
        }
        if (value->kind == CssValueKind::initial) return setKeywordSize(CssFontKeyword::medium);
        const bool isKeyword = value->kind == CssValueKind::keyword;
        const auto keyword = static_cast<CssFontKeyword>(value->keyword);
        if (isKeyword && keyword < CssFontKeyword::smaller) return setKeywordSize(keyword);
        // A parent whose size is still a fixed-width keyword's has the factor in it.
        if (style_.sizeIsKeyword) style_.sizeHasFixedFactor = parent_.isMonospace();
        style_.sizeIsKeyword = false;
        if (isKeyword) {
            const double size =
                keyword == CssFontKeyword::smaller ? parent_.fontSize / kStep : parent_.fontSize * kStep;
            style_.fontSize = std::max(size, std::min(kSmallestSize, parent_.fontSize));
            scaleForFamily();
        } else if (value->unit == CssUnit::percent || value->unit == CssUnit::em) {
            style_.fontSize = parent_.fontSize * value->number / (value->unit == CssUnit::percent ? 100 : 1);
            scaleForFamily();
        } else {
            style_.fontSize = px(*value);
            style_.sizeHasFixedFactor = false;
        }
        style_.fontSize = std::min(style_.fontSize, kLargestSize);
    }

    void color() {
        apply(winner(P::color), &CssStyle::color, true, [this](const CssValue& value) {
            return value.kind == CssValueKind::currentColor ? parent_.color : value.color;
        });
        apply(winner(P::textShadow), &CssStyle::shadow, true, [this](const CssValue& value) {
            if (!value.shadow || !value.shadow->usesCurrentColor) return value.shadow;
            auto colored = std::make_shared<CssShadow>(*value.shadow);
            colored->color = style_.color;
            colored->usesCurrentColor = false;
            return std::shared_ptr<const CssShadow>(std::move(colored));
        });
        apply(winner(P::backgroundColor), &CssStyle::background, false,
              [this](const CssValue& value) { return rgba(value); });
    }

    void keywords() {
        applyKeyword(P::direction, &CssStyle::direction, true);
        applyKeyword(P::unicodeBidi, &CssStyle::unicodeBidi, false);
        applyKeyword(P::whiteSpace, &CssStyle::whiteSpace, true);
        applyKeyword(P::nbspMode, &CssStyle::breaksNbsp, true);
        applyKeyword(P::textAlign, &CssStyle::textAlign, true);
        applyKeyword(P::textTransform, &CssStyle::textTransform, true);
        applyKeyword(P::textDecorationLine, &CssStyle::decoration, false);
        applyKeyword(P::display, &CssStyle::display, false);
        applyKeyword(P::cssFloat, &CssStyle::cssFloat, false);
        applyKeyword(P::borderCollapse, &CssStyle::collapsesBorders, true);
        applyKeyword(P::emptyCells, &CssStyle::hidesEmptyCells, true);
        applyKeyword(P::tableLayout, &CssStyle::fixedTableLayout, false);
        applyKeyword(P::hyphens, &CssStyle::hyphenates, true);
        applyKeyword(P::listStyleType, &CssStyle::listStyle, true);
        if (style_.textAlign == CssTextAlign::matchParent) {
            style_.textAlign = parent_.textAlign;
            const bool startsRight = parent_.direction == CssDirection::rtl;
            if (style_.textAlign == CssTextAlign::start)
                style_.textAlign = startsRight ? CssTextAlign::right : CssTextAlign::left;
            if (style_.textAlign == CssTextAlign::end)
                style_.textAlign = startsRight ? CssTextAlign::left : CssTextAlign::right;
        }
        const CssValue* align = winner(P::verticalAlign);
        apply(align, &CssStyle::verticalAlign, false, [](const CssValue& value) {
            return value.kind == CssValueKind::length ? CssVerticalAlign::length
                                                      : static_cast<CssVerticalAlign>(value.keyword);
        });
        // A percentage of the line's height sets nothing.
        if (align && align->kind == CssValueKind::length)
            style_.verticalOffset = align->unit == CssUnit::percent ? 0 : px(*align);
        adjustDisplay();
    }

    // What floats, lies out of the flow or is laid out in a flexible box is a block.
    void adjustDisplay() {
        const CssValue* position = winner(P::position);
        const bool outOfFlow = position && position->kind == CssValueKind::keyword &&
                               static_cast<CssPosition>(position->keyword) == CssPosition::outOfFlow;
        const CssDisplay outer = parent_.display;
        const bool inFlexibleBox = outer == CssDisplay::flex || outer == CssDisplay::inlineFlex ||
                                   outer == CssDisplay::grid || outer == CssDisplay::inlineGrid;
        if (!outOfFlow && !inFlexibleBox && style_.cssFloat == CssFloat::none) return;
        switch (style_.display) {
        case CssDisplay::none:
        case CssDisplay::contents:
        case CssDisplay::listItem:
        case CssDisplay::table:
        case CssDisplay::block:
        case CssDisplay::flowRoot:
        case CssDisplay::flex:
        case CssDisplay::grid:
        case CssDisplay::box:
            return;
        case CssDisplay::inlineTable:
            style_.display = CssDisplay::table;
            return;
        case CssDisplay::inlineFlex:
            style_.display = CssDisplay::flex;
            return;
        case CssDisplay::inlineGrid:
            style_.display = CssDisplay::grid;
            return;
        case CssDisplay::inlineBox:
            style_.display = CssDisplay::box;
            return;
        default:
            style_.display = CssDisplay::block;
        }
    }

    void lengths() {
        const auto compute = [this](const CssValue& value) { return length(value); };
        apply(winner(P::textIndent), &CssStyle::textIndent, true, compute);
        apply(winner(P::width), &CssStyle::width, false, compute);
        apply(winner(P::minWidth), &CssStyle::minWidth, false, compute);
        apply(winner(P::maxWidth), &CssStyle::maxWidth, false, compute);
        for (std::size_t edge = 0; edge < 4; ++edge) {
            const auto edgeLength = [&](P top, const std::array<CssLength, 4>& parents, CssLength& to) {
                const CssValue* value = winner(top, edge);
                if (!value) return;
                if (isCommon(*value)) {
                    to = value->kind == CssValueKind::inherit ? parents[edge] : CssLength{};
                } else {
                    to = length(*value);
                }
            };
            edgeLength(P::marginTop, parent_.margin, style_.margin[edge]);
            edgeLength(P::paddingTop, parent_.padding, style_.padding[edge]);
        }
    }

    void borders() {
        constexpr double kMedium = 3;
        for (std::size_t edge = 0; edge < 4; ++edge) {
            const CssValue* style = winner(P::borderTopStyle, edge);
            const CssValue* width = winner(P::borderTopWidth, edge);
            const CssValue* color = winner(P::borderTopColor, edge);
            const bool isVisible = style && style->kind == CssValueKind::keyword &&
                                   static_cast<CssBorderStyle>(style->keyword) == CssBorderStyle::visible;
            if (isVisible) style_.borderWidth[edge] = width && !isCommon(*width) ? px(*width) : kMedium;
            style_.borderColor[edge] = color && !isCommon(*color) ? rgba(*color) : style_.color;
        }
    }

    CssStyle& style_;
    const CssStyle& parent_;
    const CssWinners& winners_;
    double rootFontSize_;
    bool quirks_;
};

} // namespace

void computeCssStyle(CssStyle& style, const CssStyle& parent, const CssWinners& winners, double rootFontSize,
                     bool quirksMode) {
    Computation(style, parent, winners, rootFontSize, quirksMode).run();
}

void inheritCssStyle(CssStyle& style, const CssStyle& parent) {
    style.families = parent.families;
    style.fontSize = parent.fontSize;
    style.fontWeight = parent.fontWeight;
    style.color = parent.color;
    style.shadow = parent.shadow;
    style.textIndent = parent.textIndent;
    style.sizeKeyword = parent.sizeKeyword;
    style.sizeIsKeyword = parent.sizeIsKeyword;
    style.sizeHasFixedFactor = parent.sizeHasFixedFactor;
    style.isItalic = parent.isItalic;
    style.ligatures = parent.ligatures;
    style.listDepth = parent.listDepth;
    style.collapsesBorders = parent.collapsesBorders;
    style.hidesEmptyCells = parent.hidesEmptyCells;
    style.hyphenates = parent.hyphenates;
    style.breaksNbsp = parent.breaksNbsp;
    style.direction = parent.direction;
    style.whiteSpace = parent.whiteSpace;
    style.textAlign = parent.textAlign;
    style.textTransform = parent.textTransform;
    style.listStyle = parent.listStyle;
}

} // namespace platform
