// What golden cases cannot say: the setting of the text system, and blocks that are no table's.
#include "richtext/ImportCleanup.h"

#include <gtest/gtest.h>

#include "platform/text/AttributedString.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "richtext/RichTextCase.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::ParagraphStyle;

TEST(ImportCleanup, MarkersAreNotAddedWhereTheTextSystemKeepsThemInTheText) {
    ASSERT_TRUE(platform::TextList::includesTextListMarkers());
    const std::string_view dump = "\"a\\n\"  para [lists L1{disc}]\n\nL1 {disc}\n";
    AttributedString text = textFromDump(dump);
    addTextMarkersIfNecessary(text);
    EXPECT_EQ(platform::textDump(text), dump);
}

TEST(ImportCleanup, ABlockOutsideTablesIsNoTable) {
    ParagraphStyle style;
    style.textBlocks = {std::make_shared<platform::TextBlock>()};
    AttributedString text(u"a\n", std::make_shared<const AttributeSet>(
                                      AttributeSet{{platform::kParagraphStyleAttributeName,
                                                    std::make_shared<const ParagraphStyle>(std::move(style))}}));
    fixTrailingTables(text);
    EXPECT_EQ(text.length(), 2U);
}

} // namespace quillet
