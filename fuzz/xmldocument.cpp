// Note content and pages through each reading and both writers. What has been read strictly is written so that it
// reads the same again; a page that is taken for read has the tree that reading gives.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/base/SystemLog.h"
#include "platform/xml/HTMLDocument.h"
#include "platform/xml/XMLDocument.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using platform::HTMLDocument;
    using platform::XMLDocument;
    using platform::XMLDocumentParsing;
    platform::setSystemLogSink([](std::string_view) {});
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const auto parsing : {XMLDocumentParsing::strict, XMLDocumentParsing::tidyXML, XMLDocumentParsing::tidyHTML}) {
        const auto document = XMLDocument::initWithXMLString(text, parsing);
        if (!document || !document->rootElement()) continue;
        const std::string written = document->rootElement()->XMLString();
        const std::string page = document->prettyPrintedPage();
        if (page.empty()) std::abort();
        if (const auto tree = HTMLDocument::fromPrintedPage(*document, page)) {
            const auto parsed = HTMLDocument::parse(page);
            if (!parsed || !(*parsed == *tree)) std::abort();
        }
        if (parsing != XMLDocumentParsing::strict) continue;
        const auto again = XMLDocument::initWithXMLString(written, XMLDocumentParsing::strict);
        if (!again || again->rootElement()->XMLString() != written) std::abort();
    }
    return 0;
}
