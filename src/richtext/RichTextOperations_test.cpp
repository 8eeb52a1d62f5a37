// Every operation and view on golden cases: input.txt has the operation with its arguments, an empty line and the dump
// of a text; expected.txt what the operation returned and the text that it left or made. A view must leave its text
// alone.
#include <functional>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/graphics/Font.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "richtext/AttachmentViews.h"
#include "richtext/Checklists.h"
#include "richtext/ImportCleanup.h"
#include "richtext/RichTextCase.h"
#include "richtext/WebCleanup.h"
#include "tests/support/Golden.h"
#include "tests/support/RichTextFixture.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {

using platform::AttributedString;
using platform::Font;
using platform::Range;
using platform::TextList;

namespace {

using Arguments = std::istringstream;
// What was returned, as text; a text made in place of a changed one replaces it.
using Operation = std::function<std::string(AttributedString& text, Arguments& arguments)>;

Range rangeArgument(Arguments& arguments) {
    Range range;
    arguments >> range.location >> range.length;
    return range;
}

std::string fontArgument(Arguments& arguments) {
    std::string name;
    arguments >> name;
    return name;
}

void webPageCleanup(AttributedString& text, Arguments& arguments) {
    const Range range = rangeArgument(arguments);
    const std::string font = fontArgument(arguments);
    WebPageCleanups including;
    for (std::string word; arguments >> word;)
        (word == "newlines" ? including.newlines : word == "sizes" ? including.sizes : including.colors) = true;
    cleanupTextFromWebPageInRange(text, range, font == "none" ? std::nullopt : std::optional(Font(font, 12)),
                                  including);
}

Operation inPlace(void (*change)(AttributedString&)) {
    return [change](AttributedString& text, Arguments&) {
        change(text);
        return std::string();
    };
}

Operation inPlace(void (*change)(AttributedString&, Range)) {
    return [change](AttributedString& text, Arguments& arguments) {
        change(text, rangeArgument(arguments));
        return std::string();
    };
}

Operation copy(AttributedString (*view)(const AttributedString&)) {
    return [view](AttributedString& text, Arguments&) {
        const std::string before = platform::textDump(text);
        AttributedString made = view(text);
        EXPECT_EQ(platform::textDump(text), before) << "the view changed its text";
        text = std::move(made);
        return std::string();
    };
}

Operation strings(std::vector<std::u16string_view> (*view)(const AttributedString&)) {
    return [view](AttributedString& text, Arguments&) {
        std::string lines;
        for (const std::u16string_view string : view(text))
            lines += string.empty() ? "\"\"\n" : platform::textDump(AttributedString(std::u16string(string)));
        text = {};
        return lines;
    };
}

// By name. Of a mail page only the body is shown.
const std::map<std::string, Operation>& operations() {
    static const auto& table = *new std::map<std::string, Operation>{
        {"cleanupHTMLNewlinesInRange",
         [](AttributedString& text, Arguments& arguments) {
             return "returned " +
                    platform::stringFromRange(cleanupHTMLNewlinesInRange(text, rangeArgument(arguments))) + "\n";
         }},
        {"fixTrailingTables", inPlace(fixTrailingTables)},
        {"addTextMarkersIfNecessary", inPlace(addTextMarkersIfNecessary)},
        {"checkForTextListsAndConvertIfNecessary", inPlace(checkForTextListsAndConvertIfNecessary)},
        {"convertTextListsToChecklistAttachments", inPlace(convertTextListsToChecklistAttachments)},
        {"convertChecklistAttachmentsToTextLists", inPlace(convertChecklistAttachmentsToTextLists)},
        {"convertChecklistAttachmentsToMarkdownSyntax", inPlace(convertChecklistAttachmentsToMarkdownSyntax)},
        {"convertDividersToText", inPlace(convertDividersToText)},
        {"convertTextToDividers", inPlace(convertTextToDividers)},
        {"replaceFileAttachmentsInRange", inPlace(replaceFileAttachmentsInRange)},
        {"adjustWebPageFontSizesInRange", inPlace(adjustWebPageFontSizesInRange)},
        {"changeFont",
         [](AttributedString& text, Arguments& arguments) {
             const Range range = rangeArgument(arguments);
             changeFont(text, Font(fontArgument(arguments), 30), range);
             return std::string();
         }},
        {"cleanupTextFromWebPageInRange",
         [](AttributedString& text, Arguments& arguments) {
             webPageCleanup(text, arguments);
             return std::string();
         }},
        {"containsFileAttachments",
         [](AttributedString& text, Arguments&) {
             const bool contains = containsFileAttachments(text);
             text = {};
             return std::string(contains ? "yes\n" : "no\n");
         }},
        {"fileAttachments",
         [](AttributedString& text, Arguments&) {
             std::string names;
             for (const auto& file : fileAttachments(text)) names += file->preferredFilename() + "\n";
             text = {};
             return names;
         }},
        {"htmlStringForSharingToMail",
         [](AttributedString& text, Arguments&) {
             const std::string page = htmlStringForSharingToMail(text).value();
             text = {};
             const std::size_t start = page.find("<body>\n") + 7;
             return page.substr(start, page.find("</body>") - start);
         }},
        {"fileURLsForNonImageAttachmentsWrittenToURL",
         [](AttributedString& text, Arguments&) {
             const tests::ScratchDirectory scratch;
             std::string files;
             for (const auto& url : fileURLsForNonImageAttachmentsWrittenToURL(
                      text, platform::URL::fileURLWithPath(scratch.path().string(), true)))
                 files += url.lastPathComponent() + ": " + tests::readFile(url.path()) + "\n";
             text = {};
             return files;
         }},
        {"generateName",
         [](AttributedString& text, Arguments&) {
             const std::u16string name = generateName(text);
             text = {};
             return platform::textDump(AttributedString(name));
         }},
        {"attributedStringWithoutAttachments", copy(attributedStringWithoutAttachments)},
        {"attributedStringByReplacingAttachmentsWithNames", copy(attributedStringByReplacingAttachmentsWithNames)},
        {"stringWithTextListMarkers", copy(stringWithTextListMarkers)},
        {"attributedStringWithFileAttachments", copy(attributedStringWithFileAttachments)},
        {"attributedStringConvertedToDynamicColors", copy(attributedStringConvertedToDynamicColors)},
        {"attributedStringConvertedFromDynamicColors", copy(attributedStringConvertedFromDynamicColors)},
        {"highlightedStrings", strings(highlightedStrings)},
        {"stringsWithBackgroundColor", strings(stringsWithBackgroundColor)},
        {"outstandingChecklistItems", strings(outstandingChecklistItems)},
        {"completedChecklistItems", strings(completedChecklistItems)},
    };
    return table;
}

std::string resultOf(std::string_view input) {
    const std::size_t head = input.find('\n');
    const std::string_view dump = input.substr(std::min(input.size(), head + 2));
    Arguments arguments{std::string(input.substr(0, head))};
    std::string name;
    arguments >> name;
    const auto operation = operations().find(name);
    if (operation == operations().end()) throw UnreadableDump("no operation " + name);
    AttributedString text = textFromDump(dump);
    EXPECT_EQ(platform::textDump(text), dump) << "the input is not a whole dump";
    const std::string returned = operation->second(text, arguments);
    return returned + platform::textDump(text);
}

class RichTextOperations : public RichTextFixture {};

} // namespace

TEST_F(RichTextOperations, MatchGoldenCases) {
    for (const auto& golden : tests::goldenCases("richtext")) {
        SCOPED_TRACE(golden.name);
        tests::expectGolden(golden, "expected.txt", resultOf(tests::readFile(golden.directory / "input.txt")));
    }
}

} // namespace quillet
