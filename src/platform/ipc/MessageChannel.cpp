#include "platform/ipc/MessageChannel.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

#include <poll.h>
#include <sys/socket.h>

#include "platform/ipc/MessageCoding.h"

namespace platform {

namespace {

using Length = std::uint32_t; // in this machine's byte order: both ends run on it

Error channelError(int errorNumber) {
    return Error::withDescription(kPOSIXErrorDomain, errorNumber,
                                  "message channel: " + std::string(::strerrordesc_np(errorNumber)));
}

} // namespace

Result<> MessageChannel::send(const Dictionary& message) {
    std::string bytes = TRY(encodedMessage(message));
    if (bytes.size() > maximumSize_) return failure(channelError(EMSGSIZE));
    const auto length = static_cast<Length>(bytes.size());
    std::array<char, sizeof length> head{};
    std::memcpy(head.data(), &length, sizeof length);
    bytes.insert(0, head.data(), head.size());

    const std::lock_guard lock(sending_);
    for (std::string_view rest = bytes; !rest.empty();) {
        const ssize_t sent = ::send(socket_.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) return failure(channelError(errno));
        if (sent > 0) rest.remove_prefix(static_cast<std::size_t>(sent));
    }
    return {};
}

Result<std::size_t> MessageChannel::readInto(char* bytes, std::size_t size,
                                             std::optional<std::chrono::milliseconds> patience) {
    std::size_t done = 0;
    while (done < size) {
        pollfd readable{socket_.get(), POLLIN, 0};
        const int ready = ::poll(&readable, 1, patience ? static_cast<int>(patience->count()) : -1);
        if (ready == 0) return failure(channelError(ETIMEDOUT));
        const ssize_t count = ready < 0 ? -1 : ::recv(socket_.get(), bytes + done, size - done, 0);
        if (count < 0 && errno != EINTR) return failure(channelError(errno));
        if (count == 0) break;
        if (count > 0) done += static_cast<std::size_t>(count);
    }
    return done;
}

Result<std::optional<Dictionary>> MessageChannel::receive(std::optional<std::chrono::milliseconds> patience) {
    std::array<char, sizeof(Length)> head{};
    const std::size_t headSize = TRY(readInto(head.data(), head.size(), patience));
    if (headSize == 0) return std::nullopt;
    Length length = 0;
    std::memcpy(&length, head.data(), sizeof length);
    if (headSize < head.size()) return failure(channelError(ECONNRESET));
    if (length > maximumSize_) return failure(channelError(EMSGSIZE));
    std::string bytes(length, '\0');
    if (TRY(readInto(bytes.data(), bytes.size(), patience)) < bytes.size()) return failure(channelError(ECONNRESET));
    return TRY(decodedMessage(bytes));
}

} // namespace platform
