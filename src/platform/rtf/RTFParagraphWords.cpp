#include "platform/rtf/RTFParagraphWords.h"

#include <algorithm>
#include <cmath>

#include "platform/rtf/RTFTableRows.h"
#include "platform/rtf/RTFTables.h"
#include "platform/rtf/RTFVocabulary.h"

namespace platform {

namespace {

constexpr double kLargestTwips = 1e8;

std::int64_t twips(double points) {
    if (points == 0 || std::isnan(points)) return 0; // as most are
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

std::uint32_t RTFParagraphWords::numberFor(const ParagraphStyle& style) {
    return known_.numberOf(
        spreadHash(reinterpret_cast<std::uintptr_t>(&style)),
        [&](const KnownStyle& known) { return known.style == &style; },
        [&] {
            const std::size_t begin = words_.size();
            writeWords(style);
            return KnownStyle{&style, words_.partSince(begin)};
        });
}

void RTFParagraphWords::writeTabWords(const std::vector<TextTab>& tabs) {
    for (const KnownTabs& known : knownTabs_)
        if (known.tabs && *known.tabs == tabs) return words_.repeat(known.words);
    const std::size_t begin = words_.size();
    writeTabs(tabs, words_);
    knownTabs_[nextTabs_++ % knownTabs_.size()] = {&tabs, words_.partSince(begin)};
}

void RTFParagraphWords::writeWords(const ParagraphStyle& style) {
    words_.raw("\\pard");
    if (const std::size_t depth = tableDepth(style); depth > 0)
        words_.word("\\intbl\\itap", static_cast<std::int64_t>(depth));
    writeTabWords(style.tabStops);
    wordUnlessZero("\\pardeftab", twips(style.defaultTabInterval), words_);
    writeIndents(style, words_);
    writeSpacing(style, words_);
    writeDirection(style, words_);
    words_.raw(style.allowsDefaultTighteningForTruncation ? "\\partightenfactor200" : "\\partightenfactor0");
    wordUnlessZero("\\parhyphenfactor", std::llround(std::clamp(style.hyphenationFactor, 0.0F, 1.0F) * 100), words_);
    words_.raw('\n');
    if (style.textLists.empty()) return;
    const RTFListPlace at = lists_.placeOf(style.textLists);
    words_.word("\\ls", static_cast<std::int64_t>(at.list));
    words_.word("\\ilvl", static_cast<std::int64_t>(at.level));
}

} // namespace platform
