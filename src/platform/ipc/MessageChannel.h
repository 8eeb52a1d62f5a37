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
    // The longest message that is taken in; a longer one is an error, not an allocation.
    static constexpr std::size_t kMaximumSize = std::size_t{64} << 20;

    explicit MessageChannel(Descriptor socket) : socket_(std::move(socket)) {}

    // Callable from any thread; messages do not mix. An error when the other side is gone or the message is too long.
    Result<> send(const Dictionary& message);

    // Waits for the next message: from one thread at a time. Nothing when the other side has closed between messages;
    // an error for damaged ones, a stop in the middle of one (ECONNRESET), and when the other side sends no byte for so
    // long (ETIMEDOUT).
    Result<std::optional<Dictionary>> receive(std::optional<std::chrono::milliseconds> patience = std::nullopt);

  private:
    Result<std::size_t> readInto(char* bytes, std::size_t size, std::optional<std::chrono::milliseconds> patience);

    Descriptor socket_;
    std::mutex sending_;
};

} // namespace platform
