// Counterpart of NSData: a run of bytes, shared and never changed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace platform {

// Copying costs a reference count, whatever the size; the bytes live as long as the last copy.
class Data {
  public:
    Data() = default;
    explicit Data(std::string bytes) : bytes_(std::make_shared<const std::string>(std::move(bytes))) {}

    std::string_view bytes() const { return bytes_ ? std::string_view(*bytes_) : std::string_view(); }
    std::size_t size() const { return bytes_ ? bytes_->size() : 0; }
    bool empty() const { return size() == 0; }

    friend bool operator==(const Data& a, const Data& b) { return a.bytes_ == b.bytes_ || a.bytes() == b.bytes(); }

  private:
    std::shared_ptr<const std::string> bytes_;
};

} // namespace platform
