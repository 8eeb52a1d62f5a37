#include "conversion/NoteScratch.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "conversion/OutputNames.h"
#include "enex/EvernoteXMLResource.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"

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
    resources_.emplace(free, std::move(bytes));
    return free;
}

Result<std::shared_ptr<FileWrapper>> NoteScratch::fileWrapper(std::string_view name) const {
    const auto resource = resources_.find(name);
    if (resource == resources_.end())
        return platform::failure(
            platform::errorFromErrno(ENOENT, platform::FileAccess::reading, platform::joinedPath(path(), name)));
    auto wrapper = FileWrapper::regularFile(resource->second);
    wrapper->setPreferredFilename(resource->first);
    wrapper->setFilename(resource->first);
    wrapper->setFileAttributes({.modificationDate = platform::Environment::current().now()});
    return wrapper;
}

Result<> NoteScratch::remove() {
    if (!directory_) return {};
    platform::FileDescriptor descriptor = directory_->takeDescriptor();
    directory_.reset();
    return destination_.retireScratchDirectory(name_, std::move(descriptor));
}

} // namespace quillet
