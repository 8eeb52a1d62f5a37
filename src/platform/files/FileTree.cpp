// One directory is open at a time. Each scan removes what can be removed at once and stops at the first directory that
// is not empty, into which the walk descends; when that one is empty too, the walk climbs back by "..", checks that
// it arrived where it came from, and scans again. Since a scan leaves nothing behind before its stopping point, the
// repeated scans cost no more than one.
#include "platform/files/FileTree.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/FileDescriptor.h"

namespace platform {

namespace {

constexpr int kOpenDirectory = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK;

// Reads a directory from its start, through a descriptor of its own, so that several may read one after the other.
class DirectoryStream {
  public:
    explicit DirectoryStream(int directory) {
        FileDescriptor own = openAt(directory, ".", kOpenDirectory);
        if (own) stream_ = ::fdopendir(own.get());
        if (stream_) own.release();
    }
    ~DirectoryStream() {
        if (stream_) ::closedir(stream_);
    }
    DirectoryStream(const DirectoryStream&) = delete;
    DirectoryStream& operator=(const DirectoryStream&) = delete;

    explicit operator bool() const { return stream_ != nullptr; }
    // Null at the end, with errno 0, or on failure.
    const dirent* next() {
        const dirent* entry;
        do {
            errno = 0;
            entry = ::readdir(stream_);
        } while (entry && (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0));
        return entry;
    }

  private:
    DIR* stream_ = nullptr;
};

struct Identity {
    dev_t device = 0;
    ino_t inode = 0;
    friend bool operator==(const Identity&, const Identity&) = default;
};

struct Level {
    Identity parent;
    std::string name;
};

enum class Removal { done, directoryWithContents, failed };

Removal removeEntry(int directory, const char* name, bool isDirectory) {
    if (!isDirectory) {
        if (::unlinkat(directory, name, 0) == 0 || errno == ENOENT) return Removal::done;
        if (errno != EISDIR && errno != EPERM) return Removal::failed;
        const int reason = errno;
        struct stat status{};
        if (::fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISDIR(status.st_mode)) {
            errno = reason;
            return Removal::failed;
        }
    }
    if (::unlinkat(directory, name, AT_REMOVEDIR) == 0 || errno == ENOENT) return Removal::done;
    return errno == ENOTEMPTY || errno == EEXIST ? Removal::directoryWithContents : Removal::failed;
}

class TreeRemoval {
  public:
    TreeRemoval(int directory, std::string_view directoryPath) : top_(directory), path_(directoryPath) {}

    Result<> remove(const std::string& name) {
        switch (removeEntry(top_, name.c_str(), false)) {
        case Removal::done:
            return {};
        case Removal::failed:
            return fail(name);
        case Removal::directoryWithContents:
            break;
        }
        TRY(descend(top_, name));
        while (!levels_.empty()) {
            std::string inner;
            TRY(scan(inner));
            if (inner.empty()) {
                TRY(climb());
            } else {
                TRY(descend(current_.get(), inner));
            }
        }
        return {};
    }

  private:
    Result<> fail(std::string_view name) const {
        const int reason = errno;
        std::string path = path_;
        for (const Level& level : levels_) path = joinedPath(path, level.name);
        if (!name.empty()) path = joinedPath(path, name);
        return failure(errorFromErrno(reason, FileAccess::writing, path));
    }

    Result<> descend(int parent, const std::string& name) {
        struct stat status{};
        if (::fstatat(parent, "", &status, AT_EMPTY_PATH) != 0) return fail(name);
        FileDescriptor inner = openAt(parent, name.c_str(), kOpenDirectory);
        if (!inner) return fail(name);
        levels_.push_back({{status.st_dev, status.st_ino}, name});
        current_ = std::move(inner);
        return {};
    }

    // Empties the current directory as far as that goes; `inner` is the subdirectory that stopped it, or "".
    Result<> scan(std::string& inner) {
        DirectoryStream stream(current_.get());
        if (!stream) return fail({});
        while (const dirent* entry = stream.next()) {
            switch (removeEntry(current_.get(), entry->d_name, entry->d_type == DT_DIR)) {
            case Removal::done:
                continue;
            case Removal::directoryWithContents:
                inner = entry->d_name;
                return {};
            case Removal::failed:
                return fail(entry->d_name);
            }
        }
        return {};
    }

    // Leaves the emptied directory and removes it. The step up is checked: a directory that was moved away while it
    // was being emptied would lead elsewhere.
    Result<> climb() {
        const Level level = levels_.back();
        if (levels_.size() == 1) {
            current_.reset();
        } else {
            FileDescriptor parent = openAt(current_.get(), "..", kOpenDirectory);
            struct stat status{};
            if (!parent || ::fstat(parent.get(), &status) != 0) return fail({});
            if (Identity{status.st_dev, status.st_ino} != level.parent) {
                errno = ENOTDIR;
                return fail({});
            }
            current_ = std::move(parent);
        }
        const int parent = current_ ? current_.get() : top_;
        if (::unlinkat(parent, level.name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) return fail({});
        levels_.pop_back();
        return {};
    }

    int top_;
    std::string path_;
    FileDescriptor current_;
    std::vector<Level> levels_;
};

} // namespace

Result<std::vector<std::string>> entryNames(int directory, std::string_view path) {
    std::vector<std::string> names;
    DirectoryStream stream(directory);
    if (!stream) return failure(errorFromErrno(errno, FileAccess::reading, path));
    while (const dirent* entry = stream.next()) names.emplace_back(entry->d_name);
    if (errno != 0) return failure(errorFromErrno(errno, FileAccess::reading, path));
    return names;
}

Result<> removeTree(int directory, std::string_view name, std::string_view directoryPath) {
    if (!isPathComponent(name))
        return failure(errorFromErrno(EINVAL, FileAccess::writing, joinedPath(directoryPath, name)));
    return TreeRemoval(directory, directoryPath).remove(std::string(name));
}

} // namespace platform
