// Character references of HTML ("&nbsp;", "&#8364;", "&copy" without its semicolon), as HTML5 reads them.
#pragma once

#include <string>
#include <string_view>

namespace platform {

// The page with every reference that the HTML parser underneath would read otherwise, or not at all, written as a plain
// number or as the character itself: the names that HTML5 added, names without their semicolon, numbers that mean
// Windows-1252 and numbers of no character. False when there is none; `rewritten` is not touched then. UTF-8; linear.
bool rewriteReferences(std::string_view page, std::string& rewritten);

} // namespace platform
