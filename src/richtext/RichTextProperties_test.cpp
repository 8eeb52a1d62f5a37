// What holds for any text: made at random from pieces that the operations look for.
#include <algorithm>
#include <functional>

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "richtext/AttachmentViews.h"
#include "richtext/Checklists.h"
#include "richtext/ImportCleanup.h"
#include "richtext/RandomRichText.h"
#include "richtext/WebCleanup.h"
#include "richtext/highlights/Highlights.h"
#include "tests/support/RichTextFixture.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::AttributeValue;
using platform::Font;
using platform::Range;
using platform::TextAttachmentReference;
using platform::TextList;

namespace {

// The characters on which an attachment stands.
std::size_t attachmentUnits(const AttributedString& text) {
    std::size_t units = 0;
    text.enumerateAttribute(platform::kAttachmentAttributeName, {0, text.length()},
                            [&](const AttributeValue* value, Range range) { units += value ? range.length : 0; });
    return units;
}

class RichTextProperties : public RichTextFixture {};

} // namespace

TEST_F(RichTextProperties, MarkersAddedTwiceAddNothing) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        const std::size_t attachments = attachmentUnits(text);
        addTextMarkersIfNecessary(text);
        const std::string once = platform::textDump(text);
        addTextMarkersIfNecessary(text);
        RC_ASSERT(platform::textDump(text) == once);
        RC_ASSERT(attachmentUnits(text) == attachments);
    }));
}

TEST_F(RichTextProperties, TypedMarkersConvertedTwiceConvertNothing) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        const std::u16string characters = text.string();
        checkForTextListsAndConvertIfNecessary(text);
        const std::string once = platform::textDump(text);
        checkForTextListsAndConvertIfNecessary(text);
        RC_ASSERT(platform::textDump(text) == once);
        RC_ASSERT(text.string() == characters);
    }));
}

TEST_F(RichTextProperties, NewlineCleanupReturnsTheGrowthOfTheText) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        const std::size_t length = text.length(), attachments = attachmentUnits(text);
        const std::u16string before = text.string();
        const Range range = someRange(text);
        const Range grown = cleanupHTMLNewlinesInRange(text, range);
        RC_ASSERT(grown.location == range.location);
        RC_ASSERT(grown.length - range.length == text.length() - length);
        RC_ASSERT(grown.end() <= text.length());
        RC_ASSERT(text.string().starts_with(before.substr(0, range.location)));
        RC_ASSERT(text.string().ends_with(before.substr(range.end())));
        RC_ASSERT(attachmentUnits(text) == attachments);
    }));
}

namespace {

struct Item {
    bool on;
    std::uint64_t level;
    friend bool operator==(const Item&, const Item&) = default;
};

AttributedString checklist(const std::vector<Item>& items) {
    AttributedString text;
    for (const Item& item : items) {
        text.append(AttributedString::withAttachment(checkbox(item.on, item.level)));
        text.append(*rc::gen::element<std::u16string>(u"Milk\n", u"\n", u" a *** b\n"), AttributeSet::empty());
    }
    return text;
}

std::vector<Item> itemsOf(const AttributedString& text) {
    std::vector<Item> items;
    text.enumerateAttribute(platform::kAttachmentAttributeName, {0, text.length()},
                            [&](const AttributeValue* value, Range) {
                                if (!value) return;
                                const auto object = std::get<TextAttachmentReference>(*value);
                                const auto& box = dynamic_cast<const QLTChecklistTextAttachment&>(*object);
                                items.push_back({box.isOn(), box.indentationLevel()});
                            });
    return items;
}

// The levels that are left of a checklist's after the way through lists: a deeper item goes one level below the one
// before, an item on the way back goes one level further out than it was.
std::vector<Item> itemsThroughLists(std::vector<Item> items) {
    std::uint64_t previousLevel = 0, previousDepth = 0; // depth: lists of the item before
    for (Item& item : items) {
        std::uint64_t ancestors = previousDepth;
        if (item.level < previousLevel) ancestors = std::min(item.level == 0 ? 0 : item.level - 1, previousDepth);
        if (item.level == previousLevel) ancestors = previousDepth < 2 ? 0 : previousDepth - 1;
        previousLevel = item.level;
        previousDepth = ancestors + 1;
        item.level = std::min<std::uint64_t>(ancestors, 5);
    }
    return items;
}

std::vector<Item> throughLists(AttributedString text) {
    const std::u16string characters = text.string();
    convertChecklistAttachmentsToTextLists(text);
    convertTextListsToChecklistAttachments(text);
    RC_ASSERT(text.string() == characters);
    return itemsOf(text);
}

} // namespace

TEST_F(RichTextProperties, ChecklistsKeepTicksAndStepwiseLevelsThroughLists) {
    EXPECT_TRUE(rc::check([] {
        std::vector<Item> items{{*rc::gen::arbitrary<bool>(), 0}};
        for (int i = *rc::gen::inRange(0, 20); i > 0; --i) {
            const std::uint64_t last = items.back().level;
            items.push_back({*rc::gen::arbitrary<bool>(),
                             *rc::gen::element(last, std::min<std::uint64_t>(last + 1, 5), std::uint64_t{0})});
        }
        RC_ASSERT(throughLists(checklist(items)) == items);
    }));
}

