// A paragraph style as RTF says it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/text/ParagraphStyle.h"

namespace platform {

class RTFListTable;

class RTFParagraphWords {
  public:
    explicit RTFParagraphWords(RTFListTable& lists) : lists_(lists) {}

    // From \pard to the line's end, then the list words: what stands before a paragraph of this style. Two styles of
    // equal words look the same in RTF. Kept for each style object; the reference stays good.
    const std::string& wordsFor(const ParagraphStyle& style);

  private:
    const std::string& tabWordsFor(const std::vector<TextTab>& tabs);

    RTFListTable& lists_;
    // Of tab stops met lately: the styles of a text have a dozen of them, and hardly ever others than those before.
    struct TabWords {
        std::vector<TextTab> tabs;
        std::string words;
    };
    std::array<TabWords, 4> tabWords_;
    std::size_t nextTabWords_ = 0; // to be replaced
    std::unordered_map<const ParagraphStyle*, std::string> words_;
};

} // namespace platform
