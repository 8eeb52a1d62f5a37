#include "platform/files/FileDescriptor.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

void FileDescriptor::reset() {
    if (descriptor_ >= 0) ::close(std::exchange(descriptor_, -1));
}

FileDescriptor openAt(int directory, const char* name, int flags, unsigned mode) {
    int descriptor;
    do {
        descriptor = ::openat(directory, name, flags | O_CLOEXEC, static_cast<mode_t>(mode));
    } while (descriptor < 0 && errno == EINTR);
    return FileDescriptor(descriptor);
}

Result<> writeAll(int descriptor, std::string_view bytes, std::string_view path) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return failure(errorFromErrno(errno, FileAccess::writing, path));
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

Result<std::string> readAll(int descriptor, std::size_t limit, std::string_view path) {
    struct stat status{};
    std::size_t expected = 0;
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
        expected = static_cast<std::size_t>(status.st_size);
    if (expected > limit) return failure(errorFromErrno(EFBIG, FileAccess::reading, path));
    // One byte more than expected: that it does not come shows the end of the file without a second read.
    std::string bytes(expected + 1, '\0');
    std::size_t used = 0;
    while (true) {
        if (used == bytes.size()) bytes.resize(bytes.size() + std::max<std::size_t>(bytes.size(), 65536));
        const ssize_t count = ::read(descriptor, bytes.data() + used, bytes.size() - used);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return failure(errorFromErrno(errno, FileAccess::reading, path));
        if (count == 0) break;
        used += static_cast<std::size_t>(count);
        if (used > limit) return failure(errorFromErrno(EFBIG, FileAccess::reading, path));
        if (used == expected) break;
    }
    bytes.resize(used);
    return bytes;
}

Result<std::string> contentsOfFile(const std::string& path, std::size_t limit) {
    const FileDescriptor descriptor = openAt(AT_FDCWD, path.c_str(), O_RDONLY);
    if (!descriptor) return failure(errorFromErrno(errno, FileAccess::reading, path));
    return readAll(descriptor.get(), limit, path);
}

bool isPathComponent(std::string_view name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string_view::npos &&
           name.find('\0') == std::string_view::npos;
}

std::string joinedPath(std::string_view directory, std::string_view name) {
    std::string path;
    path.reserve(directory.size() + 1 + name.size());
    path = directory;
    if (path.empty() || path.back() != '/') path += '/';
    path += name;
    return path;
}

} // namespace platform
