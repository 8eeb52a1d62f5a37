// What other programs read out of our texts. Runs where they are installed.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFReader.h"
#include "platform/rtf/RTFWriter.h"
#include "platform/text/ParagraphStyle.h"
#include "platform/text/TextAttachment.h"
#include "tests/support/Golden.h"
#include "tests/support/ScratchDirectory.h"

namespace platform {

namespace {

bool isInstalled(const std::string& program) {
    return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

// What the program makes of a golden text; it is given the text's path at the end of its command line.
std::string outputOf(const std::string& command, const std::string& golden) {
    const tests::ScratchDirectory scratch;
    const auto output = scratch.path() / "output";
    const auto input = tests::sourceDirectory() / "tests/golden/rtf-writer" / golden / "expected.rtf";
    const std::string line = command + " '" + input.string() + "' >'" + output.string() + "' 2>/dev/null";
    EXPECT_EQ(std::system(line.c_str()), 0) << line;
    return tests::readFile(output);
}

void expectParts(const std::string& text, std::initializer_list<std::string_view> parts) {
    std::size_t position = 0;
    for (const std::string_view part : parts) {
        const std::size_t found = text.find(part, position);
        ASSERT_NE(found, std::string::npos) << part << " is not in its place in:\n" << text;
        position = found + part.size();
    }
}

TEST(RTFOtherReaders, PandocFindsCharactersLinksAndDecorations) {
    if (!isInstalled("pandoc")) GTEST_SKIP() << "pandoc is not installed";
    expectParts(outputOf("pandoc -f rtf -t html --wrap=none", "characters"),
                {"Plain \\ { } tab", "here, caf\u00E9", "\u20AC \u201Cquoted\u201D \u2022 \u65E5\u672C"});
    expectParts(
        outputOf("pandoc -f rtf -t html --wrap=none", "links"),
        {"See <a href=\"https://example.org/a?b=c&amp;d#e\">this page</a>, or ", "bold", " and plain</a> then "});
    expectParts(outputOf("pandoc -f rtf -t html --wrap=none", "decorations"),
                {"<u>on</u> off", "<del>on</del>", "<sup>on", "<sub>"});
}

TEST(RTFOtherReaders, PandocFindsListsAndCells) {
    if (!isInstalled("pandoc")) GTEST_SKIP() << "pandoc is not installed";
    expectParts(outputOf("pandoc -f rtf -t plain", "lists"),
                {"-   one", "-   two", "nested", "-   three", "1.  first"});
    expectParts(outputOf("pandoc -f rtf -t plain", "tables"),
                {"B1 and B2", "C1", "A1", "second line", "A2", "C2", "A3 and B3", "after"});
}

TEST(RTFOtherReaders, UnrtfFindsTheTextOfParagraphsAndCells) {
    if (!isInstalled("unrtf")) GTEST_SKIP() << "unrtf is not installed";
    expectParts(outputOf("unrtf --text", "tables"), {"before", "A1", "second line", "B1 and B2", "A3 and B3", "after"});
    expectParts(outputOf("unrtf --text", "fonts"), {"plain", "bold", "both", "code", "times", "larger", "no font"});
}

// ---- LibreOffice: the whole text, line by line

// A paragraph's text without the marker of an item. A numbered item's marker is its number; what a bullet looks like is
// LibreOffice's own choice.
struct OutputLine {
    std::string text;
    bool isItem = false;
    std::string number;
    friend bool operator==(const OutputLine&, const OutputLine&) = default;
};

// LibreOffice takes the bytes of a file's name for Windows-1252, and shows the name and a not sign for an attachment.
std::string shownName(std::string_view name) {
    std::u16string shown;
    for (const char byte : name) {
        char16_t unit = static_cast<unsigned char>(byte);
        for (char16_t other = 0x100; other < 0x2200 && unit >= 0x80 && unit < 0xA0; ++other)
            if (windows1252Byte(other) == byte) unit = other;
        shown += unit;
    }
    return utf8FromUTF16(shown + u" \u00AC");
}

bool isNumber(std::string_view marker) {
    return std::ranges::all_of(marker, [](char c) { return c > 0; }); // bullets are not ASCII
}

bool isItem(const AttributeSet& attributes) {
    const auto* style = attributes.find<ParagraphStyleReference>(kParagraphStyleAttributeName);
    return style && !(*style)->textLists.empty();
}

// A paragraph of our own reading. LibreOffice has no use for a lone surrogate and takes the next character with it.
OutputLine lineOf(const AttributedString& text, Range paragraph) {
    OutputLine line;
    std::size_t position = paragraph.location;
    line.isItem = isItem(text.attributesAt(position));
    if (line.isItem && text.string()[position] == u'\t') {
        const std::size_t end = text.string().find(u'\t', position + 1);
        const std::string marker = utf8FromUTF16(text.string().substr(position + 1, end - position - 1));
        if (isNumber(marker)) line.number = marker;
        position = end + 1;
    }
    while (position < paragraph.end()) {
        const std::u16string_view rest = std::u16string_view(text.string()).substr(position);
        const auto* attachment = text.attributesAt(position).find<TextAttachmentReference>(kAttachmentAttributeName);
        const bool isPair = isHighSurrogate(rest[0]) && rest.size() > 1 && isLowSurrogate(rest[1]);
        const bool isLone = !isPair && (isHighSurrogate(rest[0]) || isLowSurrogate(rest[0]));
        if (attachment)
            line.text += shownName((*attachment)->fileWrapper()->preferredFilename());
        else
            line.text += isLone ? "?" : utf8FromUTF16(rest.substr(0, isPair ? 2 : 1));
        position += isPair || isLone ? 2 : 1;
    }
    return line;
}

// Without empty lines: merged cells are such in LibreOffice and nothing with us.
std::vector<OutputLine> linesOf(const AttributedString& text) {
    std::vector<OutputLine> lines;
    for (std::size_t position = 0; position < text.length();) {
        const Line paragraph = paragraphAt(text.string(), position);
        if (paragraph.contents.length > 0) {
            OutputLine line = lineOf(text, paragraph.contents);
            if (!line.text.empty()) lines.push_back(std::move(line));
        }
        position = paragraph.enclosing.end();
    }
    return lines;
}

// What LibreOffice wrote; items are indented, their marker ends at a blank. Its bullets are its own.
std::vector<OutputLine> linesOf(std::string_view output) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (output.starts_with(kByteOrderMark)) output.remove_prefix(kByteOrderMark.size());
    std::vector<OutputLine> lines;
    while (!output.empty()) {
        const std::size_t end = std::min(output.find('\n'), output.size());
        std::string_view text = output.substr(0, end);
        output.remove_prefix(std::min(end + 1, output.size()));
        if (text.empty()) continue;
        OutputLine line;
        line.isItem = text.starts_with("    ");
        if (line.isItem) {
            text.remove_prefix(text.find_first_not_of(' '));
            const std::string_view marker = text.substr(0, text.find(' '));
            if (isNumber(marker)) line.number = marker;
            text.remove_prefix(std::min(marker.size() + 1, text.size()));
        }
        line.text = text;
        lines.push_back(std::move(line));
    }
    return lines;
}

void PrintTo(const OutputLine& line, std::ostream* out) {
    *out << (line.isItem ? "item " + line.number + ": " : "") << line.text;
}

// Every text that the writer's golden cases and the golden packages hold, with the files beside it.
struct GoldenText {
    std::string name;
    std::filesystem::path path;
};
std::vector<GoldenText> goldenTexts() {
    std::vector<GoldenText> texts;
    for (const tests::GoldenCase& golden : tests::goldenCases("rtf-writer"))
        texts.push_back({"writer-" + golden.name, golden.directory / "expected.rtf"});
    for (const tests::GoldenCase& golden : tests::goldenCases("packages"))
        texts.push_back({"package-" + golden.name, golden.directory / "input.qltnote" / kRTFDTextName});
    return texts;
}

// A package with a file for every name that the text has a place for.
std::shared_ptr<FileWrapper> packageOf(const std::string& rtf) {
    auto package = FileWrapper::directory();
    package->setFileWrapper(std::string(kRTFDTextName), FileWrapper::regularFile(Data(rtf)));
    constexpr std::string_view kBegin = "\\NeXTGraphic ", kEnd = " \\width";
    for (std::size_t at = rtf.find(kBegin); at != std::string::npos; at = rtf.find(kBegin, at + 1)) {
        const std::size_t start = at + kBegin.size();
        std::string name;
        for (std::size_t i = start; i < rtf.find(kEnd, start); ++i) {
            if (rtf[i] != '\\')
                name += rtf[i];
            else if (rtf[++i] != '\'')
                name += rtf[i];
            else
                name += static_cast<char>(std::stoi(rtf.substr(std::exchange(i, i + 2) + 1, 2), nullptr, 16));
        }
        package->setFileWrapper(name, FileWrapper::regularFile(Data(std::string("file"))));
    }
    return package;
}

TEST(RTFOtherReaders, LibreOfficeReadsTheSameText) {
    if (!isInstalled("soffice")) GTEST_SKIP() << "LibreOffice is not installed";
    const tests::ScratchDirectory scratch;
    for (const GoldenText& text : goldenTexts())
        tests::writeFile(scratch / (text.name + ".rtf"), tests::readFile(text.path));
    const std::string place = scratch.path().string();
    const std::string line = "HOME='" + place +
                             "' timeout 240 soffice --headless --norestore -env:UserInstallation='file://" + place +
                             "/profile' --convert-to 'txt:Text (encoded):UTF8' --outdir '" + place + "/out' '" + place +
                             "'/*.rtf >/dev/null 2>&1";
    ASSERT_EQ(std::system(line.c_str()), 0) << line;
    for (const GoldenText& each : goldenTexts()) {
        const auto ours = attributedStringFromRTFD(*packageOf(tests::readFile(each.path)));
        ASSERT_TRUE(ours) << each.name << ": " << ours.error().description();
        const std::vector<OutputLine> expected = linesOf(*ours);
        auto read = linesOf(tests::readFile(scratch.path() / "out" / (each.name + ".txt")));
        // An item without marker is one of a list all the same, and LibreOffice numbers it.
        for (std::size_t i = 0; i < std::min(read.size(), expected.size()); ++i)
            if (expected[i].number.empty()) read[i].number.clear();
        EXPECT_EQ(read, expected) << each.name;
    }
}

} // namespace

} // namespace platform
