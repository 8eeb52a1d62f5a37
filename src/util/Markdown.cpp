#include "util/Markdown.h"

#include <algorithm>
#include <limits>

#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/Percent.h"
#include "platform/foundation/Scanner.h"
#include "platform/foundation/StringFormat.h"

namespace quillet {

using platform::CharacterSet;

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;

// In the order in which they are tried.
constexpr std::u16string_view kBullets[] = {QLTMarkdownBulletAsterisk, QLTMarkdownBulletPlus, QLTMarkdownBulletDash};

// What may stand before a bullet or a number.
const CharacterSet& quoteAndIndentSet() {
    static const CharacterSet set = CharacterSet::withCharacters(u"> \t");
    return set;
}

bool isEnclosed(std::u16string_view span, std::u16string_view opening, std::u16string_view closing) {
    return span.starts_with(opening) && span.ends_with(closing);
}

// The first of two markers that encloses the span; one marker may be both ends.
bool isEnclosedByEither(std::u16string_view span, std::u16string_view first, std::u16string_view second,
                        std::u16string_view* marker) {
    for (const std::u16string_view candidate : {first, second}) {
        if (!isEnclosed(span, candidate, candidate)) continue;
        if (marker) *marker = candidate;
        return true;
    }
    return false;
}

// Nothing when no bullet is found.
std::u16string_view bulletOf(std::u16string_view line, std::u16string_view lineTrimmed) {
    for (const std::u16string_view bullet : kBullets) {
        if (line.starts_with(bullet)) return bullet;
        if (!lineTrimmed.starts_with(bullet.front())) continue;
        const std::size_t position = line.find(bullet);
        if (position != kNone) return line.substr(0, position + bullet.size());
    }
    return {};
}

// The integer at the start of a text, as the platform reads one: white space before it is skipped, and what does not
// fit becomes the largest.
std::int64_t integerAtStart(std::u16string_view text) {
    std::int64_t value = 0;
    for (const char16_t unit : platform::trimmedStart(text, CharacterSet::whitespaceAndNewline())) {
        if (unit < u'0' || unit > u'9') break;
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_add_overflow(value, unit - u'0', &value))
            return std::numeric_limits<std::int64_t>::max();
    }
    return value;
}

enum class BracketSearch { firstOnes, lastOnes };

// The parts of `[text](link "title")`. The span begins with the opening, so every "]" stands behind the first "[".
std::optional<MarkdownLink> linkParts(std::u16string_view span, BracketSearch search) {
    const auto find = [span, search](char16_t bracket) {
        return search == BracketSearch::firstOnes ? span.find(bracket) : span.rfind(bracket);
    };
    const std::size_t textStart = span.find(u'[');
    const std::size_t textEnd = find(u']');
    const std::size_t insideStart = find(u'(');
    const std::size_t insideEnd = find(u')');
    if (textStart == kNone || textEnd == kNone || insideStart == kNone || insideEnd == kNone) return std::nullopt;
    if (insideStart > insideEnd || insideStart < textEnd) return std::nullopt;

    MarkdownLink result;
    result.text = span.substr(textStart + 1, textEnd - textStart - 1);
    const std::u16string_view inside =
        platform::trimmed(span.substr(insideStart + 1, insideEnd - insideStart - 1), CharacterSet::whitespace());
    const std::size_t blank = inside.find(u' ');
    const std::size_t quote = inside.find(u'"');
    result.link = inside;
    if (blank != kNone && quote != kNone) {
        static const CharacterSet quotes = CharacterSet::withCharacters(u"\"");
        result.link = inside.substr(0, blank);
        result.title = platform::trimmed(inside.substr(quote), quotes);
    }
    return result;
}

std::optional<MarkdownLink> linkWithOpening(std::u16string_view span, std::u16string_view opening,
                                            BracketSearch search) {
    if (!platform::trimmed(span, CharacterSet::whitespace()).starts_with(opening)) return std::nullopt;
    return linkParts(span, search);
}

