// The decoder takes four characters at once: each of the four places has a table that holds the character's six bits
// already shifted to their place in the group, so a group costs four loads and three ORs. A character outside the
// alphabet sets a mark in the low byte, which sends that group through the slow path, one character at a time, until
// the characters kept are a whole group again.
#include "platform/foundation/Base64.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace platform {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t kOutside = 1; // in the low byte, which no group reaches

using Table = std::array<std::uint32_t, 256>;

// A group's 24 bits stand in the upper three bytes of the word.
constexpr std::array<Table, 4> kDecoding = [] {
    std::array<Table, 4> tables{};
    for (std::size_t place = 0; place < 4; ++place) {
        tables[place].fill(kOutside);
        for (std::uint32_t value = 0; value < 64; ++value)
            tables[place][static_cast<unsigned char>(kAlphabet[value])] = value << (26 - 6 * place);
    }
    return tables;
}();

// Two characters for each 12 bits.
constexpr std::array<std::array<char, 2>, 4096> kEncoding = [] {
    std::array<std::array<char, 2>, 4096> table{};
    for (std::size_t bits = 0; bits < table.size(); ++bits) table[bits] = {kAlphabet[bits >> 6], kAlphabet[bits & 63]};
    return table;
}();

std::uint32_t decoded(std::size_t place, char character) {
    return kDecoding[place][static_cast<unsigned char>(character)];
}

class Decoder {
  public:
    // `out` has room for three bytes a group of the text and one byte more.
    Decoder(std::string_view text, char* out) : text_(text), begin_(out), out_(out) {}

    // The number of bytes, or nothing for a malformed text.
    std::optional<std::size_t> run() {
        while (position_ < text_.size()) {
            if (kept_ == 0 && padding_ == 0) takeWholeGroups();
            if (position_ == text_.size()) break;
            if (!takeOne(text_[position_])) return std::nullopt;
            ++position_;
        }
        if ((kept_ + padding_) % 4 != 0) return std::nullopt;
        if (kept_ > 0) {
            store(group_);
            out_ -= padding_;
        }
        return static_cast<std::size_t>(out_ - begin_);
    }

  private:
    void takeWholeGroups() {
        const char* in = text_.data() + position_;
        const char* const end = text_.data() + text_.size();
        char* out = out_;
        for (; end - in >= 4; in += 4, out += 3) {
            const std::uint32_t group = decoded(0, in[0]) | decoded(1, in[1]) | decoded(2, in[2]) | decoded(3, in[3]);
            if (group & kOutside) break;
            write(out, group);
        }
        out_ = out;
        position_ = static_cast<std::size_t>(in - text_.data());
    }

    // False when the text turns out to be malformed.
    bool takeOne(char character) {
        if (character == '=') return ++padding_ <= 2 && kept_ >= 2;
        const std::uint32_t bits = decoded(kept_, character);
        if (bits == kOutside) return true;
        if (padding_ > 0) return false;
        group_ |= bits;
        if (++kept_ == 4) {
            store(group_);
            group_ = 0;
            kept_ = 0;
        }
        return true;
    }

    // Writes a fourth byte of no meaning, which the next group overwrites.
    static void write(char* out, std::uint32_t group) {
        const std::uint32_t word = std::endian::native == std::endian::little ? std::byteswap(group) : group;
        std::memcpy(out, &word, sizeof word);
    }

    void store(std::uint32_t group) {
        write(out_, group);
        out_ += 3;
    }

    std::string_view text_;
    std::size_t position_ = 0;
    char* begin_;
    char* out_;
    std::uint32_t group_ = 0; // the characters kept of an unfinished group
    std::size_t kept_ = 0;
    std::size_t padding_ = 0;
};

void encode(char* out, std::string_view bytes) {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    std::size_t left = bytes.size();
    for (; left >= 3; left -= 3, in += 3, out += 4) {
        const unsigned group = static_cast<unsigned>(in[0]) << 16 | static_cast<unsigned>(in[1]) << 8 | in[2];
        std::memcpy(out, kEncoding[group >> 12].data(), 2);
        std::memcpy(out + 2, kEncoding[group & 0xFFF].data(), 2);
    }
    if (left == 0) return;
    const unsigned group = static_cast<unsigned>(in[0]) << 16 | (left == 2 ? static_cast<unsigned>(in[1]) << 8 : 0u);
    std::memcpy(out, kEncoding[group >> 12].data(), 2);
    out[2] = left == 2 ? kEncoding[group & 0xFFF][0] : '=';
    out[3] = '=';
}

} // namespace

std::optional<std::string> base64Decoded(std::string_view text) {
    std::string bytes;
    bool isGood = true;
    bytes.resize_and_overwrite(text.size() / 4 * 3 + 4, [&](char* out, std::size_t) {
        const std::optional<std::size_t> size = Decoder(text, out).run();
        isGood = size.has_value();
        return size.value_or(0);
    });
    if (!isGood) return std::nullopt;
    return bytes;
}

std::string base64Encoded(std::string_view bytes) {
    std::string text;
    appendBase64(text, bytes);
    return text;
}

void appendBase64(std::string& text, std::string_view bytes) {
    const std::size_t before = text.size();
    const std::size_t after = before + base64EncodedSize(bytes.size());
    text.resize_and_overwrite(after, [&](char* out, std::size_t) {
        encode(out + before, bytes);
        return after; // not the lambda's argument: libstdc++ 12 passes the capacity when the string grew
    });
}

} // namespace platform
