#include "platform/rtf/RTFParagraphWords.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFTableRows.h"
#include "platform/rtf/RTFTables.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

constexpr double kLargestTwips = 1e8;

std::int64_t twips(double points) {
    if (std::isnan(points)) return 0;
    return std::llround(std::clamp(points * kTwipsAPoint, -kLargestTwips, kLargestTwips));
}

void wordUnlessZero(std::string_view name, std::int64_t number, RTFOutput& out) {
    if (number != 0) out.word(name, number);
}

void writeTabs(const std::vector<TextTab>& tabs, RTFOutput& out) {
    for (const TextTab& tab : tabs) {
        if (tab.decimal)
            out.raw("\\tqdec");
        else if (tab.alignment == TextAlignment::right)
            out.raw("\\tqr");
        else if (tab.alignment == TextAlignment::center)
            out.raw("\\tqc");
        out.word("\\tx", twips(tab.location));
    }
}

void writeIndents(const ParagraphStyle& style, RTFOutput& out) {
    const std::int64_t head = twips(style.headIndent);
    wordUnlessZero("\\li", head, out);
    wordUnlessZero("\\fi", twips(style.firstLineHeadIndent) - head, out);
    // RTF knows the distance from the right edge only.
    if (style.tailIndent < 0) wordUnlessZero("\\ri", -twips(style.tailIndent), out);
}

void writeSpacing(const ParagraphStyle& style, RTFOutput& out) {
    constexpr double kLineUnits = 240;
    const std::int64_t lowest = twips(style.minimumLineHeight), highest = twips(style.maximumLineHeight);
    if (style.lineHeightMultiple > 0) {
        out.word("\\sl", std::llround(std::min(style.lineHeightMultiple * kLineUnits, kLargestTwips)));
        out.raw("\\slmult1");
    }
    if (lowest == highest && style.lineHeightMultiple <= 0) {
        wordUnlessZero("\\sl", -highest, out); // a negative height is an exact one
    } else {
        wordUnlessZero("\\slminimum", lowest, out);
        wordUnlessZero("\\slmaximum", highest, out);
    }
    wordUnlessZero("\\slleading", twips(style.lineSpacing), out);
    wordUnlessZero("\\sb", twips(style.paragraphSpacingBefore), out);
    wordUnlessZero("\\sa", twips(style.paragraphSpacing), out);
}

void writeDirection(const ParagraphStyle& style, RTFOutput& out) {
    if (style.baseWritingDirection == WritingDirection::natural) out.raw("\\pardirnatural");
    if (style.baseWritingDirection == WritingDirection::rightToLeft) out.raw("\\rtlpar");
    if (style.alignment == TextAlignment::center) out.raw("\\qc");
    if (style.alignment == TextAlignment::right) out.raw("\\qr");
    if (style.alignment == TextAlignment::justified) out.raw("\\qj");
}

} // namespace

const std::string& RTFParagraphWords::tabWordsFor(const std::vector<TextTab>& tabs) {
    for (const TabWords& known : tabWords_)
        if (known.tabs == tabs) return known.words;
    RTFOutput out;
    writeTabs(tabs, out);
    TabWords& replaced = tabWords_[nextTabWords_++ % tabWords_.size()];
    replaced = {tabs, std::move(out.string())};
    return replaced.words;
}

const std::string& RTFParagraphWords::wordsFor(const ParagraphStyle& style) {
    const auto [place, added] = words_.try_emplace(&style);
    if (!added) return place->second;
    constexpr std::size_t kUsualSize = 192;
    RTFOutput out;
    out.string().reserve(kUsualSize);
    out.raw("\\pard");
    if (const std::size_t depth = tableDepth(style); depth > 0)
        out.word("\\intbl\\itap", static_cast<std::int64_t>(depth));
    out.raw(tabWordsFor(style.tabStops));
    wordUnlessZero("\\pardeftab", twips(style.defaultTabInterval), out);
    writeIndents(style, out);
    writeSpacing(style, out);
    writeDirection(style, out);
    out.raw(style.allowsDefaultTighteningForTruncation ? "\\partightenfactor200" : "\\partightenfactor0");
    wordUnlessZero("\\parhyphenfactor", std::llround(std::clamp(style.hyphenationFactor, 0.0F, 1.0F) * 100), out);
    out.raw('\n');
    if (!style.textLists.empty()) {
        const RTFListPlace at = lists_.placeOf(style.textLists);
        out.word("\\ls", static_cast<std::int64_t>(at.list));
        out.word("\\ilvl", static_cast<std::int64_t>(at.level));
    }
    place->second = std::move(out.string());
    return place->second;
}

} // namespace platform
