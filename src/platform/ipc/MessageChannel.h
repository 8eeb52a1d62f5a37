// Dictionaries between two processes of ours, over a stream socket: each a length of four bytes and an encoded message.
#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>

#include "platform/base/Result.h"
#include "platform/ipc/Descriptor.h"

namespace platform {

class MessageChannel {
  public:
    static constexpr std::size_t kMaximumSize = std::size_t{64} << 20;

    // The longest message, in bytes, that is sent or taken in; a longer one is an error (EMSGSIZE), not an allocation.
    explicit MessageChannel(Descriptor socket, std::size_t maximumSize = kMaximumSize)
        : socket_(std::move(socket)), maximumSize_(maximumSize) {}

    // Callable from any thread; messages do not mix. An error when the other side is gone, or when the message is too
    // long: then nothing of it has been sent.
    Result<> send(const Dictionary& message);

    // Waits for the next message: from one thread at a time. Nothing when the other side has closed between messages;
    // an error for damaged ones, a stop in the middle of one (ECONNRESET), and when the other side sends no byte for so
    // long (ETIMEDOUT).
    Result<std::optional<Dictionary>> receive(std::optional<std::chrono::milliseconds> patience = std::nullopt);

  private:
    Result<std::size_t> readInto(char* bytes, std::size_t size, std::optional<std::chrono::milliseconds> patience);

    Descriptor socket_;
    std::size_t maximumSize_;
    std::mutex sending_;
};

} // namespace platform
