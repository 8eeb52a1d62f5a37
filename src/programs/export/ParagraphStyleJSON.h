// Paragraph styles and colors as JSON trees: a part of the JSON form of rich text.
#pragma once

#include <cstddef>
#include <unordered_map>

#include <nlohmann/json_fwd.hpp>

#include "platform/graphics/Color.h"
#include "platform/text/ParagraphStyle.h"

namespace quillet {

// Numbers for objects that have identity, from 1 in the order in which they are first asked for.
class ObjectNumbers {
  public:
    std::size_t numberOf(const void* object) { return numbers_.try_emplace(object, numbers_.size() + 1).first->second; }

  private:
    std::unordered_map<const void*, std::size_t> numbers_;
};

// What the paragraph styles of one text share.
struct ParagraphObjects {
    ObjectNumbers lists, blocks, tables;
};

// Null for a pattern, which has no components.
nlohmann::ordered_json jsonFromColor(const platform::Color& color);

// Only the values that differ from the default paragraph style's.
nlohmann::ordered_json jsonFromParagraphStyle(const platform::ParagraphStyle& style, ParagraphObjects& objects);

} // namespace quillet
