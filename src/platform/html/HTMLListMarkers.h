// The markers that the HTML reader writes into the text of lists, once the whole text is there.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>

#include "platform/html/HTMLTextBuilder.h"
#include "platform/text/AttributedString.h"
#include "platform/text/TextList.h"

namespace platform {

// The link around a list, which its markers take; lists without one have no entry.
using HTMLListLinks = std::unordered_map<const TextList*, AttributeValue>;

// The text, taken over, with "tab, marker, tab" at the start of every paragraph of a list. Numbers go on after nested
// lists. One pass, and no second copy of the text.
AttributedString textWithListMarkers(HTMLTextBuilder&& written, const HTMLListLinks& links);

} // namespace platform
