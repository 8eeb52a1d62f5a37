// Counterpart of NSParagraphStyle and NSMutableParagraphStyle: one value for both. Lengths in points.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

class TextList;
class TextBlock;

// In the order of archives, which is not that of every processor's memory.
enum class TextAlignment : std::uint8_t { left, right, center, justified, natural };
enum class WritingDirection : std::int8_t { natural = -1, leftToRight = 0, rightToLeft = 1 };
enum class LineBreakMode : std::uint8_t {
    wordWrapping,
    charWrapping,
    clipping,
    truncatingHead,
    truncatingTail,
    truncatingMiddle
};

// Counterpart of NSTextTab.
struct TextTab {
    TextAlignment alignment = TextAlignment::natural;
    double location = 0;
    bool decimal = false; // aligned on the decimal point
    friend bool operator==(const TextTab&, const TextTab&) = default;
};

struct ParagraphStyle {
    TextAlignment alignment = TextAlignment::natural;
    WritingDirection baseWritingDirection = WritingDirection::natural;
    LineBreakMode lineBreakMode = LineBreakMode::wordWrapping;
    std::int32_t headerLevel = 0;
    double firstLineHeadIndent = 0, headIndent = 0;
    double tailIndent = 0; // positive: from the left edge; 0 or negative: from the right edge
    double lineSpacing = 0, paragraphSpacing = 0, paragraphSpacingBefore = 0;
    double lineHeightMultiple = 0, minimumLineHeight = 0, maximumLineHeight = 0; // 0: no limit
    double defaultTabInterval = 0;
    float hyphenationFactor = 0;
    float tighteningFactorForTruncation = 0.05f;
    bool allowsDefaultTighteningForTruncation = false;
    bool usesDefaultHyphenation = false;
    std::int64_t lineBreakStrategy = 0;
    std::vector<TextTab> tabStops = defaultTabStops();  // ascending
    std::vector<std::shared_ptr<TextList>> textLists;   // outermost first; compared by identity
    std::vector<std::shared_ptr<TextBlock>> textBlocks; // outermost first; compared by identity

    // The platform's default: natural, 12 left tab stops at 28, 56 … 336 points, everything else 0.
    static const std::shared_ptr<const ParagraphStyle>& defaultParagraphStyle();
    static std::vector<TextTab> defaultTabStops();

    friend bool operator==(const ParagraphStyle&, const ParagraphStyle&) = default;
};

using ParagraphStyleReference = std::shared_ptr<const ParagraphStyle>;

} // namespace platform
