// The 32 bytes that hold a file's display flags: big-endian, 16 bits at offset 8.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

class FinderInfo {
  public:
    static constexpr std::uint16_t kExtensionHidden = 0x0010;
    static constexpr std::uint16_t kHasBundle = 0x2000; // a directory shown as one file

    // All zero when the file has none, or one of another size.
    static FinderInfo ofFile(int descriptor);

    bool flag(std::uint16_t mask) const { return (flags() & mask) != 0; }
    void setFlag(std::uint16_t mask, bool on);
    bool allZero() const;
    std::string_view bytes() const { return {bytes_.data(), bytes_.size()}; }

  private:
    static constexpr std::size_t kFlagsOffset = 8;

    std::uint16_t flags() const;

    std::array<char, 32> bytes_{};
};

} // namespace platform
