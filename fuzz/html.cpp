// The HTML reader: whatever the bytes, it must give a text; the writer must make a page of that text, and reading the
// page back must give a text again.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/base/SystemLog.h"
#include "platform/html/HTMLReader.h"
#include "platform/html/HTMLWriter.h"
#include "platform/text/TextDump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    platform::setSystemLogSink([](std::string_view) {});
    const auto read =
        platform::attributedStringFromHTMLData(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!read) return 0;
    platform::textDump(read->text);
    const auto page = platform::htmlDataFromAttributedString(read->text);
    if (!page || !platform::attributedStringFromHTMLData(*page)) __builtin_trap();
    return 0;
}
