#include "conversion/NoteScratch.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "conversion/OutputNames.h"
#include "enex/EvernoteXMLResource.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Capitalization.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/Percent.h"

namespace quillet {

using platform::Data;
using platform::FileWrapper;
using platform::Result;

NoteScratch::NoteScratch(platform::OutputDirectory& destination, std::string_view name)
    : destination_(destination), name_(name), url_(platform::URL::fileURLWithPath(path(), true)) {}

NoteScratch::~NoteScratch() {
    if (Result<> removed = remove(); !removed) platform::systemLog(removed.error().description());
}

Result<platform::OutputDirectory*> NoteScratch::directory() {
    if (!directory_) directory_.emplace(TRY(destination_.createScratchDirectory(name_)), path());
    return &*directory_;
}

Result<std::string> NoteScratch::writeResource(EvernoteXMLResource& resource, std::u16string_view name) {
    Data bytes = TRY(resource.getContentData());
    platform::OutputDirectory& directory = *TRY(this->directory());
    std::string free = freeNameInDirectory(directory, namedAsOneComponent(name));
    const platform::FileDescriptor file =
        platform::openAt(directory.descriptor(), free.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    const std::string written = platform::joinedPath(directory.path(), free);
    if (!file) return platform::failure(platform::errorFromErrno(errno, platform::FileAccess::writing, written));
    TRY(platform::writeAll(file.get(), bytes.bytes(), written));
    files_.emplace(free, File{std::move(bytes), &resource, false});
    byCapitals_.clear();
    return free;
}

NoteScratch::Files::iterator NoteScratch::fileInAnotherCase(std::string_view name) {
    // As the page, read in the environment's locale, shows a marker: a Turkish "i" becomes another letter, but all that
    // is not ASCII is encoded and stays.
    const auto capitals = [](std::string_view text) {
        const std::string encoded = platform::percentEncodedForURLPath(text);
        const std::string changed =
            platform::utf8FromUTF16(platform::localizedUppercased(platform::utf16FromUTF8(encoded)));
        return platform::removingPercentEncoding(changed).value_or(changed);
    };
    if (byCapitals_.empty())
        for (auto file = files_.begin(); file != files_.end(); ++file)
            byCapitals_.try_emplace(capitals(file->first), file);
    const auto found = byCapitals_.find(capitals(name));
    return found == byCapitals_.end() ? files_.end() : found->second;
}

Result<std::shared_ptr<FileWrapper>> NoteScratch::fileWrapper(std::string_view name) {
    auto found = files_.find(name);
    if (found == files_.end()) found = fileInAnotherCase(name);
    if (found == files_.end())
        return platform::failure(
            platform::errorFromErrno(ENOENT, platform::FileAccess::reading, platform::joinedPath(path(), name)));
    found->second.isUsed = true;
    auto wrapper = FileWrapper::regularFile(found->second.bytes);
    wrapper->setPreferredFilename(found->first);
    wrapper->setFilename(found->first);
    wrapper->setFileAttributes({.modificationDate = platform::Environment::current().now()});
    return wrapper;
}

Result<> NoteScratch::remove() {
    files_.clear();
    byCapitals_.clear();
    if (!directory_) return {};
    platform::FileDescriptor descriptor = directory_->takeDescriptor();
    directory_.reset();
    return destination_.retireScratchDirectory(name_, std::move(descriptor));
}

} // namespace quillet
