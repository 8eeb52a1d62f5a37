// What other programs read out of our texts. Runs where they are installed.

#include <cstdlib>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

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

} // namespace

} // namespace platform
