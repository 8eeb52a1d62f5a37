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

Result<NoteScratch> NoteScratch::create(platform::OutputDirectory& destination, std::string_view name) {
    platform::FileDescriptor descriptor = TRY(destination.createScratchDirectory(name));
    return NoteScratch(
        destination, std::string(name),
        platform::OutputDirectory(std::move(descriptor), platform::joinedPath(destination.path(), name)));
}

NoteScratch::NoteScratch(platform::OutputDirectory& destination, std::string name, platform::OutputDirectory directory)
    : destination_(&destination), name_(std::move(name)), directory_(std::move(directory)) {}

NoteScratch::NoteScratch(NoteScratch&& other) noexcept
    : destination_(std::exchange(other.destination_, nullptr)), name_(std::move(other.name_)),
      directory_(std::move(other.directory_)), resources_(std::move(other.resources_)) {}

NoteScratch::~NoteScratch() {
    if (Result<> removed = remove(); !removed) platform::systemLog(removed.error().description());
}

Result<std::string> NoteScratch::writeResource(EvernoteXMLResource& resource, std::u16string_view name) {
    Data bytes = TRY(resource.getContentData());
    std::string free = freeNameInDirectory(directory_, namedAsOneComponent(name));
    TRY(writeFile(free, bytes.bytes()));
    resources_.emplace(free, std::move(bytes));
    return free;
}

Result<> NoteScratch::writeFile(const std::string& name, std::string_view bytes) {
    const platform::FileDescriptor file =
        platform::openAt(directory_.descriptor(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    const std::string path = platform::joinedPath(directory_.path(), name);
    if (!file) return platform::failure(platform::errorFromErrno(errno, platform::FileAccess::writing, path));
    return platform::writeAll(file.get(), bytes, path);
}

Result<std::shared_ptr<FileWrapper>> NoteScratch::fileWrapper(std::string_view name) const {
    const auto resource = resources_.find(name);
    if (resource == resources_.end())
        return platform::failure(platform::errorFromErrno(ENOENT, platform::FileAccess::reading,
                                                          platform::joinedPath(directory_.path(), name)));
    auto wrapper = FileWrapper::regularFile(resource->second);
    wrapper->setPreferredFilename(resource->first);
    wrapper->setFilename(resource->first);
    wrapper->setFileAttributes({.modificationDate = platform::Environment::current().now()});
    return wrapper;
}

Result<> NoteScratch::remove() {
    platform::OutputDirectory* destination = std::exchange(destination_, nullptr);
    return destination ? destination->retireScratchDirectory(name_, directory_.takeDescriptor()) : Result<>();
}

} // namespace quillet
