// Throws bytes at the RTF reader: as a text, and as the text of a package with one file. What was read is written, and
// what was written must be readable and writable again.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/files/FileWrapper.h"
#include "platform/rtf/RTFReader.h"
#include "platform/rtf/RTFWriter.h"

using namespace platform;

namespace {

std::shared_ptr<FileWrapper> packageOf(std::string_view rtf) {
    auto package = FileWrapper::directory();
    package->setFileWrapper(std::string(kRTFDTextName), FileWrapper::regularFile(Data(std::string(rtf))));
    package->setFileWrapper("photo.png", FileWrapper::regularFile(Data(std::string("picture"))));
    return package;
}

void require(bool condition) {
    if (!condition) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    (void)attributedStringFromRTF(bytes, {.textListMarkers = false});
    const auto text = attributedStringFromRTFD(*packageOf(bytes));
    if (!text) return 0;
    const auto written = rtfdFileWrapperFromRange(*text, {0, text->length()});
    require(written.has_value());
    const auto again = attributedStringFromRTFD(**written);
    require(again.has_value());
    require(rtfdFileWrapperFromRange(*again, {0, again->length()}).has_value());
    return 0;
}
