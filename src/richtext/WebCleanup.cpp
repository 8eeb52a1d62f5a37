#include "richtext/WebCleanup.h"

#include <cmath>
#include <memory>

#include "platform/defaults/UserDefaults.h"
#include "platform/graphics/Font.h"
#include "platform/text/AttributedString.h"
#include "richtext/ImportCleanup.h"
#include "richtext/highlights/Highlights.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::Font;
using platform::Range;

namespace {

// Page text is set larger than note text.
constexpr double kFontSizeFactor = 0.75;

// Gives each run that has a font another one; a run for which the body finds none keeps its own.
template<class NewFont>
void replaceFonts(AttributedString& text, Range range, NewFont newFont) {
    text.transformAttributes(range, [&](const AttributeSet::Reference& attributes, Range) {
        const Font* old = attributes->find<Font>(platform::kFontAttributeName);
        const std::optional<Font> font = old ? newFont(*old) : std::nullopt;
        if (!font || *font == *old) return attributes;
        return AttributeSet::Reference(
            std::make_shared<const AttributeSet>(attributes->with(platform::kFontAttributeName, *font)));
    });
}

} // namespace

void cleanupWebPageText(AttributedString& text) {
    const platform::UserDefaults& defaults = platform::UserDefaults::standard();
    cleanupTextFromWebPageInRange(text, {0, text.length()}, QLTNoteTextStyle::bodyNoteTextStyle()->font(),
                                  {.newlines = defaults.boolForKey(kCleanUpWebPageNewLinesKey),
                                   .sizes = defaults.boolForKey(kCleanUpWebPageFontSizesKey),
                                   .colors = defaults.boolForKey(kCleanUpWebPageColorsKey)});
}

void cleanupTextFromWebPageInRange(AttributedString& text, Range range, const std::optional<Font>& newFont,
                                   WebPageCleanups including) {
    if (including.newlines) range = cleanupHTMLNewlinesInRange(text, range);
    if (newFont) changeFont(text, *newFont, range);
    if (including.sizes) adjustWebPageFontSizesInRange(text, range);
    if (including.colors) cleanupTextColorsInRange(text, range);
}

void changeFont(AttributedString& text, const Font& font, Range range) {
    const std::string family = font.familyName();
    replaceFonts(text, range, [&](const Font& old) {
        return platform::fontWithFamily(family, old.traits(), old.weight(), old.pointSize());
    });
}

void adjustWebPageFontSizesInRange(AttributedString& text, Range range) {
    replaceFonts(text, range, [](const Font& old) {
        return std::optional(old.withSize(std::ceil(old.pointSize() * kFontSizeFactor)));
    });
}

} // namespace quillet
