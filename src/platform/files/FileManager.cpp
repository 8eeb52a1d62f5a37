#include "platform/files/FileManager.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileTree.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"

namespace platform {

namespace {

// A regular file, open; anything else is EISDIR or EINVAL.
Result<FileDescriptor> openRegularFile(const std::string& path, int flags, FileAccess access) {
    constexpr unsigned kMode = 0666; // narrowed by the umask
    FileDescriptor file = openAt(AT_FDCWD, path.c_str(), flags | O_NONBLOCK | O_NOCTTY, kMode);
    struct stat status{};
    if (!file || ::fstat(file.get(), &status) != 0) return failure(errorFromErrno(errno, access, path));
    if (!S_ISREG(status.st_mode))
        return failure(errorFromErrno(S_ISDIR(status.st_mode) ? EISDIR : EINVAL, access, path));
    return file;
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
    const FileDescriptor file = TRY(openRegularFile(path, O_RDONLY, FileAccess::reading));
    return Data(TRY(readAll(file.get(), limit, path)));
}

Result<> writeContents(std::string_view bytes, const URL& url) {
    const std::string path = url.path();
    const FileDescriptor file = TRY(openRegularFile(path, O_WRONLY | O_CREAT | O_NOFOLLOW, FileAccess::writing));
    struct stat status{};
    if (::fstat(file.get(), &status) == 0 && status.st_size > 0 && ::ftruncate(file.get(), 0) != 0)
        return failure(errorFromErrno(errno, FileAccess::writing, path));
    return writeAll(file.get(), bytes, path);
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
