#include "platform/xml/XMLDocument.h"

#include <fmt/core.h>

#include "platform/xml/HTMLTidy.h"
#include "platform/xml/MarkupText.h"
#include "platform/xml/PlainMarkup.h"
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
    void parserFoundComment(XMLParser&, std::string_view text) override { addInside(XMLNodeKind::comment, text); }
    void parserFoundProcessingInstructionWithTarget(XMLParser&, std::string_view target,
                                                    std::string_view data) override {
        addInside(XMLNodeKind::processingInstruction, data.empty() ? target : fmt::format("{} {}", target, data));
    }
    void parserFoundDocumentType(XMLParser&, std::string_view name, std::string_view publicID,
                                 std::string_view systemID) override {
        builder_.setDocumentType(name, publicID, systemID);
    }

  private:
    void addInside(XMLNodeKind kind, std::string_view text) {
        if (inside_) builder_.addNode(kind, text);
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
    const bool isPage = parsing == XMLDocumentParsing::tidyHTML;
    const std::string markup = isPage ? keepingListItemsWhole(escapingSections(xml)) : resolvingHTMLEntities(xml);
    XMLTreeBuilder plain;
    if (isPage ? readPlainHTML(markup, plain) : readPlainXML(markup, plain))
        return plain.documentWithRoot(isPage ? "html" : "");
    if (hasTagWithTooManyAttributes(xml))
        return failure(Error::withDescription(
            kXMLParserErrorDomain, XMLParser::kInternalError,
            fmt::format("an element has more than {} attributes", XMLParser::kMaximumAttributes)));
    if (isPage) {
        XMLTreeBuilder builder;
        TRY(readHTML(markup, ImpliedTags::added, builder));
        return builder.documentWithRoot("html");
    }
    XMLTreeBuilder strict;
    const auto outcome = readXML(markup, strict);
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

XMLDocument XMLDocument::withRootElement(std::string_view name) {
    XMLDocument document;
    document.wrapRootElement(name);
    return document;
}

void XMLDocument::wrapRootElement(std::string_view name) {
    if (!tree_) tree_ = std::make_unique<Tree>();
    auto* root = tree_->arena.make<XMLElement>(tree_->arena, tree_->arena.stored(name));
    if (tree_->root) root->addChild(*tree_->root);
    tree_->root = root;
}

XMLElement* XMLDocument::firstNodeForXPath(std::string_view name) {
    XMLElement* root = rootElement();
    return root && root->name() == name ? root : nullptr;
}

std::string XMLDocument::XMLString() const {
    std::string result = documentType_;
    if (rootElement()) writeXML(*rootElement(), result);
    return result;
}

std::string XMLDocument::laidOut(PageLayout layout) const {
    std::string result = documentType_;
    if (!result.empty()) result += '\n';
    if (rootElement()) writePage(*rootElement(), layout, result);
    return result += '\n';
}

std::string XMLDocument::page() const {
    return laidOut(PageLayout::plain);
}

std::string XMLDocument::prettyPrintedPage() const {
    return laidOut(PageLayout::indented);
}

} // namespace platform
