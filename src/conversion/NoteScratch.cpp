#include "conversion/NoteScratch.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>

#include "conversion/OutputNames.h"
#include "enex/EvernoteXMLResource.h"
#include "platform/base/SystemLog.h"
#include "platform/files/FileWrapper.h"
#include "platform/foundation/Environment.h"
#include "platform/foundation/TextFolding.h"

namespace quillet {

using platform::Data;
using platform::FileWrapper;
using platform::Result;

namespace {

std::u16string withoutCase(std::string_view name) {
    return platform::foldedText(platform::utf16FromUTF8(name), {.ignoreCase = true});
}

} // namespace

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
    const auto added = files_.emplace(free, File{std::move(bytes), &resource, false}).first;
    filesIgnoringCase_.try_emplace(withoutCase(free), added);
    return free;
}

Result<std::shared_ptr<FileWrapper>> NoteScratch::fileWrapper(std::string_view name) {
    auto found = files_.find(name);
    if (found == files_.end())
        if (const auto other = filesIgnoringCase_.find(withoutCase(name)); other != filesIgnoringCase_.end())
            found = other->second;
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
    if (!directory_) return {};
    platform::FileDescriptor descriptor = directory_->takeDescriptor();
    directory_.reset();
    return destination_.retireScratchDirectory(name_, std::move(descriptor));
}

} // namespace quillet
