// Counterpart of NSFileWrapper: a file or a directory of files as an object, before it is written or after it was read.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Data.h"
#include "platform/base/Date.h"
#include "platform/base/Result.h"

namespace platform {

class URL;

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
    // Reads the whole file or directory at once. Symbolic links, devices and fifos inside are errors; depth is bounded
    // (64) and the walk is not recursive. Regular files are read into memory.
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

    // The platform's serialized form ("rtfd" container, 32-bit little-endian numbers).
    std::string serializedRepresentation() const;

    // Writes the file or directory as a new entry; fails when the name exists. On failure what was written is
    // removed again. Child keys that are not one path component are an error (514).
    Result<> writeToURL(const URL& url) const;

  private:
    bool isDirectory_ = false;
    Data contents_;
    Children children_;
    std::string preferredFilename_;
    std::string filename_;
    FileAttributes attributes_;
};

} // namespace platform
