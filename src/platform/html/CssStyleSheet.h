// The style sheet of a page: rules with selectors by type, class, identifier, descendant and child.
#pragma once

#include <cstdint>
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
    // class or identifier.
    void match(const HTMLDocument& page, HTMLDocument::NodeIndex element, CssMatches& matched);

  private:
    struct Compound {
        std::string name; // "" for any
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
    bool matches(const Selector& selector, const HTMLDocument& page, HTMLDocument::NodeIndex element);

    std::vector<CssDeclarations> rules_;
    std::vector<Selector> selectors_;
    // Selector numbers by what the element must have; each selector stands in one of them.
    std::unordered_map<std::string, std::vector<std::uint32_t>> byIdentifier_, byClass_, byName_;
    std::vector<std::uint32_t> others_;
    std::size_t comparisons_ = 0;
};

} // namespace platform
