// Each conversion is one pass over the runs. Where a rule speaks of one attribute's longest runs, the values are
// equal over such a run, so looking at every run of equal attribute sets comes to the same; only the background rule
// of the web clean-up depends on where the longest run begins, and walks those.
#include "richtext/highlights/Highlights.h"

#include <string_view>
#include <vector>

#include "platform/text/AttributedString.h"
#include "styles/base/Colors.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::Color;
using platform::Range;

namespace {

// By type, from 1.
constexpr std::u16string_view kColorSchemes[] = {
    u"NSTextHighlightColorSchemeOrange", u"NSTextHighlightColorSchemeMint",   u"NSTextHighlightColorSchemeBlue",
    u"NSTextHighlightColorSchemePink",   u"NSTextHighlightColorSchemePurple",
};

std::uint64_t typeForColorScheme(std::u16string_view scheme) {
    for (std::size_t i = 0; i < std::size(kColorSchemes); ++i)
        if (kColorSchemes[i] == scheme) return i + 1;
    return 1;
}

std::u16string colorSchemeForType(std::int64_t type) {
    const auto index = static_cast<std::uint64_t>(type) - 1;
    return std::u16string(index < std::size(kColorSchemes) ? kColorSchemes[index] : kTextHighlightColorSchemeDefault);
}

AttributeSet::Reference shared(AttributeSet set) {
    return std::make_shared<const AttributeSet>(std::move(set));
}

// What the note's highlight of each type adds to a run.
const AttributeSet& highlightAttributes(std::uint64_t type) {
    static const std::vector<AttributeSet> sets = [] {
        std::vector<AttributeSet> made;
        for (const HighlightColorType each : allHighlightColorTypes) {
            const Color color = *colorForHighlightColorType(each);
            made.push_back({{platform::kBackgroundColorAttributeName, highlightBackgroundColor(color)},
                            {platform::kForegroundColorAttributeName, highlightForegroundColor(color)},
                            {QLTHighlightTextAttributeName, static_cast<std::int64_t>(each)}});
        }
        return made;
    }();
    return sets[type - 1];
}

} // namespace

bool isHighlight(const AttributeValue* value) {
    return value && platform::doubleValue(*value) != 0;
}

void convertNSTextHighlightsToQuilletHighlights(AttributedString& text) {
    text.mapAttributes([](const AttributeSet::Reference& set) {
        const auto* style = set->find<std::u16string>(platform::kTextHighlightStyleAttributeName);
        const AttributeValue* scheme = set->find(platform::kTextHighlightColorSchemeAttributeName);
        if (!style || *style != kTextHighlightStyleDefault || !scheme) return set;
        const auto* name = std::get_if<std::u16string>(scheme);
        return shared(set->merging(highlightAttributes(name ? typeForColorScheme(*name) : 1)));
    });
}

void convertQuilletHighlightsToNSTextHighlights(AttributedString& text) {
    text.mapAttributes([](const AttributeSet::Reference& set) {
        const AttributeValue* value = set->find(QLTHighlightTextAttributeName);
        if (!isHighlight(value)) return set;
        const AttributeSet highlight{
            {platform::kTextHighlightStyleAttributeName, std::u16string(kTextHighlightStyleDefault)},
            {platform::kTextHighlightColorSchemeAttributeName, colorSchemeForType(platform::integerValue(*value))}};
        return shared(set->without(platform::kForegroundColorAttributeName)
                          .without(platform::kBackgroundColorAttributeName)
                          .without(QLTHighlightTextAttributeName)
                          .merging(highlight));
    });
}

void convertToDynamicColors(AttributedString& text) {
    const Color black = Color::black(), dynamic = Color::textColor();
    text.mapAttributes([&](const AttributeSet::Reference& set) {
        const auto* color = set->find<Color>(platform::kForegroundColorAttributeName);
        if (color && !isEqualToColorQLTVersion(*color, black)) return set;
        return shared(set->with(platform::kForegroundColorAttributeName, dynamic));
    });
}

void convertFromDynamicColors(AttributedString& text) {
    const Color black = Color::black(), dynamic = Color::textColor();
    text.mapAttributes([&](const AttributeSet::Reference& set) {
        const auto* color = set->find<Color>(platform::kForegroundColorAttributeName);
        if (!color || !isEqualToColorQLTVersion(*color, dynamic)) return set;
        return shared(set->with(platform::kForegroundColorAttributeName, black));
    });
}

void cleanupTextColorsInRange(AttributedString& text, Range range) {
    std::vector<Range> highlighted; // background runs that begin on a highlight
    text.enumerateAttribute(platform::kBackgroundColorAttributeName, range, [&](const AttributeValue*, Range run) {
        if (isHighlight(text.attributeAt(QLTHighlightTextAttributeName, run.location))) highlighted.push_back(run);
        return true;
    });
    const Color label = Color::labelColor();
    auto next = highlighted.begin();
    text.transformAttributes(range, [&](const AttributeSet::Reference& set, Range run) {
        while (next != highlighted.end() && next->end() <= run.location) ++next;
        const AttributeSet labelled = set->with(platform::kForegroundColorAttributeName, label);
        if (next != highlighted.end() && next->contains(run.location)) return shared(labelled);
        return shared(labelled.without(platform::kBackgroundColorAttributeName));
    });
}

} // namespace quillet
