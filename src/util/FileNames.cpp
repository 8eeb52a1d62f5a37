#include "util/FileNames.h"

#include <algorithm>
#include <cstring>

#include "platform/base/UTF16.h"
#include "platform/files/FileManager.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/Scanner.h"
#include "platform/foundation/SentenceTokenizer.h"
#include "platform/foundation/TextFolding.h"

namespace quillet {

using platform::CharacterSet;

namespace {

constexpr char16_t kAttachmentCharacter = 0xFFFC;
constexpr char16_t kEllipsis = 0x2026;
constexpr std::size_t kGeneratedNameSearchLength = 128;

// In the order in which they are taken off: all five may go, one after another.
constexpr std::u16string_view kListMarkers[] = {u"• ", u"•\u00A0", u"- ", u"* ", u"+ "};

std::u16string_view trimmedOfWhitespace(std::u16string_view text) {
    return platform::trimmed(text, CharacterSet::whitespaceAndNewline());
}

// What separates words in a generated name.
const CharacterSet& cutSet(TruncateToPeriod period) {
    static const CharacterSet withoutPeriod = CharacterSet::whitespaceAndNewline().united(CharacterSet::control());
    static const CharacterSet withPeriod = withoutPeriod.united(CharacterSet::withCharacters(u"."));
    return period == TruncateToPeriod::yes ? withPeriod : withoutPeriod;
}

const CharacterSet& stopSet(TruncateToPeriod period) {
    static const CharacterSet withPeriod = CharacterSet::newline().united(CharacterSet::withCharacters(u"."));
    return period == TruncateToPeriod::yes ? withPeriod : CharacterSet::newline();
}

// Without a list number at the start: one to three digits, no leading zero, a period and a space.
std::u16string_view withoutListNumber(std::u16string_view text) {
    std::size_t digits = 0;
    while (digits < 3 && digits < text.size() && text[digits] >= u'0' && text[digits] <= u'9') ++digits;
    if (digits > 0 && text[0] != u'0' && text.substr(digits).starts_with(u". ")) text.remove_prefix(digits + 2);
    return text;
}

// Whole words until `limit` is reached, for a text in which there is no sentence.
std::u16string_view leadingWords(std::u16string_view text, std::size_t limit, const CharacterSet& separators) {
    platform::Scanner scanner(text);
    while (scanner.scanLocation() < limit && !scanner.isAtEnd() && scanner.scanUpToCharacters(separators)) {
    }
    return text.substr(0, scanner.scanLocation());
}

// The first line, up to a period if wanted, when it ends early enough; otherwise the first sentence, whatever its
// length.
std::u16string_view nameCandidate(std::u16string_view text, TruncateToPeriod period) {
    const std::size_t limit = std::min(text.size(), kGeneratedNameSearchLength);
    const std::size_t stop = platform::findFirstOf(text.substr(0, limit), stopSet(period));
    if (stop != std::u16string_view::npos) return text.substr(0, stop);
    if (const auto sentence = platform::sentenceRangeAt(text, 0)) return text.substr(0, sentence->length);
    return leadingWords(text, limit, cutSet(period));
}

const CharacterSet& filenameTrimSet() {
    static const CharacterSet set =
        CharacterSet::whitespaceAndNewline().united(CharacterSet::withCharacters({&kEllipsis, 1}));
    return set;
}

// At most 255 units, the extension kept whole where at least one unit is left before it.
std::u16string cutToMaximumLength(std::u16string_view name) {
    const std::u16string extension = platform::pathExtension(name);
    const std::u16string base = platform::deletingPathExtension(name);
    if (extension.empty()) return base.substr(0, kMaximumFilenameLength);
    if (extension.size() + 2 > kMaximumFilenameLength) return base.substr(0, kMaximumFilenameLength);
    return base.substr(0, kMaximumFilenameLength - 1 - extension.size()) + u'.' + extension;
}

bool isReachable(const platform::URL& directory, std::u16string_view name) {
    return platform::resourceIsReachable(directory.appendingPathComponent(platform::utf8FromUTF16(name)));
}

// The first of "base 1.ext", "base 2.ext"… at which nothing is reachable.
std::u16string firstFreeNumber(std::u16string_view name, const platform::URL& directory) {
    const std::u16string base = platform::deletingPathExtension(name);
    const std::u16string extension = platform::pathExtension(name);
    for (long number = 1;; ++number) {
        const std::string digits = std::to_string(number);
        std::u16string candidate = base + u' ' + std::u16string(digits.begin(), digits.end());
        if (!extension.empty()) candidate.append(1, u'.').append(extension);
        if (!isReachable(directory, candidate)) return candidate;
    }
}

std::u16string precededByBackslash(std::u16string_view text, std::u16string_view escaped) {
    std::u16string result;
    result.reserve(text.size() + text.size() / 16);
    for (const char16_t unit : text) {
        if (escaped.find(unit) != std::u16string_view::npos) result += u'\\';
        result += unit;
    }
    return result;
}

} // namespace

std::u16string generateFilename(std::u16string_view text) {
    return generateFilenameTruncatingToPeriod(text, TruncateToPeriod::yes);
}

std::u16string generateFilenameTruncatingToPeriod(std::u16string_view text, TruncateToPeriod period) {
    std::u16string copy = stringWithoutAttachments(text);
    std::ranges::replace(copy, u'\t', u' ');
    std::u16string_view rest = platform::trimmed(copy, cutSet(period));
    if (period == TruncateToPeriod::yes) rest = withoutListNumber(rest);
    for (const std::u16string_view marker : kListMarkers)
        if (rest.starts_with(marker)) rest.remove_prefix(marker.size());
    return stringSanitizedForFileName(trimmedOfWhitespace(nameCandidate(rest, period)));
}

std::u16string stringSanitizedForFileName(std::u16string_view text) {
    std::u16string name;
    text = platform::trimmed(text, filenameTrimSet());
    name.reserve(text.size());
    bool atStart = true;
    for (const char16_t unit : text) {
        atStart = atStart && unit == u'.'; // every period of a run at the start becomes a hyphen
        if (atStart || unit == u'/' || unit == u':' || unit == u'~' || unit == u'\t') {
            name += u'-';
        } else if (!CharacterSet::newline().containsUnit(unit)) {
            name += unit;
        }
    }
    // No second trim: blanks that stood before a line break at the end stay.
    if (name.size() <= kMaximumFilenameLength) return name;
    return std::u16string(platform::trimmed(cutToMaximumLength(name), filenameTrimSet()));
}

std::u16string makeFilenameUniqueInDirectoryAtURL(std::u16string_view name, const platform::URL& directory) {
    if (!directory.isFileURL()) return std::u16string(name);
    if (!isReachable(directory, name)) return std::u16string(name);
    return stringSanitizedForFileName(platform::lastPathComponent(firstFreeNumber(name, directory)));
}

bool isEqualToFilename(std::u16string_view name, std::u16string_view other) {
    return platform::equalAsFilenames(name, other);
}

bool isCaseInsensitiveEqualToString(std::u16string_view text, std::u16string_view other) {
    return platform::equalAsFilenames(text, other);
}

std::u16string fileSystemRepresentationString(std::u16string_view text) {
    text = text.substr(0, text.find(u'\0'));
    return platform::utf16FromUTF8(platform::utf8FromUTF16(platform::decomposedText(text)));
}

std::u16string fileDisplayName(std::u16string_view path) {
    if (path.empty()) return {};
    return platform::utf16FromUTF8(platform::displayNameAtPath(platform::utf8FromUTF16(path)));
}

std::u16string stringByTruncatingMiddleWithMaxLength(std::u16string_view text, std::size_t maximum) {
    if (text.size() <= maximum) return std::u16string(text);
    const std::size_t half = maximum / 2;
    std::u16string result(text.substr(0, half));
    result += kEllipsis;
    return result.append(text.substr(text.size() - half));
}

std::u16string stringByRemovingControlAndIllegalCharacters(std::u16string_view text) {
    static const CharacterSet removed = CharacterSet::control()
                                            .united(CharacterSet::illegal())
                                            .united(CharacterSet::withRanges({{0xD800, 0xDBFE}, {0xDC00, 0xDFFE}}));
    return platform::removingUnits(text, removed);
}

std::u16string stringByRemovingCharactersInSet(std::u16string_view text, const CharacterSet& set) {
    return platform::removingUnits(text, set);
}

std::u16string stringByStandardizingNewlines(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool lineBreak = text[i] == u'\r' || text[i] == u'\n';
        result += lineBreak ? u'\n' : text[i];
        const char16_t partner = text[i] == u'\r' ? u'\n' : u'\r';
        if (lineBreak && i + 1 < text.size() && text[i + 1] == partner) ++i;
    }
    return result;
}

