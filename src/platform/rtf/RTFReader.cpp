#include "platform/rtf/RTFReader.h"

#include <utility>

#include <fmt/format.h>

#include "platform/files/FileWrapper.h"
#include "platform/rtf/RTFReading.h"
#include "platform/rtf/RTFWriter.h"

namespace platform {

Result<AttributedString> attributedStringFromRTF(std::string_view bytes, const RTFReadOptions& options,
                                                 Dictionary* documentAttributes) {
    RTFReading reading(bytes, nullptr, options);
    AttributedString text = TRY(reading.read());
    if (documentAttributes) *documentAttributes = std::move(reading.documentAttributes());
    return text;
}

Result<AttributedString> attributedStringFromRTFD(const FileWrapper& package, const RTFReadOptions& options,
                                                  Dictionary* documentAttributes) {
    const auto text = package.isDirectory() ? package.childNamed(kRTFDTextName) : nullptr;
    if (!text || text->isDirectory())
        return failure(Error::withDescription(kCocoaErrorDomain,
                                              static_cast<std::int64_t>(CocoaError::fileReadCorruptFile),
                                              fmt::format("The package has no {}.", kRTFDTextName)));
    RTFReading reading(text->regularFileContents().bytes(), &package, options);
    AttributedString read = TRY(reading.read());
    if (documentAttributes) *documentAttributes = std::move(reading.documentAttributes());
    return read;
}

} // namespace platform
