// The views of a text against plain ones.
#include <map>

#include <rapidcheck.h>

#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/TextAttachmentExtensions.h"
#include "platform/base/UTF16.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/UTType.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/CharacterSet.h"
#include "platform/foundation/PathString.h"
#include "platform/foundation/Percent.h"
#include "platform/html/HTMLWriter.h"
#include "platform/text/TextDump.h"
#include "richtext/AttachmentViews.h"
#include "richtext/PlainWalks.h"
#include "richtext/RandomRichText.h"
#include "tests/support/StylesFixture.h"
#include "util/FileNames.h"

namespace quillet {

using platform::AttributedString;
using platform::CharacterSet;
using platform::FileWrapper;
using platform::Range;
using platform::TextAttachmentReference;
using platform::UTType;

namespace {

using AttachmentViewsModel = StylesFixture;

void replaceEvery(std::string& page, const std::string& form, const std::string& by) {
    for (std::size_t at = page.find(form); at != std::string::npos; at = page.find(form, at + by.size()))
        page.replace(at, form.size(), by);
}

std::string mailPage(AttributedString text) {
    std::map<std::string, TextAttachmentReference> byName;
    walkAttachments(text, whole(text), [&](const TextAttachmentReference& attachment, Range) {
        const auto& wrapper = attachment->fileWrapper();
        if (wrapper && !wrapper->filename().empty()) byName[wrapper->filename()] = attachment;
    });
    std::string page = platform::htmlDataFromAttributedString(text).value();
    for (const auto& [name, attachment] : byName) {
        const auto type = UTType::typeWithIdentifier(attachment->fileType());
        if (attachment->fileType().empty() || !type) continue;
        const std::string encoded = platform::percentEncodedForURLPath(name);
        const std::string image = "<img src=\"file:///" + encoded + "\" alt=\"" + name + "\">";
        if (type->conformsTo("public.image")) {
            const std::string bytes(attachment->fileWrapper()->regularFileContents().bytes());
            replaceEvery(page, image,
                         "<img style=\"max-width: 100%\" src=\"data:" + type->preferredMIMEType().value() + ";base64," +
                             platform::base64Encoded(bytes) + "\" alt=\"" + name + "\">");
        } else if (type->conformsTo("com.adobe.pdf")) {
            replaceEvery(page, image, "");
        } else {
            replaceEvery(page, "<object data=\"file:///" + encoded + "\">" + name + "</object>", "");
        }
    }
    return page;
}

AttributedString withoutAttachments(AttributedString text) {
    walkAttachments(text, whole(text), [&](const TextAttachmentReference&, Range run) { text.deleteCharacters(run); });
    return text;
}

AttributedString withNames(AttributedString text) {
    walkAttachments(text, whole(text), [&](const TextAttachmentReference& attachment, Range run) {
        std::string name;
        if (const auto& wrapper = attachment->fileWrapper())
            name = wrapper->filename().empty() ? wrapper->preferredFilename() : wrapper->filename();
        if (!name.empty()) name = "[" + name + "]";
        replaceAttachment(text, run, platform::utf16FromUTF8(name));
    });
    return text;
}

std::u16string nameOfText(AttributedString text) {
    walkAttachments(text, whole(text), [&](const TextAttachmentReference& attachment, Range run) {
        std::u16string name = platform::utf16FromUTF8(platform::deletingPathExtension(displayName(*attachment)));
        if (name.empty()) return;
        if (run.end() < text.length() && !CharacterSet::whitespaceAndNewline().containsUnit(text.string()[run.end()]))
            name += u' ';
        text.replaceCharacters(run, name);
    });
    return generateFilename(text.string());
}

std::vector<std::u16string> items(AttributedString text, bool on) {
    std::vector<std::u16string> found;
    walkAttachments(text, whole(text), [&](const TextAttachmentReference& attachment, Range run) {
        const auto* box = dynamic_cast<const QLTChecklistTextAttachment*>(attachment.get());
        if (!box || box->isOn() != on) return;
        const Range line = platform::lineAt(text.string(), run.end()).enclosing;
        if (line.length > 0)
            found.emplace_back(platform::trimmed(slice(text, line), CharacterSet::whitespaceAndNewline()));
    });
    return found;
}

std::vector<std::u16string> copies(const std::vector<std::u16string_view>& views) {
    return {views.begin(), views.end()};
}

} // namespace

TEST_F(AttachmentViewsModel, MailsAreThoseOfOneReplacementAfterTheOther) {
    EXPECT_TRUE(rc::check([] {
        const AttributedString text = someText();
        RC_ASSERT(htmlStringForSharingToMail(text).value() == mailPage(text));
    }));
}

TEST_F(AttachmentViewsModel, CopiesAreThoseOfThePlainWalk) {
    EXPECT_TRUE(rc::check([] {
        const AttributedString text = someText();
        RC_ASSERT(platform::textDump(attributedStringWithoutAttachments(text)) ==
                  platform::textDump(withoutAttachments(text)));
        RC_ASSERT(platform::textDump(attributedStringByReplacingAttachmentsWithNames(text)) ==
                  platform::textDump(withNames(text)));
    }));
}

TEST_F(AttachmentViewsModel, GeneratedNamesAreThoseOfTheTextWithNamesInside) {
    EXPECT_TRUE(rc::check([] {
        const AttributedString text = someText();
        RC_ASSERT(generateName(text) == nameOfText(text));
    }));
}

TEST_F(AttachmentViewsModel, ChecklistItemsAreThoseOfALookAroundEachBox) {
    EXPECT_TRUE(rc::check([] {
        const AttributedString text = someText();
        RC_ASSERT(copies(outstandingChecklistItems(text)) == items(text, false));
        RC_ASSERT(copies(completedChecklistItems(text)) == items(text, true));
    }));
}

} // namespace quillet
