// Rich text as JSON, for scripts: the text, its runs with their attributes, and its attachments.
#pragma once

#include <string>

#include "platform/base/Value.h"
#include "platform/text/AttributedString.h"

namespace quillet {

// One object on one line: "text", "runs" and "attachments", and "noteAttributes" when they are given (null for those of
// a note that has none). Positions are UTF-16 units; lists, blocks and tables are numbered in the order in which they
// first occur. docs/formats/rich-text-json.md describes the form.
std::string richTextJSON(const platform::AttributedString& text);
std::string richTextJSON(const platform::AttributedString& text, const platform::Value& noteAttributes);

} // namespace quillet
