// Reads markup as HTML, leniently, into a tree.
#pragma once

#include <string>

#include "platform/base/Result.h"
#include "platform/xml/XMLTreeBuilder.h"

namespace platform {

enum class ImpliedTags { none, added }; // html, head, body and p where HTML implies them

// The text is UTF-8. Fails only when the tree would be too deep or the text is larger than 2 GB.
Result<> readHTML(const std::string& html, ImpliedTags implied, XMLTreeBuilder& builder);

} // namespace platform
