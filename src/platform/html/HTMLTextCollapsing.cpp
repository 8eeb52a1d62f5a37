// Words with single blanks between them, which is nearly all of a page's text, are passed eight bytes at a time: what
// needs a closer look is found by arithmetic on all eight at once, and what stands before it is widened in one go.
#include "platform/html/HTMLTextCollapsing.h"

#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/base/UTF16.h"

namespace platform {

namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);
constexpr std::uint64_t kOnes = 0x0101010101010101, kHighBits = 0x80 * kOnes;

constexpr bool isCollapsing(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f';
}

// The eight bytes, the first one lowest.
std::uint64_t wordAt(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, kWord);
    if constexpr (std::endian::native == std::endian::big) word = std::byteswap(word);
    return word;
}

// The eight bytes at a position; at the end of a text of so many bytes at least what is left, and zeros.
std::uint64_t wordAt(std::string_view text, std::size_t at) {
    if (at + kWord <= text.size()) return wordAt(text.data() + at);
    return wordAt(text.data() + text.size() - kWord) >> (8 * (at + kWord - text.size()));
}

// How many of the bytes are printable ASCII without a second blank in a row.
std::size_t plainLength(std::uint64_t word, bool behindBlank) {
    // A borrow reaches only bytes behind the first one that is found.
    const std::uint64_t isSpecial = ((word - ' ' * kOnes) | word) & kHighBits;
    const std::uint64_t noBlank = word ^ (' ' * kOnes);
    const std::uint64_t isBlank = (noBlank - kOnes) & ~noBlank & kHighBits;
    const std::uint64_t isSecondBlank = isBlank & ((isBlank << 8) | (behindBlank ? 0x80U : 0U));
    const std::uint64_t found = isSpecial | isSecondBlank;
    return found == 0 ? kWord : static_cast<std::size_t>(std::countr_zero(found)) / 8;
}

void widenWord(std::uint64_t bytes, char16_t* out) {
    using Bytes [[gnu::vector_size(kWord)]] = std::uint8_t;
    using Units [[gnu::vector_size(2 * kWord)]] = std::uint16_t;
    if constexpr (std::endian::native == std::endian::big) bytes = std::byteswap(bytes);
    const auto units = __builtin_convertvector(std::bit_cast<Bytes>(bytes), Units);
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
        for (bool goesOn = utf8.size() >= kWord; goesOn && at < utf8.size();) {
            const std::uint64_t word = wordAt(utf8, at);
            const std::size_t plain = plainLength(word, behindBlank); // the zeros are not plain
            widenWord(word, out + written); // all of it: the next ones overwrite what is too much
            at += plain;
            written += plain;
            if (plain > 0) behindBlank = out[written - 1] == u' ';
            goesOn = plain == kWord;
        }
        if (at == utf8.size()) break;
        const char c = utf8[at];
        if (isCollapsing(c)) {
            ++at;
            blank();
        } else if (static_cast<unsigned char>(c) < 0x80) {
            ++at;
            out[written++] = static_cast<char16_t>(c);
            behindBlank = false;
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