std::u16string stringByRemovingNewlines(std::u16string_view text) {
    std::u16string copy(text);
    std::ranges::replace_if(copy, [](char16_t unit) { return unit == u'\n' || unit == u'\r'; }, u' ');
    return std::u16string(platform::trimmed(copy, CharacterSet::whitespace()));
}

std::u16string stringByRemovingNewlinesAndTabs(std::u16string_view text) {
    std::u16string result;
    result.reserve(text.size());
    for (const char16_t unit : text) {
        const bool blank = unit == u' ' || unit == u'\t' || CharacterSet::newline().containsUnit(unit);
        if (!blank) {
            result += unit;
        } else if (result.empty() || result.back() != u' ') {
            result += u' ';
        }
    }
    return std::u16string(trimmedOfWhitespace(result));
}

std::u16string stringByTrimmingWhitespace(std::u16string_view text) {
    return std::u16string(trimmedOfWhitespace(text));
}

void trimWhitespace(std::u16string& text) {
    const std::u16string_view kept = trimmedOfWhitespace(text);
    const auto start = static_cast<std::size_t>(kept.data() - text.data());
    text.resize(start + kept.size());
    text.erase(0, start);
}

std::u16string stringByEscapingBackslashes(std::u16string_view text) {
    return precededByBackslash(text, u"\\");
}

