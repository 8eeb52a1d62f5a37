#include "platform/files/OutputDirectory.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "platform/files/FileTree.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/foundation/URL.h"

namespace platform {

namespace {

constexpr std::string_view kTemporaryPrefix = ".quillet-new-";
constexpr const char* kScratchAttribute = "user.com.tesseral.quillet.scratch"; // marks a scratch directory
constexpr unsigned kFileMode = 0666;                                           // narrowed by the umask
constexpr unsigned kDirectoryMode = 0777;
constexpr unsigned kPrivateMode = 0700;
constexpr int kMostSweepsInTheWay = 100; // a sweep is short; so many in a row mean something else
constexpr int kOpenDirectory = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

std::string nextTemporaryName() {
    static std::atomic<unsigned long> counter = 0;
    return fmt::format("{}{}-{}", kTemporaryPrefix, ::getpid(), ++counter);
}

Error invalidName(std::string_view directoryPath, std::string_view name) {
    return Error::withDescription(
        kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::fileWriteInvalidFileName),
        fmt::format("Cannot write “{}” into “{}”: the name is not one path component.", name, directoryPath));
}

bool lock(int descriptor) {
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
}

// Whether the name still stands for the open entry. Between making an entry and locking it, somebody who looks for
// leftovers may have taken it for one.
bool isStillNamed(int directory, const std::string& name, int descriptor) {
    struct stat own{}, named{};
    return ::fstat(descriptor, &own) == 0 && ::fstatat(directory, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

// A new entry, open; -1 and errno on failure.
FileDescriptor makeEntry(int directory, const std::string& name, bool isDirectory, unsigned mode) {
    if (!isDirectory) return openAt(directory, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    if (::mkdirat(directory, name.c_str(), mode) != 0) return {};
    FileDescriptor made = openAt(directory, name.c_str(), kOpenDirectory);
    if (!made) {
        const int reason = errno;
        ::unlinkat(directory, name.c_str(), AT_REMOVEDIR);
        errno = reason;
    }
    return made;
}

} // namespace

// ---- pending outputs

PendingOutput::PendingOutput(int directory, std::string directoryPath, std::string temporaryName,
                             FileDescriptor descriptor, bool isDirectory)
    : directory_(directory), directoryPath_(std::move(directoryPath)), temporaryName_(std::move(temporaryName)),
      descriptor_(std::move(descriptor)), isDirectory_(isDirectory) {}

PendingOutput::PendingOutput(PendingOutput&& other) noexcept
    : directory_(other.directory_), directoryPath_(std::move(other.directoryPath_)),
      temporaryName_(std::exchange(other.temporaryName_, {})), descriptor_(std::move(other.descriptor_)),
      emptyFiles_(std::move(other.emptyFiles_)), isDirectory_(other.isDirectory_) {}

PendingOutput::~PendingOutput() {
    if (!temporaryName_.empty()) (void)removeTree(directory_, temporaryName_, directoryPath_);
}

void PendingOutput::settle() {
    temporaryName_.clear();
    descriptor_.reset();
}

Result<> PendingOutput::write(std::string_view bytes) {
    return writeAll(descriptor_.get(), bytes, path());
}

void PendingOutput::createEmptyFiles(std::span<const std::string_view> names) {
    emptyFiles_.reserve(names.size());
    for (const std::string_view name : names) {
        EmptyFile file{std::string(name), {}};
        file.descriptor = makeEntry(descriptor_.get(), file.name, false, FileAttributes().posixPermissions);
        if (file.descriptor) emptyFiles_.push_back(std::move(file));
    }
}

Result<> PendingOutput::writeChildren(const FileWrapper& from) {
    const auto isFit = [&](const EmptyFile& file) {
        const auto child = from.childNamed(file.name);
        return child && !child->isDirectory() &&
               child->fileAttributes().posixPermissions == FileAttributes().posixPermissions;
    };
    const auto unfit = std::ranges::partition(emptyFiles_, isFit);
    for (const EmptyFile& file : unfit) TRY(removeTree(descriptor_.get(), file.name, path()));
    Result<> written = from.writeChildren(descriptor_.get(), path(), std::span(emptyFiles_.begin(), unfit.begin()));
    emptyFiles_.clear();
    return written;
}

Result<> PendingOutput::moveIntoPlace(std::string_view name) {
    if (!isPathComponent(name)) return failure(invalidName(directoryPath_, name));
    const EntryKind kind = isDirectory_ ? EntryKind::directory : EntryKind::file;
    const int reason = moveWithoutReplacing(directory_, temporaryName_, std::string(name), kind);
    if (reason != 0) return failure(errorFromErrno(reason, FileAccess::writing, joinedPath(directoryPath_, name)));
    settle();
    return {};
}

Result<> PendingOutput::moveReplacing(std::string_view name) {
    if (!isPathComponent(name)) return failure(invalidName(directoryPath_, name));
    const int reason = exchange(directory_, temporaryName_, std::string(name));
    if (reason == ENOENT) return moveIntoPlace(name);
    if (reason != 0) return failure(errorFromErrno(reason, FileAccess::writing, joinedPath(directoryPath_, name)));
    // The new entry is in place; an old one that cannot be removed is left for the next sweep.
    (void)removeTree(directory_, temporaryName_, directoryPath_);
    settle();
    return {};
}

// ---- the directory

Result<OutputDirectory> OutputDirectory::openURL(const URL& url) {
    std::string path = url.path();
    FileDescriptor directory = openAt(AT_FDCWD, path.c_str(), O_PATH | O_DIRECTORY);
    if (!directory) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return OutputDirectory(std::move(directory), std::move(path));
}

bool OutputDirectory::isReachable(std::string_view name) const {
    struct stat status{};
    return isPathComponent(name) &&
           ::fstatat(directory_.get(), std::string(name).c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

std::string OutputDirectory::firstFreeName(const std::string& name,
                                           const std::function<std::string(std::size_t)>& candidate) {
    if (!isReachable(name)) return name;
    std::size_t& taken = takenNumbers_[name];
    while (true) {
        std::string numbered = candidate(taken + 1);
        if (!isReachable(numbered)) return numbered;
        ++taken;
    }
}

Result<PendingOutput> OutputDirectory::create(bool isDirectory) {
    for (int sweptAway = 0;;) {
        std::string name = nextTemporaryName();
        FileDescriptor made = makeEntry(directory_.get(), name, isDirectory, isDirectory ? kDirectoryMode : kFileMode);
        if (!made && errno == EEXIST) continue;
        // A directory is made first and opened then: another import's sweep may come between. When the destination
        // itself is gone the same error comes back every time.
        if (!made && errno == ENOENT && isDirectory && ++sweptAway < kMostSweepsInTheWay) continue;
        if (!made) return failure(errorFromErrno(errno, FileAccess::writing, joinedPath(path_, name)));
        // File systems without locks keep no leftovers apart; the others give the lock unless a sweep was faster.
        if (!lock(made.get()) && errno == EWOULDBLOCK) continue;
        if (!isStillNamed(directory_.get(), name, made.get())) continue;
        return PendingOutput(directory_.get(), path_, std::move(name), std::move(made), isDirectory);
    }
}

Result<PendingOutput> OutputDirectory::createFile() {
    return create(false);
}

Result<PendingOutput> OutputDirectory::createPackage() {
    return create(true);
}

Result<FileDescriptor> OutputDirectory::createScratchDirectory(std::string_view name) {
    if (!isPathComponent(name)) return failure(invalidName(path_, name));
    const std::string wanted(name);
    if (spareScratch_.descriptor) {
        if (moveWithoutReplacing(directory_.get(), spareScratch_.name, wanted, EntryKind::directory) == 0)
            return std::move(spareScratch_.descriptor);
        removeSpareScratchDirectory(); // making a new one tells what is wrong
    }
    FileDescriptor made = makeEntry(directory_.get(), wanted, true, kPrivateMode);
    if (!made) return failure(errorFromErrno(errno, FileAccess::writing, joinedPath(path_, name)));
    // Locked before it is marked: until then no sweep touches it. Without room for the mark it is never swept.
    (void)lock(made.get());
    (void)::fsetxattr(made.get(), kScratchAttribute, "", 0, 0);
    return made;
}

Result<> OutputDirectory::retireScratchDirectory(std::string_view name, FileDescriptor descriptor) {
    const std::string old(name), path = joinedPath(path_, name);
    if (spareScratch_.descriptor || !isStillNamed(directory_.get(), old, descriptor.get())) return remove(name);
    for (const std::string& entry : TRY(entryNames(descriptor.get(), path)))
        TRY(removeTree(descriptor.get(), entry, path));
    std::string hidden = nextTemporaryName();
    if (moveWithoutReplacing(directory_.get(), old, hidden, EntryKind::directory) != 0) return remove(name);
    spareScratch_ = {std::move(hidden), std::move(descriptor)};
    return {};
}

void OutputDirectory::removeSpareScratchDirectory() {
    if (!spareScratch_.descriptor) return;
    (void)remove(spareScratch_.name);
    spareScratch_.descriptor.reset();
}

Result<> OutputDirectory::remove(std::string_view name) {
    return removeTree(directory_.get(), name, path_);
}

Result<FileDescriptor> OutputDirectory::openLogFile(std::string_view name) {
    const std::string path = joinedPath(path_, name);
    if (!isPathComponent(name)) return failure(invalidName(path_, name));
    FileDescriptor file = openAt(directory_.get(), std::string(name).c_str(),
                                 O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_APPEND, kFileMode);
    if (!file) return failure(errorFromErrno(errno, FileAccess::writing, path));
    struct stat status{};
    if (::fstat(file.get(), &status) != 0) return failure(errorFromErrno(errno, FileAccess::writing, path));
    if (!S_ISREG(status.st_mode)) return failure(errorFromErrno(EINVAL, FileAccess::writing, path));
    if (::ftruncate(file.get(), 0) != 0) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return file;
}

// Ours by name or by mark, and nobody holds its lock.
bool OutputDirectory::removeIfLeftover(const std::string& name) {
    const bool isTemporary = name.starts_with(kTemporaryPrefix);
    const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | (isTemporary ? 0 : O_DIRECTORY);
    const FileDescriptor found = openAt(directory_.get(), name.c_str(), flags);
    if (!found) return false;
    if (!isTemporary && ::fgetxattr(found.get(), kScratchAttribute, nullptr, 0) < 0) return false;
    return lock(found.get()) && removeTree(directory_.get(), name, path_).has_value();
}

std::size_t OutputDirectory::removeLeftovers() {
    constexpr std::size_t kIdentifierLength = 36; // scratch directories are named by UUIDs
    const auto names = entryNames(directory_.get(), path_);
    std::size_t removed = 0;
    if (!names) return removed;
    for (const std::string& name : *names)
        if (name.starts_with(kTemporaryPrefix) || name.size() == kIdentifierLength)
            if (removeIfLeftover(name)) ++removed;
    return removed;
}

Result<> OutputDirectory::flush() {
    const FileDescriptor own = openAt(directory_.get(), ".", O_RDONLY | O_DIRECTORY);
    if (!own || ::syncfs(own.get()) != 0) return failure(errorFromErrno(errno, FileAccess::writing, path_));
    return {};
}

} // namespace platform
