// The style sheet of a page: rules with selectors by type, class, identifier, descendant and child.
#pragma once

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/html/CssDeclarations.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

using CssMatches = std::vector<const CssDeclarations*>; // of the rules that match an element, weakest first

class CssStyleSheet {
  public:
    // Selectors beyond this many are left out: matching costs selectors times elements.
    static constexpr std::size_t kMaximumSelectors = 4096;
    // How often an element is held against a part of a selector, for one page. Pages stay far below; beyond it a sheet
    // is built to keep the reader busy, and no more rules match.
    static constexpr std::size_t kMaximumComparisons = 20'000'000;

    // Adds the rules of one style element. Media rules count when they hold for a screen 800 px wide; imports and
    // fonts are left out.
    void append(std::string_view text);
    bool empty() const { return selectors_.empty(); }

    // A sheet without rules costs nothing; one with rules looks only at selectors that end in this element's type,
    // class or identifier. `comparisons` counts for one page, from 0.
    void match(const HTMLDocument& page, HTMLDocument::NodeIndex element, std::size_t& comparisons,
               CssMatches& matched) const;
    // Whether the same rules match every element of this name that has no attributes and is not the root, wherever it
    // stands.
    bool matchesByNameAlone(HTMLTag tag) const { return !contextual_[static_cast<std::size_t>(tag)]; }

  private:
    struct Compound {
        std::string name;               // "" for any
        HTMLTag tag = HTMLTag::unknown; // of the name
        std::string identifier;
        std::vector<std::string> classes;
        bool isLink = false; // only links
        bool isRoot = false;
        bool behindChild = false; // the compound to the left is the parent, not just any ancestor
    };
    struct Selector {
        std::vector<Compound> compounds; // the element itself first, then outwards
        std::uint32_t specificity = 0;
        std::uint32_t rule = 0;
    };

    void appendRules(std::string_view text);
    void appendRule(std::string_view prelude, std::string_view block);
    void appendSelector(std::vector<CssToken> tokens, std::uint32_t rule);
    static bool matches(const Compound& compound, const HTMLDocument& page, HTMLDocument::NodeIndex element);
    static bool matches(const Selector& selector, const HTMLDocument& page, HTMLDocument::NodeIndex element,
                        std::size_t& comparisons);

    std::vector<CssDeclarations> rules_;
    std::vector<Selector> selectors_;
    // Selector numbers by what the element must have; each selector stands in one of them.
    using Numbers = std::vector<std::uint32_t>;
    std::unordered_map<std::string, Numbers> byIdentifier_, byClass_, byOtherName_; // names that HTML does not have
    std::array<Numbers, kHTMLTagCount> byTag_;
    Numbers others_;
    std::bitset<kHTMLTagCount> contextual_; // names whose selectors look at more than the element itself
};

// The sheet of a page with these style elements. The one that was asked for last is kept, a thread each, when its text
// is not longer than 64 KB: the pages of one import come from one template.
std::shared_ptr<const CssStyleSheet> cssStyleSheet(std::vector<std::string> texts);

} // namespace platform
