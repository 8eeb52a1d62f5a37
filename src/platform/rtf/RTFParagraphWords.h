// A paragraph style as RTF says it.
#pragma once

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
    // Of the style before: most styles of a text have the same tab stops, a dozen of them.
    std::vector<TextTab> tabs_;
    std::string tabWords_;
    std::unordered_map<const ParagraphStyle*, std::string> words_;
};

} // namespace platform
