// The repairs of imported text and the web page cleanup against plain ones.
#include <algorithm>

#include <rapidcheck.h>

#include "platform/base/UTF16.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/RegularExpression.h"
#include "platform/graphics/Font.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "platform/text/TextTable.h"
#include "richtext/ImportCleanup.h"
#include "richtext/PlainWalks.h"
#include "richtext/RandomRichText.h"
#include "richtext/WebCleanup.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/ParagraphStyles.h"
#include "tests/support/RichTextFixture.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeValue;
using platform::Font;
using platform::Line;
using platform::ParagraphStyle;
using platform::ParagraphStyleReference;
using platform::Range;
using platform::TextList;

namespace {

bool isBlank(std::u16string_view text) {
    return platform::trimmed(text, platform::CharacterSet::whitespaceAndNewline()).empty();
}

Range cleanUpNewlines(AttributedString& text, Range range) {
    bool hasParagraphSpacing = false, needsBlankLines = true, previousLineIsListItem = false;
    Range result = range;
    text.enumerateAttribute(platform::kParagraphStyleAttributeName, range, [&](const AttributeValue* value, Range) {
        if (!value) return;
        const ParagraphStyle& style = *std::get<ParagraphStyleReference>(*value);
        if (style.paragraphSpacing > 0 || style.paragraphSpacingBefore > 0) hasParagraphSpacing = true;
    });
    std::vector<Line> lines = platform::linesInRange(text.string(), range);
    for (const Line& line : lines)
        if (isBlank(slice(text, line.contents)) && line.enclosing.end() < text.length()) needsBlankLines = false;
    std::ranges::reverse(lines);
    for (const Line& line : lines) {
        if (!needsBlankLines || isBlank(slice(text, line.contents))) continue;
        ParagraphStyle style = paragraphStyleAt(text, line.contents.location);
        const bool isListItem = !style.textLists.empty();
        if (isListItem && previousLineIsListItem) continue;
        previousLineIsListItem = isListItem;
        if (hasParagraphSpacing) {
            style.paragraphSpacing = style.paragraphSpacingBefore = 0;
            setStyle(text, style, line.enclosing);
            const std::size_t end = line.contents.end();
            if (text.length() > end + 2 && slice(text, {end, 2}) == u"\n\n") continue;
        }
        typeAt(text, line.enclosing.end(), u"\n");
        ++result.length;
    }
    return result;
}

void fixTables(AttributedString& text) {
    std::shared_ptr<platform::TextTable> current;
    Range tableRange{platform::kNotFound, 0};
    walkStyles(text, [&](const ParagraphStyle& style, Range run) {
        std::shared_ptr<platform::TextTableBlock> block;
        if (!style.textBlocks.empty())
            block = std::dynamic_pointer_cast<platform::TextTableBlock>(style.textBlocks.front());
        if (block && block->table == current) {
            tableRange.length = run.end() - tableRange.location;
        } else if (block && !current) {
            current = block->table;
            tableRange = run;
        } else if (!block && current) {
            tableRange.location = platform::kNotFound;
            current = nullptr;
        }
    });
    if (tableRange.location == platform::kNotFound || tableRange.end() != text.length()) return;
    const AttributedString last = text.substring({text.length() - 1, 1});
    AttributedString newline(u"\n", last.runs().front().attributes);
    newline.removeAttribute(platform::kParagraphStyleAttributeName, {0, 1});
    text.append(newline);
}

void addMarkers(AttributedString& text) {
    std::int64_t counter = 0;
    walkStyles(text, [&](const ParagraphStyle& style, Range run) {
        if (style.textLists.empty()) {
            counter = 0;
            return;
        }
        walkLines(text, run, [&](const Line& line) {
            const std::u16string prefix = u"\t" + style.textLists.back()->markerForItemNumber(++counter) + u"\t";
            if (slice(text, line.contents).starts_with(prefix)) return;
            typeAt(text, line.contents.location, prefix);
            setStyle(text, style, {line.contents.location, prefix.size()});
        });
    });
}

// Null for a line without a marker.
std::shared_ptr<TextList> typedList(const std::u16string& line) {
    if (line.starts_with(u"\t•\t")) return std::make_shared<TextList>("{disc}");
    if (line.starts_with(u"\t-\t")) return std::make_shared<TextList>("{hyphen}");
    const auto number = platform::RegularExpression::withPattern(u"^\t([1-9]|[1-9][0-9]|[1-9][0-9][0-9])\\.\t").value();
    const auto matches = number.matches(line).value();
    if (matches.empty() || matches.front().range().length >= line.size()) return nullptr;
    const Range digits = matches.front().groups.at(1);
    return std::make_shared<TextList>("{decimal}.", 0,
                                      std::stoll(platform::utf8FromUTF16(line.substr(digits.location, digits.length))));
}

void convertTypedMarkers(AttributedString& text) {
    std::vector<Range> ranges;
    walkStyles(text, [&](const ParagraphStyle& style, Range run) {
        if (isListParagraphStyle(style) && style.textLists.empty()) ranges.push_back(run);
    });
    for (const Range& range : ranges) {
        walkLines(text, range, [&](const Line& line) {
            ParagraphStyle style = paragraphStyleAt(text, line.contents.location);
            const auto list = typedList(slice(text, line.contents));
            if (!style.textLists.empty() || !list) return;
            style.textLists.push_back(list);
            setStyle(text, style, line.contents);
        });
    }
}

void cleanUpWebPage(AttributedString& text, Range range, const Font& font, WebPageCleanups including) {
    if (including.newlines) range = cleanUpNewlines(text, range);
    const auto changeFonts = [&](auto change) {
        walkRuns(text, platform::kFontAttributeName, range, [&](const AttributeValue* value, Range run) {
            if (value) text.addAttribute(platform::kFontAttributeName, change(std::get<Font>(*value)), run);
        });
    };
    changeFonts([&](const Font& old) {
        return platform::fontWithFamily(font.familyName(), old.traits(), old.weight(), old.pointSize()).value();
    });
    if (including.sizes) changeFonts([](const Font& old) { return old.withSize(std::ceil(old.pointSize() * 3 / 4)); });
    if (including.colors) cleanupTextColorsInRange(text, range);
}

class ImportCleanupModel : public RichTextFixture {};

} // namespace

