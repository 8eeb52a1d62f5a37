#include "styles/StandardStyles.h"

#include <algorithm>
#include <memory>

#include "platform/foundation/StringTable.h"
#include "styles/QLTNoteTextStyle.h"

namespace quillet {

namespace {

using Style = QLTNoteTextStyle;
using platform::localizable;

constexpr std::string_view kTextFamily = "Helvetica Neue", kCodeFamily = "Menlo";

// clang-format off
constexpr StandardStyle kStandardStyles[] = {
    {Style::kTitleType, u"QLTNoteStyleIdentifierTitle", localizable("Title"),
     1, kTextFamily, true, 17, 0, 0, false, true, true},
    {Style::kHeadingType, u"QLTNoteStyleIdentifierHeading", localizable("Heading"),
     2, kTextFamily, true, 14, 2, 0, false, true, true},
    {Style::kSubheadingType, u"QLTNoteStyleIdentifierSubheading", localizable("Subheading"),
     3, kTextFamily, true, 13, 2, 0, false, true, true},
    {Style::kBodyType, u"QLTNoteStyleIdentifierBody", localizable("Body"),
     0, kTextFamily, false, 12, 0, 0, true, false, false},
    {Style::kMonospacedType, u"QLTNoteStyleIdentifierMonospace", localizable("Monospaced"),
     0, kCodeFamily, false, 12, 0, 1, false, false, false},
};
// clang-format on

platform::ParagraphStyleReference factoryParagraphStyle(const StandardStyle& standard) {
    auto style = std::make_shared<platform::ParagraphStyle>(*platform::ParagraphStyle::defaultParagraphStyle());
    style->headerLevel = standard.headerLevel;
    style->paragraphSpacing = standard.paragraphSpacing;
    style->lineSpacing = standard.lineSpacing;
    if (standard.tabIntervalOfFirstTab) style->defaultTabInterval = style->tabStops.front().location;
    return style;
}

std::optional<platform::Font> factoryFont(const StandardStyle& standard) {
    constexpr int kRegularWeight = 5, kBoldWeight = 9;
    return platform::fontWithFamily(standard.fontFamily, standard.bold ? std::uint32_t{platform::kBoldFontTrait} : 0,
                                    standard.bold ? kBoldWeight : kRegularWeight, standard.fontSize);
}

} // namespace

std::span<const StandardStyle> standardStyleTable() {
    return kStandardStyles;
}

const StandardStyle* standardStyleOfType(std::int64_t type) {
    const auto* const found = std::ranges::find(kStandardStyles, type, &StandardStyle::type);
    return found == std::end(kStandardStyles) ? nullptr : found;
}

QLTNoteTextStyle::Reference QLTNoteTextStyle::defaultStyleForType(std::int64_t type) {
    const StandardStyle* const standard = standardStyleOfType(type);
    if (!standard) return nullptr;
    auto style = std::make_shared<QLTNoteTextStyle>();
    style->setType(type);
    style->setFont(factoryFont(*standard));
    style->setParagraphStyle(factoryParagraphStyle(*standard));
    style->setApplyToParagraph(standard->applyToParagraph);
    style->setResetOnNewLine(standard->resetOnNewLine);
    return style;
}

} // namespace quillet
