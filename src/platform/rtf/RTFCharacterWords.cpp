#include "platform/rtf/RTFCharacterWords.h"

#include <algorithm>
#include <cmath>

#include "platform/base/NumberTable.h"
#include "platform/base/UTF16.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFTables.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

constexpr double kLargestNumber = 1e8; // what a word may be given; keeps odd attribute values from overflowing

std::int64_t units(double value, double scale) {
    if (value == 0 || std::isnan(value)) return 0; // as most are that a set may have
    return std::llround(std::clamp(value * scale, -kLargestNumber, kLargestNumber));
}

std::int64_t integerAttribute(const AttributeSet& attributes, AttributeName name, std::int64_t absent) {
    const AttributeValue* value = attributes.find(name);
    return value ? integerValue(*value) : absent;
}

double realAttribute(const AttributeSet& attributes, AttributeName name) {
    const AttributeValue* value = attributes.find(name);
    return value ? doubleValue(*value) : 0;
}

std::size_t colorAttribute(const AttributeSet& attributes, AttributeName name, RTFColorTable& colors) {
    const auto* color = attributes.find<Color>(name);
    return color ? colors.indexOf(*color) : 0;
}

RTFCharacterState::Shadow shadowState(const Shadow& shadow, RTFColorTable& colors) {
    RTFCharacterState::Shadow state{units(shadow.offsetX(), kTwipsAPoint), units(shadow.offsetY(), kTwipsAPoint),
                                    units(shadow.blurRadius(), kTwipsAPoint), units(kDefaultShadowOpacity, 255), 0};
    if (!shadow.color()) return state;
    state.opacity = units(std::clamp(shadow.color()->alphaComponent(), 0.0, 1.0), 255);
    const auto components = shadow.color()->rgba();
    const bool black = !components || (components->red == 0 && components->green == 0 && components->blue == 0);
    if (!black) state.color = colors.indexOf(shadow.color()->withAlphaComponent(1));
    return state;
}

std::int64_t highlightSchemeNumber(const AttributeSet& attributes) {
    const auto* scheme = attributes.find<std::u16string>(kTextHighlightColorSchemeAttributeName);
    if (!scheme) return 0;
    const std::string name = utf8FromUTF16(*scheme);
    if (!name.starts_with(kHighlightSchemePrefix)) return 0;
    const auto* const found = std::ranges::find(
        kRTFHighlightSchemes, std::string_view(name).substr(kHighlightSchemePrefix.size()), &RTFHighlightScheme::name);
    return found == std::end(kRTFHighlightSchemes) ? 0 : found->number;
}

bool isHighlighted(const AttributeSet& attributes) {
    const auto* style = attributes.find<std::u16string>(kTextHighlightStyleAttributeName);
    return style && utf8FromUTF16(*style) == kHighlightStyleDefault;
}

} // namespace

std::uint32_t hashOf(const RTFCharacterState& state) {
    std::uint64_t hash = state.font;
    const auto add = [&hash](auto... fields) { ((hash = hash * 31 + static_cast<std::uint64_t>(fields)), ...); };
    add(state.milliPoints, state.color, state.background, state.kernTwips, state.baselineHalves, state.superscript,
        state.underline, state.underlineColor, state.strikethrough, state.strikethroughColor, state.strokeWidth,
        state.strokeColor, state.obliqueness, state.expansion, state.ligature, state.highlightScheme);
    if (const auto& shadow = state.shadow) add(shadow->x, shadow->y, shadow->radius, shadow->opacity, shadow->color);
    return spreadHash(hash);
}

