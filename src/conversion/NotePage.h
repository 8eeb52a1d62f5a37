// The XHTML page of a note while it is worked on. Inline images are slots: an address of a few characters stands for
// the data: URL, so that an attachment of 50 MB does not travel through parsers and serialisers; it is filled in once,
// at the end.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Result.h"
#include "platform/xml/XMLDocument.h"

namespace quillet {

class EvernoteXMLResource;

struct InlineImage {
    std::string mimeType; // as it stands in the data: URL
    EvernoteXMLResource* resource;
    bool isShown = false; // by whatever was made of the page
};

class InlineImages {
  public:
    // The identifier is in every slot's address; it must be one that no note markup can know beforehand.
    explicit InlineImages(std::string_view identifier);

    // The address of a new slot. It needs no escaping in markup.
    std::string addSlot(InlineImage image);
    // The image that an address stands for, or null. Valid until the next slot is added.
    InlineImage* imageAt(std::string_view address);
    std::span<const InlineImage> all() const { return images_; }
    // The markup with each slot's address replaced by its data: URL, escaped for an attribute. Without slots the markup
    // is handed back uncopied. The error is a resource's, when it has no bytes.
    platform::Result<std::string> filledIn(std::string markup) const;

  private:
    std::optional<std::size_t> indexOf(std::string_view address) const;

    std::string prefix_;
    std::vector<InlineImage> images_;
};

// Most pages are read from their tree; only one that is not gets printed.
class NotePage {
  public:
    // The identifier is the note's, as InlineImages wants it.
    explicit NotePage(std::string_view identifier) : images(identifier) {}

    // The markup that the page is made of, in any state.
    void setSource(std::string source) { source_ = std::move(source); }
    // Makes the tree, for which the source is used up; the page is of no use before. Errors: the parser's, and 1002 for
    // a source without any element.
    platform::Result<> parse();
    // What the markup is printed from; empty once it has been printed.
    const platform::XMLDocument& document() const { return document_; }

    // Pretty printed. The first call prints it and gives up the tree, which is the larger of the two.
    const std::string& markup();

    InlineImages images;

  private:
    std::string source_;
    platform::XMLDocument document_;
    std::string markup_;
};

} // namespace quillet