std::u16string stringByEscapingQuotes(std::u16string_view text) {
    return precededByBackslash(text, u"'\"");
}

std::u16string stringWithoutAttachments(std::u16string_view text) {
    std::u16string result(text);
    std::erase(result, kAttachmentCharacter);
    return result;
}

std::string percentEncodedURLString(std::u16string_view text) {
    return platform::URL::fromDataRepresentation(platform::utf8FromUTF16(text)).absoluteString();
}

std::optional<std::u16string> stringWithCString(const char* bytes, platform::TextEncoding encoding,
                                                std::size_t length) {
    if (!bytes || length == 0) return u"";
    return platform::decodedText({bytes, strnlen(bytes, length)}, encoding);
}

std::u16string fixedInvalidDateString(std::u16string_view text) {
    for (const std::u16string_view suffix : {u" amZ", u" pmZ"}) {
        if (!text.ends_with(suffix)) continue;
        std::u16string fixed(text);
        return fixed.replace(fixed.find(suffix), suffix.size(), u"Z");
    }
    return std::u16string(text);
}

std::optional<platform::URL> URLCleanedForImport(const platform::URL& url) {
    if (url.isFileURL()) return url;
    const std::string scheme = url.scheme();
    if (scheme == "safari-reader") return url.withScheme("http");
    if (scheme != "about" || url.path() != "reader") return url;
    for (const auto& [name, value] : url.queryItems())
        if (name == "url") return platform::URL::fromString(value.value_or(""));
    return url;
}

} // namespace quillet