RTFCharacterState characterStateOf(const AttributeSet& attributes, RTFFontTable& fonts, RTFColorTable& colors) {
    constexpr double kDefaultSize = 12;
    RTFCharacterState state;
    if (const auto* font = attributes.find<Font>(kFontAttributeName)) {
        state.font = fonts.indexOf(*font);
        state.milliPoints = units(font->pointSize(), 1000);
    } else {
        state.font = fonts.indexOf(Font::userFont(kDefaultSize));
        state.milliPoints = units(kDefaultSize, 1000);
    }
    state.color = colorAttribute(attributes, kForegroundColorAttributeName, colors);
    const std::size_t background = colorAttribute(attributes, kBackgroundColorAttributeName, colors);
    if (background != 0) state.background = background;
    if (const AttributeValue* kern = attributes.find(kKernAttributeName)) {
        state.kerns = true;
        state.kernTwips = units(doubleValue(*kern), kTwipsAPoint);
    }
    state.baselineHalves = units(realAttribute(attributes, kBaselineOffsetAttributeName), 2);
    const std::int64_t script = integerAttribute(attributes, kSuperscriptAttributeName, 0);
    state.superscript = script > 0 ? 1 : script < 0 ? -1 : 0;
    state.underline = integerAttribute(attributes, kUnderlineStyleAttributeName, 0);
    if (state.underline != 0) state.underlineColor = colorAttribute(attributes, kUnderlineColorAttributeName, colors);
    state.strikethrough = integerAttribute(attributes, kStrikethroughStyleAttributeName, 0);
    if (state.strikethrough != 0)
        state.strikethroughColor = colorAttribute(attributes, kStrikethroughColorAttributeName, colors);
    state.strokeWidth = units(realAttribute(attributes, kStrokeWidthAttributeName), kStrokeUnitsAPercent);
    state.strokeColor = colorAttribute(attributes, kStrokeColorAttributeName, colors);
    if (const auto* shadow = attributes.find<Shadow>(kShadowAttributeName)) state.shadow = shadowState(*shadow, colors);
    state.obliqueness = units(realAttribute(attributes, kObliquenessAttributeName), kSkewUnits);
    state.expansion = units(realAttribute(attributes, kExpansionAttributeName), kSkewUnits);
    state.ligature = integerAttribute(attributes, kLigatureAttributeName, 1);
    state.highlighted = isHighlighted(attributes);
    if (state.highlighted) state.highlightScheme = highlightSchemeNumber(attributes);
    return state;
}

namespace {

// One step for each group of words that belongs together; writeCharacterChange takes them in this order.
class ChangeWriter {
  public:
    ChangeWriter(const RTFCharacterState& from, const RTFCharacterState& to, RTFOutput& out)
        : from_(from), to_(to), out_(out) {}

    // A change of font begins a line. Bold and italic are said too, although the font's own name says it already.
    void font(const RTFFontTable& fonts) {
        const bool changesFont = from_.font != to_.font;
        const bool changesSize = from_.milliPoints != to_.milliPoints;
        if (!changesFont && !changesSize) return;
        if (changesFont) {
            const bool first = from_.font == kNotFound;
            const bool wasItalic = !first && fonts[from_.font].italic, wasBold = !first && fonts[from_.font].bold;
            const RTFFontTable::Entry& after = fonts[to_.font];
            number("\n\\f", static_cast<std::int64_t>(to_.font));
            if (wasItalic != after.italic) out_.raw(after.italic ? "\\i" : "\\i0");
            if (wasBold != after.bold) out_.raw(after.bold ? "\\b" : "\\b0");
        }
        if (changesSize) {
            number("\\fs", to_.milliPoints / 500);
            if (to_.milliPoints % 500 != 0) number("\\fsmilli", to_.milliPoints);
        }
        out_.raw(' ');
    }

    void colors(bool repeatsColor) {
        if (repeatsColor || from_.color != to_.color) last("\\cf", to_.color);
        if (from_.background != to_.background) last("\\cb", to_.background);
    }

    void kern() {
        if (from_.kerns == to_.kerns && from_.kernTwips == to_.kernTwips) return;
        if (!to_.kerns) return out_.raw("\\kerning1\\expnd0\\expndtw0 ");
        number("\\expnd", to_.kernTwips / 5); // quarter points
        number("\\expndtw", to_.kernTwips);
        out_.raw("\\kerning0\n");
    }

