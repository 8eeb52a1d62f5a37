#include "platform/rtf/RTFReader.h"

#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/rtf/RTFTestTexts.h"
#include "platform/rtf/RTFTokenizer.h"
#include "platform/rtf/RTFWriter.h"
#include "platform/text/TextDump.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {

namespace {

using namespace rtftest;

AttributedString read(std::string_view rtf, const RTFReadOptions& options = {}) {
    auto text = attributedStringFromRTF(rtf, options);
    EXPECT_TRUE(text) << text.error().description();
    return text ? *std::move(text) : AttributedString();
}

std::u16string string(std::string_view rtf) {
    return read(rtf).string();
}

std::string packageText(const FileWrapper& package) {
    return std::string(package.childNamed(kRTFDTextName)->regularFileContents().bytes());
}

void expectSameBytesAgain(const AttributedString& text) {
    const auto first = *rtfdFileWrapperFromRange(text, {0, text.length()});
    const auto back = attributedStringFromRTFD(*first);
    ASSERT_TRUE(back) << back.error().description();
    const auto second = *rtfdFileWrapperFromRange(*back, {0, back->length()});
    EXPECT_EQ(packageText(*first), packageText(*second));
}

TEST(RTFReader, ReadsTheGoldenTexts) {
    for (const tests::GoldenCase& golden : tests::goldenCases("rtf")) {
        SCOPED_TRACE(golden.name);
        const auto text = attributedStringFromRTF(tests::readFile(golden.directory / "input.rtf"));
        tests::expectGolden(golden, "expected.txt", text ? textDump(*text) : text.error().description() + "\n");
    }
}

TEST(RTFReader, WritesTheSameBytesAgain) {
    for (const auto& [name, sample] : sampleTexts()) {
        SCOPED_TRACE(name);
        expectSameBytesAgain(sample());
    }
}

TEST(RTFReader, GivesBackTheTextThatWasWritten) {
    for (const auto& [name, sample] : sampleTexts()) {
        SCOPED_TRACE(name);
        const AttributedString text = sample();
        const auto package = *rtfdFileWrapperFromRange(text, {0, text.length()});
        std::u16string expected = text.string();
        if (name == "nested-tables") expected += u"\n"; // a cell always ends its line
        EXPECT_EQ(attributedStringFromRTFD(*package)->string(), expected);
    }
}

// Texts of random runs: whatever the writer makes of them, it makes again of what the reader gives back.
TEST(RTFReader, WritesTheSameBytesAgainWhateverTheRuns) {
    const bool ok = rc::check("write, read, write", [] {
        AttributedString text;
        const auto list = std::make_shared<TextList>("{decimal}.");
        const int runs = *rc::gen::inRange(0, 12);
        for (int run = 0; run < runs; ++run) {
            AttributeSet set =
                *font(*rc::gen::element<std::string>("HelveticaNeue", "Helvetica-Bold", "Courier", "Odd Name"),
                      *rc::gen::inRange(1, 400) / 10.0);
            if (*rc::gen::arbitrary<bool>())
                set = set.with(kForegroundColorAttributeName, Color::sRGB(*rc::gen::inRange(0, 256) / 255.0, 0.5, 1));
            if (*rc::gen::arbitrary<bool>())
                set = set.with(kUnderlineStyleAttributeName, std::int64_t{*rc::gen::element(1, 2, 9, 0x201, 0x8009)});
            if (*rc::gen::arbitrary<bool>())
                set = set.with(kLinkAttributeName, url("https://example.org/" + std::to_string(run % 2)));
            ParagraphStyle style;
            style.headIndent = *rc::gen::inRange(-200, 2000) / 10.0;
            style.alignment = static_cast<TextAlignment>(*rc::gen::inRange(0, 5));
            if (*rc::gen::arbitrary<bool>()) style.textLists = {list};
            set = set.with(kParagraphStyleAttributeName, std::make_shared<const ParagraphStyle>(style));
            std::u16string string;
            for (const std::uint16_t unit : *rc::gen::container<std::vector<std::uint16_t>>(rc::gen::oneOf(
                     rc::gen::inRange<std::uint16_t>(9, 127), rc::gen::inRange<std::uint16_t>(0, 0xFFFC))))
                if (unit != '\r') string += static_cast<char16_t>(unit);
            text.append(string, std::make_shared<const AttributeSet>(set));
        }
        const std::string first = *rtfFromRange(text, {0, text.length()});
        const auto back = attributedStringFromRTF(first);
        RC_ASSERT(back.has_value());
        RC_ASSERT(back->string() == text.string());
        RC_ASSERT(*rtfFromRange(*back, {0, back->length()}) == first);
    });
    EXPECT_TRUE(ok);
}

TEST(RTFReader, ReadsCharacters) {
    struct Row {
        std::string_view rtf;
        std::u16string_view text;
    };
    const Row rows[] = {
        {"{\\rtf1 a\\'e9\\u8226 ?b}", u"a\u00E9\u2022b"},
        {"{\\rtf1\\uc0 \\u8226 b\\u-4000 c}", u"\u2022b\uF060c"},
        {"{\\rtf1\\uc2 \\u8226 \\'81\\'45b}", u"\u2022b"},
        {"{\\rtf1\\uc1 \\u8226{x}}", u"\u2022x"},
        {"{\\rtf1\\uc1 \\u8226\\'95{\\uc0\\u9702}\\u9702 ?.}", u"\u2022\u25E6\u25E6."},
        {"{\\rtf1 \\u55357 \\u56832 }", u"\U0001F600"},
        {"{\\rtf1\\uc0 \\u65039 x}", u"\uFE0Fx"},
        {"{\\rtf1 a\\~b\\-c\\_d\\emdash\\lquote x\\rquote}", u"a\u00A0b\u00ADc\u2011d\u2014\u2018x\u2019"},
        {"{\\rtf1 a\\par\r\nb\\\nc\\line d\\tab e\tf}", u"a\nb\nc\u2028d\te\tf"},
        {"{\\rtf1 \\\\\\{\\}}", u"\\{}"},
        {"{\\rtf1 a\\v hidden\\v0 b}", u"ab"},
        {"{\\rtf1 a{\\*\\unknown {deep} x}b{\\footnote no}{\\info{\\title t}}c}", u"abc"},
        {"{\\rtf1 {\\upr{old}{\\*\\ud{new}}}}", u"new"},
        {"{\\rtf1 a\\bin3 {}}b}", u"ab"},
        {"{\\rtf1 cut off {in the \\b mid", u"cut off in the mid"},
        {"{\\rtf1 end}ignored}", u"end"},
        {"{\\rtf1}", u""},
        {"{\\rtf1 {\\field{\\*\\fldinst PAGE}{\\fldrslt 7}}}", u"7"},
        {"{\\rtf1 a{\\v hidden\\par}b}", u"a\nb"},
    };
    for (const Row& row : rows) EXPECT_EQ(utf8FromUTF16(string(row.rtf)), utf8FromUTF16(row.text)) << row.rtf;
}

TEST(RTFReader, DecodesBytesByTheFontsCharsetAndTheDocumentsCodePage) {
    struct Row {
        std::string_view rtf;
        std::u16string_view text;
    };
    const Row rows[] = {
        {"{\\rtf1\\ansi\\ansicpg1251 \\'cf\\'f0}", u"\u041F\u0440"},
        {"{\\rtf1\\ansi{\\fonttbl\\f0\\fcharset204 A;\\f1\\fcharset238 B;}\\f0 \\'cf\\f1\\'b9}", u"\u041F\u0105"},
        {"{\\rtf1\\ansi{\\fonttbl\\f0\\fcharset128 A;}\\f0 \\'93\\'fa\\'96\\'7b}", u"\u65E5\u672C"},
        {"{\\rtf1\\ansi{\\fonttbl\\f0\\fcharset134 A;}\\f0 \xD6\xD0 x}", u"\u4E2D x"},
        {"{\\rtf1\\ansi{\\fonttbl\\f0\\fcharset129 A;}\\f0 \\'c7\\'d1}", u"\uD55C"},
        {"{\\rtf1\\ansi{\\fonttbl\\f0\\fcharset136 A;}\\f0 \\'a4\\'a4}", u"\u4E2D"},
        {"{\\rtf1\\mac\\ansicpg10000 \\'8e}", u"\u00E9"},
        {"{\\rtf1\\ansi\\ansicpg99 \\'80}", u"\u20AC"},
    };
    for (const Row& row : rows) EXPECT_EQ(utf8FromUTF16(string(row.rtf)), utf8FromUTF16(row.text)) << row.rtf;
}

TEST(RTFReader, NamesLineAndOffsetOfWhatItCannotRead) {
    std::string deep = "{\\rtf1\n";
    deep.append(2000, '{');
    struct Row {
        std::string rtf, part;
    };
    for (const Row& row : {
             Row{"", "line 1, offset 0: it does not begin with {\\rtf"},
             Row{"plain text", "it does not begin with {\\rtf"},
             Row{"{\\html}", "it does not begin with {\\rtf"},
             Row{deep, "line 2, offset 1007: groups are nested deeper than 1000"},
             Row{"{\\rtf1\na\nb\\bin99 x}", "line 3, offset 10: the text ends inside binary data"},
         }) {
        const auto text = attributedStringFromRTF(row.rtf);
        ASSERT_FALSE(text);
        EXPECT_NE(text.error().localizedDescription().find(row.part), std::string::npos) << text.error().description();
    }
}

TEST(RTFReader, DropsListMarkersWhenAskedTo) {
    const AttributedString text = lists();
    const std::string rtf = *rtfFromRange(text, {0, text.length()});
    EXPECT_EQ(read(rtf, {.textListMarkers = false}).string(), u"one\ntwo\nnested\nthree\nbetween\nfirst\nno marker\n");
}

TEST(RTFReader, PutsForeignMarkersBetweenTabs) {
    constexpr std::string_view head =
        "{\\rtf1{\\*\\listtable{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01\\'b7;}{\\levelnumbers;}}"
        "\\listid7}}{\\*\\listoverridetable{\\listoverride\\listid7\\ls3}}";
    EXPECT_EQ(string(std::string(head) + "{\\listtext\\pard\\plain\\f3 \\'b7\\tab}\\pard\\ls3 item\\par}"),
              u"\t\u2022\titem\n");
    EXPECT_EQ(string("{\\rtf1{\\pntext 1.\\tab}item\\par}"), u"1.item\n");
}

TEST(RTFReader, TakesFilesOfAPackageInBothForms) {
    const auto package = FileWrapper::directory();
    package->setFileWrapper("old.tiff", FileWrapper::regularFile(Data(std::string("old"))));
    package->setFileWrapper("n\u00E9w {1}.png", FileWrapper::regularFile(Data(std::string("new"))));
    package->setFileWrapper(
        std::string(kRTFDTextName),
        FileWrapper::regularFile(Data(std::string(
            "{\\rtf1\\ansi a{{\\NeXTGraphic old.tiff \\width640 \\height480\n}\xAC}"
            "b{{\\NeXTGraphic n\\'c3\\'a9w \\{1\\}.png \\width640 \\height480 \\noorient\\appleattachmentpadding0 "
            "\\appleembedtype0 \\appleaqc\n}\\'ac}c{{\\NeXTGraphic gone.png \\width1}\xAC}d\xAC}"))));
    const auto text = attributedStringFromRTFD(*package);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->string(), u"a\uFFFCb\uFFFCcd\u00AC");
    const auto* value = std::get_if<TextAttachmentReference>(text->attributeAt(kAttachmentAttributeName, 3));
    ASSERT_TRUE(value);
    EXPECT_EQ((*value)->fileWrapper()->regularFileContents().bytes(), "new");
    EXPECT_FALSE(text->attributeAt(kAttachmentAttributeName, 2));
}

