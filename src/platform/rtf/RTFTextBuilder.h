// Puts the rich text together while RTF is read. A paragraph's text is held until its end, since the paragraph's
// formatting is what stands there; tables are held until their end, since their columns are known only then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rtf/RTFReadRows.h"
#include "platform/rtf/RTFReadState.h"
#include "platform/rtf/RTFReadTables.h"
#include "platform/text/AttributedString.h"

namespace platform {

class RTFTextBuilder {
  public:
    RTFTextBuilder(RTFReadFonts& fonts, RTFReadColors& colors, RTFReadLists& lists)
        : fonts_(fonts), colors_(colors), lists_(lists) {}

    std::size_t addLink(std::string_view address); // its number for RTFReadCharacters
    void append(std::u16string_view text, const RTFReadCharacters& characters);
    void appendAttachment(TextAttachmentReference attachment, const RTFReadCharacters& characters);
    // A marker as other programs write it: goes to the paragraph's front, between tabs, when the paragraph is in a
    // list.
    void setForeignMarker(std::u16string marker) { foreignMarker_ = std::move(marker); }

    void endParagraph(const RTFReadParagraph& paragraph, const RTFReadCharacters& characters);
    void endCell(const RTFReadParagraph& paragraph, const RTFReadCharacters& characters, bool nested);
    void endRow(bool nested, const RTFRowDefinition& row);
    std::size_t tableDepth() const { return levels_.size(); }

    AttributedString finish(const RTFReadParagraph& paragraph);

  private:
    struct PendingRun {
        std::size_t end;
        RTFReadCharacters characters;
        TextAttachmentReference attachment;
    };
    struct Level {
        std::shared_ptr<TextTable> table = std::make_shared<TextTable>();
        std::vector<RTFReadRow> rows;
        std::vector<RTFReadCell> cells;        // of the open row
        std::shared_ptr<TextTableBlock> block; // of the open cell
        std::size_t cellStart = 0;
    };

    void openLevels(std::size_t depth);
    void closeLevels(std::size_t depth);
    void placeTable(Level& level);
    void flush(const RTFReadParagraph& paragraph);
    ParagraphStyleReference styleFor(const RTFReadParagraph& paragraph);
    AttributeSet::Reference attributesFor(const PendingRun& run, const ParagraphStyleReference& style);

    RTFReadFonts& fonts_;
    RTFReadColors& colors_;
    RTFReadLists& lists_;

    AttributedString text_;
    std::vector<AttributeValue> links_;
    std::u16string paragraph_; // the open paragraph
    std::vector<PendingRun> runs_;
    std::u16string foreignMarker_;
    std::vector<Level> levels_;
    std::vector<std::size_t> emptyMergedCells_; // positions of line ends that go again
    bool behindNestedRow_ = false;

    // The last style and set made, for the next run of the same kind.
    RTFReadParagraph lastParagraph_;
    std::vector<const TextTableBlock*> lastBlocks_;
    ParagraphStyleReference lastStyle_;
    RTFReadCharacters lastCharacters_;
    ParagraphStyleReference lastSetStyle_;
    AttributeSet::Reference lastSet_;
};

} // namespace platform
