// Note content and pages through each reading and both writers. What has been read strictly is written so that it
// reads the same again; a page that is taken for read has the tree that reading gives, and markup that is read without
// the parser the tree that the parser gives.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/SystemLog.h"
#include "platform/xml/HTMLDocument.h"
#include "platform/xml/HTMLTidy.h"
#include "platform/xml/PlainMarkup.h"
#include "platform/xml/XMLDocument.h"

namespace {

using platform::XMLTreeBuilder;

void compare(XMLTreeBuilder plain, const platform::XMLDocument& parsed, std::string_view root) {
    const platform::XMLDocument document = plain.documentWithRoot(root);
    if (document.XMLString() != parsed.XMLString()) std::abort();
}

void readPlainly(const std::string& text) {
    XMLTreeBuilder xml, page, parsedPage;
    if (platform::readPlainXML(text, xml)) {
        // A comment behind the root is not plain.
        const auto parsed =
            platform::XMLDocument::initWithXMLString(text + "<!-- -->", platform::XMLDocumentParsing::strict);
        if (!parsed) std::abort();
        compare(std::move(xml), *parsed, "");
    }
    if (platform::readPlainHTML(text, page)) {
        if (!platform::readHTML(text, platform::ImpliedTags::added, parsedPage)) std::abort();
        compare(std::move(page), parsedPage.documentWithRoot("html"), "html");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using platform::HTMLDocument;
    using platform::XMLDocument;
    using platform::XMLDocumentParsing;
    platform::setSystemLogSink([](std::string_view) {});
    const std::string text(reinterpret_cast<const char*>(data), size);
    readPlainly(text);
    for (const auto parsing : {XMLDocumentParsing::strict, XMLDocumentParsing::tidyXML, XMLDocumentParsing::tidyHTML}) {
        const auto document = XMLDocument::initWithXMLString(text, parsing);
        if (!document || !document->rootElement()) continue;
        const std::string written = document->rootElement()->XMLString();
        const std::string page = document->prettyPrintedPage();
        if (page.empty()) std::abort();
        if (const auto tree = HTMLDocument::fromPrintedPage(*document)) {
            const auto parsed = HTMLDocument::parse(page);
            if (!parsed || !(*parsed == *tree)) std::abort();
        }
        if (parsing != XMLDocumentParsing::strict) continue;
        const auto again = XMLDocument::initWithXMLString(written, XMLDocumentParsing::strict);
        if (!again || again->rootElement()->XMLString() != written) std::abort();
    }
    return 0;
}
