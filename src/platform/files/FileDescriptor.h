// A file descriptor with one owner, and whole reads and writes over it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/Result.h"

namespace platform {

class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }

    int get() const { return descriptor_; }
    explicit operator bool() const { return descriptor_ >= 0; }
    int release() { return std::exchange(descriptor_, -1); }
    void reset();

  private:
    int descriptor_ = -1;
};

// A file that has been made but not been filled yet.
struct EmptyFile {
    std::string name;
    FileDescriptor descriptor; // for writing
};

// openat with O_CLOEXEC, begun again when a signal interrupts it; -1 and errno on failure.
FileDescriptor openAt(int directory, const char* name, int flags, unsigned mode = 0);

// All bytes at the descriptor's position; `path` is for the error.
Result<> writeAll(int descriptor, std::string_view bytes, std::string_view path);

// From the descriptor's position to the end. More than `limit` bytes is EFBIG.
Result<std::string> readAll(int descriptor, std::size_t limit, std::string_view path);

// The whole content of the file at a path, which may be reached through links.
Result<std::string> contentsOfFile(const std::string& path, std::size_t limit = std::size_t{1} << 30);

// One path component that names an entry: not empty, ".", "..", nor with "/" or NUL inside.
bool isPathComponent(std::string_view name);

// "directory/name", for errors.
std::string joinedPath(std::string_view directory, std::string_view name);

} // namespace platform
