// The table follows the word groups of the RTF 1.9.1 standard: characters, paragraphs, tabs, rows and cells, the
// document; words of the platform stand with their like.

#include "platform/rtf/RTFReadWords.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "platform/rtf/RTFVocabulary.h"
#include "platform/rtf/RTFWriter.h"

namespace platform {

namespace {

using Context = RTFWordContext;
using Number = std::int32_t;

struct WordRule {
    std::string_view name;
    void (*apply)(Context& context, Number number, Number value);
    Number value = 0;  // the rule's own
    Number absent = 1; // the number when the text gives none
};

constexpr Number kLargestLength = 1 << 24; // twips; more is a damaged text
constexpr std::size_t kMostTabs = 128, kMostCells = 1024;
constexpr Number kDefaultMilliPoints = 12000;

Number length(Number number) {
    return std::clamp(number, -kLargestLength, kLargestLength);
}

template<auto Member>
void characterNumber(Context& context, Number number, Number) {
    context.characters.*Member = length(number);
}
template<auto Member>
void characterFlag(Context& context, Number number, Number) {
    context.characters.*Member = number != 0;
}
template<auto Member>
void paragraphNumber(Context& context, Number number, Number) {
    context.paragraph.*Member = length(number);
}
template<auto Member>
void paragraphLength(Context& context, Number number, Number) {
    context.paragraph.style.*Member = length(number) / kTwipsAPoint;
}
template<auto Member>
void documentTwips(Context& context, Number number, Number) {
    context.document.*Member = length(number);
}

void plain(Context& context, Number, Number) {
    const std::size_t link = context.characters.link;
    context.characters = {};
    context.characters.font = context.document.defaultFont;
    context.characters.link = link;
}

void pard(Context& context, Number, Number) {
    context.paragraph = {};
}

void fontSize(Context& context, Number number, Number unit) {
    constexpr Number kLargest = 100'000'000;
    if (number > 0 && number <= kLargest / unit) context.characters.milliPoints = number * unit;
}

// \cb1 is the table's white, which the platform writes for "none".
void background(Context& context, Number number, Number) {
    context.characters.background = context.document.fromPlatform && number == 1 ? 0 : number;
}

void underline(Context& context, Number number, Number style) {
    context.characters.underline = number == 0 ? 0 : style;
}

void strike(Context& context, Number number, Number style) {
    if (number != 0)
        context.characters.strikethrough = style;
    else if (style == 1 || context.characters.strikethrough == style)
        context.characters.strikethrough = 0;
}

// Kern 0 is a kern of its own where \kerning0 says so; elsewhere the word means the size from which fonts kern.
void kerning(Context& context, Number number, Number) {
    context.characters.kernGiven = context.document.fromPlatform && number == 0;
}

void outline(Context& context, Number number, Number) {
    constexpr Number kUsualWidth = 60; // three percent
    context.characters.strokeWidth = number == 0 ? 0 : kUsualWidth;
}

void lineHeight(Context& context, Number number, Number) {
    context.paragraph.lineTwips = length(number);
    context.paragraph.lineIsMultiple = false;
}

void tabStop(Context& context, Number number, Number) {
    auto& tabs = context.paragraph.style.tabStops;
    context.paragraph.nextTab.location = length(number) / kTwipsAPoint;
    if (tabs.size() < kMostTabs) tabs.push_back(context.paragraph.nextTab);
    context.paragraph.nextTab = RTFReadParagraph::leftTab();
}

void alignment(Context& context, Number, Number value) {
    context.paragraph.style.alignment = static_cast<TextAlignment>(value);
}

void direction(Context& context, Number, Number value) {
    context.paragraph.style.baseWritingDirection = static_cast<WritingDirection>(value);
}

void beginRow(Context& context, Number, Number) {
    const bool nested = context.document.rowDepth > 1;
    context.document.row() = {};
    context.document.cell = {};
    context.document.borderEdge = -1;
    if (!nested) context.document.rows.resize(1);
}

void cellEdge(Context& context, Number number, Number) {
    RTFReadDocument& document = context.document;
    document.cell.right = length(number);
    if (document.row().cells.size() < kMostCells) document.row().cells.push_back(document.cell);
    document.cell = {};
    document.borderEdge = -1;
}

void cellVertical(Context& context, Number, Number value) {
    context.document.cell.block.verticalAlignment = static_cast<BlockVerticalAlignment>(value);
}

void cellBackground(Context& context, Number number, Number) {
    context.document.cell.block.backgroundColor = number > 0 ? context.colors.color(number) : std::nullopt;
}

void cellWidth(Context& context, Number number, Number) {
    context.document.cell.block.dimension(BlockDimension::width).value = length(number) / kTwipsAPoint;
}

constexpr Number kWidthPercent = 2, kWidthTwips = 3; // \clftsWidth

// The unit comes behind the width.
void cellWidthUnit(Context& context, Number number, Number) {
    BlockLength& width = context.document.cell.block.dimension(BlockDimension::width);
    if (number == kWidthPercent)
        width = {width.value * kTwipsAPoint / kPercentUnits, true};
    else if (number != kWidthTwips)
        width = {};
}

constexpr Number lengthValue(BlockLayer layer, BlockEdge edge) {
    return static_cast<Number>(layer) * 4 + static_cast<Number>(edge);
}

void cellLength(Context& context, Number number, Number value) {
    context.document.cell.block.width(static_cast<BlockLayer>(value / 4), static_cast<BlockEdge>(value % 4)).value =
        length(number) / kTwipsAPoint;
}

void borderEdge(Context& context, Number, Number value) {
    context.document.borderEdge = value;
}

double& borderWidth(Context& context) {
    return context.document.cell.block.width(BlockLayer::border, static_cast<BlockEdge>(context.document.borderEdge))
        .value;
}

// A border that is named has a width even before \brdrw says which.
void borderStyle(Context& context, Number, Number value) {
    constexpr double kUsualWidth = 0.75;
    if (context.document.borderEdge < 0) return;
    if (value == 0)
        borderWidth(context) = 0;
    else if (borderWidth(context) == 0)
        borderWidth(context) = kUsualWidth;
}

void borderWidthWord(Context& context, Number number, Number) {
    if (context.document.borderEdge >= 0) borderWidth(context) = length(number) / kTwipsAPoint;
}

void borderColor(Context& context, Number number, Number) {
    if (context.document.borderEdge < 0 || number <= 0) return;
    context.document.cell.block.borderColors[static_cast<std::size_t>(context.document.borderEdge)] =
        context.colors.color(number);
}

struct LengthAttribute {
    std::string_view key;
};
constexpr LengthAttribute kLengthAttributes[] = {
    {kLeftMarginDocumentAttribute},   {kRightMarginDocumentAttribute},        {kTopMarginDocumentAttribute},
    {kBottomMarginDocumentAttribute}, {kDefaultTabIntervalDocumentAttribute},
};

void documentLength(Context& context, Number number, Number value) {
    context.document.attributes.insert_or_assign(std::string(kLengthAttributes[static_cast<std::size_t>(value)].key),
                                                 Value(length(number) / kTwipsAPoint));
}

void platformVersion(Context& context, Number number, Number) {
    context.document.fromPlatform = true;
    context.document.attributes.insert_or_assign(std::string(kCocoaRTFVersionDocumentAttribute), Value(number));
}

using C = RTFReadCharacters;
using P = RTFReadParagraph;
using S = ParagraphStyle;
using D = RTFReadDocument;

constexpr WordRule kRules[] = {
    // Characters
    {"plain", plain},
    {"f", characterNumber<&C::font>, 0, 0},
    {"b", characterFlag<&C::bold>},
    {"i", characterFlag<&C::italic>},
    {"v", characterFlag<&C::hidden>},
    {"fs", fontSize, 500, 24},
    {"fsmilli", fontSize, 1, kDefaultMilliPoints},
    {"cf", characterNumber<&C::color>, 0, 0},
    {"cb", background, 0, 0},
    {"chcbpat", background, 0, 0},
    {"highlight", background, 0, 0},
    {"ulnone", underline, 0},
    {"ulwave", underline, 1},
    {"ulhwave", underline, 2},
    {"ululdbwave", underline, 9},
    {"ulldash", underline, 0x201},
    {"ulthldash", underline, 0x202},
    {"ulstyle", [](Context& c, Number n, Number) { c.characters.underline = n; }, 0, 0},
    {"ulc", characterNumber<&C::underlineColor>, 0, 0},
    {"strike", strike, 1},
    {"striked", strike, 9},
    {"strikestyle", [](Context& c, Number n, Number) { c.characters.strikethrough = n; }, 0, 0},
    {"strikec", characterNumber<&C::strikethroughColor>, 0, 0},
    {"super", [](Context& c, Number n, Number) { c.characters.superscript = n != 0 ? 1 : 0; }},
    {"sub", [](Context& c, Number n, Number) { c.characters.superscript = n != 0 ? -1 : 0; }},
    {"nosupersub", [](Context& c, Number, Number) { c.characters.superscript = 0; }},
    {"up", characterNumber<&C::baselineHalves>, 0, 6},
    {"dn", [](Context& c, Number n, Number) { c.characters.baselineHalves = -length(n); }, 0, 6},
    {"expnd", [](Context& c, Number n, Number) { c.characters.kernTwips = length(n) * 5; }, 0, 0},
    {"expndtw", characterNumber<&C::kernTwips>, 0, 0},
    {"kerning", kerning, 0, 0},
    {"outl", outline},
    {"strokewidth", characterNumber<&C::strokeWidth>, 0, 0},
    {"strokec", characterNumber<&C::strokeColor>, 0, 0},
    {"shad", characterFlag<&C::shadow>},
    {"shadx", characterNumber<&C::shadowX>, 0, 0},
    {"shady", characterNumber<&C::shadowY>, 0, 0},
    {"shadr", characterNumber<&C::shadowRadius>, 0, 0},
    {"shado", characterNumber<&C::shadowOpacity>, 0, 0},
    {"shadc", characterNumber<&C::shadowColor>, 0, 0},
    {"obliqueness", characterNumber<&C::obliqueness>, 0, 0},
    {"expansion", characterNumber<&C::expansion>, 0, 0},
    {"CocoaLigature", characterNumber<&C::ligature>, 0, 1},
    {"AppleHighlight", characterFlag<&C::highlighted>},
    {"AppleHilightClrSch", characterNumber<&C::highlightScheme>, 0, 0},
    // Paragraphs
    {"pard", pard},
    {"ql", alignment, static_cast<Number>(TextAlignment::left)},
    {"qr", alignment, static_cast<Number>(TextAlignment::right)},
    {"qc", alignment, static_cast<Number>(TextAlignment::center)},
    {"qj", alignment, static_cast<Number>(TextAlignment::justified)},
    {"qd", alignment, static_cast<Number>(TextAlignment::justified)},
    {"qnatural", alignment, static_cast<Number>(TextAlignment::natural)},
    {"pardirnatural", direction, static_cast<Number>(WritingDirection::natural)},
    {"ltrpar", direction, static_cast<Number>(WritingDirection::leftToRight)},
    {"rtlpar", direction, static_cast<Number>(WritingDirection::rightToLeft)},
    {"li", paragraphNumber<&P::leftTwips>, 0, 0},
    {"fi", paragraphNumber<&P::firstTwips>, 0, 0},
    {"ri", [](Context& c, Number n, Number) { c.paragraph.style.tailIndent = -length(n) / kTwipsAPoint; }, 0, 0},
    {"sb", paragraphLength<&S::paragraphSpacingBefore>, 0, 0},
    {"sa", paragraphLength<&S::paragraphSpacing>, 0, 0},
    {"sl", lineHeight, 0, 0},
    {"slmult", [](Context& c, Number n, Number) { c.paragraph.lineIsMultiple = n != 0; }},
    {"slminimum", paragraphLength<&S::minimumLineHeight>, 0, 0},
    {"slmaximum", paragraphLength<&S::maximumLineHeight>, 0, 0},
    {"slleading", paragraphLength<&S::lineSpacing>, 0, 0},
    {"pardeftab", paragraphLength<&S::defaultTabInterval>, 0, 0},
    {"partightenfactor",
     [](Context& c, Number n, Number) { c.paragraph.style.allowsDefaultTighteningForTruncation = n != 0; }, 0, 0},
    {"parhyphenfactor",
     [](Context& c, Number n, Number) {
         c.paragraph.style.hyphenationFactor = static_cast<float>(std::clamp(n, 0, 100)) / 100;
     },
     0, 0},
    {"outlinelevel", [](Context& c, Number n, Number) { c.paragraph.style.headerLevel = n >= 0 && n < 6 ? n + 1 : 0; },
     0, 0},
    {"ls", paragraphNumber<&P::list>, 0, 0},
    {"ilvl", paragraphNumber<&P::level>, 0, 0},
    {"intbl", [](Context& c, Number, Number) { c.paragraph.inTable = true; }},
    {"itap", paragraphNumber<&P::tableDepth>, 0, 0},
    // Tabs
    {"tqr", [](Context& c, Number, Number) { c.paragraph.nextTab.alignment = TextAlignment::right; }},
    {"tqc", [](Context& c, Number, Number) { c.paragraph.nextTab.alignment = TextAlignment::center; }},
    {"tqdec", [](Context& c, Number, Number) { c.paragraph.nextTab.decimal = true; }},
    {"tx", tabStop, 0, 0},
    // Rows and cells
    {"trowd", beginRow},
    {"taflags", [](Context& c, Number n, Number) { c.document.row().flags = n; }, 0, 0},
    {"trleft", [](Context& c, Number n, Number) { c.document.row().left = length(n); }, 0, 0},
    {"lastrow", [](Context& c, Number, Number) { c.document.row().last = true; }},
    {"clvmrg", [](Context& c, Number, Number) { c.document.cell.continuesAbove = true; }},
    {"clmrg", [](Context& c, Number, Number) { c.document.cell.continuesLeft = true; }},
    {"clvertalt", cellVertical, static_cast<Number>(BlockVerticalAlignment::top)},
    {"clvertalc", cellVertical, static_cast<Number>(BlockVerticalAlignment::middle)},
    {"clvertalb", cellVertical, static_cast<Number>(BlockVerticalAlignment::bottom)},
    {"clcbpat", cellBackground, 0, 0},
    {"clwWidth", cellWidth, 0, 0},
    {"clftsWidth", cellWidthUnit, 0, 0},
    {"clpadt", cellLength, lengthValue(BlockLayer::padding, BlockEdge::top), 0},
    {"clpadl", cellLength, lengthValue(BlockLayer::padding, BlockEdge::left), 0},
    {"clpadb", cellLength, lengthValue(BlockLayer::padding, BlockEdge::bottom), 0},
    {"clpadr", cellLength, lengthValue(BlockLayer::padding, BlockEdge::right), 0},
    {"clmart", cellLength, lengthValue(BlockLayer::margin, BlockEdge::top), 0},
    {"clmarl", cellLength, lengthValue(BlockLayer::margin, BlockEdge::left), 0},
    {"clmarb", cellLength, lengthValue(BlockLayer::margin, BlockEdge::bottom), 0},
    {"clmarr", cellLength, lengthValue(BlockLayer::margin, BlockEdge::right), 0},
    {"clbrdrt", borderEdge, static_cast<Number>(BlockEdge::top)},
    {"clbrdrl", borderEdge, static_cast<Number>(BlockEdge::left)},
    {"clbrdrb", borderEdge, static_cast<Number>(BlockEdge::bottom)},
    {"clbrdrr", borderEdge, static_cast<Number>(BlockEdge::right)},
    {"trbrdrt", borderEdge, -1},
    {"trbrdrl", borderEdge, -1},
    {"trbrdrb", borderEdge, -1},
    {"trbrdrr", borderEdge, -1},
    {"brdrt", borderEdge, -1},
    {"brdrl", borderEdge, -1},
    {"brdrb", borderEdge, -1},
    {"brdrr", borderEdge, -1},
    {"brdrnil", borderStyle, 0},
    {"brdrnone", borderStyle, 0},
    {"brdrs", borderStyle, 1},
    {"brdrth", borderStyle, 1},
    {"brdrdb", borderStyle, 1},
    {"brdrdot", borderStyle, 1},
    {"brdrdash", borderStyle, 1},
    {"brdrw", borderWidthWord, 0, 0},
    {"brdrcf", borderColor, 0, 0},
    {"cellx", cellEdge, 0, 0},
    // The document
    {"cocoartf", platformVersion, 0, 0},
    {"ansicpg", [](Context& c, Number n, Number) { c.document.codePage = n; }, 0, 1252},
    {"mac", [](Context& c, Number, Number) { c.document.codePage = 10000; }},
    {"pc", [](Context& c, Number, Number) { c.document.codePage = 437; }},
    {"pca", [](Context& c, Number, Number) { c.document.codePage = 850; }},
    {"deff",
     [](Context& c, Number n, Number) {
         c.document.defaultFont = n;
         c.characters.font = n;
     },
     0, 0},
    {"paperw", documentTwips<&D::paperWidth>, 0, 0},
    {"paperh", documentTwips<&D::paperHeight>, 0, 0},
    {"vieww", documentTwips<&D::viewWidth>, 0, 0},
    {"viewh", documentTwips<&D::viewHeight>, 0, 0},
    {"viewkind",
     [](Context& c, Number n,
        Number) { c.document.attributes.insert_or_assign(std::string(kViewModeDocumentAttribute), Value(n)); },
     0, 0},
    {"margl", documentLength, 0, 0},
    {"margr", documentLength, 1, 0},
    {"margt", documentLength, 2, 0},
    {"margb", documentLength, 3, 0},
    {"deftab", documentLength, 4, 0},
};

using RuleIndex = std::unordered_map<std::string_view, WordRule>;

const RuleIndex& ruleIndex() {
    static const RuleIndex& index = *[] {
        auto* made = new RuleIndex;
        for (const WordRule& rule : kRules) made->emplace(rule.name, rule);
        for (const RTFUnderlineWord& row : kRTFUnderlineWords)
            made->emplace(row.word, WordRule{row.word, underline, static_cast<Number>(row.style)});
        return made;
    }();
    return index;
}

std::string sizeText(Number width, Number height) {
    const auto number = [](Number twips) {
        std::string text = std::to_string(twips / kTwipsAPoint);
        text.erase(text.find_last_not_of('0') + 1);
        if (text.ends_with('.')) text.pop_back();
        return text;
    };
    return "{" + number(width) + ", " + number(height) + "}";
}

} // namespace

RTFRowDefinition& RTFReadDocument::row() {
    if (rows.size() < rowDepth) rows.resize(rowDepth);
    return rows[rowDepth - 1];
}

void RTFReadDocument::finishAttributes() {
    if (paperWidth > 0 && paperHeight > 0)
        attributes.insert_or_assign(std::string(kPaperSizeDocumentAttribute), Value(sizeText(paperWidth, paperHeight)));
    if (viewWidth > 0 && viewHeight > 0)
        attributes.insert_or_assign(std::string(kViewSizeDocumentAttribute), Value(sizeText(viewWidth, viewHeight)));
}

bool applyFormattingWord(std::string_view name, std::optional<std::int32_t> number, RTFWordContext context) {
    const auto found = ruleIndex().find(name);
    if (found == ruleIndex().end()) return false;
    const WordRule& rule = found->second;
    rule.apply(context, number.value_or(rule.absent), rule.value);
    return true;
}

} // namespace platform
