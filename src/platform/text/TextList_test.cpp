#include "platform/text/TextList.h"

#include <limits>

#include <gtest/gtest.h>

namespace platform {
namespace {

TEST(TextLists, WriteTheMarkerOfAnItem) {
    struct Row {
        std::string_view format;
        std::int64_t number;
        std::u16string marker;
    };
    const Row kRows[] = {
        {"{disc}", 1, u"\u2022"},
        {"{disc}", 0, u"\u2022"},
        {"{circle}", 1, u"\u25E6"},
        {"{square}", 1, u"\u25AA"},
        {"{hyphen}", 1, u"\u2043"},
        {"{check}", 1, u"\u2713"},
        {"{diamond}", 1, u"\u25C6"},
        {"{box}", 1, u"\u25AB"},
        {"{decimal}", 1, u"1"},
        {"{decimal}", 0, u"0"},
        {"{decimal}", -3, u"-3"},
        {"{decimal}.", 12, u"12."},
        {"({lower-alpha})", 1, u"(a)"},
        {"{lower-alpha}", 26, u"z"},
        {"{lower-alpha}", 27, u"aa"},
        {"{lower-alpha}", 702, u"zz"},
        {"{lower-alpha}", 703, u"aaa"},
        {"{lower-latin}", 28, u"ab"},
        {"{upper-alpha}", 2, u"B"},
        {"{upper-latin}", 52, u"AZ"},
        {"{lower-alpha}", 0, u"0"},
        {"{upper-alpha}", -1, u"-1"},
        {"{lower-roman}", 1, u"i"},
        {"{lower-roman}", 4, u"iv"},
        {"{upper-roman}", 1999, u"MCMXCIX"},
        {"{upper-roman}", 3999, u"MMMCMXCIX"},
        {"{upper-roman}", 4000, u"4000"},
        {"{lower-roman}", 0, u"0"},
        {"{octal}", 1, u"1"},
        {"{octal}", 64, u"100"},
        {"{lower-hexadecimal}", 255, u"ff"},
        {"{upper-hexadecimal}", 255, u"FF"},
        {"{lower-hexadecimal}", std::numeric_limits<std::int64_t>::min(), u"-8000000000000000"},
        {"{no-such-marker}", 1, u"{no-such-marker}"},
        {"\u2192 {decimal}", 3, u"\u2192 3"},
        {"no token", 3, u"no token"},
        {"{open", 3, u"{open"},
        {"", 3, u""},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(TextList(row.format).markerForItemNumber(row.number), row.marker) << row.format << ' ' << row.number;
}

TEST(TextLists, StartAtOneUnlessToldOtherwise) {
    EXPECT_EQ(TextList("{decimal}").startingItemNumber(), 1);
    EXPECT_EQ(TextList("{decimal}", kTextListPrependEnclosingMarker, 5).startingItemNumber(), 5);
}

TEST(TextLists, KeepMarkersInTheTextUnlessATestSaysNo) {
    EXPECT_TRUE(TextList::includesTextListMarkers());
    TextList::setIncludesTextListMarkers(false);
    EXPECT_FALSE(TextList::includesTextListMarkers());
    TextList::setIncludesTextListMarkers(true);
}

} // namespace
} // namespace platform