TEST(RTFReader, TakesTheNameOfAFileUpToTheFirstWordBehindIt) {
    const auto package = FileWrapper::directory();
    package->setFileWrapper("a.png", FileWrapper::regularFile(Data(std::string("a"))));
    package->setFileWrapper(
        std::string(kRTFDTextName),
        FileWrapper::regularFile(Data(std::string("{\\rtf1{{\\NeXTGraphic a.png \\width1 more \\'e9\\u233 ?}\xAC}"
                                                  "{{\\NeXTGraphic TXT.rtf \\width1}\xAC}end}"))));
    const auto text = attributedStringFromRTFD(*package);
    ASSERT_TRUE(text);
    EXPECT_EQ(text->string(), u"\uFFFCend") << "the text is no file of its own";
}

TEST(RTFReader, TakesTheAddressOfALinkFromItsArguments) {
    const std::pair<std::string_view, std::string_view> rows[] = {
        {"HYPERLINK \"http://a.example/\"", "http://a.example/"},
        {" HYPERLINK http://a.example/ ", "http://a.example/"},
        {"HYPERLINK \\\\o \"a tip\" \"http://a.example/\"", "http://a.example/"},
        {"HYPERLINK \"http://a.example/\" \\\\t \"_blank\"", "http://a.example/"},
        {"HYPERLINK \"http://a.example/\" \\\\l \"part\"", "http://a.example/#part"},
        {"HYPERLINK \\\\l \"part\"", "#part"},
        {"PAGEREF here", ""},
        {"HYPERLINK", ""},
    };
    for (const auto& [instruction, address] : rows) {
        const AttributedString text =
            read("{\\rtf1{\\field{\\*\\fldinst{" + std::string(instruction) + "}}{\\fldrslt x\\plain y}}z}");
        ASSERT_EQ(text.string(), u"xyz") << instruction;
        for (std::size_t at = 0; at < 2; ++at) { // \plain does not end a link
            const AttributeValue* link = text.attributeAt(kLinkAttributeName, at);
            ASSERT_EQ(link != nullptr, !address.empty()) << instruction;
            if (link) {
                EXPECT_EQ(std::get<URL>(*link).absoluteString(), address);
            }
        }
        EXPECT_FALSE(text.attributeAt(kLinkAttributeName, 2));
    }
}

