#include "platform/defaults/PreferencesFile.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <limits>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/foundation/Environment.h"
#include "platform/plist/PropertyList.h"

namespace platform {

namespace {

constexpr std::size_t kMaximumSize = 64U << 20; // style catalogues are some kilobytes
constexpr unsigned kOwnerOnly = 0600;
constexpr unsigned kOwnerOnlyDirectory = 0700;

Result<std::string> readBytes(const std::string& path) {
    const FileDescriptor file = openAt(AT_FDCWD, path.c_str(), O_RDONLY | O_NONBLOCK);
    if (!file) return failure(errorFromErrno(errno, FileAccess::reading, path));
    struct stat status{};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return failure(errorFromErrno(EINVAL, FileAccess::reading, path));
    return readAll(file.get(), kMaximumSize, path);
}

bool saysThatThereIsNone(const Error& error) {
    return error.code == static_cast<std::int64_t>(CocoaError::fileReadNoSuchFile);
}

PreferencesFile parsed(std::string bytes) {
    PreferencesFile file;
    file.bytes = std::move(bytes);
    auto list = propertyListFromData(file.bytes);
    if (!list) {
        file.trouble = list.error().localizedDescription();
    } else if (Dictionary* values = list->as<Dictionary>()) {
        file.values = std::move(*values);
    } else {
        file.trouble = "The property list is no dictionary.";
    }
    return file;
}

void makeDirectoriesFor(const std::string& path) {
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), kOwnerOnlyDirectory);
}

// Held as long as the descriptor is open.
Result<FileDescriptor> lock(const std::string& path) {
    FileDescriptor file = openAt(AT_FDCWD, path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, kOwnerOnly);
    if (!file) return failure(errorFromErrno(errno, FileAccess::writing, path));
    while (::flock(file.get(), LOCK_EX) != 0)
        if (errno != EINTR) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return file;
}

// Only the holder of the lock writes, so that one name serves for the new file; a dead writer's remains are replaced.
// What was there before is kept aside only when the new file is whole, so that a full disk changes nothing.
enum class OldFile : std::uint8_t { replaced, keptAside };
Result<> replace(const std::string& path, std::string_view bytes, OldFile oldFile) {
    const std::string fresh = path + ".new";
    ::unlink(fresh.c_str());
    const FileDescriptor file = openAt(AT_FDCWD, fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kOwnerOnly);
    if (!file) return failure(errorFromErrno(errno, FileAccess::writing, path));
    Result<> written = writeAll(file.get(), bytes, path);
    if (written && ::fsync(file.get()) != 0) written = failure(errorFromErrno(errno, FileAccess::writing, path));
    if (written && oldFile == OldFile::keptAside) ::rename(path.c_str(), (path + ".damaged").c_str());
    if (written && ::rename(fresh.c_str(), path.c_str()) != 0)
        written = failure(errorFromErrno(errno, FileAccess::writing, path));
    if (!written) ::unlink(fresh.c_str());
    return written;
}

} // namespace

std::string preferencesPath(std::string_view domain) {
    return joinedPath(Environment::current().preferencesDirectory, domain) + ".plist";
}

PreferencesFile readPreferencesFile(const std::string& path) {
    auto bytes = readBytes(path);
    if (bytes) return parsed(*std::move(bytes));
    PreferencesFile file;
    if (!saysThatThereIsNone(bytes.error())) file.trouble = bytes.error().localizedDescription();
    return file;
}

Result<Dictionary> changePreferencesFile(const std::string& path, std::string_view key, const Value* value) {
    makeDirectoriesFor(path);
    const FileDescriptor held = TRY(lock(path + ".lock"));
    auto bytes = readBytes(path);
    if (!bytes && !saysThatThereIsNone(bytes.error())) return failure(std::move(bytes).error());
    PreferencesFile file = bytes ? parsed(*std::move(bytes)) : PreferencesFile();
    if (value) {
        file.values.insert_or_assign(std::string(key), *value);
    } else {
        file.values.erase(std::string(key));
    }
    const std::string changed = TRY(binaryDataFromPropertyList(Value(file.values)));
    TRY(replace(path, changed, file.trouble.empty() ? OldFile::replaced : OldFile::keptAside));
    return std::move(file.values);
}

} // namespace platform
