// A paragraph style as RTF says it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string_view>
#include <vector>

#include "platform/base/Numbered.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/text/ParagraphStyle.h"

namespace platform {

class RTFListTable;

class RTFParagraphWords {
  public:
    RTFParagraphWords(RTFListTable& lists, std::pmr::memory_resource& memory) : lists_(lists), known_(memory) {
        constexpr std::size_t kUsualSize = 2048;
        words_.string().reserve(kUsualSize);
    }

    // The number of the words for a style: from \pard to the line's end, then the list words, which is what stands
    // before a paragraph of it. Asked once for each style object; styles must live as long as this does.
    std::uint32_t numberFor(const ParagraphStyle& style);
    // Two styles of equal words look the same in RTF. Good until the next number is asked for.
    std::string_view operator[](std::uint32_t number) const { return words_.part(known_[number].words); }

  private:
    void writeTabWords(const std::vector<TextTab>& tabs);
    void writeWords(const ParagraphStyle& style);

    struct KnownStyle {
        const ParagraphStyle* style;
        RTFOutput::Part words;
    };
    // Of tab stops met lately: the styles of a text have a dozen of them, and hardly ever others than those before.
    struct KnownTabs {
        const std::vector<TextTab>* tabs = nullptr;
        RTFOutput::Part words;
    };

    RTFListTable& lists_;
    RTFOutput words_;            // of all styles, one behind the other
    Numbered<KnownStyle> known_; // by address
    std::array<KnownTabs, 4> knownTabs_;
    std::size_t nextTabs_ = 0; // to be replaced
};

} // namespace platform
