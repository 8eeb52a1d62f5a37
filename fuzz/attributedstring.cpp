// Archived rich text, as note files hold it: what can be read can be dumped and written, and the second writing gives
// the bytes of the first.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "platform/archive/KeyedArchiver.h"
#include "platform/archive/KeyedUnarchiver.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextCoding.h"
#include "platform/text/TextDump.h"

using namespace platform;

namespace {

std::shared_ptr<const AttributedString> read(std::string_view bytes) {
    UnarchiveOptions options;
    options.requiresSecureCoding = false;
    options.maximumObjects = 10'000;
    const auto object = unarchivedObject(bytes, options);
    return object ? object->as<AttributedString>() : nullptr;
}

Data written(const std::shared_ptr<const AttributedString>& text) {
    const auto archive = KeyedArchiver::archivedData(text, KeyedArchiver::Coding::plain);
    if (!archive) std::abort();
    return *archive;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    registerArchivableTextClasses();
    const auto text = read({reinterpret_cast<const char*>(data), size});
    if (!text) return 0;
    const Data archive = written(text);
    const auto again = read(archive.bytes());
    if (!again || again->string() != text->string()) std::abort();
    if (textDump(*again) != textDump(*text)) std::abort();
    if (!(written(again) == archive)) std::abort();
    return 0;
}
