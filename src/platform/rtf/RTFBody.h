// The paragraphs of an RTF text. The body is written first and the head after it, since only then its tables are full.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Numbered.h"
#include "platform/rtf/RTFCharacterWords.h"
#include "platform/rtf/RTFOutput.h"
#include "platform/rtf/RTFParagraphWords.h"
#include "platform/rtf/RTFTableRows.h"
#include "platform/rtf/RTFTables.h"
#include "platform/rtf/RTFWriter.h"

namespace platform {

class RTFBody : private RTFTableEvents {
  public:
    // The entries are those of the range, in text order; null for plain RTF.
    RTFBody(const AttributedString& text, Range range, const std::vector<RTFDEntry>* entries);

    // What most heads stay below, bytes, for which the body's string has room.
    static constexpr std::size_t kUsualHeadSize = 8192;

    void write();

    const RTFFontTable& fonts() const { return fonts_; }
    const RTFColorTable& colors() const { return colors_; }
    const RTFListTable& lists() const { return lists_; }
    std::string& string() { return out_.string(); }

  private:
    struct Paragraph {
        Range range;
        std::size_t contentsEnd; // before the line end
        const ParagraphStyle* style;
        std::size_t run; // at its first character
    };

    void findParagraphs();
    void planTables();
    void writeParagraph(const Paragraph& paragraph, bool endsCell);
    void beginParagraph(const Paragraph& paragraph);
    // What the writer asks of an attribute set, found out once a set: runs share them. Sets of equal state share that.
    struct KnownSet {
        const AttributeSet* attributes;
        std::uint32_t state; // in states_
        bool hasLink, hasAttachment;
    };
    const KnownSet& known(const AttributeSet& attributes);
    std::uint32_t stateNumber(const RTFCharacterState& state);

    // The text of the range, run by run; all of it has the formatting that its runs have.
    void writeRuns(Range range, bool formatOnly);
    void writeRunText(Range range, const KnownSet& set);
    void changeTo(const KnownSet& set);
    void changeLink(const KnownSet& set);
    void closeLink();
    std::size_t writeListMarker(const Paragraph& paragraph); // how much of the text it was
    void writeAttachment(const RTFDEntry& entry);
    void writeEmptyCells(std::size_t depth, const TextTableBlock* until);

    void beginRow(std::size_t depth, const TextTable& table, bool first) override;
    void beginCell(std::size_t depth, const TextTableBlock& block) override;
    void endCell(std::size_t depth) override;
    void endRow(std::size_t depth, bool last) override;

    // A row that is being written.
    struct OpenRow {
        std::size_t row = 0;
        RTFTableSlots slotMaker; // of the table
        std::vector<RTFTableSlot> slots;
        std::size_t next = 0; // slot
    };

    const std::u16string_view string_; // of the text
    const std::vector<AttributedString::Run>& runs_;
    const Range range_;
    const std::vector<RTFDEntry>* entries_;
    std::size_t nextEntry_ = 0;

    // Of all tables below, which grow in it and go with it: one block for those of a usual text.
    static constexpr std::size_t kUsualTablesSize = 32 * 1024;
    std::pmr::monotonic_buffer_resource memory_{kUsualTablesSize};

    RTFFontTable fonts_{memory_};
    RTFColorTable colors_{memory_};
    RTFListTable lists_{memory_};
    RTFParagraphWords paragraphWords_{lists_, memory_};
    RTFOutput out_;

    std::pmr::vector<Paragraph> paragraphs_{&memory_};
    bool hasTables_ = false;
    RTFTablePlan plan_;
    std::vector<OpenRow> rows_; // by depth
    std::size_t nextRow_ = 0;

    // What leads from one state to another, as the output has it: few states lead to few others, over and over.
    struct Change {
        std::uint64_t states; // both, and whether the color is repeated
        RTFOutput::Part words;
    };

    Numbered<KnownSet> sets_{memory_}; // by address
    Numbered<RTFCharacterState> states_{memory_};
    Numbered<Change> changes_{memory_};         // by states
    std::uint32_t state_;                       // that is in force
    std::optional<std::uint32_t> currentWords_; // of the paragraph before; nothing when they must be repeated
    bool repeatsColor_ = false;
    std::size_t run_ = 0;

    std::string link_; // of the open field, empty when none is
    std::uint32_t stateOutsideLink_ = 0;
    bool outsideLinkGroup_ = false;
};

} // namespace platform
