#include <vector>

#include <gtest/gtest.h>

#include "platform/base/ByteSearch.h"
#include "platform/base/Date.h"
#include "platform/base/Error.h"
#include "platform/base/NumberTable.h"
#include "platform/base/Numbered.h"
#include "platform/base/Range.h"
#include "platform/base/Result.h"
#include "platform/base/SystemLog.h"
#include "platform/base/TextScan.h"
#include "platform/base/UTF16.h"
#include "platform/base/Value.h"

#include <cerrno>

namespace platform {
namespace {

TEST(Date, DescribesItselfInUTC) {
    EXPECT_EQ(Date::fromUnixTime(1714554902.75).description(), "2024-05-01 09:15:02 +0000");
    EXPECT_EQ(Date{}.description(), "2001-01-01 00:00:00 +0000");
    EXPECT_EQ(Date::fromUnixTime(-1).iso8601(), "1969-12-31T23:59:59Z");
}

TEST(Range, StringFormRoundTrips) {
    EXPECT_EQ(stringFromRange({12, 3}), "{12, 3}");
    EXPECT_EQ(rangeFromString("{12, 3}"), (Range{12, 3}));
    EXPECT_EQ(rangeFromString(" 7"), (Range{7, 0}));
    EXPECT_EQ(rangeFromString(""), (Range{0, 0}));
    EXPECT_EQ(rangeFromString("{99999999999999999999999, 1}").location, kNotFound);
}

TEST(NumberTable, FindsEveryThingAgainHoweverManyThereAre) {
    for (const std::size_t expected : {0, 1, 32, 5000}) {
        NumberTable table(expected);
        const auto findOrAdd = [&](std::uint32_t thing, std::uint32_t number) {
            return table.findOrAdd(spreadHash(thing), number, [&](std::uint32_t other) { return other == thing; });
        };
        for (std::uint32_t thing = 0; thing < 5000; ++thing) EXPECT_EQ(findOrAdd(thing, thing), std::pair(thing, true));
        for (std::uint32_t thing = 0; thing < 5000; ++thing) EXPECT_EQ(findOrAdd(thing, 9999), std::pair(thing, false));
    }
}

TEST(NumberTable, TellsThingsOfOneHashApart) {
    NumberTable table;
    const auto findOrAdd = [&](std::uint32_t thing) {
        return table.findOrAdd(7, thing, [&](std::uint32_t other) { return other == thing; });
    };
    for (std::uint32_t thing = 0; thing < 200; ++thing) EXPECT_TRUE(findOrAdd(thing).second);
    for (std::uint32_t thing = 0; thing < 200; ++thing) EXPECT_EQ(findOrAdd(thing), std::pair(thing, false));
}

TEST(Numbered, KeepsEachThingOnceUnderTheNumberOfItsFirstMeeting) {
    Numbered<std::string> words;
    const auto numberOf = [&](const std::string& word) {
        return words.numberOf(
            static_cast<std::uint32_t>(word.size()), [&](const std::string& known) { return known == word; },
            [&] { return word; });
    };
    for (int round = 0; round < 2; ++round)
        for (std::uint32_t number = 0; number < 100; ++number) EXPECT_EQ(numberOf(std::to_string(number)), number);
    EXPECT_EQ(words.size(), 100U);
    EXPECT_EQ(words[42], "42");
    EXPECT_EQ(std::vector<std::string>(words.begin(), words.end()).back(), "99");
}

TEST(UTF16, RoundTripsEveryPlane) {
    const std::u16string text = u"aé€\U0001F600";
    EXPECT_EQ(utf16FromUTF8(utf8FromUTF16(text)), text);
}

TEST(UTF16, ReplacesEachMaximalIllFormedPart) {
    struct Row {
        std::string_view bytes;
        std::u16string text;
    };
    const std::vector<Row> rows{
        {"a\x80z", u"a\uFFFDz"},
        {"\xE2\x82", u"\uFFFD"},
        {"\xE2\x82x", u"\uFFFDx"},
        {"\xC0\xAF", u"\uFFFD\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(utf16FromUTF8(row.bytes), row.text);
        EXPECT_EQ(isValidUTF8(row.bytes), row.text.find(u'\uFFFD') == std::u16string::npos);
    }
}

// ASCII is taken eight bytes at once: what follows it is the same wherever the eight end.
TEST(UTF16, ReadsWhatStandsBehindAnyLengthOfASCII) {
    for (std::size_t before = 0; before < 20; ++before)
        for (std::size_t after = 0; after < 20; ++after) {
            const std::string start(before, 'a'), end(after, 'z');
            const std::u16string start16(before, u'a'), end16(after, u'z');
            EXPECT_EQ(utf16FromUTF8(start + "€\U0001F600" + end), start16 + u"€\U0001F600" + end16);
            EXPECT_EQ(utf16FromUTF8(start + "\xFF" + end), start16 + u"\uFFFD" + end16);
            EXPECT_TRUE(isValidUTF8(start + "€" + end));
            EXPECT_FALSE(isValidUTF8(start + "\xE2\x82" + end));
        }
}

TEST(UTF16, LoneSurrogatesBecomeReplacementCharacters) {
    EXPECT_EQ(utf8FromUTF16(std::u16string{u'a', 0xD800, u'b', 0xDC00}), "a\uFFFDb\uFFFD");
}

TEST(Value, NumbersConvertLikeThePlatforms) {
    EXPECT_EQ(Value(true).integerValue(), 1);
    EXPECT_EQ(Value(-2.9).integerValue(), -2);
    EXPECT_TRUE(Value(0.5).boolValue());
    EXPECT_EQ(Value("7").integerValue(), 0);
    EXPECT_EQ(Value(1e300).integerValue(), std::numeric_limits<std::int64_t>::max());
}

TEST(Value, ErrorsCompareByValue) {
    EXPECT_EQ(Value(Error("D", 1)), Value(Error("D", 1)));
    EXPECT_FALSE(Value(Error("D", 1)) == Value(Error("D", 2)));
}

TEST(Error, ErrnoBecomesThePlatformsCode) {
    struct Row {
        int errorNumber;
        FileAccess access;
        std::int64_t code;
    };
    const std::vector<Row> rows{
        {ENOENT, FileAccess::reading, 260}, {ENOENT, FileAccess::writing, 4},   {EACCES, FileAccess::reading, 257},
        {EACCES, FileAccess::writing, 513}, {EEXIST, FileAccess::writing, 516}, {ENOSPC, FileAccess::writing, 640},
        {EROFS, FileAccess::writing, 642},  {EIO, FileAccess::reading, 256},    {EIO, FileAccess::writing, 512},
    };
    for (const Row& row : rows) {
        const Error error = errorFromErrno(row.errorNumber, row.access, "/x/y");
        EXPECT_EQ(error.domain, kCocoaErrorDomain);
        EXPECT_EQ(error.code, row.code);
        ASSERT_NE(error.underlyingError(), nullptr);
        EXPECT_EQ(error.underlyingError()->code, row.errorNumber);
        EXPECT_NE(error.localizedDescription().find("/x/y"), std::string::npos);
    }
}

Result<int> half(int number) {
    if (number % 2) return failure(Error("Odd", number));
    return number / 2;
}

Result<int> quarter(int number) {
    return TRY(half(TRY(half(number))));
}

TEST(Result, TryPassesTheErrorUp) {
    EXPECT_EQ(quarter(12).value(), 3);
    EXPECT_EQ(quarter(6).error().code, 3);
}

TEST(SystemLog, SinkSeesEntriesAndIsRestored) {
    std::vector<std::string> entries;
    const SystemLogSink before = setSystemLogSink([&](std::string_view entry) { entries.emplace_back(entry); });
    systemLog("hello");
    setSystemLogSink(before);
    EXPECT_EQ(entries, std::vector<std::string>{"hello"});
}

TEST(SystemLog, EscapesWhatActsOnATerminal) {
    EXPECT_EQ(escapedForTerminal("a\x1b[31mb\u202Ec\n"), "a\\u{1b}[31mb\\u{202e}c\\u{a}");
    const std::pair<std::string_view, std::string_view> cases[] = {
        // one in each text
        {"", ""},
        {"plain \\ ~", "plain \\ ~"},
        {"a\tb", "a\\u{9}b"},
        {"a\x7F", "a\\u{7f}"},
        {"a\u009B", "a\\u{9b}"},
        {"\u202E long enough for a block", "\\u{202e} long enough for a block"},
        {"long enough for a block\x1b", "long enough for a block\\u{1b}"},
        {"\u00FC", "\u00FC"},
    };
    for (const auto& [text, escaped] : cases) EXPECT_EQ(escapedForTerminal(text), escaped);
}

TEST(TextScan, StopsAtTheFirstUnitThatDoes) {
    using Markup = StopUnits<char, '\0', '\xFF', '&', '<'>;
    using Plain = StopUnits<char16_t, u' ', u'~', u'{'>;
    const struct {
        char16_t unit;
        bool stopsMarkup, stopsPlain;
    } kRows[] = {{u'a', false, false},   {u' ', false, false},   {u'~', false, false},
                 {u'&', true, false},    {u'<', true, false},    {u'{', false, true},
                 {u'\x1F', false, true}, {u'\x7F', false, true}, {u'\xFF', false, true}};
    for (const auto& row : kRows)
        for (std::size_t length : {0, 1, 15, 16, 17, 31, 32, 100})
            for (std::size_t at = 0; at < length; ++at) {
                std::string bytes(length, 'x');
                std::u16string units(length, u'x');
                bytes[at] = static_cast<char>(row.unit);
                units[at] = row.unit;
                EXPECT_EQ(lengthBefore<Markup>(std::string_view(bytes)), row.stopsMarkup ? at : length);
                EXPECT_EQ(lengthBefore<Plain>(std::u16string_view(units)), row.stopsPlain ? at : length);
            }
    EXPECT_EQ(lengthBefore<Plain>(std::u16string_view(u"ab\uFFFF")), 2U);
}

TEST(ByteSearch, FindsWhatTheStringsOwnSearchFinds) {
    const std::string_view text = "<div><li><div>a</div></li><li><div></div></li>";
    for (const std::string_view literal : {"<li><div>", "</div></li>", "<div>", "a", "", "<p>", "</li>"})
        for (std::size_t from = 0; from <= text.size() + 1; ++from)
            EXPECT_EQ(findLiteral(text, literal, from), text.find(literal, from)) << literal << ' ' << from;
    EXPECT_EQ(findLiteral(std::string_view(), "a"), std::string_view::npos);
    const std::u16string_view units = u"aab\u6100\u0061\u6100\u0100\u0001\u0100b"; // with 61 00 across units
    for (const std::u16string_view literal : {u"", u"b", u"ab", u"\u0061", u"\u0001\u0100", u"\u0100b", u"c", u"aab"})
        for (std::size_t from = 0; from <= units.size() + 1; ++from)
            EXPECT_EQ(findLiteral(units, literal, from), units.find(literal, from)) << from;
}

} // namespace
} // namespace platform
