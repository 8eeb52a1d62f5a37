// Counterpart of NSXMLDocument: a small document as a tree.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Result.h"
#include "platform/xml/XMLNode.h"

namespace platform {

// How markup is read. All markup is preserved: comments, CDATA sections, white space, the order of attributes. The
// entity names of HTML are known in each form, without a declaration.
enum class XMLDocumentParsing {
    strict,   // well-formed XML or an error
    tidyXML,  // the same; what is not well-formed is read as HTML, and the element that the text opens with is the root
    tidyHTML, // as HTML: missing tags are added, the root is html
};

enum class PageLayout;

class XMLDocument {
  public:
    // The text is UTF-8, whatever it declares. An error is the XML parser's; with tidying only a text without any
    // element, one that is nested too deep, or an element with too many attributes is one.
    // @sel initWithXMLString:options:error:
    static Result<XMLDocument> initWithXMLString(std::string_view xml, XMLDocumentParsing parsing);

    // A document of one empty element.
    static XMLDocument withRootElement(std::string_view name);

    // Null in an empty document.
    XMLElement* rootElement() {
        hasPlainTexts_ = false; // whoever asks may change them
        return tree_ ? tree_->root : nullptr;
    }
    const XMLElement* rootElement() const { return tree_ ? tree_->root : nullptr; }
    // Makes an element of that name the root, with the root so far, if there is one, in it.
    void wrapRootElement(std::string_view name);

    // The first node that the path, one element name, selects from the document: the root if it has that name, else
    // null. @sel nodesForXPath:error:
    XMLElement* firstNodeForXPath(std::string_view name);

    // Whether all texts are known to be plain (isPlainText). False says nothing of them.
    bool hasPlainTexts() const { return hasPlainTexts_; }

    // The document type declaration's markup without line break; "" when there is none.
    const std::string& documentType() const { return documentType_; }

    // Document type and root in expanded form.
    std::string XMLString() const;
    // Document type and root as a page; pretty printed it is indented where that changes nothing.
    // @sel XMLDataWithOptions:
    std::string page() const;
    std::string prettyPrintedPage() const;

  private:
    friend class XMLTreeBuilder;
    struct Tree {
        explicit Tree(std::size_t expected) : arena(expected) {}
        XMLArena arena;
        XMLElement* root = nullptr;
    };
    std::string laidOut(PageLayout layout) const;

    std::string documentType_;
    std::unique_ptr<Tree> tree_;
    bool hasPlainTexts_ = false;
};

} // namespace platform
