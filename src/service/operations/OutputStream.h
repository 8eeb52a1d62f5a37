// Counterpart of NSOutputStream, as far as a log needs it: appends to one file, a line a call.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace quillet {

// Callable from any thread: an import that is taken over has its stream closed by another.
class OutputStream {
  public:
    // A stream on the file at the path in append mode, not yet open. @sel initWithURL:append:
    explicit OutputStream(std::string path) : path_(std::move(path)) {}
    // A stream whose bytes are somebody else's to store, a call a line; always open.
    using Sink = std::function<std::ptrdiff_t(std::string_view bytes)>;
    explicit OutputStream(Sink sink) : sink_(std::move(sink)) {}
    ~OutputStream() { close(); }
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    // Makes the file when it is missing. A symbolic link, a FIFO or anything else that is no regular file is not
    // opened. On failure the stream stays closed, and every write then fails.
    void open();
    void close();
    bool isOpen() const {
        const std::lock_guard lock(mutex_);
        return sink_ || descriptor_ >= 0;
    }

    // One write call; the number of bytes that it took, negative on failure. A partial write is not continued.
    std::ptrdiff_t write(std::string_view bytes);

  private:
    void closeDescriptor();

    std::string path_;
    Sink sink_;
    mutable std::mutex mutex_;
    int descriptor_ = -1; // guarded by mutex_
};

// Sends the text (UTF-8) to the system log, then appends "<date> <text>\n" to the stream, the date as in
// 2024-05-01 09:15:02 +0000. Returns what the stream's write returned. @sel writeLogLine:
std::ptrdiff_t writeLogLine(OutputStream& stream, std::string_view text);

} // namespace quillet
