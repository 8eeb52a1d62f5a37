// Saving a note package in the place of one that may exist already.
#include "documents/QLTNoteFile.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/OutputDirectory.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/StringFormat.h"

namespace quillet {

using platform::OutputDirectory;
using platform::PendingOutput;
using platform::ResourceValues;
using platform::Result;
using platform::URL;

namespace {

constexpr std::string_view kAttributesNotKept = "Couldn't keep file attributes of %@: %@";

// What a package takes over from the one that it replaces.
ResourceValues valuesToKeep(const URL& fileURL) {
    ResourceValues kept;
    kept.isPackage = true;
    if (const Result<ResourceValues> existing = platform::resourceValuesOfItemAtURL(fileURL)) {
        kept.hasHiddenExtension = existing->hasHiddenExtension;
        kept.creationDate = existing->creationDate;
    }
    return kept;
}

} // namespace

Result<> QLTNoteFile::saveToFileURL(const URL& fileURL) const {
    const ResourceValues kept = valuesToKeep(fileURL);
    const auto package = TRY(fileWrapper());
    OutputDirectory directory = TRY(OutputDirectory::openURL(fileURL.deletingLastPathComponent()));
    PendingOutput pending = TRY(directory.createPackage());
    TRY(pending.writeChildren(*package));
    const auto refused = platform::setResourceValues(pending.descriptor(), kept);
    TRY(pending.moveReplacing(fileURL.lastPathComponent()));
    if (!refused.empty())
        platform::systemLog(platform::formatted(kAttributesNotKept,
                                                {fileURL.absoluteString(), platform::descriptionOfRefused(refused)}));
    return {};
}

} // namespace quillet
