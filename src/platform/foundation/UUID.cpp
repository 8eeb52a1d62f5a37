#include "platform/foundation/UUID.h"

#include "platform/foundation/Environment.h"

namespace platform {

UUID UUID::random() {
    return Environment::current().newUUID();
}

std::string UUID::string() const {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

} // namespace platform
