// File wrappers from and to the file system. Both walks keep a stack with one open directory a level, at most
// kMaximumDepth of them, and reach every entry by name from its open directory, so that nothing planted on the way
// (a symbolic link, a renamed parent) leads outside.
#include <algorithm>
#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"
#include "platform/files/FileTree.h"
#include "platform/files/FileWrapper.h"
#include "platform/files/ResourceValues.h"
#include "platform/foundation/URL.h"

namespace platform {

namespace {

constexpr std::size_t kMaximumDepth = 64;
constexpr std::size_t kMaximumContents = std::numeric_limits<std::uint32_t>::max();

// An error of the file system whose own words would mislead.
Error refused(int errorNumber, FileAccess access, const std::string& path, std::string_view what) {
    Error error = errorFromErrno(errorNumber, access, path);
    error.userInfo.insert_or_assign(
        std::string(kLocalizedDescriptionKey),
        Value(fmt::format("Cannot {} “{}”: {}.", access == FileAccess::reading ? "read" : "write", path, what)));
    return error;
}

Error tooDeep(FileAccess access, const std::string& path) {
    return refused(ELOOP, access, path, fmt::format("directories are nested deeper than {}", kMaximumDepth));
}

// ---- reading

class TreeReader {
  public:
    Result<std::shared_ptr<FileWrapper>> read(const std::string& path) {
        std::string name = path.substr(path.rfind('/') + 1);
        // The outermost entry may be reached through a link: its user named it.
        auto root = TRY(open(AT_FDCWD, path, 0, path, std::move(name)));
        while (!stack_.empty()) {
            if (stack_.back().next == stack_.back().names.size()) {
                stack_.pop_back();
                continue;
            }
            // Opening a directory pushes a level, so nothing of this one is held by reference across the call.
            const std::size_t level = stack_.size() - 1;
            std::string child = stack_[level].names[stack_[level].next++];
            const auto parent = stack_[level].wrapper;
            const std::string childPath = joinedPath(stack_[level].path, child);
            auto wrapper = TRY(open(stack_[level].descriptor.get(), child, O_NOFOLLOW, childPath, child));
            parent->setFileWrapper(std::move(child), std::move(wrapper));
        }
        return root;
    }

  private:
    struct Level {
        FileDescriptor descriptor;
        std::string path;
        std::shared_ptr<FileWrapper> wrapper;
        std::vector<std::string> names;
        std::size_t next = 0;
    };

    // O_NONBLOCK keeps a fifo from holding the reader up; it is refused below.
    Result<std::shared_ptr<FileWrapper>> open(int directory, const std::string& name, int flags,
                                              const std::string& path, std::string filename) {
        FileDescriptor descriptor = openAt(directory, name.c_str(), O_RDONLY | O_NONBLOCK | flags);
        struct stat status{};
        if (!descriptor && errno == ELOOP && flags & O_NOFOLLOW)
            return failure(refused(ELOOP, FileAccess::reading, path, "it is a symbolic link"));
        if (!descriptor || ::fstat(descriptor.get(), &status) != 0)
            return failure(errorFromErrno(errno, FileAccess::reading, path));
        std::shared_ptr<FileWrapper> wrapper;
        if (S_ISREG(status.st_mode)) {
            std::string contents = TRY(readAll(descriptor.get(), kMaximumContents - total_, path));
            total_ += contents.size();
            wrapper = FileWrapper::regularFile(Data(std::move(contents)));
        } else if (S_ISDIR(status.st_mode)) {
            wrapper = FileWrapper::directory();
        } else {
            return failure(refused(ENOTSUP, FileAccess::reading, path, "it is neither a file nor a directory"));
        }
        wrapper->setFileAttributes(attributesOf(descriptor.get(), status));
        wrapper->setPreferredFilename(filename);
        wrapper->setFilename(std::move(filename));
        if (wrapper->isDirectory()) TRY(enter(std::move(descriptor), path, wrapper));
        return wrapper;
    }

    static FileAttributes attributesOf(int descriptor, const struct stat& status) {
        FileAttributes attributes;
        attributes.modificationDate = Date::fromUnixTime(static_cast<double>(status.st_mtim.tv_sec) +
                                                         static_cast<double>(status.st_mtim.tv_nsec) / 1e9);
        attributes.posixPermissions = status.st_mode & 07777;
        attributes.extensionHidden = hasHiddenExtension(descriptor);
        return attributes;
    }

    Result<> enter(FileDescriptor descriptor, const std::string& path, const std::shared_ptr<FileWrapper>& wrapper) {
        if (stack_.size() == kMaximumDepth) return failure(tooDeep(FileAccess::reading, path));
        auto names = TRY(entryNames(descriptor.get(), path));
        std::ranges::sort(names);
        stack_.push_back({std::move(descriptor), path, wrapper, std::move(names), 0});
        return {};
    }

