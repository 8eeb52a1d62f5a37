#include "platform/xml/XMLDocument.h"

#include <optional>
#include <utility>

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

std::optional<XMLDocument> plainTree(std::string_view xml) {
    XMLTreeBuilder builder(xml.size());
    if (!readPlainXML(xml, builder)) return std::nullopt;
    return builder.documentWithRoot({});
}

std::optional<XMLDocument> plainPage(std::string_view page) {
    XMLTreeBuilder builder(page.size());
    if (!readPlainHTML(page, builder)) return std::nullopt;
    return builder.documentWithRoot("html");
}

// To be asked before a parser sees the markup.
Result<> checkAttributes(std::string_view markup) {
    if (!hasTagWithTooManyAttributes(markup)) return {};
    return failure(
        Error::withDescription(kXMLParserErrorDomain, XMLParser::kInternalError,
                               fmt::format("an element has more than {} attributes", XMLParser::kMaximumAttributes)));
}

// What is plain as it stands has nothing to correct; most of the rest is plain when it has been corrected.

Result<XMLDocument> tidyPage(std::string_view html) {
    if (auto plain = plainPage(html)) return *std::move(plain);
    const std::optional<std::string> titled = escapingTitle(html);
    const std::string markup = keepingListItemsWhole(escapingSections(titled ? std::string_view(*titled) : html));
    if (auto plain = plainPage(markup)) return *std::move(plain);
    TRY(checkAttributes(html));
    XMLTreeBuilder builder(markup.size());
    TRY(readHTML(markup, ImpliedTags::added, builder));
    return builder.documentWithRoot("html");
}

Result<XMLDocument> tree(std::string_view xml, XMLDocumentParsing parsing) {
    if (auto plain = plainTree(xml)) return *std::move(plain);
    const std::string resolved = resolvingHTMLEntities(xml);
    if (auto plain = plainTree(resolved)) return *std::move(plain);
    TRY(checkAttributes(xml));
    XMLTreeBuilder strict(resolved.size());
    const auto outcome = readXML(resolved, strict);
    if (outcome) return strict.documentWithRoot({});
    if (parsing == XMLDocumentParsing::strict) return failure(outcome.error());
    const std::string name = nameOfFirstTag(xml);
    if (name.empty()) return failure(outcome.error());
    XMLTreeBuilder tidied(xml.size());
    TRY(readHTML(escapingSections(xml), ImpliedTags::none, tidied));
    auto document = tidied.documentWithRoot(name);
    if (!document.rootElement()) return failure(outcome.error());
    return document;
}

} // namespace

Result<XMLDocument> XMLDocument::initWithXMLString(std::string_view xml, XMLDocumentParsing parsing) {
    return parsing == XMLDocumentParsing::tidyHTML ? tidyPage(xml) : tree(xml, parsing);
}

XMLDocument XMLDocument::withRootElement(std::string_view name) {
    XMLDocument document;
    document.wrapRootElement(name);
    return document;
}

void XMLDocument::wrapRootElement(std::string_view name) {
    if (!tree_) tree_ = std::make_unique<Tree>(0);
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
