// Counterpart of NSInputStream: bytes in pieces, from a file or from memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/base/Result.h"
#include "platform/foundation/URL.h"

namespace platform {

class InputStream {
  public:
    virtual ~InputStream() = default;

    // The next piece, empty at the end. It is valid until the next call.
    virtual Result<std::string_view> read() = 0;
    // Size of the whole in bytes.
    virtual std::uint64_t size() const = 0;
    // For messages: the path of the file, "" for memory.
    virtual std::string_view name() const = 0;

    // The parser looks at unfinished constructs again with each piece, so that small pieces cost more than they save.
    static constexpr std::size_t kPieceSize = std::size_t{1} << 20;

    // The file, opened for reading. Only a regular file will do: a FIFO, a device or a directory is refused at once.
    // @sel inputStreamWithURL:
    static Result<std::unique_ptr<InputStream>> inputStreamWithURL(const URL& fileURL,
                                                                   std::size_t pieceSize = kPieceSize);
    // The bytes, which must outlive the stream.
    static std::unique_ptr<InputStream> inputStreamWithBytes(std::string_view bytes,
                                                             std::size_t pieceSize = kPieceSize);
};

} // namespace platform
