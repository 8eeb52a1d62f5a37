// The small readers that every export reaches: addresses, percent-encoding, base64, and compiled catalogues. The first
// byte chooses one.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/foundation/Base64.h"
#include "platform/foundation/MessageCatalogue.h"
#include "platform/foundation/Percent.h"
#include "platform/foundation/URL.h"

namespace {

using platform::URL;

void require(bool holds) {
    if (!holds) std::abort();
}

// What is resolved or taken apart and joined again stays an address.
void checkURL(std::string_view text) {
    const URL base = URL::fromString("http://user@example.org:80/a/b;c?d#e").value();
    if (const auto resolved = URL::fromString(text, base)) require(!resolved->scheme().empty());
    if (const auto url = URL::fromString(text)) {
        require(url->absoluteString() == text);
        url->queryItems();
        url->pathComponents();
        url->host();
        url->deletingLastPathComponent().appendingPathComponent(url->lastPathComponent());
        url->deletingPathExtension().appendingPathExtension(url->pathExtension());
    }
    if (!text.empty() && text.front() == '/') {
        const URL file = URL::fileURLWithPath(text);
        require(URL::fromString(file.absoluteString()) == file);
        require(URL::fileURLWithPath(file.path()).path() == file.path());
    }
    require(platform::percentDecodedBytes(platform::percentEncodedForURLPath(text)) == text);
    platform::removingPercentEncoding(text);
}

void checkBase64(std::string_view text) {
    require(platform::base64Decoded(platform::base64Encoded(text)) == text);
    const auto bytes = platform::base64Decoded(text);
    require(platform::base64Decoded(" " + std::string(text) + "\n") == bytes);
    if (bytes) require(platform::base64Decoded(platform::base64Encoded(*bytes)) == bytes);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    switch (data[0]) {
    case 'u':
        checkURL(bytes);
        break;
    case 'b':
        checkBase64(bytes);
        break;
    default:
        platform::MessageCatalogue::fromData(bytes);
    }
    return 0;
}
