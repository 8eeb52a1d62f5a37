// What stands in an archive of rich text: classes, their keys, and the kind of each value.
#include <gtest/gtest.h>

#include "platform/archive/KeyedArchiver.h"
#include "platform/files/FileWrapper.h"
#include "platform/plist/PropertyList.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextCoding.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform {
namespace {

// A style that differs from the default in everything.
ParagraphStyle changedStyle() {
    ParagraphStyle style;
    style.alignment = TextAlignment::right;
    style.baseWritingDirection = WritingDirection::rightToLeft;
    style.lineBreakMode = LineBreakMode::truncatingTail;
    style.headerLevel = 3;
    style.firstLineHeadIndent = 1;
    style.headIndent = 2;
    style.tailIndent = -3;
    style.lineSpacing = 4;
    style.paragraphSpacing = 5;
    style.paragraphSpacingBefore = 6;
    style.lineHeightMultiple = 1.25;
    style.minimumLineHeight = 7;
    style.maximumLineHeight = 8;
    style.defaultTabInterval = 36;
    style.hyphenationFactor = 0.5F;
    style.tighteningFactorForTruncation = 0.25F;
    style.allowsDefaultTighteningForTruncation = true;
    style.usesDefaultHyphenation = true;
    style.lineBreakStrategy = 1;
    style.tabStops = {{TextAlignment::center, 11}, {TextAlignment::right, 22, true}};
    style.textLists = {std::make_shared<TextList>("{decimal}.", kTextListPrependEnclosingMarker, 5)};
    const auto table = std::make_shared<TextTable>();
    table->numberOfColumns = 2;
    table->collapsesBorders = true;
    table->dimension(BlockDimension::width) = {100, true};
    const auto cell = std::make_shared<TextTableBlock>(table, 3, 1, 4, 2);
    cell->width(BlockLayer::padding, BlockEdge::left) = {1, false};
    cell->width(BlockLayer::border, BlockEdge::top) = {2, false};
    cell->width(BlockLayer::margin, BlockEdge::bottom) = {0.5, true};
    cell->verticalAlignment = BlockVerticalAlignment::middle;
    cell->backgroundColor = Color::deviceRGB(0, 1, 0);
    cell->borderColors[1] = Color::black();
    style.textBlocks = {cell};
    return style;
}

class ArchiveKeys : public testing::Test {
  protected:
    static void SetUpTestSuite() { registerArchivableTextClasses(); }

    void archive(const AttributedString& text) {
        const auto made =
            KeyedArchiver::archivedData(std::make_shared<const AttributedString>(text), KeyedArchiver::Coding::plain);
        ASSERT_TRUE(made.has_value()) << made.error().description();
        list_ = *propertyListFromData(made->bytes());
        objects_ = *find(*list_.as<Dictionary>(), "$objects")->as<Array>();
    }
    void archive(const AttributeValue& value, AttributeName name) {
        const std::vector<AttributeSet::Entry> entries{{name, value}};
        archive(AttributedString(u"x", std::make_shared<const AttributeSet>(entries)));
    }
    // The first object of the class.
    const Dictionary& objectOf(std::string_view className) const {
        for (const Value& object : objects_) {
            const auto* fields = object.as<Dictionary>();
            const Value* reference = fields ? find(*fields, "$class") : nullptr;
            if (!reference) continue;
            const Dictionary& description = *objects_.at(reference->as<UID>()->value).as<Dictionary>();
            if (find(description, "$classname")->utf8() == className) return *fields;
        }
        static const Dictionary none;
        ADD_FAILURE() << "no " << className;
        return none;
    }
    // A stored value, or the bare one that it refers to; null for a reference to an object with a class.
    Value valueIn(const Dictionary& fields, std::string_view key) const {
        const Value* value = find(fields, key);
        if (!value) return "(missing)";
        const auto* reference = value->as<UID>();
        if (!reference) return *value;
        const Value& object = objects_.at(reference->value);
        return object.as<Dictionary>() ? Value() : object;
    }

    Value list_;
    Array objects_;
};

struct Row {
    const char* className;
    const char* key;
    Value expected; // null: a reference
};

} // namespace

