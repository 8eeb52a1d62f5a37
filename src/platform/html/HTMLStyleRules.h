// The style sheet that the HTML writer collects: one rule for each distinct look, numbered in the order of first use.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/text/AttributedString.h"
#include "platform/text/TextTable.h"

namespace platform {

// What a paragraph's runs agree on; its rule says it, and spans say only what differs.
struct HTMLParagraphLook {
    std::string font;                      // "12.0px Helvetica"
    std::string color, stroke, background; // "" when the runs do not agree or have none
};

class HTMLStyleRules {
  public:
    // Classes of one kind share a counter; p, li and headings share another. Returns the class, "p1".
    std::string paragraphClass(std::string_view element, const std::string& declarations);
    std::string className(std::string_view element, std::string_view prefix, const std::string& declarations);
    // The rule of tabs, once one is written.
    void useTabs() { usesTabs_ = true; }
    // One line a rule, each after `indent`.
    std::string text(std::string_view indent) const;

  private:
    std::unordered_map<std::string, std::string> classes_; // element, blank, declarations → class
    std::unordered_map<std::string, std::size_t> paragraphNumbers_;
    std::unordered_map<std::string, std::size_t> counters_;
    std::vector<std::string> rules_;
    bool usesTabs_ = false;
};

// Values as the writer spells them.
std::string htmlLength(double points);     // "12.0px"
std::string htmlColor(const Color& color); // "#rrggbb", "rgba(r, g, b, a)"; "" for a pattern
std::string htmlFont(const Font& font);    // "12.0px 'Helvetica Neue'": bold and italic are elements, not in it
double htmlLineHeight(const Font& font);

std::string paragraphDeclarations(const ParagraphStyle& style, const HTMLParagraphLook& look, double minimumHeight);
// What a run has beyond its paragraph's look; "" for nothing.
std::string spanDeclarations(const AttributeSet& run, const HTMLParagraphLook& look);
std::string cellDeclarations(const TextTableBlock& cell);
std::string tableDeclarations(const TextTable& table);

} // namespace platform
