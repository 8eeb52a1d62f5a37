// An AttributedString as text, for golden cases, people and other tools: one line a run, attributes in fixed order.
#pragma once

#include <string>

namespace platform {

class AttributedString;

// Deterministic: lists, tables and attachments are numbered L1, T1, B1, A1 in the order in which they first occur.
// Default values are left out. The format is described in docs/formats/text-dump.md.
std::string textDump(const AttributedString& text);

} // namespace platform