TEST_F(RichTextProperties, ChecklistsOfAnyLevelsKeepTicksThroughLists) {
    EXPECT_TRUE(rc::check([] {
        std::vector<Item> items;
        for (int i = *rc::gen::inRange(0, 20); i > 0; --i)
            items.push_back({*rc::gen::arbitrary<bool>(), *rc::gen::inRange<std::uint64_t>(0, 6)});
        RC_ASSERT(throughLists(checklist(items)) == itemsThroughLists(items));
    }));
}

TEST_F(RichTextProperties, CheckboxesLeaveNoAttachmentBehind) {
    EXPECT_TRUE(rc::check([] {
        AttributedString asLists = someText(), asMarkdown = asLists;
        convertChecklistAttachmentsToTextLists(asLists);
        convertChecklistAttachmentsToMarkdownSyntax(asMarkdown);
        RC_ASSERT(completedChecklistItems(asLists).empty() && outstandingChecklistItems(asLists).empty());
        RC_ASSERT(completedChecklistItems(asMarkdown).empty() && outstandingChecklistItems(asMarkdown).empty());
        RC_ASSERT(attachmentUnits(asLists) == attachmentUnits(asMarkdown));
    }));
}

namespace {

template<class T>
bool holds(const AttributedString& text) {
    bool found = false;
    text.enumerateAttribute(platform::kAttachmentAttributeName, {0, text.length()},
                            [&](const AttributeValue* value, Range) {
                                if (!value) return;
                                const auto object = std::get<TextAttachmentReference>(*value);
                                found = found || dynamic_cast<const T*>(object.get());
                            });
    return found;
}

} // namespace

TEST_F(RichTextProperties, DividersAreEitherAllTextOrAllObjects) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        convertDividersToText(text);
        RC_ASSERT(!holds<QLTDividerTextAttachment>(text));
        convertTextToDividers(text);
        for (const platform::Line& line : platform::linesOf(text.string()))
            RC_ASSERT(!(text.string().substr(line.contents.location, line.contents.length) == u"***"));
    }));
}

TEST_F(RichTextProperties, FilesReplacedTwiceAreReplacedByTheirLike) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        replaceFileAttachmentsInRange(text, {0, text.length()});
        const std::string once = platform::textDump(text);
        replaceFileAttachmentsInRange(text, {0, text.length()});
        RC_ASSERT(platform::textDump(text) == once);
    }));
}

TEST_F(RichTextProperties, TablesAtTheEndAreFixedOnce) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        fixTrailingTables(text);
        const std::size_t length = text.length();
        fixTrailingTables(text);
        RC_ASSERT(text.length() == length);
    }));
}

TEST_F(RichTextProperties, WebPageCleanupLeavesTheRestOfTheTextAlone) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText();
        const Range range = someRange(text);
        const std::string before = platform::textDump(text.substring({0, range.location}));
        const std::string behind = platform::textDump(text.substring({range.end(), text.length() - range.end()}));
        const std::size_t lengthBehind = text.length() - range.end();
        cleanupTextFromWebPageInRange(text, range, Font("Helvetica", 12),
                                      {.newlines = true, .sizes = true, .colors = true});
        RC_ASSERT(platform::textDump(text.substring({0, range.location})) == before);
        RC_ASSERT(platform::textDump(text.substring({text.length() - lengthBehind, lengthBehind})) == behind);
    }));
}

TEST_F(RichTextProperties, ViewsLeaveTheTextUnchanged) {
    using View = std::function<void(const AttributedString&)>;
    const View kViews[] = {
        containsFileAttachments,
        fileAttachments,
        htmlStringForSharingToMail,
        attributedStringWithoutAttachments,
        attributedStringByReplacingAttachmentsWithNames,
        stringWithTextListMarkers,
        attributedStringWithFileAttachments,
        attributedStringConvertedToDynamicColors,
        attributedStringConvertedFromDynamicColors,
        highlightedStrings,
        stringsWithBackgroundColor,
        outstandingChecklistItems,
        completedChecklistItems,
        generateName,
        [this](const AttributedString& text) {
            fileURLsForNonImageAttachmentsWrittenToURL(text,
                                                       platform::URL::fileURLWithPath(scratch_.path().string(), true));
        },
    };
    EXPECT_TRUE(rc::check([&] {
        const AttributedString text = someText();
        const std::string before = platform::textDump(text);
        for (const View& view : kViews) {
            view(text);
            RC_ASSERT(platform::textDump(text) == before);
        }
    }));
}

TEST_F(RichTextProperties, NothingIsLeftOfAttachmentsInTheCopyWithoutThem) {
    EXPECT_TRUE(rc::check([] {
        const AttributedString text = someText(), without = attributedStringWithoutAttachments(text);
        RC_ASSERT(attachmentUnits(without) == 0U);
        RC_ASSERT(without.length() == text.length() - attachmentUnits(text));
        RC_ASSERT(attachmentUnits(attributedStringByReplacingAttachmentsWithNames(text)) == 0U);
    }));
}

} // namespace quillet
