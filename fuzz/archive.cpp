// Keyed archives from anywhere: whatever can be read is written, and reading that again must give the same bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"

using namespace platform;

namespace {

Result<ArchivedObject> read(std::string_view bytes, std::size_t maximumObjects) {
    UnarchiveOptions options;
    options.requiresSecureCoding = false;
    options.maximumObjects = maximumObjects;
    return unarchivedObject(bytes, options);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    registerFoundationClasses();
    const auto object = read({reinterpret_cast<const char*>(data), size}, 10'000);
    if (!object) return 0;
    (void)propertyListFromObject(*object, 10'000);
    const auto first = KeyedArchiver::archivedData(*object, KeyedArchiver::Coding::secure);
    if (!first) return 0;
    const auto again = read(first->bytes(), 1'000'000); // a range is one object there and three here
    if (!again) std::abort();
    const auto second = KeyedArchiver::archivedData(*again, KeyedArchiver::Coding::secure);
    if (!second || second->bytes() != first->bytes()) std::abort();
    return 0;
}
