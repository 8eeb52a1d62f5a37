// Rich texts that the tests of writer and reader share, each showing one thing.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/files/FileWrapper.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"

namespace platform::rtftest {

using Set = AttributeSet::Reference;

inline Set set(AttributeSet attributes) {
    return std::make_shared<const AttributeSet>(std::move(attributes));
}
inline Set font(std::string_view name = "HelveticaNeue", double size = 12) {
    return set({{kFontAttributeName, Font(name, size)}});
}
inline Set with(AttributeName name, AttributeValue value) {
    return set(font()->with(name, std::move(value)));
}
inline Set styled(ParagraphStyle style) {
    return with(kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(std::move(style)));
}
inline AttributedString text(std::u16string_view string, const Set& attributes = font()) {
    return AttributedString(std::u16string(string), attributes);
}
inline URL url(std::string_view address) {
    return *URL::fromString(address);
}
inline TextAttachmentReference attachment(std::string_view name, std::string contents) {
    auto wrapper = FileWrapper::regularFile(Data(std::move(contents)));
    wrapper->setPreferredFilename(std::string(name));
    return std::make_shared<TextAttachment>(std::move(wrapper));
}
inline void append(AttributedString& to, const TextAttachmentReference& object) {
    to.append(std::u16string(1, kAttachmentCharacter), with(kAttachmentAttributeName, object));
}

// One table; cells append their paragraphs to a text.
struct TableMaker {
    AttributedString& text;
    std::shared_ptr<TextTable> table = std::make_shared<TextTable>();

    TableMaker(AttributedString& to, std::int64_t columns) : text(to) { table->numberOfColumns = columns; }

