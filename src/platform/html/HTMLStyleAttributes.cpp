#include "platform/html/HTMLStyleAttributes.h"

#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

namespace {

constexpr double kLayoutWidth = 784; // of the page's content; what percentages of paragraphs count of
constexpr double kTabInterval = 36;  // points

struct GenericFamily {
    std::string_view name, family;
};

constexpr auto kGenericFamilies = std::to_array<GenericFamily>({
    {"serif", "Times"},
    {"sans-serif", "Helvetica"},
    {"monospace", "Courier"},
    {"cursive", "Apple Chancery"},
    {"fantasy", "Papyrus"},
    {"system-ui", ".SFNS-Regular"},
    {"-apple-system", ".SFNS-Regular"},
    {"ui-sans-serif", ".SFNS-Regular"},
    {"blinkmacsystemfont", ".SFNS-Regular"},
});

// Near a half or a tenth of a point is that; everything else stays.
double roundedFontSize(double size) {
    const double half = std::round(size * 2) / 2, tenth = std::round(size * 10) / 10;
    if (std::abs(size - half) <= 0.05 + 1e-9) return half;
    if (std::abs(size - tenth) <= 0.005 + 1e-9) return tenth;
    return size;
}

// To a thousandth: what arithmetic leaves behind that is no length.
double roundedLength(double points) {
    constexpr double kSteps = 1000;
    return std::round(points * kSteps) / kSteps;
}

int fontManagerWeight(double cssWeight) {
    constexpr int kBold = 9, kMedium = 6, kRegular = 5, kLight = 3, kUltraLight = 1;
    if (cssWeight >= 600) return kBold;
    if (cssWeight >= 500) return kMedium;
    if (cssWeight >= 400) return kRegular;
    return cssWeight >= 200 ? kLight : kUltraLight;
}

double resolved(const CssLength& length) {
    return length.isPercentage ? length.value / 100 * kLayoutWidth : length.value;
}

bool isBlack(const CssRGBA& color) {
    return color == CssRGBA{0, 0, 0, 1};
}

TextAlignment alignmentOf(const CssStyle& style) {
    switch (style.textAlign) {
    case CssTextAlign::left:
        return TextAlignment::left;
    case CssTextAlign::right:
        return TextAlignment::right;
    case CssTextAlign::center:
        return TextAlignment::center;
    case CssTextAlign::justify:
        return TextAlignment::justified;
    case CssTextAlign::end:
        return style.direction == CssDirection::rtl ? TextAlignment::left : TextAlignment::right;
    default:
        return TextAlignment::natural;
    }
}

bool carriesMargins(HTMLTag tag) {
    return tag == HTMLTag::p || tag == HTMLTag::li || tag == HTMLTag::blockquote || headingLevel(tag) != 0;
}

// Whether nothing of a set shows through another one that is laid over it.
bool hides(const AttributeSet& over, const AttributeSet& under) {
    auto next = under.entries().begin();
    const auto end = under.entries().end();
    for (const AttributeSet::Entry& entry : over.entries()) // both in the order of their names
        if (next != end && next->first == entry.first) ++next;
    return next == end;
}

} // namespace

Color colorFromCss(const CssRGBA& color) {
    return Color::sRGB(color.red, color.green, color.blue, color.alpha);
}

int headingLevel(HTMLTag tag) {
    if (tag < HTMLTag::h1 || tag > HTMLTag::h6) return 0;
    return static_cast<int>(tag) - static_cast<int>(HTMLTag::h1) + 1;
}

Font fontForStyle(const CssStyle& style) {
    const double size = roundedFontSize(style.fontSize);
    constexpr double kBoldFrom = 600;
    std::uint32_t traits = style.isItalic ? std::uint32_t{kItalicFontTrait} : 0;
    if (style.fontWeight >= kBoldFrom) traits |= kBoldFontTrait;
    const int weight = fontManagerWeight(style.fontWeight);
    if (style.families)
        for (const std::string& name : *style.families) {
            std::string_view family = name;
            const std::string lower = asciiLowerCase(name);
            for (const GenericFamily& generic : kGenericFamilies)
                if (generic.name == lower) family = generic.family;
            if (const auto font = fontWithFamily(family, traits, weight, size)) return *font;
        }
    return fontWithFamily("Times", traits, weight, size).value_or(Font("Times-Roman", size));
}

// Elements differ in color more often than in font, and a font is looked up by name.
const Font& HTMLStyleAttributes::font(const CssStyle& style) {
    const FontChoice choice{style.families, style.fontSize, style.fontWeight, style.isItalic};
    for (const auto& known : fonts_)
        if (known && known->first == choice) return known->second;
    auto& made = fonts_[nextFont_++ % fonts_.size()];
    made.emplace(choice, fontForStyle(style));
    return made->second;
}