// Elsewhere the word says from which size on fonts kern.
TEST(RTFReader, KernOfNothingIsAKernOnlyInThePlatformsTexts) {
    EXPECT_TRUE(read("{\\rtf1\\cocoartf2822 \\expnd0\\expndtw0\\kerning0 x}").attributeAt(kKernAttributeName, 0));
    EXPECT_FALSE(read("{\\rtf1 \\expnd0\\expndtw0\\kerning0 x}").attributeAt(kKernAttributeName, 0));
    EXPECT_FALSE(read("{\\rtf1\\cocoartf2822 \\kerning1\\expnd0\\expndtw0 x}").attributeAt(kKernAttributeName, 0));
}

TEST(RTFReader, AnEmptyCellIsALineEvenWhereItsDepthIsWrong) {
    EXPECT_EQ(string("{\\rtf1\\trowd\\cellx100\\cellx200\\pard\\intbl\\itap2\\cell b\\cell\\row}"), u"\nb\n");
}

TEST(RTFReader, TurnsPicturesInsideTheTextIntoFiles) {
    const AttributedString text =
        read("{\\rtf1 a{\\*\\shppict{\\pict\\picw1\\pngblip\n8950\n4e47}}{\\nonshppict{\\pict 00}}"
             "{\\pict\\jpegblip\\bin3 {x}}{\\pict\\wmetafile8 0102}b}");
    EXPECT_EQ(text.string(), u"a\uFFFC\uFFFCb");
    const auto* value = std::get_if<TextAttachmentReference>(text.attributeAt(kAttachmentAttributeName, 1));
    EXPECT_EQ((*value)->fileWrapper()->regularFileContents().bytes(), "\x89PNG");
    EXPECT_EQ((*value)->fileWrapper()->preferredFilename(), "Image.png");
    value = std::get_if<TextAttachmentReference>(text.attributeAt(kAttachmentAttributeName, 2));
    EXPECT_EQ((*value)->fileWrapper()->regularFileContents().bytes(), "{x}");
}

