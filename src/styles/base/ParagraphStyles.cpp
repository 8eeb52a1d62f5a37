#include "styles/base/ParagraphStyles.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "platform/base/UTF16.h"
#include "platform/graphics/Font.h"

namespace quillet {

using platform::ParagraphStyle;

namespace {

constexpr double kMarkerLocation = 11;
constexpr double kListIndent = 36;
constexpr double kLastReplacedTab = 56; // default tab stops up to here make room for the list's own

constexpr double ParagraphStyle::* kLineSpacing[] = {
    &ParagraphStyle::lineHeightMultiple,     &ParagraphStyle::lineSpacing,       &ParagraphStyle::paragraphSpacing,
    &ParagraphStyle::paragraphSpacingBefore, &ParagraphStyle::minimumLineHeight, &ParagraphStyle::maximumLineHeight,
};

} // namespace

ParagraphStyle listParagraphStyle() {
    ParagraphStyle style = *ParagraphStyle::defaultParagraphStyle();
    std::erase_if(style.tabStops, [](const platform::TextTab& tab) { return tab.location <= kLastReplacedTab; });
    using platform::TextAlignment;
    style.tabStops.insert(style.tabStops.begin(),
                          {{TextAlignment::natural, kMarkerLocation}, {TextAlignment::natural, kListIndent}});
    style.defaultTabInterval = kListIndent;
    style.firstLineHeadIndent = 0;
    style.headIndent = kListIndent;
    return style;
}

std::u16string listMarkerForListStyle(ListStyle listStyle, std::int64_t itemNumber) {
    switch (listStyle) {
    case ListStyle::bullet:
        return u"\t\u2022\t";
    case ListStyle::hyphen:
        return u"\t\u2043\t";
    case ListStyle::numbered:
        return u"\t" + platform::utf16FromUTF8(std::to_string(itemNumber)) + u".\t";
    case ListStyle::none:
        break;
    }
    return {};
}

bool isListParagraphStyle(const ParagraphStyle& style) {
    const double firstTab = style.tabStops.empty() ? 0 : style.tabStops.front().location;
    if (style.firstLineHeadIndent == 0 && style.headIndent == kListIndent && firstTab == kMarkerLocation) return true;
    return style.headIndent - style.firstLineHeadIndent == kListIndent;
}

bool lineSpacingMatchesStyle(const ParagraphStyle& style, const ParagraphStyle& other) {
    return std::ranges::none_of(kLineSpacing, [&](double ParagraphStyle::* property) {
        return std::abs(style.*property - other.*property) > std::numeric_limits<double>::epsilon();
    });
}

void applyLineSpacingFromStyle(ParagraphStyle& style, const ParagraphStyle& source) {
    for (const auto property : kLineSpacing) style.*property = source.*property;
}

bool isEqualToParagraphStyle(const ParagraphStyle& style, const ParagraphStyle& other) {
    return style.alignment == other.alignment && lineSpacingMatchesStyle(style, other);
}

ParagraphStyle scaledParagraphStyle(const ParagraphStyle& style, double scale) {
    ParagraphStyle scaled = style;
    for (const auto property : kLineSpacing)
        if (property != &ParagraphStyle::lineHeightMultiple) scaled.*property *= scale;
    return scaled;
}

double lineHeight(double ascender, double descender, double leading) {
    return std::ceil(static_cast<float>(ascender + std::abs(descender) + leading));
}

double lineHeight(const platform::Font& font) {
    return lineHeight(font.ascender(), font.descender(), font.leading());
}

} // namespace quillet
