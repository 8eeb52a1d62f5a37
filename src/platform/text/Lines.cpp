// Where lines and paragraphs begin and end. CR LF is one terminator wherever a position falls inside it.

#include <cassert>

#include "platform/base/TextScan.h"
#include "platform/text/AttributedString.h"

namespace platform {

namespace {

using ParagraphEnds = StopUnits<char16_t, u'\0', u'\uFFFF', u'\n', u'\r', u'\u2029'>;
using LineEnds = StopUnits<char16_t, u'\0', u'\uFFFF', u'\n', u'\r', u'\x85', u'\u2028', u'\u2029'>;

// The line that starts at `start` and ends at the first terminator, at `limit` at the latest.
template<class Terminators>
Line lineFrom(std::u16string_view text, std::size_t start, std::size_t limit) {
    const std::size_t end = start + lengthBefore<Terminators>(text.substr(start, limit - start));
    std::size_t enclosingEnd = end;
    if (end < limit) enclosingEnd += text[end] == u'\r' && end + 1 < limit && text[end + 1] == u'\n' ? 2 : 1;
    return {{start, end - start}, {start, enclosingEnd - start}};
}

template<class Terminators>
Line enclosingLine(std::u16string_view text, std::size_t position) {
    assert(position <= text.size());
    std::size_t start = position;
    while (start > 0) {
        const bool insidePair = start < text.size() && text[start - 1] == u'\r' && text[start] == u'\n';
        if (Terminators::stops(text[start - 1]) && !insidePair) break;
        --start;
    }
    return lineFrom<Terminators>(text, start, text.size());
}

} // namespace

std::vector<Line> linesInRange(std::u16string_view text, Range range) {
    assert(range.end() <= text.size());
    std::vector<Line> lines;
    for (std::size_t start = range.location; start < range.end(); start = lines.back().enclosing.end())
        lines.push_back(lineFrom<LineEnds>(text, start, range.end()));
    return lines;
}

std::vector<Line> linesOf(std::u16string_view text) {
    return linesInRange(text, {0, text.size()});
}

bool startsLine(std::u16string_view text, std::size_t position) {
    assert(position <= text.size());
    if (position == 0) return true;
    const bool insidePair = position < text.size() && text[position - 1] == u'\r' && text[position] == u'\n';
    return LineEnds::stops(text[position - 1]) && !insidePair;
}

Line lineAt(std::u16string_view text, std::size_t position) {
    return enclosingLine<LineEnds>(text, position);
}

Line paragraphAt(std::u16string_view text, std::size_t position) {
    return enclosingLine<ParagraphEnds>(text, position);
}

} // namespace platform