TEST(RTFReader, RefusesAPackageWithoutText) {
    EXPECT_FALSE(attributedStringFromRTFD(*FileWrapper::directory()));
    EXPECT_FALSE(attributedStringFromRTFD(*FileWrapper::regularFile(Data())));
}

TEST(RTFReader, GivesTheDocumentAttributesBack) {
    const Dictionary attributes{{std::string(kPaperSizeDocumentAttribute), "{595, 842.5}"},
                                {std::string(kLeftMarginDocumentAttribute), 72.0},
                                {std::string(kViewSizeDocumentAttribute), "{576, 420}"},
                                {std::string(kViewModeDocumentAttribute), 0},
                                {std::string(kDefaultTabIntervalDocumentAttribute), 36.0}};
    Dictionary read;
    ASSERT_TRUE(attributedStringFromRTF(*rtfFromRange(text(u"x"), {0, 1}, attributes), {}, &read));
    EXPECT_EQ(read.size(), attributes.size() + 1);
    read.erase(std::string(kCocoaRTFVersionDocumentAttribute));
    EXPECT_EQ(read, attributes);
}

// Time grows with the length alone: shapes that make careless readers copy the same thing over and over.
TEST(RTFReader, ReadsUnfriendlyShapesWithoutDelay) {
    constexpr int kMany = 20000;
    const auto repeated = [](std::string_view piece) {
        std::string text;
        for (int i = 0; i < kMany; ++i) text += piece;
        return text;
    };
    const std::string shapes[] = {
        repeated("\\tx100") + repeated("{}"),
        "\\trowd" + repeated("\\cellx100") + repeated("\\intbl\\cell\\row "),
        repeated("{\\field{\\*\\fldinst HYPERLINK \"a\"}{\\fldrslt x}}"),
        repeated("\\trowd\\cellx1\\pard\\intbl x\\cell\\row "),
        repeated("\\pard\\intbl\\itap2 x\\nestcell "),
        "{\\fonttbl" + repeated("\\f1 a;") + "}" + repeated("\\f1 x"),
    };
    for (const std::string& shape : shapes) EXPECT_TRUE(attributedStringFromRTF("{\\rtf1 " + shape + "}"));
}

TEST(RTFTokenizer, SplitsWordsNumbersAndText) {
    RTFTokenizer tokens("{\\ab-12 text\\c99999999999\\'fF\\'g\\*}");
    EXPECT_EQ(tokens.next().kind, RTFToken::Kind::beginGroup);
    const RTFToken word = tokens.next();
    EXPECT_EQ(word.bytes, "ab");
    EXPECT_EQ(word.number, -12);
    EXPECT_EQ(tokens.next().bytes, "text");
    EXPECT_EQ(tokens.next().number, 2147483647);
    EXPECT_EQ(tokens.next().byte, 0xFF);
    EXPECT_EQ(tokens.next().byte, '\'');
    EXPECT_EQ(tokens.next().bytes, "g");
    EXPECT_EQ(tokens.next().byte, '*');
    EXPECT_EQ(tokens.next().kind, RTFToken::Kind::endGroup);
    EXPECT_EQ(tokens.next().kind, RTFToken::Kind::end);
}

} // namespace

} // namespace platform
