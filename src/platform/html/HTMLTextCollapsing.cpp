// Words with single blanks between them, which is nearly all of a page's text, are passed sixteen bytes at a time: what
// needs a closer look is found in all of them at once, and what stands before it is widened in one go.
#include "platform/html/HTMLTextCollapsing.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/base/UTF16.h"

namespace platform {

namespace {

constexpr std::size_t kBlock = 16; // one vector of any processor
using Block [[gnu::vector_size(kBlock)]] = std::int8_t;

constexpr bool isCollapsing(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f';
}

// The bytes at a position; behind the text's end, zeros.
Block blockAt(std::string_view text, std::size_t at) {
    if (at + kBlock <= text.size()) {
        Block whole;
        std::memcpy(&whole, text.data() + at, kBlock);
        return whole;
    }
    Block rest{};
    std::memcpy(&rest, text.data() + at, text.size() - at);
    return rest;
}

// How many of the first bytes are printable ASCII without a second blank in a row.
std::size_t plainLength(Block block) {
    const Block isBlank = block == ' ';
    const Block none{};
    // Each byte's answer in the place of the one behind it.
    const Block followsBlank =
        __builtin_shufflevector(none, isBlank, 0, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30);
    const Block stops = (block < ' ') | (isBlank & followsBlank); // bytes beyond ASCII are negative
    const auto halves = std::bit_cast<std::array<std::uint64_t, 2>>(stops);
    const auto before = [](std::uint64_t found) { // all bits of a byte are set where it stops
        return static_cast<std::size_t>(std::endian::native == std::endian::little ? std::countr_zero(found)
                                                                                   : std::countl_zero(found)) /
               8;
    };
    return halves[0] != 0 ? before(halves[0]) : kBlock / 2 + before(halves[1]); // of no bits: all eight bytes
}

void widenBlock(Block block, char16_t* out) {
    using Bytes [[gnu::vector_size(kBlock)]] = std::uint8_t;
    using Units [[gnu::vector_size(2 * kBlock)]] = std::uint16_t;
    const auto units = __builtin_convertvector(std::bit_cast<Bytes>(block), Units);
    std::memcpy(out, &units, sizeof units);
}

} // namespace

std::size_t writeCollapsed(std::string_view utf8, bool dropsLeading, char16_t* const out) {
    constexpr char32_t kZeroWidthSpace = 0x200B;
    std::size_t at = 0, written = 0;
    bool behindBlank = dropsLeading; // white space adds nothing
    const auto blank = [&] {
        if (!behindBlank) out[written++] = u' ';
        behindBlank = true;
    };
    while (at < utf8.size()) {
        if (isCollapsing(utf8[at])) {
            do ++at;
            while (at < utf8.size() && isCollapsing(utf8[at]));
            blank();
        } else if (static_cast<unsigned char>(utf8[at]) < 0x80) {
            const Block block = blockAt(utf8, at);
            widenBlock(block, out + written); // all of it: the next ones overwrite what is too much
            const std::size_t plain = std::max<std::size_t>(plainLength(block), 1); // a control character is itself
            at += plain;
            written += plain;
            behindBlank = out[written - 1] == u' ';
        } else if (const char32_t point = takeCodePoint(utf8, at); point == kZeroWidthSpace) {
            blank();
        } else {
            written = static_cast<std::size_t>(putCodePoint(out + written, point) - out);
            behindBlank = false;
        }
    }
    return written;
}

} // namespace platform
