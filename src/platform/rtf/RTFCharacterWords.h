// A run's attributes as RTF says them, and the words that lead from one such state to the next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/text/AttributedString.h"

namespace platform {

class RTFColorTable;
class RTFFontTable;
class RTFOutput;

// Numbers are in the units of the words. Two runs of equal state need no word between them.
struct RTFCharacterState {
    std::size_t font = kNotFound;    // \f
    std::int64_t milliPoints = 0;    // \fs, \fsmilli
    std::size_t color = 0;           // \cf, 0 none
    std::size_t background = 1;      // \cb, 1 none
    bool kerns = false;              // whether kern is given
    std::int64_t kernTwips = 0;      // \expndtw
    std::int64_t baselineHalves = 0; // \up, \dn
    int superscript = 0;             // 1 \super, -1 \sub
    std::int64_t underline = 0;      // mask of the underline style attribute
    std::size_t underlineColor = 0;
    std::int64_t strikethrough = 0;
    std::size_t strikethroughColor = 0;
    std::int64_t strokeWidth = 0; // \strokewidth: twentieths of a percent
    std::size_t strokeColor = 0;
    struct Shadow {
        std::int64_t x = 0, y = 0, radius = 0, opacity = 0; // twips; opacity 0 to 255
        std::size_t color = 0;                              // 0 black
        friend bool operator==(const Shadow&, const Shadow&) = default;
    };
    std::optional<Shadow> shadow;
    std::int64_t obliqueness = 0, expansion = 0; // two-thousandths
    std::int64_t ligature = 1;
    bool highlighted = false;
    std::int64_t highlightScheme = 0; // \AppleHilightClrSch

    friend bool operator==(const RTFCharacterState&, const RTFCharacterState&) = default;
};

// Of every field that takes more than two values, so that no text has many states of one hash.
std::uint32_t hashOf(const RTFCharacterState& state);

// The state of a run; its font and colors get their numbers. Without a font it is Helvetica 12.
RTFCharacterState characterStateOf(const AttributeSet& attributes, RTFFontTable& fonts, RTFColorTable& colors);

// The words from one state to the other. `repeatsColor`: the text color goes out even when it stays (behind \pard).
void writeCharacterChange(const RTFCharacterState& from, const RTFCharacterState& to, bool repeatsColor,
                          const RTFFontTable& fonts, RTFOutput& out);

} // namespace platform
