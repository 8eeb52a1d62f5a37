// What holds for each operation on text: hostile text harms none of them, no locale changes what says nothing of
// locale, and a megabyte costs time in proportion.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/UTF16.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/StringFormat.h"
#include "util/FileNames.h"
#include "util/Hashtags.h"
#include "util/Markdown.h"
#include "util/Searching.h"

namespace quillet {
namespace {

using Text = std::u16string_view;

// The result as a text, whatever its type.
struct Operation {
    const char* name;
    std::function<std::u16string(Text)> apply;
};

std::u16string number(std::size_t value) {
    return platform::formatted(u"%ld", {value});
}

std::u16string described(const std::vector<platform::Range>& ranges) {
    std::u16string text;
    for (const platform::Range& range : ranges)
        text += u'(' + number(range.location) + u' ' + number(range.length) + u')';
    return text;
}

std::u16string described(const std::optional<MarkdownLink>& link) {
    return link ? link->link + u'|' + link->text + u'|' + link->title.value_or(u"-") : u"none";
}

std::u16string joined(const std::vector<std::u16string>& texts) {
    std::u16string text;
    for (const std::u16string& part : texts) (text += part) += u'|';
    return text;
}

// The items of one line overlap: all of them together would be of the square of its length.
std::u16string lengths(const std::vector<std::u16string_view>& texts) {
    std::u16string text;
    for (const std::u16string_view part : texts) (text += number(part.size())) += u'|';
    return text;
}

// Those of which no result depends on the locale.
const std::vector<Operation>& operations() {
    static const std::vector<Operation> list{
        {"generateFilename", generateFilename},
        {"keepingPeriods", [](Text text) { return generateFilenameTruncatingToPeriod(text, TruncateToPeriod::no); }},
        {"stringSanitizedForFileName", stringSanitizedForFileName},
        {"isEqualToFilename",
         [](Text text) { return number(isEqualToFilename(text, stringSanitizedForFileName(text))); }},
        {"fileSystemRepresentationString", fileSystemRepresentationString},
        {"fileDisplayName", fileDisplayName},
        {"stringByTruncatingMiddle", [](Text text) { return stringByTruncatingMiddleWithMaxLength(text, 3); }},
        {"stringByRemovingControlAndIllegalCharacters", stringByRemovingControlAndIllegalCharacters},
        {"stringByStandardizingNewlines", stringByStandardizingNewlines},
        {"stringByRemovingNewlines", stringByRemovingNewlines},
        {"stringByRemovingNewlinesAndTabs", stringByRemovingNewlinesAndTabs},
        {"stringByTrimmingWhitespace", stringByTrimmingWhitespace},
        {"stringByEscapingBackslashes", stringByEscapingBackslashes},
        {"stringByEscapingQuotes", stringByEscapingQuotes},
        {"stringWithoutAttachments", stringWithoutAttachments},
        {"percentEncodedURLString", [](Text text) { return platform::utf16FromUTF8(percentEncodedURLString(text)); }},
        {"fixedInvalidDateString", fixedInvalidDateString},
        {"tagNames",
         [](Text text) { return joined(tagNamesAndRangesFromHashtags(text, NumericHashtags::allowed).names); }},
        {"tagRanges",
         [](Text text) { return described(tagNamesAndRangesFromHashtags(text, NumericHashtags::ignored).ranges); }},
        {"hasPrefixIgnoringWhitespace", [](Text text) { return number(hasPrefixIgnoringWhitespace(text, u"#")); }},
        {"bullet",
         [](Text text) {
             std::u16string bullet;
             std::int64_t listNumber = -1;
             const auto type = static_cast<std::size_t>(getListTypeAndCurrentBullet(text, &bullet, &listNumber));
             return number(type) + bullet + number(static_cast<std::size_t>(listNumber));
         }},
        {"isEmphasized", [](Text text) { return number(isStrong(text) + 2 * isEmphasized(text)); }},
        {"isStruckthrough", [](Text text) { return number(isStruckthrough(text) + 2 * isHighlighted(text)); }},
        {"headingLevel", [](Text text) { return number(headingLevel(text)); }},
        {"getLink", [](Text text) { return described(getLink(text)); }},
        {"getImageLink", [](Text text) { return described(getImageLink(text)); }},
        {"markdownByRemovingImages", markdownByRemovingImages},
        {"checklistItems",
         [](Text text) { return lengths(completedChecklistItems(text)) + lengths(outstandingChecklistItems(text)); }},
        {"checklistValue", [](Text text) { return number(getMarkdownChecklistValue(text)); }},
        {"markdownLink", [](Text text) { return markdownLinkWithText(text, text, text); }},
        {"relativeLink",
         [](Text text) {
             const auto file =
                 platform::URL::fileURLWithPath("/a").appendingPathComponent(platform::utf8FromUTF16(text));
             return platform::utf16FromUTF8(relativeLinkFor(file, platform::URL::fileURLWithPath("/b/c")));
         }},
    };
    return list;
}

// Those that follow the locale.
const std::vector<Operation>& localizedOperations() {
    static const std::vector<Operation> list{
        {"smartCapitalizedString", smartCapitalizedString},
        {"localizedStandardRanges", [](Text text) { return described(localizedStandardRangesOfString(text, u"i")); }},
        {"hasCaseInsensitivePrefix", [](Text text) { return number(hasCaseInsensitivePrefix(text, text)); }},
    };
    return list;
}

std::vector<std::u16string> hostileTexts() {
    std::vector<std::u16string> texts{
        u"",
        std::u16string(1, u'\0'),
        std::u16string(u"#a\0b - [x] \0\n", 13),
        {0xD800},
        {0xDFFF},
        {u'#', 0xDC00, 0xD800, u' ', u'#', 0xDBFF},
        {u'-', u' ', 0xD83D, u'\n', 0xDE00},
        u"e\u0301\u0301\u0301 #e\u0301_ \u0301",
        u"\u0301",
        u"ＡＢ１．＃ｔａｇ ｶﾞ",
        u"\u200F#שלום עולם. \u202E#abc\u202C",
        u"#مرحبا١٢ ٣. بند",
        u"👩\u200D👩\u200D👧\u200D👦 #👩\u200D👧 - [x] 🏳\uFE0F\u200D🌈",
        u"İstanbul ISI ı i #İı. I",
        u"![a](b) ![c][d] [e](f \"g\") **h** # i",
        u"../..//~:\\\t…. \u2028 amZ",
        u"%@ %ld %n %s %",
        u"\uFFFC\uFFFC - [ ] \uFFFC",
        u"ß ﬁ ŉ ǆ ẞ",
    };
    for (const char16_t unit : {u' ', u'#', u'.', u'-', u'[', u'\n', u'"', u'\u0301', char16_t(0xD800)})
        texts.emplace_back(200, unit);
    return texts;
}

TEST(EveryOperation, TakesHostileTextTheSameWayInEveryLocale) {
    platform::ScopedEnvironment environment;
    for (const std::u16string& text : hostileTexts()) {
        for (const Operation& operation : operations()) {
            environment->localeIdentifier = "en_US_POSIX";
            const std::u16string expected = operation.apply(text);
            for (const char* locale : {"en_US", "de_DE", "tr_TR", "ja_JP", "ar_EG", "th_TH", "no such locale"}) {
                environment->localeIdentifier = locale;
                EXPECT_EQ(operation.apply(text), expected)
                    << operation.name << " of " << platform::utf8FromUTF16(text) << " in " << locale;
            }
        }
    }
}

TEST(EveryOperation, LocalizedOnesTakeHostileTextInEveryLocale) {
    platform::ScopedEnvironment environment;
    for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP", "ar_EG", "th_TH", "no such locale"}) {
        environment->localeIdentifier = locale;
        for (const std::u16string& text : hostileTexts())
            for (const Operation& operation : localizedOperations())
                EXPECT_EQ(operation.apply(text), operation.apply(text)) << operation.name;
    }
}

// Whatever is quadratic takes minutes here, and the test's time limit ends it.
TEST(EveryOperation, MegabyteOfHostileTextIsDone) {
    constexpr std::size_t kUnits = 20'000, kUnitsOfAll = 500'000;
    std::u16string all;
    std::vector<std::u16string> texts;
    for (const std::u16string& piece : hostileTexts()) {
        all += piece;
        std::u16string text;
        while (text.size() < kUnits && !piece.empty()) text += piece;
        texts.push_back(text);
    }
    while (all.size() < kUnitsOfAll) all += std::u16string(all);
    texts.push_back(all);
    for (const std::u16string& text : texts)
        for (const auto* list : {&operations(), &localizedOperations()})
            for (const Operation& operation : *list) operation.apply(text);
}

TEST(EveryOperation, NamesAreOnePathComponentOfAtMost255Units) {
    for (const std::u16string& piece : hostileTexts()) {
        for (const auto operation : {generateFilename, stringSanitizedForFileName}) {
            const std::u16string name = operation(piece + piece + piece);
            EXPECT_LE(name.size(), 255u);
            EXPECT_EQ(name.find_first_of(u"/:~\t\n\r"), std::u16string::npos);
            EXPECT_FALSE(name.starts_with(u'.'));
        }
    }
}

} // namespace
} // namespace quillet
