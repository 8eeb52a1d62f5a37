// From the elements of a page to their computed styles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <memory_resource>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/html/CssStyle.h"
#include "platform/html/CssStyleSheet.h"
#include "platform/xml/HTMLDocument.h"

namespace platform {

// Computes styles for one page. Declarations are parsed once for each distinct text, and elements that have the same
// parent style, name, rules and declarations share one style object: equal pointers mean equal styles. Most elements
// have no attributes, and need only their name and the parent style to find theirs.
class CssStyleResolver {
  public:
    explicit CssStyleResolver(const HTMLDocument& page);

    // The parent style is null for the root. The result lives as long as the resolver.
    const CssStyle* style(HTMLDocument::NodeIndex element, const CssStyle* parent);

  private:
    struct Key {
        const CssStyle* parent;
        const CssDeclarations* hints;
        const CssDeclarations* inlineStyle;
        const CssMatches* rules;
        std::uint32_t tag; // HTMLTag and the flag of a link
        friend bool operator==(const Key&, const Key&) = default;
    };
    struct KeyHash {
        std::size_t operator()(const Key& key) const;
    };

    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    // A child style of elements without attributes.
    struct PlainChild {
        const CssStyle* style;
        HTMLTag tag;
        std::uint32_t next; // of the same parent style
    };
    static constexpr std::uint32_t kNoChild = 0xFFFFFFFF;

    bool isPlain(HTMLDocument::NodeIndex element) const;
    const CssStyle* styleByAllOf(HTMLDocument::NodeIndex element, const CssStyle* parent);
    const CssDeclarations* parsed(std::string_view text);
    // Into a style that has its initial values.
    void compute(CssStyle& style, HTMLDocument::NodeIndex element, const CssStyle* parent, const CssDeclarations* hints,
                 const CssDeclarations* inlineStyle);

    static constexpr double kInitialFontSize = 12;

    const HTMLDocument& page_;
    std::shared_ptr<const CssStyleSheet> sheet_;
    std::size_t comparisons_ = 0; // with selectors of the sheet
    static constexpr std::size_t kUsualMemory = 16384;
    std::pmr::monotonic_buffer_resource memory_{kUsualMemory}; // of what follows, for as long as the page is read
    std::pmr::deque<CssStyle> styles_{&memory_};
    std::vector<std::uint32_t> firstPlainChild_; // by the number of the parent style
    std::vector<PlainChild> plainChildren_;
    std::pmr::unordered_map<std::pmr::string, CssDeclarations, TextHash, std::equal_to<>> declarations_{&memory_};
    std::pmr::unordered_map<Key, const CssStyle*, KeyHash> shared_{&memory_};
    CssMatches matched_;
    std::set<CssMatches> matches_; // every list of rules that an element matched
    std::string hintText_;
    double rootFontSize_ = kInitialFontSize;
};

} // namespace platform
