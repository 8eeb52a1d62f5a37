#include "service/operations/OutputStream.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/base/SystemLog.h"
#include "platform/foundation/Environment.h"

namespace quillet {

void OutputStream::open() {
    const std::lock_guard lock(mutex_);
    if (descriptor_ >= 0) return;
    // O_NONBLOCK: a FIFO planted under the name must not make the open wait for a reader.
    constexpr int kFlags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    constexpr mode_t kMode = 0666; // what the umask leaves
    descriptor_ = ::open(path_.c_str(), kFlags, kMode);
    struct stat status{};
    if (descriptor_ >= 0 && (::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode))) closeDescriptor();
}

void OutputStream::close() {
    const std::lock_guard lock(mutex_);
    closeDescriptor();
}

void OutputStream::closeDescriptor() {
    if (descriptor_ < 0) return;
    ::close(descriptor_);
    descriptor_ = -1;
}

std::ptrdiff_t OutputStream::write(std::string_view bytes) {
    if (sink_) return sink_(bytes);
    const std::lock_guard lock(mutex_);
    return descriptor_ >= 0 ? ::write(descriptor_, bytes.data(), bytes.size()) : -1;
}

std::ptrdiff_t writeLogLine(OutputStream& stream, std::string_view text) {
    platform::systemLog(text);
    return stream.write(fmt::format("{} {}\n", platform::Environment::current().now().description(), text));
}

} // namespace quillet
