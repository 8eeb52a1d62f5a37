// libxml2's HTML parser as a source of events. Its own tree builder cuts trees at a depth of 256 and texts at 10 MB;
// with a handler table of our own neither happens, and depth is limited where it can be reported.
#include "platform/xml/HTMLTidy.h"

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include <fmt/core.h>
#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include "platform/xml/HTMLReferences.h"

namespace platform {

namespace {

std::string_view view(const xmlChar* text) {
    return text ? std::string_view(reinterpret_cast<const char*>(text)) : std::string_view();
}

struct Reading {
    XMLTreeBuilder& builder;
    htmlParserCtxtPtr context = nullptr;
    std::vector<XMLAttributeView> attributes;
    bool tooDeep = false;

    static Reading& of(void* data) { return *static_cast<Reading*>(data); }

    void open(const xmlChar* name, const xmlChar** pairs) {
        attributes.clear();
        for (; pairs && pairs[0]; pairs += 2) attributes.push_back({view(pairs[0]), view(pairs[1])});
        if (tooDeep || builder.openElement(view(name), attributes)) return;
        tooDeep = true;
        xmlStopParser(context);
    }

    void text(const xmlChar* piece, int length) {
        builder.addText(XMLNodeKind::text, {reinterpret_cast<const char*>(piece), static_cast<std::size_t>(length)});
    }
};

xmlSAXHandler handlers() {
    xmlSAXHandler table;
    std::memset(&table, 0, sizeof table);
    table.initialized = XML_SAX2_MAGIC;
    table.startElement = [](void* data, const xmlChar* name, const xmlChar** pairs) {
        Reading::of(data).open(name, pairs);
    };
    table.endElement = [](void* data, const xmlChar*) {
        if (!Reading::of(data).tooDeep) Reading::of(data).builder.closeElement();
    };
    table.characters = [](void* data, const xmlChar* piece, int length) { Reading::of(data).text(piece, length); };
    table.ignorableWhitespace = table.characters;
    table.cdataBlock = table.characters; // the text of scripts and style sheets
    table.comment = [](void* data, const xmlChar* piece) {
        Reading::of(data).builder.addNode(XMLNodeKind::comment, view(piece));
    };
    table.internalSubset = [](void* data, const xmlChar* name, const xmlChar* publicID, const xmlChar* systemID) {
        Reading::of(data).builder.setDocumentType(view(name), view(publicID), view(systemID));
    };
    table.serror = [](void*, xmlErrorPtr) {}; // recovering from errors is what this reader is for
    return table;
}

struct ContextDeleter {
    void operator()(htmlParserCtxtPtr context) const { htmlFreeParserCtxt(context); }
};

} // namespace

Result<> readHTML(const std::string& html, ImpliedTags implied, XMLTreeBuilder& builder) {
    if (html.empty()) return {};
    std::string rewritten;
    const std::string& page = rewriteReferences(html, rewritten) ? rewritten : html;
    if (page.size() > INT_MAX)
        return failure(Error::withDescription(kXMLParserErrorDomain, XML_ERR_INTERNAL_ERROR, "the page is too large"));
    const std::unique_ptr<htmlParserCtxt, ContextDeleter> context(
        htmlCreateMemoryParserCtxt(page.c_str(), static_cast<int>(page.size())));
    if (!context) return failure(Error::withDescription(kXMLParserErrorDomain, XML_ERR_NO_MEMORY, "out of memory"));
    Reading reading{.builder = builder, .context = context.get(), .attributes = {}};
    *context->sax = handlers();
    context->userData = &reading;
    int options = HTML_PARSE_RECOVER | HTML_PARSE_NONET | HTML_PARSE_IGNORE_ENC | HTML_PARSE_NODEFDTD;
    if (implied == ImpliedTags::none) options |= HTML_PARSE_NOIMPLIED;
    htmlCtxtUseOptions(context.get(), options);
    context->options |= XML_PARSE_HUGE; // not an option of HTML, but heeded
    xmlSwitchEncoding(context.get(), XML_CHAR_ENCODING_UTF8);
    htmlParseDocument(context.get());
    if (reading.tooDeep)
        return failure(
            Error::withDescription(kXMLParserErrorDomain, XML_ERR_INTERNAL_ERROR,
                                   fmt::format("line {}: elements are nested deeper than {}",
                                               context->input ? context->input->line : 0, XMLParser::kMaximumDepth)));
    return {};
}

} // namespace platform
