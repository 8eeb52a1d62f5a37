// Writing a note package. The steps of fileWrapper(), in the order in which they must come: names first, since three
// places use them; then the RTFD form, whose directory becomes the package; then the exact text with its attachments
// reduced to placeholders; last the attributes, which record where dividers stood.
#include "documents/QLTNoteFile.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "documents/NoteTextArchive.h"
#include "documents/PackageNames.h"
#include "documents/attachments/QLTChecklistTextAttachment.h"
#include "documents/attachments/QLTDividerTextAttachment.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/plist/PropertyList.h"
#include "platform/rtf/RTFWriter.h"
#include "richtext/Checklists.h"
#include "richtext/TextEditing.h"
#include "richtext/highlights/Highlights.h"
#include "styles/base/Colors.h"

namespace quillet {

using platform::AttributedString;
using platform::AttributeSet;
using platform::Color;
using platform::Data;
using platform::FileWrapper;
using platform::Result;
using platform::TextAttachmentReference;
using platform::Value;

namespace {

void keepAllowedAttributes(AttributedString& text) {
    const auto& allowed = QLTNoteFile::allowedAttributeNames();
    const auto isAllowed = [&](const AttributeSet::Entry& entry) {
        return std::ranges::find(allowed, entry.first) != allowed.end();
    };
    text.mapAttributes([&](const AttributeSet::Reference& attributes) {
        if (std::ranges::all_of(attributes->entries(), isAllowed)) return attributes;
        std::vector<AttributeSet::Entry> kept;
        std::ranges::copy_if(attributes->entries(), std::back_inserter(kept), isAllowed);
        return AttributeSet::Reference(std::make_shared<const AttributeSet>(std::move(kept)));
    });
}

// An attachment of the same class whose file is empty: the contents lie in the package beside the archive.
TextAttachmentReference placeholderFor(const platform::TextAttachment& attachment) {
    const FileWrapper& wrapper = *attachment.fileWrapper();
    auto empty = FileWrapper::regularFile(Data());
    empty->setPreferredFilename(wrapper.preferredFilename());
    empty->setFileAttributes(wrapper.fileAttributes());
    return attachment.sameClassWithFileWrapper(std::move(empty));
}

// What the walk over a text's attachments leaves.
struct ReducedText {
    AttributedString text;         // attachments as placeholders, dividers as text
    FileWrapper::Children files;   // entry name → contents, in text order
    platform::Array dividerRanges; // range strings, in the reduced text
};

// One pass over the text's attachments; the positions of dividers are counted in the text as it becomes.
ReducedText reduceAttachments(const AttributedString& text, const std::vector<AttachmentRun>& attachments) {
    ReducedText reduced{text, {}, {}};
    std::vector<platform::TextEdit> edits;
    std::size_t growth = 0;
    for (const AttachmentRun& run : attachments) {
        if (dynamic_cast<const QLTDividerTextAttachment*>(run.attachment.get())) {
            AttributedString replacement = QLTDividerTextAttachment::replacementString();
            reduced.dividerRanges.emplace_back(
                platform::stringFromRange({run.range.location + growth, replacement.length()}));
            growth += replacement.length() - run.range.length;
            edits.push_back({run.range, std::move(replacement)});
        } else if (isPackageFile(*run.attachment)) {
            const auto& wrapper = run.attachment->fileWrapper();
            reduced.files.emplace_back(wrapper->preferredFilename(), wrapper);
            edits.push_back(attachmentEdit(text, run.range, placeholderFor(*run.attachment)));
        }
    }
    reduced.text.applyEdits(edits);
    return reduced;
}

// White stands for the system's own background, which is what black and white mean to the reader.
platform::Dictionary backgroundRepresentation(const Color& color) {
    const Color components = color.usingComponents().value_or(color);
    const Color system = Color::textBackgroundColor().usingComponents().value_or(Color::white());
    return propertyListRepresentation(isEqualToColorQLTVersion(components, system) ? Color::white() : components);
}

AttributedString suitableForExport(AttributedString text, const std::vector<AttachmentRun>& attachments) {
    convertChecklistsAndDividersToText(text, attachments);
    convertQuilletHighlightsToNSTextHighlights(text);
    convertFromDynamicColors(text);
    return text;
}

} // namespace

AttributedString QLTNoteFile::noteTextSuitableForExport() const {
    return suitableForExport(noteText_, attachmentsOf(noteText_));
}

Result<std::shared_ptr<FileWrapper>> QLTNoteFile::fileWrapper() const {
    const AttributedString named = textWithPackageNames(noteText_);
    const std::vector<AttachmentRun> attachments = attachmentsOf(named);
    const AttributedString exported = suitableForExport(named, attachments);
    std::shared_ptr<FileWrapper> package =
        TRY(platform::rtfdFileWrapperFromRange(exported, {0, exported.length()}, documentAttributes_));

    AttributedString text = named;
    keepAllowedAttributes(text); // attachments among them
    ReducedText reduced = reduceAttachments(text, attachments);
    convertFromDynamicColors(reduced.text);
    Data archive = TRY(archivedNoteText(std::move(reduced.text)));

    const platform::Environment& environment = platform::Environment::current();
    platform::Dictionary attributes{
        {"appIdentifier", Value(environment.bundleIdentifier)},
        {"appVersion", Value(environment.bundleShortVersion)},
        {"showSmallImages", Value(showSmallImages_)},
        {"dividerRanges", Value(std::move(reduced.dividerRanges))},
        {"usesColorTypes", Value(true)},
    };
    if (drawingData_) attributes.emplace("drawingsData", *drawingData_);
    if (const auto color = backgroundColor()) attributes.emplace("backgroundColor", backgroundRepresentation(*color));

    for (auto& [name, wrapper] : reduced.files) package->setFileWrapper(name, wrapper);
    package->setFileWrapper(std::string(kNoteTextEntry), FileWrapper::regularFile(std::move(archive)));
    if (Result<std::string> plist = platform::binaryDataFromPropertyList(std::move(attributes)))
        package->setFileWrapper(std::string(kNoteAttributesEntry), FileWrapper::regularFile(Data(*std::move(plist))));
    return package;
}

} // namespace quillet
