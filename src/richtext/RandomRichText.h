// Rich texts made at random from the pieces that the operations look for: markers, boxes, files, tables, every line
// end, halves of surrogate pairs, attachments on the wrong characters. To be called inside rapidcheck properties.
#pragma once

#include <cstdint>

#include "platform/text/AttributedString.h"

namespace quillet {

platform::AttributedString someText();

// Any range of the text, empty and whole ones included.
platform::Range someRange(const platform::AttributedString& text);

platform::TextAttachmentReference checkbox(bool on, std::uint64_t level);

} // namespace quillet
