// Bytes of the bus library's message format, as a worker and a client of the bus send them: whatever can be read is
// written, and once it has been written, reading and writing it again changes nothing.
//
// The first byte says which: a worker's message, or the arguments of an import.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <glib.h>

#include "platform/ipc/MessageCoding.h"
#include "platform/ipc/VariantCoding.h"

using namespace platform;

namespace {

// What is nested too deeply to be written is left alone.
void checkMessage(std::string_view bytes) {
    const Result<Dictionary> message = decodedMessage(bytes);
    if (!message) return;
    const Result<std::string> once = encodedMessage(*message);
    if (!once) return;
    const Result<Dictionary> again = decodedMessage(*once);
    if (!again || encodedMessage(*again) != once) std::abort();
}

void checkArguments(std::string_view bytes) {
    constexpr const char* kSignature = "(sa{sv}s)";
    GBytes* copied = g_bytes_new(bytes.data(), bytes.size());
    const Variant arguments(g_variant_ref_sink(g_variant_new_from_bytes(G_VARIANT_TYPE(kSignature), copied, FALSE)));
    g_bytes_unref(copied);
    const Result<Array> values = valuesOf(arguments.get());
    if (!values) return;
    if (values->size() != 3) std::abort();
    const Result<Variant> once = variantTuple(*values, kSignature);
    if (!once) return;
    const Result<Array> again = valuesOf(once->get());
    if (!again) std::abort();
    const Result<Variant> twice = variantTuple(*again, kSignature);
    if (!twice || !g_variant_equal(once->get(), twice->get())) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    *data % 2 == 0 ? checkMessage(bytes) : checkArguments(bytes);
    return 0;
}
