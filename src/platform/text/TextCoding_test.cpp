#include "platform/text/TextCoding.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/files/FileWrapper.h"
#include "platform/plist/PropertyList.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {
namespace {

class TextCoding : public testing::Test {
  protected:
    static void SetUpTestSuite() { registerArchivableTextClasses(); }
};

std::string archiveOf(const AttributedString& text) {
    const auto archive =
        KeyedArchiver::archivedData(std::make_shared<const AttributedString>(text), KeyedArchiver::Coding::plain);
    EXPECT_TRUE(archive.has_value()) << archive.error().description();
    return archive ? std::string(archive->bytes()) : std::string();
}

AttributedString textFrom(std::string_view archive) {
    const auto object = unarchivedObject(archive, {.requiresSecureCoding = false, .allowedClasses = {}});
    EXPECT_TRUE(object.has_value()) << object.error().description();
    const auto text = object ? object->as<AttributedString>() : nullptr;
    EXPECT_TRUE(text);
    return text ? *text : AttributedString();
}

AttributeSet::Reference setOf(std::vector<AttributeSet::Entry> entries) {
    return std::make_shared<const AttributeSet>(std::move(entries));
}

AttributeValue style(const ParagraphStyle& paragraphStyle) {
    return std::make_shared<const ParagraphStyle>(paragraphStyle);
}

// One text with a value of every kind; two paragraphs share a list, two cells a table.
AttributedString everything() {
    AttributedString text(u"plain ", setOf({{kFontAttributeName, Font("HelveticaNeue", 13)},
                                            {kForegroundColorAttributeName, Color::textColor()}}));
    text.append(u"\xD83D", setOf({{kKernAttributeName, 1.5}, {kUnderlineStyleAttributeName, std::int64_t{1}}}));
    text.append(u"link", setOf({{kLinkAttributeName, *URL::fromString("https://example.org/")}}));
    text.append(u"string link", setOf({{kLinkAttributeName, std::u16string(u"no address")}}));
    text.append(u"", AttributeSet::empty());
    text.append(u"nothing", AttributeSet::empty());
    text.append(u"shadow", setOf({{kShadowAttributeName, Shadow{1, -2, 3, Color::sRGB(1, 0, 0, 0.5)}},
                                  {kWritingDirectionAttributeName, std::vector<std::int64_t>{0, 3}}}));
    ParagraphStyle item;
    item.textLists = {std::make_shared<TextList>("{decimal}.", kTextListPrependEnclosingMarker, 5)};
    item.tabStops = {{TextAlignment::left, 11},
                     {TextAlignment::natural, 36},
                     {TextAlignment::right, 50, true},
                     {TextAlignment::center, 70}};
    item.headIndent = 36;
    text.append(u"item\n", setOf({{kParagraphStyleAttributeName, style(item)}}));
    item.alignment = TextAlignment::justified;
    text.append(u"item\n", setOf({{kParagraphStyleAttributeName, style(item)}}));
    const auto table = std::make_shared<TextTable>();
    table->numberOfColumns = 2;
    table->collapsesBorders = true;
    table->dimension(BlockDimension::width) = {100, true};
    for (std::int64_t column = 0; column < 2; ++column) {
        const auto cell = std::make_shared<TextTableBlock>(table, 1, 2, column, 1);
        cell->width(BlockLayer::margin, BlockEdge::bottom) = {0.5, false};
        cell->width(BlockLayer::padding, BlockEdge::left) = {1, false};
        cell->verticalAlignment = BlockVerticalAlignment::baseline;
        cell->backgroundColor = Color::deviceRGB(0, 1, 0);
        cell->borderColors[2] = Color::black();
        ParagraphStyle inCell;
        inCell.textBlocks = {cell};
        text.append(u"cell\n", setOf({{kParagraphStyleAttributeName, style(inCell)}}));
    }
    text.append(AttributedString::withAttachment(std::make_shared<TextAttachment>(Data("bytes"), "public.data")));
    return text;
}

TEST_F(TextCoding, EveryKindOfValueComesBackAndBytesStayTheSame) {
    const AttributedString text = everything();
    const std::string archive = archiveOf(text);
    const AttributedString back = textFrom(archive);
    EXPECT_EQ(textDump(back), textDump(text));
    EXPECT_EQ(archiveOf(back), archive);
}

TEST_F(TextCoding, ParagraphStylesComeBackEqual) {
    ParagraphStyle changed;
    changed.alignment = TextAlignment::center;
    changed.baseWritingDirection = WritingDirection::rightToLeft;
    changed.lineBreakMode = LineBreakMode::truncatingTail;
    changed.headerLevel = 3;
    changed.firstLineHeadIndent = 1;
    changed.headIndent = 2;
    changed.tailIndent = -3;
    changed.lineSpacing = 4;
    changed.paragraphSpacing = 5;
    changed.paragraphSpacingBefore = 6;
    changed.lineHeightMultiple = 1.25;
    changed.minimumLineHeight = 7;
    changed.maximumLineHeight = 8;
    changed.defaultTabInterval = 36;
    changed.hyphenationFactor = 0.9f;
    changed.tighteningFactorForTruncation = 0.1f;
    changed.allowsDefaultTighteningForTruncation = true;
    changed.usesDefaultHyphenation = true;
    changed.lineBreakStrategy = 1;
    ParagraphStyle leftToRight;
    leftToRight.baseWritingDirection = WritingDirection::leftToRight;
    ParagraphStyle withoutTabs;
    withoutTabs.tabStops.clear();
    for (const ParagraphStyle& one : {ParagraphStyle(), changed, leftToRight, withoutTabs}) {
        const AttributedString text(u"x", setOf({{kParagraphStyleAttributeName, style(one)}}));
        EXPECT_EQ(textFrom(archiveOf(text)), text) << textDump(text);
    }
}

TEST_F(TextCoding, AStyleWithMoreThanAnyTextHasKeepsTheOutermost) {
    ParagraphStyle damaged;
    damaged.tabStops.clear();
    const auto table = std::make_shared<TextTable>();
    for (std::int64_t i = 0; i < 200; ++i) {
        damaged.tabStops.push_back({TextAlignment::left, static_cast<double>(i)});
        damaged.textLists.push_back(std::make_shared<TextList>("{decimal}.", 0, i));
        damaged.textBlocks.push_back(std::make_shared<TextTableBlock>(table, i, 1, 0, 1));
    }
    const AttributedString text(u"text", setOf({{kParagraphStyleAttributeName, style(damaged)}}));
    const AttributedString read = textFrom(archiveOf(text));
    const auto& kept = **read.attributesAt(0).find<ParagraphStyleReference>(kParagraphStyleAttributeName);
    ASSERT_EQ(kept.tabStops.size(), 128u);
    ASSERT_EQ(kept.textLists.size(), 64u);
    ASSERT_EQ(kept.textBlocks.size(), 64u);
    EXPECT_EQ(kept.tabStops.back().location, 127);
    EXPECT_EQ(kept.textLists.back()->startingItemNumber(), 63);
    EXPECT_EQ(dynamic_cast<const TextTableBlock&>(*kept.textBlocks.back()).startingRow, 63);
}

TEST_F(TextCoding, SharedListsAndTablesStayShared) {
    const AttributedString back = textFrom(archiveOf(everything()));
    std::vector<const TextList*> lists;
    std::vector<const TextTable*> tables;
    back.enumerateAttribute(kParagraphStyleAttributeName, {0, back.length()}, [&](const AttributeValue* value, Range) {
        if (!value) return;
        const ParagraphStyle& paragraph = **std::get_if<ParagraphStyleReference>(value);
        for (const auto& list : paragraph.textLists) lists.push_back(list.get());
        for (const auto& block : paragraph.textBlocks)
            tables.push_back(dynamic_cast<const TextTableBlock&>(*block).table.get());
    });
    ASSERT_EQ(lists.size(), 2u);
    EXPECT_EQ(lists[0], lists[1]);
    ASSERT_EQ(tables.size(), 2u);
    EXPECT_EQ(tables[0], tables[1]);
}

TEST_F(TextCoding, AttachmentsKeepTheirFile) {
    const auto wrapper = FileWrapper::regularFile(Data("three"));
    wrapper->setPreferredFilename("plän.pdf");
    const AttributedString text = AttributedString::withAttachment(std::make_shared<TextAttachment>(wrapper));
    const std::string archive = archiveOf(text);
    const AttributedString back = textFrom(archive);
    EXPECT_EQ(textDump(back), "\"\\ufffc\"  attachment A1 NSTextAttachment \"plän.pdf\" 5 bytes\n");
    const auto& attachment = *back.attributesAt(0).find<TextAttachmentReference>(kAttachmentAttributeName);
    EXPECT_EQ(attachment->fileType(), "com.adobe.pdf");
    EXPECT_EQ(attachment->fileWrapper()->regularFileContents().bytes(), "three");
    EXPECT_EQ(archiveOf(back), archive);
}

TEST_F(TextCoding, EmptyAndOneRunTextsHaveNoRunTable) {
    EXPECT_EQ(textFrom(archiveOf(AttributedString())), AttributedString());
    const AttributedString one(u"one", setOf({{kKernAttributeName, std::int64_t{1}}}));
    EXPECT_EQ(archiveOf(one).find("NSAttributeInfo"), std::string::npos);
    EXPECT_EQ(textFrom(archiveOf(one)), one);
}

// An archive of a text with two attribute dictionaries, kern 1 and kern 2, and this run table.
std::string handmadeText(std::u16string_view text, std::string_view table) {
    const auto classOf = [](const char* name) {
        return Dictionary{{"$classname", name}, {"$classes", Array{name, "NSObject"}}};
    };
    const auto dictionary = [](int value) {
        return Dictionary{{"NS.keys", Array{UID{5}}},
                          {"NS.objects", Array{UID{static_cast<std::uint64_t>(value)}}},
                          {"$class", UID{10}}};
    };
    const Array objects{
        "$null",
        Dictionary{{"NSString", UID{2}}, {"NSAttributes", UID{3}}, {"NSAttributeInfo", UID{4}}, {"$class", UID{11}}},
        Value(text),
        Dictionary{{"NS.objects", Array{UID{6}, UID{7}}}, {"$class", UID{12}}},
        Data(std::string(table)),
        "NSKern",
        dictionary(8),
        dictionary(9),
        1,
        2,
        classOf("NSDictionary"),
        classOf("NSAttributedString"),
        classOf("NSArray")};
    return *binaryDataFromPropertyList(Dictionary{{"$version", 100000},
                                                  {"$archiver", "NSKeyedArchiver"},
                                                  {"$top", Dictionary{{"root", UID{1}}}},
                                                  {"$objects", objects}});
}

TEST_F(TextCoding, ReadsRunTablesAndMendsThoseThatDoNotFit) {
    struct Row {
        std::u16string text;
        std::string table;
        std::string kerns; // of each unit, "-" for none
    };
    const std::string longRun("\x84\x04\x01\x01\x00", 5);
    const Row kRows[] = {
        {u"abcd", std::string("\x01\x00\x02\x01\x01\x00", 6), "1221"},
        {u"abcd", std::string("\x01\x00\x01\x01", 4), "1222"},
        {u"abcd", std::string("\x01\x00\x7f\x01", 4), "1222"},
        {u"abcd", std::string("\x02\x07\x02\x01", 4), "--22"},
        {u"abcd", std::string("\x02\x00\x02", 3), "1111"},
        {u"abcd", std::string("\x00\x01\x04\x00", 4), "1111"},
        {u"abcd", std::string("\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", 11), "----"},
        {u"abcd", std::string("\x02\x00\x80\x80\x80", 5), "1111"},
        {u"abcd", "", "----"},
        {u"", std::string("\x01\x00", 2), ""},
    };
    int number = 0;
    for (const Row& row : kRows) {
        const AttributedString text = textFrom(handmadeText(row.text, row.table));
        std::string kerns;
        for (std::size_t i = 0; i < text.length(); ++i) {
            const AttributeValue* kern = text.attributeAt(kKernAttributeName, i);
            kerns += kern ? std::to_string(integerValue(*kern)) : "-";
        }
        EXPECT_EQ(kerns, row.kerns) << number++;
    }
    const AttributedString longText = textFrom(handmadeText(std::u16string(517, u'x'), longRun));
    ASSERT_EQ(longText.runs().size(), 2u);
    EXPECT_EQ(longText.runs()[0].end, 516u);
}

RC_GTEST_PROP(TextCodingProperties, AnyTextComesBack, ()) {
    registerArchivableTextClasses();
    AttributedString text;
    const auto runs = *rc::gen::container<std::vector<std::pair<std::uint8_t, std::int8_t>>>(
        rc::gen::pair(rc::gen::arbitrary<std::uint8_t>(), rc::gen::arbitrary<std::int8_t>()));
    for (const auto& [length, kern] : runs)
        text.append(std::u16string(length, static_cast<char16_t>(u'a' + length)),
                    setOf({{kKernAttributeName, std::int64_t{kern}}}));
    const std::string archive = archiveOf(text);
    const AttributedString back = textFrom(archive);
    RC_ASSERT(back == text);
    RC_ASSERT(archiveOf(back) == archive);
}

} // namespace
} // namespace platform
