// How a tree is laid out as a page that browsers and XML readers read alike, apart from what is made of it: its markup,
// or straight away the tree that a reader makes of that markup.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/xml/XMLWriter.h"

namespace platform {

// What an element is to the layout; bits.
enum PageElementFlag : std::uint8_t {
    kVoidElement = 1,       // without children it has neither content nor end tag (HTML, 13.1.2, and obsolete ones)
    kBlockElement = 2,      // between such elements an HTML reader drops white space
    kPreservingElement = 4, // its white space counts
    kRawTextElement = 8,    // HTML readers take its text as it stands
};
std::uint8_t pageElementFlags(std::string_view name);

// Whether the text is of blanks and line ends only.
bool isBlankText(const XMLNode& node);

// The visitor of forEachNodeInOrder that calls a sink:
//     startTag(element, isVoid); endTag(element); leaf(node, isRaw); whiteSpace(text)
// for what stands in the page, in order. Elements that are void have no end tag. White space comes in only where no
// reader keeps it: between the blocks of an element that holds nothing but blocks, and never below an element that
// preserves white space.
template<class Sink>
class PageLayoutWalk {
  public:
    PageLayoutWalk(PageLayout layout, Sink& sink) : indents_(layout == PageLayout::indented), sink_(sink) {
        open_.reserve(kUsualDepth);
    }

    void operator()(const XMLNode& node, NodeEdge edge) {
        if (edge == NodeEdge::enter) return enter(*node.asElement());
        if (edge == NodeEdge::leave) return leave(*node.asElement());
        if (!open_.empty() && open_.back().indented && isBlankText(node)) return;
        sink_.leaf(node, !open_.empty() && node.isText() && (open_.back().flags & kRawTextElement) != 0);
    }

  private:
    struct Open {
        std::uint8_t flags;
        bool isVoid;
        bool indented;  // its children stand on lines of their own
        bool preserves; // it or an element above keeps white space
    };

    void enter(const XMLElement& element) {
        if (!open_.empty() && open_.back().indented) newLine(open_.size());
        const std::uint8_t flags = pageElementFlags(element.name());
        const bool isVoid = (flags & kVoidElement) != 0 && element.children().empty();
        sink_.startTag(element, isVoid);
        const bool preserves = (!open_.empty() && open_.back().preserves) || preservesWhiteSpace(element, flags);
        open_.push_back({flags, isVoid, indents_ && !preserves && holdsOnlyBlocks(element, flags), preserves});
    }

    void leave(const XMLElement& element) {
        const Open left = open_.back();
        open_.pop_back();
        if (left.isVoid) return;
        if (left.indented) newLine(open_.size());
        sink_.endTag(element);
    }

    // Whether white space between the children is dropped by a reader: all of them are blocks.
    static bool holdsOnlyBlocks(const XMLElement& element, std::uint8_t flags) {
        if ((flags & kBlockElement) == 0 || element.children().empty()) return false;
        return std::ranges::all_of(element.children(), [](const auto& child) {
            return child->asElement() ? (pageElementFlags(child->name()) & kBlockElement) != 0 : isBlankText(*child);
        });
    }

    static bool preservesWhiteSpace(const XMLElement& element, std::uint8_t flags) {
        if ((flags & kPreservingElement) != 0) return true;
        if (element.attributes().empty()) return false; // as most are
        const auto style = element.attributeForName("style");
        return (style && style->find("white-space") != std::string_view::npos) || element.attributeForName("xml:space");
    }

    static constexpr std::size_t kUsualDepth = 16;
    // Depth beyond this many levels is not shown: the page would grow with the square of the depth.
    static constexpr std::size_t kDeepestIndent = 32;
    static constexpr std::string_view kLineAndIndent =
        "\n                                                                ";
    static_assert(kLineAndIndent.size() == 1 + 2 * kDeepestIndent);

    void newLine(std::size_t depth) {
        sink_.whiteSpace(kLineAndIndent.substr(0, 1 + 2 * std::min(depth, kDeepestIndent)));
    }

    bool indents_;
    Sink& sink_;
    std::vector<Open> open_;
};

} // namespace platform
