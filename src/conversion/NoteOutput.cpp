#include "conversion/NoteOutput.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "conversion/OutputNames.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/StringFormat.h"

namespace quillet {

using platform::PendingOutput;
using platform::ResourceValues;
using platform::Result;
using platform::URL;

namespace {

constexpr std::string_view kCouldNotSetValues = "Couldn't set resource values on %@";

} // namespace

NoteOutput::NoteOutput(const URL& url) : url_(url), directory_(platform::OutputDirectory::openURL(url)) {
    if (directory_) directory_->removeLeftovers();
}

Result<platform::OutputDirectory*> NoteOutput::directory() {
    if (!directory_) return platform::failure(directory_.error());
    return &*directory_;
}

Result<URL> NoteOutput::writeFile(std::u16string_view name, std::string_view bytes, const ResourceValues& values) {
    PendingOutput pending = TRY(TRY(directory())->createFile());
    TRY(pending.write(bytes));
    const auto refused = platform::setResourceValues(pending.descriptor(), values);
    return publish(std::move(pending), name, freeNameInDirectory(*directory_, name), refused);
}

Result<BegunPackage> NoteOutput::beginPackage(std::u16string name, const ResourceValues& values,
                                              std::span<const std::string_view> files) {
    PendingOutput output = TRY(TRY(directory())->createPackage());
    ResourceValues lasting = values; // contents that come later move the modification date
    lasting.isPackage = true;
    lasting.contentModificationDate.reset();
    auto refused = platform::setResourceValues(output.descriptor(), lasting);
    output.createEmptyFiles(files);
    std::string free = freeNameInDirectory(*directory_, name);
    return BegunPackage{std::move(output), std::move(name), std::move(free), values.contentModificationDate,
                        std::move(refused)};
}

Result<URL> NoteOutput::finishPackage(BegunPackage package, const platform::FileWrapper& contents) {
    TRY(package.output.writeChildren(contents));
    ResourceValues last;
    last.contentModificationDate = package.modificationDate;
    std::ranges::move(platform::setResourceValues(package.output.descriptor(), last),
                      std::back_inserter(package.refused));
    return publish(std::move(package.output), package.name, std::move(package.freeName), package.refused);
}

// A name that something else has taken since it was found free leads to the next one.
Result<URL> NoteOutput::publish(PendingOutput pending, std::u16string_view name, std::string free,
                                const std::vector<platform::RefusedAttribute>& refused) {
    for (;; free = freeNameInDirectory(*directory_, name)) {
        const Result<> moved = pending.moveIntoPlace(free);
        if (!moved && moved.error().code == static_cast<std::int64_t>(platform::CocoaError::fileWriteFileExists))
            continue;
        if (!moved) return platform::failure(moved.error());
        const URL written = urlOf(free);
        if (!refused.empty())
            platform::systemLog(platform::formatted(kCouldNotSetValues, {written.absoluteString()}) + ": " +
                                platform::descriptionOfRefused(refused));
        return written;
    }
}

URL NoteOutput::urlOf(std::string_view name) const {
    return url_.appendingPathComponent(name);
}

void NoteOutput::overwriteLog(std::string_view name, std::string_view text) {
    if (!directory_) return;
    const auto log = directory_->openLogFile(name);
    if (log) (void)platform::writeAll(log->get(), text, name);
}

Result<> NoteOutput::flush() {
    if (!directory_) return {};
    directory_->removeSpareScratchDirectory();
    return directory_->flush();
}

} // namespace quillet
