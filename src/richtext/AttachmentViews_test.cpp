// What golden cases cannot say: the two names of a file, hidden extensions, identity, whole mail pages, directories.
#include "richtext/AttachmentViews.h"

#include <array>

#include "documents/attachments/QLTFileAttachment.h"
#include "platform/files/FileWrapper.h"
#include "richtext/Checklists.h"
#include "richtext/RichTextCase.h"
#include "tests/support/StylesFixture.h"

namespace quillet {

using platform::AttributedString;
using platform::Color;
using platform::Data;
using platform::FileWrapper;
using platform::TextAttachment;
using platform::URL;

namespace {

using AttachmentViews = StylesFixture;

struct Names {
    std::string onDisk, preferred;
    bool extensionHidden = false;
};

AttributedString withFile(const Names& names, const std::string& bytes = "bytes") {
    auto wrapper = FileWrapper::regularFile(Data(bytes));
    wrapper->setFilename(names.onDisk);
    wrapper->setPreferredFilename(names.preferred);
    wrapper->setFileAttributes({.modificationDate = {}, .extensionHidden = names.extensionHidden});
    return AttributedString::withAttachment(std::make_shared<TextAttachment>(std::move(wrapper)));
}

URL urlOf(const std::filesystem::path& directory) {
    return URL::fileURLWithPath(directory.string(), true);
}

} // namespace

TEST_F(AttachmentViews, GiveTheFileObjectsThemselves) {
    const auto wrapper = FileWrapper::regularFile(Data("bytes"));
    AttributedString text = AttributedString::withAttachment(std::make_shared<TextAttachment>(wrapper));
    text.append(AttributedString::withAttachment(std::make_shared<QLTFileAttachment>(wrapper)));
    EXPECT_EQ(fileAttachments(text), (std::vector{wrapper, wrapper}));
}

TEST_F(AttachmentViews, NameOnDiskComesBeforeThePreferredOne) {
    const struct {
        Names names;
        std::u16string expected;
    } kRows[] = {
        {{"disk.pdf", "preferred.pdf"}, u"[disk.pdf]"}, {{"", "preferred.pdf"}, u"[preferred.pdf]"}, {{}, u""}};
    for (const auto& row : kRows)
        EXPECT_EQ(attributedStringByReplacingAttachmentsWithNames(withFile(row.names)).string(), row.expected);
}

TEST_F(AttachmentViews, AGeneratedNameTakesDisplayNames) {
    const struct {
        Names names;
        std::u16string expected;
    } kRows[] = {
        {{"disk.pdf", "Report.pdf"}, u"Report"},
        {{"disk.pdf", ""}, u"disk"},
        {{"", "Report.tar.gz"}, u"Report"},       // the generated name ends at the first period
        {{"", "Report.tar.gz", true}, u"Report"}, // hidden, then one more
        {{"", ".hidden"}, u"hidden"},
    };
    for (const auto& row : kRows) EXPECT_EQ(generateName(withFile(row.names)), row.expected) << row.names.preferred;
}

TEST_F(AttachmentViews, AGeneratedNameLeavesAttachmentsWithoutNameAlone) {
    AttributedString text(u"a");
    text.append(withFile({}));
    text.append(AttributedString(u"b"));
    EXPECT_EQ(generateName(text), generateName(AttributedString(u"a\uFFFCb")));
}

TEST_F(AttachmentViews, WhitesAndThePageAreNoBackground) {
    const struct {
        Color color;
        bool counts;
    } kRows[] = {
        {Color::white(), false},
        {Color::sRGB(1, 1, 1), false},
        {Color::deviceWhite(1), false},
        {Color::textBackgroundColor(), false},
        {Color::sRGB(1, 1, 1, 0.5), true},
        {Color::sRGB(1, 1, 0.99), true},
        {Color::black(), true},
    };
    for (const auto& row : kRows) {
        AttributedString text(u"text");
        text.addAttribute(platform::kBackgroundColorAttributeName, row.color, {0, 4});
        EXPECT_EQ(stringsWithBackgroundColor(text).size(), row.counts ? 1U : 0U);
    }
}

TEST_F(AttachmentViews, InDarkAppearanceThePageIsNotWhiteAndBothAreNoBackground) {
    environment_->darkAppearance = true;
    AttributedString text(u"abc");
    text.addAttribute(platform::kBackgroundColorAttributeName, Color::white(), {0, 1});
    text.addAttribute(platform::kBackgroundColorAttributeName, Color::textBackgroundColor(), {1, 1});
    text.addAttribute(platform::kBackgroundColorAttributeName, Color::black(), {2, 1});
    EXPECT_EQ(stringsWithBackgroundColor(text), std::vector<std::u16string_view>{u"c"});
}

TEST_F(AttachmentViews, AHighlightInOwnColorsCounts) {
    const AttributedString text =
        textFromDump("\"a\"  QLTHighlightTextAttribute 999\n\"b\"  QLTHighlightTextAttribute -1\n");
    EXPECT_EQ(highlightedStrings(text), (std::vector<std::u16string_view>{u"a", u"b"}));
}

TEST_F(AttachmentViews, MailPagesAreWhole) {
    const auto page = htmlStringForSharingToMail(AttributedString(u"text"));
    ASSERT_TRUE(page);
    EXPECT_TRUE(page->starts_with("<!DOCTYPE html"));
    EXPECT_NE(page->find("charset=UTF-8"), std::string::npos);
    EXPECT_TRUE(htmlStringForSharingToMail({}));
}

TEST_F(AttachmentViews, AnImageKnownByPreferredNameOnlyStaysAReference) {
    const auto page = htmlStringForSharingToMail(withFile({"", "a.png"}));
    ASSERT_TRUE(page);
    EXPECT_NE(page->find("<img src=\"file:///a.png\" alt=\"a.png\">"), std::string::npos);
}

TEST_F(AttachmentViews, InlinedImagesHaveNoLineBreaksInTheirData) {
    const auto page = htmlStringForSharingToMail(withFile({"a.png", "a.png"}, std::string(300, '\xFF')));
    ASSERT_TRUE(page);
    std::string encoded;
    for (int i = 0; i < 400; ++i) encoded += '/';
    EXPECT_NE(page->find("src=\"data:image/png;base64," + encoded + "\" alt=\"a.png\">"), std::string::npos);
}

TEST_F(AttachmentViews, FilesThatCannotBeWrittenAreLeftOut) {
    EXPECT_TRUE(
        fileURLsForNonImageAttachmentsWrittenToURL(withFile({"a.zip", "a.zip"}), urlOf(scratch_ / "none")).empty());
    EXPECT_TRUE(fileURLsForNonImageAttachmentsWrittenToURL(withFile({"", "a.zip"}), urlOf(scratch_.path())).empty());
    const std::string cut("a\0.zip", 6);
    EXPECT_TRUE(fileURLsForNonImageAttachmentsWrittenToURL(withFile({cut, "a.zip"}), urlOf(scratch_.path())).empty());
    const auto written =
        fileURLsForNonImageAttachmentsWrittenToURL(withFile({"b.zip", "a.zip"}), urlOf(scratch_.path()));
    EXPECT_EQ(written, std::vector{urlOf(scratch_.path()).appendingPathComponent("b.zip")});
}

TEST_F(AttachmentViews, DirectoriesAreWrittenWhole) {
    auto package = FileWrapper::directory({{"inside", FileWrapper::regularFile(Data("bytes"))}});
    package->setFilename("a.bundle");
    package->setPreferredFilename("a.bundle");
    const auto text = AttributedString::withAttachment(std::make_shared<TextAttachment>(package));
    EXPECT_EQ(fileURLsForNonImageAttachmentsWrittenToURL(text, urlOf(scratch_.path())),
              std::vector{urlOf(scratch_.path()).appendingPathComponent("a.bundle", true)});
    EXPECT_EQ(tests::readFile(scratch_ / "a.bundle" / "inside"), "bytes");
}

} // namespace quillet
