#include "programs/export/PackageCheck.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "documents/NoteTextArchive.h"
#include "documents/PackageNames.h"
#include "documents/QLTNoteFile.h"
#include "platform/base/Range.h"
#include "platform/files/FileWrapper.h"
#include "platform/plist/PropertyList.h"
#include "platform/rtf/RTFReader.h"
#include "richtext/TextEditing.h"

namespace quillet {

using platform::AttributedString;
using platform::Dictionary;
using platform::FileWrapper;
using platform::Result;
using platform::Value;

namespace {

class PackageCheck {
  public:
    explicit PackageCheck(const FileWrapper& package) : package_(package) {}

    std::vector<PackageProblem> run() {
        if (!package_.isDirectory()) {
            report("", "is not a file package");
            return std::move(problems_);
        }
        checkRTFD();
        checkText();
        checkAttributes();
        if (text_) checkFilesNamedInText();
        if (text_ && hasRTFD_) checkFilesNobodyNames();
        return std::move(problems_);
    }

  private:
    void report(std::string_view entry, std::string message) {
        problems_.push_back({std::string(entry), std::move(message)});
    }

    // The bytes of a part that every package has; what keeps it from having them is a problem.
    std::optional<std::string_view> contentsOf(std::string_view entry) {
        const auto child = package_.childNamed(entry);
        if (!child) {
            report(entry, "is missing");
            return std::nullopt;
        }
        if (child->isDirectory()) {
            report(entry, "is a directory");
            return std::nullopt;
        }
        return child->regularFileContents().bytes();
    }

    void checkRTFD() {
        if (!contentsOf(kRTFDTextEntry)) return;
        const Result<AttributedString> rtfd = platform::attributedStringFromRTFD(package_);
        if (!rtfd) return report(kRTFDTextEntry, "cannot be read: " + rtfd.error().localizedDescription());
        hasRTFD_ = true;
        noteNames(*rtfd);
    }

    void checkText() {
        const auto archive = contentsOf(kNoteTextEntry);
        if (!archive) return;
        if (archive->empty()) { // how an empty note may be stored
            text_.emplace();
            return;
        }
        Result<AttributedString> text = noteTextFromArchive(*archive);
        if (!text) return report(kNoteTextEntry, "cannot be read: " + text.error().localizedDescription());
        text_ = *std::move(text);
        noteNames(*text_);
    }

    void noteNames(const AttributedString& text) {
        for (const AttachmentRun& run : attachmentsOf(text))
            if (isPackageFile(*run.attachment)) named_.insert(run.attachment->fileWrapper()->preferredFilename());
    }

    void checkAttributes() {
        const auto bytes = contentsOf(kNoteAttributesEntry);
        if (!bytes) return;
        const Result<Value> plist = platform::propertyListFromData(*bytes);
        if (!plist) return report(kNoteAttributesEntry, "cannot be read: " + plist.error().localizedDescription());
        const auto* attributes = plist->as<Dictionary>();
        if (!attributes) return report(kNoteAttributesEntry, "is no dictionary");
        for (const std::string_view key : {"backgroundColor", "drawingsData"})
            if (const Value* value = platform::find(*attributes, key); value && !value->as<Dictionary>())
                report(kNoteAttributesEntry, std::string(key) + " is no dictionary");
        if (const Value* ranges = platform::find(*attributes, "dividerRanges")) checkDividers(*ranges);
    }

    void checkDividers(const Value& value) {
        const auto* ranges = value.as<platform::Array>();
        if (!ranges) return report(kNoteAttributesEntry, "dividerRanges is no array");
        for (const Value& stored : *ranges) {
            if (!stored.as<std::u16string>()) {
                report(kNoteAttributesEntry, "a divider range is no string");
                continue;
            }
            if (!text_) continue; // without a text there are no bounds
            const platform::Range range = platform::rangeFromString(stored.utf8());
            if (range.location > text_->length() || range.length > text_->length() - range.location)
                report(kNoteAttributesEntry, "divider range " + stored.utf8() + " is out of bounds: the text has " +
                                                 std::to_string(text_->length()) + " units");
        }
    }

    void checkFilesNamedInText() {
        std::set<std::string, std::less<>> missing;
        for (const AttachmentRun& run : attachmentsOf(*text_)) {
            if (!isPackageFile(*run.attachment)) continue;
            const std::string& name = run.attachment->fileWrapper()->preferredFilename();
            if (!package_.childNamed(name) && missing.insert(name).second)
                report(name, "is named in the text but missing");
        }
    }

    void checkFilesNobodyNames() {
        for (const auto& [name, child] : package_.fileWrappers())
            if (std::ranges::find(kPackageEntries, name) == kPackageEntries.end() && !named_.contains(name))
                report(name, "is not named in the text");
    }

    const FileWrapper& package_;
    std::vector<PackageProblem> problems_;
    bool hasRTFD_ = false;
    std::optional<AttributedString> text_;     // as archived
    std::set<std::string, std::less<>> named_; // by the archive or by the RTFD part
};

} // namespace

std::vector<PackageProblem> problemsOfPackage(const FileWrapper& package) {
    return PackageCheck(package).run();
}

} // namespace quillet
