// A table of rich text as a pipe table.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace platform {
class TextTableBlock;
}

namespace quillet {

// Cells are filled paragraph by paragraph, wherever in the table they are. Row and column numbers come from outside and
// count for order only. The first row is the head, since a pipe table must have one.
class MarkdownTable {
  public:
    void add(const platform::TextTableBlock& cell, std::u16string_view paragraph);
    std::u16string markdown() const;

  private:
    std::map<std::int64_t, std::map<std::int64_t, std::u16string>> rows_; // row → column → paragraphs
};

} // namespace quillet