    std::vector<Level> stack_;
    std::size_t total_ = 0; // bytes of all files
};

// ---- writing

constexpr unsigned kOwnerReadsAndWrites = 0600;
constexpr unsigned kOwnerUses = 0700;

// What a wrapper knows of its file, onto the file. Files that refuse it keep what they have.
void applyAttributes(int descriptor, const FileAttributes& attributes) {
    ResourceValues values;
    if (attributes.extensionHidden) values.hasHiddenExtension = true;
    values.contentModificationDate = attributes.modificationDate;
    setResourceValues(descriptor, values);
}

Error invalidNameError(std::string_view path) {
    return Error::withDescription(kCocoaErrorDomain, static_cast<std::int64_t>(CocoaError::fileWriteInvalidFileName),
                                  fmt::format("Cannot write “{}”: the name is not one path component.", path));
}

// A new, empty entry for the wrapper, open: a file for writing, a directory for making entries in it.
Result<FileDescriptor> createEntry(int directory, const std::string& name, const FileWrapper& wrapper,
                                   const std::string& path) {
    if (!isPathComponent(name)) return failure(invalidNameError(path));
    const unsigned mode = wrapper.fileAttributes().posixPermissions & 0777;
    FileDescriptor descriptor;
    if (!wrapper.isDirectory()) {
        descriptor =
            openAt(directory, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode | kOwnerReadsAndWrites);
    } else if (::mkdirat(directory, name.c_str(), mode | kOwnerUses) == 0) {
        descriptor = openAt(directory, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW);
        const int reason = errno;
        if (!descriptor) ::unlinkat(directory, name.c_str(), AT_REMOVEDIR);
        errno = reason;
    }
    if (!descriptor) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return descriptor;
}

class TreeWriter {
  public:
    // The empty files lie in the outermost directory.
    explicit TreeWriter(std::span<EmptyFile> emptyFiles) : emptyFiles_(emptyFiles) {}

    // The directory stays its caller's.
    Result<> writeChildren(const FileWrapper& root, int directory, std::string path) {
        stack_.push_back({{}, directory, std::move(path), &root, 0});
        while (!stack_.empty()) {
            Level& level = stack_.back();
            if (level.next < level.wrapper->fileWrappers().size()) {
                const auto& [key, child] = level.wrapper->fileWrappers()[level.next++];
                TRY(writeEntry(level.directory, key, *child, level.path));
                continue;
            }
            // A directory's own times come last: every entry made in it has moved them. Those of the outermost are its
            // caller's.
            if (stack_.size() > 1) applyAttributes(level.directory, level.wrapper->fileAttributes());
            stack_.pop_back();
        }
        return {};
    }

  private:
    struct Level {
        FileDescriptor own; // none for the outermost
        int directory;
        std::string path;
        const FileWrapper* wrapper;
        std::size_t next;
    };

    Result<> writeEntry(int directory, const std::string& name, const FileWrapper& wrapper,
                        std::string_view directoryPath) {
        const std::string path = joinedPath(directoryPath, name);
        FileDescriptor descriptor = takeEmptyFile(name);
        if (!descriptor) descriptor = TRY(createEntry(directory, name, wrapper, path));
        if (wrapper.isDirectory()) {
            if (stack_.size() == kMaximumDepth) return failure(tooDeep(FileAccess::writing, path));
            const int own = descriptor.get();
            stack_.push_back({std::move(descriptor), own, path, &wrapper, 0});
            return {};
        }
        TRY(writeAll(descriptor.get(), wrapper.regularFileContents().bytes(), path));
        applyAttributes(descriptor.get(), wrapper.fileAttributes());
        return {};
    }

    FileDescriptor takeEmptyFile(std::string_view name) {
        if (stack_.size() != 1) return {};
        const auto found = std::ranges::find(emptyFiles_, name, &EmptyFile::name);
        return found == emptyFiles_.end() ? FileDescriptor() : std::move(found->descriptor);
    }

    std::span<EmptyFile> emptyFiles_;
    std::vector<Level> stack_;
};

} // namespace

Result<std::shared_ptr<FileWrapper>> FileWrapper::readingURL(const URL& url) {
    return TreeReader().read(url.path());
}

Result<> FileWrapper::writeChildren(int directory, std::string_view directoryPath,
                                    std::span<EmptyFile> emptyFiles) const {
    return TreeWriter(emptyFiles).writeChildren(*this, directory, std::string(directoryPath));
}

Result<> FileWrapper::writeToDirectory(int directory, std::string_view name, std::string_view directoryPath) const {
    const std::string entry(name);
    const std::string path = joinedPath(directoryPath, name);
    const FileDescriptor own = TRY(createEntry(directory, entry, *this, path));
    Result<> written = isDirectory_ ? writeChildren(own.get(), path) : writeAll(own.get(), contents_.bytes(), path);
    if (written) {
        applyAttributes(own.get(), attributes_);
    } else {
        (void)removeTree(directory, entry, directoryPath); // the error to report is the first one
    }
    return written;
}

Result<> FileWrapper::writeToURL(const URL& url) const {
    const std::string path = url.path();
    const std::size_t slash = path.rfind('/');
    const std::string parent = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const FileDescriptor directory = openAt(AT_FDCWD, parent.c_str(), O_PATH | O_DIRECTORY);
    if (!directory) return failure(errorFromErrno(errno, FileAccess::writing, path));
    return writeToDirectory(directory.get(), std::string_view(path).substr(slash + 1), parent);
}

} // namespace platform
