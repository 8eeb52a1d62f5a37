// How the values of properties are read: a rule for each kind of property, which the table in CssDeclarations.cpp
// names.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <utility>

#include "platform/html/CssDeclarations.h"

namespace platform {

// A keyword of a property that has nothing but keywords, or of one that has some.
std::optional<CssValue> cssKeyword(CssProperty property, const CssToken& token);

// Absolute lengths in px; the window is 800 by 600.
std::optional<CssValue> cssLength(const CssToken& token, bool allowsPercentage, bool allowsNegative);

// The tokens of one value, white space left out between items by next().
class CssItems {
  public:
    explicit CssItems(std::span<const CssToken> tokens) : tokens_(tokens) { skip(); }
    bool atEnd() const { return at_ >= tokens_.size(); }
    const CssToken& peek() const { return tokens_[at_]; }
    void advance() {
        ++at_;
        skip();
    }
    // The color that begins here, if there is one; the items stand behind it then.
    std::optional<CssValue> color();
    // Past the brackets of a function whose name is the present token.
    void skipFunction();

  private:
    void skip() {
        while (at_ < tokens_.size() && tokens_[at_].kind == CssTokenKind::whitespace) ++at_;
    }
    std::span<const CssToken> tokens_;
    std::size_t at_ = 0;
};

// Where the longhands of one declaration go.
struct CssLonghands {
    CssDeclarations& out;
    bool important;
    void add(CssProperty property, CssValue value) { out.push_back({property, important, std::move(value)}); }
};

// Reads a value and adds what it sets; false, and perhaps longhands that do not count, for one that is not valid. The
// property is the one that the table names for the rule.
using CssPropertyReader = bool (*)(CssLonghands& to, CssProperty property, CssItems& items);

// Of any property (CssProperties.cpp)
bool readKeyword(CssLonghands& to, CssProperty property, CssItems& items);
bool readColor(CssLonghands& to, CssProperty property, CssItems& items);

// Margins, padding, borders, widths (CssBoxProperties.cpp). The shorthands of all edges take the property of the top.
bool readMargin(CssLonghands& to, CssProperty property, CssItems& items);
bool readMargins(CssLonghands& to, CssProperty property, CssItems& items);
bool readPadding(CssLonghands& to, CssProperty property, CssItems& items);
bool readPaddings(CssLonghands& to, CssProperty property, CssItems& items);
bool readWidth(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderStyle(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderStyles(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderWidth(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderWidths(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderColors(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderOfAll(CssLonghands& to, CssProperty property, CssItems& items);
bool readBorderOfEdge(CssLonghands& to, CssProperty styleOfEdge, CssItems& items);

// Fonts (CssFontProperties.cpp)
bool readFont(CssLonghands& to, CssProperty property, CssItems& items);
bool readFontFamily(CssLonghands& to, CssProperty property, CssItems& items);
bool readFontSize(CssLonghands& to, CssProperty property, CssItems& items);
bool readFontStyle(CssLonghands& to, CssProperty property, CssItems& items);
bool readFontWeight(CssLonghands& to, CssProperty property, CssItems& items);
bool readFontVariant(CssLonghands& to, CssProperty property, CssItems& items);

// Text, lists and backgrounds (CssTextProperties.cpp)
bool readIndent(CssLonghands& to, CssProperty property, CssItems& items);
bool readTextDecoration(CssLonghands& to, CssProperty property, CssItems& items);
bool readTextShadow(CssLonghands& to, CssProperty property, CssItems& items);
bool readVerticalAlign(CssLonghands& to, CssProperty property, CssItems& items);
bool readListStyle(CssLonghands& to, CssProperty property, CssItems& items);
bool readListStyleType(CssLonghands& to, CssProperty property, CssItems& items);
bool readBackground(CssLonghands& to, CssProperty property, CssItems& items);

} // namespace platform
