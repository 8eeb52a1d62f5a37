// Which cleanups run is the user's choice; what each does is in the golden cases.
#include "richtext/WebCleanup.h"

#include "platform/text/AttributedString.h"
#include "platform/text/TextDump.h"
#include "richtext/RichTextCase.h"
#include "tests/support/StylesFixture.h"

namespace quillet {

namespace {

using WebCleanup = StylesFixture;

constexpr std::string_view kPage = "\" A\\nB \"  font Times-Bold 16; color #FF0000\n";

std::string cleanedPage() {
    platform::AttributedString text = textFromDump(kPage);
    cleanupWebPageText(text);
    return platform::textDump(text);
}

} // namespace

TEST_F(WebCleanup, WithoutPreferencesOnlyTheFamilyChanges) {
    EXPECT_EQ(cleanedPage(), "\" A\\nB \"  font HelveticaNeue-Bold 16; color #FF0000\n");
}

TEST_F(WebCleanup, EachPreferenceTurnsItsOwnCleanupOn) {
    const struct {
        std::string_view key, expected;
    } kRows[] = {
        {"QLTTextViewCleanUpWebPageNewLines", "\" A\\n\\nB \\n\"  font HelveticaNeue-Bold 16; color #FF0000\n"},
        {"QLTTextViewCleanUpWebPageFontSizes", "\" A\\nB \"  font HelveticaNeue-Bold 12; color #FF0000\n"},
        {"QLTTextViewCleanUpWebPageColors", "\" A\\nB \"  font HelveticaNeue-Bold 16; color System/labelColor\n"},
    };
    for (const auto& row : kRows) {
        ASSERT_TRUE(defaults().setObject(row.key, true));
        EXPECT_EQ(cleanedPage(), row.expected) << row.key;
        ASSERT_TRUE(defaults().removeObject(row.key));
    }
}

TEST_F(WebCleanup, TheFamilyIsThatOfTheUsersBodyStyle) {
    const auto body = QLTNoteTextStyle::bodyNoteTextStyle()->copy();
    body->setFont(platform::Font("Georgia-Bold", 30));
    QLTNoteTextStyle::saveStylesToDefaults({body});
    QLTNoteTextStyle::reloadStylesFromDefaults();
    EXPECT_EQ(cleanedPage(), "\" A\\nB \"  font Georgia-Bold 16; color #FF0000\n");
}

TEST_F(WebCleanup, EmptyTextStaysEmpty) {
    for (const std::string_view key :
         {kCleanUpWebPageNewLinesKey, kCleanUpWebPageFontSizesKey, kCleanUpWebPageColorsKey})
        ASSERT_TRUE(defaults().setObject(key, true));
    platform::AttributedString text;
    cleanupWebPageText(text);
    EXPECT_TRUE(text.empty());
}

} // namespace quillet
