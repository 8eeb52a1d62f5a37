// Checklists, dividers and file attachments against plain conversions.
#include <algorithm>

#include <rapidcheck.h>

#include "documents/attachments/AttachmentConstants.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/text/TextDump.h"
#include "platform/text/TextList.h"
#include "richtext/Checklists.h"
#include "richtext/PlainWalks.h"
#include "richtext/RandomRichText.h"
#include "styles/base/ParagraphStyles.h"
#include "tests/support/RichTextFixture.h"
#include "tests/support/StylesFixture.h"
#include "util/Markdown.h"

namespace quillet {

using platform::AttributedString;
using platform::Line;
using platform::ParagraphStyle;
using platform::Range;
using platform::TextAttachmentReference;
using platform::TextList;

namespace {

using ChecklistsModel = StylesFixture;
using TextLists = std::vector<std::shared_ptr<TextList>>;

constexpr std::u16string_view kTicked = u"\t✓\t", kOpen = u"\t◦\t";

void listsToBoxes(AttributedString& text) {
    walkStyles(text, [&](const ParagraphStyle& style, Range run) {
        const std::string format = style.textLists.empty() ? "" : style.textLists.back()->markerFormat();
        walkLines(text, run, [&](const Line& line) {
            const std::u16string characters = slice(text, line.contents);
            bool isOn = false;
            if (format == "{check}") {
                isOn = true;
            } else if (characters.starts_with(kTicked)) {
                isOn = true;
            } else if (format == "{circle}") {
                isOn = false;
            } else if (characters.starts_with(kOpen)) {
                isOn = false;
            } else {
                return;
            }
            const std::size_t level = style.textLists.empty() ? 0 : style.textLists.size() - 1;
            const auto box = std::make_shared<QLTChecklistTextAttachment>();
            box->setOn(isOn);
            box->setIndentationLevel(std::min<std::uint64_t>(5, level));
            const std::size_t prefix = characters.starts_with(kTicked) || characters.starts_with(kOpen) ? 3 : 0;
            text.replaceCharacters({line.contents.location, prefix}, AttributedString::withAttachment(box));
            setStyle(text, *box->checklistParagraphStyle(),
                     {line.contents.location, line.contents.length - prefix + 1});
        });
    });
}

// Each box with its range, in text order.
template<class Body>
void walkBoxes(AttributedString& text, Body body) {
    walkAttachments(text, whole(text), [&](const TextAttachmentReference& attachment, Range run) {
        if (const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(attachment.get())) body(*box, run);
    });
}

TextLists listsAfter(const TextLists& previous, std::uint64_t previousLevel, std::uint64_t level) {
    TextLists lists = previous;
    if (level < previousLevel) lists.resize(level == 0 ? 0 : std::min<std::size_t>(level - 1, lists.size()));
    if (level == previousLevel) lists.resize(lists.size() < 2 ? 0 : lists.size() - 1);
    return lists;
}

void boxesToLists(AttributedString& text) {
    std::uint64_t previousLevel = 0;
    TextLists previousLists;
    walkBoxes(text, [&](const QLTChecklistTextAttachment& box, Range run) {
        replaceAttachment(text, run, box.isOn() ? kTicked : kOpen);
        ParagraphStyle style = listParagraphStyle();
        style.textLists = listsAfter(previousLists, previousLevel, box.indentationLevel());
        style.textLists.push_back(std::make_shared<TextList>(box.isOn() ? "{check}" : "{circle}"));
        previousLists = style.textLists;
        previousLevel = box.indentationLevel();
        style.firstLineHeadIndent = 48; // from the head indent of 36 to the next tab stop at 84
        style.headIndent = 84;
        style.textBlocks = paragraphStyleAt(text, run.location).textBlocks;
        setStyle(text, style, platform::lineAt(text.string(), run.location).enclosing);
    });
}

void boxesToMarkdown(AttributedString& text) {
    std::vector<std::pair<TextAttachmentReference, Range>> runs;
    walkAttachments(text, whole(text),
                    [&](const TextAttachmentReference& attachment, Range run) { runs.emplace_back(attachment, run); });
    std::ranges::reverse(runs);
    for (const auto& [attachment, run] : runs) {
        const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(attachment.get());
        if (!box) continue;
        std::u16string form(4 * box->indentationLevel(), u' ');
        form += box->isOn() ? u"- [x] " : u"- [ ] ";
        replaceAttachment(text, run, form);
        setStyle(text, ParagraphStyle(), platform::lineAt(text.string(), run.location).enclosing);
    }
}

void dividersToText(AttributedString& text) {
    walkAttachments(text, whole(text), [&](const TextAttachmentReference& attachment, Range run) {
        if (!dynamic_cast<const QLTDividerTextAttachment*>(attachment.get())) return;
        const AttributedString form = QLTDividerTextAttachment::replacementString();
        text.replaceCharacters(run, form);
        text.removeAttribute(platform::kAttachmentAttributeName, {0, form.length()});
    });
}

void textToDividers(AttributedString& text) {
    walkLines(text, whole(text), [&](const Line& line) {
        if (slice(text, line.contents) == u"***")
            text.replaceCharacters(line.contents, std::make_shared<QLTDividerTextAttachment>()->attributedString());
    });
}

void replaceFiles(AttributedString& text, Range range) {
    walkAttachments(text, range, [&](const TextAttachmentReference& attachment, Range run) {
        if (!attachment->fileWrapper() && !attachment->contents()) return;
        const std::string type = attachment->fileType();
        const bool isFile = !type.empty() && QLTFileAttachment::shouldUseForFileType(type);
        if (!isFile && !isPasswordProtectedPDF(*attachment)) return;
        const auto file = std::make_shared<QLTFileAttachment>();
        file->setFileWrapper(attachment->fileWrapper());
        const auto attributes =
            text.attributesAt(run.location).with(platform::kAttachmentAttributeName, TextAttachmentReference(file));
        AttributedString replacement = AttributedString::withAttachment(file);
        replacement.setAttributes(std::make_shared<const platform::AttributeSet>(attributes), {0, 1});
        text.replaceCharacters(run, replacement);
    });
}

} // namespace

TEST_F(ChecklistsModel, ListsBecomeTheBoxesOfThePlainWalk) {
    EXPECT_TRUE(alike(convertTextListsToChecklistAttachments, listsToBoxes));
}

TEST_F(ChecklistsModel, BoxesBecomeTheListsOfThePlainWalk) {
    EXPECT_TRUE(alike(convertChecklistAttachmentsToTextLists, boxesToLists));
}

TEST_F(ChecklistsModel, BoxesBecomeTheMarkdownOfThePlainWalk) {
    EXPECT_TRUE(alike(convertChecklistAttachmentsToMarkdownSyntax, boxesToMarkdown));
}

TEST_F(ChecklistsModel, DividersBecomeTheTextOfThePlainWalk) {
    EXPECT_TRUE(alike(convertDividersToText, dividersToText));
}

TEST_F(ChecklistsModel, AsterisksBecomeTheDividersOfThePlainWalk) {
    EXPECT_TRUE(alike(convertTextToDividers, textToDividers));
}

TEST_F(ChecklistsModel, FilesAreReplacedAsInThePlainWalk) {
    EXPECT_TRUE(rc::check([] {
        AttributedString text = someText(), expected = text;
        const Range range = someRange(text);
        replaceFileAttachmentsInRange(text, range);
        replaceFiles(expected, range);
        RC_ASSERT(platform::textDump(text) == platform::textDump(expected));
    }));
}

} // namespace quillet
