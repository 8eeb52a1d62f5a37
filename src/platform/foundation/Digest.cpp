#include "platform/foundation/Digest.h"

#include <stdexcept>

#include <openssl/evp.h>

namespace platform {

MD5Digest md5Checksum(std::string_view bytes) {
    MD5Digest digest;
    unsigned size = 0;
    // A library that was built or configured without MD5 is a broken installation, not an input that can be refused.
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_md5(), nullptr) != 1)
        throw std::runtime_error("MD5 is not available");
    return digest;
}

std::string hexadecimalString(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

} // namespace platform
