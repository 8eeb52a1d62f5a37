#include "platform/rtf/RTFWriter.h"

#include <array>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/files/FileWrapper.h"
#include "platform/rtf/RTFCharacterWords.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFTestTexts.h"
#include "tests/support/Golden.h"

namespace platform {

namespace {

using namespace rtftest;

std::string rtf(const AttributedString& text) {
    return *rtfFromRange(text, {0, text.length()});
}

// What stands behind the first paragraph's formatting.
std::string body(const AttributedString& text) {
    const std::string all = rtf(text);
    constexpr std::string_view start = "\\f0\\fs24 \\cf0 ";
    const std::size_t found = all.find(start);
    return found == std::string::npos ? all : all.substr(found + start.size());
}

std::string packageText(const FileWrapper& package) {
    return std::string(package.childNamed(kRTFDTextName)->regularFileContents().bytes());
}

std::vector<std::string> allOf(const std::string& text, const std::string& pattern) {
    const std::regex regex(pattern);
    std::vector<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
        found.push_back(match->str());
    return found;
}

std::vector<std::string> keys(const FileWrapper& package) {
    std::vector<std::string> names;
    for (const auto& [key, child] : package.fileWrappers()) names.push_back(key);
    return names;
}

TEST(RTFWriter, WritesTheGoldenTexts) {
    for (const tests::GoldenCase& golden : tests::goldenCases("rtf-writer")) {
        SCOPED_TRACE(golden.name);
        const auto sample = sampleTexts().find(golden.name);
        ASSERT_NE(sample, sampleTexts().end());
        const AttributedString text = sample->second();
        tests::expectGolden(golden, "expected.rtf", packageText(**rtfdFileWrapperFromRange(text, {0, text.length()})));
    }
}

TEST(RTFWriter, WritesTheSmallestTextByteForByte) {
    EXPECT_EQ(rtf(text(u"Hello")),
              "{\\rtf1\\ansi\\ansicpg1252\\cocoartf2822\n"
              "\\cocoatextscaling0\\cocoaplatform0{\\fonttbl\\f0\\fnil\\fcharset0 HelveticaNeue;}\n"
              "{\\colortbl;\\red255\\green255\\blue255;}\n"
              "{\\*\\expandedcolortbl;;}\n"
              "\\pard\\tx560\\tx1120\\tx1680\\tx2240\\tx2800\\tx3360\\tx3920\\tx4480\\tx5040\\tx5600\\tx6160\\tx6720"
              "\\pardirnatural\\partightenfactor0\n"
              "\n"
              "\\f0\\fs24 \\cf0 Hello}");
}

TEST(RTFWriter, EscapesCharacters) {
    struct Row {
        std::u16string text;
        std::string_view written;
    };
    const Row rows[] = {
        {u"\\{}", "\\\\\\{\\}}"},
        {u"a\tb", "a\tb}"},
        {u"a\nb", "a\\\nb}"},
        {u"a\r\nb", "a\\\nb}"},
        {u"a\rb", "a\\\nb}"},
        {u"\u00E9\u00A0\u20AC", "\\'e9\\'a0\\'80}"},
        {u"\u2022", "\\uc0\\u8226 }"},
        {u"\u2713x\u25E6", "\\uc0\\u10003 x\\u9702 }"},
        {u"\uFE0F", "\\uc0\\u65039 }"},
        {u"\U0001F600", "\\uc0\\u55357 \\u56832 }"},
        {u"\u2028", "\\uc0\\u8232 }"},
        {u"\f", "\\page }"},
        {u"\u0001\u007F", "\\'01\\'7f}"},
        {u"\u0085", "\\uc0\\u133 }"},
        {std::u16string(1, char16_t{0xD800}), "\\uc0\\u55296 }"},
        {std::u16string(1, char16_t{0}), "\\'00}"},
    };
    for (const Row& row : rows) EXPECT_EQ(body(text(row.text)), row.written);
}

TEST(RTFWriter, PutsTheWindows1252HalfInHexadecimalAndNothingElse) {
    EXPECT_EQ(windows1252Byte(0x20AC), '\x80');
    EXPECT_EQ(windows1252Byte(0x0178), '\x9F');
    EXPECT_EQ(windows1252Byte(0x00FF), '\xFF');
    EXPECT_EQ(windows1252Byte(0x0081), 0);
    EXPECT_EQ(windows1252Byte(0x0000), 0);
    EXPECT_EQ(windows1252Byte(0x0100), 0);
}

TEST(RTFWriter, TellsTheFaceOfAFontThatIsNotKnownByItsName) {
    EXPECT_NE(rtf(text(u"x", font("Invented-BoldItalic"))).find("\\f0\\i\\b\\fs24 "), std::string::npos);
    EXPECT_NE(rtf(text(u"x", font("Invented"))).find("\n\\f0\\fs24 "), std::string::npos);
}

TEST(RTFWriter, ConvertsTextColorsToGenericRGBInTheOldTable) {
    const auto color = with(kForegroundColorAttributeName, Color::sRGB(0, 0.36078, 0.77255));
    EXPECT_NE(rtf(text(u"x", color)).find("\\red7\\green68\\blue184;"), std::string::npos);
}

TEST(RTFWriter, WritesOnlyTheRange) {
    const AttributedString all = fonts();
    EXPECT_EQ(rtf(all.substring({6, 5})), *rtfFromRange(all, {6, 5}));
    EXPECT_NE(rtfFromRange(all, {0, 0})->find("{\\fonttbl}"), std::string::npos);
}

TEST(RTFWriter, StartsAParagraphAgainOnlyWhenItsWordsChange) {
    ParagraphStyle other; // differs in what RTF has no word for
    other.lineBreakMode = LineBreakMode::truncatingTail;
    AttributedString both = text(u"a\n");
    both.append(u"b", styled(other));
    const std::string written = rtf(both);
    EXPECT_EQ(written.find("\\pard\\"), written.rfind("\\pard\\"));
}

TEST(RTFWriter, PutsPageAndViewOfTheDocumentAttributes) {
    const Dictionary attributes{{std::string(kPaperSizeDocumentAttribute), "{595, 842}"},
                                {std::string(kLeftMarginDocumentAttribute), 72},
                                {std::string(kRightMarginDocumentAttribute), 72.0},
                                {std::string(kViewSizeDocumentAttribute), "{576, 420}"},
                                {std::string(kViewModeDocumentAttribute), 0},
                                {std::string(kDefaultTabIntervalDocumentAttribute), 36.0}};
    const std::string written = *rtfFromRange(text(u"x"), {0, 1}, attributes);
    EXPECT_NE(written.find("}\n\\paperw11900\\paperh16840\\margl1440\\margr1440\\vieww11520\\viewh8400\\viewkind0\n"
                           "\\deftab720\n\\pard"),
              std::string::npos)
        << written;
}

TEST(RTFWriter, BeginsAFieldBehindTheWordsOfItsParagraph) {
    const AttributedString all = text(u"link", with(kLinkAttributeName, url("https://a.example/")));
    EXPECT_NE(rtf(all).find("\\f0\\fs24 \\cf0 {\\field{"), std::string::npos) << rtf(all);
}

// A field ends with its paragraph; what holds inside it holds no more behind it, and is said anew in the next one.
TEST(RTFWriter, SaysTheFormattingOfALinkInEachParagraph) {
    AttributedString all = text(u"before ");
    const Set decorated =
        set(with(kLinkAttributeName, url("https://a.example/"))->with(kUnderlineStyleAttributeName, std::int64_t{1}));
    all.append(u"one\ntwo", decorated);
    all.append(u" after", font());
    EXPECT_EQ(body(all),
              "before {\\field{\\*\\fldinst{HYPERLINK \"https://a.example/\"}}{\\fldrslt \\ul \\ulc0 one\\\n}}"
              "{\\field{\\*\\fldinst{HYPERLINK \"https://a.example/\"}}{\\fldrslt \\ul \\ulc0 two}} after}");
}

// Addresses, markers and names of fonts are kept as UTF-8, and escaped like any other text.
TEST(RTFWriter, EscapesWhatIsKeptInUTF8) {
    const std::pair<std::u16string_view, std::string_view> addresses[] = {
        {u"a:~ b", "a:~ b"},
        {u"a:{x}", "a:\\{x\\}"},
        {u"a:\\x\"\n", "a:%5Cx%22"},
        {u"a:\u007F", "a:\\'7f"},
        {u"a:\u00E9\u65E5", "a:\\'e9\\uc0\\u26085 "},
        {u"a:sixteen bytes {", "a:sixteen bytes \\{"},
    };
    for (const auto& [address, written] : addresses)
        EXPECT_TRUE(body(text(u"x", with(kLinkAttributeName, std::u16string(address))))
                        .starts_with(fmt::format("{{\\field{{\\*\\fldinst{{HYPERLINK \"{}\"}}}}", written)))
            << written;
    const std::pair<std::string_view, std::string_view> markers[] = {
        {"~", "~"}, {"\\", "\\\\"}, {"{", "\\{"}, {"}", "\\}"}, {"\u2022", "\\uc0\\u8226 "},
    };
    for (const auto& [format, written] : markers) {
        ParagraphStyle style;
        style.textLists = {std::make_shared<TextList>(std::string(format))};
        const std::string all = rtf(text(u"x", styled(style)));
        EXPECT_TRUE(all.contains(fmt::format("{{\\*\\levelmarker {}}}{{\\leveltext", written))) << all;
    }
}

TEST(RTFWriter, KnowsTheDistanceFromTheRightEdgeOnly) {
    ParagraphStyle style;
    style.tailIndent = -10;
    EXPECT_NE(rtf(text(u"x", styled(style))).find("\\ri200"), std::string::npos);
    style.tailIndent = 300; // a width
    EXPECT_EQ(rtf(text(u"x", styled(style))).find("\\ri"), std::string::npos);
}

TEST(RTFWriter, LeavesOutAMarkerThatIsTooLongForItsLength) {
    for (const std::size_t length : {std::size_t{254}, std::size_t{255}, std::size_t{256}}) {
        ParagraphStyle style;
        style.textLists = {std::make_shared<TextList>("{decimal}" + std::string(length - 1, '.'))};
        const std::string written = rtf(text(u"item", styled(style)));
        const bool fits = length < 256;
        EXPECT_EQ(written.find("{\\leveltext\\leveltemplateid1\\'00;}") == std::string::npos, fits) << length;
        EXPECT_EQ(written.find("\\'ff\\'00.") != std::string::npos, length == 255) << length;
    }
}

TEST(RTFWriter, NamesNoColorForABlackShadow) {
    const auto shadowed = [](std::optional<Color> color) {
        return body(text(u"x", with(kShadowAttributeName, Shadow{0, -1, 2, color})));
    };
    EXPECT_EQ(shadowed(Color::black()), "\\shad\\shadx0\\shady-20\\shadr40\\shado255 \\shadc0 x}");
    EXPECT_EQ(shadowed(std::nullopt), "\\shad\\shadx0\\shady-20\\shadr40\\shado85 \\shadc0 x}");
    EXPECT_EQ(shadowed(Color::sRGB(1, 0, 0, 0.5)), "\\shad\\shadx0\\shady-20\\shadr40\\shado128 \\shadc2 x}");
}

TEST(RTFWriter, LeavesAttachmentsOutOfPlainRTF) {
    const std::string written = rtf(attachments());
    EXPECT_EQ(written.find("NeXTGraphic"), std::string::npos);
    EXPECT_NE(written.find("picture \\\nfile  end}"), std::string::npos) << written;
}

TEST(RTFDWriter, NamesEachAttachmentOfAPackageOnce) {
    const AttributedString all = attachments();
    const auto package = *rtfdFileWrapperFromRange(all, {0, all.length()});
    const std::vector<std::string> expected{"TXT.rtf", "photo.png", "1__#$!@%!#__photo.png", "R\u00E9sum\u00E9 {1}.txt",
                                            "1__#$!@%!#__TXT.rtf"};
    EXPECT_EQ(keys(*package), expected);
    EXPECT_EQ(package->childNamed("1__#$!@%!#__TXT.rtf")->regularFileContents().bytes(), "not the text");
}

TEST(RTFDWriter, TakesTheSizeOfAPictureAndAnIconsForOtherFiles) {
    const AttributedString all = attachments();
    const std::string written = packageText(**rtfdFileWrapperFromRange(all, {0, all.length()}));
    EXPECT_NE(written.find("{{\\NeXTGraphic photo.png \\width640 \\height480 \\appleattachmentpadding0 "
                           "\\appleembedtype0 \\appleaqc\n}\xAC}"),
              std::string::npos);
    EXPECT_NE(written.find("__photo.png \\width1280 \\height320 "), std::string::npos);
    EXPECT_NE(written.find("R\\'c3\\'a9sum\\'c3\\'a9 \\{1\\}.txt \\width"), std::string::npos);
}

TEST(RTFDWriter, TakesTheNamesThatItsCallerGives) {
    const AttributedString all = attachments();
    std::vector<RTFDEntry> entries = rtfdEntriesInRange(all, {0, all.length()});
    ASSERT_EQ(entries.size(), 4U);
    EXPECT_EQ(entries[1].position, 9U);
    entries[1].name = "second.gif";
    const auto package = *rtfdFileWrapperFromRange(all, {0, all.length()}, {}, entries);
    EXPECT_TRUE(package->childNamed("second.gif"));
    EXPECT_NE(packageText(*package).find("{{\\NeXTGraphic second.gif \\width"), std::string::npos);
    EXPECT_EQ(entries[1].attachment->fileWrapper()->preferredFilename(), "photo.png")
        << "the note's own file keeps its name";
}

TEST(RTFDWriter, FilesKeepTheirAttributes) {
    const auto photo = attachment("photo.png", "pixels");
    const FileAttributes attributes{Date::fromUnixTime(1'000'000'000), 0600, true};
    photo->fileWrapper()->setFileAttributes(attributes);
    AttributedString all;
    append(all, photo);
    const auto package = *rtfdFileWrapperFromRange(all, {0, all.length()});
    EXPECT_EQ(package->childNamed("photo.png")->fileAttributes(), attributes);
}

TEST(RTFDWriter, LeavesAnAttachmentWithoutContentsOut) {
    AttributedString all = text(u"a");
    append(all, std::make_shared<TextAttachment>());
    all.append(u"b", font());
    EXPECT_TRUE(rtfdEntriesInRange(all, {0, all.length()}).empty());
    EXPECT_EQ(keys(**rtfdFileWrapperFromRange(all, {0, all.length()})), std::vector<std::string>{"TXT.rtf"});
}

TEST(RTFWriter, GivesEveryColorItsOwnNumberWithoutSearchingLong) {
    AttributedString all;
    constexpr int kColors = 20000;
    std::vector<TextEdit> edits;
    for (int i = 0; i < kColors; ++i)
        edits.push_back(
            {{0, 0}, text(u"x", with(kForegroundColorAttributeName, Color::sRGB(i / double{kColors}, 0, 0)))});
    all.applyEdits(edits);
    EXPECT_NE(rtf(all).find("\\cf20001 "), std::string::npos);
}

TEST(RTFWriter, KeepsOneListPerChainAndAtMostNineLevels) {
    std::vector<std::shared_ptr<TextList>> chain;
    AttributedString all;
    for (int depth = 0; depth < 12; ++depth) {
        chain.push_back(std::make_shared<TextList>("{disc}"));
        ParagraphStyle style;
        style.textLists = chain;
        all.append(u"\t\u2022\titem\n", styled(style));
    }
    const std::string written = rtf(all);
    EXPECT_NE(written.find("\\ls1\\ilvl8\\cf0 "), std::string::npos);
    EXPECT_EQ(written.find("\\ilvl9"), std::string::npos);
}

// The same change of state, within a paragraph and behind paragraph words, which take the color back.
TEST(RTFWriter, RepeatsTheColorBehindParagraphWordsOnly) {
    AttributedString all = text(u"a");
    const auto underlined = with(kUnderlineStyleAttributeName, std::int64_t{1});
    all.append(u"b", underlined);
    all.append(u"c\n", font());
    ParagraphStyle centered;
    centered.alignment = TextAlignment::center;
    all.append(u"d", set(underlined->with(kParagraphStyleAttributeName,
                                          std::make_shared<const ParagraphStyle>(std::move(centered)))));
    const std::string written = rtf(all);
    EXPECT_NE(written.find("\\cf0 a\\ul \\ulc0 b\\ulnone c\\\n"), std::string::npos) << written;
    EXPECT_TRUE(written.ends_with("\n\\cf0 \\ul \\ulc0 d}")) << written;
}

TEST(RTFWriter, NumbersAListOnceForEachChainItEnds) {
    const auto a = std::make_shared<TextList>("{decimal}."), b = std::make_shared<TextList>("{decimal}."),
               shared = std::make_shared<TextList>("{disc}");
    AttributedString all;
    for (const auto& outer : {a, b}) {
        ParagraphStyle style;
        style.textLists = {outer, shared};
        all.append(u"x\n", styled(style));
    }
    EXPECT_EQ(allOf(rtf(all), R"(\\ls\d+\\ilvl\d+)"), (std::vector<std::string>{R"(\ls1\ilvl1)", R"(\ls2\ilvl1)"}));
}

TEST(RTFWriter, RepeatsAChainFromTheTopWhereItBranches) {
    std::map<char, std::shared_ptr<TextList>> lists;
    for (const char name : {'a', 'b', 'c', 'd', 'e', 'f'}) lists[name] = std::make_shared<TextList>("{decimal}.");
    AttributedString all;
    for (const std::string_view chain : {"a", "ab", "ac", "abd", "ace", "abf", "a"}) {
        ParagraphStyle style;
        for (const char name : chain) style.textLists.push_back(lists[name]);
        all.append(u"x\n", styled(style));
    }
    const std::string written = rtf(all);
    EXPECT_EQ(allOf(written, R"(\\ls\d+\\ilvl\d+)"),
              (std::vector<std::string>{R"(\ls1\ilvl0)", R"(\ls1\ilvl1)", R"(\ls2\ilvl1)", R"(\ls1\ilvl2)",
                                        R"(\ls2\ilvl2)", R"(\ls3\ilvl2)", R"(\ls1\ilvl0)"}));
    EXPECT_EQ(allOf(written, R"(templateid\d+\\')"),
              (std::vector<std::string>{"templateid1\\'", "templateid2\\'", "templateid3\\'", "templateid101\\'",
                                        "templateid102\\'", "templateid103\\'", "templateid201\\'", "templateid202\\'",
                                        "templateid203\\'"}));
}

} // namespace

// A text may have as many states as it has characters, which differ in one thing only.
TEST(RTFCharacterState, HashesTellStatesApartByEveryNumber) {
    std::vector<RTFCharacterState> states(1);
    const auto add = [&states](auto field) {
        RTFCharacterState state;
        state.*field = 7;
        states.push_back(state);
    };
    using State = RTFCharacterState;
    for (const auto field : {&State::font, &State::color, &State::background, &State::underlineColor,
                             &State::strikethroughColor, &State::strokeColor})
        add(field);
    for (const auto field :
         {&State::milliPoints, &State::kernTwips, &State::baselineHalves, &State::underline, &State::strikethrough,
          &State::strokeWidth, &State::obliqueness, &State::expansion, &State::ligature, &State::highlightScheme})
        add(field);
    for (const State::Shadow& shadow :
         {State::Shadow{1, 0, 0, 0, 0}, {0, 1, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, 1}}) {
        states.emplace_back();
        states.back().shadow = shadow;
    }
    std::set<std::uint32_t> hashes;
    for (const State& state : states) hashes.insert(hashOf(state));
    EXPECT_EQ(hashes.size(), states.size());
}

} // namespace platform
