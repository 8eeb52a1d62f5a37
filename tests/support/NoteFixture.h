// What tests of conversion and import stand on: a destination, one note to fill in, fixed clock and locale, preferences
// of their own, the project's page template, a captured log.
#pragma once

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "documents/attachments/AttachmentCoding.h"
#include "enex/EvernoteXMLItem.h"
#include "platform/base/SystemLog.h"
#include "platform/base/UTF16.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/Digest.h"
#include "platform/foundation/Environment.h"
#include "platform/xml/XMLDocument.h"
#include "styles/NoteTextStyleCoding.h"
#include "styles/QLTNoteTextStyle.h"
#include "styles/base/Colors.h"
#include "tests/support/ScratchDirectory.h"

namespace quillet {

inline constexpr std::string_view kPDF = "%PDF-1.4 not much of one";

// One pixel, red.
inline const std::string& pngBytes() {
    static const std::string bytes = platform::base64Decoded("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVQI"
                                                             "12P4z8AAAAMBAQAY3Y2wAAAAAElFTkSuQmCC")
                                         .value();
    return bytes;
}

inline std::string md5Of(std::string_view bytes) {
    return platform::hexadecimalString(platform::md5Checksum(bytes));
}

class NoteFixture : public testing::Test {
  protected:
    void SetUp() override {
        registerArchivableAttachmentClasses();
        registerArchivableStyleClasses();
        registerHighlightColorAssets();
        environment_->preferencesDirectory = scratch_.path().string();
        environment_->bundleIdentifier = "org.example.import";
        environment_->localeIdentifier = "en_US";
        environment_->timeZoneName = "UTC";
        environment_->dataDirectory = (tests::sourceDirectory() / "data").string();
        environment_->now = [] { return platform::Date::fromUnixTime(1'714'554'902); }; // 2024-05-01 09:15:02
        savedSink_ = platform::setSystemLogSink([this](std::string_view entry) { log_.emplace_back(entry); });
        QLTNoteTextStyle::reloadStylesFromDefaults();
        std::filesystem::create_directory(destination_);
    }
    void TearDown() override {
        platform::setSystemLogSink(std::move(savedSink_));
        QLTNoteTextStyle::reloadStylesFromDefaults();
    }

    // The resource that the item gets; its hash is that of the bytes.
    EvernoteXMLResource& addResource(std::string_view bytes, std::string_view mime, std::u16string_view filename) {
        EvernoteXMLResource& resource = item_.resources.emplace_back();
        std::string text;
        platform::appendBase64(text, bytes);
        resource.appendBase64Data(text);
        resource.mime = mime;
        resource.attributes.filename = filename;
        return resource;
    }

    static std::string media(std::string_view bytes, std::string_view attributes = {}) {
        return "<en-media hash=\"" + md5Of(bytes) + "\"" + (attributes.empty() ? "" : " ") + std::string(attributes) +
               "/>";
    }

    // A note's content; its root is the note element.
    static platform::XMLDocument noteDocument(std::string_view markup) {
        auto document = platform::XMLDocument::initWithXMLString(markup, platform::XMLDocumentParsing::tidyXML);
        if (!document) {
            ADD_FAILURE() << document.error().description();
            return platform::XMLDocument::withRootElement("en-note");
        }
        return *std::move(document);
    }

    platform::URL destinationURL() const { return platform::URL::fileURLWithPath(destination_.string(), true); }

    // Names in the destination, sorted.
    std::vector<std::string> outputs() const { return namesIn(destination_); }
    static std::vector<std::string> namesIn(const std::filesystem::path& directory) {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    bool hasLogged(std::string_view text) const {
        return std::ranges::any_of(log_, [&](const std::string& entry) { return entry.find(text) != entry.npos; });
    }

    tests::ScratchDirectory scratch_;
    platform::ScopedEnvironment environment_;
    std::filesystem::path destination_ = scratch_ / "out";
    EvernoteXMLItem item_{platform::URL::fileURLWithPath(destination_.string(), true)};
    std::vector<std::string> log_;
    platform::SystemLogSink savedSink_;
};

} // namespace quillet