// What ends a line of text. A pattern's "." stops at two more, the vertical tab and the form feed.
const CharacterSet& lineTerminators() {
    static const CharacterSet set = CharacterSet::withCharacters(u"\n\r\u0085\u2028\u2029");
    return set;
}

std::size_t endOfLine(std::u16string_view text, std::size_t position, const CharacterSet& terminators) {
    return std::min(platform::findFirstOf(text, terminators, position), text.size());
}

std::u16string_view trimmedOfWhitespace(std::u16string_view text) {
    return platform::trimmed(text, CharacterSet::whitespaceAndNewline());
}

// Each line without what the pattern `!\[.*` `middle` `.*` `closing` matches. The pattern is
// greedy, so there is one match a line at most: from the line's first "![" to its last closing bracket.
std::u16string removingImages(std::u16string_view text, std::u16string_view middle, char16_t closing) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end =
            std::min(endOfLine(text, start, CharacterSet::newline()) + 1, text.size()); // the terminator included
        const std::u16string_view line = text.substr(start, end - start);
        start = end;
        const std::size_t image = line.find(u"![");
        const std::size_t last = line.rfind(closing);
        const std::size_t between = image == kNone ? kNone : line.find(middle, image + 2);
        if (between == kNone || last == kNone || between + middle.size() > last) {
            result += line;
        } else {
            result.append(line.substr(0, image)).append(line.substr(last + 1));
        }
    }
    return result;
}

// The items behind "- ", "* " or "+ " and the box.
std::vector<std::u16string_view> checklistItems(std::u16string_view text, std::u16string_view box) {
    std::vector<std::u16string_view> items;
    std::size_t lineEnd = 0;
    std::size_t lastItemEnd = 0; // the end of all items of the line, without the white space there
    for (std::size_t found = text.find(box); found != kNone; found = text.find(box, found + box.size())) {
        const bool marker = found >= 2 && text[found - 1] == u' ' &&
                            std::u16string_view(u"*-+").find(text[found - 2]) != std::u16string_view::npos;
        if (!marker) continue;
        const std::size_t itemStart = found + box.size();
        if (itemStart > lineEnd) {
            lineEnd = endOfLine(text, itemStart, lineTerminators());
            lastItemEnd = found + trimmedOfWhitespace(text.substr(found, lineEnd - found)).size();
        }
        if (itemStart < lastItemEnd)
            items.push_back(trimmedOfWhitespace(text.substr(itemStart, lastItemEnd - itemStart)));
    }
    return items;
}

} // namespace

MarkdownListType getListTypeAndCurrentBullet(std::u16string_view line, std::u16string* bullet,
                                             std::int64_t* listNumber) {
    const std::u16string_view lineTrimmed = platform::trimmed(line, quoteAndIndentSet());
    if (const std::u16string_view found = bulletOf(line, lineTrimmed); !found.empty()) {
        if (bullet) *bullet = found;
        return MarkdownListType::bulleted;
    }
    if (lineTrimmed.empty() || lineTrimmed.front() < u'0' || lineTrimmed.front() > u'9') return MarkdownListType::none;

    platform::Scanner scanner(line, quoteAndIndentSet());
    const auto number = scanner.scanUpToString(u". ");
    // In an indented line the number is shorter than the line even without a ". ": all of it counts as the bullet then.
    if (!number || number->size() == line.size()) return MarkdownListType::none;
    // The number begins with a digit, so it is never negative.
    if (bullet) *bullet = std::u16string(line.substr(0, scanner.scanLocation())) + u". ";
    if (listNumber) *listNumber = integerAtStart(*number);
    return MarkdownListType::numbered;
}

bool isStrong(std::u16string_view span, std::u16string_view* marker) {
    return isEnclosedByEither(span, QLTMarkdownStrongAsterisk, QLTMarkdownStrongUnderscore, marker);
}

