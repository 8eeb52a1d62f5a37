// Serialized file wrappers: whatever can be read is written, and reading that again must give the same bytes.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/files/FileWrapper.h"

using platform::FileWrapper;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto wrapper = FileWrapper::fromSerializedRepresentation({reinterpret_cast<const char*>(data), size});
    if (!wrapper) return 0;
    const std::string first = (*wrapper)->serializedRepresentation();
    const auto again = FileWrapper::fromSerializedRepresentation(first);
    if (!again || (*again)->serializedRepresentation() != first) std::abort();
    return 0;
}
