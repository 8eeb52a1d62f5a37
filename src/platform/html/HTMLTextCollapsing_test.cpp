#include "platform/html/HTMLTextCollapsing.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/UTF16.h"

namespace platform {
namespace {

std::u16string collapsed(std::string_view utf8, bool dropsLeading = false) {
    std::u16string text(utf8.size() + kCollapsingRoom, u'?');
    text.resize(writeCollapsed(utf8, dropsLeading, text.data()));
    return text;
}

TEST(HTMLTextCollapsing, LeavesOneBlankOfEachStretch) {
    const struct {
        std::string_view text;
        bool dropsLeading;
        std::u16string_view expected;
    } cases[] = {
        {"", false, u""},
        {"one", true, u"one"},
        {" one  two\n\t three four five  ", false, u" one two three four five "},
        {" one  two\n\t three four five  ", true, u"one two three four five "},
        {"  \n ", true, u""},
        {"  \n ", false, u" "},
        {"a lone blank !! before ! a mark", false, u"a lone blank !! before ! a mark"},
        {"na\xC3\xAFve \xE2\x82\xAC 12 \xF0\x9F\x98\x80!", false, u"na\u00EFve \u20AC 12 \U0001F600!"},
        {"zero\xE2\x80\x8Bwidth \xE2\x80\x8B ", false, u"zero width "},
        {"no\xC2\xA0 \xC2\xA0"
         "break",
         false, u"no\u00A0 \u00A0break"},
        {"control \x01 \x0B \x7F", false, u"control \x01 \x0B \x7F"},
    };
    for (const auto& [text, dropsLeading, expected] : cases) EXPECT_EQ(collapsed(text, dropsLeading), expected) << text;
}

// Against the plain rule, unit by unit, for texts in which everything stands next to everything at every offset.
TEST(HTMLTextCollapsing, GivesWhatTheRuleGivesUnitByUnit) {
    const std::vector<std::string> pieces{" ",
                                          "  ",
                                          "\n",
                                          "\t",
                                          "\r",
                                          "\f",
                                          "!",
                                          "a",
                                          "word",
                                          "longer words",
                                          "\x1F",
                                          "\x7F",
                                          "\xC3\xA9",
                                          "\xE2\x80\x8B",
                                          "\xE2\x80\xA8",
                                          "\xF0\x9F\x98\x80"};
    std::mt19937 random(1);
    for (int round = 0; round < 5000; ++round) {
        std::string text;
        for (auto left = random() % 20; left > 0; --left) text += pieces[random() % pieces.size()];
        const bool dropsLeading = random() % 2 == 0;
        std::u16string expected;
        bool behindBlank = dropsLeading;
        for (const char16_t unit : utf16FromUTF8(text)) {
            const bool isBlank = std::u16string_view(u" \n\r\t\f\u200B").find(unit) != std::u16string_view::npos;
            if (!isBlank || !behindBlank) expected += isBlank ? u' ' : unit;
            behindBlank = isBlank;
        }
        ASSERT_EQ(collapsed(text, dropsLeading), expected) << text;
    }
}

} // namespace
} // namespace platform