TEST_F(ArchiveKeys, OfParagraphStylesAndWhatTheyHold) {
    archive(std::make_shared<const ParagraphStyle>(changedStyle()), kParagraphStyleAttributeName);
    const Row kRows[] = {
        {"NSParagraphStyle", "NSAlignment", 1},
        {"NSParagraphStyle", "NSTabStops", {}},
        {"NSParagraphStyle", "NSAllowsTighteningForTruncation", 1},
        {"NSParagraphStyle", "NSDefaultTabInterval", 36.0},
        {"NSParagraphStyle", "NSFirstLineHeadIndent", 1.0},
        {"NSParagraphStyle", "NSHeadIndent", 2.0},
        {"NSParagraphStyle", "NSTailIndent", -3.0},
        {"NSParagraphStyle", "NSParagraphSpacing", 5.0},
        {"NSParagraphStyle", "NSParagraphSpacingBefore", 6.0},
        {"NSParagraphStyle", "NSLineSpacing", 4.0},
        {"NSParagraphStyle", "NSMinLineHeight", 7.0},
        {"NSParagraphStyle", "NSMaxLineHeight", 8.0},
        {"NSParagraphStyle", "NSLineHeightMultiple", 1.25},
        {"NSParagraphStyle", "NSHyphenationFactor", 0.5},
        {"NSParagraphStyle", "NSTighteningFactorForTruncation", 0.25},
        {"NSParagraphStyle", "NSHeaderLevel", 3.0},
        {"NSParagraphStyle", "NSLineBreakMode", 4},
        {"NSParagraphStyle", "NSLineBreakStrategy", 1},
        {"NSParagraphStyle", "NSUsesDefaultHyphenation", true},
        {"NSParagraphStyle", "NSWritingDirection", 2},
        {"NSParagraphStyle", "NSTextBlocks", {}},
        {"NSParagraphStyle", "NSTextLists", {}},
        {"NSTextTab", "NSLocation", 11.0},
        {"NSTextTab", "NSTextAlignment", 2},
        {"NSTextTab", "NSType", 2},
        {"NSTextList", "NSMarkerFormat", "{decimal}."},
        {"NSTextList", "NSOptions", 1},
        {"NSTextList", "NSStart", 5},
        {"NSTextTableBlock", "NSTable", {}},
        {"NSTextTableBlock", "NSRowNum", 3},
        {"NSTextTableBlock", "NSRowSpan", 1},
        {"NSTextTableBlock", "NSColNum", 4},
        {"NSTextTableBlock", "NSColSpan", 2},
        {"NSTextTableBlock", "NSParam8", 1.0},
        {"NSTextTableBlock", "NSParam13", 2.0},
        {"NSTextTableBlock", "NSParam19", 0.5},
        {"NSTextTableBlock", "NSValueTypes", std::int64_t{1} << 30 | std::int64_t{1} << 19},
        {"NSTextTableBlock", "NSBackgroundColor", {}},
        {"NSTextTableBlock", "NSBorderColors", {}},
        {"NSTextTable", "NSNumCols", 2},
        {"NSTextTable", "NSTableFlags", 1},
        {"NSTextTable", "NSParam0", 100.0},
        {"NSTextTable", "NSValueTypes", 1},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(valueIn(objectOf(row.className), row.key), row.expected) << row.className << " " << row.key;
}

TEST_F(ArchiveKeys, OfTheDefaultParagraphStyleAreFew) {
    archive(ParagraphStyle::defaultParagraphStyle(), kParagraphStyleAttributeName);
    const Dictionary& fields = objectOf("NSParagraphStyle");
    EXPECT_EQ(fields.size(), 3U);
    EXPECT_EQ(valueIn(fields, "NSAlignment"), Value(4));
    EXPECT_EQ(valueIn(fields, "NSTabStops"), Value("$null")) << "reference 0 stands for the default stops";
}

TEST_F(ArchiveKeys, OfFontsShadowsAndAttachments) {
    archive(Font("HelveticaNeue", 13), kFontAttributeName);
    EXPECT_EQ(valueIn(objectOf("NSFont"), "NSName"), Value("HelveticaNeue"));
    EXPECT_EQ(valueIn(objectOf("NSFont"), "NSSize"), Value(13.0));
    EXPECT_EQ(valueIn(objectOf("NSFont"), "NSfFlags"), Value(16));
    EXPECT_EQ(objectOf("NSFont").size(), 4U);

    archive(Shadow{1, -2, 3, Color::black()}, kShadowAttributeName);
    EXPECT_EQ(valueIn(objectOf("NSShadow"), "NSShadowHoriz"), Value(1.0));
    EXPECT_EQ(valueIn(objectOf("NSShadow"), "NSShadowVert"), Value(-2.0));
    EXPECT_EQ(valueIn(objectOf("NSShadow"), "NSShadowBlurRadius"), Value(3.0));
    EXPECT_EQ(valueIn(objectOf("NSShadow"), "NSShadowColor"), Value());

    const auto wrapper = FileWrapper::regularFile(Data("three"));
    wrapper->setPreferredFilename("a.txt");
    archive(AttributedString::withAttachment(std::make_shared<TextAttachment>(wrapper)));
    EXPECT_EQ(valueIn(objectOf("NSTextAttachment"), "NSFileWrapper"), Value());
    EXPECT_TRUE(find(objectOf("NSFileWrapper"), "NSFileWrapperData"));
    archive(AttributedString::withAttachment(std::make_shared<TextAttachment>(Data("bytes"), "public.data")));
    EXPECT_EQ(valueIn(objectOf("NSTextAttachment"), "NSContents"), Value(Data("bytes")));
    EXPECT_EQ(valueIn(objectOf("NSTextAttachment"), "NSFileType"), Value("public.data"));
    EXPECT_EQ(valueIn(objectOf("NSTextAttachment"), "NSFileWrapper"), Value("$null"));
}

TEST_F(ArchiveKeys, OfTexts) {
    AttributedString text(u"a", AttributeSet::empty());
    archive(text);
    const Dictionary one = objectOf("NSMutableAttributedString");
    EXPECT_EQ(valueIn(one, "NSString"), Value("a"));
    EXPECT_FALSE(find(one, "NSAttributeInfo"));
    const std::vector<AttributeSet::Entry> kern{{kKernAttributeName, 1.5}};
    text.append(std::u16string(516, u'b'), std::make_shared<const AttributeSet>(kern));
    archive(text);
    EXPECT_EQ(valueIn(objectOf("NSMutableAttributedString"), "NSAttributeInfo"),
              Value(Data(std::string("\x01\x00\x84\x04\x01", 5))));
    EXPECT_EQ(objectOf("NSArray").at("NS.objects").as<Array>()->size(), 2U);
    archive(AttributedString());
    EXPECT_FALSE(find(objectOf("NSMutableAttributedString"), "NSAttributes"));
}

} // namespace platform
