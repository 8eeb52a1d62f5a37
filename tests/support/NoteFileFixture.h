// What tests of note documents stand on: the fixture of styles with everything that a note archives, and notes to
// write.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "documents/NoteTextArchive.h"
#include "documents/QLTNoteFile.h"
#include "documents/attachments/AttachmentCoding.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "documents/attachments/QLTFileAttachment.h"
#include "platform/files/FileWrapper.h"
#include "platform/plist/PropertyList.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextDump.h"
#include "richtext/TextEditing.h"
#include "styles/base/Colors.h"
#include "tests/support/StylesFixture.h"

namespace quillet {

class NoteFileFixture : public StylesFixture {
  protected:
    void SetUp() override {
        StylesFixture::SetUp();
        registerArchivableAttachmentClasses();
        registerHighlightColorAssets();
        environment_->bundleIdentifier = "org.example.notes";
        environment_->bundleShortVersion = "1.2";
    }

    static std::shared_ptr<platform::FileWrapper> file(std::string_view name, std::string_view contents) {
        auto wrapper = platform::FileWrapper::regularFile(platform::Data(std::string(contents)));
        wrapper->setPreferredFilename(std::string(name));
        return wrapper;
    }

    // One character that carries an attachment of that class with the file.
    template<class Attachment = platform::TextAttachment>
    static platform::AttributedString attached(std::string_view name, std::string_view contents) {
        return platform::AttributedString::withAttachment(std::make_shared<Attachment>(file(name, contents)));
    }
    static platform::AttributedString checkbox(bool on, std::uint64_t level) {
        auto box = std::make_shared<QLTChecklistTextAttachment>();
        box->setOn(on);
        box->setIndentationLevel(level);
        return box->attributedString();
    }
    static platform::AttributedString divider() {
        return platform::AttributedString::withAttachment(std::make_shared<QLTDividerTextAttachment>());
    }
    static platform::AttributedString plain(std::u16string_view text) {
        return platform::AttributedString(std::u16string(text));
    }
    // The text with an attribute over all of it.
    static platform::AttributedString with(platform::AttributeName name, platform::AttributeValue value,
                                           std::u16string_view text) {
        platform::AttributedString rich = plain(text);
        rich.addAttribute(name, value, {0, rich.length()});
        return rich;
    }
    template<class... Parts>
    static platform::AttributedString joined(const Parts&... parts) {
        platform::AttributedString text;
        (text.append(parts), ...);
        return text;
    }

    static std::shared_ptr<platform::FileWrapper> packageOf(const QLTNoteFile& note) {
        auto package = note.fileWrapper();
        EXPECT_TRUE(package) << package.error().description();
        return package ? *package : platform::FileWrapper::directory();
    }
    static std::shared_ptr<platform::FileWrapper> packageOf(platform::AttributedString text) {
        QLTNoteFile note;
        note.setNoteText(std::move(text));
        return packageOf(note);
    }

    static platform::Dictionary attributesOf(const platform::FileWrapper& package) {
        const auto entry = package.childNamed(kNoteAttributesEntry);
        const auto plist = platform::propertyListFromData(entry ? entry->regularFileContents().bytes() : "");
        const auto* dictionary = plist ? plist->as<platform::Dictionary>() : nullptr;
        EXPECT_TRUE(dictionary) << "no NoteAttributes";
        return dictionary ? *dictionary : platform::Dictionary();
    }
    static platform::AttributedString archivedTextOf(const platform::FileWrapper& package) {
        const auto entry = package.childNamed(kNoteTextEntry);
        const auto text = noteTextFromArchive(entry ? entry->regularFileContents().bytes() : "");
        EXPECT_TRUE(text) << text.error().description();
        return text ? *text : platform::AttributedString();
    }
    static std::unique_ptr<QLTNoteFile> noteFrom(const platform::FileWrapper& package) {
        auto note = QLTNoteFile::initWithFileWrapper(package);
        EXPECT_TRUE(note) << note.error().description();
        return note ? *std::move(note) : std::make_unique<QLTNoteFile>();
    }
    // A package of just an archived text, with these attributes.
    static std::shared_ptr<platform::FileWrapper> packageWithArchive(const platform::AttributedString& text,
                                                                     const platform::Dictionary& attributes = {}) {
        auto package = platform::FileWrapper::directory();
        package->setFileWrapper(std::string(kNoteTextEntry),
                                platform::FileWrapper::regularFile(*archivedNoteText(text)));
        package->setFileWrapper(
            std::string(kNoteAttributesEntry),
            platform::FileWrapper::regularFile(platform::Data(*platform::binaryDataFromPropertyList(attributes))));
        return package;
    }

    static std::vector<std::string> entryNames(const platform::FileWrapper& package) {
        std::vector<std::string> names;
        for (const auto& [name, child] : package.fileWrappers()) names.push_back(name);
        std::ranges::sort(names);
        return names;
    }
    static std::string contentsOf(const platform::FileWrapper& package, std::string_view name) {
        const auto entry = package.childNamed(name);
        return entry ? std::string(entry->regularFileContents().bytes()) : "(none)";
    }
    static platform::TextAttachmentReference attachmentAt(const platform::AttributedString& text,
                                                          std::size_t position) {
        const auto* value = text.attributeAt(platform::kAttachmentAttributeName, position);
        return value ? std::get<platform::TextAttachmentReference>(*value) : nullptr;
    }
};

} // namespace quillet