    void position() {
        if (from_.baselineHalves != to_.baselineHalves)
            last(to_.baselineHalves < 0 ? "\\dn" : "\\up", std::abs(to_.baselineHalves));
        if (from_.superscript == to_.superscript) return;
        out_.raw(to_.superscript > 0 ? "\\super " : to_.superscript < 0 ? "\\sub " : "\\nosupersub ");
    }

    void underline() {
        if (from_.underline == to_.underline && from_.underlineColor == to_.underlineColor) return;
        if (to_.underline == 0) return out_.raw("\\ulnone ");
        const auto* const found = std::ranges::find(kRTFUnderlineWords, to_.underline, &RTFUnderlineWord::style);
        const bool known = found != std::end(kRTFUnderlineWords);
        out_.raw('\\');
        out_.raw(known ? found->word : "ul");
        if (to_.underline != 1) number("\\ulstyle", to_.underline);
        out_.raw(' ');
        last("\\ulc", to_.underlineColor);
    }

    void strikethrough() {
        if (from_.strikethrough == to_.strikethrough && from_.strikethroughColor == to_.strikethroughColor) return;
        if (to_.strikethrough == 0) return out_.raw("\\strike0\\striked0 ");
        constexpr std::int64_t kDouble = 9;
        out_.raw(to_.strikethrough == kDouble ? "\\striked1" : "\\strike");
        if (to_.strikethrough != 1 && to_.strikethrough != kDouble) number("\\strikestyle", to_.strikethrough);
        out_.raw(' ');
        last("\\strikec", to_.strikethroughColor);
    }

    void stroke() {
        if (from_.strokeWidth == to_.strokeWidth && from_.strokeColor == to_.strokeColor) return;
        out_.raw(to_.strokeWidth == 0 ? "\\outl0" : "\\outl");
        last("\\strokewidth", to_.strokeWidth);
        last("\\strokec", to_.strokeColor);
    }

    void shadow() {
        if (from_.shadow == to_.shadow) return;
        if (!to_.shadow) return out_.raw("\\shad0 ");
        number("\\shad\\shadx", to_.shadow->x);
        number("\\shady", to_.shadow->y);
        number("\\shadr", to_.shadow->radius);
        last("\\shado", to_.shadow->opacity);
        last("\\shadc", to_.shadow->color);
    }

    void rest() {
        if (from_.obliqueness != to_.obliqueness) last("\\obliqueness", to_.obliqueness);
        if (from_.expansion != to_.expansion) last("\\expansion", to_.expansion);
        if (from_.ligature != to_.ligature) last("\\CocoaLigature", to_.ligature);
        if (from_.highlighted == to_.highlighted && from_.highlightScheme == to_.highlightScheme) return;
        last("\\AppleHighlight", to_.highlighted ? -1 : 0);
        last("\\AppleHilightClrSch", to_.highlightScheme);
    }

  private:
    void number(std::string_view name, std::int64_t value) { out_.word(name, value); }
    // The last word before text or another group of words: a blank ends it.
    void last(std::string_view name, std::integral auto value) {
        out_.word(name, static_cast<std::int64_t>(value));
        out_.raw(' ');
    }

    const RTFCharacterState& from_;
    const RTFCharacterState& to_;
    RTFOutput& out_;
};

} // namespace

void writeCharacterChange(const RTFCharacterState& from, const RTFCharacterState& to, bool repeatsColor,
                          const RTFFontTable& fonts, RTFOutput& out) {
    ChangeWriter change(from, to, out);
    change.font(fonts);
    change.colors(repeatsColor);
    change.kern();
    change.position();
    change.underline();
    change.strikethrough();
    change.stroke();
    change.shadow();
    change.rest();
}

} // namespace platform