TEST_F(ImportCleanupModel, NewlinesAreThoseOfThePlainWalk) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText(), expected = text;
        const Range range = *rc::gen::arbitrary<bool>() ? someRange(text) : whole(text);
        RC_ASSERT(cleanupHTMLNewlinesInRange(text, range) == cleanUpNewlines(expected, range));
        RC_ASSERT(platform::textDump(text) == platform::textDump(expected));
    }));
}

TEST_F(ImportCleanupModel, TablesAreFixedAsInThePlainWalk) {
    EXPECT_TRUE(alike(fixTrailingTables, fixTables));
}

TEST_F(ImportCleanupModel, MarkersAreThoseOfThePlainWalk) {
    EXPECT_TRUE(alike(addTextMarkersIfNecessary, addMarkers));
}

TEST_F(ImportCleanupModel, TypedMarkersAreThoseOfThePlainWalk) {
    EXPECT_TRUE(alike(checkForTextListsAndConvertIfNecessary, convertTypedMarkers));
}

TEST_F(ImportCleanupModel, WebPagesAreCleanedAsInThePlainWalk) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText(), expected = text;
        const Range range = someRange(text);
        const WebPageCleanups including{.newlines = *rc::gen::arbitrary<bool>(),
                                        .sizes = *rc::gen::arbitrary<bool>(),
                                        .colors = *rc::gen::arbitrary<bool>()};
        cleanupTextFromWebPageInRange(text, range, Font("Helvetica", 12), including);
        cleanUpWebPage(expected, range, Font("Helvetica", 12), including);
        RC_ASSERT(platform::textDump(text) == platform::textDump(expected));
    }));
}

} // namespace quillet
