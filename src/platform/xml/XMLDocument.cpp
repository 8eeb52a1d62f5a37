#include "platform/xml/XMLDocument.h"

#include <fmt/core.h>

#include "platform/xml/HTMLTidy.h"
#include "platform/xml/MarkupText.h"
#include "platform/xml/XMLTreeBuilder.h"
#include "platform/xml/XMLWriter.h"

namespace platform {

namespace {

class BuildingDelegate final : public XMLParserDelegate {
  public:
    explicit BuildingDelegate(XMLTreeBuilder& builder) : builder_(builder) {}

    void parserDidStartElement(XMLParser&, std::string_view name, XMLAttributes attributes) override {
        builder_.openElement(name, attributes);
        inside_ = true;
    }
    void parserFoundCharacters(XMLParser&, std::string_view text) override {
        builder_.addText(XMLNodeKind::text, text);
    }
    void parserFoundCDATA(XMLParser&, std::string_view bytes) override { builder_.addText(XMLNodeKind::cdata, bytes); }
    void parserDidEndElement(XMLParser&, std::string_view) override { builder_.closeElement(); }
    void parserFoundComment(XMLParser&, std::string_view text) override {
        addInside(XMLNodeKind::comment, std::string(text));
    }
    void parserFoundProcessingInstructionWithTarget(XMLParser&, std::string_view target,
                                                    std::string_view data) override {
        addInside(XMLNodeKind::processingInstruction,
                  data.empty() ? std::string(target) : fmt::format("{} {}", target, data));
    }
    void parserFoundDocumentType(XMLParser&, std::string_view name, std::string_view publicID,
                                 std::string_view systemID) override {
        builder_.setDocumentType(name, publicID, systemID);
    }

  private:
    void addInside(XMLNodeKind kind, std::string text) {
        if (inside_) builder_.addNode(kind, std::move(text));
    }

    XMLTreeBuilder& builder_;
    bool inside_ = false; // of the root or behind it
};

// Pieces of text are taken as they come: the tree joins them, and comments stay where they are among them.
Result<> readXML(std::string_view xml, XMLTreeBuilder& builder) {
    BuildingDelegate delegate(builder);
    XMLParser parser(InputStream::inputStreamWithBytes(xml));
    parser.setDelegate(&delegate);
    parser.setDeliversPieces(true);
    parser.ignoreDeclaredEncoding();
    if (!parser.parse()) return failure(*parser.parserError());
    return {};
}

} // namespace

Result<XMLDocument> XMLDocument::initWithXMLString(std::string_view xml, XMLDocumentParsing parsing) {
    if (hasTagWithTooManyAttributes(xml))
        return failure(Error::withDescription(
            kXMLParserErrorDomain, XMLParser::kInternalError,
            fmt::format("an element has more than {} attributes", XMLParser::kMaximumAttributes)));
    if (parsing == XMLDocumentParsing::tidyHTML) {
        XMLTreeBuilder builder;
        TRY(readHTML(keepingListItemsWhole(escapingSections(xml)), ImpliedTags::added, builder));
        return builder.documentWithRoot("html");
    }
    XMLTreeBuilder strict;
    const auto outcome = readXML(resolvingHTMLEntities(xml), strict);
    if (outcome) return strict.documentWithRoot({});
    if (parsing == XMLDocumentParsing::strict) return failure(outcome.error());
    const std::string name = nameOfFirstTag(xml);
    if (name.empty()) return failure(outcome.error());
    XMLTreeBuilder tidied;
    TRY(readHTML(escapingSections(xml), ImpliedTags::none, tidied));
    auto document = tidied.documentWithRoot(name);
    if (!document.rootElement()) return failure(outcome.error());
    return document;
}

XMLElement* XMLDocument::firstNodeForXPath(std::string_view name) {
    return root_ && root_->name() == name ? root_.get() : nullptr;
}

std::string XMLDocument::XMLString() const {
    std::string result = documentType_;
    if (root_) writeXML(*root_, result);
    return result;
}

std::string XMLDocument::laidOut(PageLayout layout) const {
    std::string result = documentType_;
    if (!result.empty()) result += '\n';
    if (root_) writePage(*root_, layout, result);
    return result += '\n';
}

std::string XMLDocument::page() const {
    return laidOut(PageLayout::plain);
}

std::string XMLDocument::prettyPrintedPage() const {
    return laidOut(PageLayout::indented);
}

} // namespace platform
