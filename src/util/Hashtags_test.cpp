#include "util/Hashtags.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>

#include "platform/base/UTF16.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/RegularExpression.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {
namespace {

struct Row {
    std::u16string_view text;
    TagNamesAndRanges expected;
};

void expectTags(std::initializer_list<Row> rows, NumericHashtags numeric = NumericHashtags::ignored) {
    for (const Row& row : rows)
        EXPECT_EQ(tagNamesAndRangesFromHashtags(row.text, numeric), row.expected) << platform::utf8FromUTF16(row.text);
}

TEST(Hashtags, StandAtTheStartOrAfterWhiteSpace) {
    expectTags({
        {u"", {}},
        {u"#", {}},
        {u"# tag", {}},
        {u"#tag", {{u"tag"}, {{0, 4}}}},
        {u"line\n#tag", {{u"tag"}, {{5, 4}}}},
        {u"line\u2028#tag", {{u"tag"}, {{5, 4}}}},
        {u"#\v#tag", {{u"tag"}, {{2, 4}}}},
        {u"#\u0085#tag", {{u"tag"}, {{2, 4}}}},
        {u"\u200B#tag", {{u"tag"}, {{1, 4}}}},
        {u"a\u3000#tag", {{u"tag"}, {{2, 4}}}},
        {u"x#tag", {}},
        {u"a#b", {}},
        {u"(#tag)", {}},
        {u"#one two #three", {{u"one", u"three"}, {{0, 4}, {9, 6}}}},
    });
}

TEST(Hashtags, EndAtTheFirstCharacterThatIsNoneOfAName) {
    expectTags({
        {u"#plan!", {{u"plan"}, {{0, 5}}}},
        {u"#tag.", {{u"tag"}, {{0, 4}}}},
        {u"#café", {{u"café"}, {{0, 5}}}},
        {u"#cafe\u0301 x", {{u"cafe\u0301"}, {{0, 6}}}},
        {u"#to_do", {{u"to do"}, {{0, 6}}}},
        {u"#_", {{u" "}, {{0, 2}}}},
        {u"#-", {}},
        {u"#日本語。", {{u"日本語"}, {{0, 4}}}},
        {u"#שלום", {{u"שלום"}, {{0, 5}}}},
        {u"#\U0001D400x", {{u"\U0001D400x"}, {{0, 4}}}},
        {u"#a👩\u200D👧", {{u"a"}, {{0, 2}}}},
        {u"#👩\u200D👧", {}},
        {u"#ａｂ", {{u"ａｂ"}, {{0, 3}}}},
        {u"#ısı", {{u"ısı"}, {{0, 4}}}},
    });
    const std::u16string lone{u'#', u'a', 0xD800, u'b'};
    expectTags({{lone, {{u"a"}, {{0, 2}}}}});
}

TEST(Hashtags, NumbersAreTagsOnlyWhenAllowed) {
    expectTags({{u"#2024", {}},
                {u"#2024a", {{u"2024a"}, {{0, 6}}}},
                {u"#٣", {{u"٣"}, {{0, 2}}}},
                {u"#20_24", {{u"20 24"}, {{0, 6}}}}});
    expectTags({{u"#2024", {{u"2024"}, {{0, 5}}}}, {u"#!", {}}, {u"#1#2 x", {{u"1", u"2"}, {{0, 2}, {3, 2}}}}},
               NumericHashtags::allowed);
}

TEST(Hashtags, PreferenceAllowsNumbers) {
    const tests::ScratchDirectory scratch;
    platform::ScopedEnvironment environment;
    environment->preferencesDirectory = scratch.path().string();
    EXPECT_TRUE(uniqueTagNamesFromHashtags(u"#2024").empty());
    ASSERT_TRUE(platform::UserDefaults::standard().setObject(QLTAllowNumericHashtagsKey, true));
    EXPECT_EQ(tagNamesAndRangesFromHashtags(u"#2024").names, std::vector<std::u16string>{u"2024"});
}

TEST(Hashtags, PiecesKeepTheirPlaces) {
    expectTags({
        {u"#a#b c", {{u"a", u"b"}, {{0, 2}, {3, 2}}}},
        {u"#a#b", {{u"a"}, {{0, 2}}}},
        {u"x #a#b", {{u"a"}, {{2, 2}}}},
        {u"#a#b#c d", {{u"a", u"b", u"c"}, {{0, 2}, {3, 2}, {5, 2}}}},
        // The second piece is longer than the first: the third is said to be where the second is.
        {u"#a#bcd#e x", {{u"a", u"bcd", u"e"}, {{0, 2}, {3, 4}, {3, 2}}}},
        // A longer piece at the end is not lost, and its range ends one unit behind the text.
        {u"#a#bcd", {{u"a", u"bcd"}, {{0, 2}, {3, 4}}}},
        {u"##a b", {{u"a"}, {{2, 2}}}},
        {u"#a##b c", {{u"a", u"b"}, {{0, 2}, {3, 2}}}},
        {u"#1#b c", {{u"b"}, {{3, 2}}}},
        {u"#a!#b c", {{u"a", u"b"}, {{0, 2}, {4, 2}}}},
        {u"#a#", {{u"a"}, {{0, 2}}}},
        {u"#x#y#z w", {{u"x", u"y", u"z"}, {{0, 2}, {3, 2}, {5, 2}}}},
        {u"#x#y#z", {{u"x", u"y", u"z"}, {{0, 2}, {3, 2}, {5, 2}}}}, // 5 and a length of 1 just fit in
        {u"#xy#z", {{u"xy"}, {{0, 3}}}},
        {u"#x#1#z w", {{u"x", u"z"}, {{0, 2}, {5, 2}}}}, // what is no tag moves the position on as well
    });
}

TEST(Hashtags, UniqueNamesAreMerged) {
    EXPECT_EQ(uniqueTagNamesFromHashtags(u"#b #a #b #A", NumericHashtags::ignored),
              (std::set<std::u16string>{u"A", u"a", u"b"}));
    EXPECT_TRUE(uniqueTagNamesFromHashtags(u"", NumericHashtags::ignored).empty());
}

// The arithmetic of the pieces in its plainest form, with a search in each piece.
TagNamesAndRanges plainTags(std::u16string_view candidate, std::u16string_view text) {
    TagNamesAndRanges tags;
    std::size_t position = 0;
    std::size_t length = candidate.size();
    for (std::size_t from = 1; from <= candidate.size();) {
        if (position + length > text.size()) break;
        const std::size_t to = std::min(candidate.find(u'#', from), candidate.size());
        const std::u16string_view name = candidate.substr(from, to - from);
        const std::size_t sign = text.substr(0, position + length).find(u'#', position + 1);
        if (!name.empty()) {
            tags.names.emplace_back(name);
            tags.ranges.push_back({position, name.size() + 1});
        }
        length = sign == std::u16string_view::npos ? length + 1 : sign - position;
        if (sign != std::u16string_view::npos) position = sign + 1;
        from = to + 1;
    }
    return tags;
}

TEST(Hashtags, PiecesAgreeWithThePlainArithmetic) {
    EXPECT_TRUE(rc::check([] {
        const auto candidate = u'#' + *rc::gen::nonEmpty(rc::gen::container<std::u16string>(
                                          rc::gen::element<char16_t>(u'#', u'#', u'a', u'b', u'c')));
        const auto tail = *rc::gen::container<std::u16string>(rc::gen::element<char16_t>(u' ', u'x'));
        const std::u16string text = tail.empty() ? candidate : candidate + u' ' + tail;
        RC_ASSERT(tagNamesAndRangesFromHashtags(text, NumericHashtags::ignored) == plainTags(candidate, text));
    }));
}

TEST(Hashtags, CandidatesAreWhatThePatternMatches) {
    const auto pattern = platform::RegularExpression::withPattern(u"#\\S+");
    for (char32_t unit = 1; unit <= 0xFFFF; ++unit) {
        if (unit == U'#') continue;
        const std::u16string text{u'#', static_cast<char16_t>(unit), u'#', u'a', u' ', u'x'};
        const auto matches = pattern->matches(text);
        const bool isSpace = matches->front().range().location != 0;
        // A space ends the first candidate before it begins, so that "#a" is one of its own, with its number sign.
        const auto tags = tagNamesAndRangesFromHashtags(text, NumericHashtags::ignored);
        EXPECT_EQ(isSpace, tags.ranges.back() == (platform::Range{2, 2})) << std::hex << +unit;
    }
}

TEST(Hashtags, FirstPiecesBeginWhereThePatternMatches) {
    const auto pattern = platform::RegularExpression::withPattern(u"#\\S+");
    EXPECT_TRUE(rc::check([&] {
        const auto text = *rc::gen::container<std::u16string>(rc::gen::element<char16_t>(
            u'#', u'#', u'a', u' ', u'\t', u'\v', u'\f', 0x85, 0xA0, 0x200B, 0x2028, 0x3000, 0xD800, 0xDC00));
        const auto ranges = tagNamesAndRangesFromHashtags(text, NumericHashtags::ignored).ranges;
        const auto matches = pattern->matches(text);
        for (const auto& match : *matches) {
            const std::size_t start = match.range().location;
            const bool counts =
                start == 0 || platform::CharacterSet::whitespaceAndNewline().containsUnit(text[start - 1]);
            if (text[start + 1] != u'a') continue;
            RC_ASSERT(counts == (std::ranges::find(ranges, start, &platform::Range::location) != ranges.end()));
        }
    }));
}

TEST(Hashtags, MegabyteTakesNoQuadraticTime) {
    std::u16string pieces = u"#a#" + std::u16string(300'000, u'b');
    for (int i = 0; i < 350'000; ++i) pieces += u"#c";
    EXPECT_EQ(tagNamesAndRangesFromHashtags(pieces, NumericHashtags::ignored).names.size(), 350'002u);
    EXPECT_TRUE(tagNamesAndRangesFromHashtags(std::u16string(1'000'000, u'#'), NumericHashtags::ignored).names.empty());
}

} // namespace
} // namespace quillet
