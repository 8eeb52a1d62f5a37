// Property lists from outside: the preferences, note attributes and web links that a user can put in our way. What
// reads must be writable, read back the same, and give the same bytes again.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/plist/PropertyList.h"

namespace {

using platform::Result;
using platform::Value;

// Bytes instead of values: a real that is no number never equals itself.
void checkRoundTrip(const Value& value, Result<std::string> (*write)(const Value&)) {
    const Result<std::string> bytes = write(value);
    if (!bytes) return;
    const Result<Value> again = platform::propertyListFromData(*bytes);
    if (!again || write(*again) != bytes) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const Result<Value> value = platform::propertyListFromData(bytes);
    if (!value) return 0;
    if (!platform::binaryDataFromPropertyList(*value)) std::abort();
    checkRoundTrip(*value, platform::binaryDataFromPropertyList);
    checkRoundTrip(*value, platform::xmlDataFromPropertyList);
    return 0;
}
