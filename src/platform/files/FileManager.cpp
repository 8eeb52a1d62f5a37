#include "platform/files/FileManager.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileTree.h"
#include "platform/files/OutputDirectory.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"

namespace platform {

namespace {

Error notARegularFile(const struct stat& status, FileAccess access, const std::string& path) {
    const int reason = S_ISDIR(status.st_mode) ? EISDIR : S_ISLNK(status.st_mode) ? ELOOP : EINVAL;
    return errorFromErrno(reason, access, path);
}

} // namespace

bool resourceIsReachable(const URL& url) {
    const std::string path = url.path();
    struct stat status{};
    return path.find('\0') == std::string::npos && ::lstat(path.c_str(), &status) == 0;
}

bool isDirectory(const URL& url) {
    struct stat status{};
    return ::stat(url.path().c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<Data> contentsAtURL(const URL& url, std::size_t limit) {
    const std::string path = url.path();
    const FileDescriptor file = openAt(AT_FDCWD, path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0) return failure(errorFromErrno(errno, FileAccess::reading, path));
    if (!S_ISREG(status.st_mode)) return failure(notARegularFile(status, FileAccess::reading, path));
    return Data(TRY(readAll(file.get(), limit, path)));
}

Result<> writeContents(std::string_view bytes, const URL& url) {
    OutputDirectory directory = TRY(OutputDirectory::openURL(url.deletingLastPathComponent()));
    const std::string name = url.lastPathComponent();
    struct stat existing{};
    const bool exists = ::fstatat(directory.descriptor(), name.c_str(), &existing, AT_SYMLINK_NOFOLLOW) == 0;
    if (exists && !S_ISREG(existing.st_mode))
        return failure(notARegularFile(existing, FileAccess::writing, url.path()));
    PendingOutput file = TRY(directory.createFile());
    if (Result<> written = file.write(bytes); !written) {
        // Its user knows the file by its own name, not by the one that it is built under.
        const auto cause = written.error().underlyingError();
        if (!cause) return written;
        return failure(errorFromErrno(static_cast<int>(cause->code), FileAccess::writing, url.path()));
    }
    if (exists) (void)::fchmod(file.descriptor(), existing.st_mode & 07777); // its own owner may always do so
    return file.moveReplacing(name);
}

Result<> createDirectoryAtURL(const URL& url) {
    constexpr mode_t kPrivate = 0700;
    const std::string path = url.path();
    if (::mkdir(path.c_str(), kPrivate) != 0) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return {};
}

Result<> removeItemAtURL(const URL& url) {
    const std::string path = url.path();
    const std::size_t slash = path.rfind('/');
    const std::string parent = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const FileDescriptor directory = openAt(AT_FDCWD, parent.c_str(), O_PATH | O_DIRECTORY);
    if (!directory) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return removeTree(directory.get(), std::string_view(path).substr(slash + 1), parent);
}

std::string displayNameAtPath(std::string_view path) {
    const URL url = URL::fileURLWithPath(path);
    const std::string name = url.lastPathComponent();
    const std::string extension = url.pathExtension();
    if (extension.empty() || path.find('\0') != std::string_view::npos) return name;
    const FileDescriptor item = openAt(AT_FDCWD, url.path().c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (!item || !hasHiddenExtension(item.get())) return name;
    return name.substr(0, name.size() - extension.size() - 1);
}

} // namespace platform