    std::shared_ptr<TextTableBlock> block(std::int64_t row, std::int64_t rows, std::int64_t column,
                                          std::int64_t columns) const {
        return std::make_shared<TextTableBlock>(table, row, rows, column, columns);
    }
    void add(const std::vector<std::shared_ptr<TextBlock>>& blocks, std::u16string_view contents) const {
        ParagraphStyle style;
        style.textBlocks = blocks;
        text.append(contents, styled(std::move(style)));
    }
    void cell(std::int64_t row, std::int64_t rows, std::int64_t column, std::int64_t columns,
              std::u16string_view contents) const {
        add({block(row, rows, column, columns)}, contents);
    }
};

inline AttributedString characters() {
    return text(u"Plain \\ { } tab\there, caf\u00E9 \u00A0\u20AC \u201Cquoted\u201D \u2022 \u65E5\u672C "
                u"\U0001F600\uFE0F\u2028lone \xD83D up \xDBFF end\nsecond");
}

inline AttributedString fonts() {
    AttributedString all = text(u"plain ");
    all.append(u"bold ", font("HelveticaNeue-Bold"));
    all.append(u"both ", font("Helvetica-BoldOblique", 18));
    all.append(u"code ", font("Courier", 9.333));
    all.append(u"times ", font("Times-Roman"));
    all.append(u"larger", font("Times-Roman", 13.5));
    all.append(u" no font", AttributeSet::empty());
    return all;
}

inline AttributedString colors() {
    AttributedString all = text(u"none ");
    all.append(u"red ", with(kForegroundColorAttributeName, Color::sRGB(1, 0, 0)));
    all.append(u"dynamic ", with(kForegroundColorAttributeName, Color::textColor()));
    all.append(u"black ", with(kForegroundColorAttributeName, Color::black()));
    all.append(u"old ", with(kForegroundColorAttributeName, Color::calibratedRGB(0.2, 0.4, 0.6)));
    all.append(u"marked ", with(kBackgroundColorAttributeName, Color::sRGB(1, 1, 0, 0.5)));
    all.append(u"end", font());
    return all;
}

inline AttributedString decorations() {
    struct Row {
        AttributeName name;
        AttributeValue value;
    };
    AttributedString all;
    for (const Row& row : {
             Row{kUnderlineStyleAttributeName, std::int64_t{1}},
             Row{kUnderlineStyleAttributeName, std::int64_t{9}},
             Row{kUnderlineStyleAttributeName, std::int64_t{0x101}},
             Row{kUnderlineStyleAttributeName, std::int64_t{0x8109}},
             Row{kStrikethroughStyleAttributeName, std::int64_t{1}},
             Row{kStrikethroughStyleAttributeName, std::int64_t{9}},
             Row{kStrikethroughStyleAttributeName, std::int64_t{0x102}},
             Row{kSuperscriptAttributeName, std::int64_t{1}},
             Row{kSuperscriptAttributeName, std::int64_t{-1}},
             Row{kBaselineOffsetAttributeName, 3.5},
             Row{kBaselineOffsetAttributeName, -2.0},
             Row{kKernAttributeName, 0.0},
             Row{kKernAttributeName, 1.5},
             Row{kStrokeWidthAttributeName, 3.0},
             Row{kStrokeColorAttributeName, Color::black()},
             Row{kObliquenessAttributeName, 0.16},
             Row{kExpansionAttributeName, -0.25},
             Row{kLigatureAttributeName, std::int64_t{0}},
             Row{kShadowAttributeName, Shadow{0, -4.4, 0.65, Color::black().withAlphaComponent(0.62)}},
             Row{kShadowAttributeName, Shadow{1, 1, 0, Color::sRGB(0, 0, 1)}},
         }) {
        all.append(u"on", with(row.name, row.value));
        all.append(u" off ", font());
    }
    all.append(u"colored", set(with(kUnderlineStyleAttributeName, std::int64_t{1})
                                   ->with(kUnderlineColorAttributeName, Color::sRGB(0, 1, 0))));
    return all;
}

inline AttributedString highlights() {
    AttributedString all = text(u"none ");
    for (const char16_t* scheme : {u"Default", u"Purple", u"Pink", u"Orange", u"Mint", u"Blue"}) {
        AttributeSet attributes =
            font()->with(kTextHighlightStyleAttributeName, std::u16string(u"NSTextHighlightStyleDefault"));
        all.append(scheme, set(attributes.with(kTextHighlightColorSchemeAttributeName,
                                               std::u16string(u"NSTextHighlightColorScheme") + scheme)));
        all.append(u" ", font());
    }
    return all;
}

inline AttributedString paragraphs() {
    AttributedString all = text(u"default\nsame\n");
    ParagraphStyle style;
    style.alignment = TextAlignment::center;
    all.append(u"centered\n", styled(style));
    style = {};
    style.alignment = TextAlignment::right;
    style.baseWritingDirection = WritingDirection::rightToLeft;
    all.append(u"\u05E9\u05DC\u05D5\u05DD\n", styled(style));
    style = {};
    style.alignment = TextAlignment::justified;
    style.baseWritingDirection = WritingDirection::leftToRight;
    style.tabStops = {
        {TextAlignment::right, 30, false}, {TextAlignment::center, 60, false}, {TextAlignment::left, 90, true}};
    style.defaultTabInterval = 36;
    style.headIndent = 36;
    style.firstLineHeadIndent = 18;
    style.tailIndent = -12.5;
    all.append(u"indented\n", styled(style));
    style = {};
    style.lineHeightMultiple = 1.3;
    style.minimumLineHeight = 10;
    style.maximumLineHeight = 20;
    style.lineSpacing = 2;
    style.paragraphSpacing = 12;
    style.paragraphSpacingBefore = 6;
    style.hyphenationFactor = 0.9F;
    all.append(u"spaced\n", styled(style));
    style = {};
    style.minimumLineHeight = style.maximumLineHeight = 14;
    style.allowsDefaultTighteningForTruncation = true;
    all.append(u"exact", styled(style));
    return all;
}

inline AttributedString lists() {
    const auto disc = std::make_shared<TextList>("{disc}");
    const auto numbers = std::make_shared<TextList>("({lower-alpha})", 0, 3);
    const auto second = std::make_shared<TextList>("{decimal}.");
    const auto inLists = [](std::vector<std::shared_ptr<TextList>> lists) {
        ParagraphStyle style;
        style.textLists = std::move(lists);
        return styled(std::move(style));
    };
    AttributedString all;
    all.append(u"\t\u2022\tone\n\t\u2022\ttwo\n", inLists({disc}));
    all.append(u"\t(c)\tnested\n", inLists({disc, numbers}));
    all.append(u"\t\u2022\tthree\n", inLists({disc}));
    all.append(u"between\n", font());
    all.append(u"\t1.\tfirst\nno marker\n\t2.\t", inLists({second}));
    return all;
}

inline AttributedString links() {
    AttributedString all = text(u"See ");
    all.append(u"this page", with(kLinkAttributeName, url("https://example.org/a?b=c&d#e")));
    all.append(u", or ", font());
    const AttributeSet bold = font("HelveticaNeue-Bold")->with(kLinkAttributeName, url("https://example.org/two"));
    all.append(u"bold", set(bold));
    all.append(u" and plain", with(kLinkAttributeName, url("https://example.org/two")));
    all.append(u" then ", font());
    all.append(u"text\n", with(kLinkAttributeName, std::u16string(u"not \"an\" address")));
    all.append(u"over\ntwo lines", with(kLinkAttributeName, url("quillet://note/1")));
    return all;
}

inline AttributedString tables() {
    AttributedString all = text(u"before\n");
    TableMaker maker(all, 3);
    const auto framed = maker.block(0, 1, 0, 1);
    for (const BlockEdge edge : {BlockEdge::left, BlockEdge::top, BlockEdge::right, BlockEdge::bottom}) {
        framed->width(BlockLayer::border, edge).value = 1;
        framed->width(BlockLayer::padding, edge).value = 5;
        framed->width(BlockLayer::margin, edge).value = 0.5;
        framed->borderColors[static_cast<std::size_t>(edge)] = Color::sRGB(0.5, 0.5, 0.5);
    }
    framed->verticalAlignment = BlockVerticalAlignment::middle;
    framed->backgroundColor = Color::sRGB(0, 1, 1);
    framed->dimension(BlockDimension::width) = {25, true};
    maker.add({framed}, u"A1\nsecond line\n");
    maker.cell(0, 2, 1, 1, u"B1 and B2\n");
    maker.cell(0, 1, 2, 1, u"C1\n");
    maker.cell(1, 1, 0, 1, u"A2\n");
    maker.cell(1, 1, 2, 1, u"C2\n");
    maker.cell(2, 1, 0, 2, u"A3 and B3\n");
    maker.cell(2, 1, 2, 1, u"\n");
    all.append(u"after", font());
    return all;
}

inline AttributedString nestedTables() {
    AttributedString all;
    TableMaker outer(all, 2);
    outer.table->collapsesBorders = true;
    const auto holder = outer.block(0, 1, 0, 1);
    outer.add({holder}, u"above\n");
    TableMaker inner(all, 2);
    inner.add({holder, inner.block(0, 1, 0, 1)}, u"a\n");
    inner.add({holder, inner.block(0, 1, 1, 1)}, u"b\n");
    inner.add({holder, inner.block(1, 1, 0, 2)}, u"c\n");
    outer.cell(0, 1, 1, 1, u"beside\n");
    outer.cell(1, 1, 0, 2, u"below");
    return all;
}

inline AttributedString attachments() {
    AttributedString all = text(u"picture ");
    append(all, attachment("photo.png", std::string("\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x20\0\0\0\x18", 24)));
    append(all, attachment("photo.png", std::string("GIF89a\x40\0\x10\0", 10)));
    all.append(u"\nfile ", font());
    append(all, attachment("R\u00E9sum\u00E9 {1}.txt", "hello"));
    append(all, attachment("TXT.rtf", "not the text"));
    all.append(u" end", font());
    return all;
}

inline const std::map<std::string, std::function<AttributedString()>>& sampleTexts() {
    static const auto& samples = *new std::map<std::string, std::function<AttributedString()>>{
        {"attachments", attachments},
        {"characters", characters},
        {"colors", colors},
        {"decorations", decorations},
        {"empty", [] { return AttributedString(); }},
        {"fonts", fonts},
        {"highlights", highlights},
        {"links", links},
        {"lists", lists},
        {"nested-tables", nestedTables},
        {"paragraphs", paragraphs},
        {"tables", tables},
    };
    return samples;
}

} // namespace platform::rtftest
