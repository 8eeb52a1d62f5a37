// Counterpart of NSFileWrapper: a file or a directory of files as an object, before it is written or after it was read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Date.h"
#include "platform/base/Result.h"

namespace platform {

class URL;
struct EmptyFile;

// The file attributes that travel with a wrapper.
struct FileAttributes {
    std::optional<Date> modificationDate;
    std::uint32_t posixPermissions = 0644;
    bool extensionHidden = false;
    friend bool operator==(const FileAttributes&, const FileAttributes&) = default;
};

class FileWrapper {
  public:
    using Children = std::vector<std::pair<std::string, std::shared_ptr<FileWrapper>>>; // key → child, insertion order

    static std::shared_ptr<FileWrapper> regularFile(Data contents);
    static std::shared_ptr<FileWrapper> directory(Children children = {});
    // Reads the whole file or directory at once, children sorted by name. Symbolic links, devices and fifos inside are
    // errors; depth is bounded (64) and the walk is not recursive. Regular files are read into memory, 4 GiB at most.
    static Result<std::shared_ptr<FileWrapper>> readingURL(const URL& url);
    // From the serialized form below; error 4864 names the place.
    static Result<std::shared_ptr<FileWrapper>> fromSerializedRepresentation(std::string_view bytes);

    bool isDirectory() const { return isDirectory_; }
    const Data& regularFileContents() const { return contents_; }
    const Children& fileWrappers() const { return children_; }
    std::shared_ptr<FileWrapper> childNamed(std::string_view key) const; // null when none

    const std::string& preferredFilename() const { return preferredFilename_; } // "" when none; UTF-8
    void setPreferredFilename(std::string name) { preferredFilename_ = std::move(name); }
    const std::string& filename() const { return filename_; } // the name on disk, "" when never read or written
    void setFilename(std::string name) { filename_ = std::move(name); }
    const FileAttributes& fileAttributes() const { return attributes_; }
    void setFileAttributes(FileAttributes attributes) { attributes_ = std::move(attributes); }

    // Adds a child under its preferred name, or, when that key is taken, under "1__#$!@%!#__name", "2__…" and so on.
    // Returns the key.
    std::string addFileWrapper(std::shared_ptr<FileWrapper> child);
    // Puts a child under exactly this key, replacing a child of that key, and makes the key its preferred name.
    void setFileWrapper(std::string key, std::shared_ptr<FileWrapper> child);
    void removeFileWrapper(std::string_view key);

    // The platform's serialized form ("rtfd" container, 32-bit little-endian numbers). Empty for a tree of 4 GiB and
    // more, which the form cannot count.
    std::string serializedRepresentation() const;

    // Writes the file or directory as a new entry; fails when the name exists. On failure what was written is
    // removed again. Child keys that are not one path component are an error (514).
    Result<> writeToURL(const URL& url) const;
    // The same, under a name in an open directory; `directoryPath` is for errors.
    Result<> writeToDirectory(int directory, std::string_view name, std::string_view directoryPath) const;
    // A directory wrapper's children into an open directory that is empty but for the empty files, which become the
    // children of their names. On failure what was written stays.
    Result<> writeChildren(int directory, std::string_view directoryPath, std::span<EmptyFile> emptyFiles = {}) const;

  private:
    struct KeyHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };
    template<class T>
    using KeyMap = std::unordered_map<std::string, T, KeyHash, std::equal_to<>>;

    std::string freeKeyFor(const std::string& name);

    bool isDirectory_ = false;
    Data contents_;
    Children children_;
    KeyMap<std::size_t> positions_;   // key → index in children_
    KeyMap<std::size_t> lastNumbers_; // name → highest number given to a further child of that name
    std::string preferredFilename_;
    std::string filename_;
    FileAttributes attributes_;
};

} // namespace platform