AttributeSet HTMLStyleAttributes::madeCharacters(const CssStyle& style, HTMLTag tag) {
    constexpr std::size_t kMostEntries = 8; // with few exceptions
    static const auto& black = *new Color(colorFromCss({0, 0, 0, 1}));
    std::vector<AttributeSet::Entry> entries; // in the order of their names
    entries.reserve(kMostEntries);
    const auto add = [&entries](AttributeName name, auto&& value) {
        entries.emplace_back(name, std::forward<decltype(value)>(value));
    };
    const Color color = isBlack(style.color) ? black : colorFromCss(style.color);
    const bool ownsBackground = tag != HTMLTag::html && tag != HTMLTag::body && style.display < CssDisplay::table;
    if (ownsBackground && style.background.alpha > 0)
        add(kBackgroundColorAttributeName, colorFromCss(style.background));
    if (style.verticalAlign == CssVerticalAlign::length && style.verticalOffset != 0)
        add(kBaselineOffsetAttributeName, roundedLength(style.verticalOffset));
    // Black, the color of text that says nothing, is not said.
    if (!isBlack(style.color) && style.color.alpha > 0) add(kForegroundColorAttributeName, color);
    add(kFontAttributeName, font(style));
    add(kKernAttributeName, 0.0);
    if (style.ligatures != 0) add(kLigatureAttributeName, std::int64_t{style.ligatures == 1 ? 1 : 0});
    if (style.shadow) {
        constexpr double kAlphaUnit = 255; // the platform takes the alpha for a byte
        CssRGBA shade = style.shadow->color;
        shade.alpha /= kAlphaUnit;
        add(kShadowAttributeName, Shadow{style.shadow->x, -style.shadow->y, style.shadow->blur, colorFromCss(shade)});
    }
    if (style.decoration & kCssLineThrough) add(kStrikethroughStyleAttributeName, std::int64_t{1});
    add(kStrokeColorAttributeName, color);
    add(kStrokeWidthAttributeName, 0.0);
    if (style.verticalAlign == CssVerticalAlign::super) add(kSuperscriptAttributeName, std::int64_t{1});
    if (style.verticalAlign == CssVerticalAlign::sub) add(kSuperscriptAttributeName, std::int64_t{-1});
    if (style.decoration & kCssUnderline) add(kUnderlineStyleAttributeName, std::int64_t{1});
    return AttributeSet(std::move(entries));
}

HTMLStyleAttributes::Characters HTMLStyleAttributes::characters(const CssStyle& style, HTMLTag tag,
                                                                const AttributeSet* outer) {
    if (style.number >= characters_.size()) characters_.resize(style.number + 1);
    Characters& made = characters_[style.number];
    if (made.own) return made;
    made.own = shared(madeCharacters(style, tag));
    made.united = !outer || hides(*made.own, *outer) ? made.own : shared(outer->merging(*made.own));
    return made;
}

// A list's level replaces its paragraphs' own indents.
const HTMLStyleAttributes::Look* HTMLStyleAttributes::look(const CssStyle& block, HTMLTag tag, bool isInList) {
    if (block.number >= looks_.size()) looks_.resize(block.number + 1);
    const Look*& found = looks_[block.number][isInList ? 1 : 0]; // a style is of one element name
    if (found) return found;
    Look look;
    look.alignment = alignmentOf(block);
    if (block.direction == CssDirection::rtl) look.direction = WritingDirection::rightToLeft;
    look.headerLevel = headingLevel(tag);
    look.hyphenates = block.hyphenates;
    if (carriesMargins(tag)) {
        const double left = resolved(block.margin[3]), right = resolved(block.margin[1]),
                     bottom = resolved(block.margin[2]), indent = resolved(block.textIndent);
        // Only the second and later lines are indented by a margin alone.
        if (left > 0 && !isInList) look.headIndent = roundedLength(left);
        if (indent > 0 && !isInList) look.firstLineHeadIndent = roundedLength(look.headIndent + indent);
        if (right > 0) look.tailIndent = -roundedLength(right);
        if (bottom > 0) look.paragraphSpacing = roundedLength(bottom);
    }
    return found = &*distinctLooks_.insert(look).first;
}

const ParagraphStyleReference& HTMLStyleAttributes::paragraph(const Look& look) {
    ParagraphStyleReference& made = paragraphs_[&look];
    if (made) return made;
    return made =
               std::make_shared<const ParagraphStyle>(ParagraphStyle{.alignment = look.alignment,
                                                                     .baseWritingDirection = look.direction,
                                                                     .headerLevel = look.headerLevel,
                                                                     .firstLineHeadIndent = look.firstLineHeadIndent,
                                                                     .headIndent = look.headIndent,
                                                                     .tailIndent = look.tailIndent,
                                                                     .paragraphSpacing = look.paragraphSpacing,
                                                                     .defaultTabInterval = kTabInterval,
                                                                     .hyphenationFactor = look.hyphenates ? 1.0F : 0.0F,
                                                                     .tabStops = {},
                                                                     .textLists = {},
                                                                     .textBlocks = {}});
}

const AttributeSet::Reference& HTMLStyleAttributes::complete(const AttributeSet* characters, const Look& look) {
    AttributeSet::Reference& made = complete_[{&look, characters}];
    if (made) return made;
    return made = std::make_shared<const AttributeSet>(characters->with(kParagraphStyleAttributeName, paragraph(look)));
}

} // namespace platform
