// Builds a tree from events, whichever reader they come from.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/xml/XMLDocument.h"
#include "platform/xml/XMLNode.h"

namespace platform {

class XMLTreeBuilder {
  public:
    // For markup of about that many bytes.
    explicit XMLTreeBuilder(std::size_t markupSize = 0);

    // The markup as it lies in the document: what is taken from it need not be copied. At most once.
    std::string_view storedSource(std::string_view markup) { return document_.tree_->arena.storedSource(markup); }

    // False when the element would be nested too deep; it is left out then.
    bool openElement(std::string_view name, XMLAttributes attributes);
    void closeElement();
    void addText(XMLNodeKind kind, std::string_view text); // joined to a neighbour of the same kind
    void addNode(XMLNodeKind kind, std::string_view text);
    void setDocumentType(std::string_view name, std::string_view publicID, std::string_view systemID);

    // Says that all the texts were plain.
    void setHasPlainTexts() { document_.hasPlainTexts_ = true; }

    // The tree with the first of its elements that has the name as the root; without one, or a name, the first element
    // of all. Without any element the document has no root.
    XMLDocument documentWithRoot(std::string_view name);

  private:
    XMLDocument document_; // its root holds what stands outside the true root too
    std::vector<XMLElement*> open_;
};

} // namespace platform
