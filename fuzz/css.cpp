// Style text: once as declarations, once as a sheet matched against a small page.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/html/CssStyleSheet.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    platform::cssDeclarations(text);
    static const auto page = platform::HTMLDocument::parse("<body id=a class='b c'><p><a href=x>y</a><ul><li>z");
    platform::CssStyleSheet sheet;
    sheet.append(text);
    platform::CssMatches matched;
    std::size_t comparisons = 0;
    for (platform::HTMLDocument::NodeIndex i = 0; i < page->size(); ++i)
        if (page->isElement(i)) sheet.match(*page, i, comparisons, matched);
    platform::legacyColor(text);
    return 0;
}
