#include "util/FileNames.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileDescriptor.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/Environment.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

using platform::URL;

struct Row {
    std::u16string input, expected;
};

using Operation = std::u16string (*)(std::u16string_view);

void expectRows(Operation operation, std::initializer_list<Row> rows) {
    for (const Row& row : rows) EXPECT_EQ(operation(row.input), row.expected) << platform::utf8FromUTF16(row.input);
}

std::u16string repeated(std::u16string_view text, std::size_t count) {
    std::u16string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

std::u16string keepingPeriods(std::u16string_view text) {
    return generateFilenameTruncatingToPeriod(text, TruncateToPeriod::no);
}

TEST(FileNames, GeneratesANameFromTheFirstLineOrSentence) {
    expectRows(generateFilename, {
                                     {u"", u""},
                                     {u" \t\n...", u""},
                                     {u"12. Shopping list. Milk", u"Shopping list"},
                                     {u"999. Items", u"Items"},
                                     {u"1000. Items", u"1000"},
                                     {u"01. Items", u"01"},
                                     {u"0. Items", u"0"},
                                     {u"12.Items", u"12"},
                                     {u"First line\nSecond", u"First line"},
                                     {u"First\u2028Second", u"First"},
                                     {u"Is it? Yes", u"Is it?"},
                                     {u"a\tb", u"a b"},
                                     {u"\uFFFCPhoto \uFFFChere", u"Photo here"},
                                     {u"...Wait. What", u"Wait"},
                                     {u"• one", u"one"},
                                     {u"•\u00A0one", u"one"},
                                     {u"- one", u"one"},
                                     {u"* one", u"one"},
                                     {u"+ one", u"one"},
                                     {u"• •\u00A0- * + one", u"one"},
                                     {u"+ * one", u"* one"},
                                     {u"12. - one", u"one"},
                                     {u"a/b:c~d", u"a-b-c-d"},
                                     {u"\u200F\u05E9\u05DC\u05D5\u05DD. \u05E2", u"\u05E9\u05DC\u05D5\u05DD"},
                                     {u"日本語。次の文", u"日本語。"},
                                 });
}

TEST(FileNames, KeepsPeriodsWhenToldTo) {
    expectRows(keepingPeriods, {
                                   {u"Version 1.2 notes", u"Version 1.2 notes"},
                                   {u"12. Shopping", u"12."},
                                   {u"..x", u"--x"},
                                   {u"One line.\nTwo", u"One line."},
                               });
}

TEST(FileNames, LongTitleGivesItsFirstSentenceCutTo255) {
    const std::u16string words = repeated(u"word ", 60);
    EXPECT_EQ(generateFilename(words).size(), 254u); // the 255th unit is a blank, trimmed
    EXPECT_EQ(generateFilename(repeated(u"x", 300)), repeated(u"x", 255));
    const std::u16string late = repeated(u"x", 140);
    EXPECT_EQ(generateFilename(late + u"! Second sentence"), late + u"!");
    EXPECT_EQ(generateFilename(repeated(u"x", 127) + u". y"), repeated(u"x", 127));
    EXPECT_EQ(generateFilename(repeated(u"x", 128) + u".y"), repeated(u"x", 128) + u".y");
}

// Behind a list marker the text may go on with blanks and line breaks. When the first line break lies too far to be
// found, the first sentence is white space, which is none, and whole words are read instead.
TEST(FileNames, ReadsWordsWhereThereIsNoSentence) {
    const std::u16string blanks(130, u' ');
    expectRows(generateFilename, {
                                     {u"- " + blanks + u"\nShopping list", u"Shopping"},
                                     {u"* " + blanks + u"\n\nMilk. Eggs", u"Milk"},
                                     {u"- " + blanks + u"\n\u0001x", u""}, // a control is no word, nor skipped
                                     {u"- " + std::u16string(120, u' ') + u"\nx", u""},
                                 });
    EXPECT_EQ(keepingPeriods(u"- " + blanks + u"\nv1.2 notes"), u"v1.2");
}

TEST(FileNames, SanitizesOnePathComponent) {
    expectRows(stringSanitizedForFileName, {
                                               {u"", u""},
                                               {u"a/b:c~d", u"a-b-c-d"},
                                               {u".hidden", u"-hidden"},
                                               {u"..up", u"--up"},
                                               {u"..", u"--"},
                                               {u"a.b", u"a.b"},
                                               {u"…title…", u"title"},
                                               {u" … title … ", u"title"},
                                               {u"a\tb", u"a-b"},
                                               {u"a\nb\r\nc\u2029d", u"abcd"},
                                               {u"a \n…", u"a"},
                                               {u"../../x", u"---..-x"},
                                           });
}

TEST(FileNames, CutsTo255UnitsAndKeepsTheExtension) {
    const std::u16string x300 = repeated(u"x", 300);
    expectRows(stringSanitizedForFileName, {
                                               {repeated(u"x", 255), repeated(u"x", 255)},
                                               {repeated(u"x", 256), repeated(u"x", 255)},
                                               {x300 + u".qltnote", repeated(u"x", 247) + u".qltnote"},
                                               {u"a." + x300, u"a"},
                                               {u"ab." + repeated(u"y", 253), u"a." + repeated(u"y", 253)},
                                               {u"ab." + repeated(u"y", 254), u"ab"},
                                               {repeated(u"x", 254) + u" y", repeated(u"x", 254)},
                                               {repeated(u"x", 240) + u"    " + repeated(u"z", 60) + u".e",
                                                repeated(u"x", 240) + u"    " + repeated(u"z", 9) + u".e"},
                                           });
}

class UniqueName : public testing::Test {
  protected:
    void make(std::string_view name) { tests::writeFile(scratch_ / name, ""); }
    std::u16string unique(std::u16string_view name) {
        return makeFilenameUniqueInDirectoryAtURL(name, URL::fileURLWithPath(scratch_.path().string(), true));
    }
    void expectNames(std::initializer_list<Row> rows) {
        for (const Row& row : rows) EXPECT_EQ(unique(row.input), row.expected) << platform::utf8FromUTF16(row.input);
    }
    tests::ScratchDirectory scratch_;
};

TEST_F(UniqueName, FreeNameStaysEvenIfTheSanitizerWouldChangeIt) {
    EXPECT_EQ(unique(u"...a:b…"), u"...a:b…");
    EXPECT_EQ(unique(std::u16string(u"a\0b", 3)), std::u16string(u"a\0b", 3));
}

TEST_F(UniqueName, TakenNameGetsTheFirstFreeNumberBeforeItsExtension) {
    make("Note.qltnote");
    EXPECT_EQ(unique(u"Note.qltnote"), u"Note 1.qltnote");
    make("Note 1.qltnote");
    make("Note 3.qltnote");
    EXPECT_EQ(unique(u"Note.qltnote"), u"Note 2.qltnote");
    make("plain");
    EXPECT_EQ(unique(u"plain"), u"plain 1");
    make("a:b");
    EXPECT_EQ(unique(u"a:b"), u"a-b 1");
}

TEST_F(UniqueName, LinkToNothingTakesItsName) {
    std::filesystem::create_symlink("nowhere", scratch_ / "Note");
    EXPECT_EQ(unique(u"Note"), u"Note 1");
}

TEST_F(UniqueName, HostileNamesAreTestedAsTheyStand) {
    make("a");
    make("50%2F");
    make("caf\u00e9.x");
    expectNames({
        {std::u16string(u"a\0b", 3), std::u16string(u"a\0b", 3)},
        {u"50%2F", u"50%2F 1"},
        {u"caf\u00e9.x", u"caf\u00e9 1.x"},
        {u"cafe\u0301.x", u"cafe\u0301.x"}, // another name to the file system
        {u"A", u"A"},
        {u"", u"1"},    // the directory itself is there; the blank before the number is trimmed
        {u".", u"- 1"}, // so are these two, and the number leads out of neither
        {u"..", u"- 1"},
        {u"missing/x", u"missing/x"},
        {std::u16string(u"n") + char16_t(0xD800), std::u16string(u"n") + char16_t(0xD800)},
        {std::u16string(300, u'x'), std::u16string(300, u'x')}, // too long to be there
    });
}

TEST(FileNames, TruncatesTheMiddle) {
    EXPECT_EQ(stringByTruncatingMiddleWithMaxLength(u"0123456789abcdefghij", 10), u"01234…fghij");
    EXPECT_EQ(stringByTruncatingMiddleWithMaxLength(u"0123456789", 10), u"0123456789");
    EXPECT_EQ(stringByTruncatingMiddleWithMaxLength(u"0123456789", 9), u"0123…6789");
    EXPECT_EQ(stringByTruncatingMiddleWithMaxLength(u"0123456789", 1), u"…");
    EXPECT_EQ(stringByTruncatingMiddleWithMaxLength(u"0123456789", 0), u"…");
    EXPECT_EQ(stringByTruncatingMiddleWithMaxLength(u"", 0), u"");
}

TEST(FileNames, KeepsLoneSurrogatesDBFFAndDFFF) {
    EXPECT_EQ(stringByRemovingControlAndIllegalCharacters(
                  std::u16string{u'a', 0xD800, 0xDBFE, 0xDBFF, 0xDC00, 0xDFFE, 0xDFFF, u'b'}),
              (std::u16string{u'a', 0xDBFF, 0xDFFF, u'b'}));
}

TEST(FileNames, CleansText) {
    expectRows(stringByRemovingControlAndIllegalCharacters, {
                                                                {u"a\u0001\t\u00AD\u200B\uFEFFb", u"ab"},
                                                                {u"a\uFFFE\uFDD0\u0378b", u"ab"},
                                                                {u"x\U0001F600y", u"xy"},
                                                                {u"café 日本", u"café 日本"},
                                                            });
    expectRows(stringByStandardizingNewlines, {
                                                  {u"a\r\nb\n\rc\rd\ne", u"a\nb\nc\nd\ne"},
                                                  {u"\r\n\r", u"\n\n"},
                                                  {u"\n\r\n", u"\n\n"},
                                                  {u"\r\r\n\n", u"\n\n\n"},
                                                  {u"\n\n", u"\n\n"},
                                                  {u"", u""},
                                              });
    expectRows(stringByRemovingNewlines, {
                                             {u"\n a\nb\r\nc\t", u"a b  c"},
                                             {u"a\u2028", u"a\u2028"},
                                         });
    expectRows(stringByRemovingNewlinesAndTabs, {
                                                    {u"  a \t\n b\u2029c\u0085\u0085d  ", u"a b c d"},
                                                    {u"a\u00A0\u00A0b", u"a\u00A0\u00A0b"},
                                                    {u"\u3000a\u3000", u"a"},
                                                    {u"    ", u""},
                                                });
    expectRows(stringByTrimmingWhitespace, {{u"\u200B\u3000 a b\r\n", u"a b"}, {u" \n", u""}});
    expectRows(stringByEscapingBackslashes, {{u"a\\b\\\\", u"a\\\\b\\\\\\\\"}, {u"", u""}});
    expectRows(stringByEscapingQuotes, {{u"it's \"so\"", u"it\\'s \\\"so\\\""}, {u"\\'", u"\\\\'"}});
    expectRows(stringWithoutAttachments, {{u"\uFFFCa\uFFFC\uFFFCb", u"ab"}, {u"\uFFFC", u""}});
}

TEST(FileNames, TrimsInPlace) {
    for (const Row& row : {Row{u" a ", u"a"}, Row{u"", u""}, Row{u" \n", u""}, Row{u"a", u"a"}}) {
        std::u16string text = row.input;
        trimWhitespace(text);
        EXPECT_EQ(text, row.expected);
    }
}

TEST(FileNames, RemovesTheUnitsOfASet) {
    const auto set = platform::CharacterSet::withCharacters(u"ab");
    EXPECT_EQ(stringByRemovingCharactersInSet(u"cabbage", set), u"cge");
}

TEST(FileNames, RepairsDateSuffixes) {
    expectRows(fixedInvalidDateString, {
                                           {u"20240501T091502 amZ", u"20240501T091502Z"},
                                           {u"20240501T091502 pmZ", u"20240501T091502Z"},
                                           {u"20240501T091502Z", u"20240501T091502Z"},
                                           {u"20240501T091502 AMZ", u"20240501T091502 AMZ"},
                                           {u" amZ1 amZ", u"Z1 amZ"},
                                           {u" pmZ amZ", u" pmZZ"},
                                           {u" amZ", u"Z"},
                                           {u"", u""},
                                       });
}

TEST(FileNames, PercentEncodesURLs) {
    struct Encoding {
        std::u16string text;
        std::string_view expected;
    };
    for (const Encoding& row : {
             Encoding{u"http://a.b/c d?é", "http://a.b/c%20d?%C3%A9"},
             Encoding{u"", ""},
             Encoding{u"a%20b", "a%20b"},
             Encoding{u"\U0001F600", "%F0%9F%98%80"},
             Encoding{std::u16string(u"a\0b", 3), "a%00b"},
             Encoding{{u'a', 0xD800}, "a%EF%BF%BD"},
         })
        EXPECT_EQ(percentEncodedURLString(row.text), row.expected);
}

TEST(FileNames, CleansReaderAddresses) {
    struct Address {
        const char *input, *expected;
    };
    for (const Address& row : {
             Address{"file:///tmp/a", "file:///tmp/a"},
             Address{"safari-reader://a.b/c?d#e", "http://a.b/c?d#e"},
             Address{"about:reader?url=https%3A%2F%2Fa.b%2Fc%3Fd%3De", "https://a.b/c?d=e"},
             Address{"about:reader?x=1&url=http%3A%2F%2Fa&url=http%3A%2F%2Fb", "http://a"},
             Address{"about:reader?x=1", "about:reader?x=1"},
             Address{"about:blank?url=http%3A%2F%2Fa", "about:blank?url=http%3A%2F%2Fa"},
             Address{"https://a.b/reader?url=x", "https://a.b/reader?url=x"},
         })
        EXPECT_EQ(URLCleanedForImport(*URL::fromString(row.input))->absoluteString(), row.expected) << row.input;
    EXPECT_FALSE(URLCleanedForImport(*URL::fromString("about:reader?url=a%20b")));
    EXPECT_FALSE(URLCleanedForImport(*URL::fromString("about:reader?url=")));
}

TEST(FileNames, CompareWithoutCaseDiacriticsAndWidthInEveryLocale) {
    platform::ScopedEnvironment environment;
    for (const char* locale : {"en_US_POSIX", "en_US", "de_DE", "tr_TR", "ja_JP"}) {
        environment->localeIdentifier = locale;
        for (const auto compare : {isEqualToFilename, isCaseInsensitiveEqualToString}) {
            EXPECT_TRUE(compare(u"ＮOTÉ.txt", u"note.TXT"));
            EXPECT_TRUE(compare(u"TITLE", u"title"));
            EXPECT_FALSE(compare(u"øre", u"ore"));
            EXPECT_TRUE(compare(u"", u""));
        }
    }
}

TEST(FileNames, FileSystemFormIsDecomposed) {
    expectRows(fileSystemRepresentationString, {
                                                   {u"", u""},
                                                   {u"é", u"e\u0301"},
                                                   {u"e\u0301", u"e\u0301"},
                                                   {u"한", u"\u1112\u1161\u11AB"},
                                                   {u"a\U0001F600", u"a\U0001F600"},
                                                   {std::u16string(u"a\0b", 3), u"a"},
                                                   {std::u16string{u'a', 0xD800}, u"a\uFFFD"},
                                               });
}

TEST(FileNames, DisplayNameHidesTheExtensionThatTheFileHides) {
    const tests::ScratchDirectory scratch;
    tests::writeFile(scratch / "Note.x.qltnote", "");
    const std::string path = (scratch / "Note.x.qltnote").string();
    EXPECT_EQ(fileDisplayName(platform::utf16FromUTF8(path)), u"Note.x.qltnote");
    EXPECT_EQ(fileDisplayName(u"/nonexistent/a.b"), u"a.b");
    EXPECT_EQ(fileDisplayName(u""), u"");
    EXPECT_EQ(fileDisplayName(u"/"), u"/");
    EXPECT_EQ(fileDisplayName(std::u16string(u"/tmp/a.b\0c", 10)), std::u16string(u"a.b\0c", 5));

    platform::ResourceValues hiding;
    hiding.hasHiddenExtension = true;
    const platform::FileDescriptor file = platform::openAt(AT_FDCWD, path.c_str(), O_RDWR);
    if (!platform::setResourceValues(file.get(), hiding).empty()) GTEST_SKIP() << "no extended attributes here";
    EXPECT_EQ(fileDisplayName(platform::utf16FromUTF8(path)), u"Note.x");
}

TEST(FileNames, ReadsCStringsUpToLengthOrZero) {
    using enum platform::TextEncoding;
    EXPECT_EQ(stringWithCString(nullptr, utf8, 3), u"");
    EXPECT_EQ(stringWithCString("abc", utf8, 0), u"");
    EXPECT_EQ(stringWithCString("abc", static_cast<platform::TextEncoding>(777), 0), u"");
    EXPECT_EQ(stringWithCString("abc", utf8, 2), u"ab");
    EXPECT_EQ(stringWithCString("ab\0c", utf8, 4), u"ab");
    EXPECT_EQ(stringWithCString("\xC3\xA9", utf8, 2), u"é");
    EXPECT_EQ(stringWithCString("\xC3\xA9", utf8, 1), std::nullopt);
    EXPECT_EQ(stringWithCString("\xE9", isoLatin1, 1), u"é");
    EXPECT_EQ(stringWithCString("\xE9", ascii, 1), std::nullopt);
    EXPECT_EQ(stringWithCString("\x8E", macOSRoman, 1), u"é");
    EXPECT_EQ(stringWithCString("\x80", windowsCP1252, 1), u"€");
    EXPECT_EQ(stringWithCString("\x93\xFA", shiftJIS, 2), u"日");
    EXPECT_EQ(stringWithCString("a", static_cast<platform::TextEncoding>(777), 1), std::nullopt);
}

TEST(FileNames, MegabyteTakesNoQuadraticTime) {
    const std::u16string blanks(1'000'000, u' ');
    EXPECT_EQ(stringByRemovingNewlinesAndTabs(u"a" + blanks + u"b"), u"a b");
    EXPECT_EQ(generateFilename(blanks), u"");
    EXPECT_EQ(generateFilename(std::u16string(1'000'000, u'x')), std::u16string(255, u'x'));
    EXPECT_EQ(stringSanitizedForFileName(std::u16string(1'000'000, u'.')), std::u16string(255, u'-'));
}

} // namespace
} // namespace quillet
