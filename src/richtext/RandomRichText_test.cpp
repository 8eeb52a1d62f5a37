#include "richtext/RandomRichText.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/files/FileWrapper.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/ParagraphStyles.h"
#include "tests/support/StylesFixture.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::Color;
using platform::Font;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::Range;
using platform::TextAttachment;
using platform::TextAttachmentReference;
using platform::TextList;

namespace {

constexpr int kDeepestNesting = 100;

std::shared_ptr<TextList> list(std::string_view format) {
    return std::make_shared<TextList>(format);
}

std::shared_ptr<platform::TextTableBlock> cell(std::shared_ptr<platform::TextTable> table) {
    return std::make_shared<platform::TextTableBlock>(std::move(table), 0, 1, 0, 1);
}

// Paragraph styles of one text: their lists and tables are shared, as those of a real text are. Null is no style.
std::vector<ParagraphStyleReference> someStyles() {
    const auto disc = list("{disc}"), numbers = list("{decimal}."), check = list("{check}"), circle = list("{circle}");
    const auto table = std::make_shared<platform::TextTable>(), other = std::make_shared<platform::TextTable>();
    const auto first = cell(table), second = cell(table), apart = cell(other);
    std::vector<ParagraphStyleReference> styles{nullptr};
    const auto add = [&](auto change) {
        ParagraphStyle style;
        change(style);
        styles.push_back(std::make_shared<const ParagraphStyle>(std::move(style)));
    };
    add([&](ParagraphStyle& style) { style.paragraphSpacing = 12; });
    add([&](ParagraphStyle& style) { style.paragraphSpacingBefore = 6; });
    add([&](ParagraphStyle& style) { style.textLists = {disc}; });
    add([&](ParagraphStyle& style) { style.textLists = {disc, numbers}; });
    add([&](ParagraphStyle& style) { style.textLists = {numbers}; });
    add([&](ParagraphStyle& style) { style.textLists = {disc, check}; });
    add([&](ParagraphStyle& style) { style.textLists = {circle}; });
    add([&](ParagraphStyle& style) { style.textLists.assign(kDeepestNesting, circle); });
    add([&](ParagraphStyle& style) { style.textBlocks = {first}; });
    add([&](ParagraphStyle& style) { style.textBlocks = {second, apart}; });
    add([&](ParagraphStyle& style) { style.textBlocks = {apart}; });
    add([&](ParagraphStyle& style) { style.textBlocks = {std::make_shared<platform::TextBlock>()}; });
    add([&](ParagraphStyle& style) { style = listParagraphStyle(); });
    add([&](ParagraphStyle& style) { style.headIndent = 36; });
    return styles;
}

TextAttachmentReference file(const std::string& name) {
    auto wrapper = platform::FileWrapper::regularFile(platform::Data(*rc::gen::element<std::string>("a", "bc", "")));
    if (*rc::gen::inRange(0, 5) != 0) wrapper->setFilename(name);
    wrapper->setPreferredFilename(name);
    return std::make_shared<TextAttachment>(std::move(wrapper));
}

TextAttachmentReference someAttachment() {
    switch (*rc::gen::inRange(0, 6)) {
    case 0:
        return file(*rc::gen::element<std::string>("a.png", "b.pdf", "c.zip", "d e.zip", "README", ""));
    case 1:
        return std::make_shared<QLTDividerTextAttachment>();
    case 2:
        return std::make_shared<TextAttachment>(platform::Data("x"), "public.zip-archive");
    default:
        return checkbox(*rc::gen::arbitrary<bool>(), *rc::gen::inRange<std::uint64_t>(0, 7));
    }
}

std::u16string someCharacters() {
    return *rc::gen::element<std::u16string>(u"a", u" b", u" ", u"\u00A0", u"\n", u"c\n", u"\r\n", u"\r", u"\u0085",
                                             u"\u2028", u"\u2029", u"\t•\t", u"\t-\t", u"\t1.\t", u"\t07.\tx",
                                             u"\t12.\tx", u"\t1000.\tx", u"\t✓\t", u"\t◦\t", u"✓ ", u"***", u"\n***\n",
                                             u"\xD83D", u"\xDE00", u"\uFFFC");
}

// Something on a quarter of all pieces.
bool now(int oneIn = 4) {
    return *rc::gen::inRange(0, oneIn) == 0;
}

} // namespace

TextAttachmentReference checkbox(bool on, std::uint64_t level) {
    auto box = std::make_shared<QLTChecklistTextAttachment>();
    box->setOn(on);
    box->setIndentationLevel(level);
    return box;
}

AttributedString someText() {
    const auto styles = someStyles();
    AttributedString text;
    for (int pieces = *rc::gen::inRange(0, 25); pieces > 0; --pieces) {
        AttributeSet set;
        if (const auto style = *rc::gen::elementOf(styles))
            set = set.with(platform::kParagraphStyleAttributeName, style);
        if (now())
            set = set.with(platform::kFontAttributeName,
                           *rc::gen::element(Font("Times-Roman", 16), Font("Times-Bold", 13)));
        if (now()) set = set.with(QLTHighlightTextAttributeName, *rc::gen::element(std::int64_t{0}, std::int64_t{1}));
        if (now())
            set = set.with(platform::kBackgroundColorAttributeName,
                           *rc::gen::element(Color::sRGB(1, 1, 0), Color::white()));
        std::u16string characters = someCharacters();
        if (now(3)) {
            // Now and then over other characters than its own, which only damaged texts have.
            set = set.with(platform::kAttachmentAttributeName, someAttachment());
            if (!now(8)) characters = platform::kAttachmentCharacter;
        }
        text.append(characters, std::make_shared<const AttributeSet>(std::move(set)));
    }
    return text;
}

Range someRange(const AttributedString& text) {
    const auto location = *rc::gen::inRange<std::size_t>(0, text.length() + 1);
    return {location, *rc::gen::inRange<std::size_t>(0, text.length() - location + 1)};
}

TEST_F(StylesFixture, RandomRichTextsHaveRangesInside) {
    EXPECT_TRUE(rc::check([] {
        const AttributedString text = someText();
        RC_ASSERT(someRange(text).end() <= text.length());
    }));
}

} // namespace quillet
