// One style: its properties, and how text and style are held against each other.
#include "styles/QLTNoteTextStyle.h"

#include <algorithm>
#include <array>

#include "platform/base/UTF16.h"
#include "platform/foundation/StringTable.h"
#include "platform/foundation/UUID.h"
#include "richtext/highlights/Highlights.h"
#include "styles/StandardStyles.h"
#include "styles/base/Colors.h"
#include "styles/base/ParagraphStyles.h"

namespace quillet {

using platform::AttributeName;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::Color;
using platform::Font;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;

namespace {

constexpr double kUserFontSize = 12;

bool followsAppearance(const Color& color) {
    return isBlackColor(color) || isWhiteColor(color);
}

bool contains(std::span<const AttributeName> names, AttributeName name) {
    return std::ranges::find(names, name) != names.end();
}

// An absent value removes the entry.
AttributeSet withValueOf(const AttributeSet& set, AttributeName name, const AttributeSet& source) {
    const AttributeValue* value = source.find(name);
    return value ? set.with(name, *value) : set.without(name);
}

std::int64_t integerOf(const AttributeSet& attributes, AttributeName name) {
    const AttributeValue* value = attributes.find(name);
    return value ? platform::integerValue(*value) : 0;
}

// A paragraph style of the text against the style's own: as a whole for styles of paragraphs, else line spacing alone.
bool paragraphStylesMatch(const AttributeValue& own, const AttributeValue& ofText, bool asAWhole) {
    const auto* a = std::get_if<ParagraphStyleReference>(&own);
    const auto* b = std::get_if<ParagraphStyleReference>(&ofText);
    if (!a || !b || !*a || !*b) return false;
    return asAWhole ? **a == **b : lineSpacingMatchesStyle(**a, **b);
}

} // namespace

QLTNoteTextStyle::QLTNoteTextStyle(const QLTNoteTextStyle& other)
    : applyToParagraph_(other.applyToParagraph_), resetOnNewLine_(other.resetOnNewLine_),
      foregroundColor_(other.foregroundColor_), name_(other.name_), type_(other.type_),
      paragraphStyle_(other.paragraphStyle_), underlineStyle_(other.underlineStyle_),
      strikethrough_(other.strikethrough_), font_(other.font_), customStyleIdentifier_(other.customStyleIdentifier_) {}

void QLTNoteTextStyle::setType(std::int64_t type) {
    if (type == type_) return;
    type_ = type;
    if (type == kCustomType && !customStyleIdentifier_)
        customStyleIdentifier_ = platform::utf16FromUTF8(platform::UUID::random().string());
}

std::optional<std::u16string> QLTNoteTextStyle::identifier() const {
    const StandardStyle* const standard = standardStyleOfType(type_);
    if (standard) return std::u16string(standard->identifier);
    return customStyleIdentifier_;
}

void QLTNoteTextStyle::setCustomStyleIdentifier(std::optional<std::u16string> identifier) {
    customStyleIdentifier_ = std::move(identifier);
}

std::optional<std::u16string> QLTNoteTextStyle::name() const {
    const StandardStyle* const standard = standardStyleOfType(type_);
    if (standard) return platform::utf16FromUTF8(platform::localizedString(standard->displayName));
    return name_;
}

Font QLTNoteTextStyle::font() const {
    return font_ ? *font_ : Font::userFont(kUserFontSize);
}

void QLTNoteTextStyle::setFontName(std::string_view fontName) {
    font_ = Font::named(fontName, fontSize());
}

void QLTNoteTextStyle::setFontSize(double fontSize) {
    font_ = Font::named(fontName(), fontSize);
}

const ParagraphStyleReference& QLTNoteTextStyle::paragraphStyle() const {
    return paragraphStyle_ ? paragraphStyle_ : ParagraphStyle::defaultParagraphStyle();
}

Color QLTNoteTextStyle::foregroundColor() const {
    // A stored color can have become black or white since: a catalog color follows the appearance.
    if (!foregroundColor_ || followsAppearance(*foregroundColor_)) return standardForegroundColor();
    return *foregroundColor_;
}

void QLTNoteTextStyle::setForegroundColor(const std::optional<Color>& color) {
    foregroundColor_ = color && !followsAppearance(*color) ? color : std::nullopt;
}

QLTNoteTextStyle::AttributeNames QLTNoteTextStyle::otherAllowedAttributeNames() const {
    if (otherAllowedAttributeNames_) return *otherAllowedAttributeNames_;
    AttributeNames names{platform::kBackgroundColorAttributeName,  platform::kLigatureAttributeName,
                         platform::kAttachmentAttributeName,       platform::kLinkAttributeName,
                         platform::kWritingDirectionAttributeName, platform::kVerticalGlyphFormAttributeName};
    if (!applyToParagraph_) names.push_back(platform::kParagraphStyleAttributeName);
    names.push_back(QLTNoteTextStyleIdentifierKey);
    return names;
}

void QLTNoteTextStyle::setOtherAllowedAttributeNames(std::optional<AttributeNames> names) {
    otherAllowedAttributeNames_ = std::move(names);
}

AttributeSet QLTNoteTextStyle::attributes() const {
    std::vector<AttributeSet::Entry> entries{{platform::kFontAttributeName, font()},
                                             {platform::kParagraphStyleAttributeName, paragraphStyle()},
                                             {platform::kForegroundColorAttributeName, foregroundColor()},
                                             {platform::kUnderlineStyleAttributeName, underlineStyle_},
                                             {platform::kStrikethroughStyleAttributeName, strikethrough_}};
    if (auto own = identifier()) entries.emplace_back(QLTNoteTextStyleIdentifierKey, *std::move(own));
    return AttributeSet(std::move(entries));
}

bool QLTNoteTextStyle::matchesAttributes(const AttributeSet& attributes) const {
    return matchesAttributes(attributes, otherAllowedAttributeNames());
}

bool QLTNoteTextStyle::matchesAttributes(const AttributeSet& attributes, std::span<const AttributeName> ignored) const {
    const auto counts = [&](const AttributeSet::Entry& entry) { return !contains(ignored, entry.first); };
    if (std::ranges::none_of(attributes.entries(), counts)) return false;
    const AttributeSet own = this->attributes();
    return std::ranges::all_of(own.entries(), [&](const AttributeSet::Entry& entry) {
        const auto& [name, value] = entry;
        const AttributeValue* const ofText = attributes.find(name);
        if (!ofText || !counts(entry)) return true;
        if (name == platform::kParagraphStyleAttributeName)
            return paragraphStylesMatch(value, *ofText, applyToParagraph_);
        if (name == platform::kUnderlineStyleAttributeName || name == platform::kStrikethroughStyleAttributeName)
            return platform::integerValue(value) == platform::integerValue(*ofText);
        return platform::equalAttributeValues(value, *ofText);
    });
}

bool QLTNoteTextStyle::matchesStyle(const QLTNoteTextStyle& style) const {
    return matchesAttributes(style.attributes(), {});
}

AttributeSet QLTNoteTextStyle::attributesWithOtherAttributes(const AttributeSet& attributes) const {
    AttributeSet result = this->attributes();
    if (integerOf(attributes, QLTHighlightTextAttributeName) >= 1) // a highlight brings its own colors
        for (const AttributeName name : {platform::kForegroundColorAttributeName,
                                         platform::kBackgroundColorAttributeName, QLTHighlightTextAttributeName})
            result = withValueOf(result, name, attributes);
    const AttributeNames allowed = otherAllowedAttributeNames();
    for (const auto& [name, value] : attributes.entries())
        if (contains(allowed, name)) result = result.with(name, value);
    if (applyToParagraph_) return result;

    const auto* ofText = attributes.find<ParagraphStyleReference>(platform::kParagraphStyleAttributeName);
    if (!ofText || !*ofText) return result;
    auto spaced = std::make_shared<ParagraphStyle>(**ofText);
    applyLineSpacingFromStyle(*spaced, *paragraphStyle());
    return result.with(platform::kParagraphStyleAttributeName, ParagraphStyleReference(std::move(spaced)));
}

bool QLTNoteTextStyle::shouldSaveToDefaults() const {
    if (type_ == kCustomType) return true;
    const Reference factory = defaultStyleForType(type_);
    return factory && !matchesStyle(*factory);
}

QLTNoteTextStyle::Reference QLTNoteTextStyle::customStyleFromAttributes(const AttributeSet& attributes) {
    auto style = std::make_shared<QLTNoteTextStyle>();
    style->setName(platform::utf16FromUTF8(platform::localizedString("New Style")));
    style->setType(kCustomType);
    if (const auto* font = attributes.find<Font>(platform::kFontAttributeName)) style->setFont(*font);
    if (const auto* paragraph = attributes.find<ParagraphStyleReference>(platform::kParagraphStyleAttributeName))
        style->setParagraphStyle(*paragraph);
    if (const auto* color = attributes.find<Color>(platform::kForegroundColorAttributeName))
        style->setForegroundColor(*color);
    style->setUnderlineStyle(integerOf(attributes, platform::kUnderlineStyleAttributeName));
    style->setStrikethrough(integerOf(attributes, platform::kStrikethroughStyleAttributeName));
    return style;
}

double QLTNoteTextStyle::scaleFactorForNoteTextSize(std::int64_t textSize) {
    constexpr std::array<double, 4> kPointsOfSize{12, 13, 15, 17}; // from 1
    constexpr double kBasePoints = 12, kSmallScale = 0.875;
    if (textSize < 1 || textSize > static_cast<std::int64_t>(kPointsOfSize.size())) return kSmallScale;
    return kPointsOfSize[static_cast<std::size_t>(textSize - 1)] / kBasePoints;
}

} // namespace quillet
