#include "platform/files/FinderInfo.h"

#include <algorithm>

#include <sys/xattr.h>

#include "platform/files/ResourceAttributeNames.h"

namespace platform {

FinderInfo FinderInfo::ofFile(int descriptor) {
    FinderInfo info;
    const ssize_t size = ::fgetxattr(descriptor, kFinderInfoAttribute, info.bytes_.data(), info.bytes_.size());
    return size == static_cast<ssize_t>(info.bytes_.size()) ? info : FinderInfo();
}

std::uint16_t FinderInfo::flags() const {
    const auto high = static_cast<unsigned char>(bytes_[kFlagsOffset]);
    const auto low = static_cast<unsigned char>(bytes_[kFlagsOffset + 1]);
    return static_cast<std::uint16_t>(high << 8 | low);
}

void FinderInfo::setFlag(std::uint16_t mask, bool on) {
    const unsigned value = on ? flags() | mask : flags() & ~static_cast<unsigned>(mask);
    bytes_[kFlagsOffset] = static_cast<char>(value >> 8 & 0xFF);
    bytes_[kFlagsOffset + 1] = static_cast<char>(value & 0xFF);
}

bool FinderInfo::allZero() const {
    return std::ranges::all_of(bytes_, [](char byte) { return byte == 0; });
}

} // namespace platform
