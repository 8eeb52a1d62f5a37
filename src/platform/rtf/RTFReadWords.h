// The words that change formatting, rows and the document: one table, each row with what its word does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/base/Value.h"
#include "platform/rtf/RTFReadRows.h"
#include "platform/rtf/RTFReadState.h"
#include "platform/rtf/RTFReadTables.h"

namespace platform {

// What is not saved with a group.
struct RTFReadDocument {
    bool fromPlatform = false;                                                   // \cocoartf was there
    std::int32_t codePage = 1252;                                                // \ansicpg
    std::int32_t defaultFont = 0;                                                // \deff
    Dictionary attributes;                                                       // of the document
    std::int32_t paperWidth = 0, paperHeight = 0, viewWidth = 0, viewHeight = 0; // twips

    std::vector<RTFRowDefinition> rows{1}; // by table depth
    std::size_t rowDepth = 1;              // whose row the words mean, from 1
    RTFCellDefinition cell;                // until its \cellx
    std::int32_t borderEdge = -1;          // BlockEdge that border words mean, -1 none of a cell's

    RTFRowDefinition& row();
    // Paper and view, of the numbers that the words left.
    void finishAttributes();
};

struct RTFWordContext {
    RTFReadCharacters& characters;
    RTFReadParagraph& paragraph;
    RTFReadDocument& document;
    const RTFReadColors& colors;
};

// Carries out a word of formatting; false when it is none.
bool applyFormattingWord(std::string_view name, std::optional<std::int32_t> number, RTFWordContext context);

} // namespace platform
