#include "platform/foundation/Percent.h"

#include <array>

#include "platform/base/UTF16.h"

namespace platform {

namespace {

constexpr std::array<bool, 256> kURLPathAllowed = [] {
    std::array<bool, 256> allowed{};
    for (const char c : std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                         "-._~!$&'()*+,:=@/"))
        allowed[static_cast<unsigned char>(c)] = true;
    return allowed;
}();

// The digit's value, or -1.
constexpr int hexadecimalValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    return -1;
}

} // namespace

bool isPercentSequence(std::string_view text, std::size_t position) {
    return position + 2 < text.size() && text[position] == '%' && hexadecimalValue(text[position + 1]) >= 0 &&
           hexadecimalValue(text[position + 2]) >= 0;
}

void appendPercentEncoded(std::string& out, char byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    out += '%';
    out += kDigits[static_cast<unsigned char>(byte) >> 4];
    out += kDigits[static_cast<unsigned char>(byte) & 15];
}

std::string percentEncodedForURLPath(std::string_view utf8) {
    std::string encoded;
    encoded.reserve(utf8.size());
    for (const char byte : utf8) {
        if (kURLPathAllowed[static_cast<unsigned char>(byte)])
            encoded += byte;
        else
            appendPercentEncoded(encoded, byte);
    }
    return encoded;
}

std::string percentDecodedBytes(std::string_view encoded) {
    std::string bytes;
    bytes.reserve(encoded.size());
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        if (isPercentSequence(encoded, i)) {
            bytes += static_cast<char>(hexadecimalValue(encoded[i + 1]) * 16 + hexadecimalValue(encoded[i + 2]));
            i += 2;
        } else {
            bytes += encoded[i];
        }
    }
    return bytes;
}

std::optional<std::string> removingPercentEncoding(std::string_view encoded) {
    for (std::size_t i = encoded.find('%'); i != std::string_view::npos; i = encoded.find('%', i + 1))
        if (!isPercentSequence(encoded, i)) return std::nullopt;
    std::string bytes = percentDecodedBytes(encoded);
    if (!isValidUTF8(bytes)) return std::nullopt;
    return bytes;
}

} // namespace platform