bool isEmphasized(std::u16string_view span, std::u16string_view* marker) {
    std::u16string_view strongMarker;
    if (isStrong(span, &strongMarker)) {
        span.remove_prefix(strongMarker.size());
        span.remove_suffix(std::min(strongMarker.size(), span.size()));
    }
    return isEnclosedByEither(span, QLTMarkdownEmphasisAsterisk, QLTMarkdownEmphasisUnderscore, marker);
}

bool isStruckthrough(std::u16string_view span) {
    return isEnclosed(span, QLTMarkdownOpeningStrikeMarker, QLTMarkdownClosingStrikeMarker);
}

bool isHighlighted(std::u16string_view span) {
    return isEnclosed(span, QLTMarkdownOpeningHighlightMarker, QLTMarkdownClosingHighlightMarker);
}

std::size_t headingLevel(std::u16string_view line) {
    if (line.size() <= QLTMarkdownHeadingMarker.size()) return 0;
    // The last character is never counted, so that a line of markers alone is of one level less than it has markers.
    const std::u16string_view counted = line.substr(0, line.size() - 1);
    return std::min(counted.find_first_not_of(QLTMarkdownHeadingMarker), counted.size());
}

std::optional<MarkdownLink> getLink(std::u16string_view span) {
    return linkWithOpening(span, u"[", BracketSearch::lastOnes);
}

std::optional<MarkdownLink> getImageLink(std::u16string_view span) {
    return linkWithOpening(span, u"![", BracketSearch::firstOnes);
}

std::u16string markdownByRemovingImages(std::u16string_view text) {
    return removingImages(removingImages(text, u"](", u')'), u"][", u']');
}

std::vector<std::u16string_view> completedChecklistItems(std::u16string_view text) {
    return checklistItems(text, u"[x]");
}

std::vector<std::u16string_view> outstandingChecklistItems(std::u16string_view text) {
    return checklistItems(text, u"[ ]");
}

bool getMarkdownChecklistValue(std::u16string_view line, bool* value, std::int64_t* indentationLevel) {
    const std::size_t on = line.find(QLTMarkdownChecklistOnString);
    const std::size_t marker = on != kNone ? on : line.find(QLTMarkdownChecklistOffString);
    if (marker == kNone) return false;
    std::int64_t level = 0;
    if (marker != 0) {
        // The scanner skips blanks before it compares, so it never finds the indent and the level stays 0, however
        // far the line is indented. Levels above 0 would change the lists that notes have been given so far.
        platform::Scanner scanner(line);
        while (scanner.scanString(QLTMarkdownChecklistIndentString)) ++level;
    }
    if (value) *value = on != kNone;
    if (indentationLevel) *indentationLevel = level;
    return true;
}

std::u16string markdownLinkWithText(std::u16string_view text, std::u16string_view link, std::u16string_view title) {
    if (title.empty()) return platform::formatted(u"[%@](%@)", {text, link});
    return platform::formatted(u"[%@](%@ \"%@\")", {text, link, title});
}

std::u16string markdownImageLinkWithAltText(std::u16string_view altText, std::u16string_view imageLink,
                                            std::u16string_view title) {
    return u'!' + markdownLinkWithText(altText, imageLink, title);
}

std::string relativeLinkFor(const platform::URL& target, const platform::URL& item) {
    const std::vector<std::string> to = target.deletingLastPathComponent().pathComponents();
    const std::vector<std::string> from = item.deletingLastPathComponent().pathComponents();
    const auto [toRest, fromRest] = std::ranges::mismatch(to, from);
    std::string path;
    for (auto left = fromRest; left != from.end(); ++left) path += "../";
    for (auto component = toRest; component != to.end(); ++component) path += *component + '/';
    return platform::percentEncodedForURLPath(path + target.lastPathComponent());
}

} // namespace quillet
