#include <gtest/gtest.h>

#include "platform/text/AttributedString.h"

namespace platform {
namespace {

std::vector<std::pair<std::u16string, std::u16string>> piecesOf(std::u16string_view text, Range range) {
    std::vector<std::pair<std::u16string, std::u16string>> pieces;
    for (const Line& line : linesInRange(text, range))
        pieces.emplace_back(text.substr(line.contents.location, line.contents.length),
                            text.substr(line.enclosing.location, line.enclosing.length));
    return pieces;
}

TEST(Lines, EndAtEveryTerminatorOfThePlatform) {
    using Pieces = std::vector<std::pair<std::u16string, std::u16string>>;
    const std::u16string text = u"a\nb\rc\r\nd\u0085e\u2028f\u2029g";
    EXPECT_EQ(piecesOf(text, {0, text.size()}), (Pieces{{u"a", u"a\n"},
                                                        {u"b", u"b\r"},
                                                        {u"c", u"c\r\n"},
                                                        {u"d", u"d\u0085"},
                                                        {u"e", u"e\u2028"},
                                                        {u"f", u"f\u2029"},
                                                        {u"g", u"g"}}));
    EXPECT_EQ(piecesOf(u"a\n", {0, 2}), (Pieces{{u"a", u"a\n"}}));
    EXPECT_EQ(piecesOf(u"\n\n", {0, 2}), (Pieces{{u"", u"\n"}, {u"", u"\n"}}));
    EXPECT_TRUE(linesOf(u"").empty());
}

TEST(Lines, AreCutToTheRange) {
    using Pieces = std::vector<std::pair<std::u16string, std::u16string>>;
    EXPECT_EQ(piecesOf(u"abc\ndef\nghi", {2, 4}), (Pieces{{u"c", u"c\n"}, {u"de", u"de"}}));
    EXPECT_EQ(piecesOf(u"a\r\nb", {0, 2}), (Pieces{{u"a", u"a\r"}}));
    EXPECT_TRUE(linesInRange(u"abc", {1, 0}).empty());
}

TEST(Lines, HoldTheirTerminatorAndThePositionsInsideIt) {
    const std::u16string_view text = u"ab\r\ncd";
    for (std::size_t position = 0; position < 4; ++position)
        EXPECT_EQ(lineAt(text, position).enclosing, (Range{0, 4})) << position;
    for (std::size_t position = 4; position <= 6; ++position)
        EXPECT_EQ(lineAt(text, position).contents, (Range{4, 2})) << position;
    EXPECT_EQ(lineAt(u"a\n", 2).enclosing, (Range{2, 0}));
}

TEST(Lines, StartBehindEveryTerminatorButNotInsideOne) {
    const std::u16string text = u"a\nb\rc\r\nd\u0085e\u2028f\u2029g\n";
    std::vector<std::size_t> starts, expected;
    for (std::size_t position = 0; position < text.size(); ++position)
        if (startsLine(text, position)) starts.push_back(position);
    for (const Line& line : linesOf(text)) expected.push_back(line.contents.location);
    EXPECT_EQ(starts, expected);
    EXPECT_TRUE(startsLine(u"", 0));
    EXPECT_TRUE(startsLine(text, text.size()));
}

TEST(Paragraphs, RunOnOverLineSeparators) {
    const std::u16string_view text = u"a\u2028b\u0085c\nd\u2029e";
    EXPECT_EQ(paragraphAt(text, 2).contents, (Range{0, 5}));
    EXPECT_EQ(paragraphAt(text, 6).enclosing, (Range{6, 2}));
    EXPECT_EQ(paragraphAt(text, 8).contents, (Range{8, 1}));
}

} // namespace
} // namespace platform
