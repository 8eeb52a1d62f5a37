#include "platform/xml/InputStream.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

class FileStream final : public InputStream {
  public:
    FileStream(int descriptor, std::uint64_t size, std::string path, std::size_t pieceSize)
        : descriptor_(descriptor), size_(size), path_(std::move(path)), piece_(pieceSize, '\0') {}
    ~FileStream() override { ::close(descriptor_); }
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    Result<std::string_view> read() override {
        ssize_t count = 0;
        do {
            count = ::read(descriptor_, piece_.data(), piece_.size());
        } while (count < 0 && errno == EINTR);
        if (count < 0) return failure(errorFromErrno(errno, FileAccess::reading, path_));
        return std::string_view(piece_).substr(0, static_cast<std::size_t>(count));
    }
    std::uint64_t size() const override { return size_; }
    std::string_view name() const override { return path_; }

  private:
    int descriptor_;
    std::uint64_t size_;
    std::string path_;
    std::string piece_;
};

class MemoryStream final : public InputStream {
  public:
    MemoryStream(std::string_view bytes, std::size_t pieceSize)
        : rest_(bytes), size_(bytes.size()), pieceSize_(pieceSize) {}

    Result<std::string_view> read() override {
        const auto piece = rest_.substr(0, pieceSize_);
        rest_.remove_prefix(piece.size());
        return piece;
    }
    std::uint64_t size() const override { return size_; }
    std::string_view name() const override { return {}; }

  private:
    std::string_view rest_;
    std::uint64_t size_;
    std::size_t pieceSize_;
};

} // namespace

Result<std::unique_ptr<InputStream>> InputStream::inputStreamWithURL(const URL& fileURL, std::size_t pieceSize) {
    std::string path = fileURL.path();
    // O_NONBLOCK: opening a FIFO must not wait for a writer.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return failure(errorFromErrno(errno, FileAccess::reading, path));
    struct stat status{};
    const int problem = ::fstat(descriptor, &status) != 0 ? errno
                        : S_ISDIR(status.st_mode)         ? EISDIR
                        : !S_ISREG(status.st_mode)        ? EINVAL
                                                          : 0;
    if (problem != 0) {
        ::close(descriptor);
        return failure(errorFromErrno(problem, FileAccess::reading, path));
    }
    return std::make_unique<FileStream>(descriptor, static_cast<std::uint64_t>(status.st_size), std::move(path),
                                        pieceSize);
}

std::unique_ptr<InputStream> InputStream::inputStreamWithBytes(std::string_view bytes, std::size_t pieceSize) {
    return std::make_unique<MemoryStream>(bytes, pieceSize);
}

} // namespace platform
